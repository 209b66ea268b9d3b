// Sample key values for requests built from the catalogue: one text of each key word's form,
// and the key a segment of a position carries, in the catalogue's part order.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "zan/database.hpp"

namespace zan::test {

using Keys = std::vector<std::pair<std::string, std::string>>;

inline std::string sample(db::Word w) {
    switch (w) {
    case db::Word::rsl_vstring: return "k1";
    case db::Word::ip_address: return "10.1.2.3";
    case db::Word::rsl_mac_addr: return "00:11:22:33:44:55";
    case db::Word::rsl_boolean: return "true";
    default: return "7";
    }
}

inline Keys keys_of(const db::TableInfo* p) {
    if (p->key_kind != db::KeyKind::compound) return {{std::string(p->key_name), sample(p->key_word)}};
    Keys k;
    for (const db::FieldInfo* f : p->key_parts) k.emplace_back(std::string(f->name), sample(f->word));
    return k;
}

}  // namespace zan::test

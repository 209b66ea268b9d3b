// The leaf attribute names of a record, dotted as a client asks for them by name (and as the
// selectors and a table's to_vlist read them), in schema order.
#pragma once

#include <string>
#include <vector>

#include "zan/database.hpp"

inline void leaf_names(const zan::db::TypeInfo& t, const std::string& prefix, std::vector<std::string>& out) {
    for (const zan::db::FieldInfo& f : t.fields) {
        if (f.role != zan::db::FieldRole::attribute) continue;
        if (f.kind == zan::db::FieldKind::nested)
            leaf_names(*f.target, prefix + std::string(f.name) + ".", out);
        else
            out.push_back(prefix + std::string(f.name));
    }
}

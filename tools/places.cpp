#include "places.hpp"

#include "zan/database.hpp"

namespace zanfe {

TablePlace table_place(std::string_view table) {
    TablePlace p;
    const zan::db::TableInfo* info = zan::db::table_info(table);
    if (info == nullptr) return p;
    for (const auto seg : info->path) {
        if (!p.path.empty()) p.path += '/';
        p.path += seg;
    }
    if (info->key_kind == zan::db::KeyKind::compound) {
        for (const auto* part : info->key_parts) {
            if (!p.key.empty()) p.key += ',';
            p.key += part->name;
        }
    } else {
        p.key = info->key_name;
    }
    return p;
}

}  // namespace zanfe

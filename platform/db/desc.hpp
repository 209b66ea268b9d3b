// Constant descriptors of the catalogue, as the generator writes them (one set per
// domain, plus the types and the two numberings) and as the store reads them.
#pragma once

#include <cstdint>

#include "zan/db_kinds.hpp"

namespace zan::db::desc {

using K = FieldKind;
using W = Word;

// One field of a record, in schema order (extension fields last, by level).
struct FieldDesc {
    const char* name;
    const char* type;         // nested record, enumeration, flag set, sequence element; or nullptr
    const char* bound_name;   // count field of a counted array, length field of a character array
    uint16_t bound;           // size of a fixed array or of a fixed character array
    FieldKind kind;
    Word word;                // leaf word, array element word
    uint8_t arm;              // union arm from 1, 0 when not an arm
    uint8_t level;            // extension level, 0 for a base field
};
static_assert(sizeof(FieldDesc) == 32);

struct RecordDesc {
    const char* name;         // type_<t>_name
    const uint8_t* luid;      // type_<t>_luid
    const zan_field_vft* vft; // zan_<t>_field_vft
    const FieldDesc* fields;
    uint16_t count;
    uint8_t base;             // 1: owned by the schema library
    uint8_t reserved;
    const char* links;        // child link fields of a parent row type, blank-separated; or nullptr
};
static_assert(sizeof(RecordDesc) == 48);

enum KeyShape : uint8_t { key_singleton, key_single, key_compound };

// One table position. A second entrance has no name symbol, identifier or vector.
struct TableDesc {
    const char* name;         // table_tbl_<x>_name, or the position's name for a second entrance
    const uint8_t* luid;      // table_tbl_<x>_luid, nullptr for a second entrance
    const zan_field_vft* vft; // tbl_<x>_table_field_vft, nullptr for a second entrance
    const char* segment;
    const char* pq;           // path-query identifier, 32 hex digits
    const char* key;          // key field, or the key record of a compound key
    const char* key_parts;    // compound: part names in search order, comma-separated
    const char* rows;         // row types, comma-separated
    const char* parent;       // parent position, nullptr at the root
    const char* link;         // child link field in the parent row type, nullptr when none
    const char* entrance;     // the table a second entrance enters, nullptr otherwise
    uint16_t order;           // place among the traversers
    KeyShape key_shape;
    Word key_word;
};

struct DomainDesc {
    const char* name;
    const RecordDesc* records;
    uint32_t record_count;
    const TableDesc* tables;
    uint32_t table_count;
};

// A library type, enumeration or flag set.
struct TypeDesc {
    const char* name;         // type_<t>_name, enum_<t>_name or flag_<t>_name
    const uint8_t* luid;
    const zan_field_vft* vft;
    Category category;
    uint8_t kind;             // class in the property vector
    uint16_t value_count;
    const char* const* values;    // enumerators or bits
    const uint8_t* levels;        // extension level per enumerator, or nullptr
};

struct CatalogueDesc {
    const DomainDesc* const* domains;
    uint32_t domain_count;
    const TypeDesc* types;
    uint32_t type_count;
    const zan_db_type_lut* slots;
    const char* const* table_rows;    // table_tbl_<x>_name per row, nullptr for an empty row
    uint32_t table_row_count;
    int32_t latest_variant;
};

}  // namespace zan::db::desc

namespace zan::db::gen {
extern const desc::CatalogueDesc k_catalogue;
}

// Kinds of values and fields of the database layer, and the layout of its type table:
// the little that the generated database code needs (database.hpp has the rest).
#pragma once

#include <cstdint>

#include "traversal.h"

extern "C" {
/* The database's own type table, handed to the engine at registration: one row per type
 * slot in slot order, empty slots all NULL. */
struct zan_db_type_lut_row {
    const char* name;             /* type_<t>_name, enum_<t>_name or flag_<t>_name */
    const uint8_t* luid;          /* type_<t>_luid */
    const zan_field_vft* vft;     /* zan_<t>_field_vft */
};
struct zan_db_type_lut {
    uint32_t count;
    const struct zan_db_type_lut_row* rows;
};
}

namespace zan::db {

// ---------------------------------------------------------------- words and kinds
enum class Word : uint8_t {
    none,
    u_int8,
    u_int16,
    int16,
    u_int32,
    int32,
    u_int64,
    rsl_vstring,
    rsl_boolean,
    rsl_mac_addr,
    ip_address,
    enum_value,     // enumeration value (also a union's descriminator)
    flag_bits,      // flag set
    character,      // element of a character array
};
enum class FieldKind : uint8_t { leaf, enumeration, flags, nested, fixed_array, counted_array, sequence, chars };
enum class FieldRole : uint8_t {
    attribute,      // a field of the record (an extension field too)
    bound,          // count of a counted array, length of a character array (store only)
    link,           // child link field of a parent row type
};
enum class Category : uint8_t { record, library, enumeration, flags };
enum class KeyKind : uint8_t { singleton, single, compound };

}  // namespace zan::db

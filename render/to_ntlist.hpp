// Column description: the descriptors the generated code hands to the two templates.
#pragma once

#include <cstdint>
#include <span>

#include "fe_internal.hpp"

namespace zan::fe::ntlist {

// One attribute of a record, as the column description walks it.
struct Attr {
    uint16_t text;                  // offset of the column text in the type's text pool
    uint16_t code;                  // type code of a leaf column; 0 for a nested one
    zan_type_to_ntlist_fn nested;   // the nested record's exported <type>_to_ntlist; null for a leaf
};
static_assert(sizeof(Attr) == 16, "the generated tables assume this layout");

// A record or union type.
struct Type {
    const char* pool;               // column texts, NUL-terminated, one after the other
    const Attr* attrs;              // in schema order
    uint32_t count;
    uint32_t msg;                   // the first of the type's four messages in the unit
};

// Offsets of a type's four messages from Type::msg.
enum : uint32_t { k_msg_null_args, k_msg_prior_error, k_msg_no_space, k_msg_failed, k_msgs_per_type };

// <type>_to_ntlist: adds the type's columns, each name behind prefix, to list.
int32_t type_columns(const Type& type, arbor_ntlist* list, const char* prefix, uint32_t* err);

// tbl_<table>_table_columns_to_ntlist: the columns of the table's row types, in order;
// the answer is the last row type's.
int32_t table_columns(std::span<const zan_type_to_ntlist_fn> rows, arbor_ntlist* list, uint32_t* err);

}  // namespace zan::fe::ntlist

namespace zan::gen {
// The unit's message table: k_msgs_per_type formats per type, types in slot order.
extern const char* const ntlist_formats[];
}  // namespace zan::gen

// Rows as RFC 7951 (JSON) instance data of the YANG module zan-config, which the generator
// writes from the catalogue (gen/backends/yang.py): each table a list named by its path
// segment, nested in the entries of its parent table's list; each row an entry holding its
// attributes, the dotted parts of an attribute name as containers. Values take RFC 7951's
// encodings: 64-bit integers as strings, enumerations by name, flag sets as the names of
// their set bits separated by blanks, arrays as arrays. Null values (the attributes of the
// arms a union does not select) are left out, and so is a container left empty.
//
// The printer renders nothing itself: whoever reached the rows (through the registered
// dispatcher) hands their renderings (through the registered to_properties) over.
#pragma once

#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "zan/database.hpp"
#include "zan/platform.hpp"

namespace zan::engine {
// JSON string literal of text, quotes included: the one writer of JSON strings of the
// engine's printers and the tool's JSON output.
void append_json_string(std::string& out, std::string_view text);
}  // namespace zan::engine

namespace zan::engine::rfc7951 {

inline constexpr std::string_view k_module = "zan-config";
// Levels of a table that is its own parent (tbl_cfg_vlan_eol) the module unrolls; YANG
// allows no recursion, so a row nested deeper has no place in it.
inline constexpr int k_self_levels = 3;

struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The names of a table's key attributes: the parts of a compound key in order, or the one.
std::vector<std::string> key_names(const db::TableInfo& t);
// The positions whose lists stand in the entries of a table's rows (nullptr: at the top
// level), in the module's order. A table that is its own parent has its position both at
// the top and in its own entries.
const std::vector<const db::TableInfo*>& lists_below(const db::TableInfo* table);

using Rendered = std::unordered_map<const db::Row*, std::vector<plat::NamedValue>>;
// Renders a row that is not among the rows printed but stands above one of them: only its
// key attributes are kept.
using RenderFn = std::function<std::vector<plat::NamedValue>(const db::Row&)>;

// One document holding `rows` (every row given, with its attributes), each under its
// ancestors, in the store's order: tables in the module's order, rows in the order they
// were added. Throws Error (one line) for a row or an attribute the module has no place for.
std::string document(const db::Store& store, const Rendered& rows, const RenderFn& render_ancestor);

// The document of every row of the store, each rendered by `render` when it is reached,
// appended to `out` as it is written: `row_done` is called after each row's attributes and
// at the end, and may take the text written so far out of `out` (print it and clear it), so
// that what is held at a time is one row's rendering and the lists on the path down to it.
// Throws Error as document() does; a nesting the module has no place for is found before
// anything is written.
void document_of_all(const db::Store& store, const RenderFn& render, std::string& out,
                     const std::function<void()>& row_done);

// The document of one attribute of a row of the table on its own (a leaf addressed as the
// resource): {"zan-config:<leaf>": value}. Throws Error for an attribute with no leaf, or a
// value that does not fit it.
std::string leaf_document(const db::TableInfo& table, const plat::NamedValue& item);

}  // namespace zan::engine::rfc7951

// Reference engine: loads the front-end library the way the device's data-access engine
// does (dlopen, then the initialiser by name) and from then on works only with what the
// initialiser registered for our context: the five arrays, the name lookups and the
// path and query dispatcher. It never links the front end and never reads its symbols
// other than the initialiser.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zan/database.hpp"
#include "zan/platform.hpp"
#include "zan_fe.h"

namespace zan::engine {

// One row of the two table arrays. An empty row has no name and no operations.
struct TableRow {
    int row = -1;
    const zan_gx_table_row* gx = nullptr;      // row of zan_config_db_fe_gx_dispatch_vft
    const zan_field_vft* vft = nullptr;        // row of zan_config_db_table_dispatch_fe_table_vft

    bool empty() const { return gx == nullptr || gx->table_name == nullptr; }
    std::string_view name() const { return empty() ? std::string_view{} : std::string_view{gx->table_name}; }
    uint32_t kind() const { return gx ? gx->kind : 0; }
};

// One row of the three type arrays, which share their numbering.
struct TypeRow {
    int row = -1;
    const zan_gx_type_props_row* props = nullptr;   // zan_config_db_type_gx_lut
    const zan_gx_type_vlist_row* vlist = nullptr;   // zan_config_db_fe_gx_type_dispatch_vft
    const zan_field_vft* vft = nullptr;             // zan_config_db_field_dispatch_type_field_lut

    bool empty() const { return props == nullptr || props->name == nullptr; }
    std::string_view name() const { return empty() ? std::string_view{} : std::string_view{props->name}; }
};

struct Column {
    std::string name;
    uint32_t code = 0;
    bool operator==(const Column&) const = default;
};

// What a column description call gave back: its status, the error word after the call,
// and whatever it added to the list (also on failure: nothing is undone).
struct ColumnResult {
    int32_t status = 0;
    uint32_t err = 0;
    std::vector<Column> columns;
    bool ok() const { return status == 0 && err == 0; }
};

// Request kinds this engine uses. The front end gives a kind no name; it only knows three
// sets of numbers: {6, 13} (no query on the last segment), {3, 5, 12} (key values converted
// with the value flag) and {0, 5, 10, 11, 12, 17} (no key needed on the last segment).
enum : uint32_t {
    k_kind_read = 0,       // read; the last segment may leave its key out (all rows of the table)
    k_kind_read_row = 3,   // read one row: every segment, the last too, must carry its key
};

// One request to the registered dispatcher.
struct Request {
    std::vector<zan::plat::UriSegment> segments;   // segment 0 (the engine's own) is added
    uint32_t kind = k_kind_read;
    bool with_pd_list = true;    // false: pd_list is NULL
    bool with_pdc_list = true;   // false: pdc_list is NULL
    uint64_t gx_ctx = 0;
};

// What the dispatcher answered and left behind.
struct Response {
    int32_t code = -1;
    std::vector<zan::plat::TraversalView> traversals;   // in params, in order
    const void* slot = nullptr;                         // the table vector left in the slot cell
    std::optional<std::vector<std::string>> pd_list;    // nullopt: the list was not given
    std::optional<std::vector<std::string>> pdc_list;
    size_t path_steps() const;                          // traversals with pq set to 0
};

// Where a request that did not resolve stopped: the segment (from 1) and why, in words.
struct Stop {
    size_t segment = 0;
    std::string reason;
};
// nullopt for code 1.
std::optional<Stop> stop_of(const Response& r, size_t segment_count);

// The table whose field vector a slot cell holds (nullptr: empty cell or unknown vector).
const zan::db::TableInfo* table_of_vector(const void* vft);

// The rows a list of traversals selects in a store. Path step: the rows of the table of its
// deref_table; for a child step (arbor_id_vec[0] names the parent table) only those under a
// row selected by the step before. Query step: of those, the rows whose stored key equals
// key_data. A path step not followed by a query step keeps all its rows. A step without pq
// (a query step whose key failed), a query step before any path step of its table, or a
// child step after another table's step is an error: no rows.
struct Walk {
    std::vector<const zan::db::Row*> rows;
    const zan::db::TableInfo* table = nullptr;       // table of the last step
    const zan::db::TableInfo* position = nullptr;    // position of the last path step
    std::optional<std::string> error;                // traversals that make no walk
};
Walk walk(const zan::db::Store& store, const std::vector<zan::plat::TraversalView>& traversals);

// The position a row stands at: its table under the position of its parent row.
const zan::db::TableInfo* position_of(const zan::db::Row& row);
// The segments that lead to a row, from the root: each segment of the row's own chain of
// rows carries that row's key; segments above the chain (positions whose parent rows are
// not linked) carry none.
std::vector<zan::plat::UriSegment> row_segments(const zan::db::Row& row);

// "name=value" for each key part of a row (single and singleton keys: one).
std::vector<std::pair<std::string, std::string>> row_key_parts(const zan::db::Row& row);

// Word of a column type code ("u_int32", "enum", ...); empty for a code we do not know.
std::string_view type_code_word(uint32_t code);

class Engine {
public:
    Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // Where the front-end library is looked for when no path is given: $ZANFE_LIBRARY,
    // then libzanfe.so next to the running executable, then libzanfe.so.1 of the
    // installation the executable belongs to (../lib/...), then the library of the build
    // that made it, and last libzanfe.so.1 by name from the dynamic loader's search path.
    static std::string default_library_path();

    // Loads the library, calls its initialiser and takes over what it registered for
    // our context. Answers a one-line reason on failure, a non-zero answer of the
    // initialiser included. The library stays loaded for
    // the life of the process, as the registered vectors point into it.
    std::optional<std::string> load(const std::string& path);
    bool loaded() const { return reg_.has_value(); }
    const std::string& library_path() const { return path_; }
    const zan::plat::Registration& registration() const { return *reg_; }  // only once loaded
    // Whether the loaded library exports a symbol (for checks of what a build contains;
    // requests never go through it).
    bool exports(const char* symbol) const;

    // Table arrays, all rows including the empty ones, in row order.
    int table_row_count() const { return ZAN_TABLE_ROWS; }
    TableRow table_row(int row) const;
    std::vector<TableRow> table_rows() const;
    // A table by name: the row number from the registered table numbering, checked
    // against the name in that row. Empty rows and unknown names give nothing.
    std::optional<TableRow> find_table(std::string_view name) const;

    // Type arrays.
    int type_row_count() const { return ZAN_TYPE_ROWS; }
    TypeRow type_row(int row) const;
    std::optional<TypeRow> find_type(std::string_view name) const;

    // Column description of a table through its row's columns_to_ntlist. An empty row
    // answers status -1 and no columns without calling anything.
    ColumnResult columns(const TableRow& table) const;

    // The context every call of this engine hands the front end (requests and renderings).
    static rsl_ctx_t context();

    // The registered path and query dispatcher (requests are built on it).
    zan_path_query_dispatch_fn dispatcher() const { return reg_->dispatch; }

    // Builds the path and both name lists, calls the registered dispatcher once and
    // collects what it left. Every object of the request is released before returning.
    Response request(const Request& req) const;

private:
    std::span<const zan_gx_table_row> gx_tables() const;
    std::span<const zan_table_vft_row> table_vectors() const;

    std::string path_;
    void* handle_ = nullptr;
    std::optional<zan::plat::Registration> reg_;
};

}  // namespace zan::engine

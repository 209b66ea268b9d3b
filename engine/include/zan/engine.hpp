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

// Word of a column type code ("u_int32", "enum", ...); empty for a code we do not know.
std::string_view type_code_word(uint32_t code);

class Engine {
public:
    Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // Where the front-end library is looked for when no path is given: $ZANFE_LIBRARY,
    // then libzanfe.so next to the running executable, then the library of this build.
    static std::string default_library_path();

    // Loads the library, calls its initialiser and takes over what it registered for
    // our context. Answers a one-line reason on failure, a non-zero answer of the
    // initialiser included. The library stays loaded for
    // the life of the process, as the registered vectors point into it.
    std::optional<std::string> load(const std::string& path);
    bool loaded() const { return reg_.has_value(); }
    const std::string& library_path() const { return path_; }
    const zan::plat::Registration& registration() const { return *reg_; }  // only once loaded

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

    // The registered path and query dispatcher (requests are built on it).
    zan_path_query_dispatch_fn dispatcher() const { return reg_->dispatch; }

private:
    std::span<const zan_gx_table_row> gx_tables() const;
    std::span<const zan_table_vft_row> table_vectors() const;

    std::string path_;
    void* handle_ = nullptr;
    std::optional<zan::plat::Registration> reg_;
};

}  // namespace zan::engine

#include "zan/engine.hpp"

#include <dlfcn.h>

#include <array>
#include <cstdlib>
#include <filesystem>

namespace zan::engine {

namespace {

struct CodeWord {
    uint32_t code;
    std::string_view word;
};
constexpr std::array<CodeWord, 13> k_code_words{{
    {0, "u_int8"},
    {2, "u_int16"},
    {3, "int16"},
    {4, "u_int32"},
    {5, "int32"},
    {6, "u_int64"},
    {8, "rsl_vstring"},
    {9, "rsl_boolean"},
    {15, "rsl_mac_addr"},
    {101, "ip_address"},
    {103, "enum"},
    {106, "array"},
    {109, "flags"},
}};

std::string executable_dir() {
    std::error_code ec;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::string{} : exe.parent_path().string();
}

// The row the registered lookup gives for the name, or -1 when it gives none below `rows`.
int32_t lookup_row(zan_mrst_lookup_fn lookup, std::string_view name, int rows) {
    const std::string key(name);
    const int32_t row = lookup(key.c_str());
    return row >= 0 && row < rows ? row : -1;
}

}  // namespace

std::string_view type_code_word(uint32_t code) {
    for (const auto& cw : k_code_words)
        if (cw.code == code) return cw.word;
    return {};
}

std::string Engine::default_library_path() {
    if (const char* env = std::getenv("ZANFE_LIBRARY"); env && *env) return env;
    std::error_code ec;
    const std::string dir = executable_dir();
    if (!dir.empty()) {
        auto beside = std::filesystem::path(dir) / "libzanfe.so";
        if (std::filesystem::exists(beside, ec)) return beside.string();
        // An installed program: the library of the same installation.
        auto installed = std::filesystem::path(dir) / ZAN_FE_INSTALLED_PATH;
        if (std::filesystem::exists(installed, ec)) return installed.lexically_normal().string();
    }
    if (std::filesystem::exists(ZAN_FE_DEFAULT_PATH, ec)) return ZAN_FE_DEFAULT_PATH;
    return ZAN_FE_SONAME;   // by name, from the places the dynamic loader searches
}

std::optional<std::string> Engine::load(const std::string& path) {
    if (loaded()) return "a front-end library is already loaded (" + path_ + ")";
    // Bind everything now: a name the front end imports and the platform lacks is
    // reported here, not at the first call that happens to need it.
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* why = dlerror();
        return "cannot load " + path + ": " + (why ? why : "unknown reason");
    }
    dlerror();
    auto init = reinterpret_cast<zan_fe_init_fn>(dlsym(handle, ZAN_FE_INIT_SYMBOL));
    if (init == nullptr) {
        dlclose(handle);
        return path + " has no " ZAN_FE_INIT_SYMBOL;
    }
    const int32_t result = init();
    if (result != 0)
        return std::string(ZAN_FE_INIT_SYMBOL " of ") + path + " answered " + std::to_string(result);
    const zan::plat::Registration* reg = zan::plat::registration(ZAN_CONTEXT_NAME);
    if (reg == nullptr || reg->fe_vector_calls == 0 || reg->gx_vector_calls == 0) {
        // The initialiser ran; its registered pointers may live on, so the library stays.
        return std::string(ZAN_FE_INIT_SYMBOL " of ") + path + " did not register both vector sets for " +
               ZAN_CONTEXT_NAME;
    }
    if (reg->gx_dispatch == nullptr || reg->table_mrst_lookup == nullptr || reg->type_gx_lut == nullptr ||
        reg->gx_type_dispatch == nullptr || reg->type_mrst_lookup == nullptr) {
        return path + " registered an incomplete vector set for " ZAN_CONTEXT_NAME;
    }
    handle_ = handle;
    path_ = path;
    reg_ = *reg;
    return std::nullopt;
}

bool Engine::exports(const char* symbol) const {
    return handle_ != nullptr && dlsym(handle_, symbol) != nullptr;
}

std::span<const zan_gx_table_row> Engine::gx_tables() const {
    return {static_cast<const zan_gx_table_row*>(reg_->gx_dispatch), ZAN_TABLE_ROWS};
}

TableRow Engine::table_row(int row) const {
    TableRow r;
    if (!loaded() || row < 0 || row >= ZAN_TABLE_ROWS) return r;
    r.row = row;
    r.gx = &gx_tables()[static_cast<size_t>(row)];
    // The table vectors reach us only through the registered lookup; a named row's
    // vector is what the lookup gives for its name.
    if (!r.empty() && reg_->table_lookup != nullptr)
        r.vft = static_cast<const zan_field_vft*>(reg_->table_lookup(r.gx->table_name));
    return r;
}

std::vector<TableRow> Engine::table_rows() const {
    std::vector<TableRow> rows;
    if (!loaded()) return rows;
    rows.reserve(ZAN_TABLE_ROWS);
    for (int i = 0; i < ZAN_TABLE_ROWS; ++i) rows.push_back(table_row(i));
    return rows;
}

std::optional<TableRow> Engine::find_table(std::string_view name) const {
    if (!loaded()) return std::nullopt;
    const int32_t row = lookup_row(reg_->table_mrst_lookup, name, ZAN_TABLE_ROWS);
    if (row < 0) return std::nullopt;
    TableRow r = table_row(row);
    if (r.empty() || r.name() != name) return std::nullopt;
    return r;
}

TypeRow Engine::type_row(int row) const {
    TypeRow r;
    if (!loaded() || row < 0 || row >= ZAN_TYPE_ROWS) return r;
    r.row = row;
    r.props = static_cast<const zan_gx_type_props_row*>(reg_->type_gx_lut) + row;
    r.vlist = static_cast<const zan_gx_type_vlist_row*>(reg_->gx_type_dispatch) + row;
    if (reg_->type_field_lut != nullptr)
        r.vft = static_cast<const zan_type_field_row*>(reg_->type_field_lut)[row].vft;
    return r;
}

std::optional<TypeRow> Engine::find_type(std::string_view name) const {
    if (!loaded()) return std::nullopt;
    const int32_t row = lookup_row(reg_->type_mrst_lookup, name, ZAN_TYPE_ROWS);
    if (row < 0) return std::nullopt;
    TypeRow r = type_row(row);
    if (r.empty()) return std::nullopt;
    return r;
}

ColumnResult Engine::columns(const TableRow& table) const {
    ColumnResult out;
    if (table.empty() || table.gx->columns_to_ntlist == nullptr) {
        out.status = -1;
        return out;
    }
    arbor_ntlist* list = zan::plat::ntlist_new();
    out.status = table.gx->columns_to_ntlist(list, &out.err);
    const auto& entries = zan::plat::ntlist_entries(list);
    out.columns.reserve(entries.size());
    for (const auto& e : entries) out.columns.push_back({e.name, e.code});
    zan::plat::ntlist_free(list);
    return out;
}

}  // namespace zan::engine

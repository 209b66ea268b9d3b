// An engine of its own, built against an installed zanfe: it loads the front-end library by
// its name, calls the initialiser, resolves a keyed path through the dispatcher the library
// registered, finds the row the traversals lead to in the reference platform's built-in
// configuration and renders it through the registered table row's to_properties.
//
//   consumer [LIBRARY]    (default: libzanfe.so.1, found by the dynamic loader)
//
// Prints the row as "name = value" lines; any failure is one line on standard error and
// exit status 1.
#include <dlfcn.h>

#include <cstdio>
#include <string>

#include "zan/config.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"
#include "zan_fe.h"

namespace {

int fail(const std::string& why) {
    std::fprintf(stderr, "consumer: %s\n", why.c_str());
    return 1;
}

int g_context;   // the engine's context, which the front end only passes on

}  // namespace

int main(int argc, char** argv) {
    const char* library = argc > 1 ? argv[1] : "libzanfe.so.1";
    void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) return fail(dlerror());
    auto init = reinterpret_cast<zan_fe_init_fn>(dlsym(handle, ZAN_FE_INIT_SYMBOL));
    if (init == nullptr) return fail(std::string(library) + " has no " ZAN_FE_INIT_SYMBOL);
    if (const int32_t r = init(); r != 0) return fail("the initialiser answered " + std::to_string(r));
    const zan::plat::Registration* reg = zan::plat::registration(ZAN_CONTEXT_NAME);
    if (reg == nullptr || reg->dispatch == nullptr || reg->gx_dispatch == nullptr || reg->table_mrst_lookup == nullptr)
        return fail("nothing registered for " ZAN_CONTEXT_NAME);

    zan::config::LoadResult config = zan::config::load_default();
    if (!config) return fail(config.error);

    // One request of kind 3 (read one keyed row) for ntp_peer_server[peer_server_key=10.0.0.1].
    const std::string table = "tbl_ntp_peer_eol";
    gx_do_uri* uri = zan::plat::uri_new({{"ntp_peer_server", {{{"peer_server_key", "10.0.0.1"}}}}});
    arbor_params_t* params = zan::plat::params_new();
    const void* slot = nullptr;
    const int32_t code = reg->dispatch(&g_context, 0, 0, uri, nullptr, nullptr, params, 0, 3, &slot);
    const auto traversals = zan::plat::params_traversals(params);
    zan::plat::params_free(params);
    zan::plat::uri_deref(uri);
    if (code != 1) return fail("the dispatcher answered " + std::to_string(code));
    const zan::engine::Walk walk = zan::engine::walk(*config.store, traversals);
    if (walk.error) return fail(*walk.error);
    if (walk.rows.size() != 1) return fail("the path reaches " + std::to_string(walk.rows.size()) + " rows");

    // The row's table through the registered numbering, and its registered operations.
    const int32_t row = reg->table_mrst_lookup(table.c_str());
    if (row < 0 || row >= ZAN_TABLE_ROWS) return fail("no table row for " + table);
    const zan_gx_table_row& ops = static_cast<const zan_gx_table_row*>(reg->gx_dispatch)[row];
    if (ops.table_name == nullptr || table != ops.table_name || ops.to_properties == nullptr)
        return fail("table row " + std::to_string(row) + " is not " + table);
    gx_do_properties* props = zan::plat::properties_new();
    uint32_t err = 0;
    const int32_t status = ops.to_properties(&g_context, 0, walk.rows.front(), props, 0, &err);
    const auto items = zan::plat::properties_items(props);
    zan::plat::properties_deref(props);
    if (status != 0 || err != 0)
        return fail("to_properties answered " + std::to_string(status) + ", error " + std::to_string(err));
    for (const auto& item : items) std::printf("%s = %s\n", item.name.c_str(), zan::plat::to_text(item.value).c_str());
    return 0;
}

// One engine per test binary over the real front-end library: the library stays loaded
// once it is, like in a device.
#pragma once

#include <gtest/gtest.h>

#include "zan/config.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

inline zan::engine::Engine& engine() {
    static zan::engine::Engine* e = [] {
        auto* fresh = new zan::engine::Engine;
        if (auto err = fresh->load(zan::engine::Engine::default_library_path())) ADD_FAILURE() << *err;
        return fresh;
    }();
    return *e;
}

// The built-in configuration, loaded once after the engine and kept.
inline const zan::db::Store& default_store() {
    static const zan::db::Store* s = [] {
        engine();
        auto loaded = zan::config::load_default();
        EXPECT_TRUE(loaded) << loaded.error;
        return loaded.store.release();
    }();
    return *s;
}

// A read of one row straight through the registered dispatcher, for a segment no table takes
// (miss) or a configured peer (hit); the lists, params and paths go with the object.
struct DispatchCall {
    using Keys = std::vector<std::pair<std::string, std::string>>;
    gx_do_uri* miss = zan::plat::uri_new({{"no_such_segment", Keys{{"singleton_id", "1"}}}});
    gx_do_uri* hit = zan::plat::uri_new({{"ntp_peer_server", Keys{{"peer_server_key", "10.0.0.1"}}}});
    gx_do_nlist* pd = gx_do_nlist_new();
    gx_do_nlist* pdc = gx_do_nlist_new();
    arbor_params_t* params = zan::plat::params_new();
    const void* slot = nullptr;
    int ctx = 0;
    DispatchCall() = default;
    DispatchCall(const DispatchCall&) = delete;
    DispatchCall& operator=(const DispatchCall&) = delete;
    ~DispatchCall() {
        zan::plat::uri_deref(hit);
        zan::plat::uri_deref(miss);
        zan::plat::params_free(params);
        gx_do_nlist_deref(pd);
        gx_do_nlist_deref(pdc);
    }
    int32_t operator()(gx_do_uri* uri) {
        return engine().dispatcher()(&ctx, 0, 0, uri, pd, pdc, params, 0, zan::engine::k_kind_read_row, &slot);
    }
};

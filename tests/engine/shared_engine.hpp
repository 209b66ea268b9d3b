// One engine per test binary over the real front-end library: the library stays loaded
// once it is, like in a device.
#pragma once

#include <gtest/gtest.h>

#include "zan/config.hpp"
#include "zan/engine.hpp"

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

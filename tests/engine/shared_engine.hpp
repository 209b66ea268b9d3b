// One engine per test binary over the real front-end library: the library stays loaded
// once it is, like in a device.
#pragma once

#include <gtest/gtest.h>

#include "zan/engine.hpp"

inline zan::engine::Engine& engine() {
    static zan::engine::Engine* e = [] {
        auto* fresh = new zan::engine::Engine;
        if (auto err = fresh->load(zan::engine::Engine::default_library_path())) ADD_FAILURE() << *err;
        return fresh;
    }();
    return *e;
}

// What the engine-driven fuzz targets share: the front end loaded once by the reference
// engine, the built-in configuration, and the check that an input leaves nothing behind.
#pragma once

#include <cstdio>
#include <cstdlib>

#include "zan/config.hpp"
#include "zan/engine.hpp"

// `target` names the fuzz target in the failure line of a library that does not load.
inline const zan::engine::Engine& fuzz_engine(const char* target) {
    static zan::engine::Engine* e = [target] {
        auto* en = new zan::engine::Engine;
        if (auto why = en->load(zan::engine::Engine::default_library_path())) {
            std::fprintf(stderr, "%s: %s\n", target, why->c_str());
            std::abort();
        }
        return en;
    }();
    return *e;
}

inline const zan::db::Store& fuzz_store() {
    static const zan::config::LoadResult r = zan::config::load_default();
    if (!r) std::abort();
    return *r.store;
}

// Runs `body`; aborts with `what` when it left platform objects or allocations behind.
template <class Body>
void without_leftovers(const char* what, Body body) {
    const long objects = zan::plat::live_objects().total();
    const long allocations = zan::plat::alloc_live();
    body();
    if (zan::plat::live_objects().total() != objects || zan::plat::alloc_live() != allocations) {
        std::fprintf(stderr, "%s left objects or allocations behind\n", what);
        std::abort();
    }
}

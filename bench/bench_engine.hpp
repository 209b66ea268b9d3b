// The engine every benchmark suite measures: the front-end library loaded once per
// process. A library that does not load ends the run with one line.
#pragma once

#include <cstdio>
#include <cstdlib>

#include "zan/engine.hpp"

// `suite` names the benchmark in the failure line.
inline const zan::engine::Engine& bench_engine(const char* suite) {
    static zan::engine::Engine* e = [suite] {
        auto* fresh = new zan::engine::Engine;
        if (auto err = fresh->load(zan::engine::Engine::default_library_path())) {
            std::fprintf(stderr, "%s: %s\n", suite, err->c_str());
            std::exit(1);
        }
        return fresh;
    }();
    return *e;
}

// The built-in configuration as the benchmarks read it: loaded once per process, after the
// engine, and kept. A configuration that does not load ends the run with one line.
#pragma once

#include <cstdio>
#include <cstdlib>

#include "zan/config.hpp"
#include "zan/database.hpp"

#include "bench_engine.hpp"

// `suite` names the benchmark in the failure line.
inline const zan::db::Store& bench_store(const char* suite) {
    static const zan::db::Store* s = [suite] {
        bench_engine(suite);
        auto loaded = zan::config::load_default();
        if (!loaded) {
            std::fprintf(stderr, "%s: %s\n", suite, loaded.error.c_str());
            std::exit(1);
        }
        return loaded.store.release();
    }();
    return *s;
}

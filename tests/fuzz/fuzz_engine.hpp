// What the engine-driven fuzz targets share: the front end loaded once by the reference
// engine, the built-in configuration, and the check that an input leaves nothing behind.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

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

// Segments of a path written as text: separated by '/', each a name followed by
// '|'-separated "key=value" parts. A segment ending in '|' has an empty key list; one
// without '|' has none. At most 65 segments.
inline std::vector<zan::plat::UriSegment> segments_of(std::string_view text) {
    std::vector<zan::plat::UriSegment> out;
    while (true) {
        const size_t slash = text.find('/');
        std::string_view seg = text.substr(0, slash);
        zan::plat::UriSegment s;
        const size_t bar = seg.find('|');
        s.name = std::string(seg.substr(0, bar));
        if (bar != std::string_view::npos) {
            s.keys.emplace();
            std::string_view rest = seg.substr(bar + 1);
            while (!rest.empty()) {
                const size_t next = rest.find('|');
                std::string_view part = rest.substr(0, next);
                const size_t eq = part.find('=');
                s.keys->emplace_back(std::string(part.substr(0, eq)),
                                     eq == std::string_view::npos ? std::string() : std::string(part.substr(eq + 1)));
                if (next == std::string_view::npos) break;
                rest = rest.substr(next + 1);
            }
        }
        out.push_back(std::move(s));
        if (slash == std::string_view::npos || out.size() > 64) break;
        text = text.substr(slash + 1);
    }
    return out;
}


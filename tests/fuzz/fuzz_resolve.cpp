// Path resolution through the registered dispatcher on arbitrary requests: any segment
// names, key lists and values, request kind and name lists. Whatever the answer, nothing
// the request made outlives it, and the engine's walk over the default configuration
// copes with what the dispatcher left.
//
// Input: byte 0 chooses the request kind and whether the two name lists are given; the
// rest is segments separated by '/', each a name followed by '|'-separated "key=value"
// parts. A segment ending in '|' has an empty key list; one without '|' has none.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "fuzz_engine.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    static constexpr uint32_t kinds[] = {0, 3, 5, 6, 10, 11, 12, 13, 17, 1, 2, 4, 7, 99, 0xffffffffu};
    zan::engine::Request req;
    req.kind = kinds[(data[0] & 0x0f) % (sizeof kinds / sizeof kinds[0])];
    req.with_pd_list = (data[0] & 0x10) == 0;
    req.with_pdc_list = (data[0] & 0x20) == 0;
    req.segments = segments_of(std::string_view(reinterpret_cast<const char*>(data + 1), size - 1));

    const zan::engine::Engine& e = fuzz_engine("fuzz_resolve");
    const zan::db::Store& s = fuzz_store();
    without_leftovers("fuzz_resolve: the request", [&] {
        zan::engine::Response r = e.request(req);
        if (r.code == 1) (void)zan::engine::walk(s, r.traversals);
    });
    return 0;
}

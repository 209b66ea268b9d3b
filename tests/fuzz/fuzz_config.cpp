// The configuration loader on arbitrary text: all or nothing, and a failure is one line.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "zan/config.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    zan::config::LoadResult r = zan::config::load_text(text, "fuzz.json");
    if (r) {
        if (!r.error.empty()) std::abort();
    } else {
        // nothing handed back: no store, no default variant
        if (r.error.empty() || r.error.find('\n') != std::string_view::npos || r.default_variant) std::abort();
    }
    return 0;
}

// The zanfe path parser on arbitrary text: it either answers a PathError with a message
// (the tool makes that one printable line) or a list of segments that, written back with
// format_segment, parses to the same segments.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "path.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::vector<zanfe::PathSegment> segments;
    try {
        segments = zanfe::parse_path(text);
    } catch (const zanfe::PathError& e) {
        if (std::string_view(e.what()).empty()) std::abort();
        return 0;
    }
    std::string again;
    for (const auto& s : segments) again += "/" + zanfe::format_segment(s);
    std::vector<zanfe::PathSegment> reparsed;
    try {
        reparsed = zanfe::parse_path(again);
    } catch (const zanfe::PathError&) {
        std::abort();   // what the formatter writes must parse
    }
    if (reparsed.size() != segments.size()) std::abort();
    for (size_t i = 0; i < segments.size(); ++i)
        if (reparsed[i].name != segments[i].name || reparsed[i].keys != segments[i].keys) std::abort();
    return 0;
}

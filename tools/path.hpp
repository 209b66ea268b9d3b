// Path syntax of the zanfe tool.
//
//   path     := ['/'] segment ('/' segment)*
//   segment  := name key*          a name, or "*" for a listing
//   key      := '[' kname '=' value ']'  |  '[*]'   ("[*]" only as the first key)
//   value    := bare | "'" chars "'"     a quoted value may hold '/', ']', '[' and blanks;
//                                        "''" inside quotes is one quote
//
// A bare name or value may not hold '/', '[', ']', '=', quotes or blanks. Parsing is a syntax
// pass only; which table a segment names is for the dispatcher to say.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zanfe {

struct PathSegment {
    std::string name;
    // nullopt: the segment has no key list at all (not even "[*]").
    std::optional<std::vector<std::pair<std::string, std::string>>> keys;
    std::string text;   // the segment as written, for messages
    bool operator==(const PathSegment&) const = default;
};

// One-line message, e.g. "segment 2 'vrf_afi[vrf_af_afi=1': '[' without ']'".
struct PathError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::vector<PathSegment> parse_path(std::string_view text);

// The segment written back in path syntax (quotes where a value needs them).
std::string format_segment(const PathSegment& s);

}  // namespace zanfe

// The top dispatcher against the chain it stands for: one request run twice, once through
// the registered top dispatcher and once through the segment loop written out here, which
// offers every segment to the 23 exported dispatchers in chain order. Each run is recorded:
// the platform calls with an effect (in order, with their arguments and the error word they
// leave), the traces, the answer, both name lists, the traversals in params, the slot cell,
// the fault points hit and the allocations made. Name fetches and the other reads are not
// recorded: the top dispatcher may skip those.
//
// differential.cpp puts its own definitions of the recorded platform functions in front of
// the platform's: exported from the executable that links it, they bind first for the front
// end, and reach the platform with dlsym(RTLD_NEXT).
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "zan/engine.hpp"
#include "zan/platform.hpp"

namespace diff {

// What one run left and did.
struct Recording {
    int32_t code = -1;
    std::vector<std::string> events;
    std::optional<std::vector<std::string>> pd, pdc;
    std::vector<std::string> params;
    const void* slot = nullptr;
    std::vector<std::string> counts;   // fault points hit and allocations made, per name or tag
    bool operator==(const Recording&) const = default;
};

std::string describe(const Recording& r);
// The first difference of two recordings, or "" when there is none.
std::string first_difference(const Recording& a, const Recording& b);

// One request: its segments, kind, lists and slot cell.
struct Case {
    std::vector<zan::plat::UriSegment> path;
    uint32_t kind = 0;
    bool with_pd = true, with_pdc = true;
    std::vector<std::optional<std::string>> pd_names, pdc_names;   // nullopt: a name without text
    const void* slot = nullptr;                                    // the cell's value before
    std::optional<std::pair<std::string, long>> fault;   // point ("allocation": the allocator), n-th call
};

enum class Through { top_dispatcher, chain };
Recording run(const zan::engine::Engine& engine, const Case& c, Through through);

}  // namespace diff

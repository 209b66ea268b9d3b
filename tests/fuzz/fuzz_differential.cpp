// The top dispatcher against the exported chain on arbitrary requests: both runs of a
// request must leave the same recording (tests/engine/differential.hpp); a difference
// prints both and aborts.
//
// Input: byte 0 chooses the request kind (low four bits), whether pd_list (0x10) and
// pdc_list (0x20) are given, and whether the slot cell starts with a table's vector
// (0x40); each set bit of byte 1 puts a marker into pdc_list, and each of byte 2 puts the
// same one in again behind them; the rest is segments as fuzz_resolve reads them.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "../engine/differential.hpp"
#include "fuzz_engine.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    static constexpr uint32_t kinds[] = {0, 3, 5, 6, 10, 11, 12, 13, 17, 1, 2, 4, 7, 99, 0xffffffffu};
    // Markers of real dispatchers, two that share a prefix with one, and a name without text.
    static const std::optional<std::string> markers[] = {
        "ROOT", "inst_tbl_ipv6_acl", "inst_tbl_cfg_classmap", "inst_tbl_ci_vrf_eol", "inst_tbl_uidb_act_interface",
        "inst_tbl_ci_vrf_eo", "ROOTS", std::nullopt,
    };
    diff::Case c;
    c.kind = kinds[(data[0] & 0x0f) % (sizeof kinds / sizeof kinds[0])];
    c.with_pd = (data[0] & 0x10) == 0;
    c.with_pdc = (data[0] & 0x20) == 0;
    const zan::engine::Engine& e = fuzz_engine("fuzz_differential");
    if (data[0] & 0x40) c.slot = zan::db::positions().front()->vft;
    for (int round = 1; round <= 2; ++round)
        for (int bit = 0; bit < 8; ++bit)
            if (data[round] & (1u << bit)) c.pdc_names.push_back(markers[bit]);
    c.path = segments_of(std::string_view(reinterpret_cast<const char*>(data + 3), size - 3));

    const diff::Recording top = diff::run(e, c, diff::Through::top_dispatcher);
    const diff::Recording chain = diff::run(e, c, diff::Through::chain);
    const std::string difference = diff::first_difference(top, chain);
    if (!difference.empty()) {
        std::fprintf(stderr, "fuzz_differential: %s\n-- top dispatcher:\n%s-- chain:\n%s", difference.c_str(),
                     diff::describe(top).c_str(), diff::describe(chain).c_str());
        std::abort();
    }
    return 0;
}

// The same operations done by libyang 2 on an equivalent tree (peer_tree.cpp), measured in
// the process that measures ours (this executable also holds the resolution, row rendering
// and column description suites), so that the ratios compare figures of one run.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "peer_tree.hpp"
#include "../units.hpp"

namespace {

// lyd_find_path on the three-level keyed path of a configured route target, from the first
// top-level node, as a caller holding the tree resolves a request's path.
void BM_PeerFindPath(benchmark::State& state) {
    const Peer& p = peer();
    lyd_node* match = nullptr;
    if (lyd_find_path(p.vrfs, p.grandchild.c_str(), 0, &match) != LY_SUCCESS || match == nullptr) {
        state.SkipWithError(("lyd_find_path finds nothing at " + p.grandchild).c_str());
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(lyd_find_path(p.vrfs, p.grandchild.c_str(), 0, &match));
        benchmark::DoNotOptimize(match);
    }
    state.SetLabel(p.grandchild);
    count_units(state, "segment", 3);
}
BENCHMARK(BM_PeerFindPath)->Unit(benchmark::kNanosecond);

// lyd_print_mem of one list entry as JSON into a fresh string, freed inside the loop.
void print_entry(benchmark::State& state, const lyd_node* entry, size_t leaves) {
    for (auto _ : state) {
        char* out = nullptr;
        benchmark::DoNotOptimize(lyd_print_mem(&out, entry, LYD_JSON, LYD_PRINT_SHRINK));
        std::free(out);
    }
    count_units(state, "attribute", double(leaves));
}

// The entry of the row as configured: the attributes that have a value.
void BM_PeerPrintMacAce(benchmark::State& state) { print_entry(state, peer().mac_ace, peer().mac_leaves); }
BENCHMARK(BM_PeerPrintMacAce)->Unit(benchmark::kNanosecond);

// The entry with a leaf for every one of the 395 attributes.
void BM_PeerPrintMacAceFull(benchmark::State& state) {
    print_entry(state, peer().mac_full, peer().mac_full_leaves);
}
BENCHMARK(BM_PeerPrintMacAceFull)->Unit(benchmark::kNanosecond);

// The schema walk that lists the leaves of the mac_ace list: each leaf's data path and its
// base type, copied into a fresh list, as a column description hands out name and type.
void BM_PeerSchemaLeaves(benchmark::State& state) {
    const Peer& p = peer();
    const lysc_node* list = lys_find_path(p.ctx, nullptr, "/zan-peer:mac_ace", 0);
    if (list == nullptr) {
        state.SkipWithError("no mac_ace list in the module");
        return;
    }
    size_t leaves = 0;
    char buffer[512];
    for (auto _ : state) {
        std::vector<std::pair<std::string, int>> out;
        for (const lysc_node* n = lysc_node_child(list); n != nullptr; n = n->next) {
            if (n->nodetype != LYS_LEAF) continue;
            lysc_path(n, LYSC_PATH_DATA, buffer, sizeof buffer);
            out.emplace_back(buffer, reinterpret_cast<const lysc_node_leaf*>(n)->type->basetype);
        }
        leaves = out.size();
        benchmark::DoNotOptimize(out.data());
    }
    count_units(state, "column", double(leaves));
}
BENCHMARK(BM_PeerSchemaLeaves)->Unit(benchmark::kMicrosecond);

}  // namespace

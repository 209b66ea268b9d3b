// The top dispatcher goes straight to the traverser a segment names; the exported chain asks
// every traverser in turn. Both must leave the same recording (differential.hpp) for every
// request: each of the 331 positions alone and below its parents, with and without keys,
// under every request kind, with name lists absent, empty or holding markers (one, two,
// repeated, sharing a prefix with a real one, behind a name without text), key names the
// table does not know, names one character off, "*" in place of each segment and of a key
// name, and each fault point (and the allocator) at each of its calls.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "differential.hpp"
#include "shared_engine.hpp"
#include "zan/database.hpp"
#include "../sample_keys.hpp"

namespace {

using diff::Case;
using zan::db::TableInfo;
using zan::test::Keys;

// Runs the case both ways; on a difference, fails with both recordings (the first few only).
void expect_same(const Case& c, const std::string& what) {
    static int shown = 0;
    const diff::Recording top = diff::run(engine(), c, diff::Through::top_dispatcher);
    const diff::Recording chain = diff::run(engine(), c, diff::Through::chain);
    const std::string difference = diff::first_difference(top, chain);
    if (difference.empty()) return;
    if (++shown <= 3)
        ADD_FAILURE() << what << ": " << difference << "\n-- top dispatcher:\n"
                      << diff::describe(top) << "-- chain:\n"
                      << diff::describe(chain);
    else
        ADD_FAILURE() << what << ": " << difference;
}

using zan::test::keys_of;

// Positions from the root down to p (a position that is its own parent stands alone).
std::vector<const TableInfo*> lineage(const TableInfo* p) {
    std::vector<const TableInfo*> out;
    for (const TableInfo* q = p; q != nullptr; q = q->parent == q ? nullptr : q->parent) out.insert(out.begin(), q);
    return out;
}

std::vector<zan::plat::UriSegment> path_to(const TableInfo* p, bool keys) {
    std::vector<zan::plat::UriSegment> out;
    for (const TableInfo* q : lineage(p)) {
        zan::plat::UriSegment s{std::string(q->segment), std::nullopt};
        if (keys) s.keys = keys_of(q);
        out.push_back(std::move(s));
    }
    return out;
}

// The marker a dispatcher of p's level answers to: that of p's parent, "ROOT" at the root.
std::string level_marker(const TableInfo* p) {
    if (p->parent == nullptr) return "ROOT";
    if (p->parent->name == "tbl_flow_record_eol") return "inst_tbl_flow_record";
    return "inst_" + std::string(p->parent->table->name);
}

constexpr uint32_t k_kinds[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 99, 0xffffffffu};

struct Lists {
    const char* what;
    bool pd, pdc;
    std::vector<std::optional<std::string>> pd_names, pdc_names;
};

// Name lists a request may come with; `own` is the marker of the position's level.
std::vector<Lists> list_cases(const std::string& own) {
    const std::string shorter = own.substr(0, own.size() - 1);
    return {
        {"no lists", false, false, {}, {}},
        {"pd_list only", true, false, {"x"}, {}},
        {"pdc_list only", false, true, {}, {own}},
        {"both empty", true, true, {}, {}},
        {"one marker", true, true, {}, {own}},
        {"ROOT", true, true, {}, {"ROOT"}},
        {"two markers", true, true, {"y"}, {"ROOT", own}},
        {"repeated marker", true, true, {}, {own, "inst_tbl_ipv6_acl", own, own}},
        {"prefix-sharing markers", true, true, {}, {own + "x", shorter, "ROO", "ROOTS", own}},
        {"behind a textless name", true, true, {}, {std::nullopt, own, "ROOT"}},
        {"in front of a textless name", true, true, {}, {own, std::nullopt, "ROOT", own}},
        {"other levels' markers", true, true, {}, {"inst_tbl_cfg_classmap", "inst_tbl_mdns_sl_out", "inst_tbl_ci_vrf_eol"}},
    };
}

Case make(std::vector<zan::plat::UriSegment> path, uint32_t kind, const Lists& l, const void* slot = nullptr) {
    Case c;
    c.path = std::move(path);
    c.kind = kind;
    c.with_pd = l.pd;
    c.with_pdc = l.pdc;
    c.pd_names = l.pd_names;
    c.pdc_names = l.pdc_names;
    c.slot = slot;
    return c;
}

const Lists k_both_empty{"both empty", true, true, {}, {}};

// A table's vector that is nobody's parent: what a child finds in a cell it was not meant for.
const void* foreign_vector() { return zan::db::positions().front()->vft; }

TEST(Differential, EveryPositionUnderEveryRequestKind) {
    engine();
    for (const TableInfo* p : zan::db::positions()) {
        for (bool keys : {false, true}) {
            for (uint32_t kind : k_kinds) {
                const std::string what = std::string(p->name) + (keys ? " keyed" : "") + " kind " + std::to_string(kind);
                expect_same(make(path_to(p, keys), kind, k_both_empty), what + " from the root");
                zan::plat::UriSegment alone{std::string(p->segment), std::nullopt};
                if (keys) alone.keys = keys_of(p);
                expect_same(make({alone}, kind, k_both_empty), what + " alone");
                if (p->parent != nullptr) expect_same(make({alone}, kind, k_both_empty, foreign_vector()), what + " alone, foreign cell");
            }
        }
    }
}

TEST(Differential, EveryPositionWithEachKindOfNameList) {
    engine();
    for (const TableInfo* p : zan::db::positions()) {
        for (const Lists& l : list_cases(level_marker(p))) {
            for (bool keys : {false, true}) {
                const std::string what = std::string(p->name) + (keys ? " keyed, " : ", ") + l.what;
                expect_same(make(path_to(p, keys), 3, l), what);
                expect_same(make({{std::string(p->segment), std::nullopt}}, 0, l), what + " alone");
            }
            // A key name the table does not know: the dispatchers behind the table's own still
            // scan, and may find the marker its traverser has just stored.
            auto unknown_key = path_to(p, true);
            unknown_key.back().keys = Keys{{"no_such_key", "1"}};
            expect_same(make(unknown_key, 3, l), std::string(p->name) + " with a key it does not know, " + l.what);
            // The segment on its own, then a second one that names nothing.
            auto two = path_to(p, true);
            two.push_back({"no_such_segment", std::nullopt});
            expect_same(make(two, 0, l), std::string(p->name) + " then nothing, " + l.what);
        }
    }
}

TEST(Differential, NamesOneCharacterOffASegment) {
    engine();
    for (const TableInfo* p : zan::db::positions()) {
        const std::string s(p->segment);
        std::string first = s, last = s;
        first[0] = first[0] == 'a' ? 'b' : 'a';
        last.back() = last.back() == 'z' ? 'y' : 'z';
        for (const std::string& off : {first, last, s.substr(0, s.size() - 1), s + "s", "_" + s, std::string(s + "*")}) {
            for (const Lists& l : {k_both_empty, list_cases(level_marker(p))[4], list_cases(level_marker(p))[0]}) {
                const std::string what = std::string(p->name) + " as " + off + ", " + l.what;
                expect_same(make({{off, std::nullopt}}, 0, l), what);
                auto path = path_to(p, true);
                path.back() = {off, Keys{{std::string(p->key_name), "1"}}};
                expect_same(make(path, 3, l), what + " below its parents");
            }
        }
    }
}

TEST(Differential, AStarAtEachLevel) {
    engine();
    const Lists pd_only{"pd_list only", true, false, {}, {}};
    for (const TableInfo* p : zan::db::positions()) {
        const auto full = path_to(p, true);
        for (size_t level = 0; level < full.size(); ++level) {
            for (const Lists& l : {k_both_empty, pd_only, list_cases(level_marker(p))[4]}) {
                const std::string what = std::string(p->name) + " '*' at level " + std::to_string(level + 1) + ", " + l.what;
                auto path = full;
                path[level] = {"*", std::nullopt};
                expect_same(make(path, 0, l), what);
                path.resize(level + 1);
                expect_same(make(path, 0, l), what + " (last)");
                // "*" as the first key name of the last segment.
                path = std::vector(full.begin(), full.begin() + static_cast<long>(level) + 1);
                path.back().keys = Keys{{"*", ""}};
                expect_same(make(path, 0, l), what + " as a key name");
            }
        }
    }
}

TEST(Differential, EveryFaultPointAtEachOfItsCalls) {
    engine();
    size_t faults = 0;
    for (const TableInfo* p : zan::db::positions()) {
        for (const Lists& l : {k_both_empty, list_cases(level_marker(p))[4]}) {
            for (uint32_t kind : {0u, 3u}) {
                Case c = make(path_to(p, true), kind, l);
                // Which points the request hits, and how often.
                const diff::Recording clean = diff::run(engine(), c, diff::Through::chain);
                for (const std::string& count : clean.counts) {
                    // "<point> +<calls>", or "alloc attempts +<n> live +<m>".
                    const bool alloc = count.rfind("alloc attempts +", 0) == 0;
                    const size_t plus = alloc ? count.find(" +") : count.rfind(" +");
                    const std::string point = alloc ? "allocation" : count.substr(0, plus);
                    const long calls = std::stol(count.substr(plus + 2));
                    for (long n = 1; n <= calls; ++n) {
                        c.fault = {{point, n}};
                        expect_same(c, std::string(p->name) + ", kind " + std::to_string(kind) + ", " + l.what +
                                           ": " + point + " failing at call " + std::to_string(n));
                        ++faults;
                    }
                }
            }
        }
    }
    EXPECT_GT(faults, zan::db::positions().size());
}

}  // namespace

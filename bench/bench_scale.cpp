// Size: configurations of 1,000, 10,000 and 100,000 rows in three shapes, loaded, dumped and
// asked for one row, with libyang's parse of the same content beside them when it is built
// in (ZAN_PEER). Shapes:
//   flat   tbl_ci_vrf_eol rows, two attributes each;
//   child  one MAC access list (tbl_conf_mac_nacl_mode_eol) holding the tbl_conf_mac_nacl_eol
//          entries, two attributes each;
//   mix    VRFs each with an address family and two route targets (three levels), and one
//          entry of a MAC access list per VRF: five rows per VRF over five tables.
// Memory is the heap the store (or libyang's tree) holds once loaded, per row: malloc's
// own count of the bytes in use before and after, so the figure is the structure's alone;
// for the store, after one keyed get of the last row, so that the key indexes it builds on
// first use are counted too.
#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "zan/config.hpp"
#include "zan/database.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "bench_engine.hpp"

#ifdef ZAN_PEER
#include "peer/peer_tree.hpp"
#endif

namespace {

enum Shape : int { flat, child, mix };
const char* const k_shape_names[] = {"flat", "child", "mix"};

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "bench_scale: %s\n", what.c_str());
    std::exit(1);
}

// The configuration text of a shape with `rows` rows (the MAC list row of `child` and `mix`
// aside), and the same content as libyang reads it (module zan-peer, RFC 7951 JSON).
struct Texts {
    std::string ours, peer;
    size_t rows = 0;
};

std::string vrf_name(size_t i) { return "vrf" + std::to_string(i); }

Texts make_texts(Shape shape, size_t rows) {
    Texts t;
    std::string& o = t.ours;
    std::string& p = t.peer;
    auto mac_entry = [](std::string& out, size_t i) {
        out += "{\"mac_ace_entry_number\":";
        out += std::to_string(10 * (i + 1));
        out += ",\"mac_ace_cmd\":\"permit any any\"}";
    };
    switch (shape) {
    case flat:
        o = "{\"tbl_ci_vrf_eol\":[";
        p = "{\"zan-peer:vrf\":[";
        for (size_t i = 0; i < rows; ++i) {
            const std::string row = "{\"vrf_key_vrf_name\":\"" + vrf_name(i) + "\",\"ci_vrf_set_afi\":1}";
            o += (i ? "," : "") + row;
            p += (i ? "," : "") + row;
        }
        o += "]}";
        p += "]}";
        t.rows = rows;
        break;
    case child:
        o = "{\"tbl_conf_mac_nacl_mode_eol\":[{\"access_list_name\":\"ACL\",\"children\":{\"tbl_conf_mac_nacl_eol\":[";
        p = "{\"zan-peer:mac_ace\":[";
        for (size_t i = 0; i < rows; ++i) {
            if (i) o += ',', p += ',';
            mac_entry(o, i);
            mac_entry(p, i);
        }
        o += "]}}]}";
        p += "]}";
        t.rows = rows;
        break;
    case mix: {
        const size_t vrfs = rows / 5;
        std::string macs, peer_macs;
        o = "{\"tbl_ci_vrf_eol\":[";
        p = "{\"zan-peer:vrf\":[";
        for (size_t i = 0; i < vrfs; ++i) {
            const std::string rt = "\"vrf_mode_rt_key\":\"65000:" + std::to_string(i);
            o += (i ? "," : "");
            o += "{\"vrf_key_vrf_name\":\"" + vrf_name(i) + "\",\"ci_vrf_set_afi\":1,\"children\":{"
                 "\"tbl_ci_vrf_afi_mode_eol\":[{\"vrf_af_afi\":1,\"children\":{\"tbl_ci_vrf_mode_rt_eol\":[{" +
                 rt + "1\"},{" + rt + "2\"}]}}]}}";
            p += (i ? "," : "");
            p += "{\"vrf_key_vrf_name\":\"" + vrf_name(i) + "\",\"ci_vrf_set_afi\":1,\"vrf_afi\":[{\"vrf_af_afi\":1,"
                 "\"vrf_afi_rt\":[{" + rt + "1\"},{" + rt + "2\"}]}]}";
            if (i) macs += ',', peer_macs += ',';
            mac_entry(macs, i);
            mac_entry(peer_macs, i);
        }
        o += "],\"tbl_conf_mac_nacl_mode_eol\":[{\"access_list_name\":\"ACL\",\"children\":{\"tbl_conf_mac_nacl_eol\":[" +
             macs + "]}}]}";
        p += "],\"zan-peer:mac_ace\":[" + peer_macs + "]}";
        t.rows = vrfs * 5;
        break;
    }
    }
    return t;
}

const Texts& texts(Shape shape, size_t rows) {
    static std::map<std::pair<int, size_t>, Texts> made;
    auto it = made.find({shape, rows});
    if (it == made.end()) it = made.emplace(std::make_pair(int(shape), rows), make_texts(shape, rows)).first;
    return it->second;
}

size_t heap_in_use() {
    const struct mallinfo2 m = mallinfo2();
    return m.uordblks + m.hblkhd;
}

std::unique_ptr<zan::db::Store> load(const Texts& t) {
    auto loaded = zan::config::load_text(t.ours, "<scale>");
    if (!loaded) fail(loaded.error);
    return std::move(loaded.store);
}

// The table whose last row the keyed get asks for.
const zan::db::TableInfo& last_table(Shape shape) {
    const char* name = shape == flat ? "tbl_ci_vrf_eol" : shape == child ? "tbl_conf_mac_nacl_eol" : "tbl_ci_vrf_mode_rt_eol";
    const zan::db::TableInfo* t = zan::db::table_info(name);
    if (!t) fail(std::string("no table ") + name);
    return *t;
}

// One row reached through the dispatcher by its own path and rendered: what `zanfe get`
// and, row by row, `zanfe dump` do.
void get_row(const zan::engine::Engine& e, const zan::db::Store& store, const zan::db::Row& row) {
    zan::engine::Request req;
    req.segments = zan::engine::row_segments(row);
    req.kind = zan::engine::k_kind_read_row;
    const zan::engine::Response r = e.request(req);
    if (r.code != 1) fail("a row's path does not resolve: code " + std::to_string(r.code));
    const zan::engine::Walk w = zan::engine::walk(store, r.traversals);
    if (w.error || w.rows.size() != 1 || w.rows.front() != &row) fail("a row's path does not lead back to it");
    const auto t = e.find_table(zan::db::table_of(row).name);
    if (!t || !t->gx->to_properties) fail("no to_properties");
    gx_do_properties* props = zan::plat::properties_new();
    uint32_t err = 0;
    const int32_t status = t->gx->to_properties(zan::engine::Engine::context(), 0, &row, props, 0, &err);
    zan::plat::properties_deref(props);
    if (status != 0 || err != 0) fail("a row does not render");
}

// The store of a shape and size, loaded once and kept, with the heap it holds.
struct Loaded {
    std::unique_ptr<zan::db::Store> store;
    size_t bytes = 0;
};
const Loaded& loaded(Shape shape, size_t rows) {
    static std::map<std::pair<int, size_t>, Loaded> made;
    auto it = made.find({shape, rows});
    if (it != made.end()) return it->second;
    const Texts& t = texts(shape, rows);
    malloc_trim(0);
    const size_t before = heap_in_use();
    Loaded l;
    l.store = load(t);
    const auto of_table = l.store->rows(last_table(shape));
    if (of_table.empty()) fail("no row to get");
    get_row(bench_engine("bench_scale"), *l.store, *of_table.back());
    l.bytes = heap_in_use() - before;
    return made.emplace(std::make_pair(int(shape), rows), std::move(l)).first->second;
}

void per_row(benchmark::State& state, size_t rows) {
    state.counters["rows"] = double(rows);
    state.counters["per_row"] =
        benchmark::Counter(double(rows), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_ScaleLoad(benchmark::State& state) {
    bench_engine("bench_scale");
    const auto shape = Shape(state.range(0));
    const Texts& t = texts(shape, size_t(state.range(1)));
    for (auto _ : state) benchmark::DoNotOptimize(load(t));
    per_row(state, t.rows);
    state.counters["heap_per_row"] = double(loaded(shape, size_t(state.range(1))).bytes) / double(t.rows);
    state.SetLabel(k_shape_names[shape]);
}

void BM_ScaleGetLast(benchmark::State& state) {
    const auto& e = bench_engine("bench_scale");
    const auto shape = Shape(state.range(0));
    const zan::db::Store& store = *loaded(shape, size_t(state.range(1))).store;
    const auto rows = store.rows(last_table(shape));
    if (rows.empty()) fail("no row to get");
    for (auto _ : state) get_row(e, store, *rows.back());
    state.SetLabel(k_shape_names[shape]);
}

void BM_ScaleDump(benchmark::State& state) {
    const auto& e = bench_engine("bench_scale");
    const auto shape = Shape(state.range(0));
    const zan::db::Store& store = *loaded(shape, size_t(state.range(1))).store;
    size_t rows = 0;
    for (auto _ : state) {
        rows = 0;
        for (const auto* table : zan::db::tables())
            for (const zan::db::Row* row : store.rows(*table)) {
                get_row(e, store, *row);
                ++rows;
            }
    }
    per_row(state, rows);
    state.SetLabel(k_shape_names[shape]);
}

#ifdef ZAN_PEER
// The zan-peer module with its lists in one container `scale`, and a text moved into it.
// libyang reaches the siblings of a node with a parent through the parent; for top-level
// nodes, which have none, each node parsed walks the sibling list back by its `prev` links
// (a profile puts four fifths of a 20,000-entry parse in that loop): square in the entries.
// Under a container the same entries parse in linear time.
ly_ctx* contained_ctx() {
    static ly_ctx* ctx = [] {
        std::ifstream in(ZAN_PEER_YANG);
        std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        const auto replace = [&](const std::string& from, const std::string& to) {
            const size_t at = text.find(from);
            if (at == std::string::npos) fail("zan-peer.yang: no " + from);
            text.replace(at, from.size(), to);
        };
        replace("module zan-peer {", "module zan-peer-c {");
        replace("urn:zanfe:bench:zan-peer\"", "urn:zanfe:bench:zan-peer-c\"");
        replace("prefix zp;", "prefix zpc;");
        replace("\n  list ", "\n  container scale {\n  list ");
        text.insert(text.rfind('}'), "}\n");
        ly_ctx* c = nullptr;
        if (ly_ctx_new(nullptr, LY_CTX_NO_YANGLIBRARY, &c) != LY_SUCCESS ||
            lys_parse_mem(c, text.c_str(), LYS_IN_YANG, nullptr) != LY_SUCCESS)
            fail("libyang: the contained module does not load");
        return c;
    }();
    return ctx;
}

std::string contained_text(const std::string& peer) {
    std::string out = "{\"zan-peer-c:scale\":";
    const std::string prefix = "\"zan-peer:";
    for (size_t at = 0, next; at < peer.size(); at = next + prefix.size()) {
        next = peer.find(prefix, at);
        if (next == std::string::npos) {
            out.append(peer, at);
            break;
        }
        out.append(peer, at, next - at);
        out += '"';
    }
    return out + "}";
}

void peer_parse(benchmark::State& state, ly_ctx* ctx, const std::string& text, size_t rows) {
    auto parse = [&] {
        lyd_node* tree = nullptr;
        if (lyd_parse_data_mem(ctx, text.c_str(), LYD_JSON, LYD_PARSE_ONLY | LYD_PARSE_STRICT, 0, &tree) != LY_SUCCESS)
            fail(std::string("libyang: ") + ly_errmsg(ctx));
        return tree;
    };
    // The heap is measured on the first parse timed: at 100,000 top-level entries one parse
    // takes minutes, so the run makes only the one.
    size_t bytes = 0;
    bool measured = false;
    for (auto _ : state) {
        if (!measured) {
            measured = true;
            state.PauseTiming();
            malloc_trim(0);
            const size_t before = heap_in_use();
            state.ResumeTiming();
            lyd_node* tree = parse();
            state.PauseTiming();
            bytes = heap_in_use() - before;
            state.ResumeTiming();
            lyd_free_all(tree);
        } else {
            lyd_free_all(parse());
        }
    }
    per_row(state, rows);
    state.counters["heap_per_row"] = double(bytes) / double(rows);
}

void BM_PeerScaleParse(benchmark::State& state) {
    const auto shape = Shape(state.range(0));
    const Texts& t = texts(shape, size_t(state.range(1)));
    peer_parse(state, peer().ctx, t.peer, t.rows);
    state.SetLabel(k_shape_names[shape]);
}

void BM_PeerContainedScaleParse(benchmark::State& state) {
    const auto shape = Shape(state.range(0));
    const Texts& t = texts(shape, size_t(state.range(1)));
    const std::string text = contained_text(t.peer);
    peer_parse(state, contained_ctx(), text, t.rows);
    state.SetLabel(k_shape_names[shape]);
}
#endif

void sizes(benchmark::internal::Benchmark* b) {
    for (int shape : {flat, child, mix})
        for (int64_t rows : {1000, 10000, 100000}) b->Args({shape, rows});
    b->ArgNames({"shape", "rows"})->Unit(benchmark::kMillisecond);
}

}  // namespace

BENCHMARK(BM_ScaleLoad)->Apply(sizes);
BENCHMARK(BM_ScaleGetLast)->Apply(sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ScaleDump)->Apply(sizes);
#ifdef ZAN_PEER
BENCHMARK(BM_PeerScaleParse)->Apply(sizes);
BENCHMARK(BM_PeerContainedScaleParse)->Apply(sizes);
#endif

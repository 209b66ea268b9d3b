// A table row's to_vlist (slot 3 of its row) with arbitrary name lists, on the rows of the
// built-in configuration: whatever the names, each adds at most one value, the answer is -1
// or a value's positive result, and nothing the call made outlives it.
//
// Input: bytes 0-1 choose the row, byte 2 bit 0 asks for state; the rest is the names,
// separated by '\n'.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz_engine.hpp"

namespace {

// Every row of the built-in configuration.
const std::vector<const zan::db::Row*>& rows() {
    static const std::vector<const zan::db::Row*> all = [] {
        fuzz_engine("fuzz_vlist");
        std::vector<const zan::db::Row*> out;
        for (const zan::db::TableInfo* t : zan::db::tables())
            for (const zan::db::Row* r : fuzz_store().rows(*t)) out.push_back(r);
        return out;
    }();
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    const zan::db::Row* row = rows()[(size_t(data[0]) << 8 | data[1]) % rows().size()];
    const int32_t with_state = data[2] & 1;
    std::vector<std::string> names;
    std::string_view rest(reinterpret_cast<const char*>(data + 3), size - 3);
    while (true) {
        const size_t nl = rest.find('\n');
        names.emplace_back(rest.substr(0, nl));
        if (nl == std::string_view::npos) break;
        rest.remove_prefix(nl + 1);
    }

    const auto table = fuzz_engine("fuzz_vlist").find_table(zan::db::table_of(*row).name);
    if (!table) std::abort();
    without_leftovers("fuzz_vlist: the call", [&] {
        gx_do_uri* uri = zan::plat::uri_new(zan::engine::row_segments(*row));
        gx_do_nlist* nlist = gx_do_nlist_new();
        for (const std::string& n : names) gx_do_nlist_add_string(nlist, n.c_str());
        gx_do_vlist* vlist = gx_do_vlist_new();
        uint32_t err = 0;
        const int32_t r =
            table->gx->to_vlist(zan::engine::Engine::context(), 0, uri, nlist, row, vlist, with_state, &err);
        if (r == 0 || r < -1 || gx_do_vlist_get_len(vlist) > int32_t(names.size())) {
            std::fprintf(stderr, "fuzz_vlist: answer %d with %d values for %zu names\n", r,
                         gx_do_vlist_get_len(vlist), names.size());
            std::abort();
        }
        gx_do_vlist_deref(vlist);
        gx_do_nlist_deref(nlist);
        zan::plat::uri_deref(uri);
    });
    return 0;
}

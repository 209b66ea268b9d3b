// Heap use of the front end on the request paths: a segment that no table takes allocates
// nothing at all, and rendering, column description and a resolved request allocate
// nothing from the front end's own code (the platform's objects may; that is theirs).
//
// This binary replaces malloc, calloc, realloc and operator new for the whole process.
// Each replacement notes the address it was called from; while counting is switched on,
// a call from inside the text of libzanfe.so is counted as the front end's. A helper of
// the C++ library called by the front end would allocate from libstdc++'s text, not the
// front end's, so its imports are checked besides (test_frame's
// LibraryFile.TakesNoMemoryBehindTheAllocatorsBack): no heap function and no C++ library
// function that may allocate.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <link.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "zan/config.hpp"
#include "zan/database.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "shared_engine.hpp"

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void __libc_free(void*);
}

namespace {

// Text range whose calls count as "ours"; [0, 0) counts nothing.
std::atomic<uintptr_t> g_lo{0}, g_hi{0};
std::atomic<bool> g_counting{false};
std::atomic<long> g_all{0};      // every heap call while counting
std::atomic<long> g_inside{0};   // of those, the calls made from the range

inline void note(void* caller) {
    if (!g_counting.load(std::memory_order_relaxed)) return;
    g_all.fetch_add(1, std::memory_order_relaxed);
    const auto a = reinterpret_cast<uintptr_t>(caller);
    if (a >= g_lo.load(std::memory_order_relaxed) && a < g_hi.load(std::memory_order_relaxed))
        g_inside.fetch_add(1, std::memory_order_relaxed);
}

void* checked_new(size_t n) {
    void* p = __libc_malloc(n == 0 ? 1 : n);
    if (p == nullptr) throw std::bad_alloc();
    return p;
}

}  // namespace

extern "C" {
void* malloc(size_t n) {
    note(__builtin_return_address(0));
    return __libc_malloc(n);
}
void* calloc(size_t n, size_t size) {
    note(__builtin_return_address(0));
    return __libc_calloc(n, size);
}
void* realloc(void* p, size_t n) {
    note(__builtin_return_address(0));
    return __libc_realloc(p, n);
}
void free(void* p) { __libc_free(p); }
}

void* operator new(size_t n) {
    note(__builtin_return_address(0));
    return checked_new(n);
}
void* operator new[](size_t n) {
    note(__builtin_return_address(0));
    return checked_new(n);
}
void* operator new(size_t n, const std::nothrow_t&) noexcept {
    note(__builtin_return_address(0));
    return __libc_malloc(n == 0 ? 1 : n);
}
void* operator new[](size_t n, const std::nothrow_t&) noexcept {
    note(__builtin_return_address(0));
    return __libc_malloc(n == 0 ? 1 : n);
}
void operator delete(void* p) noexcept { __libc_free(p); }
void operator delete[](void* p) noexcept { __libc_free(p); }
void operator delete(void* p, size_t) noexcept { __libc_free(p); }
void operator delete[](void* p, size_t) noexcept { __libc_free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { __libc_free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { __libc_free(p); }

namespace {

namespace db = zan::db;

struct Range {
    uintptr_t lo = 0, hi = 0;
};

// Lowest and highest address of the executable segments of the loaded object that holds
// `addr`.
Range text_of(const void* addr) {
    struct Find {
        uintptr_t addr;
        Range out;
    } find{reinterpret_cast<uintptr_t>(addr), {}};
    dl_iterate_phdr(
        [](dl_phdr_info* info, size_t, void* data) {
            auto* f = static_cast<Find*>(data);
            Range r{UINTPTR_MAX, 0};
            for (int i = 0; i < info->dlpi_phnum; ++i) {
                const ElfW(Phdr)& ph = info->dlpi_phdr[i];
                if (ph.p_type != PT_LOAD || !(ph.p_flags & PF_X)) continue;
                r.lo = std::min<uintptr_t>(r.lo, info->dlpi_addr + ph.p_vaddr);
                r.hi = std::max<uintptr_t>(r.hi, info->dlpi_addr + ph.p_vaddr + ph.p_memsz);
            }
            if (f->addr < r.lo || f->addr >= r.hi) return 0;
            f->out = r;
            return 1;
        },
        &find);
    return find.out;
}

// Heap calls made while `fn` runs: all of them, and those from the given range.
struct Heap {
    long all = 0, inside = 0;
};
template <class Fn>
Heap heap_calls(Range range, Fn&& fn) {
    g_lo = range.lo;
    g_hi = range.hi;
    g_all = 0;
    g_inside = 0;
    g_counting = true;
    fn();
    g_counting = false;
    return {g_all.load(), g_inside.load()};
}

Range front_end() {
    const Range r = text_of(reinterpret_cast<const void*>(engine().dispatcher()));
    EXPECT_LT(r.lo, r.hi) << "the front end's text was not found";
    return r;
}

__attribute__((noinline)) void* allocate_here(size_t n) {
    void* (*volatile alloc)(size_t) = malloc;
    return alloc(n);
}

TEST(HeapCount, AttributesCallsToTheCallingObject) {
    // The count must be able to see a call: one from this executable's own text.
    const Range self = text_of(reinterpret_cast<const void*>(&allocate_here));
    ASSERT_LT(self.lo, self.hi);
    void* p = nullptr;
    const Heap h = heap_calls(self, [&] { p = allocate_here(40); });
    std::free(p);
    EXPECT_EQ(h.inside, 1);
    // The same call seen against the front end's range is not the front end's.
    const Heap other = heap_calls(front_end(), [&] { p = allocate_here(40); });
    std::free(p);
    EXPECT_EQ(other.all, 1);
    EXPECT_EQ(other.inside, 0);
}

// A read of one row straight through the registered dispatcher, for a segment no table takes
// (miss) or a configured peer (hit); the lists, params and paths go with the object.
struct DispatchCall {
    using Keys = std::vector<std::pair<std::string, std::string>>;
    gx_do_uri* miss = zan::plat::uri_new({{"no_such_segment", Keys{{"singleton_id", "1"}}}});
    gx_do_uri* hit = zan::plat::uri_new({{"ntp_peer_server", Keys{{"peer_server_key", "10.0.0.1"}}}});
    gx_do_nlist* pd = gx_do_nlist_new();
    gx_do_nlist* pdc = gx_do_nlist_new();
    arbor_params_t* params = zan::plat::params_new();
    const void* slot = nullptr;
    int ctx = 0;
    DispatchCall() = default;
    DispatchCall(const DispatchCall&) = delete;
    DispatchCall& operator=(const DispatchCall&) = delete;
    ~DispatchCall() {
        zan::plat::uri_deref(hit);
        zan::plat::uri_deref(miss);
        zan::plat::params_free(params);
        gx_do_nlist_deref(pd);
        gx_do_nlist_deref(pdc);
    }
    int32_t operator()(gx_do_uri* uri) {
        return engine().dispatcher()(&ctx, 0, 0, uri, pd, pdc, params, 0, zan::engine::k_kind_read_row, &slot);
    }
};

TEST(FrontEndHeap, AChainMissAllocatesNothing) {
    // Offered to every table of every dispatcher, taken by none: neither the platform's
    // allocator nor the heap is asked for anything, by anyone.
    DispatchCall call;
    call(call.miss);   // warm
    gx_do_nlist_clear(call.pdc);
    const long before = zan::plat::alloc_count();
    int32_t code = -1;
    const Heap h = heap_calls(front_end(), [&] { code = call(call.miss); });
    EXPECT_EQ(code, 3);
    EXPECT_EQ(h.all, 0);
    EXPECT_EQ(zan::plat::alloc_count(), before);
    EXPECT_TRUE(zan::plat::params_traversals(call.params).empty());
    EXPECT_EQ(call.slot, nullptr);
    // The pdc list is grown by the dispatcher ("ROOT") but had its room from the warm call.
    // A resolved request does allocate, through the platform: the counts are not blind.
    const Heap hit_heap = heap_calls(front_end(), [&] { code = call(call.hit); });
    EXPECT_EQ(code, 1);
    EXPECT_GT(hit_heap.all, 0);
    EXPECT_EQ(hit_heap.inside, 0);
    EXPECT_GT(zan::plat::alloc_count(), before);
}

TEST(FrontEndHeap, ResolvingAPathAllocatesOnlyThroughThePlatform) {
    const Range fe = front_end();
    const auto& store = default_store();
    // Every configured row two or more levels down, by its keys.
    size_t resolved = 0;
    for (const db::TableInfo* t : db::tables()) {
        if (store.rows(*t).empty()) continue;
        zan::engine::Request req;
        req.segments = zan::engine::row_segments(*store.rows(*t).front());
        req.kind = zan::engine::k_kind_read_row;
        if (req.segments.size() < 2) continue;
        zan::engine::Response r;
        const Heap h = heap_calls(fe, [&] { r = engine().request(req); });
        EXPECT_EQ(h.inside, 0) << t->name;
        if (r.code == 1) ++resolved;
    }
    EXPECT_GT(resolved, 10u);
}

TEST(FrontEndHeap, RenderingARowAllocatesNothingInTheFrontEnd) {
    // The first row of every configured table, to properties and to a value list; and the
    // columns of every table.
    const Range fe = front_end();
    const auto& store = default_store();
    size_t rendered = 0;
    long platform_calls = 0;
    for (const auto& row : engine().table_rows()) {
        if (row.empty()) continue;
        zan::engine::ColumnResult cols;
        const Heap c = heap_calls(fe, [&] { cols = engine().columns(row); });
        EXPECT_EQ(c.inside, 0) << row.name();
        const db::TableInfo* info = db::table_info(std::string(row.name()));
        if (info == nullptr || store.rows(*info).empty() || row.gx->to_properties == nullptr) continue;
        const db::Row* r = store.rows(*info).front();
        gx_do_properties* props = zan::plat::properties_new();
        uint32_t err = 0;
        int32_t status = -1;
        const long tallow_before = zan::plat::alloc_count();
        const Heap h = heap_calls(fe, [&] { status = row.gx->to_properties(engine().context(), 0, r, props, 0, &err); });
        EXPECT_EQ(status, 0) << row.name();
        EXPECT_EQ(h.inside, 0) << row.name();
        EXPECT_EQ(zan::plat::alloc_count(), tallow_before) << row.name();
        platform_calls += h.all;
        zan::plat::properties_deref(props);
        ++rendered;
        if (info->rows.size() != 1) continue;
        const auto type = engine().find_type(info->rows[0]->name);
        if (!type || type->vlist->to_vlist_all == nullptr) continue;
        gx_do_vlist* list = gx_do_vlist_new();
        err = 0;
        const Heap v = heap_calls(fe, [&] {
            status = type->vlist->to_vlist_all(engine().context(), 0, db::row_record(*r), list, 0, &err);
        });
        EXPECT_GE(status, 0) << row.name();
        EXPECT_EQ(v.inside, 0) << row.name();
        platform_calls += v.all;
        gx_do_vlist_deref(list);
    }
    EXPECT_GT(rendered, 50u);
    // Arrays, sequences and growing objects make the platform allocate now and then.
    EXPECT_GT(platform_calls, 0);
}

}  // namespace

// The accounting allocator: every block carries a small header naming its site record, so
// that live and total counts are kept per site tag and type name. Failures can be injected
// by position (the n-th attempt from now) or by site tag. Freed blocks of up to 256 bytes
// wait in a per-thread list of their size class for the next allocation of that class:
// a request makes and drops a handful of small traversal objects, and the lists spare
// each of them a malloc and a free.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core.hpp"

namespace zan::plat::detail {
namespace {

struct Site {
    uint32_t tag;
    std::string type;
    std::atomic<long> attempts{0};
    std::atomic<long> failed{0};
    std::atomic<long> live{0};
};

constexpr uint32_t k_magic_live = 0x7a616e6cu;
constexpr uint32_t k_magic_freed = 0x7a616e66u;

struct alignas(16) Header {
    Site* site;
    uint32_t magic;
    uint32_t size_class;        // k_classes: not kept for reuse
};
static_assert(sizeof(Header) == 16, "the header keeps the 16-byte alignment of malloc");

struct AllocState {
    std::mutex m;
    std::map<std::pair<uint32_t, std::string>, std::unique_ptr<Site>, std::less<>> by_key;
    std::vector<Site*> in_order;          // first use first
    long nth = 0;                         // countdown to the failing attempt
    std::optional<uint32_t> failing_tag;
};

AllocState& state() {
    static AllocState* s = new AllocState;   // blocks may be freed during exit
    return *s;
}

std::atomic<bool> g_alloc_armed{false};

// The watch, as the trace keeps its sink: one load while none is set.
std::atomic<bool> g_watching{false};
std::mutex g_watch_m;
std::shared_ptr<const zan::plat::AllocWatch> g_watch;

void tell(const zan::plat::AllocCall& call) {
    std::shared_ptr<const zan::plat::AllocWatch> w;
    {
        std::lock_guard lock(g_watch_m);
        w = g_watch;
    }
    if (w) (*w)(call);
}
inline bool watching() { return g_watching.load(std::memory_order_relaxed); }

// Small per-thread cache from (tag, type name) to the site record: a thread pays the
// lookup under the lock once per site.
struct CacheEntry {
    uint32_t tag;
    const char* type;
    Site* site;
};
constexpr unsigned k_cache = 256;   // a request uses a few dozen (tag, type) pairs
constinit thread_local CacheEntry t_cache[k_cache] __attribute__((tls_model("initial-exec"))) = {};

// Size classes of 16 bytes up to 256. The sanitizer builds do without the lists, so that
// a use after free still shows.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZAN_ALLOC_SANITIZED 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(ZAN_ALLOC_SANITIZED)
constexpr bool k_reuse = false;
#else
constexpr bool k_reuse = true;
#endif
constexpr uint32_t k_classes = 16;
constexpr uint32_t k_class_bytes = 16;
constexpr uint16_t k_keep = 32;     // blocks a thread keeps per class

struct FreeBlock {
    FreeBlock* next;
};
enum class ReuseState : uint8_t { unused, open, closed };
struct ReuseLists {
    FreeBlock* head[k_classes];
    uint16_t count[k_classes];
    ReuseState state;
};
constinit thread_local ReuseLists t_reuse __attribute__((tls_model("initial-exec"))) = {};

// Gives the kept blocks back when the thread ends; frees after that go straight to free().
void drain_reuse() {
    t_reuse.state = ReuseState::closed;
    for (uint32_t c = 0; c < k_classes; ++c) {
        while (FreeBlock* b = t_reuse.head[c]) {
            t_reuse.head[c] = b->next;
            std::free(reinterpret_cast<Header*>(b) - 1);
        }
        t_reuse.count[c] = 0;
    }
}
struct ReuseDrain {
    ~ReuseDrain() { drain_reuse(); }
};
void open_reuse() {
    static thread_local ReuseDrain drain;   // constructed on the thread's first keep only
    static_cast<void>(&drain);
    t_reuse.state = ReuseState::open;
}

uint32_t size_class(std::size_t size) {
    return size <= k_classes * k_class_bytes ? (size == 0 ? 0 : uint32_t((size - 1) / k_class_bytes)) : k_classes;
}

// A block of the class (a kept one first; a fresh one holds the whole class), or of exactly
// the size for a block kept by no class.
Header* take_block(uint32_t cls, std::size_t size) {
    if (cls == k_classes)
        return size <= SIZE_MAX - sizeof(Header) ? static_cast<Header*>(std::malloc(sizeof(Header) + size)) : nullptr;
    if (FreeBlock* b = t_reuse.head[cls]) {
        t_reuse.head[cls] = b->next;
        --t_reuse.count[cls];
        return reinterpret_cast<Header*>(b) - 1;
    }
    return static_cast<Header*>(std::malloc(sizeof(Header) + (cls + 1) * k_class_bytes));
}

// Initial-exec like the counters (four bytes of static TLS): set before every traversal
// object the front end makes, so each access is one offset from the thread pointer.
constinit thread_local uint32_t t_pending_tag __attribute__((tls_model("initial-exec"))) = 0;

// The first allocation of a (tag, type) pair on a thread: the site record under the lock.
[[gnu::noinline]] Site* find_site_slow(uint32_t tag, const char* type, CacheEntry& e) {
    AllocState& s = state();
    std::lock_guard lock(s.m);
    auto key = std::make_pair(tag, std::string(type));
    auto it = s.by_key.find(key);
    if (it == s.by_key.end()) {
        auto site = std::make_unique<Site>();
        site->tag = tag;
        site->type = key.second;
        s.in_order.push_back(site.get());
        it = s.by_key.emplace(std::move(key), std::move(site)).first;
    }
    e = CacheEntry{tag, type, it->second.get()};
    return e.site;
}

// The cache is keyed by the type name's address: type names are texts held by the calling
// library for its whole life (its named type strings, or literals), so one address is one
// name. The site records themselves are keyed by the text.
inline Site* find_site(uint32_t tag, const char* type) {
    if (!type) type = "";
    CacheEntry& e = t_cache[(tag * 2654435761u ^ uint32_t(reinterpret_cast<uintptr_t>(type) >> 3)) % k_cache];
    if (e.site && e.tag == tag && e.type == type) [[likely]]
        return e.site;
    return find_site_slow(tag, type, e);
}

bool injected_failure(uint32_t tag) {
    AllocState& s = state();
    std::lock_guard lock(s.m);
    bool fail = s.failing_tag && *s.failing_tag == tag;
    if (s.nth > 0 && --s.nth == 0) fail = true;
    g_alloc_armed.store(s.nth > 0 || s.failing_tag.has_value(), std::memory_order_relaxed);
    return fail;
}

void* allocate(uint32_t tag, const char* type, std::size_t size) {
    Site* site = find_site(tag, type);
    site->attempts.fetch_add(1, std::memory_order_relaxed);
    Header* h = nullptr;
    bool injected = g_alloc_armed.load(std::memory_order_relaxed) && injected_failure(tag);
    const uint32_t cls = k_reuse ? size_class(size) : k_classes;
    if (!injected) h = take_block(cls, size);
    if (!h) {
        site->failed.fetch_add(1, std::memory_order_relaxed);
        return nullptr;
    }
    h->site = site;
    h->magic = k_magic_live;
    h->size_class = cls;
    site->live.fetch_add(1, std::memory_order_relaxed);
    return h + 1;
}

}  // namespace

void alloc_clear_injection() {
    AllocState& s = state();
    std::lock_guard lock(s.m);
    s.nth = 0;
    s.failing_tag.reset();
    g_alloc_armed.store(false, std::memory_order_relaxed);
}

uint32_t take_pending_tag() {
    const uint32_t tag = t_pending_tag;
    t_pending_tag = 0;
    return tag;
}

void* tagged_alloc(std::size_t size, const char* type_name) {
    uint32_t tag = t_pending_tag;
    t_pending_tag = 0;
    return allocate(tag, type_name, size);
}

}  // namespace zan::plat::detail

using namespace zan::plat::detail;

extern "C" {

void* __tallow_malloc(uint32_t site, uint64_t* type_cell, const char* type_name, uint64_t* pool_cell,
                      const char* pool_name, size_t size) {
    void* p = allocate(site, type_name, size);
    if (watching()) [[unlikely]]
        tell({zan::plat::AllocCall::malloc, site, type_cell, type_name, pool_cell, pool_name, p, size});
    return p;
}

char* __tallow_strdup(uint32_t site, uint64_t* type_cell, const char* type_name, uint64_t* pool_cell,
                      const char* pool_name, const char* text) {
    char* p = nullptr;
    if (text) {
        std::size_t n = std::strlen(text) + 1;
        p = static_cast<char*>(allocate(site, type_name, n));
        if (p) std::memcpy(p, text, n);
    }
    if (watching()) [[unlikely]]
        tell({zan::plat::AllocCall::strdup, site, type_cell, type_name, pool_cell, pool_name, p});
    return p;
}

void __tallow_free(void* p) {
    if (watching()) [[unlikely]]
        tell({zan::plat::AllocCall::free, 0, nullptr, nullptr, nullptr, nullptr, p});
    if (!p) return;
    Header* h = static_cast<Header*>(p) - 1;
    if (h->magic != k_magic_live) {
        std::fprintf(stderr, "__tallow_free: %p was not allocated here or is already free\n", p);
        std::abort();
    }
    h->magic = k_magic_freed;
    h->site->live.fetch_sub(1, std::memory_order_relaxed);
    const uint32_t cls = h->size_class;
    if (cls < k_classes && t_reuse.state != ReuseState::closed && t_reuse.count[cls] < k_keep) {
        if (t_reuse.state == ReuseState::unused) open_reuse();
        auto* b = reinterpret_cast<FreeBlock*>(p);
        b->next = t_reuse.head[cls];
        t_reuse.head[cls] = b;
        ++t_reuse.count[cls];
        return;
    }
    std::free(h);
}

void tallow_set_callsite_tag(uint32_t site) { t_pending_tag = site; }

}  // extern "C"

namespace zan::plat {

void alloc_set_watch(AllocWatch watch) {
    std::lock_guard lock(g_watch_m);
    g_watch = watch ? std::make_shared<const AllocWatch>(std::move(watch)) : nullptr;
    g_watching.store(g_watch != nullptr, std::memory_order_release);
}

void alloc_clear_watch() { alloc_set_watch(nullptr); }

long alloc_live() {
    AllocState& s = state();
    std::lock_guard lock(s.m);
    long n = 0;
    for (Site* site : s.in_order) n += site->live.load(std::memory_order_relaxed);
    return n;
}

std::vector<AllocSite> alloc_sites() {
    AllocState& s = state();
    std::lock_guard lock(s.m);
    std::vector<AllocSite> out;
    out.reserve(s.in_order.size());
    for (Site* site : s.in_order)
        out.push_back(AllocSite{site->tag, site->type, site->live.load(std::memory_order_relaxed),
                                site->attempts.load(std::memory_order_relaxed) -
                                    site->failed.load(std::memory_order_relaxed)});
    return out;
}

void alloc_fail_nth(long n) {
    AllocState& s = state();
    std::lock_guard lock(s.m);
    s.nth = n > 0 ? n : 0;
    g_alloc_armed.store(s.nth > 0 || s.failing_tag.has_value(), std::memory_order_relaxed);
}

void alloc_fail_site(std::optional<uint32_t> tag) {
    AllocState& s = state();
    std::lock_guard lock(s.m);
    s.failing_tag = tag;
    g_alloc_armed.store(s.nth > 0 || s.failing_tag.has_value(), std::memory_order_relaxed);
}

long alloc_count() {
    AllocState& s = state();
    std::lock_guard lock(s.m);
    long n = 0;
    for (Site* site : s.in_order) n += site->attempts.load(std::memory_order_relaxed);
    return n;
}

}  // namespace zan::plat

// Internal plumbing shared by the platform's core units: per-thread counters, fault points
// by number, and the tagged allocation that traversal objects use.
#pragma once

#include <atomic>
#include <new>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "zan/platform.hpp"

#pragma GCC visibility push(hidden)
namespace zan::plat::detail {

// Fault points the platform itself checks. The names are what fault_* take.
enum FaultPoint : unsigned {
    fp_accessor,
    fp_nlist_new,
    fp_vlist_new,
    fp_nvlist_new,
    fp_strbuf_new,
    fp_nlist_add_string,
    fp_vlist_add_null,
    fp_vlist_add_all,
    fp_vlist_add_array,
    fp_vlist_add_sequence,
    fp_vlist_add_mr_uri,
    fp_nvlist_add_null,
    fp_properties_set_null,
    fp_properties_set_array,
    fp_strbuf_add_string,
    fp_vlist_add_value,
    fp_nvlist_add_value,
    fp_properties_set_value,
    fp_ntlist_add,
    fp_traverse_create,
    fp_id_create,
    fp_params_set_last,
    fp_register_gx_vectors,
    fp_get_field,
    fp_pq_luid_set,
    fp_pq_set,
    fp_id_luid_set,
    fp_id_field_set,
    fp_id_vec_set,
    fp_deref_table_get,
    k_fault_points
};
extern const std::string_view k_fault_point_names[k_fault_points];

// Counters summed over all threads. Each thread bumps its own block with plain relaxed
// loads and stores, so counting never contends; readers add up the blocks.
enum Counter : unsigned {
    // one per fault point first: calls seen
    c_live_uri = k_fault_points,
    c_live_nlist,
    c_live_vlist,
    c_live_nvlist,
    c_live_properties,
    c_live_strbuf,
    c_live_traversals,
    c_ntlist_add_pending,
    k_counters
};

struct CounterBlock {
    std::atomic<long> v[k_counters] = {};
};

// This thread's block; NULL until the thread first counts. Initial-exec: the pointer is
// one fixed slot of static TLS, so counting costs no call.
extern constinit thread_local CounterBlock* t_counters __attribute__((tls_model("initial-exec")));
void count_slow(unsigned c, long delta);   // registers the thread's block, then counts
long counter_sum(Counter c);

inline void count(unsigned c, long delta = 1) {
    CounterBlock* b = t_counters;
    if (!b) [[unlikely]]
        return count_slow(c, delta);
    std::atomic<long>& cell = b->v[c];
    cell.store(cell.load(std::memory_order_relaxed) + delta, std::memory_order_relaxed);
}

extern std::atomic<bool> g_fault_armed[k_fault_points];
bool fault_slow(FaultPoint p);

// Counts the call and answers true when it is to fail.
inline bool hit(FaultPoint p) {
    count(p);
    if (!g_fault_armed[p].load(std::memory_order_relaxed)) [[likely]]
        return false;
    return fault_slow(p);
}

void alloc_clear_injection();
void value_add_answer_reset();
extern std::atomic<int32_t> g_value_add_answer;
// What gx_do_vlist_add_mr_uri answers when a test scripted it; k_no_answer: its length.
constexpr int64_t k_no_answer = INT64_MIN;
extern std::atomic<int64_t> g_mr_uri_answer;

// The call-site tag last given to tallow_set_callsite_tag on this thread, spent (0 when
// none is pending).
uint32_t take_pending_tag();

// Memory for an object the platform makes on the front end's behalf. It is accounted
// under the site tag last given to tallow_set_callsite_tag on this thread (which it
// consumes; 0 when none is pending) and the given type name. Freed with __tallow_free.
void* tagged_alloc(std::size_t size, const char* type_name);

}  // namespace zan::plat::detail
#pragma GCC visibility pop

// Outside the hidden region: the objects that hold one are the exported C types.
namespace zan::plat::detail {

// Names copied once into blocks that never move: the first block is part of the owner,
// later ones are chained. A kept name stays where it was written until the arena dies.
template <size_t First>
class NameArena {
public:
    NameArena() = default;
    NameArena(const NameArena&) = delete;
    NameArena& operator=(const NameArena&) = delete;
    ~NameArena() {
        while (blocks_) {
            Block* next = blocks_->next;
            ::operator delete(blocks_);
            blocks_ = next;
        }
    }

    std::string_view keep(std::string_view name) {
        if (name.size() > left_) [[unlikely]]
            grow(name.size());
        char* at = room_;
        __builtin_memcpy(at, name.data(), name.size());
        room_ += name.size();
        left_ -= name.size();
        return {at, name.size()};
    }

private:
    struct Block {
        Block* next;
    };
    void grow(size_t need) {
        const size_t size = need > 16384 ? need : 16384;
        auto* b = static_cast<Block*>(::operator new(sizeof(Block) + size));
        b->next = blocks_;
        blocks_ = b;
        room_ = reinterpret_cast<char*>(b + 1);
        left_ = size;
    }

    char* room_ = first_;
    size_t left_ = First;
    Block* blocks_ = nullptr;   // newest first
    char first_[First];         // left unset: only the kept part is ever read
};

}  // namespace zan::plat::detail

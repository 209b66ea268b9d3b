// Per-thread counters and deterministic fault injection.
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "core.hpp"

namespace zan::plat::detail {

const std::string_view k_fault_point_names[k_fault_points] = {
    "accessor",
    "gx_do_nlist_new",
    "gx_do_vlist_new",
    "gx_do_nvlist_new",
    "gx_do_strbuf_new",
    "gx_do_nlist_add_string",
    "gx_do_vlist_add_null",
    "gx_do_vlist_add_all",
    "gx_do_vlist_add_array",
    "gx_do_vlist_add_sequence",
    "gx_do_vlist_add_mr_uri",
    "gx_do_nvlist_add_null",
    "gx_do_properties_set_null",
    "gx_do_properties_set_array",
    "gx_do_strbuf_add_string",
    "gx_do_vlist_add_value",
    "gx_do_nvlist_add_value",
    "gx_do_properties_set_value",
    "arbor_fe_ntlist_add",
    "arbor_traverse_create",
    "arbor_id_create",
    "arbor_params_t_set_last",
    "arbor_register_fe_gx_vectors",
    "get_field",
    "arbor_traverse_pq_luid_set_mem",
    "arbor_traverse_pq_set_value",
    "arbor_id_type_luid_set_mem",
    "arbor_id_field_id_set_value",
    "arbor_traverse_arbor_id_vec_set",
    "arbor_traverse_deref_table_get",
};

std::atomic<int32_t> g_value_add_answer{-1};
std::atomic<int64_t> g_mr_uri_answer{k_no_answer};
void value_add_answer_reset() {
    g_value_add_answer.store(-1, std::memory_order_relaxed);
    g_mr_uri_answer.store(k_no_answer, std::memory_order_relaxed);
}

namespace {

// ------------------------------------------------------------ counters
struct CounterRegistry {
    std::mutex m;
    std::vector<CounterBlock*> live;
    long retired[k_counters] = {};
};

CounterRegistry& counter_registry() {
    static CounterRegistry* r = new CounterRegistry;   // outlives every thread's block
    return *r;
}

// Owns a thread's block: registers it on construction and, when the thread ends, folds
// its counts into the retired totals. Counts made after that (by destructors that run
// later in the thread's exit) go straight to the retired totals.
struct ThreadBlock {
    CounterBlock block;
    ThreadBlock() {
        CounterRegistry& r = counter_registry();
        std::lock_guard lock(r.m);
        r.live.push_back(&block);
    }
    ~ThreadBlock() {
        CounterRegistry& r = counter_registry();
        std::lock_guard lock(r.m);
        for (unsigned i = 0; i < k_counters; ++i) r.retired[i] += block.v[i].load(std::memory_order_relaxed);
        std::erase(r.live, &block);
        t_counters = nullptr;
        t_exited = true;
    }
    static thread_local bool t_exited;
};

thread_local bool ThreadBlock::t_exited = false;

// ------------------------------------------------------------ arming
struct Arm {
    long countdown = 0;   // fails when it reaches 0 from 1
    bool always = false;
};

struct DynamicPoint {
    long calls = 0;
    Arm arm;
};

struct FaultState {
    std::mutex m;
    Arm arms[k_fault_points];
    std::map<std::string, DynamicPoint, std::less<>> dynamic;   // names the platform does not check itself
};

FaultState& fault_state() {
    static FaultState* s = new FaultState;
    return *s;
}

int point_index(std::string_view name) {
    for (unsigned i = 0; i < k_fault_points; ++i)
        if (k_fault_point_names[i].size() == name.size() && k_fault_point_names[i] == name) return int(i);
    return -1;
}

// Decides one call under the lock. Answers true when the call fails.
bool take(Arm& a) {
    if (a.always) return true;
    if (a.countdown > 0 && --a.countdown == 0) return true;
    return false;
}

}  // namespace

constinit thread_local CounterBlock* t_counters __attribute__((tls_model("initial-exec"))) = nullptr;

void count_slow(unsigned c, long delta) {
    if (ThreadBlock::t_exited) {
        CounterRegistry& r = counter_registry();
        std::lock_guard lock(r.m);
        r.retired[c] += delta;
        return;
    }
    static thread_local ThreadBlock block;
    t_counters = &block.block;
    count(c, delta);
}

long counter_sum(Counter c) {
    CounterRegistry& r = counter_registry();
    std::lock_guard lock(r.m);
    long sum = r.retired[c];
    for (CounterBlock* b : r.live) sum += b->v[c].load(std::memory_order_relaxed);
    return sum;
}

std::atomic<bool> g_fault_armed[k_fault_points] = {};

bool fault_slow(FaultPoint p) {
    FaultState& s = fault_state();
    std::lock_guard lock(s.m);
    Arm& a = s.arms[p];
    bool fail = take(a);
    g_fault_armed[p].store(a.always || a.countdown > 0, std::memory_order_relaxed);
    return fail;
}

}  // namespace zan::plat::detail

namespace zan::plat {

using namespace detail;

void fault_fail_nth(std::string_view point, long n) {
    FaultState& s = fault_state();
    std::lock_guard lock(s.m);
    int i = point_index(point);
    Arm& a = i >= 0 ? s.arms[i] : s.dynamic[std::string(point)].arm;
    a.countdown = n > 0 ? n : 0;
    if (i >= 0) g_fault_armed[i].store(a.always || a.countdown > 0, std::memory_order_relaxed);
}

void fault_fail_always(std::string_view point, bool on) {
    FaultState& s = fault_state();
    std::lock_guard lock(s.m);
    int i = point_index(point);
    Arm& a = i >= 0 ? s.arms[i] : s.dynamic[std::string(point)].arm;
    a.always = on;
    if (i >= 0) g_fault_armed[i].store(a.always || a.countdown > 0, std::memory_order_relaxed);
}

void fault_clear_all() {
    {
        FaultState& s = fault_state();
        std::lock_guard lock(s.m);
        for (unsigned i = 0; i < k_fault_points; ++i) {
            s.arms[i] = Arm{};
            g_fault_armed[i].store(false, std::memory_order_relaxed);
        }
        for (auto& [name, d] : s.dynamic) d.arm = Arm{};
    }
    alloc_clear_injection();
    value_add_answer_reset();
}

void fault_set_value_add_answer(int32_t answer) { g_value_add_answer.store(answer, std::memory_order_relaxed); }

void mr_uri_set_answer(std::optional<int32_t> answer) {
    g_mr_uri_answer.store(answer ? int64_t(*answer) : k_no_answer, std::memory_order_relaxed);
}

long ntlist_add_calls_with_error() { return counter_sum(c_ntlist_add_pending); }

long fault_calls(std::string_view point) {
    int i = point_index(point);
    if (i >= 0) return counter_sum(Counter(i));
    FaultState& s = fault_state();
    std::lock_guard lock(s.m);
    auto it = s.dynamic.find(point);
    return it == s.dynamic.end() ? 0 : it->second.calls;
}

bool fault_hit(std::string_view point) {
    int i = point_index(point);
    if (i >= 0) [[likely]]
        return hit(FaultPoint(i));
    FaultState& s = fault_state();
    std::lock_guard lock(s.m);
    DynamicPoint& d = s.dynamic[std::string(point)];
    ++d.calls;
    return take(d.arm);
}

std::span<const std::string_view> fault_points() { return detail::k_fault_point_names; }

}  // namespace zan::plat

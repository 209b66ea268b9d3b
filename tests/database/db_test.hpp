// Helpers of the database tests: the generated C names looked up at run time (so that a
// test can walk the whole catalogue rather than a hand list), and a fixture that fails a
// test which leaves records, rows, typed objects, key records or allocations behind.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "zan/database.hpp"
#include "zan/platform.hpp"

namespace dbt {

inline const rsl_ctx_t k_ctx = reinterpret_cast<rsl_ctx_t>(uintptr_t(0x5eed));
constexpr rsl_ctx_id_t k_id = 7;

// A C name of the platform library, or nullptr.
inline void* sym(const std::string& name) { return dlsym(RTLD_DEFAULT, name.c_str()); }

template <class Fn>
Fn fn(const std::string& name) {
    void* p = sym(name);
    EXPECT_NE(p, nullptr) << "no C name " << name;
    return reinterpret_cast<Fn>(p);
}

using GetFn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, uint32_t*);
using StateFn = uint8_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, uint32_t*);
using ValueFn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, uint32_t*);
using ElementFn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, uint32_t, uint32_t*);
using ElementStateFn = uint8_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, uint32_t, uint32_t*);
using CharsFn = void (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, char*, uint32_t, uint32_t*);
using NextFn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, const void*, uint32_t*);
using FlagFn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, uint32_t, uint32_t*);
using RowFn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void*);
using CreateFn = void* (*)(rsl_ctx_t, rsl_ctx_id_t);
using SetFn = void (*)(rsl_ctx_t, rsl_ctx_id_t, void*, const void*, uint32_t*);
using LenFn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*);
using MarshalFn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, uint8_t*, const void*, uint32_t, uint32_t*);
using DestroyFn = void (*)(rsl_ctx_t, rsl_ctx_id_t, void*);

class StoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        zan::plat::fault_clear_all();
        before_ = zan::db::live_counts();
        allocations_ = zan::plat::alloc_live();
    }
    void TearDown() override {
        zan::plat::fault_clear_all();
        zan::db::clear_default_variants();
        auto now = zan::db::live_counts();
        EXPECT_EQ(now.records, before_.records) << "records leaked";
        EXPECT_EQ(now.rows, before_.rows) << "rows leaked";
        EXPECT_EQ(now.typed, before_.typed) << "typed objects leaked";
        EXPECT_EQ(now.key_records, before_.key_records) << "key records leaked";
        EXPECT_EQ(zan::plat::alloc_live(), allocations_) << "allocations leaked";
    }
    long bad_handles_since() const { return zan::db::live_counts().bad_handles - before_.bad_handles; }
    long bad_releases_since() const { return zan::db::live_counts().bad_releases - before_.bad_releases; }

private:
    zan::db::LiveCounts before_;
    long allocations_ = 0;
};

inline std::string luid_hex(const uint8_t* l) {
    static const char* d = "0123456789abcdef";
    std::string s;
    for (int i = 0; i < 16; ++i) {
        s += d[l[i] >> 4];
        s += d[l[i] & 15];
    }
    return s;
}

}  // namespace dbt

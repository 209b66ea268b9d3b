// A fixture that fails a test which leaves data objects, traversal objects or allocations
// behind, and that disarms every fault afterwards.
#pragma once

#include <gtest/gtest.h>

#include "zan/platform.hpp"

class LeakChecked : public ::testing::Test {
protected:
    void SetUp() override {
        zan::plat::fault_clear_all();
        objects_ = zan::plat::live_objects().total();
        traversals_ = zan::plat::live_traversals();
        allocations_ = zan::plat::alloc_live();
    }
    void TearDown() override {
        zan::plat::fault_clear_all();
        EXPECT_EQ(zan::plat::live_objects().total(), objects_) << "data objects leaked";
        EXPECT_EQ(zan::plat::live_traversals(), traversals_) << "traversal objects leaked";
        EXPECT_EQ(zan::plat::alloc_live(), allocations_) << "allocations leaked";
    }

private:
    long objects_ = 0, traversals_ = 0, allocations_ = 0;
};

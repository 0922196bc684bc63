#include <new>

#include <gtest/gtest.h>

#include "support/FailingAllocations.h"
#include "support/FakeGrabberLibrary.h"

using namespace zvtest;

namespace {

// Kept from being optimised away: what is allocated escapes here.
void* volatile last_allocation = nullptr;

bool can_allocate(std::size_t size)
{
    void* const memory = ::operator new(size, std::nothrow);
    last_allocation = memory;
    ::operator delete(memory);
    return memory != nullptr;
}

} // namespace

TEST(FailingAllocations, FailTheNthAllocationOnly)
{
    bool first = false;
    bool second = true;
    bool third = false;
    {
        const auto faults = FailingAllocations::nth(2);
        first = can_allocate(8);
        EXPECT_FALSE(faults.struck());
        second = can_allocate(8);
        EXPECT_TRUE(faults.struck());
        third = can_allocate(8);
    }
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
    EXPECT_TRUE(third);
}

TEST(FailingAllocations, FailLargeAllocations)
{
    bool small = false;
    bool large = true;
    {
        const auto faults = FailingAllocations::of_at_least(1000);
        small = can_allocate(999);
        large = can_allocate(1000);
    }
    EXPECT_TRUE(small);
    EXPECT_FALSE(large);
    EXPECT_TRUE(can_allocate(1000));
}

TEST(CountedAllocations, LeaveOnlyTheDoublesOut)
{
    FakeGrabberLibrary::instance().reset();
    const CountedAllocations counted;
    const uint32_t grabber = ZVGR_Open(0);
    ZVGR_GetGrabberValueInt(grabber, "a name that does not fit into a short string of any library");
    ZVGR_Close(grabber);
    EXPECT_EQ(0, counted.count());
    EXPECT_TRUE(can_allocate(8));
    EXPECT_EQ(1, counted.count());
    FakeGrabberLibrary::instance().reset();
}

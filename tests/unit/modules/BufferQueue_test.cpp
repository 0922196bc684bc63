#include <array>
#include <new>

#include <gtest/gtest.h>

#include "modules/BufferQueue.h"
#include "support/FailingAllocations.h"

using zvgentl::BufferModule;
using zvgentl::BufferQueue;
using zvtest::CountedAllocations;
using zvtest::FailingAllocations;

namespace {

class BufferQueueTest : public testing::Test {
protected:
    /// The queue compares and hands out pointers, it never reads what they point to.
    BufferModule* pointer(size_t number) { return reinterpret_cast<BufferModule*>(&m_things.at(number)); }

    void push(size_t first, size_t end)
    {
        for (size_t i = first; i < end; ++i)
            queue.push({pointer(i), nullptr});
    }
    void expect_and_pop(size_t first, size_t end)
    {
        for (size_t i = first; i < end; ++i) {
            ASSERT_EQ(pointer(i), queue.front().buffer) << i;
            queue.pop();
        }
    }

    BufferQueue queue;

private:
    std::array<long, 2000> m_things{};
};

// How many pointers fit before a queue asks for memory.
constexpr size_t capacity = 256;

TEST_F(BufferQueueTest, GivesTheOldestFirstAlsoNullAndTwice)
{
    EXPECT_TRUE(queue.empty());
    EXPECT_EQ(0U, queue.size());
    push(0, 2);
    queue.push({pointer(1), nullptr});
    queue.push({nullptr, nullptr});
    EXPECT_EQ(4U, queue.size());
    EXPECT_FALSE(queue.empty());
    expect_and_pop(0, 2);
    expect_and_pop(1, 2);
    EXPECT_EQ(nullptr, queue.front().buffer);
    queue.pop();
    EXPECT_TRUE(queue.empty());
}

TEST_F(BufferQueueTest, WrapsAroundWithoutGrowing)
{
    push(0, 200);
    expect_and_pop(0, 200);
    const CountedAllocations counted;
    push(200, 200 + capacity); // crosses the end of the memory
    EXPECT_EQ(0, counted.count());
    EXPECT_EQ(capacity, queue.size());
    expect_and_pop(200, 200 + capacity);
}

TEST_F(BufferQueueTest, KeepsItsOrderWhenItGrowsWhileWrappedAround)
{
    push(0, 200);
    expect_and_pop(0, 150);
    push(200, 2000);
    EXPECT_EQ(1850U, queue.size());
    expect_and_pop(150, 2000);
}

TEST_F(BufferQueueTest, ForgetsEverythingButItsMemoryWhenCleared)
{
    push(0, capacity + 1);
    queue.clear();
    EXPECT_TRUE(queue.empty());
    EXPECT_EQ(0U, queue.size());
    const CountedAllocations counted;
    push(0, 2 * capacity);
    EXPECT_EQ(0, counted.count());
    expect_and_pop(0, 2 * capacity);
}

TEST_F(BufferQueueTest, IsUnchangedWhenItCannotGrow)
{
    push(0, capacity);
    {
        const auto faults = FailingAllocations::nth(1);
        EXPECT_THROW(queue.push({pointer(capacity), nullptr}), std::bad_alloc);
    }
    EXPECT_EQ(capacity, queue.size());
    queue.push({pointer(capacity), nullptr});
    expect_and_pop(0, capacity + 1);
}

} // namespace

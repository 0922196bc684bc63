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
            queue.push(pointer(i));
    }
    void expect_and_pop(size_t first, size_t end)
    {
        for (size_t i = first; i < end; ++i) {
            ASSERT_EQ(pointer(i), queue.front()) << i;
            queue.pop();
        }
    }

    BufferQueue queue;

private:
    std::array<long, 5000> m_things{};
};

// How many pointers fit before a queue asks for memory.
constexpr size_t capacity = 256;

TEST_F(BufferQueueTest, GivesTheOldestFirstAlsoNullAndTwice)
{
    EXPECT_TRUE(queue.empty());
    EXPECT_EQ(0U, queue.size());
    push(0, 2);
    queue.push(pointer(1));
    queue.push(nullptr);
    EXPECT_EQ(4U, queue.size());
    EXPECT_FALSE(queue.empty());
    expect_and_pop(0, 2);
    expect_and_pop(1, 2);
    EXPECT_EQ(nullptr, queue.front());
    queue.pop();
    EXPECT_TRUE(queue.empty());
}

TEST_F(BufferQueueTest, GrowsBeyondItsFirstMemory)
{
    push(0, 5000);
    EXPECT_EQ(5000U, queue.size());
    expect_and_pop(0, 5000);
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

TEST_F(BufferQueueTest, GrowsAtExactlyItsCapacity)
{
    push(0, capacity);
    const CountedAllocations counted;
    queue.push(pointer(capacity));
    EXPECT_EQ(1, counted.count());
    expect_and_pop(0, capacity + 1);
}

TEST_F(BufferQueueTest, KeepsItsMemoryForever)
{
    push(0, 3);
    const CountedAllocations counted;
    for (size_t i = 0; i < 4000; ++i) {
        queue.push(pointer(i + 3));
        expect_and_pop(i, i + 1);
    }
    EXPECT_EQ(0, counted.count());
    EXPECT_EQ(3U, queue.size());
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
    bool is_refused = false;
    {
        const auto faults = FailingAllocations::nth(1);
        try {
            queue.push(pointer(capacity));
        } catch (const std::bad_alloc&) {
            is_refused = true;
        }
    }
    EXPECT_TRUE(is_refused);
    EXPECT_EQ(capacity, queue.size());
    queue.push(pointer(capacity));
    expect_and_pop(0, capacity + 1);
}

} // namespace

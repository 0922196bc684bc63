#include <atomic>
#include <cstdint>
#include <new>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "modules/Index.h"
#include "support/FailingAllocations.h"

namespace zvtest {

namespace {

struct Item {
    alignas(16) int number{0};
};

class IndexTest : public testing::Test {
protected:
    void add(size_t first, size_t end)
    {
        for (size_t i = first; i < end; ++i)
            index.add(&items[i], &items[i]);
    }
    void expect_found(size_t first, size_t end)
    {
        for (size_t i = first; i < end; ++i)
            EXPECT_EQ(&items[i], index.find(&items[i])) << i;
    }
    void expect_unknown(size_t first, size_t end)
    {
        for (size_t i = first; i < end; ++i)
            EXPECT_EQ(nullptr, index.find(&items[i])) << i;
    }

    std::vector<Item> items{10000};
    zvgentl::Index<const void*, Item> index;
};

TEST_F(IndexTest, FindsNothingWhenItIsEmpty)
{
    EXPECT_EQ(nullptr, index.find(nullptr));
    expect_unknown(0, items.size());
    index.remove(&items[0]);
    index.remove(nullptr);
}

TEST_F(IndexTest, FindsWhatWasAddedHoweverMuchThereIs)
{
    add(0, 5000);
    expect_found(0, 5000);
    expect_unknown(5000, items.size());
    EXPECT_EQ(nullptr, index.find(nullptr));
}

TEST_F(IndexTest, HasAnyValueForAnAddress)
{
    index.add(&items[0], &items[7]);
    EXPECT_EQ(&items[7], index.find(&items[0]));
    EXPECT_EQ(nullptr, index.find(&items[7]));
}

TEST_F(IndexTest, HasNumbersAsKeysAndZeroLikeEveryOther)
{
    zvgentl::Index<uint64_t, Item> numbers;
    EXPECT_EQ(nullptr, numbers.find(0));
    for (uint64_t key = 0; key < 100; ++key)
        numbers.add(key, &items[key]);
    for (uint64_t key = 0; key < 100; ++key)
        EXPECT_EQ(&items[key], numbers.find(key)) << key;
    numbers.remove(0);
    EXPECT_EQ(nullptr, numbers.find(0));
    for (uint64_t key = 1; key < 100; ++key)
        EXPECT_EQ(&items[key], numbers.find(key)) << key;
}

// With 10,000 entries many stand at one another's places.
TEST_F(IndexTest, StillFindsTheOthersWhenSomeAreRemoved)
{
    add(0, items.size());
    for (size_t i = 0; i < items.size(); i += 3)
        index.remove(&items[i]);
    for (size_t i = 0; i < items.size(); ++i)
        EXPECT_EQ(i % 3 == 0 ? nullptr : &items[i], index.find(&items[i])) << i;
    for (size_t i = items.size(); i-- > 0;)
        index.remove(&items[i]);
    expect_unknown(0, items.size());
    add(0, items.size());
    expect_found(0, items.size());
}

TEST_F(IndexTest, ChangesNothingWhenMemoryRunsOut)
{
    size_t added = 0;
    for (bool has_failed = false; !has_failed; ++added) {
        ASSERT_LT(added, items.size());
        const auto fault = FailingAllocations::nth(1);
        try {
            index.add(&items[added], &items[added]);
        } catch (const std::bad_alloc&) {
            has_failed = true;
            --added;
        }
    }
    EXPECT_GT(added, 0U);
    expect_found(0, added);
    expect_unknown(added, items.size());
    add(added, added + 1);
    expect_found(0, added + 1);
}

TEST_F(IndexTest, FindsWhatStaysWhileOthersComeAndGo)
{
    constexpr size_t kept = 100;
    add(0, kept);
    std::atomic<bool> is_over{false};
    std::thread finder{[&] {
        while (!is_over)
            expect_found(0, kept);
    }};
    for (int round = 0; round < 20; ++round) {
        add(kept, 1000);
        for (size_t i = kept; i < 1000; ++i)
            index.remove(&items[i]);
    }
    add(kept, items.size()); // it grows under the finder
    is_over = true;
    finder.join();
    expect_found(0, items.size());
}

} // namespace

} // namespace zvtest

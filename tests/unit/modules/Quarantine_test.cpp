#include <memory>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "modules/Quarantine.h"
#include "modules/SystemModule.h"
#include "support/on_threads.h"

namespace zvgentl {

namespace {

constexpr size_t capacity = 256;

void* new_block() { return ::operator new(64); }

TEST(QuarantineTest, KeepsTheLastBlocksFromBeingUsedAgain)
{
    Quarantine quarantine;
    std::set<void*> kept;
    for (size_t i = 0; i < capacity; ++i) {
        void* const block = new_block();
        EXPECT_TRUE(kept.insert(block).second);
        quarantine.put(block, 64);
    }
    std::vector<void*> others;
    for (size_t i = 0; i < 1000; ++i) {
        others.push_back(new_block());
        EXPECT_EQ(0U, kept.count(others.back()));
    }
    for (void* other : others)
        ::operator delete(other);
}

TEST(QuarantineTest, GivesEveryObjectADifferentAddress)
{
    std::set<const void*> addresses;
    for (size_t i = 0; i < capacity / 2; ++i) {
        addresses.insert(std::make_unique<SystemModule>().get());
        addresses.insert(std::unique_ptr<SystemModule>(new (std::nothrow) SystemModule).get());
    }
    EXPECT_EQ(capacity, addresses.size());
}

TEST(QuarantineTest, TakesBlocksFromManyThreads)
{
    Quarantine quarantine;
    zvtest::on_threads([&quarantine](int) {
        for (size_t i = 0; i < 2 * capacity; ++i)
            quarantine.put(new_block(), 64);
    });
}

} // namespace

} // namespace zvgentl

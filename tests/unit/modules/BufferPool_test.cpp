#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "modules/BufferPool.h"
#include "unit/modules/Module_fixtures.h"

using namespace zvtest;
using zvgentl::BUFFER_QUEUE_TYPE;
using zvgentl::BufferFacts;
using zvgentl::BufferModule;
using zvgentl::BufferPool;
using zvgentl::FillState;
using zvgentl::PinnedBuffer;
using Place = BufferPool::Place;

namespace {

class Pool : public LooseStream {
protected:
    static constexpr size_t size = 1000;

    std::unique_ptr<BufferModule> make(uint64_t library_handle, void* memory = nullptr,
                                       uint64_t bytes = size) const
    {
        return std::make_unique<BufferModule>(*stream, memory, bytes, library_handle, nullptr);
    }
    BufferModule* add() { return pool.add(make(0)); }
    BufferModule* add_mapped(uint64_t library_handle) { return pool.add_mapped(make(library_handle)); }

    static std::optional<uint64_t> queue(BufferPool& pool, const BufferModule* buffer)
    {
        return pool.queue(buffer, *zvgentl::buffer_index.find(buffer));
    }

    zvgentl::ShortLock lock;
    BufferPool pool{lock};
};

TEST_F(Pool, FindsNothingWhenItIsEmpty)
{
    EXPECT_EQ(0U, pool.size());
    for (const void* const stranger : {static_cast<const void*>(this), static_cast<const void*>(nullptr)}) {
        EXPECT_FALSE(pool.holds(stranger));
        EXPECT_FALSE(pool.find(stranger));
        EXPECT_FALSE(pool.remove(stranger));
    }
    EXPECT_FALSE(pool.at(0));
    EXPECT_FALSE(pool.find_memory(nullptr, 0));
    EXPECT_FALSE(pool.take_library_handle(0));
    EXPECT_FALSE(pool.take_first_input());
    pool.close();
}

TEST_F(Pool, FindsBuffersByAddressAndPosition)
{
    BufferModule* const first = add();
    BufferModule* const second = add();
    BufferModule* const third = add();
    EXPECT_EQ(3U, pool.size());
    EXPECT_TRUE(pool.holds(second));
    EXPECT_EQ(second, pool.find(second).get());
    EXPECT_EQ(second, pool.at(1).get());
    EXPECT_FALSE(pool.at(3));
    EXPECT_FALSE(pool.at(SIZE_MAX));

    EXPECT_TRUE(pool.remove(second));
    EXPECT_FALSE(pool.remove(second));
    EXPECT_EQ(2U, pool.size());
    EXPECT_EQ(first, pool.at(0).get());
    EXPECT_EQ(third, pool.at(1).get()) << "it moved up";
}

TEST_F(Pool, FindsTheFirstBufferWithMemoryAndSize)
{
    uint8_t memory[16] = {};
    BufferModule* const first = pool.add(make(1, memory, 16));
    BufferModule* const shorter = pool.add(make(2, memory, 15));
    pool.add(make(3, memory, 16));
    EXPECT_EQ(first, pool.find_memory(memory, 16).get());
    EXPECT_EQ(shorter, pool.find_memory(memory, 15).get());
    EXPECT_FALSE(pool.find_memory(memory, 14));
    EXPECT_FALSE(pool.find_memory(memory + 1, 15));
}

TEST_F(Pool, FindsOnlyMappedBuffersByTheirLibraryHandle)
{
    pool.add(make(5));
    EXPECT_FALSE(pool.take_library_handle(5));
    BufferModule* const mapped = add_mapped(0x100000005);
    EXPECT_EQ(mapped, pool.take_library_handle(0x100000005).get());
    EXPECT_FALSE(pool.take_library_handle(5)) << "a handle has 64 bits";
}

TEST_F(Pool, FindsTheLatestBufferOfALibraryHandle)
{
    BufferModule* const old = add_mapped(5);
    BufferModule* const latest = add_mapped(5);
    EXPECT_EQ(latest, pool.take_library_handle(5).get());
    EXPECT_TRUE(pool.remove(old));
    EXPECT_EQ(latest, pool.take_library_handle(5).get()) << "the entry no longer belongs to the old buffer";
    EXPECT_TRUE(pool.remove(latest));
    EXPECT_FALSE(pool.take_library_handle(5));
}

TEST_F(Pool, FindsNothingForALateCallback)
{
    BufferModule* const removed = add_mapped(5);
    BufferModule* const kept = add_mapped(6);
    EXPECT_TRUE(pool.remove(removed));
    EXPECT_FALSE(pool.take_library_handle(5));
    EXPECT_FALSE(pool.find(removed));
    EXPECT_EQ(kept, pool.take_library_handle(6).get());
    pool.close();
    EXPECT_FALSE(pool.take_library_handle(6));
    EXPECT_EQ(0U, pool.size());
    EXPECT_EQ(nullptr, add()) << "a closed pool takes none";
    EXPECT_EQ(nullptr, add_mapped(7));
    EXPECT_FALSE(pool.take_library_handle(7));
    pool.open();
    BufferModule* const later = add_mapped(5);
    EXPECT_EQ(later, pool.take_library_handle(5).get());
}

TEST_F(Pool, KeepsTheOldOwnerOfALibraryHandleWhenMemoryRunsOut)
{
    BufferModule* const known = add_mapped(5);
    bool has_failed = true;
    for (long n = 1; has_failed; ++n) {
        auto buffer = make(5);
        const void* const handle = buffer.get();
        try {
            const auto fault = FailingAllocations::nth(n);
            pool.add_mapped(std::move(buffer));
            has_failed = fault.struck();
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(1U, pool.size());
            EXPECT_FALSE(pool.holds(handle));
            EXPECT_EQ(known, pool.take_library_handle(5).get());
            EXPECT_EQ(known, pool.find_memory(known->get_Memory(), size).get());
        }
    }
    EXPECT_EQ(2U, pool.size());
    EXPECT_EQ(pool.at(1).get(), pool.take_library_handle(5).get());
}

TEST_F(Pool, TakesInputBuffersInPoolOrder)
{
    BufferModule* const first = add();
    BufferModule* const second = add();
    BufferModule* const third = add();
    queue(pool, third);
    queue(pool, second);
    EXPECT_EQ(second, pool.take_first_input().get());
    EXPECT_EQ(BUFFER_QUEUE_TYPE::OUTPUT, second->get_Queue());
    queue(pool, second);
    EXPECT_EQ(second, pool.take_first_input().get()) << "it comes before the third again";
    EXPECT_EQ(third, pool.take_first_input().get());
    EXPECT_FALSE(pool.take_first_input());
    EXPECT_EQ(BUFFER_QUEUE_TYPE::GENERAL, first->get_Queue());
    pool.remove(second);
    BufferModule* const fourth = add();
    queue(pool, fourth);
    queue(pool, first);
    EXPECT_EQ(first, pool.take_first_input().get());
    EXPECT_EQ(fourth, pool.take_first_input().get());
}

TEST_F(Pool, QueuesOnlyItsOwnBuffers)
{
    BufferPool other{lock};
    const BufferModule* const stranger = other.add(make(7));
    EXPECT_FALSE(queue(pool, stranger));
    EXPECT_FALSE(pool.holds(stranger));
    EXPECT_EQ(7U, queue(other, stranger));
    const BufferModule* const mine = add_mapped(8);
    EXPECT_EQ(8U, queue(pool, mine));
    BufferFacts& facts = *zvgentl::buffer_index.find(mine);
    EXPECT_TRUE(pool.remove(mine));
    EXPECT_FALSE(pool.queue(mine, facts));
}

TEST_F(Pool, CountsBuffersByWhereTheyAre)
{
    const auto counts = [this] {
        return std::array{pool.count(Place::waiting), pool.count(Place::started), pool.count(Place::output)};
    };
    using Counts = std::array<size_t, 3>;
    BufferModule* const buffer = add_mapped(5);
    EXPECT_EQ((Counts{0, 0, 0}), counts());
    queue(pool, buffer);
    EXPECT_EQ((Counts{1, 0, 0}), counts());
    PinnedBuffer frame = pool.take_library_handle(5);
    EXPECT_EQ((Counts{0, 0, 1}), counts()) << "the library has filled it";
    queue(pool, buffer);
    EXPECT_EQ((Counts{0, 1, 0}), counts()) << "queued before its frame is complete";
    {
        const zvgentl::ShortLock::Held held{lock};
        pool.complete(held, std::move(frame));
    }
    EXPECT_EQ((Counts{1, 0, 0}), counts());
    pool.set_fill_state(*buffer, FillState::filling);
    pool.set_queue(*buffer, BUFFER_QUEUE_TYPE::OUTPUT);
    EXPECT_EQ((Counts{0, 0, 1}), counts());
    EXPECT_TRUE(pool.remove(buffer));
    EXPECT_EQ((Counts{0, 0, 0}), counts());
}

TEST_F(Pool, ReadsFactsOfBuffersThatItHolds)
{
    uint64_t id = 0;
    const auto read_id = [&](const BufferFacts& facts) { id = facts.frame_id.get(); };
    BufferModule* const buffer = add();
    pool.find(buffer).set_Frame(1, 42);
    EXPECT_TRUE(pool.read(buffer, read_id));
    EXPECT_EQ(42U, id);
    EXPECT_FALSE(pool.read(this, read_id));
    EXPECT_FALSE(pool.read(buffer, [&](const BufferFacts&) { pool.remove(buffer); })) << "removed meanwhile";
    EXPECT_FALSE(pool.read(buffer, read_id));
}

TEST_F(Pool, DoesNotTakeFactsForThoseOfAnotherBuffer)
{
    BufferModule* const buffer = add();
    EXPECT_FALSE(pool.read(buffer, [&](const BufferFacts& facts) {
        pool.remove(buffer);
        EXPECT_EQ(&facts, &add()->get_Facts()) << "they are used again";
    }));
}

TEST_F(Pool, HandsAPinOnWhenItIsMoved)
{
    BufferModule* const buffer = add();
    PinnedBuffer first = pool.find(buffer);
    PinnedBuffer second(std::move(first));
    EXPECT_EQ(buffer, second.get());
    EXPECT_EQ(size, second->get_Size());
    EXPECT_EQ(buffer, &*second);
    PinnedBuffer third;
    EXPECT_FALSE(third);
    EXPECT_FALSE(PinnedBuffer(std::move(third)));
    third = PinnedBuffer();
    third = std::move(second);
    EXPECT_EQ(buffer, third.get());
    third = PinnedBuffer();
    EXPECT_TRUE(pool.remove(buffer)) << "a pin was left behind";
}

/// Whoever works on a buffer keeps it alive with a pin, and whoever removes it waits.
class PoolThreads : public Pool {
protected:
    /// Returns once the pool no longer holds the buffer. The thread that removes it takes it out and starts
    /// to wait for its pins under one lock, so by now it waits, or has finished.
    void wait_until_taken_out(const BufferModule* buffer) const
    {
        while (pool.holds(buffer))
            std::this_thread::yield();
    }
};

TEST_F(PoolThreads, RemovingWaitsForTheLastPin)
{
    BufferModule* const buffer = add_mapped(5);
    std::atomic<bool> is_removed{false};
    PinnedBuffer first = pool.take_library_handle(5);
    PinnedBuffer second = pool.at(0);
    std::thread remover([&] {
        EXPECT_TRUE(pool.remove(buffer));
        is_removed = true;
    });
    wait_until_taken_out(buffer);
    EXPECT_FALSE(pool.take_library_handle(5)) << "a late callback";
    EXPECT_FALSE(pool.remove(buffer)) << "the other thread does that";
    pool.set_queue(*first, BUFFER_QUEUE_TYPE::INPUT);
    EXPECT_EQ(0U, pool.count(Place::started)) << "it is out of the pool";
    EXPECT_EQ(0U, pool.size());
    BufferModule* const added = add_mapped(6);
    EXPECT_EQ(added, pool.take_library_handle(6).get());
    first = PinnedBuffer();
    EXPECT_FALSE(is_removed.load());
    std::fill_n(static_cast<uint8_t*>(second->get_Memory()), size, uint8_t{1}); // still there to be written
    EXPECT_EQ(size, second->get_Size());
    second = PinnedBuffer();
    remover.join();
    EXPECT_EQ(1U, pool.size());
}

TEST_F(PoolThreads, ClearingWaitsForEveryPin)
{
    BufferModule* const first = add_mapped(5);
    BufferModule* const second = add_mapped(6);
    std::atomic<bool> is_cleared{false};
    std::thread clearer;
    {
        const PinnedBuffer of_second = pool.find(second);
        {
            const PinnedBuffer of_first = pool.find(first);
            clearer = std::thread([&] {
                pool.close();
                is_cleared = true;
            });
            wait_until_taken_out(first);
            EXPECT_TRUE(pool.holds(second)) << "in order";
        }
        wait_until_taken_out(second);
        EXPECT_FALSE(is_cleared.load());
        EXPECT_EQ(size, of_second->get_Size());
    }
    clearer.join();
    EXPECT_EQ(0U, pool.size());
}

TEST_F(PoolThreads, APinOfOneBufferDoesNotKeepAnother)
{
    const PinnedBuffer pin = pool.find(add());
    EXPECT_TRUE(pool.remove(add())); // would never return
}

/// A callback that takes buffers, a consumer that queues them, and one that replaces them, all at once.
TEST_F(PoolThreads, SurvivesEverythingAtOnce)
{
    constexpr int rounds = 2000;
    for (uint64_t i = 1; i <= 8; ++i)
        add_mapped(i);
    std::atomic<bool> is_over{false};
    std::thread callback([&] {
        for (uint64_t i = 0; !is_over.load(); ++i) {
            if (const PinnedBuffer taken = pool.take_first_input())
                std::fill_n(static_cast<uint8_t*>(taken->get_Memory()), size, uint8_t{2});
            if (const PinnedBuffer found = pool.take_library_handle(i % 8 + 1))
                found.set_Frame(i, i);
        }
    });
    std::thread queueing([&] {
        for (size_t i = 0; !is_over.load(); ++i) {
            if (const PinnedBuffer buffer = pool.at(i % 8))
                pool.queue(buffer.get(), buffer.facts());
        }
    });
    for (int i = 0; i < rounds; ++i) {
        const BufferModule* const oldest = pool.at(0).get();
        const uint64_t library_handle = pool.find(oldest)->get_GrabberHandle();
        EXPECT_TRUE(pool.remove(oldest));
        add_mapped(library_handle);
    }
    is_over = true;
    callback.join();
    queueing.join();
    EXPECT_EQ(8U, pool.size());
    for (uint64_t i = 1; i <= 8; ++i)
        EXPECT_TRUE(pool.take_library_handle(i)) << i;
}

} // namespace

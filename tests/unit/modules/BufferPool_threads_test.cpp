#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>

#include "modules/BufferPool.h"
#include "unit/modules/Module_fixtures.h"

// Pins: whoever works on a buffer keeps it alive, and whoever removes it waits.

using namespace zvtest;
using zvgentl::BUFFER_QUEUE_TYPE;
using zvgentl::BufferModule;
using zvgentl::BufferPool;
using zvgentl::PinnedBuffer;

namespace {

class PoolThreads : public CameraStream {
protected:
    void SetUp() override
    {
        CameraStream::SetUp();
        fake.allow_handle(ZV_NO_HANDLE); // the stream is closed
    }

    void TearDown() override
    {
        pool.clear();
        CameraStream::TearDown();
    }

    BufferModule* add(uint64_t library_handle)
    {
        return pool.add_mapped(
            std::make_unique<BufferModule>(*stream, nullptr, 1000, library_handle, nullptr));
    }

    /// Returns once the pool no longer holds the buffer. Who removes it takes it out and goes to wait for
    /// its pins under one lock, so it waits now, or has finished.
    void wait_until_taken_out(const BufferModule* buffer) const
    {
        while (pool.holds(buffer))
            std::this_thread::yield();
    }

    BufferPool pool;
};

TEST_F(PoolThreads, RemovingWaitsForTheLastPin)
{
    BufferModule* const buffer = add(5);
    std::atomic<bool> is_removed{false};
    PinnedBuffer first = pool.find_library_handle(5);
    PinnedBuffer second = pool.at(0);
    std::thread remover([&] {
        EXPECT_TRUE(pool.remove(buffer));
        is_removed = true;
    });
    wait_until_taken_out(buffer);
    EXPECT_FALSE(pool.find_library_handle(5)) << "a late callback";
    EXPECT_EQ(0U, pool.size());
    first = PinnedBuffer();
    EXPECT_FALSE(is_removed.load());
    std::fill_n(static_cast<uint8_t*>(second->get_Memory()), 1000, uint8_t{1}); // still there to be written
    EXPECT_EQ(1000U, second->get_Size());
    second = PinnedBuffer();
    remover.join();
    EXPECT_TRUE(is_removed.load());
}

TEST_F(PoolThreads, ClearingWaitsForEveryPin)
{
    BufferModule* const first = add(5);
    BufferModule* const second = add(6);
    std::atomic<bool> is_cleared{false};
    std::thread clearer;
    {
        const PinnedBuffer of_second = pool.find(second);
        {
            const PinnedBuffer of_first = pool.find(first);
            clearer = std::thread([&] {
                pool.clear();
                is_cleared = true;
            });
            wait_until_taken_out(first);
            EXPECT_TRUE(pool.holds(second)) << "in order";
        }
        wait_until_taken_out(second);
        EXPECT_FALSE(is_cleared.load());
        EXPECT_EQ(1000U, of_second->get_Size());
    }
    clearer.join();
    EXPECT_EQ(0U, pool.size());
}

TEST_F(PoolThreads, APinOfOneBufferDoesNotKeepAnother)
{
    BufferModule* const pinned = add(5);
    BufferModule* const other = add(6);
    const PinnedBuffer pin = pool.find(pinned);
    EXPECT_TRUE(pool.remove(other)); // would never return
}

TEST_F(PoolThreads, AddingAndFindingGoesOnWhileOneIsRemoved)
{
    BufferModule* const buffer = add(5);
    std::thread remover;
    {
        const PinnedBuffer pin = pool.find(buffer);
        remover = std::thread([&] { EXPECT_TRUE(pool.remove(buffer)); });
        wait_until_taken_out(buffer);
        BufferModule* const added = add(6);
        EXPECT_EQ(added, pool.find_library_handle(6).get());
        EXPECT_FALSE(pool.remove(buffer)) << "somebody else does";
    }
    remover.join();
    EXPECT_EQ(1U, pool.size());
}

/// A callback that takes buffers, a consumer that queues them, and one that replaces them, all at once.
TEST_F(PoolThreads, SurvivesEverythingAtOnce)
{
    constexpr int rounds = 2000;
    for (uint64_t i = 1; i <= 8; ++i)
        add(i);
    std::atomic<bool> is_over{false};
    std::thread callback([&] {
        for (uint64_t i = 0; !is_over.load(); ++i) {
            if (const PinnedBuffer taken = pool.take_first_input())
                std::fill_n(static_cast<uint8_t*>(taken->get_Memory()), 1000, uint8_t{2});
            if (const PinnedBuffer found = pool.find_library_handle(i % 8 + 1))
                found->set_Frame(i, i);
        }
    });
    std::thread queueing([&] {
        for (size_t i = 0; !is_over.load(); ++i) {
            if (const PinnedBuffer buffer = pool.at(i % 8))
                buffer->set_Queue(BUFFER_QUEUE_TYPE::INPUT);
        }
    });
    for (int i = 0; i < rounds; ++i) {
        const BufferModule* const oldest = pool.at(0).get();
        const uint64_t library_handle = pool.find(oldest)->get_GrabberHandle();
        EXPECT_TRUE(pool.remove(oldest));
        add(library_handle);
    }
    is_over = true;
    callback.join();
    queueing.join();
    EXPECT_EQ(8U, pool.size());
    for (uint64_t i = 1; i <= 8; ++i)
        EXPECT_TRUE(pool.find_library_handle(i)) << i;
}

} // namespace

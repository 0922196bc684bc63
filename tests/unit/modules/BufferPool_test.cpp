#include <memory>
#include <utility>

#include "modules/BufferPool.h"
#include "unit/modules/Module_fixtures.h"

using namespace zvtest;
using zvgentl::BUFFER_QUEUE_TYPE;
using zvgentl::BufferModule;
using zvgentl::BufferPool;
using zvgentl::PinnedBuffer;

namespace {

class Pool : public CameraStream {
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

    std::unique_ptr<BufferModule> make(uint64_t library_handle, void* memory, uint64_t size)
    {
        return std::make_unique<BufferModule>(*stream, memory, size, library_handle, nullptr);
    }
    BufferModule* add(uint64_t library_handle = 0) { return pool.add(make(library_handle, m_memory, 8)); }
    BufferModule* add_mapped(uint64_t library_handle)
    {
        return pool.add_mapped(make(library_handle, m_memory, 8));
    }

    BufferPool pool;

private:
    uint8_t m_memory[8]{};
};

TEST_F(Pool, FindsNothingWhenItIsEmpty)
{
    int stranger = 0;
    EXPECT_EQ(0U, pool.size());
    EXPECT_FALSE(pool.holds(nullptr));
    EXPECT_FALSE(pool.holds(&stranger));
    EXPECT_FALSE(pool.find(&stranger));
    EXPECT_FALSE(pool.find(nullptr));
    EXPECT_FALSE(pool.at(0));
    EXPECT_FALSE(pool.find_memory(nullptr, 0));
    EXPECT_FALSE(pool.find_library_handle(0));
    EXPECT_FALSE(pool.take_first_input());
    EXPECT_FALSE(pool.remove(&stranger));
    EXPECT_FALSE(pool.remove(nullptr));
    pool.clear();
}

TEST_F(Pool, FindsBuffersByAddressAndPosition)
{
    BufferModule* const first = add();
    BufferModule* const second = add();
    EXPECT_EQ(2U, pool.size());
    EXPECT_TRUE(pool.holds(second));
    EXPECT_EQ(second, pool.find(second).get());
    EXPECT_EQ(first, pool.at(0).get());
    EXPECT_EQ(second, pool.at(1).get());
    EXPECT_FALSE(pool.at(2));
    EXPECT_FALSE(pool.at(SIZE_MAX));
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
    add(5);
    EXPECT_FALSE(pool.find_library_handle(5));
    BufferModule* const mapped = add_mapped(0x100000005);
    EXPECT_EQ(mapped, pool.find_library_handle(0x100000005).get());
    EXPECT_FALSE(pool.find_library_handle(5)) << "a handle has 64 bits";
}

TEST_F(Pool, FindsTheLatestBufferOfALibraryHandle)
{
    BufferModule* const old = add_mapped(5);
    BufferModule* const renewed = add_mapped(5);
    EXPECT_EQ(renewed, pool.find_library_handle(5).get());
    EXPECT_TRUE(pool.remove(old));
    EXPECT_EQ(renewed, pool.find_library_handle(5).get()) << "the entry is no longer the old one's";
    EXPECT_TRUE(pool.remove(renewed));
    EXPECT_FALSE(pool.find_library_handle(5));
}

TEST_F(Pool, FindsNothingForALateCallback)
{
    BufferModule* const removed = add_mapped(5);
    BufferModule* const kept = add_mapped(6);
    EXPECT_TRUE(pool.remove(removed));
    EXPECT_FALSE(pool.find_library_handle(5));
    EXPECT_FALSE(pool.find(removed));
    EXPECT_EQ(kept, pool.find_library_handle(6).get());
    pool.clear();
    EXPECT_FALSE(pool.find_library_handle(6));
    EXPECT_EQ(0U, pool.size());
    BufferModule* const again = add_mapped(5);
    EXPECT_EQ(again, pool.find_library_handle(5).get());
}

TEST_F(Pool, TakesInputBuffersInPoolOrder)
{
    BufferModule* const first = add();
    BufferModule* const second = add();
    BufferModule* const third = add();
    third->set_Queue(BUFFER_QUEUE_TYPE::INPUT);
    second->set_Queue(BUFFER_QUEUE_TYPE::INPUT);
    EXPECT_EQ(second, pool.take_first_input().get());
    EXPECT_EQ(BUFFER_QUEUE_TYPE::OUTPUT, second->get_Queue());
    EXPECT_EQ(third, pool.take_first_input().get());
    EXPECT_FALSE(pool.take_first_input());
    EXPECT_EQ(BUFFER_QUEUE_TYPE::GENERAL, first->get_Queue());
}

TEST_F(Pool, CountsBuffersThatSatisfyACondition)
{
    add()->set_Queue(BUFFER_QUEUE_TYPE::INPUT);
    add();
    add()->set_Queue(BUFFER_QUEUE_TYPE::INPUT);
    EXPECT_EQ(2U, pool.count_if([](const BufferModule& buffer) {
        return buffer.get_Queue() == BUFFER_QUEUE_TYPE::INPUT;
    }));
    EXPECT_EQ(3U, pool.count_if([](const BufferModule&) { return true; }));
    EXPECT_EQ(0U, pool.count_if([](const BufferModule&) { return false; }));
}

TEST_F(Pool, MovesLaterBuffersUpWhenOneGoes)
{
    BufferModule* const first = add();
    BufferModule* const second = add();
    BufferModule* const third = add();
    EXPECT_TRUE(pool.remove(second));
    EXPECT_FALSE(pool.remove(second));
    EXPECT_EQ(first, pool.at(0).get());
    EXPECT_EQ(third, pool.at(1).get());
    EXPECT_EQ(2U, pool.size());
}

TEST_F(Pool, HandsAPinOnWhenItIsMoved)
{
    BufferModule* const buffer = add();
    PinnedBuffer first = pool.find(buffer);
    PinnedBuffer second(std::move(first));
    EXPECT_EQ(buffer, second.get());
    EXPECT_EQ(buffer->get_Size(), second->get_Size());
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

} // namespace

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <set>
#include <string>
#include <utility>

#include "modules/BufferModule.h"
#include "unit/modules/Module_fixtures.h"

using namespace zvtest;
using zvgentl::AlignedMemory;
using zvgentl::BUFFER_QUEUE_TYPE;
using zvgentl::BufferModule;
using zvgentl::FillState;
using zvgentl::Geometry;
using zvgentl::StreamMode;

namespace {

class Buffer : public CameraStream {
protected:
    void SetUp() override
    {
        CameraStream::SetUp();
        fake.allow_handle(ZV_NO_HANDLE); // the stream is closed
    }

    uint8_t memory[100]{};
    int owner{0};
};

TEST_F(Buffer, IsNewWhenItIsMade)
{
    const BufferModule buffer(*stream, memory, sizeof memory, 0x123, &owner);
    EXPECT_EQ(0x123U, buffer.get_GrabberHandle());
    EXPECT_EQ(stream.get(), &buffer.get_Stream());
    EXPECT_EQ(memory, buffer.get_Memory());
    EXPECT_EQ(sizeof memory, buffer.get_Size());
    EXPECT_EQ(&owner, buffer.get_Private());
    EXPECT_EQ(BUFFER_QUEUE_TYPE::GENERAL, buffer.get_Queue());
    EXPECT_EQ(FillState::never_filled, buffer.get_FillState());
    EXPECT_EQ(0U, buffer.get_Timestamp());
    EXPECT_EQ(0U, buffer.get_FrameId());
}

TEST_F(Buffer, IsNamedAfterItsLibraryHandle)
{
    EXPECT_EQ("Buffer0x0", BufferModule(*stream, memory, 1, 0, nullptr).getId());
    EXPECT_EQ("Buffer0x1abcdef", BufferModule(*stream, memory, 1, 0x1ABCDEF, nullptr).getId());
    EXPECT_EQ("Buffer0xffffffffffffffff", BufferModule(*stream, memory, 1, UINT64_MAX, nullptr).getId());
}

TEST_F(Buffer, ServesItsDescriptionAlone)
{
    const BufferModule buffer(*stream, memory, 1, 0, nullptr);
    EXPECT_EQ("Local:ZV_BufferGenTL.zip;88888888;280", buffer.get_Url());
    expect_description(buffer, "BufferModule", "PK\3\4", 640);
}

TEST_F(Buffer, HasNineValuesOfGeometryAndThenZeros)
{
    const uint32_t handle = connect(StreamMode::queued);
    fake.grabber_int("Width") = 10;
    fake.grabber_int("Height") = 20;
    fake.grabber_int("SegmentsPerBuffer") = 3;
    fake.camera_int("OffsetX") = 4;
    fake.camera_int("OffsetY") = 5;
    fake.camera_enum("PixelFormat") = 0x102;
    settings.set_override("GenTL.Buffer.DeliveredImageHeight", 7);
    forget();
    const BufferModule buffer(*stream, memory, sizeof memory, 1, nullptr);
    for (const Call& made : fake.calls())
        EXPECT_EQ(Argument(handle), made.arguments[0]) << made;
    const uint64_t expected[] = {10, 60, 100, 4, 5, 0x1100003, 100, 7, 4, 0, 0};
    for (uint32_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ(expected[i], buffer.get_Geometry(static_cast<Geometry>(i))) << i;
    EXPECT_EQ(0U, buffer.get_Geometry(static_cast<Geometry>(UINT32_MAX)));
}

TEST_F(Buffer, RemembersWhatFrameAndConsumerLeft)
{
    BufferModule buffer(*stream, memory, 1, 1, nullptr);
    buffer.set_Private(&owner);
    EXPECT_EQ(&owner, buffer.get_Private());
    buffer.set_Frame(UINT64_MAX, UINT64_MAX - 1);
    EXPECT_EQ(UINT64_MAX, buffer.get_Timestamp());
    EXPECT_EQ(UINT64_MAX - 1, buffer.get_FrameId());
    for (const FillState state : {FillState::filling, FillState::filled, FillState::incomplete}) {
        buffer.set_FillState(state);
        EXPECT_EQ(state, buffer.get_FillState());
    }
}

TEST_F(Buffer, MovesBetweenQueuesWithAndWithoutItsLock)
{
    for (const uint32_t serialise : {0U, 1U, 2U}) {
        settings.set("GenTL.Buffer.SerializeBufferType", serialise);
        BufferModule buffer(*stream, memory, 1, 1, nullptr);
        for (const auto queue :
             {BUFFER_QUEUE_TYPE::INPUT, BUFFER_QUEUE_TYPE::OUTPUT, BUFFER_QUEUE_TYPE::GENERAL}) {
            buffer.set_Queue(queue);
            EXPECT_EQ(queue, buffer.get_Queue()) << serialise;
        }
    }
}

TEST_F(Buffer, LeavesMemoryOfTheConsumerToTheConsumer)
{
    auto given = std::make_unique<uint8_t[]>(64);
    std::memset(given.get(), 0x5A, 64);
    {
        const BufferModule buffer(*stream, given.get() + 1, 63, 1, nullptr); // aligned to nothing
        EXPECT_EQ(given.get() + 1, buffer.get_Memory());
    }
    EXPECT_TRUE(std::all_of(given.get(), given.get() + 64, [](uint8_t byte) { return byte == 0x5A; }));
}

TEST_F(Buffer, AllocatesAlignedMemoryOrThrows)
{
    const BufferModule buffer(*stream, nullptr, 5000, 0, nullptr);
    ASSERT_NE(nullptr, buffer.get_Memory());
    EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(buffer.get_Memory()) % 4096);
    std::memset(buffer.get_Memory(), 1, 5000);
    EXPECT_THROW(BufferModule(*stream, nullptr, UINT64_MAX, 0, nullptr), std::bad_alloc);
}

TEST_F(Buffer, HasAnAlignedAddressThatDoesNotSoonComeBack)
{
    std::set<const void*> addresses;
    for (int i = 0; i < 256; ++i) {
        const auto buffer = std::make_unique<BufferModule>(*stream, memory, 1, 1, nullptr);
        EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(buffer.get()) % 16);
        EXPECT_TRUE(addresses.insert(buffer.get()).second) << "an address came back after " << i;
    }
}

TEST(QueueNames, AreThoseOfTheLogLines)
{
    EXPECT_STREQ("BUFFER_QUEUE_TYPE::GENERAL", name_of(BUFFER_QUEUE_TYPE::GENERAL));
    EXPECT_STREQ("BUFFER_QUEUE_TYPE::INPUT", name_of(BUFFER_QUEUE_TYPE::INPUT));
    EXPECT_STREQ("BUFFER_QUEUE_TYPE::OUTPUT", name_of(BUFFER_QUEUE_TYPE::OUTPUT));
    EXPECT_STREQ("UNSUPPORTED BUFFER QUEUE TYPE", name_of(static_cast<BUFFER_QUEUE_TYPE>(3)));
    EXPECT_STREQ("UNSUPPORTED BUFFER QUEUE TYPE", name_of(static_cast<BUFFER_QUEUE_TYPE>(0xFFFFFFFFU)));
}

TEST(AlignedMemoryOfABuffer, IsAlignedAndWritable)
{
    EXPECT_EQ(nullptr, AlignedMemory().get());
    for (const uint64_t size : {0U, 1U, 4095U, 4096U, 4097U, 1000000U}) {
        const AlignedMemory memory(size);
        ASSERT_NE(nullptr, memory.get()) << size;
        EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(memory.get()) % 4096) << size;
        std::memset(memory.get(), 0xFF, size);
    }
    for (const uint64_t size : {UINT64_MAX, UINT64_MAX - 4095}) // they cannot be rounded up
        EXPECT_THROW(AlignedMemory{size}, std::bad_alloc) << size;
}

TEST(AlignedMemoryOfABuffer, MovesWithItsOwner)
{
    AlignedMemory first(10);
    void* const memory = first.get();
    AlignedMemory second(std::move(first));
    EXPECT_EQ(memory, second.get());
    AlignedMemory third(20);
    third = std::move(second);
    EXPECT_EQ(memory, third.get());
}

} // namespace

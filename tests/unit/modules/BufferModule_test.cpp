#include <cstring>
#include <memory>
#include <new>
#include <set>

#include "modules/BufferModule.h"
#include "platform/memory.h"
#include "support/process/process_state.h"
#include "unit/modules/Module_fixtures.h"

using namespace zvtest;
using zvgentl::AlignedMemory;
using zvgentl::BUFFER_QUEUE_TYPE;
using zvgentl::BufferModule;
using zvgentl::Geometry;

namespace {

class Buffer : public LooseStream {
protected:
    uint8_t memory[1]{};
};

TEST_F(Buffer, IsNamedAfterItsLibraryHandle)
{
    EXPECT_EQ("Buffer0x0", BufferModule(*stream, memory, 1, 0, nullptr).getId());
    EXPECT_EQ("Buffer0x1abcdef", BufferModule(*stream, memory, 1, 0x1ABCDEF, nullptr).getId());
    EXPECT_EQ("Buffer0xffffffffffffffff", BufferModule(*stream, memory, 1, UINT64_MAX, nullptr).getId());
}

TEST_F(Buffer, ServesOnlyItsDescription)
{
    const BufferModule buffer(*stream, memory, 1, 0, nullptr);
    EXPECT_EQ("Local:ZV_BufferGenTL.zip;88888888;280", buffer.get_Url());
    expect_description(buffer, "BufferModule", "PK\3\4", 640);
}

TEST_F(Buffer, HasZerosAfterItsNineValuesOfGeometry)
{
    settings.set_override("GenTL.Buffer.PixelFormatNameSpace", 77);
    const BufferModule buffer(*stream, memory, 1, 1, nullptr);
    EXPECT_EQ(77U, buffer.get_Facts().get_Geometry(static_cast<Geometry>(8)));
    for (const uint32_t index : {9U, 10U, UINT32_MAX})
        EXPECT_EQ(0U, buffer.get_Facts().get_Geometry(static_cast<Geometry>(index))) << index;
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

TEST(QueueNames, DoNotExistForOtherNumbers)
{
    for (const uint32_t number : {3U, 0xFFFFFFFFU})
        EXPECT_STREQ("UNSUPPORTED BUFFER QUEUE TYPE", name_of(static_cast<BUFFER_QUEUE_TYPE>(number)));
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

TEST(AlignedMemoryOfABuffer, IsThereBeforeTheFirstFrame)
{
    constexpr size_t size = size_t{64} << 20U;
    const platform::MachineMemory machine = platform::machine_memory();
    if (machine.available < machine.total / 4 + 2 * size)
        GTEST_SKIP() << "other programs need the memory";
    const size_t before = memory_size().resident;
    const AlignedMemory memory(size);
    EXPECT_GE(memory_size().resident, before + size / 2); // some of it may have been there before
}

} // namespace

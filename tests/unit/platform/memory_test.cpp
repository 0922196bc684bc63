#include <algorithm>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "platform/memory.h"

using platform::machine_memory;
using platform::MachineMemory;
using platform::most_provided;
using platform::provide;

TEST(MachineMemory, IsKnown)
{
    const MachineMemory memory = machine_memory();
    EXPECT_GE(memory.total, uint64_t{1} << 26U);
    EXPECT_GT(memory.available, 0U);
    EXPECT_LE(memory.available, memory.total);
}

TEST(ProvidedMemory, IsNotWrittenBeyondItsEnds)
{
    for (const size_t size : {0U, 1U, 4095U, 4096U, 4097U, 20000U}) {
        std::vector<unsigned char> bytes(size + 20000, 0xEE);
        EXPECT_TRUE(provide(bytes.data() + 10000, size));
        const auto is_untouched = [](unsigned char value) { return value == 0xEE; };
        EXPECT_TRUE(std::all_of(bytes.begin(), bytes.begin() + 10000, is_untouched)) << size;
        EXPECT_TRUE(std::all_of(bytes.end() - 10000, bytes.end(), is_untouched)) << size;
    }
}

// A size that was only reserved, up to the end of what can be addressed, stays so. Nothing is written: there
// is no memory.
TEST(ProvidedMemory, StaysReservedWhenItIsTooMuch)
{
    for (const size_t size : {most_provided + 1, size_t{1} << 40U, size_t{1} << 47U, SIZE_MAX})
        EXPECT_FALSE(provide(nullptr, size)) << size;
}

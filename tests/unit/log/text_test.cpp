#include <cstdint>

#include <gtest/gtest.h>

#include "log/text.h"

using namespace zvgentl;

namespace {

// A pointer with all its bits in use, which nothing dereferences.
// NOLINTNEXTLINE(performance-no-int-to-ptr): the number is what is tested
const void* pointer(uintptr_t value) { return reinterpret_cast<const void*>(value); }

} // namespace

TEST(Text, PrintsPointersWhole) { EXPECT_EQ(0x123456789ABCDEF0ULL, address(pointer(0x123456789ABCDEF0))); }

TEST(Text, KeepsTheLowHalfOfHandles)
{
    EXPECT_EQ(0x9ABCDEF0U, low32(pointer(0x123456789ABCDEF0)));
    EXPECT_EQ(0U, low32(nullptr));
}

TEST(Text, KeepsTheLowHalfOfNumbersWithItsSign)
{
    EXPECT_EQ(-1, low32_signed(UINT64_MAX));
    EXPECT_EQ(5, low32_signed(0x700000005));
    EXPECT_EQ(INT32_MIN, low32_signed(0x80000000));
}

#include <algorithm>
#include <cstring>
#include <locale>
#include <string>

#include <gtest/gtest.h>

#include "modules/PortMemory.h"

namespace {

using zvgentl::PortMemory;

constexpr uint64_t start = 0x88888888;
constexpr unsigned char bytes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
constexpr PortMemory memory{"some.xml", bytes, sizeof bytes};

struct Read {
    bool is_inside;
    size_t size;
    std::string data; // what was written
};

/// Reads with a buffer of exactly the size asked for, so that a write beyond it is found.
Read read(uint64_t address, size_t asked)
{
    std::string data(asked, '\x55');
    size_t size = asked;
    const bool is_inside = memory.read(address, data.data(), &size);
    return {is_inside, size, data};
}

TEST(PortMemory, IsReadFromAnyAddressInsideUpToItsEnd)
{
    for (size_t offset = 0; offset < sizeof bytes; ++offset) {
        for (size_t asked = 0; asked <= sizeof bytes; ++asked) {
            const Read some = read(start + offset, asked);
            const size_t there = std::min(asked, sizeof bytes - offset);
            EXPECT_TRUE(some.is_inside);
            EXPECT_EQ(there, some.size);
            EXPECT_EQ(0, std::memcmp(bytes + offset, some.data.data(), there));
            EXPECT_EQ(std::string(asked - there, '\x55'), some.data.substr(there));
        }
    }
}

TEST(PortMemory, HasNothingOutside)
{
    for (const uint64_t address :
         {start - 1, start + 10, uint64_t{0}, UINT64_MAX, start + 0x100000000, start + (uint64_t{1} << 63)}) {
        const Read outside = read(address, 5);
        EXPECT_FALSE(outside.is_inside) << address;
        EXPECT_EQ(5U, outside.size);
        EXPECT_EQ("\x55\x55\x55\x55\x55", outside.data);
    }
}

/// Groups the digits of every number by two.
class GroupedDigits : public std::numpunct<char> {
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\2"; }
};

TEST(PortMemory, IsNamedByAUrlInLowerCaseHexadecimalInEveryLocale)
{
    EXPECT_EQ("Local:some.xml;88888888;a", memory.url());
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new GroupedDigits));
    const std::string url = memory.url();
    std::locale::global(before);
    EXPECT_EQ("Local:some.xml;88888888;a", url);
}

} // namespace

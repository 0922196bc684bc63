#include <iterator>

#include <gtest/gtest.h>

#include "api/module_info.h"
#include "api/producer_info.h"

// The tables of the info queries that several functions share.

namespace zvgentl {

namespace {

template <class Row, size_t size>
::testing::AssertionResult has_commands_from_zero(const Row (&table)[size], int32_t first = 0)
{
    for (size_t i = 0; i < size; ++i) {
        if (table[i].command != first + static_cast<int32_t>(i))
            return ::testing::AssertionFailure() << "row " << i << " has command " << table[i].command;
    }
    return ::testing::AssertionSuccess();
}

TEST(InfoTables, HaveOneRowForEachCommandInOrder)
{
    EXPECT_TRUE(has_commands_from_zero(producer_info));
    EXPECT_EQ(9U, std::size(producer_info));
    EXPECT_TRUE(has_commands_from_zero(standard_version_info, 9));
    EXPECT_EQ(2U, std::size(standard_version_info));
    EXPECT_TRUE(has_commands_from_zero(interface_info));
    EXPECT_EQ(3U, std::size(interface_info));
    EXPECT_TRUE(has_commands_from_zero(device_info));
    EXPECT_EQ(10U, std::size(device_info));
    EXPECT_TRUE(has_commands_from_zero(port_info));
    EXPECT_EQ(13U, std::size(port_info));
}

TEST(InfoTables, ReadTextsOfARecordWithinTheirBounds)
{
    const char terminated[5] = {'a', 'b', '\0', 'c', 'd'};
    EXPECT_EQ("ab", identity_text(terminated).text());
    const char unterminated[3] = {'a', 'b', 'c'};
    EXPECT_EQ("abc", identity_text(unterminated).text());
    const char empty[3] = {};
    EXPECT_EQ("", identity_text(empty).text());
}

TEST(ProducerInfo, ComposesTheVersion) { EXPECT_EQ("6.3.3", producer_version()); }

} // namespace

} // namespace zvgentl

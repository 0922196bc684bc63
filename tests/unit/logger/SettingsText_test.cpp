#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

#include <gmock/gmock.h>

#include "logger/SettingsText.h"

using ::testing::Optional;
using ::testing::StartsWith;
using zvlog::find_setting;
using zvlog::is_storable_key;
using zvlog::with_setting_added;

namespace {

std::optional<std::uint32_t> number_in(const std::string& value)
{
    return find_setting("a = " + value + "\n", "a").number;
}

TEST(SettingNumber, IsDecimalOrHexadecimal)
{
    EXPECT_THAT(number_in("0"), Optional(0u));
    EXPECT_THAT(number_in("4294967295"), Optional(4294967295u));
    EXPECT_THAT(number_in("0xFFFFffff"), Optional(4294967295u));
    EXPECT_THAT(number_in("0X1f"), Optional(31u));
    EXPECT_THAT(number_in("010"), Optional(10u));
}

TEST(SettingNumber, IsNothingElse)
{
    for (const char* const text : {"", "-1", "+1", "4294967296", "0x100000000", "0x", "0x-1", "0x0x1", "1.0",
                                   "1 2", "12a", "true", "0b1", "1e3", "99999999999999999999"})
        EXPECT_EQ(std::nullopt, number_in(text)) << text;
}

TEST(SettingsText, TheLastEntryOfAKeyCountsWhetherItIsANumberOrNot)
{
    const auto number = find_setting("a = 1\nb = 2\na = 3\n", "a");
    EXPECT_TRUE(number.is_present);
    EXPECT_THAT(number.number, Optional(3u));
    const auto text = find_setting("a = many\n", "a");
    EXPECT_TRUE(text.is_present);
    EXPECT_EQ("many", text.text);
    EXPECT_EQ(std::nullopt, text.number);
    for (const char* const missing : {"# a = 1\n", "a\n"})
        EXPECT_FALSE(find_setting(missing, "a").is_present) << missing;
}

TEST(SettingsText, AnAddedKeyHasItsDescriptionAndDefaultAboveItAsComments)
{
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"x = 1\n", "what it does", "x = 1\n\n# what it does\n# Default: 7\na = 7\n"},
        {"x = 1\n", "", "x = 1\n\n# Default: 7\na = 7\n"},
        {"x = 1\r\n", "", "x = 1\r\n\r\n# Default: 7\r\na = 7\r\n"},
        {"x = 1\n", "one\na = 9\r\n\tthree\x01", "x = 1\n\n# one\n# a = 9\n#  three \n# Default: 7\na = 7\n"},
    };
    for (const auto& [before, description, after] : rows)
        EXPECT_EQ(after, with_setting_added(before, "a", 7, description));
    EXPECT_THAT(with_setting_added("", "a", 7, ""), StartsWith("# Settings"));
}

TEST(SettingsText, AddingKeepsEverythingThatWasThere)
{
    for (const std::string old : {"", "x = 1", "x = 1\\", "# comment", "junk\n\n\n  y:2", "\n"}) {
        const std::string text = with_setting_added(old, "a", 7, "");
        EXPECT_THAT(text, StartsWith(old));
        EXPECT_THAT(find_setting(text, "a").number, Optional(7u)) << text;
    }
}

TEST(SettingKey, MustReadBackAsItself)
{
    EXPECT_TRUE(is_storable_key("GenTL.Stream.BufferAllocMin"));
    EXPECT_TRUE(is_storable_key("with a blank"));
    for (const char* const key : {"", " a", "a ", "#a", "!a", "a=b", "a:b", "a\nb", "a\tb"})
        EXPECT_FALSE(is_storable_key(key)) << key;
}

} // namespace

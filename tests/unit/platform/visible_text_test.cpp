#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/visible_text.h"

namespace {

using platform::is_plain;
using platform::visible;
using platform::visible_lines;

struct Text {
    const char* name;
    std::string raw;
    std::string shown;
};

class VisibleText : public ::testing::TestWithParam<Text> {};

TEST_P(VisibleText, HasNoControlCharacters)
{
    const Text& text = GetParam();
    EXPECT_EQ(text.shown, visible(text.raw));
    EXPECT_EQ(text.raw == text.shown, is_plain(text.raw));
    EXPECT_TRUE(is_plain(text.shown));
}

INSTANTIATE_TEST_SUITE_P(
    All, VisibleText,
    ::testing::Values(
        Text{"Empty", "", ""}, Text{"Ascii", "A name: ~{}\\", "A name: ~{}\\"},
        Text{"LineEnd", "a\r\nb\tc", "a\\r\\nb\\tc"}, Text{"Escape", "\x1B[2J", "\\x1B[2J"},
        Text{"Delete", "a long enough text \x7F", "a long enough text \\x7F"},
        Text{"Zero", std::string("a\0b", 3), "a\\x00b"}, Text{"Umlaut", "W\xC3\xB6rter", "W\xC3\xB6rter"},
        Text{"FourBytes", "\xF0\x9F\x93\xB7", "\xF0\x9F\x93\xB7"},
        Text{"C1InUtf8",
             "\xC2\x9B"
             "2J",
             "\\x9B2J"},
        Text{"C1AsAByte",
             "\x9B"
             "2J",
             "\\x9B2J"},
        Text{"Latin1", "W\xF6rter", "W\xF6rter"},
        Text{"NextLine",
             "a\xC2\x85"
             "b",
             "a\\x85"
             "b"},
        Text{"NoBreakSpace", "\xC2\xA0", "\xC2\xA0"},
        // What is longer than it need be is no character: its parts are looked at.
        Text{"Overlong2", "\xC0\x8A", "\xC0\\x8A"}, Text{"Overlong3", "\xE0\x80\x8A", "\xE0\\x80\\x8A"},
        Text{"Overlong4", "\xF0\x80\x82\x9B", "\xF0\\x80\\x82\\x9B"}, Text{"CutOff", "\xE2\x82", "\xE2\\x82"},
        Text{"EndOfAnEscape", "\xC3\x1B", "\xC3\\x1B"}),
    [](const auto& test) { return test.param.name; });

TEST(VisibleText, MakesEveryControlCharacterVisibleAtEveryPlace)
{
    for (int code = 0; code < 256; ++code)
        for (std::size_t place = 0; place < 20; ++place) {
            std::string text(20, 'x');
            text[place] = static_cast<char>(code);
            const bool is_control = code < 0x20 || (code >= 0x7F && code < 0xA0);
            EXPECT_EQ(!is_control, is_plain(text)) << code << " at " << place;
            EXPECT_EQ(is_control, visible(text) != text) << code << " at " << place;
        }
}

TEST(VisibleText, MayKeepItsOwnLines) { EXPECT_EQ("a\n\tb\\r\\x1B", visible_lines("a\n\tb\r\x1B")); }

} // namespace

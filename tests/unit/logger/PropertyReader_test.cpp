#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "logger/PropertyReader.h"

using ::testing::ElementsAreArray;
using zvlog::PropertyReader;

namespace {

std::vector<std::string> read(std::string_view text)
{
    std::vector<std::string> found;
    PropertyReader reader(text);
    while (reader.next())
        found.push_back(std::string(reader.key()) + (reader.has_separator() ? "|" + reader.value() : ""));
    return found;
}

struct Reading {
    const char* name;
    std::string_view text;
    /// "key|value", or a lone word.
    std::vector<std::string> found;
};

class PropertyText : public ::testing::TestWithParam<Reading> {};

TEST_P(PropertyText, IsReadAsItsProperties)
{
    EXPECT_THAT(read(GetParam().text), ElementsAreArray(GetParam().found));
}

INSTANTIATE_TEST_SUITE_P(
    All, PropertyText,
    ::testing::Values(
        Reading{"TheFirstEqualsSignOrColonSeparates", "a = b\nc: d=e\nf=g:h", {"a|b", "c|d=e", "f|g:h"}},
        Reading{"BlanksAroundAreLeftOut", "  some key \t=\t a value  \r\n", {"some key|a value"}},
        Reading{"CommentsAndEmptyLinesAreLeftOut", "# a = 1\n\n  ! b = 2\n\r\n", {}},
        Reading{"ACommentSignMayBeInAValue", "a = 1 # one", {"a|1 # one"}},
        Reading{"Escapes", "a = x\\ty\\nz\\r\\f\\\\ \\q", {"a|x\ty\nz\r\f\\ q"}},
        Reading{"ABackslashContinuesALine", "a = 1,\\\n2,\\\r\n3\nb = 4", {"a|1,2,3", "b|4"}},
        Reading{"AnEscapedBackslashDoesNot", "a = 1\\\\\nb = 2\n", {"a|1\\", "b|2"}},
        Reading{"ALoneWordHasNoValue", "word\nkey =", {"word", "key|"}}, Reading{"Nothing", "", {}},
        Reading{"Blanks", "   ", {}}, Reading{"AnEmptyComment", "#", {}},
        Reading{"AWordAtTheEnd", "a", {"a"}}, Reading{"ASeparatorAtTheEnd", "a=", {"a|"}},
        Reading{"ABackslashAtTheEnd", "a=\\", {"a|"}}, Reading{"HalfALineEndAtTheEnd", "a=b\\\r", {"a|b"}},
        Reading{"AnEmptyKey", "=b", {"|b"}},
        Reading{"AByteOrderMarkIsLeftOut",
                "\xEF\xBB\xBF"
                "a = 1",
                {"a|1"}}),
    [](const auto& test) { return test.param.name; });

} // namespace

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "logger/PropertyReader.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
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

TEST(PropertyReader, SplitsAtTheFirstEqualsSignOrColon)
{
    EXPECT_THAT(read("a = b\nc: d=e\nf=g:h"), ElementsAre("a|b", "c|d=e", "f|g:h"));
}

TEST(PropertyReader, TakesBlanksOffKeysAndValues)
{
    EXPECT_THAT(read("  some key \t=\t a value  \r\n"), ElementsAre("some key|a value"));
}

TEST(PropertyReader, SkipsCommentsAndEmptyLines)
{
    EXPECT_THAT(read("# a = 1\n\n  ! b = 2\n\r\n"), IsEmpty());
}

TEST(PropertyReader, ACommentSignInsideAValueIsPartOfIt)
{
    EXPECT_THAT(read("a = 1 # one"), ElementsAre("a|1 # one"));
}

TEST(PropertyReader, KnowsTheEscapesOfPropertyFiles)
{
    EXPECT_THAT(read("a = x\\ty\\nz\\r\\f\\\\ \\q"), ElementsAre("a|x\ty\nz\r\f\\ q"));
}

TEST(PropertyReader, ABackslashAtTheEndOfALineContinuesIt)
{
    EXPECT_THAT(read("a = 1,\\\n2,\\\r\n3\nb = 4"), ElementsAre("a|1,2,3", "b|4"));
    EXPECT_THAT(read("a = 1\\\\\nb = 2\n"), ElementsAre("a|1\\", "b|2"));
}

TEST(PropertyReader, GivesALoneWordWithoutAValue)
{
    EXPECT_THAT(read("word\nkey ="), ElementsAre("word", "key|"));
}

TEST(PropertyReader, EndsWithATextThatEndsInTheMiddleOfAnything)
{
    EXPECT_THAT(read(""), IsEmpty());
    EXPECT_THAT(read("   "), IsEmpty());
    EXPECT_THAT(read("#"), IsEmpty());
    EXPECT_THAT(read("a"), ElementsAre("a"));
    EXPECT_THAT(read("a="), ElementsAre("a|"));
    EXPECT_THAT(read("a=\\"), ElementsAre("a|"));
    EXPECT_THAT(read("a=b\\\r"), ElementsAre("a|b"));
    EXPECT_THAT(read("=b"), ElementsAre("|b"));
}

TEST(PropertyReader, IgnoresAByteOrderMark)
{
    EXPECT_THAT(read("\xEF\xBB\xBF"
                     "a = 1"),
                ElementsAre("a|1"));
}

} // namespace

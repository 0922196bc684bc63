#include <gmock/gmock.h>

#include "examples.h"
#include "zvgentl/PortOptions.h"

namespace zvgentl::test {

using namespace tool;

TEST(FeatureOutput, ShowsATreeInColumns)
{
    EXPECT_EQ("Device00 (remote): Root\n"
              "Image\n"
              "  Width        Integer      RW  640 px  [16 .. 1024, step 16]\n"
              "  PixelFormat  Enumeration  RW  Mono8  (Mono8, Mono12)  selects PixelSize\n"
              "  Model        String       RO  \"A \"B\"\"\n"
              "  Start        Command      WO\n"
              "  Gain         Float        RW  ! the cable\\nis out\n"
              "Image                           (see above)\n",
              to_text(example_features()));
}

TEST(FeatureOutput, KeepsControlCharactersFromTheTerminal)
{
    const std::string text =
        to_text(FeatureTable{"A", "B", {line_of("A", FeatureKind::string, std::string("\x1B[2J\n\t\x7F"))}});
    EXPECT_EQ("A: B\n  A  String  RW  \"\\x1B[2J\\n\\t\\x7F\"\n", text);
}

TEST(Assignments, AreANameAndAValue)
{
    EXPECT_THAT(*parse_assignment("Name=a=b "), testing::FieldsAre("Name", "a=b "));
    EXPECT_THAT(*parse_assignment("Name="), testing::FieldsAre("Name", ""));
    for (const char* const word : {"Name", "=1", ""})
        EXPECT_FALSE(parse_assignment(word)) << word;
}

TEST(Assignments, MayBeTwoWordsInsteadOfOne)
{
    EXPECT_EQ("5", parse_assignments({"Width", "5"})->at(0).value);
    EXPECT_EQ("b=c", parse_assignments({"Name", "b=c"})->at(0).value);
    EXPECT_EQ(2U, parse_assignments({"A=1", "B=2"})->size());
    for (const auto& words :
         std::vector<std::vector<std::string>>{{}, {"A"}, {"A", "B", "C"}, {"A=1", "B"}, {"", "1"}})
        EXPECT_FALSE(parse_assignments(words)) << words.size();
}

} // namespace zvgentl::test

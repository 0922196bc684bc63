#include <cstdint>
#include <limits>

#include <gmock/gmock.h>

#include "simulator/config/YamlReader.h"
#include "unit/simulator/configuration_texts.h"

namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using zvsim::in_quotes;
using zvsim::YamlChoices;
using zvsim::YamlDocument;
using zvsim::YamlErrors;
using zvsim::YamlKeys;
using zvsim::YamlMap;
using zvsim::YamlNode;
using zvsim::YamlValue;
using zvsim_test::absolute_path;

const YamlKeys& lamp()
{
    static const YamlKeys keys{"lamp", {"color", "height", "switched_on", "power", "delay", "bulbs", "file"}};
    return keys;
}

/// A text whose root is a lamp.
struct Lamp {
    explicit Lamp(const std::string& text)
        : errors{"lamp.yaml"}, document{text, errors}, map{YamlValue{document.root(), "the file", errors},
                                                           lamp()}
    {
    }

    YamlErrors errors;
    YamlDocument document;
    YamlMap map;
};

/// What reading a text as a document reports.
std::vector<std::string> errors_of(const std::string& text)
{
    YamlErrors errors{"lamp.yaml"};
    const YamlDocument document{text, errors};
    if (!errors.is_empty()) {
        EXPECT_EQ(YamlNode::Kind::nothing, document.root().kind);
    }
    return errors.lines();
}

TEST(YamlReader, ReadsValuesOfAllKinds)
{
    Lamp lamp{"color: 'green'\n"
              "height: 12\n"
              "switched_on: true\n"
              "power: 2.5\n"
              "delay: 20 ms\n"
              "bulbs: [one, two]\n"};
    std::string color;
    uint32_t height = 0;
    bool is_on = false;
    double power = 0;
    std::chrono::milliseconds delay{};
    EXPECT_TRUE(lamp.map.text("color", color, 5));
    EXPECT_TRUE(lamp.map.integer("height", height, 0, 12));
    EXPECT_TRUE(lamp.map.flag("switched_on", is_on));
    EXPECT_TRUE(lamp.map.number("power", power, 0, 2.5));
    EXPECT_TRUE(lamp.map.duration("delay", delay, 0s, 1s));
    EXPECT_THAT(lamp.errors.lines(), IsEmpty());
    EXPECT_EQ("green", color);
    EXPECT_EQ(12U, height);
    EXPECT_TRUE(is_on);
    EXPECT_EQ(2.5, power);
    EXPECT_EQ(20ms, delay);
    const auto bulbs = lamp.map.list("bulbs", 2);
    ASSERT_EQ(2U, bulbs.size());
    EXPECT_EQ("two", bulbs[1].raw());
    EXPECT_EQ(6, bulbs[1].line());
}

TEST(YamlReader, AbsentKeysLeaveTheirTargetsAlone)
{
    Lamp lamp{"{}"};
    std::string color{"blue"};
    int height = 3;
    EXPECT_FALSE(lamp.map.text("color", color, 5));
    EXPECT_FALSE(lamp.map.integer("height", height, 0, 12));
    EXPECT_THAT(lamp.map.list("bulbs", 2), IsEmpty());
    EXPECT_THAT(lamp.errors.lines(), IsEmpty());
    EXPECT_EQ("blue", color);
    EXPECT_EQ(3, height);
}

TEST(YamlReader, UnknownKeyIsReportedWithTheNearestOne)
{
    const Lamp lamp{"color: red\nhieght: 12\n"};
    EXPECT_THAT(lamp.errors.lines(),
                ElementsAre("lamp.yaml:2: \"hieght\" is no key of a lamp (meant is height?); allowed: color, "
                            "height, switched_on, power, delay, bulbs, file"));
}

TEST(YamlReader, UnknownKeyThatIsLikeNoneGetsNoHint)
{
    const Lamp lamp{"temperature: 3000\n"};
    EXPECT_THAT(lamp.errors.lines(),
                ElementsAre(StartsWith("lamp.yaml:1: \"temperature\" is no key of a lamp; allowed:")));
}

TEST(YamlReader, ReadingGoesOnAfterAnErrorAndReportsAll)
{
    Lamp lamp{"height: high\npower: [1]\nswitched_on: yes\ncolor:\n"};
    int height = 5;
    double power = 1;
    bool is_on = false;
    std::string color;
    EXPECT_FALSE(lamp.map.integer("height", height, 1, 9));
    EXPECT_FALSE(lamp.map.number("power", power, 0.5, 100));
    EXPECT_FALSE(lamp.map.flag("switched_on", is_on));
    EXPECT_FALSE(lamp.map.text("color", color, 5, 1));
    EXPECT_THAT(lamp.errors.lines(),
                ElementsAre("lamp.yaml:1: height is \"high\"; allowed: a whole number from 1 to 9",
                            "lamp.yaml:2: power is a list; allowed: a number from 0.5 to 100",
                            "lamp.yaml:3: switched_on is \"yes\"; allowed: true, false",
                            "lamp.yaml:4: color is empty; allowed: 1 to 5 printable ASCII characters"));
    EXPECT_EQ(5, height);
}

TEST(YamlReader, IntegersAreDecimalOrHexadecimalAndInTheirRange)
{
    const std::vector<std::pair<const char*, int64_t>> accepted{
        {"-5", -5},
        {"0", 0},
        {"0x10", 16},
        {"0xff", 255},
        {"9223372036854775807", std::numeric_limits<int64_t>::max()},
    };
    for (const auto& [text, expected] : accepted) {
        Lamp lamp{std::string{"height: "} + text};
        int64_t height = 0;
        EXPECT_TRUE(lamp.map.integer("height", height, -5, std::numeric_limits<int64_t>::max())) << text;
        EXPECT_EQ(expected, height);
    }
    for (const char* const text :
         {"-6", "1.0", "'1'", "1 ", "0x", "0x-1", "1e3", "9223372036854775808", "+1", "~", "{}"}) {
        Lamp lamp{std::string{"height: "} + text};
        int64_t height = 77;
        const bool is_trimmed = std::string{text} == "1 ";
        EXPECT_EQ(is_trimmed, lamp.map.integer("height", height, -5, std::numeric_limits<int64_t>::max()))
            << text;
        EXPECT_EQ(is_trimmed ? 1 : 77, height);
    }
}

TEST(YamlReader, NumbersAreFiniteAndInTheirRange)
{
    for (const char* const text : {"0.001", "5", "1e2", "100"}) {
        Lamp lamp{std::string{"power: "} + text};
        double power = 0;
        EXPECT_TRUE(lamp.map.number("power", power, 0.001, 100)) << text;
    }
    for (const char* const text :
         {"0.0009", "100.1", "nan", ".nan", "inf", "-1", "'5'", "5 W", "1e999", "1,5"}) {
        Lamp lamp{std::string{"power: "} + text};
        double power = 7;
        EXPECT_FALSE(lamp.map.number("power", power, 0.001, 100)) << text;
        EXPECT_EQ(7, power);
        EXPECT_THAT(lamp.errors.lines(), ElementsAre(HasSubstr("allowed: a number from 0.001 to 100")));
    }
}

TEST(YamlReader, DurationsHaveAUnit)
{
    const std::vector<std::pair<const char*, std::chrono::nanoseconds>> accepted{
        {"40 ns", 40ns},   {"10us", 10us}, {"1.5 ms", 1500us}, {"2 s", 2s},
        {"'3 min'", 3min}, {"0 s", 0s},    {"-1 ms", -1ms},
    };
    for (const auto& [text, expected] : accepted) {
        Lamp lamp{std::string{"delay: "} + text};
        std::chrono::nanoseconds delay{77};
        EXPECT_TRUE(lamp.map.duration("delay", delay, -1ms, 3min)) << text;
        EXPECT_EQ(expected, delay);
    }
    for (const char* const text :
         {"20", "ms", "1 h", "1 ms ms", "1e3 ms", "1.1.1 s", "-2 ms", "181 s", "~", "[1 s]"}) {
        Lamp lamp{std::string{"delay: "} + text};
        std::chrono::nanoseconds delay{77};
        EXPECT_FALSE(lamp.map.duration("delay", delay, -1ms, 3min)) << text;
        EXPECT_EQ(77ns, delay);
        EXPECT_THAT(
            lamp.errors.lines(),
            ElementsAre(HasSubstr("allowed: -1 ms to 180 s, with one of the units ns, us, ms, s, min")));
    }
}

TEST(YamlReader, ChoiceTellsTheWordsAndTheNearestOne)
{
    const YamlChoices<int> colors{{"red", 1}, {"green", 2}};
    int color = 0;
    EXPECT_TRUE(Lamp{"color: green"}.map.choice("color", color, colors));
    EXPECT_EQ(2, color);
    Lamp wrong{"color: Red"};
    EXPECT_FALSE(wrong.map.choice("color", color, colors));
    EXPECT_EQ(2, color);
    EXPECT_THAT(wrong.errors.lines(),
                ElementsAre("lamp.yaml:1: color is \"Red\" (meant is red?); allowed: red, green"));
}

TEST(YamlReader, TextsAreAsciiAndPathsAreAnyBytes)
{
    const std::string file = absolute_path("/b\xC3\xA4ume/a b");
    Lamp lamp{"color: gr\xC3\xBCn\nfile: " + file + "\n"};
    std::string color;
    EXPECT_FALSE(lamp.map.text("color", color, 20));
    EXPECT_THAT(
        lamp.errors.lines(),
        ElementsAre("lamp.yaml:1: color is \"gr\\xC3\\xBCn\"; allowed: 0 to 20 printable ASCII characters"));
    EXPECT_EQ(file, lamp.map.find("file")->path("a lamp").value_or("").u8string());
}

TEST(YamlReader, PathsHaveOneLineAndALength)
{
    for (const char* const text : {"file: \"/a\\nb\"", "file: ''", "file: [a]", "file: /longer"}) {
        Lamp lamp{text};
        EXPECT_FALSE(lamp.map.find("file")->path("a lamp", 6)) << text;
        EXPECT_THAT(lamp.errors.lines(), ElementsAre(HasSubstr("allowed: a path of up to 6 bytes")));
    }
}

TEST(YamlReader, PathsAreAbsolute)
{
    for (const char* const text : {"file: a", "file: ./a", "file: ~/a"}) {
        Lamp lamp{text};
        EXPECT_FALSE(lamp.map.find("file")->path("a lamp")) << text;
        EXPECT_THAT(lamp.errors.lines(), ElementsAre(HasSubstr("allowed: the absolute path of a lamp")));
    }
}

#ifdef _WIN32
TEST(YamlReader, PathsAreLettersWhereNamesAre)
{
    Lamp lamp{"file: C:/\xFF\n"};
    EXPECT_FALSE(lamp.map.find("file")->path("a lamp"));
    EXPECT_THAT(lamp.errors.lines(), ElementsAre(HasSubstr("allowed: the absolute path of a lamp")));
}
#endif

TEST(YamlReader, ListsHaveTheirLength)
{
    for (const char* const text : {"bulbs: [a]", "bulbs: [a, b, c, d]", "bulbs: a", "bulbs:"}) {
        Lamp lamp{text};
        EXPECT_THAT(lamp.map.list("bulbs", 3, 2), IsEmpty());
        EXPECT_THAT(lamp.errors.lines(), ElementsAre(HasSubstr("allowed: a list with 2 to 3 entries")))
            << text;
    }
    EXPECT_EQ(3U, Lamp{"bulbs: [a, b, c]"}.map.list("bulbs", 3, 2).size());
}

TEST(YamlReader, WhatIsNoSectionIsReportedOnceAndHasNoKeys)
{
    Lamp lamp{"- color\n"};
    EXPECT_FALSE(lamp.map.has("color"));
    EXPECT_THAT(lamp.errors.lines(),
                ElementsAre(StartsWith(
                    "lamp.yaml:1: the file is a list; allowed: a section with the keys of a lamp")));
}

TEST(YamlReader, ErrorsBeyondTheMostAreCounted)
{
    YamlErrors errors{"many.yaml"};
    for (int line = 1; line <= 25; ++line)
        errors.add(line, "wrong");
    const auto lines = errors.lines();
    ASSERT_EQ(YamlErrors::most + 1, lines.size());
    EXPECT_EQ("many.yaml:20: wrong", lines[19]);
    EXPECT_EQ("many.yaml: 5 more errors", lines[20]);
    EXPECT_EQ(25U, errors.count());
}

TEST(YamlReader, QuotedTextsAreShortAndPrintable)
{
    EXPECT_EQ("\"a\\x0Ab\\xFF\"", in_quotes("a\nb\xFF"));
    EXPECT_EQ("\"" + std::string(80, 'a') + "...\"", in_quotes(std::string(200, 'a')));
}

TEST(YamlDocument, EmptyTextsHaveAnEmptyRoot)
{
    for (const char* const text : {"", "\n\n", "# only a comment\n", "---\n"}) {
        YamlErrors errors{"lamp.yaml"};
        const YamlDocument document{text, errors};
        EXPECT_EQ(YamlNode::Kind::nothing, document.root().kind);
        EXPECT_TRUE(errors.is_empty());
    }
}

TEST(YamlDocument, SyntaxErrorsTellTheLine)
{
    for (const char* const text :
         {"a: 1\nb: [1, 2\n", "a: 1\n\tb: 2\n", "a: 1\n]\n", "a: 1\nb: *c\n", "a: 1\nb: @\n"}) {
        EXPECT_THAT(errors_of(text),
                    ElementsAre(AllOf(HasSubstr("lamp.yaml:"), HasSubstr("this is no YAML: "))))
            << text;
    }
    EXPECT_THAT(errors_of("a: 1\nb: *c\n"), ElementsAre(StartsWith("lamp.yaml:2: ")));
}

TEST(YamlDocument, KeysStandOnce)
{
    EXPECT_THAT(errors_of("a: 1\nb: 2\na: 3\n"),
                ElementsAre("lamp.yaml:3: the key \"a\" stands in line 1 already; allowed: each key once"));
}

TEST(YamlDocument, KeysAreTexts)
{
    EXPECT_THAT(errors_of("? [a, b]\n: 1\n"), ElementsAre(HasSubstr("a key is no text")));
    EXPECT_THAT(errors_of("? \n: 1\n"), ElementsAre(HasSubstr("a key is no text")));
}

TEST(YamlDocument, HasNoSecondDocument)
{
    EXPECT_THAT(errors_of("a: 1\n---\nb: 2\n"), ElementsAre(HasSubstr("a second document begins here")));
}

TEST(YamlDocument, HasNoTags)
{
    EXPECT_THAT(errors_of("a: !!int 1\n"), ElementsAre(StartsWith("lamp.yaml:1: a value has the tag")));
}

TEST(YamlDocument, AliasesStandForTheirAnchors)
{
    YamlErrors errors{"lamp.yaml"};
    const YamlDocument document{"a: &x {b: 1}\nc: *x\n", errors};
    EXPECT_THAT(errors.lines(), IsEmpty());
    ASSERT_EQ(2U, document.root().entries.size());
    EXPECT_EQ(document.root().entries[0].second, document.root().entries[1].second);
}

TEST(YamlDocument, AliasOfWhatItIsInIsAnError)
{
    EXPECT_THAT(errors_of("a: &x [1, *x]\n"),
                ElementsAre("lamp.yaml:1: a value contains itself; allowed: an alias of "
                            "something that is complete"));
}

TEST(YamlDocument, AliasesThatMultiplyAreAnError)
{
    std::string text = "a0: &a0 [1, 1, 1, 1, 1, 1, 1, 1, 1, 1]\n";
    for (int level = 1; level < 30; ++level) {
        const std::string before = "*a" + std::to_string(level - 1);
        text += "a" + std::to_string(level) + ": &a" + std::to_string(level) + " [" + before;
        for (int copy = 0; copy < 9; ++copy)
            text.append(", ").append(before);
        text += "]\n";
    }
    EXPECT_THAT(errors_of(text),
                ElementsAre(HasSubstr("too many values; allowed: up to 100000, aliases followed")));
}

TEST(YamlDocument, DeepNestingIsAnError)
{
    const size_t limit = YamlDocument::deepest;
    EXPECT_THAT(errors_of(std::string(limit, '[') + std::string(limit, ']')), IsEmpty());
    EXPECT_THAT(errors_of(std::string(limit + 1, '[') + std::string(limit + 1, ']')),
                ElementsAre(HasSubstr("nested too deep; allowed: up to 32 levels")));
    for (const char* const opener : {"[", "{", "{a: ", "- ", "? ", "[\n"}) {
        std::string text;
        while (text.size() < YamlDocument::largest_text - 10)
            text += opener;
        EXPECT_THAT(errors_of(text), ElementsAre(HasSubstr("lamp.yaml:"))) << opener;
    }
}

TEST(YamlDocument, ManyValuesAreAnError)
{
    std::string text = "[";
    while (text.size() < YamlDocument::largest_text - 10)
        text += "1,";
    EXPECT_THAT(errors_of(text + "1]"), ElementsAre(HasSubstr("too many values")));
}

TEST(YamlDocument, ManyKeysAreAnError)
{
    std::string text;
    for (int key = 0; key < 200; ++key)
        text += "k" + std::to_string(key) + ": 1\n";
    EXPECT_THAT(errors_of(text),
                ElementsAre("lamp.yaml:101: a section has too many keys; allowed: up to 100"));
}

TEST(YamlDocument, TextsBeyondTheLargestAreAnError)
{
    std::string text = "a: 1\n#";
    text.resize(YamlDocument::largest_text, 'x');
    EXPECT_THAT(errors_of(text), IsEmpty());
    EXPECT_THAT(errors_of(text + "x"),
                ElementsAre("lamp.yaml: the file has more than 1 MiB; allowed: up to 1 MiB"));
}

TEST(YamlDocument, ControlCharactersAreAnError)
{
    for (const char code : {'\0', '\x04', '\x1B', '\x7F'}) {
        EXPECT_THAT(errors_of(std::string{"a: 1\nb: "} + code + "\n"),
                    ElementsAre("lamp.yaml:2: character " + std::to_string(int{code}) +
                                " belongs to no text; allowed: YAML in UTF-8"));
    }
}

TEST(YamlDocument, GarbageOfAnyKindIsReportedOrRead)
{
    uint32_t state = 1;
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (int position = 0; position < 60; ++position) {
            state = state * 1664525U + 1013904223U;
            constexpr std::string_view characters{" \n\t:-?[]{},#&*!|>'\"%@`~ab1\xC3\xFF\xFE.<"};
            text += characters[(state >> 16U) % characters.size()];
        }
        YamlErrors errors{"garbage"};
        const YamlDocument document{text, errors};
        EXPECT_LE(errors.count(), 1U);
    }
}

} // namespace

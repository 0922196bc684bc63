#include <cstdint>
#include <limits>

#include "simulator/config/YamlReader.h"
#include "unit/simulator/configuration_texts.h"

namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;
using namespace zvsim;
using namespace zvsim_test;

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

    std::string reported() const { return joined(errors.lines()); }

    YamlErrors errors;
    YamlDocument document;
    YamlMap map;
};

/// What reading a text as a document reports.
std::string errors_of(const std::string& text)
{
    YamlErrors errors{"lamp.yaml"};
    const YamlDocument document{text, errors};
    if (!errors.is_empty()) {
        EXPECT_EQ(YamlNode::Kind::nothing, document.root().kind);
    }
    return joined(errors.lines());
}

TEST(YamlReader, ReadsPathsAndListsWithTheirLines)
{
    const std::string path = absolute_path("/b\xC3\xA4ume/a b");
    Lamp lamp{"file: " + path + "\nbulbs: [one, two]\n"};
    EXPECT_EQ(path, lamp.map.find("file")->path("a lamp").value_or("").u8string());
    const auto bulbs = lamp.map.list("bulbs", 2);
    ASSERT_EQ(2U, bulbs.size());
    EXPECT_EQ("two", bulbs[1].raw());
    EXPECT_EQ(2, bulbs[1].line());
    EXPECT_EQ("", lamp.reported());
}

TEST(YamlReader, UnknownKeysThatResembleNoneAreReportedWithAllKeys)
{
    EXPECT_THAT(Lamp{"temperature: 3000\n"}.reported(),
                Like("lamp.yaml:1: unknown lamp key \"temperature\"; allowed: color, ~"));
}

/// Reads a value in spellings that it takes, and in others, which leave the target alone.
template <class Value, class Read>
void expect_readings(const std::string& key, const Read& read,
                     const std::vector<std::pair<const char*, Value>>& taken,
                     const std::vector<const char*>& refused, const std::string& allowed)
{
    for (const auto& [text, expected] : taken) {
        Value value{77};
        Lamp lamp{key + ": " + text};
        EXPECT_TRUE(read(lamp.map, value)) << text;
        EXPECT_EQ(expected, value) << text;
    }
    for (const char* const text : refused) {
        Value value{77};
        Lamp lamp{key + ": " + text};
        EXPECT_FALSE(read(lamp.map, value)) << text;
        EXPECT_EQ(Value{77}, value) << text;
        EXPECT_THAT(lamp.reported(), Like("~allowed: " + allowed));
    }
}

TEST(YamlReader, IntegersAreDecimalOrHexadecimalAndInTheirRange)
{
    constexpr int64_t most = std::numeric_limits<int64_t>::max();
    expect_readings<int64_t>(
        "height", [](YamlMap& map, int64_t& value) { return map.integer("height", value, -5, most); },
        {{"-5", -5}, {"0", 0}, {"1 ", 1}, {"0x10", 16}, {"0xff", 255}, {"9223372036854775807", most}},
        {"-6", "1.0", "'1'", "0x", "0x-1", "1e3", "9223372036854775808", "+1", "~", "{}"},
        "a whole number from -5 to 9223372036854775807");
}

TEST(YamlReader, NumbersAreFiniteAndInTheirRange)
{
    expect_readings<double>(
        "power", [](YamlMap& map, double& value) { return map.number("power", value, 0.001, 100); },
        {{"0.001", 0.001}, {"5", 5}, {"1e2", 100}, {"100", 100}},
        {"0.0009", "100.1", "nan", ".nan", "inf", "-1", "'5'", "5 W", "1e999", "1,5"},
        "a number from 0.001 to 100");
}

TEST(YamlReader, DurationsHaveAUnit)
{
    expect_readings<std::chrono::nanoseconds>(
        "delay",
        [](YamlMap& map, std::chrono::nanoseconds& value) {
            return map.duration("delay", value, -1ms, 3min);
        },
        {{"40 ns", 40ns},
         {"10us", 10us},
         {"1.5 ms", 1500us},
         {"2 s", 2s},
         {"0 s", 0s},
         {"'3 min'", 3min},
         {"-1 ms", -1ms}},
        {"20", "ms", "1 h", "1 ms ms", "1e3 ms", "1.1.1 s", "-2 ms", "181 s", "~", "[1 s]"},
        "-1 ms to 180 s, with one of the units ns, us, ms, s, min");
}

TEST(YamlReader, PathsHaveOneLineAndALengthAndAreAbsolute)
{
    for (const char* const text : {"file: \"/a\\nb\"", "file: ''", "file: [a]", "file: /longer"}) {
        Lamp lamp{text};
        EXPECT_FALSE(lamp.map.find("file")->path("a lamp", 6)) << text;
        EXPECT_THAT(lamp.reported(), Like("~allowed: a path of up to 6 bytes"));
    }
    for (const char* const text : {
             "file: a", "file: ./a", "file: ~/a",
#ifdef _WIN32
             "file: C:/\xFF", // not a text, as names are there
#endif
         }) {
        Lamp lamp{text};
        EXPECT_FALSE(lamp.map.find("file")->path("a lamp")) << text;
        EXPECT_THAT(lamp.reported(), Like("~allowed: the absolute path of a lamp"));
    }
}

TEST(YamlReader, ListsHaveTheirLength)
{
    for (const char* const text : {"bulbs: [a]", "bulbs: [a, b, c, d]", "bulbs: a", "bulbs:"}) {
        Lamp lamp{text};
        EXPECT_THAT(lamp.map.list("bulbs", 3, 2), IsEmpty());
        EXPECT_THAT(lamp.reported(), Like("~allowed: a list with 2 to 3 entries")) << text;
    }
    for (const char* const text : {"bulbs: [a, b]", "bulbs: [a, b, c]"})
        EXPECT_FALSE(Lamp{text}.map.list("bulbs", 3, 2).empty());
}

TEST(YamlReader, WhatIsNotASectionIsReportedOnceAndHasNoKeys)
{
    Lamp lamp{"- color\n"};
    EXPECT_FALSE(lamp.map.has("color"));
    EXPECT_THAT(lamp.reported(),
                Like("lamp.yaml:1: the file is a list; allowed: a section with lamp keys: color, ~"));
}

TEST(YamlReader, QuotedTextsAreShortAndPrintable)
{
    EXPECT_EQ("\"a\\x0Ab\\xFF\"", zvsim::in_quotes("a\nb\xFF"));
    EXPECT_EQ("\"" + std::string(80, 'a') + "...\"", zvsim::in_quotes(std::string(200, 'a')));
}

/// Many lists of ten times the one before.
std::string multiplied_aliases()
{
    std::string text = "a0: &a0 [1, 1, 1, 1, 1, 1, 1, 1, 1, 1]\n";
    for (int level = 1; level < 30; ++level) {
        const std::string before = "*a" + std::to_string(level - 1);
        text += "a" + std::to_string(level) + ": &a" + std::to_string(level) + " [" + before;
        for (int copy = 0; copy < 9; ++copy)
            text.append(", ").append(before);
        text += "]\n";
    }
    return text;
}

std::string keys(int count)
{
    std::string text;
    for (int key = 0; key < count; ++key)
        text += "k" + std::to_string(key) + ": 1\n";
    return text;
}

/// As many copies as a file has room for.
std::string filled_with(const std::string& part)
{
    std::string text;
    while (text.size() < YamlDocument::largest_text - 10)
        text += part;
    return text;
}

TEST(YamlDocument, RefusalsSayWhereAndWhy)
{
    const std::string deep(YamlDocument::deepest, '[');
    std::string largest = "a: 1\n#";
    largest.resize(YamlDocument::largest_text, 'x');
    const std::pair<std::string, const char*> refusals[] = {
        {"", ""},
        {"# only a comment\n", ""},
        {"---\n", ""},
        {"a: 1\nb: [1, 2\n", "lamp.yaml:~: not valid YAML: ~"},
        {"a: 1\n\tb: 2\n", "lamp.yaml:~: not valid YAML: ~"},
        {"a: 1\n]\n", "lamp.yaml:~: not valid YAML: ~"},
        {"a: 1\nb: *c\n", "lamp.yaml:2: not valid YAML: ~"},
        {"a: 1\nb: @\n", "lamp.yaml:~: not valid YAML: ~"},
        {"a: 1\nb: 2\na: 3\n",
         "lamp.yaml:3: the key \"a\" is already used on line 1; allowed: each key once"},
        {"? [a, b]\n: 1\n", "lamp.yaml:~: a key is not a text; allowed: keys that are single words"},
        {"? \n: 1\n", "lamp.yaml:~: a key is not a text; allowed: keys that are single words"},
        {"a: 1\n---\nb: 2\n", "lamp.yaml:~: a second document begins here; allowed: one document per file"},
        {"a: !!int 1\n", "lamp.yaml:1: a value has the tag ~; allowed: values without tags"},
        {"a: &x [1, *x]\n", "lamp.yaml:1: a value contains itself; allowed: an alias of a complete value"},
        {multiplied_aliases(),
         "lamp.yaml:~: there are too many values; allowed: up to 100000, with aliases expanded"},
        {filled_with("1,").insert(0, "[") + "1]", "lamp.yaml:~: there are too many values~"},
        {deep + std::string(deep.size(), ']'), ""},
        {"[" + deep + std::string(deep.size() + 1, ']'),
         "lamp.yaml:~: values are nested too deeply; allowed: up to 32 levels"},
        {keys(100), ""},
        {keys(200), "lamp.yaml:101: a section has too many keys; allowed: up to 100"},
        {largest, ""},
        {largest + "x", "lamp.yaml: the file is larger than 1 MiB; allowed: up to 1 MiB"},
        {{"a: 1\nb: \0\n", 10}, "lamp.yaml:2: character 0 is not text; allowed: YAML in UTF-8"},
        {"a: 1\nb: \x04\n", "lamp.yaml:2: character 4 is not text; allowed: YAML in UTF-8"},
        {"a: 1\nb: \x1B\n", "lamp.yaml:2: character 27 is not text; allowed: YAML in UTF-8"},
        {"a: 1\nb: \x7F\n", "lamp.yaml:2: character 127 is not text; allowed: YAML in UTF-8"},
    };
    for (const auto& [text, errors] : refusals)
        EXPECT_THAT(errors_of(text), Like(errors)) << text.substr(0, 100);
}

TEST(YamlDocument, AliasesStandForTheirAnchors)
{
    YamlErrors errors{"lamp.yaml"};
    const YamlDocument document{"a: &x {b: 1}\nc: *x\n", errors};
    EXPECT_THAT(errors.lines(), IsEmpty());
    ASSERT_EQ(2U, document.root().entries.size());
    EXPECT_EQ(document.root().entries[0].second, document.root().entries[1].second);
}

TEST(YamlDocument, EndlessNestingIsAnError)
{
    for (const char* const opener : {"[", "{", "{a: ", "- ", "? ", "[\n"})
        EXPECT_THAT(errors_of(filled_with(opener)), Like("lamp.yaml:~")) << opener;
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

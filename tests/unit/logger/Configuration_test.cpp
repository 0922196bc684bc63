#include <optional>
#include <string>

#include <gmock/gmock.h>

#include "logger/Configuration.h"
#include "unit/logger/Sandbox.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using zvlog::Configuration;
using zvlog::Problems;

namespace {

struct Value {
    const char* name;
    const char* text;
    const char* key;
    std::optional<std::string> value;
};

class ConfiguredValue : public ::testing::TestWithParam<Value> {};

TEST_P(ConfiguredValue, HasItsReferencesReplaced)
{
    Environment environment;
    environment.set("ZV_TEST_FOLDER", "/somewhere");
    Problems problems;
    EXPECT_EQ(GetParam().value, Configuration(GetParam().text, problems).value(GetParam().key));
    EXPECT_THAT(problems, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    All, ConfiguredValue,
    ::testing::Values(Value{"TheLastOneCounts", "a = 1\na = 2", "a", "2"},
                      Value{"Missing", "a = 1\na = 2", "b", std::nullopt},
                      Value{"FromOtherKeys", "folder = /var/log\npath = ${folder}/a-${name}.log\nname = x",
                            "path", "/var/log/a-x.log"},
                      Value{"FromTheEnvironment", "path = ${system.env.ZV_TEST_FOLDER}/x", "path",
                            "/somewhere/x"},
                      Value{"ReferenceToNothing", "a = ${b} ${", "a", "${b} ${"},
                      Value{"ReferenceToItself", "c = ${c}", "c", "${c}"}),
    [](const auto& test) { return test.param.name; });

TEST(Configuration, NamesTheChildrenOfAKeyOnce)
{
    Problems problems;
    const Configuration configuration("a.x = 1\na.y = 2\na.x.z = 3\na.x-y = 4\nab.q = 5\na = 6", problems);
    EXPECT_THAT(configuration.children("a"), ElementsAre("x", "x-y", "y"));
    EXPECT_THAT(configuration.children("c"), IsEmpty());
}

TEST(Configuration, ReportsLinesThatAreNotProperties)
{
    Problems problems;
    const Configuration configuration("a = 1\nnonsense\n", problems);
    EXPECT_THAT(problems, ElementsAre("'nonsense' is not a property"));
}

/// Keys of which each refers to the next one so many times.
std::string chain_of(int keys, int references)
{
    std::string text;
    for (int key = 0; key < keys; ++key) {
        text += "a" + std::to_string(key) + " = ";
        for (int reference = 0; reference < references; ++reference)
            text += "${a" + std::to_string(key + 1) + "}";
        text += "\n";
    }
    return text + "a" + std::to_string(keys) + " = text\n";
}

TEST(Configuration, WhoseReferencesMultiplyIsNotUsedAtAll)
{
    Problems problems;
    const Configuration configuration(chain_of(8, 10), problems);
    EXPECT_THAT(problems, ElementsAre(HasSubstr("more than 10000")));
    EXPECT_EQ(std::nullopt, configuration.value("a8"));
    EXPECT_EQ(std::nullopt, configuration.value("a0"));
}

TEST(Configuration, WhoseTextGrowsBeyondMeasureIsNotUsedAtAll)
{
    Problems problems;
    std::string text = "long = " + std::string(30000, 'x') + "\nlonger = ";
    for (int reference = 0; reference < 40; ++reference)
        text += "${long}";
    EXPECT_EQ(std::nullopt, Configuration(text, problems).value("long"));
    EXPECT_THAT(problems, ElementsAre(HasSubstr("a million characters")));
}

TEST(Configuration, MayReferOftenToWhatIsShort)
{
    Problems problems;
    EXPECT_EQ(1000u * 4, Configuration(chain_of(3, 10), problems).value("a0").value_or("").size());
    EXPECT_THAT(problems, IsEmpty());
}

} // namespace

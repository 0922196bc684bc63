#include <string>

#include <gmock/gmock.h>

#include "logger/Configuration.h"
#include "unit/logger/Sandbox.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;
using zvlog::Configuration;
using zvlog::Problems;

namespace {

TEST(Configuration, GivesTheLastValueOfAKey)
{
    Problems problems;
    const Configuration configuration("a = 1\na = 2", problems);
    EXPECT_THAT(configuration.value("a"), Optional(std::string("2")));
    EXPECT_EQ(std::nullopt, configuration.value("b"));
    EXPECT_THAT(problems, IsEmpty());
}

TEST(Configuration, NamesTheChildrenOfAKeyOnce)
{
    Problems problems;
    const Configuration configuration("a.x = 1\na.y = 2\na.x.z = 3\na.x-y = 4\nab.q = 5\na = 6", problems);
    EXPECT_THAT(configuration.children("a"), ElementsAre("x", "x-y", "y"));
    EXPECT_THAT(configuration.children("c"), IsEmpty());
}

TEST(Configuration, ReplacesReferencesToOtherKeys)
{
    Problems problems;
    const Configuration configuration("folder = /var/log\npath = ${folder}/a-${name}.log\nname = x",
                                      problems);
    EXPECT_THAT(configuration.value("path"), Optional(std::string("/var/log/a-x.log")));
}

TEST(Configuration, ReplacesReferencesToTheEnvironment)
{
    Environment environment;
    environment.set("ZV_TEST_FOLDER", "/somewhere");
    Problems problems;
    const Configuration configuration("path = ${system.env.ZV_TEST_FOLDER}/x", problems);
    EXPECT_THAT(configuration.value("path"), Optional(std::string("/somewhere/x")));
}

TEST(Configuration, LeavesReferencesThatLeadNowhere)
{
    Problems problems;
    const Configuration configuration("a = ${b} ${\nc = ${c}", problems);
    EXPECT_THAT(configuration.value("a"), Optional(std::string("${b} ${")));
    EXPECT_THAT(configuration.value("c"), Optional(std::string("${c}")));
}

TEST(Configuration, ReportsLinesThatAreNoProperties)
{
    Problems problems;
    const Configuration configuration("a = 1\nnonsense\n", problems);
    EXPECT_THAT(problems, ElementsAre("'nonsense' is not a property"));
}

} // namespace

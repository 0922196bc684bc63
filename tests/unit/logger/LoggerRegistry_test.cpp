#include <memory>
#include <regex>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "unit/logger/ConfiguredLoggers.h"

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using zvlog::LoggerRegistry;

namespace {

using Registry = ConfiguredLoggers;

class UnconfiguredRegistry : public ConfiguredLoggers {
protected:
    UnconfiguredRegistry()
    {
        m_places.chosen.clear();
        configure_nothing();
    }
};

TEST_F(UnconfiguredRegistry, WritesAllLinesToTheDefaultLogWithTimeProcessAndPriority)
{
    EXPECT_EQ("A.cpp", logger("A.cpp").name());
    EXPECT_FALSE(is_there(m_folder / "logs"));
    write("A.cpp", "thr00000001:A::{f}[1]: text", Poco::Message::PRIO_WARNING);
    write("B.cpp", "two");
    const auto lines = lines_of(default_log());
    ASSERT_THAT(lines, ElementsAre(EndsWith("text"), EndsWith("two")));
    const std::regex whole_line("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\\.[0-9]{3}Z [0-9]+ Warning "
                                "thr00000001:A::\\{f\\}\\[1\\]: text");
    EXPECT_TRUE(std::regex_match(lines[0], whole_line)) << lines[0];
}

TEST_F(UnconfiguredRegistry, GivesTheSameLoggerForTheSameNameWithTheLevelOfTheFirstCall)
{
    ZVPocoLogger* const first = m_registry->logger("A.cpp", 7);
    EXPECT_EQ(7, first->getLevel());
    EXPECT_EQ(first, m_registry->logger("A.cpp", 3));
    EXPECT_EQ(7, first->getLevel());
    EXPECT_NE(first, &logger("B.cpp"));
    EXPECT_NE(first, &logger("A"));
}

TEST_F(UnconfiguredRegistry, TakesALevelBeyondTraceAsTraceAndZeroAsOff)
{
    EXPECT_EQ(Poco::Message::PRIO_TRACE, m_registry->logger("A", 4000000000u)->getLevel());
    EXPECT_EQ(0, m_registry->logger("B", 0)->getLevel());
}

TEST(UserWithoutHome, LogsNowhereWithoutTrouble)
{
    LoggerRegistry registry({"", "", "", ""});
    ZVPocoLogger* const logger = registry.logger("A.cpp", zvlog::configured_level);
    ASSERT_NE(nullptr, logger);
    logger->getChannel()->log(Poco::Message("A.cpp", "text", Poco::Message::PRIO_ERROR));
}

TEST_F(UnconfiguredRegistry, AFolderThatCannotBeMadeLosesLinesOnly)
{
    write_file(m_folder / "file", "");
    m_places.log_folder = m_folder / "file/logs";
    configure_nothing();
    for (int line = 0; line < 3; ++line)
        write("A.cpp", "text");
    EXPECT_EQ("", content_of(m_folder / "file"));
}

/// The level of a logger under a configuration that leaves no warning.
struct Level {
    const char* name;
    const char* configuration;
    const char* logger;
    int level;
};

class ConfiguredLevel : public ConfiguredLoggers, public ::testing::WithParamInterface<Level> {};

TEST_P(ConfiguredLevel, IsTheLoggers)
{
    configure(GetParam().configuration);
    EXPECT_EQ(GetParam().level, logger(GetParam().logger).getLevel());
    m_registry.reset();
    EXPECT_FALSE(is_there(default_log()));
}

constexpr const char* with_and_without_extension =
    "logging.loggers.a.name = StreamModule\nlogging.loggers.a.level = trace\n"
    "logging.loggers.b.name = BufferModule\nlogging.loggers.b.level = trace\n"
    "logging.loggers.c.name = BufferModule.cpp\nlogging.loggers.c.level = fatal\n";

INSTANTIATE_TEST_SUITE_P(
    All, ConfiguredLevel,
    ::testing::Values(Level{"Nothing", "", "A.cpp", 4},
                      Level{"TheRootIsForAllOthers", "logging.loggers.root.level = debug\n", "A.cpp", 7},
                      Level{"ASectionWithoutANameIsTheRoot",
                            "logging.loggers.x.name =\nlogging.loggers.x.level = notice\n", "A.cpp", 5},
                      Level{"TheExtensionMayBeMissing", with_and_without_extension, "StreamModule.cpp", 8},
                      Level{"TheExtensionComesFirst", with_and_without_extension, "BufferModule.cpp", 1},
                      Level{"AnotherLogger", with_and_without_extension, "SystemModule.cpp", 4}),
    [](const auto& test) { return test.param.name; });

TEST_F(Registry, KnowsEveryNameOfALevelAndItsNumber)
{
    const char* const names[] = {"none",   "fatal",       "critical", "error", "warning",
                                 "notice", "information", "Debug",    "TRACE"};
    for (int level = 0; level < 9; ++level) {
        for (const std::string& text : {std::string(names[level]), std::to_string(level)}) {
            configure("logging.loggers.root.level = " + text + "\n");
            EXPECT_EQ(level, logger("A").getLevel()) << text;
        }
    }
}

TEST_F(Registry, ALoggerInheritsWhatIsNotConfiguredForIt)
{
    configure("logging.loggers.root.channel.class = FileChannel\n"
              "logging.loggers.root.channel.path = root.log\n"
              "logging.loggers.a.name = A\nlogging.loggers.a.level = trace\n");
    write("A.cpp", "text");
    EXPECT_EQ(Poco::Message::PRIO_TRACE, logger("A.cpp").getLevel());
    EXPECT_EQ("text\n", content_of(m_folder / "logs/root.log"));
}

TEST_F(Registry, ReadsTheConfigurationOnceAndPrefersTheLevelOfTheCall)
{
    configure("logging.loggers.root.level = debug\n");
    write_file(m_places.chosen, "logging.loggers.root.level = error\n");
    EXPECT_EQ(Poco::Message::PRIO_DEBUG, logger("A.cpp").getLevel());
    EXPECT_EQ(Poco::Message::PRIO_FATAL, m_registry->logger("B.cpp", 1)->getLevel());
}

TEST_F(Registry, PrefersTheChosenFileThenTheUsersThenTheSystems)
{
    m_places.user = m_folder / "user";
    m_places.system = m_folder / "system";
    write_file(m_places.system, "logging.loggers.root.level = fatal\n");
    m_places.chosen.clear();
    configure_nothing();
    EXPECT_EQ(Poco::Message::PRIO_FATAL, logger("A").getLevel());

    write_file(m_places.user, "logging.loggers.root.level = notice\n");
    configure_nothing();
    EXPECT_EQ(Poco::Message::PRIO_NOTICE, logger("A").getLevel());

    m_places.chosen = m_folder / "chosen";
    configure("logging.loggers.root.level = trace\n");
    EXPECT_EQ(Poco::Message::PRIO_TRACE, logger("A").getLevel());
}

TEST_F(Registry, AnUnknownLevelIsTheDefaultAndOneWarningInTheDefaultLog)
{
    configure("logging.loggers.root.level = loud\n");
    EXPECT_EQ(Poco::Message::PRIO_WARNING, logger("A.cpp").getLevel());
    EXPECT_FALSE(is_there(default_log()));
    write("A.cpp", "one");
    write("B.cpp", "two");
    EXPECT_THAT(lines_of(default_log()),
                ElementsAre(AllOf(HasSubstr(" Warning ZVLogger::"), HasSubstr("unknown level 'loud'")),
                            EndsWith("one"), EndsWith("two")));
}

TEST_F(Registry, SeveralFaultsAreOneWarningEvenWithoutALine)
{
    configure("nonsense\nlogging.loggers.root.level = loud\nlogging.loggers.root.channel = nowhere\n");
    m_registry.reset();
    EXPECT_THAT(lines_of(default_log()),
                ElementsAre(AllOf(HasSubstr("nonsense"), HasSubstr("loud"), HasSubstr("nowhere"))));
}

TEST_F(Registry, AWarningIsOneLineOfBoundedLength)
{
    configure(std::string(5000, 'x') + "\nlogging.loggers.root.level = a\\nb\n");
    m_registry.reset();
    ASSERT_THAT(lines_of(default_log()), SizeIs(1));
    EXPECT_LT(content_of(default_log()).size(), 2500u);
}

TEST_F(Registry, ATextCannotForgeALineNorCommandATerminal)
{
    configure("");
    write("A\n.cpp", "name: x\n2026-11-21T02:30:15.123Z 1 Error forged \x1B[2J\xC2\x9B"
                     "2J");
    EXPECT_THAT(lines_of(default_log()),
                ElementsAre(EndsWith("name: x\\n2026-11-21T02:30:15.123Z 1 Error forged \\x1B[2J\\x9B"
                                     "2J")));
}

TEST_F(Registry, ANameInAPatternCannotForgeALine)
{
    configure("logging.loggers.root.channel = c\nlogging.channels.c.class = FileChannel\n"
              "logging.channels.c.path = c.log\nlogging.channels.c.pattern = %s %T\n");
    Poco::Message message("A\nB", "text", Poco::Message::PRIO_ERROR);
    message.setThread("C\nD");
    logger("A").getChannel()->log(message);
    EXPECT_EQ("A\\nB C\\nD\n", content_of(m_folder / "logs/c.log"));
}

TEST_F(Registry, AWarningCannotForgeALine)
{
    configure("logging.loggers.root.level = a\\nb\xC2\x85"
              "c\n");
    m_registry.reset();
    EXPECT_THAT(lines_of(default_log()), ElementsAre(HasSubstr("'a\\nb\\x85c'")));
}

TEST_F(Registry, AnUnusableFileIsReportedAndTheNextOneCounts)
{
    m_places.user = m_folder / "user";
    write_file(m_places.user, "logging.loggers.root.level = debug\n");
    for (const auto& [chosen, problem] :
         {std::pair(m_folder / "missing", "does not exist"), std::pair(m_folder.path(), "cannot be read"),
          std::pair(std::string("relative"), "not an absolute path")}) {
        m_places.chosen = chosen;
        configure_nothing();
        EXPECT_EQ(Poco::Message::PRIO_DEBUG, logger("A").getLevel()) << problem;
        m_registry.reset();
        EXPECT_THAT(lines_of(default_log()).back(), HasSubstr(problem));
    }
}

TEST_F(Registry, SurvivesAnyBytes)
{
    unsigned state = 1;
    for (int round = 0; round < 300; ++round) {
        std::string text = "logging.channels.c.class = FileChannel\nlogging.loggers.root.channel = c\n";
        for (int position = 0; position < 200; ++position) {
            state = state * 1664525u + 1013904223u;
            const char pieces[] = "logging.channels.c{}$=:\\\n\r #!";
            text +=
                state % 3 == 0 ? static_cast<char>(state >> 24) : pieces[(state >> 16) % (sizeof pieces - 1)];
        }
        configure(text);
        EXPECT_NE(nullptr, m_registry->logger("A", zvlog::configured_level));
    }
}

} // namespace

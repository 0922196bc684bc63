#include <memory>
#include <regex>
#include <string>

#include <gmock/gmock.h>

#include "unit/logger/ConfiguredLoggers.h"

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

TEST_F(UnconfiguredRegistry, LogsWarningsAndWorse)
{
    EXPECT_EQ(Poco::Message::PRIO_WARNING, logger("A.cpp").getLevel());
    EXPECT_EQ("A.cpp", logger("A.cpp").name());
}

TEST_F(UnconfiguredRegistry, WritesToTheDefaultLogWithTimeProcessAndPriority)
{
    write("A.cpp", "thr00000001:A::{f}[1]: text", Poco::Message::PRIO_WARNING);
    ASSERT_THAT(lines_of(default_log()), SizeIs(1));
    const std::regex whole_line("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\\.[0-9]{3}Z [0-9]+ Warning "
                                "thr00000001:A::\\{f\\}\\[1\\]: text");
    EXPECT_TRUE(std::regex_match(lines_of(default_log())[0], whole_line)) << lines_of(default_log())[0];
}

TEST_F(UnconfiguredRegistry, OpensNoFileBeforeTheFirstLine)
{
    logger("A.cpp");
    EXPECT_FALSE(is_there(m_folder / "logs"));
    write("A.cpp", "text");
    EXPECT_TRUE(is_there(default_log()));
}

TEST_F(UnconfiguredRegistry, GivesTheSameLoggerForTheSameName)
{
    EXPECT_EQ(&logger("A.cpp"), &logger("A.cpp"));
    EXPECT_NE(&logger("A.cpp"), &logger("B.cpp"));
    EXPECT_NE(&logger("A.cpp"), &logger("A"));
}

TEST_F(UnconfiguredRegistry, TakesTheLevelOfTheFirstCall)
{
    ZVPocoLogger* const first = m_registry->logger("A.cpp", 7);
    EXPECT_EQ(7, first->getLevel());
    EXPECT_EQ(first, m_registry->logger("A.cpp", 3));
    EXPECT_EQ(7, first->getLevel());
}

TEST_F(UnconfiguredRegistry, TakesALevelBeyondTraceAsTraceAndZeroAsOff)
{
    EXPECT_EQ(Poco::Message::PRIO_TRACE, m_registry->logger("A", 4000000000u)->getLevel());
    EXPECT_EQ(0, m_registry->logger("B", 0)->getLevel());
}

TEST_F(UnconfiguredRegistry, ManyLoggersShareTheDefaultLog)
{
    write("A.cpp", "one");
    write("B.cpp", "two");
    EXPECT_THAT(lines_of(default_log()), ::testing::ElementsAre(EndsWith("one"), EndsWith("two")));
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

TEST_F(Registry, TakesTheLevelOfTheRootForAllOthers)
{
    configure("logging.loggers.root.level = debug\n");
    EXPECT_EQ(Poco::Message::PRIO_DEBUG, logger("A.cpp").getLevel());
}

TEST_F(Registry, ASectionWithoutANameIsTheRoot)
{
    configure("logging.loggers.x.name =\nlogging.loggers.x.level = notice\n");
    EXPECT_EQ(Poco::Message::PRIO_NOTICE, logger("A.cpp").getLevel());
}

TEST_F(Registry, KnowsEveryNameOfALevelAndItsNumber)
{
    const char* const names[] = {"none",   "fatal",       "critical", "error", "warning",
                                 "notice", "information", "Debug",    "TRACE"};
    for (int level = 0; level < 9; ++level) {
        configure(std::string("logging.loggers.root.level = ") + names[level] + "\n");
        EXPECT_EQ(level, logger("A").getLevel()) << names[level];
        configure("logging.loggers.root.level = " + std::to_string(level) + "\n");
        EXPECT_EQ(level, logger("A").getLevel());
    }
}

TEST_F(Registry, ALoggerMayBeNamedWithoutItsExtension)
{
    configure("logging.loggers.a.name = StreamModule\nlogging.loggers.a.level = trace\n");
    EXPECT_EQ(Poco::Message::PRIO_TRACE, logger("StreamModule.cpp").getLevel());
    EXPECT_EQ(Poco::Message::PRIO_WARNING, logger("BufferModule.cpp").getLevel());
}

TEST_F(Registry, TheNameWithTheExtensionComesFirst)
{
    configure("logging.loggers.a.name = StreamModule\nlogging.loggers.a.level = trace\n"
              "logging.loggers.b.name = StreamModule.cpp\nlogging.loggers.b.level = fatal\n");
    EXPECT_EQ(Poco::Message::PRIO_FATAL, logger("StreamModule.cpp").getLevel());
}

TEST_F(Registry, ALoggerTakesFromItsParentsWhatIsNotSaidAboutIt)
{
    configure("logging.loggers.root.channel.class = FileChannel\n"
              "logging.loggers.root.channel.path = root.log\n"
              "logging.loggers.a.name = A\nlogging.loggers.a.level = trace\n");
    write("A.cpp", "text");
    EXPECT_EQ(Poco::Message::PRIO_TRACE, logger("A.cpp").getLevel());
    EXPECT_EQ("text\n", content_of(m_folder / "logs/root.log"));
}

TEST_F(Registry, TheLevelOfTheCallBeatsTheConfiguredOne)
{
    configure("logging.loggers.root.level = debug\n");
    EXPECT_EQ(Poco::Message::PRIO_ERROR, m_registry->logger("A.cpp", 3)->getLevel());
}

TEST_F(Registry, ReadsTheConfigurationOnce)
{
    configure("logging.loggers.root.level = debug\n");
    write_file(m_places.chosen, "logging.loggers.root.level = error\n");
    EXPECT_EQ(Poco::Message::PRIO_DEBUG, logger("A.cpp").getLevel());
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
    const auto lines = lines_of(default_log());
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_THAT(lines[0], HasSubstr(" Warning ZVLogger::"));
    EXPECT_THAT(lines[0], HasSubstr("unknown level 'loud'"));
}

TEST_F(Registry, AWarningThatNoLineTookAlongIsWrittenInTheEnd)
{
    configure("logging.loggers.root.level = loud\n");
    m_registry.reset();
    EXPECT_THAT(lines_of(default_log()), SizeIs(1));
}

TEST_F(Registry, AGoodConfigurationLeavesNoWarning)
{
    configure("logging.loggers.root.level = error\n");
    m_registry.reset();
    EXPECT_FALSE(is_there(default_log()));
}

TEST_F(Registry, SeveralFaultsAreOneWarning)
{
    configure("nonsense\nlogging.loggers.root.level = loud\nlogging.loggers.root.channel = nowhere\n");
    m_registry.reset();
    const auto lines = lines_of(default_log());
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_THAT(lines[0], HasSubstr("nonsense"));
    EXPECT_THAT(lines[0], HasSubstr("loud"));
    EXPECT_THAT(lines[0], HasSubstr("nowhere"));
}

TEST_F(Registry, AWarningIsOneLineOfBoundedLength)
{
    configure(std::string(5000, 'x') + "\nlogging.loggers.root.level = a\\nb\n");
    m_registry.reset();
    ASSERT_THAT(lines_of(default_log()), SizeIs(1));
    EXPECT_LT(content_of(default_log()).size(), 2500u);
}

TEST_F(Registry, AMissingChosenFileIsReportedAndTheNextOneCounts)
{
    m_places.user = m_folder / "user";
    write_file(m_places.user, "logging.loggers.root.level = debug\n");
    configure_nothing();
    EXPECT_EQ(Poco::Message::PRIO_DEBUG, logger("A").getLevel());
    write("A", "text");
    EXPECT_THAT(content_of(default_log()), HasSubstr("does not exist"));
}

TEST_F(Registry, AFileThatIsNoFileIsReportedAndTheNextOneCounts)
{
    m_places.chosen = m_folder.path();
    configure_nothing();
    EXPECT_EQ(Poco::Message::PRIO_WARNING, logger("A").getLevel());
    write("A", "text");
    EXPECT_THAT(content_of(default_log()), HasSubstr("cannot be read"));
}

TEST_F(Registry, NeverReadsFromTheWorkingDirectory)
{
    m_places.chosen = "relative.properties";
    configure_nothing();
    write("A", "text");
    EXPECT_THAT(content_of(default_log()), HasSubstr("not an absolute path"));
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

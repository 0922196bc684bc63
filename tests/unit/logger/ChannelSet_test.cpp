#include <filesystem>
#include <string>

#include <Poco/LoggingRegistry.h>
#include <gmock/gmock.h>

#include "unit/logger/ConfiguredLoggers.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

class Channel : public ConfiguredLoggers {
protected:
    /// The root logger writes to the channel "c" with these properties (without their common part).
    void channel(std::initializer_list<std::string> properties, const std::string& rest = "")
    {
        std::string text = "logging.loggers.root.channel = c\n" + rest;
        for (const std::string& property : properties)
            text += "logging.channels.c." + property + "\n";
        configure(text);
    }

    std::string file() const { return m_folder / "c.log"; }
    std::string path() const { return "path = " + file(); }

    /// What the library has to say about the configuration.
    std::string warning()
    {
        m_registry.reset();
        return content_of(default_log());
    }
};

TEST_F(Channel, FileWritesTheTextOfTheLine)
{
    channel({"class = FileChannel", path()});
    EXPECT_FALSE(is_there(file()));
    write("A.cpp", "text");
    EXPECT_EQ("text\n", content_of(file()));
    EXPECT_EQ("", warning());
}

TEST_F(Channel, FileAppends)
{
    write_file(file(), "old\n");
    channel({"class = FileChannel", path()});
    write("A.cpp", "new");
    EXPECT_EQ("old\nnew\n", content_of(file()));
}

TEST_F(Channel, FileRotatesBySizeAndKeepsSoMany)
{
    channel({"class = FileChannel", path(), "rotation = 10", "archive = number", "purgeCount = 2"});
    for (const char* const text : {"first line", "second line", "third line", "fourth line"})
        write("A.cpp", text);
    EXPECT_EQ("fourth line\n", content_of(file()));
    EXPECT_EQ("third line\n", content_of(file() + ".0"));
    EXPECT_EQ("second line\n", content_of(file() + ".1"));
    EXPECT_FALSE(is_there(file() + ".2"));
    EXPECT_EQ("", warning());
}

TEST_F(Channel, FileKeepsAllArchivesUnlessToldOtherwise)
{
    channel({"class = FileChannel", path(), "rotation = 1", "purgeCount = none"});
    for (int line = 0; line < 5; ++line)
        write("A.cpp", std::to_string(line));
    EXPECT_EQ("0\n", content_of(file() + ".3"));
    EXPECT_EQ("3\n", content_of(file() + ".0"));
}

TEST_F(Channel, FileRotatesByUnitsOfSize)
{
    channel({"class = FileChannel", path(), "rotation = 1 K"});
    write("A.cpp", std::string(1000, 'x'));
    write("A.cpp", std::string(1000, 'x'));
    EXPECT_FALSE(is_there(file() + ".0"));
    write("A.cpp", "y");
    EXPECT_TRUE(is_there(file() + ".0"));
    channel({"class = FileChannel", path(), "rotation = 1M"});
    write("A.cpp", std::string(2000, 'x'));
    write("A.cpp", "z");
    EXPECT_FALSE(is_there(file() + ".1"));
}

TEST_F(Channel, FileRotatesWhenOpenedIfAskedTo)
{
    write_file(file(), "old\n");
    channel({"class = FileChannel", path(), "rotateOnOpen = true"});
    write("A.cpp", "new");
    write("A.cpp", "newer");
    EXPECT_EQ("new\nnewer\n", content_of(file()));
    EXPECT_EQ("old\n", content_of(file() + ".0"));
}

TEST_F(Channel, FileRotatesByTimeAsPocoDoes)
{
    channel({"class = FileChannel", path(), "rotation = daily", "archive = timestamp", "purgeAge = 2 days",
             "times = local"});
    EXPECT_FALSE(is_there(file()));
    write("A.cpp", "text");
    EXPECT_THAT(lines_of(file()), Contains(StartsWith("text"))); // lines end as the system's do
    EXPECT_EQ("", warning());
}

TEST_F(Channel, AFileWithoutAFolderGoesToTheLogFolder)
{
    channel({"class = FileChannel", "path = own.log"});
    write("A.cpp", "text");
    EXPECT_EQ("text\n", content_of(m_folder / "logs/own.log"));
    channel({"class = FileChannel", "path = timed.log", "rotation = daily"});
    write("A.cpp", "text");
    EXPECT_THAT(content_of(m_folder / "logs/timed.log"), HasSubstr("text"));
}

TEST_F(Channel, AFileMayBeBelowTheHomeFolder)
{
    Environment environment;
    environment.set_home(m_folder.path());
    channel({"class = FileChannel", "path = ~/c.log"});
    write("A.cpp", "text");
    EXPECT_EQ("text\n", content_of(file()));
}

TEST_F(Channel, SimpleFileRotatesIntoItsSecondPath)
{
    channel({"class = SimpleFileChannel", path(), "secondaryPath = " + m_folder / "old.log", "rotation = 1",
             "flush = true"});
    for (const char* const text : {"one", "two", "three"})
        write("A.cpp", text);
    EXPECT_EQ("three\n", content_of(file()));
    EXPECT_EQ("two\n", content_of(m_folder / "old.log"));
    EXPECT_EQ("", warning());
}

TEST_F(Channel, ConsoleIsTheErrorOutput)
{
    for (const char* const name : {"class = ConsoleChannel", "class = ColorConsoleChannel"}) {
        channel({name});
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        write("A.cpp", "text");
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("text"));
        EXPECT_EQ("", testing::internal::GetCapturedStdout());
    }
    channel({"class = ColorConsoleChannel", "enableColors = false"});
    EXPECT_EQ("", warning());
}

TEST_F(Channel, NullSwallowsEverything)
{
    channel({"class = NullChannel"});
    write("A.cpp", "text");
    EXPECT_EQ("", warning());
}

#ifdef _WIN32
TEST_F(Channel, SystemLogTakesItsProperties)
{
    channel({"class = EventLogChannel", "name = zvgentl", "logFile = Application"});
    EXPECT_EQ("", warning());
    channel({"class = EventLogChannel", "facility = LOG_LOCAL3"});
    EXPECT_THAT(warning(), HasSubstr("facility"));
}
#else
TEST_F(Channel, SystemLogTakesItsProperties)
{
    channel({"class = SyslogChannel", "name = zvgentl", "facility = LOG_LOCAL3"});
    EXPECT_EQ("", warning());
    channel({"class = SyslogChannel", "facility = LOG_NOWHERE"});
    EXPECT_THAT(warning(), HasSubstr("LOG_NOWHERE"));
}
#endif

TEST_F(Channel, SystemLogOfAnotherSystemIsUnknown)
{
#ifdef _WIN32
    const std::string name = "SyslogChannel";
#else
    const std::string name = "EventLogChannel";
#endif
    channel({"class = " + name});
    EXPECT_THAT(warning(), HasSubstr("unknown class '" + name + "'"));
}

TEST_F(Channel, APatternFormatsTheLine)
{
    channel({"class = FileChannel", path(), "pattern = %s|%p|%t"});
    write("A.cpp", "text", Poco::Message::PRIO_DEBUG);
    EXPECT_EQ("A.cpp|Debug|text\n", content_of(file()));
}

TEST_F(Channel, ANamedFormatterFormatsTheLine)
{
    channel({"class = FileChannel", path(), "formatter = f"},
            "logging.formatters.f.class = PatternFormatter\n"
            "logging.formatters.f.pattern = <%t>\n"
            "logging.formatters.f.times = UTC\n");
    write("A.cpp", "text");
    EXPECT_EQ("<text>\n", content_of(file()));
    EXPECT_EQ("", warning());
}

TEST_F(Channel, AFormatterMayStandInTheChannel)
{
    channel(
        {"class = FileChannel", path(), "formatter.class = PatternFormatter", "formatter.pattern = (%t)"});
    write("A.cpp", "text");
    EXPECT_EQ("(text)\n", content_of(file()));
    EXPECT_EQ("", warning());
}

TEST_F(Channel, AFormattingChannelFormatsForAnother)
{
    channel({"class = FormattingChannel", "pattern = <%t>", "channel = d"},
            "logging.channels.d.class = FileChannel\nlogging.channels.d.path = " + file() + "\n");
    write("A.cpp", "text");
    EXPECT_EQ("<text>\n", content_of(file()));
    EXPECT_EQ("", warning());
}

TEST_F(Channel, ASplitterWritesToEach)
{
    channel({"class = SplitterChannel", "channels = d, e"},
            "logging.channels.d.class = FileChannel\nlogging.channels.d.path = d.log\n"
            "logging.channels.e.class = FileChannel\nlogging.channels.e.path = e.log\n");
    write("A.cpp", "text");
    EXPECT_EQ("text\n", content_of(m_folder / "logs/d.log"));
    EXPECT_EQ("text\n", content_of(m_folder / "logs/e.log"));
    EXPECT_EQ("", warning());
}

TEST_F(Channel, MayStandInTheLogger)
{
    configure("logging.loggers.root.channel.class = FileChannel\nlogging.loggers.root.channel." + path() +
              "\nlogging.loggers.root.channel.pattern = %t!\n");
    write("A.cpp", "text");
    EXPECT_EQ("text!\n", content_of(file()));
}

TEST_F(Channel, WithAThreadOfItsOwnIsRefusedWithAWarning)
{
    channel({"class = AsyncChannel", "channel = d"},
            "logging.channels.d.class = FileChannel\nlogging.channels.d.path = " + file() + "\n");
    write("A.cpp", "text");
    EXPECT_THAT(lines_of(default_log()), ElementsAre(HasSubstr("AsyncChannel"), HasSubstr("text")));
    EXPECT_FALSE(is_there(file()));
}

TEST_F(Channel, ThatCompressesDoesSoNotAndWarns)
{
    for (const std::string rotation : {"rotation = 1", "rotation = daily"}) {
        channel({"class = FileChannel", path(), rotation, "compress = true"});
        write("A.cpp", "text");
        EXPECT_THAT(warning(), HasSubstr("not compressed"));
    }
}

struct Fault {
    const char* properties;
    const char* warning;
};

class FaultyChannel : public ConfiguredLoggers, public ::testing::WithParamInterface<Fault> {};

TEST_P(FaultyChannel, IsReplacedByTheDefaultLogWithOneWarning)
{
    configure(std::string("logging.loggers.root.channel = c\n") + GetParam().properties);
    write("A.cpp", "text");
    EXPECT_THAT(lines_of(default_log()), ElementsAre(HasSubstr(GetParam().warning), HasSubstr("text")));
}

INSTANTIATE_TEST_SUITE_P(
    All, FaultyChannel,
    ::testing::Values(Fault{"", "logging.channels.c does not exist"},
                      Fault{"logging.channels.c.path = x\n", "unknown class ''"},
                      Fault{"logging.channels.c.class = EventChannel\n", "unknown class 'EventChannel'"},
                      Fault{"logging.channels.c.class = FileChannel\n", "has no path"},
                      Fault{"logging.channels.c.class = SplitterChannel\n", "has no channels"},
                      Fault{"logging.channels.c.class = SplitterChannel\nlogging.channels.c.channels = c\n",
                            "refers to itself"},
                      Fault{"logging.channels.c.class = FormattingChannel\nlogging.channels.c.channel = c\n",
                            "refers to itself"},
                      Fault{"logging.channels.c.class = FormattingChannel\n", "has no channel"}));

class SloppyChannel : public ConfiguredLoggers, public ::testing::WithParamInterface<Fault> {};

TEST_P(SloppyChannel, IsUsedWithoutWhatIsWrongAboutIt)
{
    configure(std::string("logging.loggers.root.channel = c\nlogging.channels.c.class = FileChannel\n"
                          "logging.channels.c.path = c.log\n") +
              GetParam().properties);
    write("A.cpp", "text");
    EXPECT_THAT(content_of(m_folder / "logs/c.log"), HasSubstr("text"));
    EXPECT_THAT(lines_of(default_log()), ElementsAre(HasSubstr(GetParam().warning)));
}

INSTANTIATE_TEST_SUITE_P(
    All, SloppyChannel,
    ::testing::Values(Fault{"logging.channels.c.colour = red\n", "unknown property 'colour'"},
                      Fault{"logging.channels.c.purgeCount = few\n", "invalid purgeCount 'few'"},
                      Fault{"logging.channels.c.purgeCount = 0\n", "invalid purgeCount '0'"},
                      Fault{"logging.channels.c.rotation = sometimes\n", "'rotation' refused"},
                      Fault{"logging.channels.c.rotation = 0\n", "'rotation' refused"},
                      Fault{"logging.channels.c.formatter = f\n", "logging.formatters.f does not exist"},
                      Fault{"logging.channels.c.formatter = f\nlogging.formatters.f.class = Typewriter\n",
                            "unknown class 'Typewriter'"},
                      Fault{
                          "logging.channels.c.formatter = f\nlogging.formatters.f.class = PatternFormatter\n"
                          "logging.formatters.f.pattern = %t\nlogging.formatters.f.ink = blue\n",
                          "'ink' refused"}));

TEST_F(Channel, AFolderOfTheUserThatIsMissingLosesLinesWithOneWarning)
{
    channel({"class = FileChannel", "path = " + m_folder / "missing/c.log"});
    for (int line = 0; line < 3; ++line)
        write("A.cpp", "text");
    EXPECT_THAT(lines_of(default_log()), ElementsAre(HasSubstr("'A.cpp' are lost")));
    EXPECT_FALSE(is_there(m_folder / "missing"));
}

TEST_F(Channel, ATimedFileThatCannotBeOpenedLosesLinesWithOneWarning)
{
    channel({"class = FileChannel", "rotation = daily", "path = " + m_folder / "missing/c.log"});
    for (int line = 0; line < 3; ++line)
        write("A.cpp", "text");
    EXPECT_THAT(lines_of(default_log()), ElementsAre(HasSubstr("'A.cpp' are lost")));
}

TEST_F(Channel, IsNotRegisteredWithPoco)
{
    channel({"class = FileChannel", path(), "formatter = f"},
            "logging.formatters.f.class = PatternFormatter\n");
    EXPECT_THROW(Poco::LoggingRegistry::defaultRegistry().channelForName("c"), Poco::NotFoundException);
    EXPECT_THROW(Poco::LoggingRegistry::defaultRegistry().formatterForName("f"), Poco::NotFoundException);
}

} // namespace

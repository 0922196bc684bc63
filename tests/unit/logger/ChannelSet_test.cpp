#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "unit/logger/ConfiguredLoggers.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace {

class Channel : public ConfiguredLoggers {
protected:
    /// The root logger writes to the channel "c" with these properties (without their common part).
    void channel(const std::string& properties, const std::string& rest = "")
    {
        std::string text = "logging.loggers.root.channel = c\n" + rest;
        std::istringstream lines(properties);
        for (std::string line; std::getline(lines, line, ';');)
            text += "logging.channels.c." + line + "\n";
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

/// The files that the root logger's channel "c" writes. "${folder}" is the test's folder, which is also the
/// home folder.
struct Written {
    const char* name;
    std::string channel;
    /// By their names in the folder; without content: missing.
    std::map<std::string, std::string> files;
    std::vector<std::string> lines{"text"};
    /// What c.log holds before the first line.
    std::string old{};
};

constexpr const char* others = "logging.channels.d.class = FileChannel\nlogging.channels.d.path = d.log\n"
                               "logging.channels.e.class = FileChannel\nlogging.channels.e.path = e.log\n"
                               "logging.formatters.f.class = PatternFormatter\n"
                               "logging.formatters.f.pattern = <%t>\nlogging.formatters.f.times = UTC\n";

class WrittenChannel : public Channel, public ::testing::WithParamInterface<Written> {};

TEST_P(WrittenChannel, WritesFilesOnlyWithTheFirstLine)
{
    Environment environment;
    environment.set_home(m_folder.path());
    if (!GetParam().old.empty())
        write_file(file(), GetParam().old);
    channel(GetParam().channel, "folder = " + m_folder.path() + "\n" + others);
    const auto before = names_in(m_folder.path());
    for (const std::string& line : GetParam().lines)
        write("A.cpp", line, Poco::Message::PRIO_DEBUG);
    EXPECT_THAT(before, SizeIs(GetParam().old.empty() ? 1 : 2)); // the configuration, and the old file
    for (const auto& [name, content] : GetParam().files) {
        EXPECT_EQ(content, content_of(m_folder / name)) << name;
        EXPECT_EQ(!content.empty(), is_there(m_folder / name)) << name;
    }
    EXPECT_EQ("", warning());
}

const std::string to_file = "class = FileChannel;path = ${folder}/c.log;";
const std::string kilo(1000, 'x');

const Written written[] = {
    {"TheText", to_file, {{"c.log", "text\n"}}},
    {"BehindWhatWasThere", to_file, {{"c.log", "old\ntext\n"}}, {"text"}, "old\n"},
    {"SoManyArchives",
     to_file + "rotation = 10;archive = number;purgeCount = 2",
     {{"c.log", "fourth line\n"}, {"c.log.0", "third line\n"}, {"c.log.1", "second line\n"}, {"c.log.2", ""}},
     {"first line", "second line", "third line", "fourth line"}},
    {"AllArchives",
     to_file + "rotation = 1;purgeCount = none",
     {{"c.log.0", "3\n"}, {"c.log.3", "0\n"}},
     {"0", "1", "2", "3", "4"}},
    {"Kilobytes",
     to_file + "rotation = 1 K",
     {{"c.log", "y\n"}, {"c.log.0", kilo + "\n" + kilo + "\n"}},
     {kilo, kilo, "y"}},
    {"Megabytes",
     to_file + "rotation = 1M",
     {{"c.log", kilo + "\n" + kilo + "\ny\n"}, {"c.log.0", ""}},
     {kilo, kilo, "y"}},
    {"RotatedWhenOpened",
     to_file + "rotateOnOpen = true",
     {{"c.log", "new\nnewer\n"}, {"c.log.0", "old\n"}},
     {"new", "newer"},
     "old\n"},
    {"WithoutAFolderInTheLogFolder", "class = FileChannel;path = own.log", {{"logs/own.log", "text\n"}}},
    {"InTheHomeFolder", "class = FileChannel;path = ~/c.log", {{"c.log", "text\n"}}},
    {"TheSecondPath",
     "class = SimpleFileChannel;path = ${folder}/c.log;secondaryPath = ${folder}/old.log;rotation = 1;flush "
     "= true",
     {{"c.log", "three\n"}, {"old.log", "two\n"}},
     {"one", "two", "three"}},
    {"Nothing", "class = NullChannel", {{"c.log", ""}, {"logs", ""}}},
    {"APattern", to_file + "pattern = %s|%p|%t", {{"c.log", "A.cpp|Debug|text\n"}}},
    {"ANamedFormatter", to_file + "formatter = f", {{"c.log", "<text>\n"}}},
    {"TheChannelsOwnFormatter",
     to_file + "formatter.class = PatternFormatter;formatter.pattern = (%t)",
     {{"c.log", "(text)\n"}}},
    {"AFormattingChannel",
     "class = FormattingChannel;pattern = <%t>;channel = d",
     {{"logs/d.log", "<text>\n"}}},
    {"ASplitter",
     "class = SplitterChannel;channels = d, e",
     {{"logs/d.log", "text\n"}, {"logs/e.log", "text\n"}}},
};

INSTANTIATE_TEST_SUITE_P(All, WrittenChannel, ::testing::ValuesIn(written),
                         [](const auto& test) { return test.param.name; });

TEST_F(Channel, MayBeDescribedInTheLogger)
{
    configure("logging.loggers.root.channel.class = FileChannel\nlogging.loggers.root.channel." + path() +
              "\nlogging.loggers.root.channel.pattern = %t!\n");
    write("A.cpp", "text");
    EXPECT_EQ("text!\n", content_of(file()));
}

TEST_F(Channel, InAFolderOfTheUserThatIsMissingLosesLinesWithOneWarning)
{
    for (const char* const rotation : {"rotation = never", "rotation = daily"}) {
        channel("class = FileChannel;path = " + m_folder / "missing/c.log" + ";" + rotation);
        for (int line = 0; line < 3; ++line)
            write("A.cpp", "text");
        EXPECT_THAT(lines_of(default_log()), ElementsAre(HasSubstr("'A.cpp' are lost"))) << rotation;
        EXPECT_FALSE(is_there(m_folder / "missing"));
        m_registry.reset();
        std::filesystem::remove(default_log());
    }
}

TEST_F(Channel, FileRotatesByTimeAsPocoDoesInTheLogFolderToo)
{
    for (const std::string& file : {file(), std::string("timed.log")}) {
        channel("class = FileChannel;rotation = daily;archive = timestamp;purgeAge = 2 days;times = "
                "local;path = " +
                file);
        const std::string log = file == "timed.log" ? m_folder / "logs/timed.log" : file;
        EXPECT_FALSE(is_there(log));
        write("A.cpp", "text");
        EXPECT_THAT(lines_of(log), Contains(StartsWith("text"))); // lines end as the system's do
        EXPECT_EQ("", warning());
    }
}

TEST_F(Channel, ConsoleIsTheErrorOutput)
{
    for (const char* const name : {"class = ConsoleChannel", "class = ColorConsoleChannel"}) {
        channel(name);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        write("A.cpp", "text");
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("text"));
        EXPECT_EQ("", testing::internal::GetCapturedStdout());
    }
    channel("class = ColorConsoleChannel;enableColors = false");
    EXPECT_EQ("", warning());
}

TEST_F(Channel, SystemLogTakesItsProperties)
{
#ifdef _WIN32
    const std::string own = "EventLogChannel", property = "logFile = Application", other = "SyslogChannel";
    const std::string refused = "facility = LOG_LOCAL3", reason = "facility";
#else
    const std::string own = "SyslogChannel", property = "facility = LOG_LOCAL3", other = "EventLogChannel";
    const std::string refused = "facility = LOG_NOWHERE", reason = "LOG_NOWHERE";
#endif
    channel("class = " + own + ";name = zvgentl;" + property);
    EXPECT_EQ("", warning());
    channel("class = " + own + ";" + refused);
    EXPECT_THAT(warning(), HasSubstr(reason));
    channel("class = " + other);
    EXPECT_THAT(warning(), HasSubstr("unknown class '" + other + "'"));
}

struct Fault {
    std::string properties;
    const char* warning;
};

class FaultyChannel : public ConfiguredLoggers, public ::testing::WithParamInterface<Fault> {};

TEST_P(FaultyChannel, IsReplacedByTheDefaultLogWithOneWarning)
{
    configure(std::string("logging.loggers.root.channel = c\n") + GetParam().properties);
    write("A.cpp", "text");
    EXPECT_THAT(lines_of(default_log()), ElementsAre(HasSubstr(GetParam().warning), HasSubstr("text")));
}

/// The channel "c", which splits lines to "c1" so many times, and that to "c2", and so on to the last one, a
/// file.
std::string splitters(int depth, int times)
{
    std::string text;
    std::string name = "c";
    for (int level = 1; level <= depth; ++level) {
        const std::string next = "c" + std::to_string(level);
        text += "logging.channels." + name + ".class = SplitterChannel\nlogging.channels." + name +
                ".channels = ";
        for (int time = 0; time < times; ++time)
            text += next + ",";
        text += "\n";
        name = next;
    }
    return text + "logging.channels." + name + ".class = FileChannel\nlogging.channels." + name +
           ".path = d.log\n";
}

/// The channel "c", behind which are so many others that add a text.
std::string formatters(int depth)
{
    std::string text;
    std::string name = "c";
    for (int level = 1; level <= depth; ++level) {
        const std::string next = "c" + std::to_string(level);
        text += "logging.channels." + name + ".class = FormattingChannel\nlogging.channels." + name +
                ".pattern = %t%t%t%t%t%t%t%t%t%t\nlogging.channels." + name + ".channel = " + next + "\n";
        name = next;
    }
    return text + "logging.channels." + name + ".class = FileChannel\nlogging.channels." + name +
           ".path = d.log\n";
}

TEST_F(ConfiguredLoggers, ALineThatPatternsRepeatIsCutOff)
{
    configure("logging.loggers.root.channel = c\n" + formatters(6));
    write("A.cpp", "text");
    EXPECT_EQ(65536u + 1, content_of(m_folder / "logs/d.log").size());
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
                      Fault{"logging.channels.c.class = FormattingChannel\n", "has no channel"},
                      Fault{splitters(2, 5), "writes each line more than 16 times"},
                      Fault{formatters(9), "behind more than 8 other channels"},
                      Fault{"logging.channels.c.class = AsyncChannel\nlogging.channels.c.channel = d\n"
                            "logging.channels.d.class = FileChannel\nlogging.channels.d.path = d.log\n",
                            "AsyncChannel"}));

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
    ::testing::Values(
        Fault{"logging.channels.c.colour = red\n", "unknown property 'colour'"},
        Fault{"logging.channels.c.purgeCount = few\n", "invalid purgeCount 'few'"},
        Fault{"logging.channels.c.purgeCount = 0\n", "invalid purgeCount '0'"},
        Fault{"logging.channels.c.rotation = sometimes\n", "cannot use the property 'rotation'"},
        Fault{"logging.channels.c.rotation = 0\n", "cannot use the property 'rotation'"},
        Fault{"logging.channels.c.rotation = 1\nlogging.channels.c.compress = true\n", "not compressed"},
        Fault{"logging.channels.c.rotation = daily\nlogging.channels.c.compress = true\n", "not compressed"},
        Fault{"logging.channels.c.formatter = f\n", "logging.formatters.f does not exist"},
        Fault{"logging.channels.c.pattern = " + std::string(501, 'x') + "\n", "more than 500 characters"},
        Fault{"logging.channels.c.formatter = f\nlogging.formatters.f.class = Typewriter\n",
              "unknown class 'Typewriter'"},
        Fault{"logging.channels.c.formatter = f\nlogging.formatters.f.class = PatternFormatter\n"
              "logging.formatters.f.pattern = %t\nlogging.formatters.f.ink = blue\n",
              "cannot use the property 'ink'"}));

} // namespace

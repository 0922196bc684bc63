#include <filesystem>
#include <string>
#include <vector>

#include <Poco/AutoPtr.h>
#include <Poco/Logger.h>
#include <Poco/LoggingRegistry.h>
#include <Poco/Message.h>
#include <Poco/NullChannel.h>
#include <gmock/gmock.h>

#include "zvlog/ZVLogger.h"

#include "platform/DynamicLibrary.h"
#include "unit/logger/Sandbox.h"

// The built library, loaded into an application and unloaded again: every test starts with a fresh library.

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

namespace {

// Names as the linker sees them: the library is not linked to this program.
constexpr const char* init_integer_symbol = "_ZN10ZVSettings11InitIntegerEjPKcjS1_";

class LoadedLibrary : platform::DynamicLibrary {
public:
    LoadedLibrary() : DynamicLibrary(ZV_LOGGER_LIBRARY) {}

    Poco::Logger& logger(const char* name) const
    {
        return *reinterpret_cast<decltype(&InitLogger)>(find("InitLogger"))(nullptr, name, 0xFFFFFFFF);
    }
    std::uint32_t setting(const char* key, std::uint32_t value) const
    {
        using Function = std::uint32_t (*)(std::uint32_t, const char*, std::uint32_t, const char*);
        return reinterpret_cast<Function>(find(init_integer_symbol))(3, key, value, nullptr);
    }
};

void write(Poco::Logger& logger, const std::string& text)
{
    logger.getChannel()->log(Poco::Message(logger.name(), text, Poco::Message::PRIO_ERROR));
}

std::size_t open_files() { return names_in("/proc/self/fd").size(); }

bool is_mapped() { return content_of("/proc/self/maps").find("libZVLogger.so") != std::string::npos; }

class Library : public ::testing::Test {
protected:
    EmptyHome m_home;
};

TEST_F(Library, LeavesTheOutputsOfTheApplicationClean)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    m_home.environment.set("ZV_LOGGER_CONFIG", m_home.folder / "broken.properties");
    m_home.environment.set("ZV_SETTINGS_FILE", "relative");
    write_file(m_home.folder / "broken.properties", "broken\nlogging.loggers.root.level = loud\n");
    {
        const LoadedLibrary library;
        write(library.logger("A.cpp"), "text");
        library.setting("A", 4);
    }
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_THAT(lines_of(m_home.default_log()), SizeIs(3));
}

TEST_F(Library, OpensNoFileBeforeTheFirstLine)
{
    const LoadedLibrary library;
    const std::size_t before = open_files();
    Poco::Logger& logger = library.logger("A.cpp");
    EXPECT_EQ(before, open_files());
    EXPECT_FALSE(is_there(m_home.folder / ".local"));
    write(logger, "text");
    EXPECT_EQ(before + 1, open_files());
}

TEST_F(Library, IsConfiguredByTheFileThatTheEnvironmentNames)
{
    write_file(m_home.user_logger_config(), "logging.loggers.root.level = fatal\n");
    m_home.environment.set("ZV_LOGGER_CONFIG", m_home.folder / "mine.properties");
    write_file(m_home.folder / "mine.properties", "logging.loggers.root.level = trace\n");
    EXPECT_EQ(Poco::Message::PRIO_TRACE, LoadedLibrary().logger("A.cpp").getLevel());
    m_home.environment.unset("ZV_LOGGER_CONFIG");
    EXPECT_EQ(Poco::Message::PRIO_FATAL, LoadedLibrary().logger("A.cpp").getLevel());
}

TEST_F(Library, FollowsTheBaseFoldersOfTheEnvironment)
{
    m_home.environment.set("XDG_CONFIG_HOME", m_home.folder / "c");
    m_home.environment.set("XDG_STATE_HOME", m_home.folder / "s");
    write_file(m_home.folder / "c/zvgentl/logger.properties", "logging.loggers.root.level = error\n");
    const LoadedLibrary library;
    EXPECT_EQ(Poco::Message::PRIO_ERROR, library.logger("A.cpp").getLevel());
    write(library.logger("A.cpp"), "text");
    EXPECT_THAT(lines_of(m_home.folder / "s/zvgentl/zvgentl.log"), SizeIs(1));
    library.setting("A", 1);
    EXPECT_TRUE(is_there(m_home.folder / "c/zvgentl/settings.properties"));
}

TEST_F(Library, IgnoresRelativeFoldersOfTheEnvironment)
{
    const auto old_folder = std::filesystem::current_path();
    std::filesystem::create_directory(m_home.folder / "work");
    std::filesystem::current_path(m_home.folder / "work");
    for (const char* const name :
         {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "ZV_LOGGER_CONFIG", "ZV_SETTINGS_FILE"})
        m_home.environment.set(name, ".");
    {
        const LoadedLibrary library;
        write(library.logger("A.cpp"), "text");
        EXPECT_EQ(4u, library.setting("A", 4));
    }
    EXPECT_TRUE(names_in(m_home.folder / "work").empty());
    std::filesystem::current_path(old_folder);
}

TEST_F(Library, DoesNotCreateAMissingHome)
{
    m_home.environment.set("HOME", m_home.folder / "missing");
    const LoadedLibrary library;
    write(library.logger("A.cpp"), "text");
    EXPECT_EQ(4u, library.setting("A", 4));
    EXPECT_FALSE(is_there(m_home.folder / "missing"));
}

TEST_F(Library, LeavesTheLoggersOfTheApplicationAlone)
{
    Poco::AutoPtr<Poco::Channel> channel(new Poco::NullChannel);
    Poco::Logger& mine = Poco::Logger::create("A.cpp", channel, Poco::Message::PRIO_NOTICE);
    std::vector<std::string> before;
    Poco::Logger::names(before);
    write_file(m_home.user_logger_config(), "logging.loggers.root.level = trace\n"
                                            "logging.loggers.root.channel = c\n"
                                            "logging.channels.c.class = FileChannel\n"
                                            "logging.channels.c.path = c.log\n"
                                            "logging.channels.c.formatter = f\n"
                                            "logging.formatters.f.class = PatternFormatter\n");
    {
        const LoadedLibrary library;
        Poco::Logger& theirs = library.logger("A.cpp");
        EXPECT_NE(&mine, &theirs);
        write(theirs, "text");
        library.setting("A", 4);

        std::vector<std::string> after;
        Poco::Logger::names(after);
        EXPECT_EQ(before, after);
        EXPECT_EQ(Poco::Message::PRIO_NOTICE, mine.getLevel());
        EXPECT_EQ(channel, mine.getChannel());
        auto& registry = Poco::LoggingRegistry::defaultRegistry();
        EXPECT_THROW(registry.channelForName("c"), Poco::NotFoundException);
        EXPECT_THROW(registry.formatterForName("f"), Poco::NotFoundException);
    }
    EXPECT_EQ(&mine, Poco::Logger::has("A.cpp"));
    Poco::Logger::destroy("A.cpp");
}

TEST_F(Library, WarnsAboutSettingsInItsLogUnlessTheirLoggerIsOff)
{
    m_home.environment.set("ZV_SETTINGS_FILE", m_home.folder / "s.properties");
    write_file(m_home.folder / "s.properties", "A = x\n");
    {
        const LoadedLibrary library;
        EXPECT_EQ(Poco::Message::PRIO_WARNING, library.logger("A.cpp").getLevel());
        EXPECT_EQ(4u, library.setting("A", 4));
        EXPECT_EQ(4u, library.setting("A", 4));
    }
    const auto one_warning = ElementsAre(HasSubstr(" Warning ZVSettings::the setting A "));
    EXPECT_THAT(lines_of(m_home.default_log()), one_warning);
    write_file(m_home.user_logger_config(),
               "logging.loggers.s.name = ZVSettings\nlogging.loggers.s.level = none\n");
    LoadedLibrary().setting("A", 4);
    EXPECT_THAT(lines_of(m_home.default_log()), one_warning);
}

TEST_F(Library, IsGoneWhenItIsUnloaded)
{
    const std::size_t before = open_files();
    std::size_t threads = names_in("/proc/self/task").size();
    for (int round = 0; round < 20; ++round) {
        {
            const LoadedLibrary library;
            ASSERT_TRUE(is_mapped());
            write(library.logger("A.cpp"), "text");
            library.setting("A", 4);
            EXPECT_EQ(threads, names_in("/proc/self/task").size());
        }
        ASSERT_FALSE(is_mapped());
    }
    EXPECT_EQ(before, open_files());
    EXPECT_THAT(lines_of(m_home.default_log()), SizeIs(20));
}

} // namespace

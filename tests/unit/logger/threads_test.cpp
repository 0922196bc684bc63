#include <atomic>
#include <filesystem>
#include <functional>
#include <regex>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <Poco/Message.h>
#include <gmock/gmock.h>

#include "logger/LoggerRegistry.h"
#include "logger/SettingsStore.h"
#include "unit/logger/Sandbox.h"

using ::testing::Each;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

constexpr int thread_count = 6;

void in_threads(const std::function<void(int)>& work)
{
    std::vector<std::thread> threads;
    threads.reserve(thread_count);
    for (int number = 0; number < thread_count; ++number)
        threads.emplace_back(work, number);
    for (std::thread& thread : threads)
        thread.join();
}

TEST(ThreadedLoggers, AllGetTheSameLogger)
{
    const Folder folder;
    zvlog::LoggerRegistry registry({"", "", "", folder / "logs"});
    std::vector<ZVPocoLogger*> found(thread_count);
    in_threads([&](int number) {
        for (int round = 0; round < 100; ++round)
            found[static_cast<std::size_t>(number)] =
                registry.logger("Unit" + std::to_string(round) + ".cpp", zvlog::configured_level);
    });
    EXPECT_THAT(found, Each(found[0]));
}

TEST(ThreadedLoggers, LoseAndMixNoLines)
{
    constexpr int lines_each = 200;
    const Folder folder;
    write_file(folder / "config", "nonsense\nlogging.loggers.root.channel = c\n"
                                  "logging.channels.c.class = FileChannel\n"
                                  "logging.channels.c.path = c.log\n"
                                  "logging.channels.c.pattern = %s %t\n"
                                  "logging.channels.c.rotation = 4 K\n");
    zvlog::LoggerRegistry registry({folder / "config", "", "", folder / "logs"});
    in_threads([&](int number) {
        const std::string name = "Unit" + std::to_string(number % 3);
        auto channel = registry.logger(name, zvlog::configured_level)->getChannel();
        for (int line = 0; line < lines_each; ++line) {
            const std::string text = std::to_string(number) + " " + std::to_string(line) + " end";
            channel->log(Poco::Message(name, text, Poco::Message::PRIO_ERROR));
        }
    });

    const std::regex whole_line("Unit[0-9] [0-9]+ [0-9]+ end");
    std::set<std::string> lines;
    for (const std::string& name : names_in(folder / "logs")) {
        if (name.compare(0, 5, "c.log") != 0)
            continue;
        for (const std::string& line : lines_of(folder / ("logs/" + name))) {
            EXPECT_TRUE(std::regex_match(line, whole_line)) << line;
            lines.insert(line);
        }
    }
    EXPECT_THAT(lines, SizeIs(thread_count * lines_each));
    EXPECT_THAT(lines_of(folder / "logs/zvgentl.log"), SizeIs(1)); // the one warning about the configuration
}

TEST(ThreadedSettings, AddEveryKeyOnce)
{
    const Folder folder;
    const std::string file = folder / "settings.properties";
    std::mutex mutex;
    std::vector<std::string> warnings;
    zvlog::SettingsStore store(
        [&] {
            return zvlog::SettingsPlaces{file, "", "", {}};
        },
        [&](const std::string& text) {
            const std::lock_guard lock(mutex);
            warnings.push_back(text);
        });
    in_threads([&](int number) {
        for (std::uint32_t key = 0; key < 30; ++key) {
            EXPECT_EQ(key, store.value_or_add("shared." + std::to_string(key), key, ""));
            EXPECT_EQ(key, store.value_or_add("own." + std::to_string(number) + "." + std::to_string(key),
                                              key, ""));
            EXPECT_EQ(std::nullopt, store.value("none"));
        }
    });
    const std::string text = content_of(file);
    EXPECT_EQ(30u, count_of(text, "\nshared."));
    EXPECT_EQ(30u * thread_count, count_of(text, "\nown."));
    EXPECT_THAT(warnings, IsEmpty());
}

TEST(ThreadedSettings, SeeEveryChangeAtTheNextRead)
{
    const Folder folder;
    const std::string file = folder / "settings.properties";
    write_file(file, "a = 0\n");
    zvlog::SettingsStore store(
        [&] {
            return zvlog::SettingsPlaces{file, "", "", {}};
        },
        [](const std::string&) {});
    std::atomic<std::uint32_t> written{0};
    in_threads([&](int number) {
        for (std::uint32_t value = 1; number == 0 && value <= 300; ++value) {
            write_file(file + ".new", "a = " + std::to_string(value) + "\n");
            std::error_code denied; // by systems that do not replace a file while somebody reads it
            do
                std::filesystem::rename(file + ".new", file, denied);
            while (denied == std::errc::permission_denied);
            written = value;
        }
        for (std::uint32_t seen = 0; seen < 300;) {
            const std::uint32_t least = written;
            const auto value = store.value("a");
            ASSERT_TRUE(value.has_value());
            ASSERT_GE(*value, least);
            ASSERT_GE(*value, seen);
            seen = *value;
        }
    });
}

} // namespace

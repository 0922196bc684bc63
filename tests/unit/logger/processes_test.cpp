#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/FileLock.h"
#include "unit/logger/Sandbox.h"

using ::testing::Each;
using ::testing::EndsWith;
using ::testing::SizeIs;

namespace {

/// Runs `count` workers that start together, and gives their exit codes.
std::vector<int> run_workers(int count, const std::string& task, int rounds)
{
    const Folder folder;
    const std::string gate = folder / "gate";
    auto closed = std::make_unique<platform::FileLock>(gate);
    std::vector<pid_t> workers;
    for (int number = 0; number < count; ++number) {
        std::string words[] = {ZV_LOGGER_WORKER, task, std::to_string(number), std::to_string(rounds), gate};
        char* arguments[] = {words[0].data(), words[1].data(), words[2].data(),
                             words[3].data(), words[4].data(), nullptr};
        pid_t worker = -1;
        EXPECT_EQ(0, posix_spawn(&worker, ZV_LOGGER_WORKER, nullptr, nullptr, arguments, environ));
        workers.push_back(worker);
    }
    closed.reset();
    std::vector<int> codes;
    for (const pid_t worker : workers) {
        int status = -1;
        EXPECT_EQ(worker, waitpid(worker, &status, 0));
        codes.push_back(WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status));
    }
    return codes;
}

TEST(Processes, LoseNoSettingAndTearNoFile)
{
    constexpr int processes = 8;
    constexpr int rounds = 60;
    EmptyHome home;
    const std::string file = home.folder / "settings.properties";
    home.environment.set("ZV_SETTINGS_FILE", file);

    EXPECT_THAT(run_workers(processes, "settings", rounds), Each(0));

    std::set<std::string> entries;
    for (const std::string& line : lines_of(file)) {
        const bool is_entry = !line.empty() && line.front() != '#';
        EXPECT_TRUE(!is_entry || entries.insert(line).second) << line;
    }
    EXPECT_THAT(entries, SizeIs(processes * rounds));
    for (int number = 0; number < processes; ++number) {
        for (int round = 0; round < rounds; ++round)
            EXPECT_EQ(1u, entries.count("Worker" + std::to_string(number) + ".Key" + std::to_string(round) +
                                        " = " + std::to_string(round + 1000)));
    }
    EXPECT_THAT(names_in(home.folder.path()),
                ::testing::UnorderedElementsAre("settings.properties", "settings.properties.lock"));
}

TEST(Processes, ShareTheDefaultLogThroughItsRotations)
{
    constexpr int processes = 6;
    constexpr int lines_each = 800; // of one kilobyte: more than two files, less than are kept
    EmptyHome home;
    EXPECT_THAT(run_workers(processes, "log", lines_each), Each(0));

    const std::string folder = home.folder / ".local/state/zvgentl/";
    std::set<std::string> found;
    for (const std::string& name : names_in(folder)) {
        for (const std::string& line : lines_of(folder + name)) {
            EXPECT_EQ(1u, count_of(line, "begin "));
            EXPECT_THAT(line, EndsWith(". end"));
            found.insert(line.substr(line.find("begin ")));
        }
    }
    EXPECT_THAT(found, SizeIs(processes * lines_each));
    EXPECT_THAT(names_in(folder),
                ::testing::UnorderedElementsAre("zvgentl.log", "zvgentl.log.0", "zvgentl.log.1"));
}

} // namespace

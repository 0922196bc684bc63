#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <tuple>

#include <Poco/Message.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "zvlog/ZVLogger.h"
#include "zvlog/ZVSettings.h"

#include "platform/FileLock.h"
#include "unit/logger/Sandbox.h"

// One of several processes that use the library at the same time. It starts work when it gets the lock GATE,
// so that all begin together.
//   worker settings NUMBER ROUNDS GATE   adds a key of its own in each round, and edits it
//   worker log NUMBER LINES GATE         writes lines to the default log

namespace {

std::string key_name(const std::string& number, unsigned round)
{
    return "Worker" + number + ".Key" + std::to_string(round);
}

// The way a careful script edits: under the lock that flock(1) takes, and as a whole.
void edit(const std::string& file, const std::string& key, std::uint32_t value)
{
    const int lock = open((file + ".lock").c_str(), O_RDONLY);
    if (lock == -1 || flock(lock, LOCK_EX) != 0)
        std::abort();
    std::string text = content_of(file);
    const std::size_t start = text.find("\n" + key + " = ") + 1;
    text.replace(start, text.find('\n', start) - start, key + " = " + std::to_string(value));
    const std::string edited = file + "." + key;
    write_file(edited, text);
    std::error_code denied; // by systems that do not replace a file while somebody reads it
    do
        std::filesystem::rename(edited, file, denied);
    while (denied == std::errc::permission_denied);
    if (denied)
        std::abort();
    close(lock);
}

int use_settings(const std::string& number, unsigned rounds)
{
    const char* const chosen = std::getenv("ZV_SETTINGS_FILE"); // NOLINT(concurrency-mt-unsafe): one thread
    if (chosen == nullptr)
        return 65;
    const std::string file = chosen;
    for (unsigned round = 0; round < rounds; ++round) {
        const std::string key = key_name(number, round);
        if (ZVSettings::InitInteger(zv_feature_integer, key.c_str(), round, "a key") != round)
            return 1;
        edit(file, key, round + 1000);
        if (ZVSettings::InitInteger(zv_feature_integer, key.c_str(), round, "a key") != round + 1000)
            return 2;
        std::uint32_t value = 0;
        if (!ZVSettings::Get(zv_scope_machine, zv_feature_integer, key_name(number, 0).c_str(), value, 0,
                             true, nullptr) ||
            value != 1000)
            return 3;
    }
    return 0;
}

int write_lines(const std::string& number, unsigned lines)
{
    ZVPocoLogger* const logger = InitLogger(nullptr, "Worker.cpp", 0xFFFFFFFF);
    if (logger == nullptr)
        return 1;
    for (unsigned line = 0; line < lines; ++line) {
        const std::string text =
            "begin " + number + " " + std::to_string(line) + std::string(1000, '.') + " end";
        logger->log(Poco::Message(logger->name(), text, Poco::Message::PRIO_ERROR));
    }
    return 0;
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 5) {
        std::cerr << "worker settings|log NUMBER ROUNDS GATE\n";
        return 64;
    }
    const std::string task = arguments[1];
    std::ignore = platform::FileLock(arguments[4]); // waits for the lock, and gives it up at once
    const auto rounds = static_cast<unsigned>(std::atoi(arguments[3]));
    return task == "log" ? write_lines(arguments[2], rounds) : use_settings(arguments[2], rounds);
}

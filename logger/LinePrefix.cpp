#include "logger/LinePrefix.h"

#include <array>
#include <charconv>

#include <Poco/DateTimeFormatter.h>
#include <Poco/Timestamp.h>

namespace zvlog {

namespace {

constexpr std::int64_t microseconds_per_second = 1000000;

// By Poco's numbering.
constexpr std::array<const char*, 9> priority_names{"",       "Fatal",       "Critical", "Error", "Warning",
                                                    "Notice", "Information", "Debug",    "Trace"};

void append_number(std::string& line, long number)
{
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    line.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

} // namespace

void LinePrefix::append_to(std::string& line, const Poco::Message& message)
{
    const std::int64_t time = message.getTime().epochMicroseconds();
    const std::int64_t second = time / microseconds_per_second;
    if (second != m_second) {
        m_date_and_time = Poco::DateTimeFormatter::format(message.getTime(), "%Y-%m-%dT%H:%M:%S.");
        m_second = second;
    }
    line += m_date_and_time;
    const auto milliseconds = static_cast<int>(time % microseconds_per_second / 1000);
    for (int unit = 100; unit > 0; unit /= 10)
        line += static_cast<char>('0' + milliseconds / unit % 10);
    line += "Z ";
    append_number(line, message.getPid());
    line += ' ';
    line += priority_names.at(static_cast<std::size_t>(message.getPriority()));
    line += ' ';
}

} // namespace zvlog

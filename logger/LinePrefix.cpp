#include "logger/LinePrefix.h"

#include <array>
#include <utility>

#include <Poco/DateTimeFormatter.h>
#include <Poco/Timestamp.h>

namespace zvlog {

namespace {

constexpr std::int64_t microseconds_per_second = 1000000;

// By Poco's numbering.
constexpr std::array<const char*, 9> priority_names{"",       "Fatal",       "Critical", "Error", "Warning",
                                                    "Notice", "Information", "Debug",    "Trace"};

} // namespace

void LinePrefix::append_to(std::string& line, const Poco::Message& message)
{
    const std::int64_t time = message.getTime().epochMicroseconds();
    if (time / microseconds_per_second != m_second || message.getPid() != m_process ||
        message.getPriority() != m_priority)
        form(message);
    auto rest = static_cast<int>(time % microseconds_per_second / 1000);
    for (std::size_t digit = 3; digit-- > 0; rest /= 10)
        m_text[m_milliseconds + digit] = static_cast<char>('0' + rest % 10);
    line += m_text;
}

void LinePrefix::form(const Poco::Message& message)
{
    std::string text = Poco::DateTimeFormatter::format(message.getTime(), "%Y-%m-%dT%H:%M:%S.");
    const std::size_t milliseconds = text.size();
    text += "000Z " + std::to_string(message.getPid()) + " ";
    text += priority_names.at(static_cast<std::size_t>(message.getPriority()));
    text += ' ';
    m_text = std::move(text);
    m_milliseconds = milliseconds;
    m_second = message.getTime().epochMicroseconds() / microseconds_per_second;
    m_process = message.getPid();
    m_priority = message.getPriority();
}

} // namespace zvlog

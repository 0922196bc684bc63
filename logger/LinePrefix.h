#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <Poco/Message.h>

namespace zvlog {

/// What a line of the default log begins with: time, process and priority. The same as Poco's formatter
/// writes for `pattern`, which forms all of it again for every line. For one thread.
class LinePrefix {
public:
    static constexpr const char* pattern = "%Y-%m-%dT%H:%M:%S.%iZ %P %p ";

    void append_to(std::string& line, const Poco::Message& message);

private:
    void form(const Poco::Message& message);

    // Of the last line. All but the milliseconds follows from the first three.
    std::int64_t m_second{-1};
    long m_process{-1};
    int m_priority{-1};
    std::string m_text;
    std::size_t m_milliseconds{0}; // where they are in the text
};

} // namespace zvlog

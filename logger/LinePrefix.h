#pragma once

#include <cstdint>
#include <string>

#include <Poco/Message.h>

namespace zvlog {

/// What a line of the default log begins with: time, process and priority. The same as Poco's formatter
/// writes for `pattern`, which computes the date again for every line. For one thread.
class LinePrefix {
public:
    static constexpr const char* pattern = "%Y-%m-%dT%H:%M:%S.%iZ %P %p ";

    void append_to(std::string& line, const Poco::Message& message);

private:
    std::int64_t m_second{-1};
    std::string m_date_and_time; // of that second
};

} // namespace zvlog

#include <string>

#include <Poco/Message.h>
#include <Poco/PatternFormatter.h>
#include <gtest/gtest.h>

#include "logger/LinePrefix.h"

namespace {

// Microseconds since 1970, in an order in which seconds, minutes, days and years change in both directions.
constexpr Poco::Timestamp::TimeVal times[] = {
    0,
    999999,
    1000000,
    1795305600000000,
    1795305600001999,
    1795305600010000,
    1795305600999999,
    1795305599999999,
    1795305661100000,
    1798761599999000,
    1798761600000000,
    1709164800123456, // 29 February
};

TEST(LinePrefix, IsThatOfPocosFormatter)
{
    Poco::PatternFormatter formatter(zvlog::LinePrefix::pattern);
    zvlog::LinePrefix prefix;
    for (const auto time : times) {
        for (int priority = Poco::Message::PRIO_FATAL; priority <= Poco::Message::PRIO_TRACE; ++priority) {
            Poco::Message message("source", "text", static_cast<Poco::Message::Priority>(priority));
            message.setTime(Poco::Timestamp(time));
            message.setPid(priority * 1001);
            std::string expected;
            formatter.format(message, expected);
            std::string line = "before ";
            prefix.append_to(line, message);
            EXPECT_EQ("before " + expected, line);
        }
    }
}

} // namespace

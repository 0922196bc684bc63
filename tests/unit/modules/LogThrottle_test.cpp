#include <array>
#include <string_view>

#include <gtest/gtest.h>

#include "modules/LogThrottle.h"

using zvgentl::Acquisition;
using zvgentl::LogThrottle;
using Mark = LogThrottle::Mark;
using Bypass = LogThrottle::Bypass;

namespace {

constexpr std::array<std::string_view, 3> throttled = {"EventGetData", "DSGetBufferInfo", "DSQueueBuffer"};

class Throttle : public testing::Test {
protected:
    bool idle(std::string_view function, Mark mark = Mark::no)
    {
        return m_throttle.is_due(function, Acquisition::idle, mark);
    }
    bool acquiring(std::string_view function, Mark mark = Mark::no)
    {
        return m_throttle.is_due(function, Acquisition::running, mark);
    }
    bool bypassed(std::string_view function, Acquisition acquisition, Mark mark)
    {
        return m_throttle.is_due(function, acquisition, mark, Bypass::yes);
    }

private:
    LogThrottle m_throttle;
};

TEST_F(Throttle, LogsEverythingWhileIdleAndOneMarkedCallOfAnAcquisition)
{
    for (const auto function : throttled) {
        SCOPED_TRACE(function);
        for (int acquisition = 0; acquisition < 2; ++acquisition) {
            EXPECT_TRUE(idle(function, Mark::yes)) << "which does not mark";
            EXPECT_TRUE(idle(function));
            EXPECT_TRUE(acquiring(function));
            EXPECT_TRUE(acquiring(function));
            EXPECT_TRUE(acquiring(function, Mark::yes));
            EXPECT_FALSE(acquiring(function));
            EXPECT_FALSE(acquiring(function, Mark::yes));
        }
    }
}

TEST_F(Throttle, StaysMarkedOverAnAcquisitionInWhichNobodyAskedWhileIdle)
{
    EXPECT_TRUE(acquiring("EventGetData", Mark::yes));
    EXPECT_TRUE(idle("DSQueueBuffer")) << "another function's";
    EXPECT_FALSE(acquiring("EventGetData"));
}

TEST_F(Throttle, TreatsEveryFunctionByItself)
{
    EXPECT_TRUE(acquiring("DSQueueBuffer", Mark::yes));
    EXPECT_FALSE(acquiring("DSQueueBuffer"));
    EXPECT_TRUE(acquiring("EventGetData"));
    EXPECT_TRUE(acquiring("DSGetBufferInfo"));
}

TEST_F(Throttle, AlwaysLogsAFunctionThatItDoesNotKnow)
{
    for (const std::string_view function :
         {"", "EventGetDataInfo", "EventGetDat", "DSFlushQueue", "eventgetdata"}) {
        EXPECT_TRUE(acquiring(function, Mark::yes)) << function;
        EXPECT_TRUE(acquiring(function, Mark::yes)) << function;
    }
}

TEST_F(Throttle, ChangesNothingWhenBypassed)
{
    EXPECT_TRUE(bypassed("EventGetData", Acquisition::running, Mark::yes));
    EXPECT_TRUE(acquiring("EventGetData", Mark::yes)) << "the bypass has used the line up";
    EXPECT_TRUE(bypassed("EventGetData", Acquisition::running, Mark::yes));
    EXPECT_TRUE(bypassed("EventGetData", Acquisition::idle, Mark::no));
    EXPECT_FALSE(acquiring("EventGetData")) << "the bypass has reset it";
}

} // namespace

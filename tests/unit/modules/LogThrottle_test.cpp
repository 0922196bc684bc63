#include <gtest/gtest.h>

#include "modules/LogThrottle.h"

using zvgentl::Acquisition;
using zvgentl::LogThrottle;
using Mark = LogThrottle::Mark;
using Bypass = LogThrottle::Bypass;
using Function = LogThrottle::Function;

namespace {

constexpr Function throttled[] = {Function::event_get_data, Function::ds_get_buffer_info,
                                  Function::ds_queue_buffer};

class Throttle : public testing::Test {
protected:
    bool idle(Function function, Mark mark = Mark::no)
    {
        return m_throttle.is_due(function, Acquisition::idle, mark);
    }
    bool acquiring(Function function, Mark mark = Mark::no)
    {
        return m_throttle.is_due(function, Acquisition::running, mark);
    }
    bool bypassed(Function function, Acquisition acquisition, Mark mark)
    {
        return m_throttle.is_due(function, acquisition, mark, Bypass::yes);
    }

private:
    LogThrottle m_throttle;
};

TEST_F(Throttle, LogsEverythingWhileIdleAndOneMarkedCallOfAnAcquisition)
{
    for (const auto function : throttled) {
        SCOPED_TRACE(static_cast<int>(function));
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
    EXPECT_TRUE(acquiring(Function::event_get_data, Mark::yes));
    EXPECT_TRUE(idle(Function::ds_queue_buffer)) << "another function's";
    EXPECT_FALSE(acquiring(Function::event_get_data));
}

TEST_F(Throttle, TreatsEveryFunctionByItself)
{
    EXPECT_TRUE(acquiring(Function::ds_queue_buffer, Mark::yes));
    EXPECT_FALSE(acquiring(Function::ds_queue_buffer));
    EXPECT_TRUE(acquiring(Function::event_get_data));
    EXPECT_TRUE(acquiring(Function::ds_get_buffer_info));
}

TEST_F(Throttle, ChangesNothingWhenBypassed)
{
    EXPECT_TRUE(bypassed(Function::event_get_data, Acquisition::running, Mark::yes));
    EXPECT_TRUE(acquiring(Function::event_get_data, Mark::yes)) << "the bypass has used the line up";
    EXPECT_TRUE(bypassed(Function::event_get_data, Acquisition::running, Mark::yes));
    EXPECT_TRUE(bypassed(Function::event_get_data, Acquisition::idle, Mark::no));
    EXPECT_FALSE(acquiring(Function::event_get_data)) << "the bypass has reset it";
}

} // namespace

#include <gtest/gtest.h>

#include "log/ScopeTimer.h"
#include "support/fixtures.h"

using zvgentl::At;
using zvgentl::ScopeTimer;
using zvtest::Priority;

namespace {

class Timer : public zvtest::Doubles {
protected:
    ZVPocoLogger* logger{log.logger("TimerTest.cpp")};
};

int leave_early(ZVPocoLogger* logger)
{
    const ScopeTimer timer(logger, "f", At{1855}, zvgentl::Priority::information);
    zvgentl::log_information(logger, "f", At{1}, "working");
    return 1;
}

} // namespace

TEST_F(Timer, LogsItsDurationAsTheLastLineOfTheScope)
{
    leave_early(logger);
    EXPECT_LOG_LINES({Priority::information, "working"}, {Priority::information, "duration: 12 usec", "f"});
    EXPECT_EQ(":TimerTest::{f}[1855] duration: 12 usec", log.lines().back().text.substr(11))
        << "without a colon after the number";
}

TEST_F(Timer, AsksForTheElapsedTimeOnce)
{
    log.answer_elapsed(INT64_C(5000000000));
    leave_early(logger);
    EXPECT_EQ(1U, log.elapsed_calls());
    EXPECT_LOGGED(Priority::information, "duration: 5000000000 usec");
}

TEST_F(Timer, LogsAtThePriorityThatItWasGiven)
{
    for (const auto priority :
         {zvgentl::Priority::fatal, zvgentl::Priority::error, zvgentl::Priority::warning,
          zvgentl::Priority::information, zvgentl::Priority::debug, zvgentl::Priority::trace}) {
        log.clear_lines();
        {
            const ScopeTimer timer(logger, "f", At{1}, priority);
        }
        EXPECT_LOG_LINES({static_cast<Priority>(priority), "duration: 12 usec"});
    }
}

TEST_F(Timer, IsSilentWithoutALoggerOrBelowItsLevel)
{
    leave_early(nullptr);
    log.set_level("TimerTest.cpp", Priority::error);
    leave_early(logger);
    EXPECT_LOG_LINES();
}

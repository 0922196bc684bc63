#include <algorithm>

#include <Poco/Message.h>
#include <gtest/gtest.h>

#include "support/FakeLoggerLibrary.h"
#include "support/log_expectations.h"

using namespace zvtest;

namespace {

// As the units of the producer do: before main() and before any function of this program has run.
ZVPocoLogger* const early_logger = InitLogger(nullptr, "Early.cpp", 0xFFFFFFFF);

class FakeLogger : public testing::Test {
protected:
    FakeLoggerLibrary& log{FakeLoggerLibrary::instance()};
    void SetUp() override { log.reset(); }
    void TearDown() override { log.reset(); }

    static void write(ZVPocoLogger& logger, Priority priority, const std::string& text)
    {
        logger.getChannel()->log(
            Poco::Message(logger.name(), text, static_cast<Poco::Message::Priority>(priority)));
    }
};

} // namespace

TEST_F(FakeLogger, HandsOutLoggersBeforeMain)
{
    ASSERT_NE(nullptr, early_logger);
    EXPECT_EQ("Early.cpp", early_logger->name());
    EXPECT_EQ(early_logger, InitLogger(nullptr, "Early.cpp", 0xFFFFFFFF));
    const auto calls = log.init_calls();
    const auto call = std::find_if(calls.begin(), calls.end(),
                                   [](const InitLoggerCall& each) { return each.name == "Early.cpp"; });
    ASSERT_NE(calls.end(), call);
    EXPECT_FALSE(call->text.has_value());
    EXPECT_EQ(0xFFFFFFFFU, call->priority);
}

TEST_F(FakeLogger, CapturesSourcePriorityAndText)
{
    write(*early_logger, Priority::warning, "thr00000001:Early::{f}[1]: hello");
    ASSERT_EQ(1U, log.lines().size());
    EXPECT_EQ("Early.cpp", log.lines()[0].source);
    EXPECT_LOGGED(Priority::warning, "hello", "f", "Early");
    EXPECT_NOT_LOGGED("other");
    EXPECT_LOG_LINES({Priority::warning, "hello"});
    EXPECT_EQ(std::vector<std::string>{"hello"}, logged_messages());
    log.clear_lines();
    EXPECT_LOG_LINES();
}

TEST_F(FakeLogger, TellsLinesApartThatDifferInOnePoint)
{
    write(*early_logger, Priority::warning, "thr00000001:Early::{f}[1]: hello");
    EXPECT_FALSE(logged({Priority::error, "hello"}));
    EXPECT_FALSE(logged({Priority::warning, "hello "}));
    EXPECT_FALSE(logged({Priority::warning, "hello", "g"}));
    EXPECT_FALSE(logged({Priority::warning, "hello", "f", "Late"}));
    EXPECT_FALSE(not_logged("hello"));
    EXPECT_FALSE(logged_exactly({}));
    EXPECT_FALSE(logged_exactly({{Priority::warning, "hello"}, {Priority::warning, "hello"}}));
}

TEST_F(FakeLogger, CanRefuseLoggers)
{
    log.refuse_loggers(true);
    EXPECT_EQ(nullptr, InitLogger(nullptr, "Refused.cpp", 0xFFFFFFFF));
    log.refuse_loggers(false);
    EXPECT_NE(nullptr, InitLogger(nullptr, "Refused.cpp", 0xFFFFFFFF));
    EXPECT_EQ(nullptr, InitLogger(nullptr, nullptr, 0xFFFFFFFF));
}

TEST_F(FakeLogger, HasSettableLevelsAndChannels)
{
    log.set_level("Early.cpp", Priority::error);
    EXPECT_EQ(3, early_logger->getLevel());
    log.set_level(Priority::debug);
    EXPECT_EQ(7, early_logger->getLevel());
    log.set_channel("Early.cpp", false);
    EXPECT_TRUE(early_logger->getChannel().isNull());
    log.reset();
    EXPECT_EQ(8, early_logger->getLevel());
    EXPECT_FALSE(early_logger->getChannel().isNull());
}

TEST_F(FakeLogger, CountsElapsedTimeQueries)
{
    const std::chrono::steady_clock::time_point start;
    EXPECT_EQ(12, ZVTimeElapsedUs(start));
    log.answer_elapsed(99);
    EXPECT_EQ(99, ZVTimeElapsedUs(start));
    EXPECT_EQ(2U, log.elapsed_calls());
}

#include <Poco/Message.h>
#include <gtest/gtest.h>

#include "support/FakeLoggerLibrary.h"
#include "support/FakeSettings.h"
#include "support/log_expectations.h"

// What the fakes of loggers and settings must tell apart.

using namespace zvtest;

TEST(FakeLogger, TellsLinesApartThatDifferInOnePoint)
{
    FakeLoggerLibrary::instance().reset();
    ZVPocoLogger& logger = *InitLogger(nullptr, "Early.cpp", 0xFFFFFFFF);
    logger.getChannel()->log(Poco::Message(logger.name(), "thr00000001:Early::{f}[1]: hello",
                                           static_cast<Poco::Message::Priority>(Priority::warning)));
    EXPECT_TRUE(logged({Priority::warning, "hello", "f", "Early"}));
    EXPECT_TRUE(logged_exactly({{Priority::warning, "hello"}}));
    EXPECT_TRUE(not_logged("other"));
    EXPECT_FALSE(logged({Priority::error, "hello"}));
    EXPECT_FALSE(logged({Priority::warning, "hello "}));
    EXPECT_FALSE(logged({Priority::warning, "hello", "g"}));
    EXPECT_FALSE(logged({Priority::warning, "hello", "f", "Late"}));
    EXPECT_FALSE(not_logged("hello"));
    EXPECT_FALSE(logged_exactly({}));
    EXPECT_FALSE(logged_exactly({{Priority::warning, "hello"}, {Priority::warning, "hello"}}));
    FakeLoggerLibrary::instance().reset();
}

TEST(FakeSettings, TellsReadsApartThatDifferInOnePoint)
{
    EXPECT_TRUE(plain_read("A", 4) == plain_read("A", 4));
    EXPECT_FALSE(plain_read("A", 4) == plain_read("B", 4));
    EXPECT_FALSE(plain_read("A", 4) == plain_read("A", 5));
    EXPECT_FALSE(plain_read("A", 4) == plain_read("A", 4, ""));
    EXPECT_FALSE(plain_read("A", 0xFFFFFFFF) == override_read("A"));
}

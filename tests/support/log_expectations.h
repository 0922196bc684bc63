#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/LogLine.h"

// What tests say about captured log lines.

namespace zvtest {

/// A line as a test expects it. Empty logger or function names match every line.
struct ExpectedLine {
    Priority priority;
    std::string message;
    std::string function{""};
    std::string logger{""};
};

/// The messages captured since the fixture's set-up or the last clear, in order.
std::vector<std::string> logged_messages();
/// How many captured lines have the message.
size_t times_logged(const std::string& message);

testing::AssertionResult logged(const ExpectedLine& expected);
testing::AssertionResult not_logged(const std::string& message);
/// Exactly these lines were captured, in this order.
testing::AssertionResult logged_exactly(const std::vector<ExpectedLine>& expected);

} // namespace zvtest

/// `EXPECT_LOGGED(Priority::error, "message")`, followed by function and logger names where they matter.
#define EXPECT_LOGGED(...) EXPECT_TRUE(::zvtest::logged({__VA_ARGS__}))
#define EXPECT_NOT_LOGGED(message) EXPECT_TRUE(::zvtest::not_logged(message))
/// `EXPECT_LOG_LINES({Priority::information, "Enter TLOpen"}, {Priority::information, "..."})`; empty:
/// silent.
#define EXPECT_LOG_LINES(...) EXPECT_TRUE(::zvtest::logged_exactly({__VA_ARGS__}))

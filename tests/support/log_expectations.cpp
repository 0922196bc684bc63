#include "support/log_expectations.h"

#include <algorithm>
#include <sstream>

#include "support/FakeLoggerLibrary.h"

namespace zvtest {

namespace {

bool is_as_expected(const LogLine& line, const ExpectedLine& expected)
{
    return line.priority == expected.priority && line.message == expected.message &&
           (expected.function.empty() || line.function == expected.function) &&
           (expected.logger.empty() || line.logger == expected.logger);
}

std::string listed(const std::vector<LogLine>& lines)
{
    std::ostringstream text;
    for (const LogLine& line : lines)
        text << "\n  " << line;
    return lines.empty() ? "\n  (no lines)" : text.str();
}

std::string listed(const std::vector<ExpectedLine>& lines)
{
    std::ostringstream text;
    for (const ExpectedLine& line : lines)
        text << "\n  <" << name_of(line.priority) << "> " << line.message;
    return lines.empty() ? "\n  (no lines)" : text.str();
}

} // namespace

std::vector<std::string> logged_messages()
{
    std::vector<std::string> messages;
    for (const LogLine& line : FakeLoggerLibrary::instance().lines())
        messages.push_back(line.message);
    return messages;
}

size_t times_logged(const std::string& message)
{
    const std::vector<std::string> messages = logged_messages();
    return static_cast<size_t>(std::count(messages.begin(), messages.end(), message));
}

testing::AssertionResult logged(const ExpectedLine& expected)
{
    const std::vector<LogLine> lines = FakeLoggerLibrary::instance().lines();
    const bool found = std::any_of(lines.begin(), lines.end(),
                                   [&](const LogLine& line) { return is_as_expected(line, expected); });
    if (found)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "not logged:" << listed(std::vector<ExpectedLine>{expected})
                                       << "\nwhat was logged:" << listed(lines);
}

testing::AssertionResult not_logged(const std::string& message)
{
    if (times_logged(message) == 0)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "logged although it should not be: " << message;
}

testing::AssertionResult logged_exactly(const std::vector<ExpectedLine>& expected)
{
    const std::vector<LogLine> lines = FakeLoggerLibrary::instance().lines();
    if (std::equal(lines.begin(), lines.end(), expected.begin(), expected.end(), is_as_expected))
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "expected exactly:" << listed(expected) << "\nwhat was logged:" << listed(lines);
}

} // namespace zvtest

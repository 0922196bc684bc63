#include <map>
#include <string>

#include <gtest/gtest.h>

#include "log/Log.h"
#include "support/fixtures.h"
#include "support/on_threads.h"

using zvgentl::At;

namespace {

class KeptMessages : public zvtest::Doubles {
protected:
    ZVPocoLogger* logger{log.logger("KeptTest.cpp")};
};

} // namespace

TEST_F(KeptMessages, CarryTheLinesOfManyThreads)
{
    constexpr int each = 200;
    for (int round = 0; round < 8; ++round) // threads with the numbers of earlier ones' places
        zvtest::on_threads([&](int thread) {
            for (int line = 0; line < each; ++line)
                zvgentl::log_error(logger, "f", At{1}, "%d", thread);
        });
    std::map<std::string, int> counts;
    for (const zvtest::LogLine& line : log.lines())
        ++counts[line.message];
    EXPECT_EQ(
        (std::map<std::string, int>{{"0", 8 * each}, {"1", 8 * each}, {"2", 8 * each}, {"3", 8 * each}}),
        counts);
}

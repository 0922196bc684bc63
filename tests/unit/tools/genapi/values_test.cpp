#include <limits>

#include <gtest/gtest.h>

#include "genapi/values.h"

namespace zvgentl::test {

using namespace tool;

namespace {

using Names = std::vector<std::string>;

Feature with_limits(Value minimum, Value maximum, Value increment)
{
    Feature feature;
    feature.minimum = std::move(minimum);
    feature.maximum = std::move(maximum);
    feature.increment = std::move(increment);
    return feature;
}

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();

} // namespace

TEST(Values, AreWrittenSoThatTheyCanBeReadAgain)
{
    EXPECT_EQ("", to_text(Value()));
    EXPECT_EQ("true", to_text(Value(true)));
    EXPECT_EQ("-9223372036854775808", to_text(Value(lowest)));
    EXPECT_EQ("0xFFFFFFFFFFFFFFFF", to_text(Value(std::int64_t{-1}), Notation::hexadecimal));
    EXPECT_EQ("00:1B:19:00:00:2A", to_text(Value(std::int64_t{0x1B1900002A}), Notation::mac_address));
    EXPECT_EQ("0.1", to_text(Value(0.1)));
    EXPECT_EQ("1000000", to_text(Value(1e6)));
    EXPECT_EQ("1e+300", to_text(Value(1e300)));
    EXPECT_EQ("0", to_text(Value(0.0)));
}

TEST(Values, AreParsedInEveryNotation)
{
    EXPECT_EQ(-5, parse_integer("-5", Notation::decimal));
    EXPECT_EQ(5, parse_integer("+5", Notation::decimal));
    EXPECT_EQ(-1, parse_integer("0xFFFFFFFFFFFFFFFF", Notation::decimal));
    EXPECT_EQ(0x1B1900002A, parse_integer("00:1b:19:00:00:2A", Notation::mac_address));
    EXPECT_EQ(std::nullopt, parse_integer("00:1b:19:00:00:2A", Notation::decimal));
    EXPECT_EQ(std::nullopt, parse_integer("0x10000000000000000", Notation::decimal));
    EXPECT_EQ(std::nullopt, parse_integer("+-5", Notation::decimal));
    EXPECT_EQ(2.5e-3, parse_float("2.5e-3"));
    EXPECT_EQ(std::nullopt, parse_float("+"));
}

TEST(Values, ShowTheirRange)
{
    EXPECT_EQ("", range_text(with_limits({}, {}, {})));
    EXPECT_EQ("from 1", range_text(with_limits(std::int64_t{1}, {}, {})));
    EXPECT_EQ("up to 1.5", range_text(with_limits({}, 1.5, {})));
    EXPECT_EQ("steps of 4", range_text(with_limits({}, {}, std::int64_t{4})));
}

TEST(Values, CountStepsFromTheMinimum)
{
    const Feature odd = with_limits(std::int64_t{-3}, std::int64_t{5}, std::int64_t{2});
    EXPECT_TRUE(is_allowed(odd, std::int64_t{-3}));
    EXPECT_TRUE(is_allowed(odd, std::int64_t{5}));
    EXPECT_FALSE(is_allowed(odd, std::int64_t{0}));
    const Feature wide = with_limits(lowest, highest, std::int64_t{5});
    EXPECT_TRUE(is_allowed(wide, highest)) << "2^64 - 1 is a multiple of 5";
    EXPECT_FALSE(is_allowed(wide, highest - 1));
    EXPECT_TRUE(is_allowed(with_limits({}, {}, std::int64_t{5}), std::int64_t{-10}));
}

TEST(NearNames, AreThoseThatMayHaveBeenMeant)
{
    const Names names{"Width", "Height", "WidthMax", "ExposureTime", "ExposureMode", "Gain"};
    EXPECT_EQ((Names{"Width"}), near_names("width", names));
    EXPECT_EQ((Names{"Height"}), near_names("Heigth", names));
    EXPECT_EQ((Names{"ExposureMode", "ExposureTime"}), near_names("Exposure", names));
    EXPECT_EQ(Names{}, near_names("Zoom", names));
    EXPECT_EQ(Names{}, near_names("", names));
    EXPECT_EQ(Names{}, near_names(std::string(100000, 'x'), names));
}

} // namespace zvgentl::test

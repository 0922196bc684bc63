#include <vector>

#include <gmock/gmock.h>

#include "simulator/faults/RuleState.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using namespace zvsim;

constexpr Place a_camera{1, 2};
constexpr Place another_camera{1, 3};

/// A rule that drops frames, or one that lets calls fail.
FaultRule rule_of(FaultKind kind, const Trigger& when = {}, const Place& place = {})
{
    FaultRule rule;
    rule.kind = kind;
    rule.when = when;
    rule.place = place;
    return rule;
}

RuleState state_of(const FaultRule& rule, uint64_t seed = 1, size_t number = 0)
{
    constexpr size_t grabbers = 4;
    return RuleState{rule, seed, number, grabbers};
}

/// Of dropped frames.
RuleState with_chance(double probability, uint64_t seed = 1, size_t number = 0)
{
    Trigger when;
    when.probability = probability;
    return state_of(rule_of(FaultKind::frame_dropped, when), seed, number);
}

Occasion at_frame(uint64_t frame, const Place& place = a_camera) { return {place, frame, {}, {}, {}}; }

/// The opportunities, counted from 0, at which the fault happens. At frames the first one is `first_frame`.
std::vector<uint64_t> happens_at(RuleState state, uint64_t opportunities, uint64_t first_frame = 0)
{
    std::vector<uint64_t> happened;
    for (uint64_t i = 0; i < opportunities; ++i) {
        if (state.happens(at_frame(first_frame + i)))
            happened.push_back(i);
    }
    return happened;
}

TEST(FaultTriggers, TakeTheOpportunitiesThatTheyName)
{
    FaultRule rule = rule_of(FaultKind::call_fails);
    EXPECT_THAT(happens_at(state_of(rule), 3), ElementsAre(0, 1, 2));
    rule.times = 2;
    EXPECT_THAT(happens_at(state_of(rule), 10), ElementsAre(0, 1));
    Trigger when;
    when.first = when.last = 2;
    EXPECT_THAT(happens_at(state_of(rule_of(FaultKind::call_fails, when)), 10), ElementsAre(2));
    when.first = 1;
    when.every = 3;
    when.last = 8;
    EXPECT_THAT(happens_at(state_of(rule_of(FaultKind::call_fails, when)), 20), ElementsAre(1, 4, 7));
    when = {};
    when.is_by_frame = true; // by the numbers of frames, and not by their count
    when.first = 100;
    when.last = 101;
    EXPECT_THAT(happens_at(state_of(rule_of(FaultKind::frame_dropped, when)), 5, 99), ElementsAre(1, 2));
}

TEST(FaultTriggers, WaitForATimeSinceTheFirstScanOrTheStart)
{
    const Clock::time_point begin{10s};
    Trigger when;
    when.after = 2s;
    RuleState since_scan = state_of(rule_of(FaultKind::call_fails, when));
    EXPECT_FALSE(since_scan.happens({a_camera, 0, begin + 1999ms, begin, {}}));
    EXPECT_TRUE(since_scan.happens({a_camera, 0, begin + 2s, begin, {}}));
    when.since = Trigger::Since::start;
    RuleState since_start = state_of(rule_of(FaultKind::frame_dropped, when));
    EXPECT_FALSE(since_start.happens({a_camera, 0, begin + 1999ms, {}, begin}));
    EXPECT_TRUE(since_start.happens({a_camera, 0, begin + 2s, {}, begin}));
}

TEST(FaultTriggers, ByChanceDependOnSeedAndRuleAndOnNothingElse)
{
    const auto first = happens_at(with_chance(0.3, 1, 0), 1000);
    EXPECT_EQ(first, happens_at(with_chance(0.3, 1, 0), 1000));
    EXPECT_NE(first, happens_at(with_chance(0.3, 2, 0), 1000));
    EXPECT_NE(first, happens_at(with_chance(0.3, 1, 1), 1000));
}

TEST(FaultTriggers, ByChanceHappenAboutAsOftenAsTheySay)
{
    EXPECT_THAT(happens_at(with_chance(0), 1000), ElementsAre());
    EXPECT_NEAR(3000.0, static_cast<double>(happens_at(with_chance(0.3), 10000).size()), 200.0);
    EXPECT_EQ(1000U, happens_at(with_chance(1), 1000).size());
}

TEST(FaultTriggers, OfTwoCamerasDifferAndDoNotDisturbEachOther)
{
    RuleState state = with_chance(0.3);
    std::vector<uint64_t> of_one;
    std::vector<uint64_t> of_other;
    for (uint64_t i = 0; i < 100; ++i) {
        if (state.happens(at_frame(i, another_camera)))
            of_other.push_back(i);
        if (state.happens(at_frame(i)))
            of_one.push_back(i);
    }
    EXPECT_EQ(happens_at(with_chance(0.3), 100), of_one);
    EXPECT_NE(of_one, of_other);
}

TEST(FaultTriggers, ConcernThePlaceThatTheyName)
{
    const Place places[] = {a_camera, another_camera, {1, Place::none}, {0, 2}, {}};
    const auto concerned = [&places](const Place& wanted) {
        std::string answers;
        for (const Place& place : places)
            answers += state_of(rule_of(FaultKind::call_fails, {}, wanted)).concerns(place) ? '+' : '-';
        return answers;
    };
    EXPECT_EQ("+++++", concerned({}));
    EXPECT_EQ("+++--", concerned({1, Place::none}));
    EXPECT_EQ("+----", concerned(a_camera));
}

} // namespace

#include <vector>

#include <gmock/gmock.h>

#include "simulator/faults/RuleState.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using zvsim::Clock;
using zvsim::FaultKind;
using zvsim::FaultRule;
using zvsim::Occasion;
using zvsim::Place;
using zvsim::RuleState;
using zvsim::Trigger;

constexpr size_t grabbers = 4;
constexpr Place a_camera{1, 2};
constexpr Place another_camera{1, 3};

FaultRule rule_of(FaultKind kind, const Trigger& when = {})
{
    FaultRule rule;
    rule.kind = kind;
    rule.when = when;
    return rule;
}

RuleState state_of(const FaultRule& rule, uint64_t seed = 1, size_t number = 0)
{
    return RuleState{rule, seed, number, grabbers};
}

Occasion at_frame(uint64_t frame, const Place& place = a_camera) { return {place, frame, {}, {}, {}}; }

/// Those of the first opportunities, counted from 0, at which the fault happens.
std::vector<uint64_t> happens_at(RuleState& state, uint64_t opportunities, const Place& place = a_camera)
{
    std::vector<uint64_t> happened;
    for (uint64_t i = 0; i < opportunities; ++i) {
        if (state.happens(at_frame(i, place)))
            happened.push_back(i);
    }
    return happened;
}

FaultRule sometimes()
{
    FaultRule rule = rule_of(FaultKind::frame_dropped);
    rule.when.probability = 0.3;
    return rule;
}

TEST(FaultTriggers, WithoutConditionsEveryOpportunityIsTaken)
{
    RuleState state = state_of(rule_of(FaultKind::frame_dropped));
    EXPECT_THAT(happens_at(state, 3), ElementsAre(0, 1, 2));
}

TEST(FaultTriggers, OneCallIsMeantByItsNumber)
{
    Trigger third;
    third.first = third.last = 2;
    RuleState state = state_of(rule_of(FaultKind::call_fails, third));
    EXPECT_THAT(happens_at(state, 10), ElementsAre(2));
}

TEST(FaultTriggers, EveryNthIsCountedFromTheFirst)
{
    Trigger when;
    when.first = 1;
    when.every = 3;
    when.last = 8;
    RuleState state = state_of(rule_of(FaultKind::call_fails, when));
    EXPECT_THAT(happens_at(state, 20), ElementsAre(1, 4, 7));
}

TEST(FaultTriggers, FramesAreMeantByTheirNumberAndNotByTheirCount)
{
    Trigger when;
    when.is_by_frame = true;
    when.first = 100;
    when.last = 101;
    RuleState state = state_of(rule_of(FaultKind::frame_dropped, when));
    EXPECT_FALSE(state.happens(at_frame(99)));
    EXPECT_TRUE(state.happens(at_frame(100)));
    EXPECT_TRUE(state.happens(at_frame(101)));
    EXPECT_FALSE(state.happens(at_frame(102)));
}

TEST(FaultTriggers, TimesEndsTheFault)
{
    FaultRule rule = rule_of(FaultKind::call_fails);
    rule.times = 2;
    RuleState state = state_of(rule);
    EXPECT_THAT(happens_at(state, 10), ElementsAre(0, 1));
}

TEST(FaultTriggers, TimeIsThatSinceTheFirstScan)
{
    Trigger when;
    when.after = 2s;
    RuleState state = state_of(rule_of(FaultKind::call_fails, when));
    const Clock::time_point scan{10s};
    EXPECT_FALSE(state.happens({a_camera, 0, scan + 1999ms, scan, {}}));
    EXPECT_TRUE(state.happens({a_camera, 0, scan + 2s, scan, {}}));
}

TEST(FaultTriggers, TimeCanBeThatSinceTheStart)
{
    Trigger when;
    when.after = 2s;
    when.since = Trigger::Since::start;
    RuleState state = state_of(rule_of(FaultKind::frame_dropped, when));
    const Clock::time_point start{10s};
    EXPECT_FALSE(state.happens({a_camera, 0, start + 1s, {}, start}));
    EXPECT_TRUE(state.happens({a_camera, 0, start + 2s, {}, start}));
}

TEST(FaultTriggers, ChanceIsTheSameInEveryRun)
{
    RuleState first = state_of(sometimes());
    RuleState second = state_of(sometimes());
    EXPECT_EQ(happens_at(first, 1000), happens_at(second, 1000));
}

TEST(FaultTriggers, ChanceDependsOnTheSeed)
{
    RuleState first = state_of(sometimes(), 1);
    RuleState second = state_of(sometimes(), 2);
    EXPECT_NE(happens_at(first, 1000), happens_at(second, 1000));
}

TEST(FaultTriggers, ChanceDependsOnTheRule)
{
    RuleState first = state_of(sometimes(), 1, 0);
    RuleState second = state_of(sometimes(), 1, 1);
    EXPECT_NE(happens_at(first, 1000), happens_at(second, 1000));
}

TEST(FaultTriggers, ChanceIsAboutAsOftenAsItSays)
{
    RuleState state = state_of(sometimes());
    EXPECT_NEAR(3000.0, static_cast<double>(happens_at(state, 10000).size()), 200.0);
}

TEST(FaultTriggers, ChanceOfZeroNeverAndOfOneAlwaysHappens)
{
    FaultRule rule = sometimes();
    rule.when.probability = 0;
    RuleState never = state_of(rule);
    EXPECT_THAT(happens_at(never, 1000), ElementsAre());
    rule.when.probability = 1;
    RuleState always = state_of(rule);
    EXPECT_EQ(1000u, happens_at(always, 1000).size());
}

TEST(FaultTriggers, FramesOfTwoCamerasDoNotDisturbEachOther)
{
    RuleState alone = state_of(sometimes());
    const auto undisturbed = happens_at(alone, 100);
    RuleState state = state_of(sometimes());
    std::vector<uint64_t> happened;
    for (uint64_t i = 0; i < 100; ++i) {
        state.happens(at_frame(i, another_camera));
        if (state.happens(at_frame(i)))
            happened.push_back(i);
        state.happens(at_frame(1000 + i, another_camera));
    }
    EXPECT_EQ(undisturbed, happened);
}

TEST(FaultTriggers, CamerasOfOneRuleSufferFromItAtDifferentFrames)
{
    RuleState state = state_of(sometimes());
    const auto of_one = happens_at(state, 100);
    EXPECT_NE(of_one, happens_at(state, 100, another_camera));
}

TEST(FaultTriggers, PlaceWithoutIndicesIsEverywhere)
{
    const RuleState state = state_of(rule_of(FaultKind::call_fails));
    EXPECT_TRUE(state.concerns(a_camera));
    EXPECT_TRUE(state.concerns({}));
}

TEST(FaultTriggers, PlaceWithAGrabberIsAllOfItAndNothingElse)
{
    FaultRule rule = rule_of(FaultKind::call_fails);
    rule.place.grabber = 1;
    const RuleState state = state_of(rule);
    EXPECT_TRUE(state.concerns(a_camera));
    EXPECT_TRUE(state.concerns({1, Place::none}));
    EXPECT_FALSE(state.concerns({0, 2}));
    EXPECT_FALSE(state.concerns({}));
}

TEST(FaultTriggers, PlaceWithACameraIsThatOne)
{
    FaultRule rule = rule_of(FaultKind::call_fails);
    rule.place = a_camera;
    const RuleState state = state_of(rule);
    EXPECT_TRUE(state.concerns(a_camera));
    EXPECT_FALSE(state.concerns(another_camera));
    EXPECT_FALSE(state.concerns({1, Place::none}));
}

} // namespace

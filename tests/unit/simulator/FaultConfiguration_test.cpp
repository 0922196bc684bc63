#include "simulator/faults/FaultPlan.h"
#include "unit/simulator/configuration_texts.h"

// What a file says about faults. What it must not say is in ConfigurationErrors_test.cpp.

namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;
using zvsim::FaultKind;
using zvsim::FaultPlan;
using zvsim::FaultRule;
using zvsim::Function;
using zvsim::Place;
using zvsim::Trigger;
using zvsim_test::absolute_path;

FaultPlan plan_of(const std::string& text)
{
    const auto configuration = zvsim_test::configured_by(text);
    EXPECT_THAT(configuration->errors, IsEmpty()) << text;
    return configuration->faults;
}

/// The one fault of a text such as "kind: scan-fails".
FaultRule fault(const std::string& text)
{
    const FaultPlan plan = plan_of("faults: [{" + text + "}]");
    EXPECT_EQ(1U, plan.faults.size()) << text;
    return plan.faults.empty() ? FaultRule{} : plan.faults.front();
}

TEST(FaultConfiguration, NothingIsNoFault)
{
    const FaultPlan plan = plan_of("{}");
    EXPECT_TRUE(plan.is_enabled);
    EXPECT_THAT(plan.faults, IsEmpty());
    EXPECT_EQ("", plan.call_log.u8string());
}

TEST(FaultConfiguration, ReadsSeedSwitchAndLog)
{
    const FaultPlan plan = plan_of("seed: 42\nfaults_enabled: false\ncall_log: " + absolute_path("/a/b.log"));
    EXPECT_EQ(42U, plan.seed);
    EXPECT_FALSE(plan.is_enabled);
    EXPECT_EQ(absolute_path("/a/b.log"), plan.call_log.u8string());
}

TEST(FaultConfiguration, EveryKindIsKnownByItsName)
{
    for (size_t i = 0; i < zvsim::fault_kind_count; ++i) {
        const auto kind = static_cast<FaultKind>(i);
        const std::string name{row_of(kind).name};
        const std::string parameters = std::string{row_of(kind).has_time ? ", time: 1 ms" : ""} +
                                       (name.rfind("call-", 0) == 0 ? ", function: ZVGR_CameraInfo2" : "");
        EXPECT_EQ(kind, fault("kind: " + name + parameters).kind) << name;
    }
}

/// The keys of a fault, and whether it is read as they say.
struct Reading {
    const char* name;
    const char* keys;
    bool (*is_right)(const FaultRule& rule);
};

void PrintTo(const Reading& reading, std::ostream* out) { *out << reading.keys; }

constexpr uint64_t no_end = std::numeric_limits<uint64_t>::max();

bool is_when(const Trigger& when, uint64_t first, uint64_t every, uint64_t last, bool is_by_frame)
{
    return when.first == first && when.every == every && when.last == last && when.is_by_frame == is_by_frame;
}

const Reading readings[] = {
    {"Everywhere", "kind: scan-fails",
     [](const FaultRule& rule) {
         return rule.place.grabber == Place::none && rule.place.camera == Place::none;
     }},
    {"AtACamera", "kind: camera-open-fails, grabber: 1, camera: 2",
     [](const FaultRule& rule) { return rule.place.grabber == 1 && rule.place.camera == 2; }},
    {"AtTheFirstGrabber", "kind: camera-open-fails, grabber: 0",
     [](const FaultRule& rule) { return rule.place.grabber == 0 && rule.place.camera == Place::none; }},
    {"OneCallCountedFromOne", "kind: scan-fails, when: {call: 3}",
     [](const FaultRule& rule) { return is_when(rule.when, 2, 1, 2, false); }},
    {"EveryFromACallOn", "kind: scan-fails, when: {call: 3, every: 2, until: 9}",
     [](const FaultRule& rule) { return is_when(rule.when, 2, 2, 8, false); }},
    {"EveryAlone", "kind: frame-dropped, when: {every: 10}",
     [](const FaultRule& rule) { return is_when(rule.when, 9, 10, no_end, true); }},
    {"FramesCountedFromZero", "kind: frame-dropped, when: {frame: 5, until: 7}",
     [](const FaultRule& rule) { return is_when(rule.when, 5, 1, 7, true); }},
    {"TimeAndChance", "kind: frame-dropped, when: {after: 2 s, since: start, probability: 0.25}",
     [](const FaultRule& rule) {
         return rule.when.after == 2s && rule.when.since == Trigger::Since::start &&
                rule.when.probability == 0.25;
     }},
    {"AnyFunctionAndStatus", "kind: call-fails, function: ZVGR_CameraInfo2, status: 0x3123, times: 2",
     [](const FaultRule& rule) {
         return rule.functions == zvsim::functions(Function::camera_info) && rule.status == 0x3123 &&
                rule.times == 2;
     }},
    {"PresetOfANumber", "kind: camera-count-too-large",
     [](const FaultRule& rule) { return rule.amount == 17; }},
    {"NumberByItsOwnName", "kind: camera-count-too-large, count: 40",
     [](const FaultRule& rule) { return rule.amount == 40; }},
    {"NegativeNumber", "kind: frame-id-jumps, by: -5",
     [](const FaultRule& rule) { return rule.amount == -5; }},
    {"NameOfAValue", "kind: value-not-available, name: Width",
     [](const FaultRule& rule) { return rule.name == "Width"; }},
    {"CommandOfAQuery", "kind: stream-info-fails, command: 4",
     [](const FaultRule& rule) { return rule.command == 4U; }},
    {"Absence", "kind: camera-lost-while-opening, away_for_scans: 2, away_for: 3 s",
     [](const FaultRule& rule) { return rule.absence.scans == 2U && rule.absence.time == 3s; }},
};

class FaultReading : public testing::TestWithParam<Reading> {};

TEST_P(FaultReading, IsRight) { EXPECT_TRUE(GetParam().is_right(fault(GetParam().keys))); }

INSTANTIATE_TEST_SUITE_P(Of, FaultReading, testing::ValuesIn(readings),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaultConfiguration, ReadsEvents)
{
    const auto events = plan_of("events:\n"
                                "- {at: 2 s, do: unplug, grabber: 0, camera: 1}\n"
                                "- {scan: 3, do: plug, grabber: 2}\n")
                            .events;
    ASSERT_EQ(2U, events.size());
    EXPECT_EQ(2s, events[0].at);
    EXPECT_FALSE(events[0].is_plugged);
    EXPECT_EQ(1U, events[0].place.camera);
    EXPECT_EQ(3U, events[1].scan);
    EXPECT_TRUE(events[1].is_plugged);
    EXPECT_EQ(2U, events[1].place.grabber);
    EXPECT_EQ(Place::none, events[1].place.camera);
}

} // namespace

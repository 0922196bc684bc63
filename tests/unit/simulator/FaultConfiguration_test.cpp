#include <tuple>

#include "simulator/faults/FaultPlan.h"
#include "unit/simulator/configuration_texts.h"

// What a file says about faults. What it must not say is in ConfigurationErrors_test.cpp.

namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;
using namespace zvsim;
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

TEST(FaultConfiguration, HasNoFaultsUnlessTheFileNamesThemAndReadsSeedSwitchAndLog)
{
    const FaultPlan nothing = plan_of("{}");
    EXPECT_TRUE(nothing.is_enabled);
    EXPECT_THAT(nothing.faults, IsEmpty());
    EXPECT_EQ("", nothing.call_log.u8string());
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

TEST(FaultConfiguration, ReadsPlaces)
{
    const std::tuple<const char*, uint32_t, uint32_t> rows[] = {
        {"", Place::none, Place::none}, {", grabber: 0", 0, Place::none}, {", grabber: 1, camera: 2", 1, 2}};
    for (const auto& [keys, grabber, camera] : rows) {
        const Place place = fault(std::string{"kind: camera-open-fails"} + keys).place;
        EXPECT_EQ(std::pair(grabber, camera), std::pair(place.grabber, place.camera)) << keys;
    }
}

TEST(FaultConfiguration, ReadsTriggers)
{
    using When = std::tuple<uint64_t, uint64_t, uint64_t, bool>;
    constexpr uint64_t no_end = std::numeric_limits<uint64_t>::max();
    const std::pair<const char*, When> rows[] = {
        {"kind: scan-fails, when: {call: 3}", {2, 1, 2, false}},
        {"kind: scan-fails, when: {call: 3, every: 2, until: 9}", {2, 2, 8, false}},
        {"kind: frame-dropped, when: {every: 10}", {9, 10, no_end, true}},
        {"kind: frame-dropped, when: {frame: 5, until: 7}", {5, 1, 7, true}}};
    for (const auto& [keys, expected] : rows) {
        const Trigger when = fault(keys).when;
        EXPECT_EQ(expected, When(when.first, when.every, when.last, when.is_by_frame)) << keys;
    }
    const Trigger when =
        fault("kind: frame-dropped, when: {after: 2 s, since: start, probability: 0.25}").when;
    EXPECT_EQ(2s, when.after);
    EXPECT_EQ(Trigger::Since::start, when.since);
    EXPECT_EQ(0.25, when.probability);
}

TEST(FaultConfiguration, ReadsWhatAFaultIsAboutAndWhatItDoes)
{
    const FaultRule call = fault("kind: call-fails, function: ZVGR_CameraInfo2, status: 0x3123, times: 2");
    EXPECT_EQ(zvsim::functions(Function::camera_info), call.functions);
    EXPECT_EQ(0x3123U, call.status);
    EXPECT_EQ(2U, call.times);
    EXPECT_EQ(17, fault("kind: camera-count-too-large").amount);
    EXPECT_EQ(40, fault("kind: camera-count-too-large, count: 40").amount);
    EXPECT_EQ(-5, fault("kind: frame-id-jumps, by: -5").amount);
    EXPECT_EQ("Width", fault("kind: value-not-available, name: Width").name);
    EXPECT_EQ(4U, fault("kind: stream-info-fails, command: 4").command);
    const auto absence = fault("kind: camera-lost-while-opening, away_for_scans: 2, away_for: 3 s").absence;
    EXPECT_EQ(2U, absence.scans);
    EXPECT_EQ(3s, absence.time);
}

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

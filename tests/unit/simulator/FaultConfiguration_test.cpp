#include <gmock/gmock.h>

#include "simulator/faults/FaultConfiguration.h"
#include "unit/simulator/configuration_texts.h"

namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using zvsim::fault_keys;
using zvsim::FaultKind;
using zvsim::FaultPlan;
using zvsim::FaultRule;
using zvsim::Function;
using zvsim::functions;
using zvsim::Place;
using zvsim::Trigger;
using zvsim::YamlDocument;
using zvsim::YamlErrors;
using zvsim::YamlKeys;
using zvsim::YamlMap;
using zvsim::YamlValue;
using zvsim_test::absolute_path;

/// What a text makes, and what it reports.
struct Reading {
    explicit Reading(const std::string& text)
    {
        YamlErrors found{"faults.yaml"};
        const YamlDocument document{text, found};
        static const YamlKeys keys{"file", fault_keys()};
        plan = zvsim::read_fault_plan(YamlMap{YamlValue{document.root(), "the file", found}, keys});
        errors = found.lines();
    }

    FaultPlan plan;
    std::vector<std::string> errors;
};

/// The one fault of a text such as "kind: scan-fails".
FaultRule fault(const std::string& text)
{
    const Reading reading{"faults: [{" + text + "}]"};
    EXPECT_THAT(reading.errors, IsEmpty()) << text;
    EXPECT_EQ(1u, reading.plan.faults.size()) << text;
    return reading.plan.faults.empty() ? FaultRule{} : reading.plan.faults.front();
}

/// What the one fault of a text reports.
std::vector<std::string> errors_of(const std::string& text)
{
    return Reading{"seed: 1\nfaults:\n- {" + text + "}\n"}.errors;
}

TEST(FaultConfiguration, NothingIsNoFault)
{
    const Reading reading{"{}"};
    EXPECT_THAT(reading.errors, IsEmpty());
    EXPECT_TRUE(reading.plan.is_enabled);
    EXPECT_THAT(reading.plan.faults, IsEmpty());
    EXPECT_EQ("", reading.plan.call_log.u8string());
}

TEST(FaultConfiguration, ReadsSeedSwitchAndLog)
{
    const Reading reading{"seed: 42\nfaults_enabled: false\ncall_log: " + absolute_path("/a/b.log") + "\n"};
    EXPECT_THAT(reading.errors, IsEmpty());
    EXPECT_EQ(42u, reading.plan.seed);
    EXPECT_FALSE(reading.plan.is_enabled);
    EXPECT_EQ(absolute_path("/a/b.log"), reading.plan.call_log.u8string());
}

TEST(FaultConfiguration, LogNeedsAnAbsolutePath)
{
    EXPECT_THAT(Reading{"call_log: b.log"}.errors,
                ElementsAre(AllOf(StartsWith("faults.yaml:1:"), HasSubstr("the absolute path of a file"))));
}

TEST(FaultConfiguration, EveryKindIsKnownByItsName)
{
    for (size_t i = 0; i < zvsim::fault_kind_count; ++i) {
        const auto kind = static_cast<FaultKind>(i);
        const auto& row = row_of(kind);
        const std::string parameters =
            std::string{row.has_time ? ", time: 1 ms" : ""} +
            (std::string{row.name}.rfind("call-", 0) == 0 ? ", function: ZVGR_CameraInfo2" : "");
        EXPECT_EQ(kind, fault("kind: " + std::string{row.name} + parameters).kind) << row.name;
        EXPECT_EQ(kind, zvsim::find_fault_kind(row.name));
    }
}

TEST(FaultConfiguration, FaultIsEverywhereUnlessItSaysWhere)
{
    EXPECT_EQ(Place::none, fault("kind: scan-fails").place.grabber);
    const Place place = fault("kind: camera-open-fails, grabber: 1, camera: 2").place;
    EXPECT_EQ(1u, place.grabber);
    EXPECT_EQ(2u, place.camera);
}

TEST(FaultConfiguration, CallIsCountedFromOne)
{
    const Trigger when = fault("kind: scan-fails, when: {call: 3}").when;
    EXPECT_EQ(2u, when.first);
    EXPECT_EQ(2u, when.last);
    EXPECT_FALSE(when.is_by_frame);
}

TEST(FaultConfiguration, EveryGoesOnFromTheFirst)
{
    const Trigger when = fault("kind: scan-fails, when: {call: 3, every: 2, until: 9}").when;
    EXPECT_EQ(2u, when.first);
    EXPECT_EQ(2u, when.every);
    EXPECT_EQ(8u, when.last);
}

TEST(FaultConfiguration, EveryAloneIsEveryNth)
{
    const Trigger when = fault("kind: frame-dropped, when: {every: 10}").when;
    EXPECT_EQ(9u, when.first);
    EXPECT_EQ(10u, when.every);
    EXPECT_EQ(std::numeric_limits<uint64_t>::max(), when.last);
}

TEST(FaultConfiguration, FramesAreCountedFromZero)
{
    const Trigger when = fault("kind: frame-dropped, when: {frame: 5, until: 7}").when;
    EXPECT_EQ(5u, when.first);
    EXPECT_EQ(7u, when.last);
    EXPECT_TRUE(when.is_by_frame);
}

TEST(FaultConfiguration, ReadsTimeAndChance)
{
    const Trigger when =
        fault("kind: frame-dropped, when: {after: 2 s, since: start, probability: 0.25}").when;
    EXPECT_EQ(2s, when.after);
    EXPECT_EQ(Trigger::Since::start, when.since);
    EXPECT_EQ(0.25, when.probability);
}

TEST(FaultConfiguration, CallsOfAnyFunctionCanFailWithAnyStatus)
{
    const FaultRule rule = fault("kind: call-fails, function: ZVGR_CameraInfo2, status: 0x3123, times: 2");
    EXPECT_EQ(functions(Function::camera_info), rule.functions);
    EXPECT_EQ(0x3123u, rule.status);
    EXPECT_EQ(2u, rule.times);
}

TEST(FaultConfiguration, NumberOfAKindHasItsOwnNameAndPreset)
{
    EXPECT_EQ(17, fault("kind: camera-count-too-large").amount);
    EXPECT_EQ(40, fault("kind: camera-count-too-large, count: 40").amount);
    EXPECT_EQ(-5, fault("kind: frame-id-jumps, by: -5").amount);
}

TEST(FaultConfiguration, LossesSayHowLongTheyLast)
{
    const FaultRule rule = fault("kind: camera-lost-while-opening, away_for_scans: 2, away_for: 3 s");
    EXPECT_EQ(2u, rule.absence.scans);
    EXPECT_EQ(3s, rule.absence.time);
}

TEST(FaultConfiguration, ReadsEvents)
{
    const Reading reading{"events:\n"
                          "- {at: 2 s, do: unplug, grabber: 0, camera: 1}\n"
                          "- {scan: 3, do: plug, grabber: 2}\n"};
    EXPECT_THAT(reading.errors, IsEmpty());
    ASSERT_EQ(2u, reading.plan.events.size());
    EXPECT_EQ(2s, reading.plan.events[0].at);
    EXPECT_FALSE(reading.plan.events[0].is_plugged);
    EXPECT_EQ(1u, reading.plan.events[0].place.camera);
    EXPECT_EQ(3u, reading.plan.events[1].scan);
    EXPECT_TRUE(reading.plan.events[1].is_plugged);
    EXPECT_EQ(Place::none, reading.plan.events[1].place.camera);
}

struct Mistake {
    const char* name;
    const char* fault;
    const char* wrong;
    const char* allowed;
};

class WrongFault : public testing::TestWithParam<Mistake> {};

TEST_P(WrongFault, IsReportedWithItsLineAndWhatIsAllowed)
{
    EXPECT_THAT(errors_of(GetParam().fault),
                ElementsAre(AllOf(StartsWith("faults.yaml:3:"), HasSubstr(GetParam().wrong),
                                  HasSubstr(GetParam().allowed))));
}

const Mistake mistakes[] = {
    {"NoKind", "times: 1", "'kind' is missing", "a kind of fault"},
    {"UnknownKind", "kind: scan-fail", "scan-fail", "scan-fails"},
    {"UnknownKey", "kind: scan-fails, tims: 1", "tims", "times"},
    {"NoFunction", "kind: call-fails", "'function' is missing", "the name"},
    {"UnknownFunction", "kind: call-fails, function: ZVGR_Opn", "ZVGR_Opn", "ZVGR_Open"},
    {"FunctionOfNoKind", "kind: scan-fails, function: ZVGR_Open", "'function'", "status"},
    {"NoOutput", "kind: call-leaves-output-untouched, function: ZVGR_Close", "ZVGR_Close",
     "ZVGR_CameraInfo2"},
    {"Success", "kind: scan-fails, status: 0x3000", "0x3000", "any number but"},
    {"StatusOfAPointer", "kind: grabber-name-missing, status: 1", "'status'", "kind"},
    {"NoTime", "kind: frame-late", "'time' is missing", "100 ms"},
    {"TimeWithoutUnit", "kind: frame-late, time: 5", "time", "ms"},
    {"CameraAlone", "kind: camera-open-fails, camera: 1", "without its grabber", "grabber and camera"},
    {"FrameOfACall", "kind: scan-fails, when: {frame: 1}", "'frame'", "call"},
    {"CallOfAFrame", "kind: frame-dropped, when: {call: 1}", "'call'", "frame"},
    {"UntilTooEarly", "kind: frame-dropped, when: {frame: 9, until: 8}", "'until'", "later"},
    {"SinceWithoutAfter", "kind: frame-dropped, when: {since: start}", "'since'", "after"},
    {"Probability", "kind: frame-dropped, when: {probability: 1.5}", "1.5", "0"},
    {"CallZero", "kind: scan-fails, when: {call: 0}", "0", "1"},
    {"ForeignNumber", "kind: frame-truncated, by: 4", "'by'", "bytes"},
    {"AwayForNoLoss", "kind: frame-dropped, away_for_scans: 1", "'away_for_scans'", "times"},
    {"NameOfACall", "kind: scan-fails, name: Width", "'name'", "status"},
};

std::string name_of(const testing::TestParamInfo<Mistake>& mistake) { return mistake.param.name; }

INSTANTIATE_TEST_SUITE_P(FaultConfiguration, WrongFault, testing::ValuesIn(mistakes), name_of);

TEST(FaultConfiguration, EventNeedsATimeOrAScan)
{
    for (const char* const text : {"{do: plug, grabber: 0}", "{do: plug, grabber: 0, at: 1 s, scan: 1}"})
        EXPECT_THAT(Reading{"events: [" + std::string{text} + "]"}.errors,
                    ElementsAre(HasSubstr("allowed: at, scan")));
}

TEST(FaultConfiguration, EventNeedsToSayWhatAndWhere)
{
    EXPECT_THAT(Reading{"events: [{scan: 1}]"}.errors,
                ElementsAre(HasSubstr("'do' is missing"), HasSubstr("'grabber' is missing")));
}

} // namespace

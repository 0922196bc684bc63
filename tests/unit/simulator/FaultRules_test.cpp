#include <tuple>
#include <vector>

#include "simulator/faults/FaultPlan.h"
#include "simulator/faults/Presence.h"
#include "simulator/faults/RuleState.h"
#include "unit/simulator/configuration_texts.h"

// Faults as a file names them, when they happen, and what is plugged in. What a file must not say about them
// is in ConfigurationErrors_test.cpp.

namespace {

using namespace std::chrono_literals;
using namespace zvsim;
using testing::ElementsAre;
using testing::IsEmpty;
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

constexpr size_t grabbers = 3;
constexpr Place grabber{1, Place::none};
constexpr Place camera{1, 2};
constexpr Clock::time_point first_scan{100s};

PlugEvent at_scan(uint64_t scan, bool is_plugged, const Place& place)
{
    return {std::nullopt, scan, is_plugged, place};
}

PlugEvent at_time(std::chrono::nanoseconds time, bool is_plugged, const Place& place)
{
    return {time, 0, is_plugged, place};
}

/// Goes through the steps (s: a scan, l: a camera list of the grabber, o: one of another grabber, a digit: as
/// many seconds since the first scan) and asks for an answer, + or -, after each.
template <class Ask>
std::string answers(Presence& presence, const std::string& steps, const Ask& ask)
{
    std::string given;
    for (const char step : steps) {
        if (step == 's')
            presence.begin_scan();
        else if (step == 'l' || step == 'o')
            presence.begin_camera_list(step == 'l' ? grabber.grabber : 0);
        else
            presence.advance(first_scan, first_scan + 1s * (step - '0'));
        given += ask() ? '+' : '-';
    }
    return given;
}

/// Whether a place is there after each step.
std::string presence_of(const Place& place, Presence presence, const std::string& steps)
{
    return answers(presence, steps, [&] { return presence.has(place); });
}

/// Whether anything has changed by each step.
std::string changes_of(Presence presence, const std::string& steps)
{
    return answers(presence, steps, [&] { return presence.take_change(); });
}

/// Everything is plugged in, and one place is lost.
Presence without(const Place& lost, const zvsim::Absence& absence = {})
{
    Presence presence{grabbers, {}};
    presence.lose(lost, absence, first_scan);
    return presence;
}

TEST(FaultedPresence, EndsForALostPlaceAndWhatIsConnectedToIt)
{
    constexpr Place beyond{grabbers, 0};
    const auto presence_without = [&](const Place& lost) {
        std::string present;
        for (const Place& place : {grabber, camera, Place{1, 1}, Place{0, 2}, Place{}, beyond})
            present += without(lost).has(place) ? '+' : '-';
        return present;
    };
    EXPECT_EQ("++++++", presence_without({}));
    EXPECT_EQ("++++++", presence_without(beyond));
    EXPECT_EQ("+-++++", presence_without(camera));
    EXPECT_EQ("---+++", presence_without(grabber));
}

TEST(FaultedPresence, EndsForAsManyListsOrAsMuchTimeAsTheLossSays)
{
    EXPECT_EQ("--+", presence_of(camera, without(camera, {2, std::nullopt}), "lll"));
    EXPECT_EQ("-----", presence_of(camera, without(camera, {1, std::nullopt}), "ooooo"));
    EXPECT_EQ("-+", presence_of(grabber, without(grabber, {1, std::nullopt}), "ss"));
    EXPECT_EQ("-+", presence_of(camera, without(camera, {std::nullopt, 5s}), "45"));
}

TEST(FaultedPresence, EndsAtAnEventAndComesBackAtTheNext)
{
    const Presence by_scan{grabbers, {at_scan(2, false, camera), at_scan(4, true, camera)}};
    EXPECT_EQ("+---+", presence_of(camera, by_scan, "sslss"));
    const Presence in_reverse{grabbers, {at_scan(3, true, camera), at_scan(2, false, camera)}};
    EXPECT_EQ("+-++", presence_of(camera, in_reverse, "ssss"));
    const Presence by_time{grabbers, {at_time(1s, false, grabber), at_time(3s, true, grabber)}};
    EXPECT_EQ("+--+", presence_of(grabber, by_time, "0123"));
}

TEST(FaultedPresence, OfAPluggedCameraThatIsLostStaysEnded)
{
    Presence presence{grabbers, {at_scan(1, true, camera)}};
    presence.lose(camera, {}, first_scan);
    EXPECT_EQ("-", presence_of(camera, presence, "s"));
}

TEST(FaultedPresence, ReportsEveryChangeOnce)
{
    EXPECT_EQ("-+-", changes_of({grabbers, {at_time(1s, false, grabber)}}, "012"));
    Presence losing = without(camera, {1, std::nullopt});
    EXPECT_TRUE(losing.take_change());
    EXPECT_EQ("-+-", changes_of(losing, "lll"));
    losing = without(camera, {std::nullopt, 2s});
    EXPECT_TRUE(losing.take_change());
    EXPECT_EQ("-+-", changes_of(losing, "123"));
}

} // namespace

#include <string>

#include <gtest/gtest.h>

#include "simulator/faults/Presence.h"

namespace {

using namespace std::chrono_literals;
using namespace zvsim;

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

#include <gtest/gtest.h>

#include "simulator/faults/Presence.h"

namespace {

using namespace std::chrono_literals;
using zvsim::Clock;
using zvsim::Place;
using zvsim::PlugEvent;
using zvsim::Presence;

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

TEST(FaultedPresence, EverythingIsThereAtFirst)
{
    const Presence presence{grabbers, {}};
    EXPECT_TRUE(presence.has(grabber));
    EXPECT_TRUE(presence.has(camera));
}

TEST(FaultedPresence, WhatIsNoPlaceIsThere)
{
    Presence presence{grabbers, {}};
    presence.lose({}, {}, first_scan);
    presence.lose({grabbers, 0}, {}, first_scan);
    EXPECT_TRUE(presence.has({}));
    EXPECT_TRUE(presence.has({grabbers, 0}));
}

TEST(FaultedPresence, LosingACameraLeavesItsGrabber)
{
    Presence presence{grabbers, {}};
    presence.lose(camera, {}, first_scan);
    EXPECT_FALSE(presence.has(camera));
    EXPECT_TRUE(presence.has({1, 1}));
    EXPECT_TRUE(presence.has(grabber));
}

TEST(FaultedPresence, LosingAGrabberTakesItsCameras)
{
    Presence presence{grabbers, {}};
    presence.lose(grabber, {}, first_scan);
    EXPECT_FALSE(presence.has(camera));
    EXPECT_TRUE(presence.has({0, 2}));
}

TEST(FaultedPresence, ALostCameraIsMissingInAsManyListsAsItSays)
{
    Presence presence{grabbers, {}};
    presence.lose(camera, {2, std::nullopt}, first_scan);
    presence.begin_camera_list(1);
    EXPECT_FALSE(presence.has(camera));
    presence.begin_camera_list(1);
    EXPECT_FALSE(presence.has(camera));
    presence.begin_camera_list(1);
    EXPECT_TRUE(presence.has(camera));
}

TEST(FaultedPresence, ListsOfOtherGrabbersDoNotBringACameraBack)
{
    Presence presence{grabbers, {}};
    presence.lose(camera, {1, std::nullopt}, first_scan);
    for (int i = 0; i < 5; ++i)
        presence.begin_camera_list(0);
    EXPECT_FALSE(presence.has(camera));
}

TEST(FaultedPresence, ALostGrabberIsMissingInAsManyScansAsItSays)
{
    Presence presence{grabbers, {}};
    presence.lose(grabber, {1, std::nullopt}, first_scan);
    presence.begin_scan();
    EXPECT_FALSE(presence.has(grabber));
    presence.begin_scan();
    EXPECT_TRUE(presence.has(grabber));
}

TEST(FaultedPresence, ALossCanEndByTime)
{
    Presence presence{grabbers, {}};
    presence.lose(camera, {std::nullopt, 5s}, first_scan);
    presence.advance(first_scan, first_scan + 4999ms);
    EXPECT_FALSE(presence.has(camera));
    presence.advance(first_scan, first_scan + 5s);
    EXPECT_TRUE(presence.has(camera));
}

TEST(FaultedPresence, CablesArePulledBeforeTheScanThatTheyNameAndStayOut)
{
    Presence presence{grabbers, {at_scan(2, false, camera), at_scan(4, true, camera)}};
    presence.begin_scan();
    EXPECT_TRUE(presence.has(camera));
    presence.begin_scan();
    EXPECT_FALSE(presence.has(camera));
    presence.begin_camera_list(1);
    presence.begin_scan();
    EXPECT_FALSE(presence.has(camera));
    presence.begin_scan();
    EXPECT_TRUE(presence.has(camera));
}

TEST(FaultedPresence, CablesArePulledInTime)
{
    Presence presence{grabbers, {at_time(1s, false, grabber), at_time(3s, true, grabber)}};
    presence.advance(first_scan, first_scan);
    EXPECT_TRUE(presence.has(grabber));
    presence.advance(first_scan, first_scan + 1s);
    EXPECT_FALSE(presence.has(grabber));
    presence.advance(first_scan, first_scan + 3s);
    EXPECT_TRUE(presence.has(grabber));
}

TEST(FaultedPresence, AChangeIsToldOnce)
{
    Presence presence{grabbers, {at_time(1s, false, grabber)}};
    presence.advance(first_scan, first_scan);
    EXPECT_FALSE(presence.take_change());
    presence.advance(first_scan, first_scan + 1s);
    EXPECT_TRUE(presence.take_change());
    presence.advance(first_scan, first_scan + 2s);
    EXPECT_FALSE(presence.take_change());
}

TEST(FaultedPresence, ComingBackIsAChangeToo)
{
    Presence presence{grabbers, {}};
    presence.lose(camera, {1, std::nullopt}, first_scan);
    EXPECT_TRUE(presence.take_change());
    presence.begin_camera_list(1);
    EXPECT_FALSE(presence.take_change());
    presence.begin_camera_list(1);
    EXPECT_TRUE(presence.take_change());
}

TEST(FaultedPresence, APluggedCameraThatIsLostStaysAway)
{
    Presence presence{grabbers, {at_scan(1, true, camera)}};
    presence.lose(camera, {}, first_scan);
    presence.begin_scan();
    EXPECT_FALSE(presence.has(camera));
}

} // namespace

#include "system/fixture.h"

// Closing and opening again, on every level of the tree, with frames before and after.

using namespace GenTL;
using namespace zvsystem;

namespace {

constexpr int rounds = 3;

class Reopening : public InBothModes {
protected:
    static void expect_frames(Camera& camera)
    {
        camera.announce(6, Memory::of_consumer);
        camera.start_and_queue();
        FrameCheck{camera}.stream(20);
    }
};
INSTANTIATE_TEST_SUITE_P(, Reopening, both_modes, testing::PrintToStringParamName());

TEST_P(Reopening, AStreamAndADeviceWork)
{
    const IF_HANDLE iface = system->open_interface("FG0");
    Camera camera(gentl, iface, "Device00");
    for (int round = 0; round < rounds; ++round) {
        expect_frames(camera);
        camera.close_stream();
        camera.open_stream();
        EXPECT_EQ(0u, camera.stream_number(STREAM_INFO_NUM_ANNOUNCED));
        expect_frames(camera);
        camera.close_device();
        camera.open_device(iface, "Device00");
        camera.open_stream();
    }
}

TEST_P(Reopening, AnInterfaceWorksBeforeItsDevicesAreKnown)
{
    IF_HANDLE iface = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.TLOpenInterface(system->handle(), "FG0", &iface));
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.IFClose(iface));
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    expect_frames(camera);
}

// A camera keeps its handle while its grabber is closed, so the devices that the interface listed work again.
TEST_P(Reopening, AnInterfaceWorks)
{
    for (int round = 0; round < rounds; ++round) {
        const IF_HANDLE iface = system->open_interface("FG0");
        bool8_t has_changed = 1;
        ASSERT_EQ(GC_ERR_SUCCESS, gentl.IFUpdateDeviceList(iface, &has_changed, 0));
        EXPECT_EQ(0, has_changed) << "it lists the same devices";
        Camera camera(gentl, iface, "Device00");
        expect_frames(camera);
        camera.abandon();
        ASSERT_EQ(GC_ERR_SUCCESS, gentl.IFClose(iface)); // acquiring
    }
}

TEST_P(Reopening, ASystemWorks)
{
    for (int round = 0; round < rounds; ++round) {
        Camera camera(gentl, system->open_interface("FG0"), "Device00");
        expect_frames(camera);
        camera.abandon();
        Camera other(gentl, system->open_interface("FG1"), "Device10");
        expect_frames(other);
        other.abandon();
        system.emplace(gentl); // closes the old one, with everything open
    }
}

TEST_P(Reopening, TheLibraryWorks)
{
    for (int round = 0; round < rounds; ++round) {
        Camera camera(gentl, system->open_interface("FG0"), "Device01");
        expect_frames(camera);
        camera.abandon();
        system->abandon();
        // With everything open; the camera's memory is still there.
        ASSERT_EQ(GC_ERR_SUCCESS, gentl.GCCloseLib());
        EXPECT_EQ(GC_ERR_NOT_INITIALIZED, gentl.GCCloseLib());
        ASSERT_EQ(GC_ERR_SUCCESS, gentl.GCInitLib());
        system.emplace(gentl);
    }
}

} // namespace

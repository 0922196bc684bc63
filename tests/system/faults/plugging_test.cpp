#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

#include "system/fixture.h"

// Cables that are pulled and plugged in again, as a consumer of the built producer sees it. Every scan of the
// grabbers is a call of TLUpdateInterfaceList.

using namespace GenTL;
using namespace zvsystem;

namespace {

const char* const grabbers = R"(demo_grabber: false
grabbers:
- name: First
  cameras: [{count: 2, sensor_width: 64, sensor_height: 48, rate: free-running, start_up: 0 ms}]
- name: Second
  cameras: [{sensor_width: 64, sensor_height: 48}]
- name: Hidden
)";

class Plugging : public testing::Test {
protected:
    Plugging() { surroundings().set_mode(Mode::queued); }
    ~Plugging() override
    {
        m_system.reset();
        unsetenv("ZV_GRABBER_CONFIG");
    }

    void open_system(const std::string& events)
    {
        const auto file = surroundings().folder() / "grabbers.yaml";
        std::ofstream{file} << grabbers << events;
        setenv("ZV_GRABBER_CONFIG", file.string().c_str(), 1);
        m_system.emplace(gentl);
    }
    /// Scans, and answers whether that has changed the list of interfaces.
    bool scan() const
    {
        bool8_t has_changed = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.TLUpdateInterfaceList(m_system->handle(), &has_changed, 1000));
        return has_changed != 0;
    }
    IF_HANDLE open_interface() const
    {
        IF_HANDLE iface = nullptr;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.TLOpenInterface(m_system->handle(), "FG0", &iface));
        return iface;
    }
    uint32_t update_devices(IF_HANDLE iface) const
    {
        uint32_t count = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.IFUpdateDeviceList(iface, nullptr, 1000));
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.IFGetNumDevices(iface, &count));
        return count;
    }
    uint32_t interfaces() const
    {
        uint32_t count = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.TLGetNumInterfaces(m_system->handle(), &count));
        return count;
    }

    Surroundings& m_surroundings{surroundings()}; // before the producer looks for its settings
    Producer producer{producer_file};
    const Functions& gentl{producer.functions()};
    std::optional<System> m_system;
};

TEST_F(Plugging, AnUnpluggedGrabberLeavesTheListAndComesBack)
{
    open_system("events: [{scan: 2, do: unplug, grabber: 1}, {scan: 3, do: plug, grabber: 1}]");
    scan();
    EXPECT_EQ(2u, interfaces());
    EXPECT_TRUE(scan());
    EXPECT_EQ(1u, interfaces());
    EXPECT_TRUE(scan());
    EXPECT_EQ(2u, interfaces());
}

TEST_F(Plugging, AnInterfaceThatWasOpenIsGoneAndCanBeOpenedAnew)
{
    open_system("events: [{scan: 2, do: unplug, grabber: 0}, {scan: 3, do: plug, grabber: 0}]");
    scan();
    const IF_HANDLE iface = open_interface();
    EXPECT_TRUE(scan());
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, gentl.IFGetNumDevices(iface, &count));
    EXPECT_TRUE(scan());
    EXPECT_EQ(2u, update_devices(open_interface()));
}

TEST_F(Plugging, AnUnpluggedCameraLeavesTheListAndComesBack)
{
    open_system(
        "events: [{scan: 2, do: unplug, grabber: 0, camera: 1}, {scan: 3, do: plug, grabber: 0, camera: 1}]");
    scan();
    const IF_HANDLE iface = open_interface();
    EXPECT_EQ(2u, update_devices(iface));
    EXPECT_FALSE(scan());
    EXPECT_EQ(1u, update_devices(iface));
    EXPECT_FALSE(scan());
    EXPECT_EQ(2u, update_devices(iface));
}

TEST_F(Plugging, ADeviceThatWasPulledDoesNotStartUntilItIsOpenedAgain)
{
    open_system(
        "events: [{scan: 2, do: unplug, grabber: 0, camera: 0}, {scan: 3, do: plug, grabber: 0, camera: 0}]");
    scan();
    const IF_HANDLE iface = open_interface();
    ASSERT_EQ(2u, update_devices(iface));
    Camera camera{gentl, iface, "Device00"};
    camera.announce(1);
    scan();
    scan();
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE,
              gentl.DSStartAcquisition(camera.stream(), ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE));
}

TEST_F(Plugging, ACameraThatWasPulledWhileItStreamedStreamsAgain)
{
    open_system(
        "events: [{scan: 2, do: unplug, grabber: 0, camera: 0}, {scan: 3, do: plug, grabber: 0, camera: 0}]");
    scan();
    const IF_HANDLE iface = open_interface();
    ASSERT_EQ(2u, update_devices(iface));
    {
        Camera camera{gentl, iface, "Device00"};
        camera.announce(2);
        camera.start_and_queue();
        camera.next();
        scan();
        EXPECT_TRUE(eventually([&] { return camera.stream_number(STREAM_INFO_IS_GRABBING) == 0; }));
        camera.stop();
    }
    scan();
    Camera camera{gentl, iface, "Device00"};
    camera.announce(2);
    camera.start_and_queue();
    FrameCheck check{camera};
    stream(camera, check, 5);
    camera.stop();
}

} // namespace

#include <string>

#include "system/fixture.h"

// Cables that are pulled and plugged in again, as a consumer of the built producer sees it. Every scan of the
// grabbers is a call of TLUpdateInterfaceList.

using namespace GenTL;
using namespace zvsystem;

namespace {

constexpr const char* grabbers = R"(demo_grabber: false
grabbers:
- name: First
  cameras: [{count: 2, sensor_width: 64, sensor_height: 48, rate: free-running, start_up: 0 ms}]
- name: Second
  cameras: [{sensor_width: 64, sensor_height: 48}]
- name: Hidden
)";

/// What is unplugged at the second scan and back at the third.
std::string gone_for_one_scan(const std::string& place)
{
    return "events: [{scan: 2, do: unplug, " + place + "}, {scan: 3, do: plug, " + place + "}]";
}

class Plugging : public LoadedProducer {
protected:
    /// Opens a system with these grabbers and scans for the first time.
    void open_system(const std::string& events)
    {
        m_file.emplace(grabbers + events);
        system.emplace(gentl);
        scan();
    }
    /// Scans; whether that has changed the list of interfaces.
    bool scan() const
    {
        bool8_t has_changed = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.TLUpdateInterfaceList(system->handle(), &has_changed, 1000));
        return has_changed != 0;
    }
    IF_HANDLE open_interface() const
    {
        IF_HANDLE iface = nullptr;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.TLOpenInterface(system->handle(), "FG0", &iface));
        return iface;
    }
    uint32_t update_devices(IF_HANDLE iface) const
    {
        uint32_t count = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.IFUpdateDeviceList(iface, nullptr, 1000));
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.IFGetNumDevices(iface, &count));
        return count;
    }

private:
    std::optional<GrabberFile> m_file;
};

TEST_F(Plugging, AnInterfaceThatWasOpenIsGoneAndCanBeOpenedAgain)
{
    open_system(gone_for_one_scan("grabber: 0"));
    const IF_HANDLE iface = open_interface();
    EXPECT_TRUE(scan());
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, gentl.IFGetNumDevices(iface, &count));
    EXPECT_TRUE(scan());
    EXPECT_EQ(2u, update_devices(open_interface()));
}

TEST_F(Plugging, ACameraThatWasPulledWhileItStreamedStreamsAgain)
{
    open_system(gone_for_one_scan("grabber: 0, camera: 0"));
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
    EXPECT_EQ(1u, update_devices(iface));
    EXPECT_FALSE(scan());
    EXPECT_EQ(2u, update_devices(iface));
    Camera camera{gentl, iface, "Device00"};
    camera.announce(2);
    camera.start_and_queue();
    FrameCheck{camera}.stream(5);
    camera.stop();
}

} // namespace

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "system/fixture.h"

// What the file of the software grabbers says, as the producer shows it.

using namespace GenTL;
using namespace zvsystem;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A producer and the user's file.
class Configured : public testing::Test {
protected:
    ~Configured() override { std::filesystem::remove(m_file); }

    /// Writes the file and opens the system anew.
    void configure(const std::string& text)
    {
        m_system.reset();
        std::filesystem::create_directories(m_file.parent_path());
        std::ofstream{m_file} << text;
        m_system.emplace(gentl);
    }
    const Surroundings& the_surroundings() const { return m_surroundings; }
    const System& system() const { return *m_system; }

    std::vector<std::string> interfaces() const
    {
        std::vector<std::string> ids;
        uint32_t count = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.TLUpdateInterfaceList(system().handle(), nullptr, 0));
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.TLGetNumInterfaces(system().handle(), &count));
        for (uint32_t index = 0; index < count; ++index) {
            char id[64];
            size_t size = sizeof id;
            EXPECT_EQ(GC_ERR_SUCCESS, gentl.TLGetInterfaceID(system().handle(), index, id, &size));
            ids.emplace_back(id);
        }
        return ids;
    }
    /// That text of every interface.
    std::vector<std::string> of_interfaces(INTERFACE_INFO_CMD command) const
    {
        std::vector<std::string> texts;
        for (const std::string& id : interfaces()) {
            char text[256];
            size_t size = sizeof text;
            INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
            EXPECT_EQ(GC_ERR_SUCCESS,
                      gentl.TLGetInterfaceInfo(system().handle(), id.c_str(), command, &type, text, &size));
            texts.emplace_back(text);
        }
        return texts;
    }
    std::string device_id(IF_HANDLE iface, uint32_t index) const
    {
        char id[64];
        size_t size = sizeof id;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.IFGetDeviceID(iface, index, id, &size));
        return id;
    }
    std::string of_device(IF_HANDLE iface, uint32_t index, DEVICE_INFO_CMD command) const
    {
        const std::string id = device_id(iface, index);
        char text[256];
        size_t size = sizeof text;
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.IFGetDeviceInfo(iface, id.c_str(), command, &type, text, &size));
        return text;
    }

private:
    const Surroundings& m_surroundings{surroundings()}; // before the producer looks for its settings
    std::filesystem::path m_file{m_surroundings.folder() / "config/zvgentl/grabbers.yaml"};
    Producer m_producer{producer_file};

protected:
    const Functions& gentl{m_producer.functions()};

private:
    std::optional<System> m_system;
};

constexpr const char* three_grabbers = "grabbers:\n"
                                       "  - name: Top\n"
                                       "    protocol: GigEVision\n"
                                       "  - name: Side\n"
                                       "    protocol: CameraLinkHS\n"
                                       "    cameras: [{model: Eye, serial: A, count: 2, vendor: Own}]\n"
                                       "  - name: Bottom\n"
                                       "    protocol: CoaXPress\n"
                                       "    cameras: [{sensor_width: 96, sensor_height: 32}]\n";

TEST_F(Configured, GrabbersOfTheFileAreInterfacesAndTheDemoGrabberIsHidden)
{
    configure(three_grabbers);
    EXPECT_THAT(of_interfaces(INTERFACE_INFO_DISPLAYNAME), ElementsAre("Top", "Side", "Bottom"));
}

TEST_F(Configured, ProtocolsAreTransportTypes)
{
    configure(three_grabbers);
    EXPECT_THAT(of_interfaces(INTERFACE_INFO_TLTYPE), ElementsAre("GEV", "CLHS", "CXP"));
}

TEST_F(Configured, CamerasOfTheFileAreDevices)
{
    configure(three_grabbers);
    const IF_HANDLE iface = system().open_interface("FG1");
    uint32_t count = 0;
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.IFGetNumDevices(iface, &count));
    ASSERT_EQ(2U, count);
    EXPECT_EQ("Own", of_device(iface, 0, DEVICE_INFO_VENDOR));
    EXPECT_EQ("Eye", of_device(iface, 0, DEVICE_INFO_MODEL));
    EXPECT_EQ("A-1", of_device(iface, 0, DEVICE_INFO_SERIAL_NUMBER));
    EXPECT_EQ("A-2", of_device(iface, 1, DEVICE_INFO_SERIAL_NUMBER));
}

TEST_F(Configured, FramesAreAsLargeAsTheFileSays)
{
    configure(three_grabbers);
    const IF_HANDLE iface = system().open_interface("FG2");
    Camera camera(gentl, iface, device_id(iface, 0).c_str());
    EXPECT_EQ(size_t{96} * 32, camera.stream_number(STREAM_INFO_PAYLOAD_SIZE));
    camera.announce(4);
    camera.start_and_queue();
    FrameCheck check(camera);
    stream(camera, check, 5);
}

TEST_F(Configured, DemoGrabberIsTheLastOneWhenItIsExposed)
{
    const auto settings = the_surroundings().folder() / "settings.properties";
    the_surroundings().expose_demo_grabber();
    configure(three_grabbers);
    EXPECT_THAT(of_interfaces(INTERFACE_INFO_DISPLAYNAME),
                ElementsAre("Top", "Side", "Bottom", "ZEVA Demo Grabber"));
    std::ofstream{settings, std::ios::app} << "\nGenTL.Interface.ExposeDemoGrabber = 0\n";
}

TEST_F(Configured, ABrokenFileLeavesNoInterfacesUntilItIsMended)
{
    configure("grabbers: [{name: [}]\n");
    EXPECT_THAT(interfaces(), IsEmpty());
    configure(three_grabbers);
    EXPECT_EQ(3U, interfaces().size());
}

} // namespace

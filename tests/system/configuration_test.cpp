#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "system/fixture.h"

// What the user's file says of the software grabbers, as the producer shows it.

using namespace GenTL;
using namespace zvsystem;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* three_grabbers = R"(grabbers:
  - name: Top
    protocol: GigEVision
  - name: Side
    protocol: CameraLinkHS
    cameras: [{model: Eye, serial: A, count: 2, vendor: Own}]
  - name: Bottom
    protocol: CoaXPress
    cameras: [{sensor_width: 96, sensor_height: 32}]
)";

class Configured : public LoadedProducer {
protected:
    ~Configured() override
    {
        std::filesystem::remove(m_file);
        Surroundings::set_frame_size(usual_frame_size);
    }

    /// Writes the file and opens the system again.
    void configure(const std::string& text)
    {
        std::filesystem::create_directories(m_file.parent_path());
        std::ofstream{m_file} << text;
        Surroundings::set_frame_size("");
        system.emplace(gentl);
    }

    /// This text of every interface.
    std::vector<std::string> of_interfaces(INTERFACE_INFO_CMD command) const
    {
        std::vector<std::string> texts;
        uint32_t count = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.TLUpdateInterfaceList(system->handle(), nullptr, 0));
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.TLGetNumInterfaces(system->handle(), &count));
        for (uint32_t index = 0; index < count; ++index) {
            const std::string id = "FG" + std::to_string(index);
            texts.push_back(text_of([&](INFO_DATATYPE* type, void* text, size_t* size) {
                return gentl.TLGetInterfaceInfo(system->handle(), id.c_str(), command, type, text, size);
            }));
        }
        return texts;
    }
    std::string of_device(IF_HANDLE iface, const char* id, DEVICE_INFO_CMD command) const
    {
        return text_of([&](INFO_DATATYPE* type, void* text, size_t* size) {
            return gentl.IFGetDeviceInfo(iface, id, command, type, text, size);
        });
    }

private:
    template <class Query>
    static std::string text_of(const Query& query)
    {
        char text[256] = {};
        size_t size = sizeof text;
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        EXPECT_EQ(GC_ERR_SUCCESS, query(&type, text, &size));
        return text;
    }

    const std::filesystem::path m_file{m_surroundings.folder() / "config/zvgentl/grabbers.yaml"};
};

TEST_F(Configured, GrabbersAreInterfacesAndTheDemoGrabberIsHidden)
{
    configure(three_grabbers);
    EXPECT_THAT(of_interfaces(INTERFACE_INFO_DISPLAYNAME), ElementsAre("Top", "Side", "Bottom"));
    EXPECT_THAT(of_interfaces(INTERFACE_INFO_TLTYPE), ElementsAre("GEV", "CLHS", "CXP"));
}

TEST_F(Configured, CamerasAreDevices)
{
    configure(three_grabbers);
    const IF_HANDLE iface = system->open_interface("FG1");
    uint32_t count = 0;
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.IFGetNumDevices(iface, &count));
    ASSERT_EQ(2U, count);
    EXPECT_EQ("Own", of_device(iface, "Device10", DEVICE_INFO_VENDOR));
    EXPECT_EQ("Eye", of_device(iface, "Device10", DEVICE_INFO_MODEL));
    EXPECT_EQ("A-1", of_device(iface, "Device10", DEVICE_INFO_SERIAL_NUMBER));
    EXPECT_EQ("A-2", of_device(iface, "Device11", DEVICE_INFO_SERIAL_NUMBER));
}

TEST_F(Configured, FramesAreAsLargeAsTheFileSays)
{
    configure(three_grabbers);
    Camera camera(gentl, system->open_interface("FG2"), "Device20");
    EXPECT_EQ(uint64_t{96 * 32}, camera.stream_number(STREAM_INFO_PAYLOAD_SIZE));
    camera.announce(4);
    camera.start_and_queue();
    FrameCheck{camera}.stream(5);
}

TEST_F(Configured, TheDemoGrabberIsTheLastOneIfItIsExposed)
{
    m_surroundings.expose_demo_grabber();
    configure(three_grabbers);
    EXPECT_THAT(of_interfaces(INTERFACE_INFO_DISPLAYNAME),
                ElementsAre("Top", "Side", "Bottom", "ZEVA Demo Grabber"));
    m_surroundings.hide_demo_grabber();
}

TEST_F(Configured, ABrokenFileLeavesNoInterfacesUntilItIsFixed)
{
    configure("grabbers: [{name: [}]\n");
    EXPECT_THAT(of_interfaces(INTERFACE_INFO_DISPLAYNAME), IsEmpty());
    configure(three_grabbers);
    EXPECT_THAT(of_interfaces(INTERFACE_INFO_DISPLAYNAME), ElementsAre("Top", "Side", "Bottom"));
}

} // namespace

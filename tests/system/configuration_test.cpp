#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "system/fixture.h"

// The software grabbers that the user's file describes, as the producer shows them.

using namespace GenTL;
using namespace zvsystem;

namespace {

using testing::ElementsAre;

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
    Configured() { system.emplace(gentl); } // with the file

    /// This text of every interface.
    std::vector<std::string> of_interfaces(INTERFACE_INFO_CMD command) const
    {
        std::vector<std::string> texts;
        for (const char* const id : {"FG0", "FG1", "FG2"})
            texts.push_back(text_of(gentl.TLGetInterfaceInfo, system->handle(), id, command));
        return texts;
    }

    template <class Query>
    static std::string text_of(const Query& query, void* parent, const char* id, int32_t command)
    {
        char text[256] = {};
        size_t size = sizeof text;
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        EXPECT_EQ(GC_ERR_SUCCESS, query(parent, id, command, &type, text, &size));
        return text;
    }

    const GrabberFile file{three_grabbers};
};

TEST_F(Configured, GrabbersAreInterfacesAndCamerasAreDevices)
{
    const IF_HANDLE iface = system->open_interface("FG1");
    uint32_t count = 0;
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.TLGetNumInterfaces(system->handle(), &count));
    EXPECT_EQ(3U, count) << "the demo grabber is hidden";
    EXPECT_THAT(of_interfaces(INTERFACE_INFO_DISPLAYNAME), ElementsAre("Top", "Side", "Bottom"));
    EXPECT_THAT(of_interfaces(INTERFACE_INFO_TLTYPE), ElementsAre("GEV", "CLHS", "CXP"));
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.IFGetNumDevices(iface, &count));
    EXPECT_EQ(2U, count);
    EXPECT_EQ("Own", text_of(gentl.IFGetDeviceInfo, iface, "Device10", DEVICE_INFO_VENDOR));
    EXPECT_EQ("Eye", text_of(gentl.IFGetDeviceInfo, iface, "Device10", DEVICE_INFO_MODEL));
    EXPECT_EQ("A-2", text_of(gentl.IFGetDeviceInfo, iface, "Device11", DEVICE_INFO_SERIAL_NUMBER));
    const Camera camera(gentl, system->open_interface("FG2"), "Device20");
    EXPECT_EQ(uint64_t{96 * 32}, camera.stream_number(STREAM_INFO_PAYLOAD_SIZE));
}

} // namespace

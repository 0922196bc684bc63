#include <string>

#include "port/routing.h"
#include "unit/port/Port_fixtures.h"

namespace zvtest {

namespace {

using namespace GenTL;
using namespace zvgentl;
using zvgentl::Registers;

TEST(Routes, LeadToTheRegistersOfOneOwner)
{
    struct Row {
        ModuleKind kind;
        Registers registers;
        const char* owner; // which must be open
    };
    for (const Row& row : {Row{ModuleKind::invalid, Registers::of_nothing, nullptr},
                           Row{ModuleKind::system, Registers::of_module, nullptr},
                           Row{ModuleKind::iface, Registers::of_grabber, "grabber"},
                           Row{ModuleKind::device, Registers::of_grabber, "grabber"},
                           Row{ModuleKind::stream, Registers::of_camera, "stream"},
                           Row{ModuleKind::buffer, Registers::of_module, nullptr},
                           Row{ModuleKind::remote_device, Registers::of_camera, "camera"}}) {
        EXPECT_EQ(row.kind, route_of(row.kind).kind);
        EXPECT_EQ(row.registers, route_of(row.kind).registers);
        EXPECT_STREQ(row.owner, route_of(row.kind).owner);
    }
}

class Routing : public PortTree {
protected:
    uint32_t data{0};
    uint32_t size{4};
};

TEST_F(Routing, IsOpenWhileEverythingIs)
{
    for (const Port& port : ports())
        EXPECT_TRUE(is_open(port)) << port.kind_name();
}

TEST_F(Routing, IsClosedWithAStream)
{
    const Port port(stream());
    stream().close();
    EXPECT_FALSE(is_open(port));
    EXPECT_TRUE(is_open(Port(camera())));
}

TEST_F(Routing, IsClosedWithACamera)
{
    camera().mark_closed_and_wipe();
    EXPECT_FALSE(is_open(Port(camera())));
    EXPECT_TRUE(is_open(Port(device()))) << "its registers are the grabber's";
}

TEST_F(Routing, IsClosedWithAGrabber)
{
    iface().close_Grabber();
    iface().mark_closed_with_cameras();
    camera().mark_open();
    EXPECT_FALSE(is_open(Port(iface())));
    EXPECT_FALSE(is_open(Port(device()))) << "though its camera is open";
    EXPECT_TRUE(is_open(Port(system)));
    camera().mark_closed_and_wipe();
}

TEST_F(Routing, ReadsRegistersOfGrabberAndCamera)
{
    EXPECT_TRUE(read_registers(Port(iface()), 1, &data, &size));
    EXPECT_TRUE(read_registers(Port(device()), 2, &data, &size));
    EXPECT_TRUE(read_registers(Port(stream()), 3, &data, &size));
    EXPECT_TRUE(read_registers(Port(camera()), 4, &data, &size));
    EXPECT_EQ((Calls{call("ZVGR_GrabberReadReg", grabber(), 1, &data, 4),
                     call("ZVGR_GrabberReadReg", grabber(), 2, &data, 4),
                     call("ZVGR_CameraReadReg", fake.camera_handle(0, 1), 3, &data, 4),
                     call("ZVGR_CameraReadReg", fake.camera_handle(0, 1), 4, &data, 4)}),
              fake.calls());
}

TEST_F(Routing, WritesRegistersOfGrabberAndCamera)
{
    EXPECT_TRUE(write_registers(Port(iface()), 1, &data, &size));
    EXPECT_TRUE(write_registers(Port(device()), 2, &data, &size));
    EXPECT_TRUE(write_registers(Port(stream()), 3, &data, &size));
    EXPECT_TRUE(write_registers(Port(camera()), 4, &data, &size));
    EXPECT_EQ((Calls{call("ZVGR_GrabberWriteReg", grabber(), 1, &data, 4),
                     call("ZVGR_GrabberWriteReg", grabber(), 2, &data, 4),
                     call("ZVGR_CameraWriteReg", fake.camera_handle(0, 1), 3, &data, 4),
                     call("ZVGR_CameraWriteReg", fake.camera_handle(0, 1), 4, &data, 4)}),
              fake.calls());
}

TEST_F(Routing, KeepsTheSizeThatTheLibraryLeaves)
{
    fake.next("ZVGR_GrabberReadReg").gives(3);
    EXPECT_TRUE(read_registers(Port(iface()), 1, &data, &size));
    EXPECT_EQ(3U, size);
    fake.next("ZVGR_CameraWriteReg").gives(2);
    EXPECT_TRUE(write_registers(Port(camera()), 1, &data, &size));
    EXPECT_EQ(2U, size);
}

TEST_F(Routing, FailsForEveryStatusButSuccess)
{
    for (const uint32_t status : {0U, 0x2FFFU, 0x3001U, 0x13000U}) {
        fake.next("ZVGR_GrabberReadReg").answers(status);
        EXPECT_FALSE(read_registers(Port(device()), 1, &data, &size));
        fake.next("ZVGR_CameraWriteReg").answers(status);
        EXPECT_FALSE(write_registers(Port(stream()), 1, &data, &size));
        fake.next("ZVGR_GetXmlUrl").answers(status);
        EXPECT_FALSE(url_of(Port(camera())));
    }
}

TEST_F(Routing, ReadsDescriptionsOfSystemAndBuffer)
{
    char start[4] = {};
    size_t length = sizeof start;
    EXPECT_EQ(GC_ERR_SUCCESS, read_description(Port(system), 0x88888888, start, &length));
    EXPECT_EQ("<?xm", std::string(start, 4));
    EXPECT_EQ(GC_ERR_SUCCESS, read_description(Port(buffer()), 0x88888888, start, &length));
    EXPECT_EQ("PK\3\4", std::string(start, 4));
    EXPECT_EQ(GC_ERR_INVALID_ADDRESS, read_description(Port(buffer()), 0, start, &length));
}

TEST_F(Routing, ReadsNoDescriptionWhereRegistersAreTheLibrarys)
{
    for (const Port& port : ports()) {
        if (route_of(port.kind()).registers == Registers::of_module)
            continue;
        size_t length = 1;
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, read_description(port, 0x88888888, &data, &length));
        EXPECT_EQ(1U, length);
    }
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(Routing, AsksTheLibraryForUrlsOfGrabberAndCamera)
{
    fake.set_xml_url(grabber(), "Local:grabber.xml;0;1");
    fake.set_xml_url(fake.camera_handle(0, 1), "Local:camera.xml;0;1");
    EXPECT_EQ("Local:grabber.xml;0;1", url_of(Port(iface())));
    EXPECT_EQ("Local:grabber.xml;0;1", url_of(Port(device())));
    EXPECT_EQ("Local:camera.xml;0;1", url_of(Port(stream())));
    EXPECT_EQ("Local:camera.xml;0;1", url_of(Port(camera())));
    EXPECT_EQ(call("ZVGR_GetXmlUrl", grabber(), any(), 260), fake.calls().at(0));
    EXPECT_EQ(4U, fake.calls().size());
}

TEST_F(Routing, KnowsTheUrlsOfSystemAndBuffer)
{
    EXPECT_EQ("Local:ZV_SystemGenTL.xml;88888888;d3f", url_of(Port(system)));
    EXPECT_EQ("Local:ZV_BufferGenTL.zip;88888888;280", url_of(Port(buffer())));
    EXPECT_TRUE(fake.calls().empty());
}

} // namespace

} // namespace zvtest

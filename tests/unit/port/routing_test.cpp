#include <array>
#include <string>
#include <utility>

#include "port/routing.h"
#include "unit/modules/Module_fixtures.h"

// What the exported functions of ports do not show: modules that close after their port was found, and
// questions that they do not ask.

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

TEST(NoPort, IsTheDefault)
{
    const Port none;
    EXPECT_FALSE(none);
    EXPECT_STREQ("Invalid handle", none.kind_name());
    EXPECT_EQ("", none.getId());
}

/// One grabber with two cameras; the second one is open, and its stream, which has a buffer.
class Routing : public OneGrabber {
protected:
    void SetUp() override
    {
        OneGrabber::SetUp();
        list_cameras(2);
        fake.grabber_int("FW_Dma_Capable_QueuedBuffers_Imp") = 1;
        camera().mark_open();
        ASSERT_TRUE(camera().open_Stream(0));
        ASSERT_NE(nullptr, stream().new_buffer(m_memory.data(), m_memory.size(), nullptr));
        forget();
    }

    DeviceModule& device() { return *iface().get_Device(1); }
    CameraModule& camera() { return *device().get_Camera(); }
    StreamModule& stream() { return *camera().get_Stream(0); }
    PinnedBuffer buffer() { return stream().get_Buffers().at(0); }

private:
    std::array<uint8_t, 64> m_memory{};
};

TEST_F(Routing, IsOpenWhileEverythingIs)
{
    for (const Port& port :
         {Port(system), Port(iface()), Port(device()), Port(stream()), Port(buffer()), Port(camera())})
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

TEST_F(Routing, ReadsNoDescriptionWhereRegistersAreTheLibrarys)
{
    for (const Port& port : {Port(iface()), Port(device()), Port(stream()), Port(camera())}) {
        char byte = 0;
        size_t length = 1;
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, read_description(port, 0x88888888, &byte, &length));
        EXPECT_EQ(1U, length);
    }
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(Routing, KeepsABufferAliveInAPortThatWasMoved)
{
    Port first(buffer());
    const Port second(std::move(first));
    EXPECT_EQ(ModuleKind::buffer, second.kind());
    EXPECT_EQ("Buffer0x" + hex(buffer()->get_GrabberHandle()), second.getId());
}

} // namespace

} // namespace zvtest

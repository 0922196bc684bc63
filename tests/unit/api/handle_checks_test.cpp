#include <memory>

#include "api/ProcessState.h"
#include "api/handle_checks.h"
#include "modules/CameraModule.h"
#include "modules/InterfaceModule.h"
#include "modules/StreamModule.h"
#include "modules/SystemModule.h"
#include "support/fixtures.h"

// Handle checks in states that the exported functions never bring about. The tests of every function cover
// all other states.

namespace zvtest {

namespace {

using namespace zvgentl;

const ApiCall some_call{"SomeFunction"};

InterfaceModule& interface_at(uint32_t index) { return *current_system()->get_Interface(index); }
StreamModule& stream_of_first_camera() { return *interface_at(0).get_Camera(0)->get_Stream(0); }

class WithoutASystem : public OpenLibrary {};

TEST_F(WithoutASystem, NullIsNotTheSystem)
{
    EXPECT_FALSE(is_system(nullptr));
    EXPECT_EQ(ModuleKind::invalid, get_handle_type(nullptr));
    for (const Open open : {Open::required, Open::irrelevant}) {
        EXPECT_FALSE(check_interface_handle(nullptr, some_call, open));
        EXPECT_FALSE(check_device_handle(nullptr, some_call, open));
        EXPECT_FALSE(check_stream_handle(nullptr, some_call, open));
        EXPECT_FALSE(check_event_handle(nullptr, some_call, open));
    }
    EXPECT_FALSE(check_buffer_handle(nullptr, some_call));
}

class ClosedModules : public QueuedStream {};

TEST_F(ClosedModules, PassWhereItIsIrrelevantWhetherTheyAreOpen)
{
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    EXPECT_TRUE(check_interface_handle(iface, some_call, Open::irrelevant));
    EXPECT_TRUE(check_device_handle(dev, some_call, Open::irrelevant));
    EXPECT_TRUE(check_stream_handle(ds, some_call, Open::irrelevant));
}

class UnopenedInterface : public OpenSystem {
protected:
    IF_HANDLE iface{nullptr};

    void SetUp() override
    {
        OpenSystem::SetUp();
        num_interfaces();
        iface = &interface_at(0);
        forget();
    }
};

TEST_F(UnopenedInterface, CountsAsClosed)
{
    EXPECT_EQ(ModuleKind::invalid, get_handle_type(iface));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, check_interface_handle(iface, some_call, Open::required).error());
    EXPECT_TRUE(check_interface_handle(iface, some_call, Open::irrelevant));
}

TEST_F(UnopenedInterface, IsClosedAsGrabberZero)
{
    fake.allow_handle("ZVGR_Close", 0);
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, IFClose(iface));
    EXPECT_EQ((Calls{call("ZVGR_Close", 0)}), fake.calls());
    EXPECT_LOG_LINES({Priority::information, "Enter IFClose"},
                     {Priority::warning, "ZVGR_Close return error = " + std::to_string(any_failure)},
                     {Priority::error, "Interface 0x" + hex16(iface) + " already closed"},
                     {Priority::error, "Exit, Returning error GC_ERR_INVALID_HANDLE (0xFFFFFC12)"});
}

/// A device is open, its stream is not, and yet has a buffer and an event.
class ClosedStreamWithContents : public OpenDevice {
protected:
    BUFFER_HANDLE buffer{nullptr};
    EVENT_HANDLE event{nullptr};

    void SetUp() override
    {
        OpenDevice::SetUp();
        StreamModule& stream = stream_of_first_camera();
        fake.allow_handle(ZV_NO_HANDLE); // a buffer asks for its geometry with its stream's handle
        buffer = stream.get_Buffers().add(
            std::make_unique<BufferModule>(stream, m_memory.data(), m_memory.size(), uint64_t{0}, nullptr));
        add_event();
        forget();
    }

    void add_event()
    {
        StreamModule& stream = stream_of_first_camera();
        event = stream.get_Events().add(stream, EVENT_NEW_BUFFER).event.get();
        ASSERT_NE(nullptr, event);
    }
    void expect_not_available()
    {
        forget();
        EXPECT_EQ(GC_ERR_NOT_AVAILABLE, check_event_handle(event, some_call, Open::required).error());
        EXPECT_LOG_LINES({Priority::error, "Exit, Returning error GC_ERR_NOT_AVAILABLE (0xFFFFFC0A)",
                          "SomeFunction", "ZVGRLibGenTL"});
        forget();
        EXPECT_TRUE(check_event_handle(event, some_call, Open::irrelevant));
        EXPECT_LOG_LINES();
    }

private:
    std::array<uint8_t, 64> m_memory{};
};

TEST_F(ClosedStreamWithContents, HasAnEventThatNoFunctionUses)
{
    EVENT_NEW_BUFFER_DATA data{};
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    size_t size = sizeof data;
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, EventGetData(event, &data, &size, 0));
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, EventGetInfo(event, EVENT_EVENT_TYPE, &type, &data, &size));
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, EventGetDataInfo(event, nullptr, 0, EVENT_DATA_ID, &type, &data, &size));
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, EventFlush(event));
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, EventKill(event));
}

TEST_F(ClosedStreamWithContents, HasABufferThatIsKnown)
{
    EXPECT_TRUE(check_buffer_handle(buffer, some_call));
    EXPECT_EQ(ModuleKind::buffer, get_handle_type(buffer));
    EXPECT_EQ(ModuleKind::invalid, get_handle_type(&stream_of_first_camera()));
    EXPECT_LOG_LINES();
}

TEST_F(ClosedStreamWithContents, HasAnEventThatIsNotAvailable) { expect_not_available(); }

/// The stream is open, with an event, under owners that are closed.
class OpenStreamOfClosedOwners : public ClosedStreamWithContents {
protected:
    void SetUp() override
    {
        ClosedStreamWithContents::SetUp();
        ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
        ASSERT_TRUE(interface_at(0).get_Camera(0)->open_Stream(0));
        add_event();
    }
};

TEST_F(OpenStreamOfClosedOwners, HasAnEventThatIsNotAvailableWhileTheCameraIsClosed)
{
    expect_not_available();
    interface_at(0).get_Camera(0)->mark_open();
    EXPECT_TRUE(check_event_handle(event, some_call, Open::required));
}

TEST_F(OpenStreamOfClosedOwners, HasAnEventThatIsNotAvailableWhileTheInterfaceIsClosed)
{
    fake.allow_stale_handles();
    InterfaceModule& closed = interface_at(0);
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    closed.get_Camera(0)->mark_open();
    stream_of_first_camera().connect(fake.last_stream(), zvgentl::StreamMode::queued);
    add_event();
    expect_not_available();
    closed.get_Camera(0)->mark_closed_and_wipe();
}

} // namespace

} // namespace zvtest

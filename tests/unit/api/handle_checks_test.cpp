#include <algorithm>
#include <functional>
#include <utility>

#include "api/ProcessState.h"
#include "api/handle_checks.h"
#include "modules/CameraModule.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/StreamModule.h"
#include "modules/SystemModule.h"
#include "support/fixtures.h"

// Handle checks, also in states that the exported functions never bring about.

namespace zvtest {

namespace {

using namespace zvgentl;

const ApiCall some_call{"SomeFunction"};

InterfaceModule& interface_at(uint32_t index) { return *current_system()->get_Interface(index); }
StreamModule& stream_of_first_camera() { return *interface_at(0).get_Camera(0)->get_Stream(0); }

/// A check, as a code alone.
struct Check {
    const char* kind;
    std::function<GC_ERROR(void* handle, Open open)> code;
    Priority priority;
    std::string null_reason;    // after the function's name
    std::string unknown_reason; // the same

    ExpectedLine line(const std::string& reason) const { return {priority, "SomeFunction" + reason}; }
};

const std::vector<Check> checks = {
    {"interface",
     [](void* handle, Open open) { return check_interface_handle(handle, some_call, open).error(); },
     Priority::information, " - GC_ERR_INVALID_HANDLE", " - GC_ERR_INVALID_HANDLE"},
    {"device", [](void* handle, Open open) { return check_device_handle(handle, some_call, open).error(); },
     Priority::information, " [GC_ERR_INVALID_HANDLE]: NULL parameters value", " [GC_ERR_INVALID_HANDLE]"},
    {"stream", [](void* handle, Open open) { return check_stream_handle(handle, some_call, open).error(); },
     Priority::information, " - GC_ERR_INVALID_HANDLE", " - GC_ERR_INVALID_HANDLE"},
    {"buffer", [](void* handle, Open) { return check_buffer_handle(handle, some_call).error(); },
     Priority::information, " - GC_ERR_INVALID_HANDLE", " - GC_ERR_INVALID_HANDLE"},
    {"event", [](void* handle, Open open) { return check_event_handle(handle, some_call, open).error(); },
     Priority::error, " - GC_ERR_INVALID_HANDLE", " - GC_ERR_INVALID_HANDLE"},
};

class HandleChecksWithoutASystem : public OpenLibrary {};

TEST_F(HandleChecksWithoutASystem, RefuseEverything)
{
    int stranger = 0;
    for (const Check& check : checks) {
        for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(&stranger), all_ones<void*>()}) {
            for (const Open open : {Open::required, Open::irrelevant}) {
                SCOPED_TRACE(check.kind);
                forget();
                EXPECT_EQ(GC_ERR_INVALID_HANDLE, check.code(handle, open));
                EXPECT_TRUE(logged_exactly({check.line(check.null_reason)}));
            }
        }
    }
    EXPECT_FALSE(is_system(nullptr));
    EXPECT_FALSE(is_system(&stranger));
    EXPECT_EQ(ModuleKind::invalid, get_handle_type(nullptr));
    EXPECT_EQ(ModuleKind::invalid, get_handle_type(&stranger));
}

class HandleChecksWithoutInterfaces : public OpenSystem {};

TEST_F(HandleChecksWithoutInterfaces, KnowTheSystemAloneAndRecordNoError)
{
    const std::string before = last_error();
    for (const Check& check : checks) {
        SCOPED_TRACE(check.kind);
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, check.code(tl, Open::irrelevant));
        EXPECT_TRUE(logged_exactly({check.line(check.unknown_reason)}));
    }
    EXPECT_TRUE(is_system(tl));
    EXPECT_FALSE(is_system(nullptr));
    EXPECT_EQ(ModuleKind::system, get_handle_type(tl));
    EXPECT_EQ(before, last_error());
}

/// Everything is open.
class HandleChecks : public QueuedStream {
protected:
    BUFFER_HANDLE buffer{nullptr};

    void SetUp() override
    {
        QueuedStream::SetUp();
        buffer = announce().handle;
        register_event();
        forget();
    }
};

TEST_F(HandleChecks, PassTheirOwnKindAlone)
{
    int stranger = 0;
    const std::vector<void*> own = {iface, dev, ds, buffer, event};
    const std::vector<void*> all = {nullptr, all_ones<void*>(), &stranger, tl, iface, dev, port, ds, buffer,
                                    event};
    for (size_t i = 0; i < checks.size(); ++i) {
        for (void* handle : all) {
            SCOPED_TRACE(std::string(checks[i].kind) + " " + hex16(handle));
            forget();
            if (handle == own[i]) {
                EXPECT_EQ(GC_ERR_SUCCESS, checks[i].code(handle, Open::required));
                EXPECT_LOG_LINES();
            } else {
                EXPECT_EQ(GC_ERR_INVALID_HANDLE, checks[i].code(handle, Open::required));
                EXPECT_TRUE(logged_exactly(
                    {checks[i].line(handle == nullptr ? checks[i].null_reason : checks[i].unknown_reason)}));
            }
        }
    }
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(HandleChecks, HandOutTheObject)
{
    EXPECT_EQ(iface, &*check_interface_handle(iface, some_call, Open::required));
    EXPECT_EQ(dev, &*check_device_handle(dev, some_call, Open::required));
    EXPECT_EQ(ds, &*check_stream_handle(ds, some_call, Open::required));
    EXPECT_EQ(buffer, &*check_buffer_handle(buffer, some_call));
    EXPECT_EQ(event, &*check_event_handle(event, some_call, Open::required));
}

TEST_F(HandleChecks, SearchEveryInterfaceAndDevice)
{
    fake.has_grabbers(3);
    ASSERT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(tl, nullptr, 0));
    fake.grabber(1).has_cameras(3);
    iface = open_interface("FG1");
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    dev = open_device(iface, "Device12");
    ds = open_stream(dev, "Stream120");
    register_event();
    forget();
    buffer = announce().handle;
    ASSERT_EQ(GC_ERR_SUCCESS, DevGetPort(dev, &port));
    EXPECT_TRUE(check_interface_handle(iface, some_call, Open::required));
    EXPECT_TRUE(check_device_handle(dev, some_call, Open::required));
    EXPECT_TRUE(check_stream_handle(ds, some_call, Open::required));
    EXPECT_TRUE(check_buffer_handle(buffer, some_call));
    EXPECT_TRUE(check_event_handle(event, some_call, Open::required));
    EXPECT_EQ(ModuleKind::remote_device, get_handle_type(port));
}

TEST_F(HandleChecks, TellClosedModulesFromUnknownOnes)
{
    struct Row {
        std::function<GC_ERROR()> close;
        size_t check;
        void* handle;
        const char* reason;
    };
    const std::vector<Row> rows = {
        {[this] { return DSClose(ds); }, 2, ds, " - GC_ERR_INVALID_HANDLE, stream is closed"},
        {[this] { return DevClose(dev); }, 1, dev, " [GC_ERR_INVALID_HANDLE]: device is closed"},
        {[this] { return IFClose(iface); }, 0, iface, " - GC_ERR_INVALID_HANDLE, grabber is closed"},
    };
    for (const Row& row : rows) {
        ASSERT_EQ(GC_ERR_SUCCESS, row.close());
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, checks[row.check].code(row.handle, Open::required));
        EXPECT_EQ(GC_ERR_SUCCESS, checks[row.check].code(row.handle, Open::irrelevant));
        EXPECT_TRUE(logged_exactly({checks[row.check].line(row.reason)}));
    }
}

TEST_F(HandleChecks, ForgetBuffersAndEventsOfAClosedStream)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    forget();
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, check_buffer_handle(buffer, some_call).error());
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, check_event_handle(event, some_call, Open::irrelevant).error());
}

TEST_F(HandleChecks, NameEveryKind)
{
    for (const auto& [kind, handle] : {std::pair{ModuleKind::system, tl},
                                       {ModuleKind::iface, iface},
                                       {ModuleKind::device, dev},
                                       {ModuleKind::remote_device, port},
                                       {ModuleKind::stream, ds},
                                       {ModuleKind::buffer, buffer},
                                       {ModuleKind::invalid, event}, // events are not ports
                                       {ModuleKind::invalid, nullptr},
                                       {ModuleKind::invalid, all_ones<void*>()}})
        EXPECT_EQ(kind, get_handle_type(handle));
    EXPECT_LOG_LINES();
}

TEST_F(HandleChecks, NameNoKindOfWhatIsClosed)
{
    const auto are_unknown = [](const std::vector<void*>& handles) {
        return std::all_of(handles.begin(), handles.end(),
                           [](const void* handle) { return get_handle_type(handle) == ModuleKind::invalid; });
    };
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_TRUE(are_unknown({ds, buffer}));
    EXPECT_EQ(ModuleKind::device, get_handle_type(dev));
    EXPECT_EQ(ModuleKind::remote_device, get_handle_type(port));
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
    EXPECT_TRUE(are_unknown({dev, port, ds}));
    EXPECT_EQ(ModuleKind::iface, get_handle_type(iface));
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    EXPECT_TRUE(are_unknown({iface, dev, port, ds}));
    EXPECT_EQ(ModuleKind::system, get_handle_type(tl));
}

TEST_F(HandleChecks, NameNoKindUnderAClosedInterface)
{
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    for (void* handle : {iface, dev, port, ds, buffer})
        EXPECT_EQ(ModuleKind::invalid, get_handle_type(handle));
}

TEST_F(HandleChecks, NameNoKindOfAnEarlierSystem)
{
    ASSERT_EQ(GC_ERR_SUCCESS, TLClose(tl));
    EXPECT_EQ(ModuleKind::invalid, get_handle_type(tl));
    const TL_HANDLE earlier = tl;
    ASSERT_EQ(GC_ERR_SUCCESS, TLOpen(&tl));
    EXPECT_EQ(ModuleKind::invalid, get_handle_type(earlier));
}

TEST_F(HandleChecks, RefuseEverythingOfAnEarlierInterfaceList)
{
    fake.has_grabbers(3);
    ASSERT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(tl, nullptr, 0));
    for (void* handle : {iface, dev, port, ds, buffer, event}) {
        EXPECT_EQ(ModuleKind::invalid, get_handle_type(handle));
        for (const Check& check : checks)
            EXPECT_EQ(GC_ERR_INVALID_HANDLE, check.code(handle, Open::irrelevant)) << check.kind;
    }
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
        stream.get_Events().add(stream, EVENT_NEW_BUFFER);
        event = stream.get_Events().find(EVENT_TYPE{EVENT_NEW_BUFFER}).get();
        ASSERT_NE(nullptr, event);
        forget();
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
        forget();
    }
    void add_event()
    {
        StreamModule& stream = stream_of_first_camera();
        stream.get_Events().add(stream, EVENT_NEW_BUFFER);
        event = stream.get_Events().find(EVENT_TYPE{EVENT_NEW_BUFFER}).get();
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

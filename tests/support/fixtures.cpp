#include "support/fixtures.h"

namespace zvtest {

void Doubles::reset()
{
    fake.reset();
    log.reset();
    settings.reset();
}

void Doubles::SetUp() { reset(); }

void Doubles::TearDown()
{
    fake.verify_finished();
    reset();
}

void Doubles::forget()
{
    fake.clear_calls();
    log.clear_lines();
    settings.clear_reads();
}

void Library::TearDown()
{
    GCCloseLib(); // a test may have closed it
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GCCloseLib()) << "the library stayed initialised";
    Doubles::TearDown();
}

void OpenLibrary::SetUp()
{
    Library::SetUp();
    ASSERT_EQ(GC_ERR_SUCCESS, GCInitLib());
    forget();
}

std::string OpenLibrary::last_error()
{
    GC_ERROR code = GC_ERR_SUCCESS;
    size_t size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetLastError(&code, nullptr, &size));
    std::string text(size, '\0');
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetLastError(&code, text.data(), &size));
    return text.c_str(); // without the terminating zero
}

void OpenSystem::SetUp()
{
    OpenLibrary::SetUp();
    if (HasFatalFailure())
        return;
    ASSERT_EQ(GC_ERR_SUCCESS, TLOpen(&tl));
    forget();
}

uint32_t OpenSystem::num_interfaces()
{
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, TLGetNumInterfaces(tl, &count));
    return count;
}

std::string OpenSystem::interface_id(uint32_t index)
{
    char text[64] = {};
    size_t size = sizeof text;
    EXPECT_EQ(GC_ERR_SUCCESS, TLGetInterfaceID(tl, index, text, &size));
    return text;
}

IF_HANDLE OpenSystem::open_interface(const std::string& id)
{
    IF_HANDLE handle = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, TLOpenInterface(tl, id.c_str(), &handle));
    return handle;
}

void OpenInterface::SetUp()
{
    OpenSystem::SetUp();
    if (HasFatalFailure())
        return;
    iface = open_interface("FG0");
    ASSERT_NE(nullptr, iface);
    forget();
}

uint32_t OpenInterface::num_devices(IF_HANDLE on)
{
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, IFGetNumDevices(on, &count));
    return count;
}

std::string OpenInterface::device_id(IF_HANDLE on, uint32_t index)
{
    char text[64] = {};
    size_t size = sizeof text;
    EXPECT_EQ(GC_ERR_SUCCESS, IFGetDeviceID(on, index, text, &size));
    return text;
}

DEV_HANDLE OpenInterface::open_device(IF_HANDLE on, const std::string& id)
{
    DEV_HANDLE handle = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, IFOpenDevice(on, id.c_str(), DEVICE_ACCESS_EXCLUSIVE, &handle));
    return handle;
}

void OpenDevice::SetUp()
{
    OpenInterface::SetUp();
    if (HasFatalFailure())
        return;
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    dev = open_device(iface, "Device00");
    ASSERT_NE(nullptr, dev);
    ASSERT_EQ(GC_ERR_SUCCESS, DevGetPort(dev, &port));
    forget();
}

DS_HANDLE OpenDevice::open_stream(DEV_HANDLE on, const std::string& id)
{
    DS_HANDLE handle = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DevOpenDataStream(on, id.c_str(), &handle));
    return handle;
}

void OpenStream::SetUp()
{
    OpenDevice::SetUp();
    if (HasFatalFailure())
        return;
    fake.grabber_int("FW_Dma_Capable_QueuedBuffers_Imp") = is_queued() ? 1 : 0;
    ds = open_stream(dev, "Stream000");
    ASSERT_NE(nullptr, ds);
    forget();
}

void CyclicStream::SetUp()
{
    OpenStream::SetUp();
    fake.allow_handle("ZVGR_BufferToQueue", 0);
    fake.allow_handle("ZVGR_BufferRevoke", 0);
}

Announced& OpenStream::added(Announced buffer)
{
    buffer.library = is_queued() ? fake.last_buffer() : 0;
    buffers.push_back(std::make_unique<Announced>(std::move(buffer)));
    return *buffers.back();
}

Announced& OpenStream::announce(size_t size, void* user)
{
    Announced buffer;
    buffer.memory.resize(size);
    buffer.user = user;
    EXPECT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, buffer.memory.data(), size, user, &buffer.handle));
    return added(std::move(buffer));
}

Announced& OpenStream::alloc_and_announce(size_t size, void* user)
{
    Announced buffer;
    buffer.user = user;
    EXPECT_EQ(GC_ERR_SUCCESS, DSAllocAndAnnounceBuffer(ds, size, user, &buffer.handle));
    return added(std::move(buffer));
}

void OpenStream::queue(const Announced& buffer)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(ds, buffer.handle));
}

void OpenStream::register_event()
{
    EXPECT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_NEW_BUFFER, &event));
}

void OpenStream::start(uint64_t frames)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(ds, ACQ_START_FLAGS_DEFAULT, frames));
}

void OpenStream::stop() { EXPECT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(ds, ACQ_STOP_FLAGS_DEFAULT)); }

void OpenStream::deliver(const Announced& buffer, const Frame& frame)
{
    if (is_queued())
        fake.deliver_queued(buffer.library, frame);
    else
        fake.deliver_cyclic(stream(), m_next_frame++ % 4, frame);
}

OpenStream::Taken OpenStream::take(uint64_t timeout)
{
    Taken taken = {};
    taken.data = untouched<EVENT_NEW_BUFFER_DATA>();
    taken.size = sizeof taken.data;
    taken.code = EventGetData(event, &taken.data, &taken.size, timeout);
    return taken;
}

} // namespace zvtest

#include <algorithm>
#include <iterator>

#include "api/module_calls.h"

// What every function of the system, interface and device families refuses: bad handles, and missing
// pointers.

namespace zvtest {

namespace {

/// Everything is open. A known text is the last error.
class EverythingOpen : public QueuedStream {
protected:
    BUFFER_HANDLE buffer{nullptr};
    std::string text_before;

    void SetUp() override
    {
        QueuedStream::SetUp();
        buffer = announce().handle;
        register_event();
        INFO_DATATYPE type = 0;
        char byte = 0;
        size_t size = 1;
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, GCGetInfo(TL_INFO_ID, &type, &byte, &size)); // records a text
        text_before = last_error();
        forget();
    }

    /// Calls the function and expects it to stop at the handle, with `reported` behind its enter line.
    void expect_refused(const ModuleFunction& function, void* handle,
                        const std::vector<ExpectedLine>& reported)
    {
        SCOPED_TRACE(hex16(handle));
        forget();
        const size_t elapsed_before = log.elapsed_calls();
        ModuleOutputs out;
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, function.call(handle, out));
        EXPECT_TRUE(out.are_untouched());
        EXPECT_TRUE(fake.calls().empty());
        EXPECT_TRUE(settings.reads().empty());
        EXPECT_TRUE(logged_exactly(function.lines(handle, reported)));
        EXPECT_EQ(function.is_timed ? 1U : 0U, log.elapsed_calls() - elapsed_before);
    }
};

class SystemFunction : public EverythingOpen, public testing::WithParamInterface<ModuleFunction> {
protected:
    void expect_unknown_system(void* handle)
    {
        const std::string text = "TLUpdateInterfaceList - GC_ERR_INVALID_HANDLE: invalid system handle";
        const bool is_recorded = std::string(GetParam().name) == "TLUpdateInterfaceList";
        if (is_recorded)
            expect_refused(GetParam(), handle, {info_line(text)});
        else
            expect_refused(GetParam(), handle, {}); // silently
        EXPECT_EQ(is_recorded ? text : text_before, last_error());
    }
};

TEST_P(SystemFunction, RefusesWhatIsNoSystem)
{
    int stranger = 0;
    for (void* handle : {static_cast<void*>(nullptr), all_ones<void*>(), static_cast<void*>(&stranger), iface,
                         dev, port, ds, buffer, event})
        expect_unknown_system(handle);
}

TEST_P(SystemFunction, RefusesAnEarlierSystem)
{
    const TL_HANDLE earlier = tl;
    ASSERT_EQ(GC_ERR_SUCCESS, TLClose(tl));
    expect_unknown_system(earlier);
    expect_unknown_system(nullptr);
    ASSERT_EQ(GC_ERR_SUCCESS, TLOpen(&tl));
    expect_unknown_system(earlier);
}

INSTANTIATE_TEST_SUITE_P(TL, SystemFunction, testing::ValuesIn(system_functions),
                         name_of_row<testing::TestParamInfo<ModuleFunction>>);

class InterfaceFunction : public EverythingOpen, public testing::WithParamInterface<ModuleFunction> {
protected:
    void expect_refused_as(const std::string& reason, void* handle)
    {
        expect_refused(GetParam(), handle,
                       {info_line(std::string(GetParam().name) + " - GC_ERR_INVALID_HANDLE" + reason)});
        EXPECT_EQ(text_before, last_error());
    }
};

TEST_P(InterfaceFunction, RefusesWhatIsNoInterface)
{
    int stranger = 0;
    for (void* handle : {static_cast<void*>(nullptr), all_ones<void*>(), static_cast<void*>(&stranger), tl,
                         dev, port, ds, buffer, event})
        expect_refused_as("", handle);
}

TEST_P(InterfaceFunction, RefusesAnInterfaceOfAnEarlierList)
{
    fake.has_grabbers(3);
    ASSERT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(tl, nullptr, 0));
    expect_refused_as("", iface);
    ASSERT_EQ(GC_ERR_SUCCESS, TLClose(tl));
    expect_refused_as("", iface);
    ASSERT_EQ(GC_ERR_SUCCESS, TLOpen(&tl));
    expect_refused_as("", iface);
    open_interface("FG0");
    expect_refused_as("", iface);
}

/// All but IFClose, which has an answer of its own to a closed interface.
class OpenInterfaceFunction : public InterfaceFunction {};

TEST_P(OpenInterfaceFunction, RefusesAClosedInterface)
{
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    expect_refused_as(", grabber is closed", iface);
}

INSTANTIATE_TEST_SUITE_P(IF, InterfaceFunction, testing::ValuesIn(interface_functions),
                         name_of_row<testing::TestParamInfo<ModuleFunction>>);

std::vector<ModuleFunction> functions_of_open_interfaces()
{
    std::vector<ModuleFunction> functions;
    std::copy_if(interface_functions.begin(), interface_functions.end(), std::back_inserter(functions),
                 [](const ModuleFunction& function) { return std::string(function.name) != "IFClose"; });
    return functions;
}

INSTANTIATE_TEST_SUITE_P(IF, OpenInterfaceFunction, testing::ValuesIn(functions_of_open_interfaces()),
                         name_of_row<testing::TestParamInfo<ModuleFunction>>);

class DeviceFunction : public EverythingOpen, public testing::WithParamInterface<ModuleFunction> {
protected:
    void expect_refused_as(const std::string& reason, void* handle)
    {
        expect_refused(GetParam(), handle,
                       {info_line(std::string(GetParam().name) + " [GC_ERR_INVALID_HANDLE]" + reason)});
        EXPECT_EQ(text_before, last_error());
    }
};

TEST_P(DeviceFunction, RefusesWhatIsNoDevice)
{
    expect_refused_as(": NULL parameters value", nullptr);
    int stranger = 0;
    for (void* handle :
         {all_ones<void*>(), static_cast<void*>(&stranger), tl, iface, port, ds, buffer, event})
        expect_refused_as("", handle);
}

TEST_P(DeviceFunction, RefusesEveryHandleWithoutASystem)
{
    ASSERT_EQ(GC_ERR_SUCCESS, TLClose(tl));
    expect_refused_as(": NULL parameters value", dev);
    expect_refused_as(": NULL parameters value", nullptr);
}

TEST_P(DeviceFunction, RefusesADeviceOfAnEarlierList)
{
    fake.grabber(0).has_cameras(3);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    expect_refused_as("", dev);
    open_device(iface, "Device00");
    expect_refused_as("", dev);
}

TEST_P(DeviceFunction, RefusesADeviceThatWasClosed)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
    expect_refused_as(": device is closed", dev);
}

TEST_P(DeviceFunction, RefusesADeviceWhoseInterfaceWasClosed)
{
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    expect_refused_as(": device is closed", dev);
}

INSTANTIATE_TEST_SUITE_P(Dev, DeviceFunction, testing::ValuesIn(device_functions),
                         name_of_row<testing::TestParamInfo<ModuleFunction>>);

using Order = MissingPointer::Order;

template <class T>
T* as(void* missing)
{
    return static_cast<T*>(missing);
}

const std::vector<ExpectedLine> silently;
const std::vector<ExpectedLine> with_exit_line{FAILED_WITH(GC_ERR_INVALID_PARAMETER)};
const std::vector<ExpectedLine> with_exit_line_and_time{FAILED_WITH(GC_ERR_INVALID_PARAMETER),
                                                        duration_line()};

const std::vector<MissingPointer> system_pointers = {
    {"TLGetNumInterfaces", "piNumIfaces",
     [](void* system, void* missing, ModuleOutputs&) {
         return TLGetNumInterfaces(system, as<uint32_t>(missing));
     },
     Order::behind_handle, silently},
    {"TLGetInfo", "piType",
     [](void* system, void* missing, ModuleOutputs& out) {
         return TLGetInfo(system, TL_INFO_ID, as<INFO_DATATYPE>(missing), out.text.data(), &out.size);
     },
     Order::behind_handle, with_exit_line},
    {"TLGetInfo", "piSize",
     [](void* system, void* missing, ModuleOutputs& out) {
         return TLGetInfo(system, TL_INFO_ID, &out.type, out.text.data(), as<size_t>(missing));
     },
     Order::behind_handle, with_exit_line},
    {"TLGetInterfaceID", "piSize",
     [](void* system, void* missing, ModuleOutputs& out) {
         return TLGetInterfaceID(system, 0, out.text.data(), as<size_t>(missing));
     },
     Order::behind_handle, with_exit_line},
    {"TLOpenInterface", "sIfaceID",
     [](void* system, void* missing, ModuleOutputs& out) {
         return TLOpenInterface(system, as<const char>(missing), &out.handle);
     },
     Order::behind_handle, with_exit_line_and_time},
    {"TLOpenInterface", "phIface",
     [](void* system, void* missing, ModuleOutputs&) {
         return TLOpenInterface(system, "FG0", as<IF_HANDLE>(missing));
     },
     Order::behind_handle, with_exit_line_and_time},
    {"TLGetInterfaceInfo", "sIfaceID",
     [](void* system, void* missing, ModuleOutputs& out) {
         return TLGetInterfaceInfo(system, as<const char>(missing), INTERFACE_INFO_ID, &out.type,
                                   out.text.data(), &out.size);
     },
     Order::behind_handle, with_exit_line},
    {"TLGetInterfaceInfo", "piType",
     [](void* system, void* missing, ModuleOutputs& out) {
         return TLGetInterfaceInfo(system, "FG0", INTERFACE_INFO_ID, as<INFO_DATATYPE>(missing),
                                   out.text.data(), &out.size);
     },
     Order::behind_handle, with_exit_line},
    {"TLGetInterfaceInfo", "piSize",
     [](void* system, void* missing, ModuleOutputs& out) {
         return TLGetInterfaceInfo(system, "FG0", INTERFACE_INFO_ID, &out.type, out.text.data(),
                                   as<size_t>(missing));
     },
     Order::behind_handle, with_exit_line},
};

const std::vector<MissingPointer> interface_pointers = {
    {"IFGetNumDevices", "piNumDevices",
     [](void* iface, void* missing, ModuleOutputs&) { return IFGetNumDevices(iface, as<uint32_t>(missing)); },
     Order::before_handle, silently},
    {"IFGetDeviceID",
     "piSize",
     [](void* iface, void* missing, ModuleOutputs& out) {
         return IFGetDeviceID(iface, 0, out.text.data(), as<size_t>(missing));
     },
     Order::before_handle,
     {error_line("GC_ERR_INVALID_PARAMETER: piSize invalid parameter"),
      FAILED_WITH(GC_ERR_INVALID_PARAMETER)}},
    {"IFGetParentTL", "phSystem",
     [](void* iface, void* missing, ModuleOutputs&) { return IFGetParentTL(iface, as<TL_HANDLE>(missing)); },
     Order::before_handle, silently},
    {"IFOpenDevice", "sDeviceID",
     [](void* iface, void* missing, ModuleOutputs& out) {
         return IFOpenDevice(iface, as<const char>(missing), DEVICE_ACCESS_EXCLUSIVE, &out.handle);
     },
     Order::before_handle, with_exit_line_and_time},
    {"IFOpenDevice", "phDevice",
     [](void* iface, void* missing, ModuleOutputs&) {
         return IFOpenDevice(iface, "Device00", DEVICE_ACCESS_EXCLUSIVE, as<DEV_HANDLE>(missing));
     },
     Order::before_handle, with_exit_line_and_time},
    {"IFGetInfo", "piType",
     [](void* iface, void* missing, ModuleOutputs& out) {
         return IFGetInfo(iface, INTERFACE_INFO_ID, as<INFO_DATATYPE>(missing), out.text.data(), &out.size);
     },
     Order::before_handle, with_exit_line},
    {"IFGetInfo", "piSize",
     [](void* iface, void* missing, ModuleOutputs& out) {
         return IFGetInfo(iface, INTERFACE_INFO_ID, &out.type, out.text.data(), as<size_t>(missing));
     },
     Order::before_handle, with_exit_line},
    {"IFGetDeviceInfo", "sDeviceID",
     [](void* iface, void* missing, ModuleOutputs& out) {
         return IFGetDeviceInfo(iface, as<const char>(missing), DEVICE_INFO_ID, &out.type, out.text.data(),
                                &out.size);
     },
     Order::before_handle, with_exit_line},
    {"IFGetDeviceInfo", "piType",
     [](void* iface, void* missing, ModuleOutputs& out) {
         return IFGetDeviceInfo(iface, "Device00", DEVICE_INFO_ID, as<INFO_DATATYPE>(missing),
                                out.text.data(), &out.size);
     },
     Order::before_handle, with_exit_line},
    {"IFGetDeviceInfo", "piSize",
     [](void* iface, void* missing, ModuleOutputs& out) {
         return IFGetDeviceInfo(iface, "Device00", DEVICE_INFO_ID, &out.type, out.text.data(),
                                as<size_t>(missing));
     },
     Order::before_handle, with_exit_line},
};

const std::vector<MissingPointer> device_pointers = {
    {"DevGetPort", "phRemoteDevice",
     [](void* device, void* missing, ModuleOutputs&) { return DevGetPort(device, as<PORT_HANDLE>(missing)); },
     Order::before_handle, silently},
    {"DevGetParentIF", "phIface",
     [](void* device, void* missing, ModuleOutputs&) {
         return DevGetParentIF(device, as<IF_HANDLE>(missing));
     },
     Order::before_handle, silently},
    {"DevGetNumDataStreams", "piNumDataStreams",
     [](void* device, void* missing, ModuleOutputs&) {
         return DevGetNumDataStreams(device, as<uint32_t>(missing));
     },
     Order::before_handle, silently},
    {"DevGetDataStreamID", "piSize",
     [](void* device, void* missing, ModuleOutputs& out) {
         return DevGetDataStreamID(device, 0, out.text.data(), as<size_t>(missing));
     },
     Order::before_handle, silently},
    {"DevOpenDataStream", "sDataStreamID",
     [](void* device, void* missing, ModuleOutputs& out) {
         return DevOpenDataStream(device, as<const char>(missing), &out.handle);
     },
     Order::before_handle, with_exit_line},
    {"DevOpenDataStream", "phDataStream",
     [](void* device, void* missing, ModuleOutputs&) {
         return DevOpenDataStream(device, "Stream000", as<DS_HANDLE>(missing));
     },
     Order::before_handle, with_exit_line},
    {"DevGetInfo", "piType",
     [](void* device, void* missing, ModuleOutputs& out) {
         return DevGetInfo(device, DEVICE_INFO_ID, as<INFO_DATATYPE>(missing), out.text.data(), &out.size);
     },
     Order::before_handle, with_exit_line},
    {"DevGetInfo", "piSize",
     [](void* device, void* missing, ModuleOutputs& out) {
         return DevGetInfo(device, DEVICE_INFO_ID, &out.type, out.text.data(), as<size_t>(missing));
     },
     Order::before_handle, with_exit_line},
};

class RequiredPointer : public EverythingOpen, public testing::WithParamInterface<MissingPointer> {
protected:
    void expect_missing_for(void* handle)
    {
        expect_missing(GetParam(), handle, nullptr);
        expect_missing(GetParam(), handle, all_ones<void*>());
    }
    void* handle_of_kind()
    {
        const std::string family = std::string(GetParam().function).substr(0, 2);
        return family == "TL" ? tl : family == "IF" ? iface : dev;
    }
};

TEST_P(RequiredPointer, IsMissingWhenNullOrAllOnes)
{
    expect_missing_for(handle_of_kind());
    const bool is_recorded = std::string(GetParam().function) == "IFGetDeviceID";
    EXPECT_EQ(is_recorded ? "GC_ERR_INVALID_PARAMETER: piSize invalid parameter" : text_before, last_error());
}

TEST_P(RequiredPointer, IsLookedAtInItsPlace)
{
    if (GetParam().precedes_handle()) {
        expect_missing_for(nullptr);
        return;
    }
    ModuleOutputs out;
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GetParam().call(nullptr, nullptr, out));
    EXPECT_TRUE(out.are_untouched());
}

INSTANTIATE_TEST_SUITE_P(TL, RequiredPointer, testing::ValuesIn(system_pointers),
                         name_of_row<testing::TestParamInfo<MissingPointer>>);
INSTANTIATE_TEST_SUITE_P(IF, RequiredPointer, testing::ValuesIn(interface_pointers),
                         name_of_row<testing::TestParamInfo<MissingPointer>>);
INSTANTIATE_TEST_SUITE_P(Dev, RequiredPointer, testing::ValuesIn(device_pointers),
                         name_of_row<testing::TestParamInfo<MissingPointer>>);

} // namespace

} // namespace zvtest

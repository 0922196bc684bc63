#include "api/module_calls.h"

#include <ostream>

namespace zvtest {

bool ModuleOutputs::are_untouched() const
{
    return is_untouched(handle) && is_untouched(number) && is_untouched(changed) && is_untouched(type) &&
           size == text.size() && text == ModuleOutputs().text;
}

std::vector<ExpectedLine> ModuleFunction::lines(void* handle, const std::vector<ExpectedLine>& reported) const
{
    std::vector<ExpectedLine> all{info_line(enter(handle))};
    all.insert(all.end(), reported.begin(), reported.end());
    if (is_timed)
        all.push_back(duration_line());
    return all;
}

std::ostream& operator<<(std::ostream& out, const ModuleFunction& function) { return out << function.name; }

std::ostream& operator<<(std::ostream& out, const MissingPointer& row)
{
    return out << row.function << " without " << row.argument;
}

void expect_missing(const MissingPointer& row, void* handle, void* missing)
{
    SCOPED_TRACE(hex16(missing));
    FakeLoggerLibrary::instance().clear_lines();
    FakeGrabberLibrary::instance().clear_calls();
    ModuleOutputs out;
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, row.call(handle, missing, out));
    EXPECT_TRUE(out.are_untouched());
    EXPECT_TRUE(FakeGrabberLibrary::instance().calls().empty());

    const std::vector<std::string> messages = logged_messages();
    ASSERT_EQ(1 + row.reported.size(), messages.size());
    EXPECT_EQ(0U, messages.front().rfind(std::string("Enter ") + row.function, 0)) << messages.front();
    for (size_t i = 0; i < row.reported.size(); ++i) {
        EXPECT_EQ(row.reported[i].message, messages[i + 1]);
        EXPECT_TRUE(logged(row.reported[i]));
    }
}

void expect_unknown(const ModuleHandles& handles)
{
    FakeLoggerLibrary::instance().clear_lines();
    ModuleOutputs out;
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, IFGetNumDevices(handles.iface, &out.number));
    EXPECT_LOGGED(Priority::information, "IFGetNumDevices - GC_ERR_INVALID_HANDLE");
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DevGetPort(handles.dev, &out.handle));
    EXPECT_LOGGED(Priority::information, "DevGetPort [GC_ERR_INVALID_HANDLE]");
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSGetBufferID(handles.ds, 0, &out.handle));
    EXPECT_LOGGED(Priority::information, "DSGetBufferID - GC_ERR_INVALID_HANDLE");
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(handles.event));
    EXPECT_LOGGED(Priority::error, "EventFlush - GC_ERR_INVALID_HANDLE");
    for (PORT_HANDLE port : {handles.iface, handles.dev, handles.port, handles.ds, handles.buffer}) {
        out.size = 4;
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GCReadPort(port, 0, out.text.data(), &out.size));
    }
    EXPECT_EQ(5U, times_logged("GC_ERR_INVALID_HANDLE"));
}

const std::vector<ModuleFunction> system_functions = {
    {"TLClose", [](void* system, ModuleOutputs&) { return TLClose(system); },
     [](void*) { return std::string("Enter TLClose"); }},
    {"TLUpdateInterfaceList",
     [](void* system, ModuleOutputs& out) { return TLUpdateInterfaceList(system, &out.changed, 0); },
     [](void*) { return std::string("Enter TLUpdateInterfaceList"); }},
    {"TLGetNumInterfaces",
     [](void* system, ModuleOutputs& out) { return TLGetNumInterfaces(system, &out.number); },
     [](void*) { return std::string("Enter TLGetNumInterfaces"); }},
    {"TLGetInfo",
     [](void* system, ModuleOutputs& out) {
         return TLGetInfo(system, TL_INFO_ID, &out.type, out.text.data(), &out.size);
     },
     [](void* system) { return "Enter TLGetInfo, handle=0x" + hex16(system) + ", info=0"; }},
    {"TLGetInterfaceID",
     [](void* system, ModuleOutputs& out) { return TLGetInterfaceID(system, 3, out.text.data(), &out.size); },
     [](void* system) { return "Enter TLGetInterfaceID, handle=0x" + hex16(system) + ", index=3, size=64"; }},
    {"TLOpenInterface",
     [](void* system, ModuleOutputs& out) { return TLOpenInterface(system, "FG0", &out.handle); },
     [](void*) { return std::string("Enter TLOpenInterface"); }, true},
    {"TLGetInterfaceInfo",
     [](void* system, ModuleOutputs& out) {
         return TLGetInterfaceInfo(system, "FG0", INTERFACE_INFO_TLTYPE, &out.type, out.text.data(),
                                   &out.size);
     },
     [](void* system) { return "Enter TLGetInterfaceInfo, hTL=0x" + hex16(system) + ", info=2"; }},
};

const std::vector<ModuleFunction> interface_functions = {
    {"IFUpdateDeviceList",
     [](void* iface, ModuleOutputs& out) { return IFUpdateDeviceList(iface, &out.changed, 0); },
     [](void*) { return std::string("Enter IFUpdateDeviceList"); }, true},
    {"IFGetNumDevices", [](void* iface, ModuleOutputs& out) { return IFGetNumDevices(iface, &out.number); },
     [](void*) { return std::string("Enter IFGetNumDevices"); }},
    {"IFGetDeviceID",
     [](void* iface, ModuleOutputs& out) { return IFGetDeviceID(iface, 1, out.text.data(), &out.size); },
     [](void* iface) { return "Enter IFGetDeviceID, handle=0x" + hex16(iface) + ", index=1, size=64"; }},
    {"IFClose", [](void* iface, ModuleOutputs&) { return IFClose(iface); },
     [](void*) { return std::string("Enter IFClose"); }},
    {"IFGetParentTL", [](void* iface, ModuleOutputs& out) { return IFGetParentTL(iface, &out.handle); },
     [](void*) { return std::string("Enter IFGetParentTL"); }},
    {"IFOpenDevice",
     [](void* iface, ModuleOutputs& out) {
         return IFOpenDevice(iface, "Device00", DEVICE_ACCESS_EXCLUSIVE, &out.handle);
     },
     [](void* iface) { return "Enter IFOpenDevice handle = 0x" + hex16(iface) + ", flags=0x4"; }, true},
    {"IFGetInfo",
     [](void* iface, ModuleOutputs& out) {
         return IFGetInfo(iface, INTERFACE_INFO_DISPLAYNAME, &out.type, out.text.data(), &out.size);
     },
     [](void*) { return std::string("Enter IFGetInfo info= 1 "); }},
    {"IFGetDeviceInfo",
     [](void* iface, ModuleOutputs& out) {
         return IFGetDeviceInfo(iface, "Device00", DEVICE_INFO_MODEL, &out.type, out.text.data(), &out.size);
     },
     [](void* iface) { return "Enter IFGetDeviceInfo handle=0x" + hex16(iface) + ", info=2 "; }},
};

const std::vector<ModuleFunction> device_functions = {
    {"DevGetPort", [](void* device, ModuleOutputs& out) { return DevGetPort(device, &out.handle); },
     [](void* device) { return "Enter DevGetPort, handle=0x" + hex16(device); }},
    {"DevClose", [](void* device, ModuleOutputs&) { return DevClose(device); },
     [](void*) { return std::string("Enter DevClose"); }},
    {"DevGetParentIF", [](void* device, ModuleOutputs& out) { return DevGetParentIF(device, &out.handle); },
     [](void*) { return std::string("Enter DevGetParentIF"); }},
    {"DevGetNumDataStreams",
     [](void* device, ModuleOutputs& out) { return DevGetNumDataStreams(device, &out.number); },
     [](void* device) { return "Enter DevGetNumDataStreams, handle=0x" + hex16(device); }},
    {"DevGetDataStreamID",
     [](void* device, ModuleOutputs& out) {
         return DevGetDataStreamID(device, 0, out.text.data(), &out.size);
     },
     [](void* device) {
         return "Enter DevGetDataStreamID, handle=0x" + hex16(device) + ", index=0, size=64";
     }},
    {"DevOpenDataStream",
     [](void* device, ModuleOutputs& out) { return DevOpenDataStream(device, "Stream000", &out.handle); },
     [](void*) { return std::string("Enter DevOpenDataStream, sDataStreamID=Stream000"); }},
    {"DevGetInfo",
     [](void* device, ModuleOutputs& out) {
         return DevGetInfo(device, DEVICE_INFO_VENDOR, &out.type, out.text.data(), &out.size);
     },
     [](void* device) { return "Enter DevGetInfo, handle=0x" + hex16(device) + " info= 1 "; }},
};

} // namespace zvtest

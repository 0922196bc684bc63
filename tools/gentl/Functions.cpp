#include "gentl/Functions.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "gentl/texts.h"
#include "platform/DynamicLibrary.h"

namespace zvgentl::tool {

namespace {

constexpr std::size_t most_named = 5;

/// Finds functions and remembers those that are missing.
class Binder {
public:
    explicit Binder(const platform::DynamicLibrary& library) : m_library(library) {}

    template <class Function>
    void bind(const char* name, Function& function)
    {
        function = reinterpret_cast<Function>(m_library.find(name));
        if (function == nullptr)
            m_missing.emplace_back(name);
    }
    /// Throws when one is missing.
    void check() const
    {
        if (m_missing.empty())
            return;
        const auto named = std::min(m_missing.size(), most_named);
        std::string text =
            joined({m_missing.begin(), m_missing.begin() + static_cast<std::ptrdiff_t>(named)}, ", ");
        if (named < m_missing.size())
            text += " and " + std::to_string(m_missing.size() - named) + " more functions";
        throw std::runtime_error("it does not export " + text);
    }

private:
    const platform::DynamicLibrary& m_library;
    std::vector<std::string> m_missing;
};

} // namespace

Functions find_functions(const platform::DynamicLibrary& library)
{
    Functions functions;
    Binder binder(library);
    binder.bind("GCInitLib", functions.GCInitLib);
    binder.bind("GCCloseLib", functions.GCCloseLib);
    binder.bind("GCGetInfo", functions.GCGetInfo);
    binder.bind("GCGetLastError", functions.GCGetLastError);
    binder.bind("GCReadPort", functions.GCReadPort);
    binder.bind("GCWritePort", functions.GCWritePort);
    binder.bind("GCReadPortStacked", functions.GCReadPortStacked);
    binder.bind("GCWritePortStacked", functions.GCWritePortStacked);
    binder.bind("GCGetPortURL", functions.GCGetPortURL);
    binder.bind("GCGetNumPortURLs", functions.GCGetNumPortURLs);
    binder.bind("GCGetPortURLInfo", functions.GCGetPortURLInfo);
    binder.bind("GCGetPortInfo", functions.GCGetPortInfo);
    binder.bind("GCRegisterEvent", functions.GCRegisterEvent);
    binder.bind("GCUnregisterEvent", functions.GCUnregisterEvent);
    binder.bind("EventGetData", functions.EventGetData);
    binder.bind("EventGetDataInfo", functions.EventGetDataInfo);
    binder.bind("EventGetInfo", functions.EventGetInfo);
    binder.bind("EventFlush", functions.EventFlush);
    binder.bind("EventKill", functions.EventKill);
    binder.bind("TLOpen", functions.TLOpen);
    binder.bind("TLClose", functions.TLClose);
    binder.bind("TLGetInfo", functions.TLGetInfo);
    binder.bind("TLGetNumInterfaces", functions.TLGetNumInterfaces);
    binder.bind("TLGetInterfaceID", functions.TLGetInterfaceID);
    binder.bind("TLGetInterfaceInfo", functions.TLGetInterfaceInfo);
    binder.bind("TLOpenInterface", functions.TLOpenInterface);
    binder.bind("TLUpdateInterfaceList", functions.TLUpdateInterfaceList);
    binder.bind("IFClose", functions.IFClose);
    binder.bind("IFGetInfo", functions.IFGetInfo);
    binder.bind("IFGetNumDevices", functions.IFGetNumDevices);
    binder.bind("IFGetDeviceID", functions.IFGetDeviceID);
    binder.bind("IFUpdateDeviceList", functions.IFUpdateDeviceList);
    binder.bind("IFGetDeviceInfo", functions.IFGetDeviceInfo);
    binder.bind("IFOpenDevice", functions.IFOpenDevice);
    binder.bind("IFGetParentTL", functions.IFGetParentTL);
    binder.bind("DevGetPort", functions.DevGetPort);
    binder.bind("DevGetNumDataStreams", functions.DevGetNumDataStreams);
    binder.bind("DevGetDataStreamID", functions.DevGetDataStreamID);
    binder.bind("DevOpenDataStream", functions.DevOpenDataStream);
    binder.bind("DevGetInfo", functions.DevGetInfo);
    binder.bind("DevClose", functions.DevClose);
    binder.bind("DevGetParentIF", functions.DevGetParentIF);
    binder.bind("DSAnnounceBuffer", functions.DSAnnounceBuffer);
    binder.bind("DSAllocAndAnnounceBuffer", functions.DSAllocAndAnnounceBuffer);
    binder.bind("DSFlushQueue", functions.DSFlushQueue);
    binder.bind("DSStartAcquisition", functions.DSStartAcquisition);
    binder.bind("DSStopAcquisition", functions.DSStopAcquisition);
    binder.bind("DSGetInfo", functions.DSGetInfo);
    binder.bind("DSGetBufferID", functions.DSGetBufferID);
    binder.bind("DSClose", functions.DSClose);
    binder.bind("DSRevokeBuffer", functions.DSRevokeBuffer);
    binder.bind("DSQueueBuffer", functions.DSQueueBuffer);
    binder.bind("DSGetBufferInfo", functions.DSGetBufferInfo);
    binder.bind("DSGetBufferChunkData", functions.DSGetBufferChunkData);
    binder.bind("DSGetParentDev", functions.DSGetParentDev);
    binder.bind("DSGetNumBufferParts", functions.DSGetNumBufferParts);
    binder.bind("DSGetBufferPartInfo", functions.DSGetBufferPartInfo);
    binder.check();
    return functions;
}

} // namespace zvgentl::tool

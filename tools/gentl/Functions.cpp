#include "gentl/Functions.h"

#include <stdexcept>
#include <string>

#include "platform/DynamicLibrary.h"

namespace zvgentl::tool {

namespace {

template <class Function>
void bind(const platform::DynamicLibrary& library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(library.find(name));
    if (function == nullptr)
        throw std::runtime_error(std::string("it does not export ") + name);
}

} // namespace

Functions find_functions(const platform::DynamicLibrary& library)
{
    Functions functions;
    bind(library, "GCInitLib", functions.GCInitLib);
    bind(library, "GCCloseLib", functions.GCCloseLib);
    bind(library, "GCGetInfo", functions.GCGetInfo);
    bind(library, "GCGetLastError", functions.GCGetLastError);
    bind(library, "GCReadPort", functions.GCReadPort);
    bind(library, "GCWritePort", functions.GCWritePort);
    bind(library, "GCReadPortStacked", functions.GCReadPortStacked);
    bind(library, "GCWritePortStacked", functions.GCWritePortStacked);
    bind(library, "GCGetPortURL", functions.GCGetPortURL);
    bind(library, "GCGetNumPortURLs", functions.GCGetNumPortURLs);
    bind(library, "GCGetPortURLInfo", functions.GCGetPortURLInfo);
    bind(library, "GCGetPortInfo", functions.GCGetPortInfo);
    bind(library, "GCRegisterEvent", functions.GCRegisterEvent);
    bind(library, "GCUnregisterEvent", functions.GCUnregisterEvent);
    bind(library, "EventGetData", functions.EventGetData);
    bind(library, "EventGetDataInfo", functions.EventGetDataInfo);
    bind(library, "EventGetInfo", functions.EventGetInfo);
    bind(library, "EventFlush", functions.EventFlush);
    bind(library, "EventKill", functions.EventKill);
    bind(library, "TLOpen", functions.TLOpen);
    bind(library, "TLClose", functions.TLClose);
    bind(library, "TLGetInfo", functions.TLGetInfo);
    bind(library, "TLGetNumInterfaces", functions.TLGetNumInterfaces);
    bind(library, "TLGetInterfaceID", functions.TLGetInterfaceID);
    bind(library, "TLGetInterfaceInfo", functions.TLGetInterfaceInfo);
    bind(library, "TLOpenInterface", functions.TLOpenInterface);
    bind(library, "TLUpdateInterfaceList", functions.TLUpdateInterfaceList);
    bind(library, "IFClose", functions.IFClose);
    bind(library, "IFGetInfo", functions.IFGetInfo);
    bind(library, "IFGetNumDevices", functions.IFGetNumDevices);
    bind(library, "IFGetDeviceID", functions.IFGetDeviceID);
    bind(library, "IFUpdateDeviceList", functions.IFUpdateDeviceList);
    bind(library, "IFGetDeviceInfo", functions.IFGetDeviceInfo);
    bind(library, "IFOpenDevice", functions.IFOpenDevice);
    bind(library, "IFGetParentTL", functions.IFGetParentTL);
    bind(library, "DevGetPort", functions.DevGetPort);
    bind(library, "DevGetNumDataStreams", functions.DevGetNumDataStreams);
    bind(library, "DevGetDataStreamID", functions.DevGetDataStreamID);
    bind(library, "DevOpenDataStream", functions.DevOpenDataStream);
    bind(library, "DevGetInfo", functions.DevGetInfo);
    bind(library, "DevClose", functions.DevClose);
    bind(library, "DevGetParentIF", functions.DevGetParentIF);
    bind(library, "DSAnnounceBuffer", functions.DSAnnounceBuffer);
    bind(library, "DSAllocAndAnnounceBuffer", functions.DSAllocAndAnnounceBuffer);
    bind(library, "DSFlushQueue", functions.DSFlushQueue);
    bind(library, "DSStartAcquisition", functions.DSStartAcquisition);
    bind(library, "DSStopAcquisition", functions.DSStopAcquisition);
    bind(library, "DSGetInfo", functions.DSGetInfo);
    bind(library, "DSGetBufferID", functions.DSGetBufferID);
    bind(library, "DSClose", functions.DSClose);
    bind(library, "DSRevokeBuffer", functions.DSRevokeBuffer);
    bind(library, "DSQueueBuffer", functions.DSQueueBuffer);
    bind(library, "DSGetBufferInfo", functions.DSGetBufferInfo);
    bind(library, "DSGetBufferChunkData", functions.DSGetBufferChunkData);
    bind(library, "DSGetParentDev", functions.DSGetParentDev);
    bind(library, "DSGetNumBufferParts", functions.DSGetNumBufferParts);
    bind(library, "DSGetBufferPartInfo", functions.DSGetBufferPartInfo);
    return functions;
}

} // namespace zvgentl::tool

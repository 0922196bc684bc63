#pragma once

#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include "GenTL/GenTL.h"

namespace zvsystem {

/// Throws std::runtime_error that names the function unless its call succeeded.
inline void check(GenTL::GC_ERROR code, const char* function)
{
    if (code != GenTL::GC_ERR_SUCCESS)
        throw std::runtime_error(std::string(function) + " answered " + std::to_string(code));
}

/// An exported function, as a pointer of the type that is asked for.
struct Symbol {
    void* address;
    template <class Function>
    operator Function*() const // NOLINT(google-explicit-constructor): converting is all that it does
    {
        return reinterpret_cast<Function*>(address);
    }
};

/// Throws std::runtime_error that names a function that is missing.
inline Symbol find_symbol(void* library, const char* name)
{
    void* const address = dlsym(library, name);
    if (address == nullptr)
        throw std::runtime_error(std::string(name) + " is not exported");
    return {address};
}

/// The functions of a loaded producer that the system tests and the benchmarks call.
class Functions {
    Symbol find(const char* name) const { return find_symbol(m_library, name); }
    void* m_library;

public:
    /// Throws std::runtime_error that names a function that is missing.
    explicit Functions(void* library) : m_library{library} {}

    GenTL::PGCInitLib GCInitLib{find("GCInitLib")};
    GenTL::PGCCloseLib GCCloseLib{find("GCCloseLib")};
    GenTL::PGCGetInfo GCGetInfo{find("GCGetInfo")};
    GenTL::PGCGetLastError GCGetLastError{find("GCGetLastError")};
    GenTL::PGCReadPort GCReadPort{find("GCReadPort")};
    GenTL::PGCWritePort GCWritePort{find("GCWritePort")};
    GenTL::PGCGetPortURLInfo GCGetPortURLInfo{find("GCGetPortURLInfo")};
    GenTL::PGCRegisterEvent GCRegisterEvent{find("GCRegisterEvent")};
    GenTL::PGCUnregisterEvent GCUnregisterEvent{find("GCUnregisterEvent")};
    GenTL::PEventGetData EventGetData{find("EventGetData")};
    GenTL::PEventGetInfo EventGetInfo{find("EventGetInfo")};
    GenTL::PEventFlush EventFlush{find("EventFlush")};
    GenTL::PEventKill EventKill{find("EventKill")};
    GenTL::PTLOpen TLOpen{find("TLOpen")};
    GenTL::PTLClose TLClose{find("TLClose")};
    GenTL::PTLGetInfo TLGetInfo{find("TLGetInfo")};
    GenTL::PTLGetNumInterfaces TLGetNumInterfaces{find("TLGetNumInterfaces")};
    GenTL::PTLGetInterfaceInfo TLGetInterfaceInfo{find("TLGetInterfaceInfo")};
    GenTL::PTLOpenInterface TLOpenInterface{find("TLOpenInterface")};
    GenTL::PTLUpdateInterfaceList TLUpdateInterfaceList{find("TLUpdateInterfaceList")};
    GenTL::PIFClose IFClose{find("IFClose")};
    GenTL::PIFGetNumDevices IFGetNumDevices{find("IFGetNumDevices")};
    GenTL::PIFUpdateDeviceList IFUpdateDeviceList{find("IFUpdateDeviceList")};
    GenTL::PIFGetDeviceInfo IFGetDeviceInfo{find("IFGetDeviceInfo")};
    GenTL::PIFOpenDevice IFOpenDevice{find("IFOpenDevice")};
    GenTL::PDevGetDataStreamID DevGetDataStreamID{find("DevGetDataStreamID")};
    GenTL::PDevOpenDataStream DevOpenDataStream{find("DevOpenDataStream")};
    GenTL::PDevGetPort DevGetPort{find("DevGetPort")};
    GenTL::PDevClose DevClose{find("DevClose")};
    GenTL::PDSAnnounceBuffer DSAnnounceBuffer{find("DSAnnounceBuffer")};
    GenTL::PDSAllocAndAnnounceBuffer DSAllocAndAnnounceBuffer{find("DSAllocAndAnnounceBuffer")};
    GenTL::PDSFlushQueue DSFlushQueue{find("DSFlushQueue")};
    GenTL::PDSStartAcquisition DSStartAcquisition{find("DSStartAcquisition")};
    GenTL::PDSStopAcquisition DSStopAcquisition{find("DSStopAcquisition")};
    GenTL::PDSGetInfo DSGetInfo{find("DSGetInfo")};
    GenTL::PDSClose DSClose{find("DSClose")};
    GenTL::PDSRevokeBuffer DSRevokeBuffer{find("DSRevokeBuffer")};
    GenTL::PDSQueueBuffer DSQueueBuffer{find("DSQueueBuffer")};
    GenTL::PDSGetBufferInfo DSGetBufferInfo{find("DSGetBufferInfo")};
    GenTL::PDSGetBufferPartInfo DSGetBufferPartInfo{find("DSGetBufferPartInfo")};
};

} // namespace zvsystem

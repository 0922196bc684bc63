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

/// The functions of a loaded producer that the system tests and the benchmarks call.
class Functions {
    /// An exported function, as a pointer of the type that is asked for.
    class Symbol {
    public:
        Symbol(void* library, const char* name) : m_address{dlsym(library, name)}
        {
            if (m_address == nullptr)
                throw std::runtime_error(std::string(name) + " is not exported");
        }
        template <class Function>
        operator Function*() const // NOLINT(google-explicit-constructor): converting is all that it does
        {
            return reinterpret_cast<Function*>(m_address);
        }

    private:
        void* m_address;
    };

    struct Find {
        void* library;
        Symbol operator()(const char* name) const { return {library, name}; }
    };
    Find m_find;

public:
    /// Throws std::runtime_error that names a function that is missing.
    explicit Functions(void* library) : m_find{library} {}

    GenTL::PGCInitLib GCInitLib{m_find("GCInitLib")};
    GenTL::PGCCloseLib GCCloseLib{m_find("GCCloseLib")};
    GenTL::PGCGetInfo GCGetInfo{m_find("GCGetInfo")};
    GenTL::PGCGetLastError GCGetLastError{m_find("GCGetLastError")};
    GenTL::PGCReadPort GCReadPort{m_find("GCReadPort")};
    GenTL::PGCWritePort GCWritePort{m_find("GCWritePort")};
    GenTL::PGCGetPortURLInfo GCGetPortURLInfo{m_find("GCGetPortURLInfo")};
    GenTL::PGCRegisterEvent GCRegisterEvent{m_find("GCRegisterEvent")};
    GenTL::PGCUnregisterEvent GCUnregisterEvent{m_find("GCUnregisterEvent")};
    GenTL::PEventGetData EventGetData{m_find("EventGetData")};
    GenTL::PEventGetInfo EventGetInfo{m_find("EventGetInfo")};
    GenTL::PEventFlush EventFlush{m_find("EventFlush")};
    GenTL::PEventKill EventKill{m_find("EventKill")};
    GenTL::PTLOpen TLOpen{m_find("TLOpen")};
    GenTL::PTLClose TLClose{m_find("TLClose")};
    GenTL::PTLGetInfo TLGetInfo{m_find("TLGetInfo")};
    GenTL::PTLGetNumInterfaces TLGetNumInterfaces{m_find("TLGetNumInterfaces")};
    GenTL::PTLGetInterfaceInfo TLGetInterfaceInfo{m_find("TLGetInterfaceInfo")};
    GenTL::PTLOpenInterface TLOpenInterface{m_find("TLOpenInterface")};
    GenTL::PTLUpdateInterfaceList TLUpdateInterfaceList{m_find("TLUpdateInterfaceList")};
    GenTL::PIFClose IFClose{m_find("IFClose")};
    GenTL::PIFGetNumDevices IFGetNumDevices{m_find("IFGetNumDevices")};
    GenTL::PIFUpdateDeviceList IFUpdateDeviceList{m_find("IFUpdateDeviceList")};
    GenTL::PIFGetDeviceInfo IFGetDeviceInfo{m_find("IFGetDeviceInfo")};
    GenTL::PIFOpenDevice IFOpenDevice{m_find("IFOpenDevice")};
    GenTL::PDevGetDataStreamID DevGetDataStreamID{m_find("DevGetDataStreamID")};
    GenTL::PDevOpenDataStream DevOpenDataStream{m_find("DevOpenDataStream")};
    GenTL::PDevGetPort DevGetPort{m_find("DevGetPort")};
    GenTL::PDevClose DevClose{m_find("DevClose")};
    GenTL::PDSAnnounceBuffer DSAnnounceBuffer{m_find("DSAnnounceBuffer")};
    GenTL::PDSAllocAndAnnounceBuffer DSAllocAndAnnounceBuffer{m_find("DSAllocAndAnnounceBuffer")};
    GenTL::PDSFlushQueue DSFlushQueue{m_find("DSFlushQueue")};
    GenTL::PDSStartAcquisition DSStartAcquisition{m_find("DSStartAcquisition")};
    GenTL::PDSStopAcquisition DSStopAcquisition{m_find("DSStopAcquisition")};
    GenTL::PDSGetInfo DSGetInfo{m_find("DSGetInfo")};
    GenTL::PDSClose DSClose{m_find("DSClose")};
    GenTL::PDSRevokeBuffer DSRevokeBuffer{m_find("DSRevokeBuffer")};
    GenTL::PDSQueueBuffer DSQueueBuffer{m_find("DSQueueBuffer")};
    GenTL::PDSGetBufferInfo DSGetBufferInfo{m_find("DSGetBufferInfo")};
    GenTL::PDSGetBufferPartInfo DSGetBufferPartInfo{m_find("DSGetBufferPartInfo")};
};

} // namespace zvsystem

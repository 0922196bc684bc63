#pragma once

#include "GenTL/GenTL.h"

namespace platform {
class DynamicLibrary;
}

namespace zvgentl::tool {

/// The 57 functions of a producer, found by name in its library.
struct Functions {
    GenTL::PGCInitLib GCInitLib{nullptr};
    GenTL::PGCCloseLib GCCloseLib{nullptr};
    GenTL::PGCGetInfo GCGetInfo{nullptr};
    GenTL::PGCGetLastError GCGetLastError{nullptr};
    GenTL::PGCReadPort GCReadPort{nullptr};
    GenTL::PGCWritePort GCWritePort{nullptr};
    GenTL::PGCReadPortStacked GCReadPortStacked{nullptr};
    GenTL::PGCWritePortStacked GCWritePortStacked{nullptr};
    GenTL::PGCGetPortURL GCGetPortURL{nullptr};
    GenTL::PGCGetNumPortURLs GCGetNumPortURLs{nullptr};
    GenTL::PGCGetPortURLInfo GCGetPortURLInfo{nullptr};
    GenTL::PGCGetPortInfo GCGetPortInfo{nullptr};
    GenTL::PGCRegisterEvent GCRegisterEvent{nullptr};
    GenTL::PGCUnregisterEvent GCUnregisterEvent{nullptr};
    GenTL::PEventGetData EventGetData{nullptr};
    GenTL::PEventGetDataInfo EventGetDataInfo{nullptr};
    GenTL::PEventGetInfo EventGetInfo{nullptr};
    GenTL::PEventFlush EventFlush{nullptr};
    GenTL::PEventKill EventKill{nullptr};
    GenTL::PTLOpen TLOpen{nullptr};
    GenTL::PTLClose TLClose{nullptr};
    GenTL::PTLGetInfo TLGetInfo{nullptr};
    GenTL::PTLGetNumInterfaces TLGetNumInterfaces{nullptr};
    GenTL::PTLGetInterfaceID TLGetInterfaceID{nullptr};
    GenTL::PTLGetInterfaceInfo TLGetInterfaceInfo{nullptr};
    GenTL::PTLOpenInterface TLOpenInterface{nullptr};
    GenTL::PTLUpdateInterfaceList TLUpdateInterfaceList{nullptr};
    GenTL::PIFClose IFClose{nullptr};
    GenTL::PIFGetInfo IFGetInfo{nullptr};
    GenTL::PIFGetNumDevices IFGetNumDevices{nullptr};
    GenTL::PIFGetDeviceID IFGetDeviceID{nullptr};
    GenTL::PIFUpdateDeviceList IFUpdateDeviceList{nullptr};
    GenTL::PIFGetDeviceInfo IFGetDeviceInfo{nullptr};
    GenTL::PIFOpenDevice IFOpenDevice{nullptr};
    GenTL::PIFGetParentTL IFGetParentTL{nullptr};
    GenTL::PDevGetPort DevGetPort{nullptr};
    GenTL::PDevGetNumDataStreams DevGetNumDataStreams{nullptr};
    GenTL::PDevGetDataStreamID DevGetDataStreamID{nullptr};
    GenTL::PDevOpenDataStream DevOpenDataStream{nullptr};
    GenTL::PDevGetInfo DevGetInfo{nullptr};
    GenTL::PDevClose DevClose{nullptr};
    GenTL::PDevGetParentIF DevGetParentIF{nullptr};
    GenTL::PDSAnnounceBuffer DSAnnounceBuffer{nullptr};
    GenTL::PDSAllocAndAnnounceBuffer DSAllocAndAnnounceBuffer{nullptr};
    GenTL::PDSFlushQueue DSFlushQueue{nullptr};
    GenTL::PDSStartAcquisition DSStartAcquisition{nullptr};
    GenTL::PDSStopAcquisition DSStopAcquisition{nullptr};
    GenTL::PDSGetInfo DSGetInfo{nullptr};
    GenTL::PDSGetBufferID DSGetBufferID{nullptr};
    GenTL::PDSClose DSClose{nullptr};
    GenTL::PDSRevokeBuffer DSRevokeBuffer{nullptr};
    GenTL::PDSQueueBuffer DSQueueBuffer{nullptr};
    GenTL::PDSGetBufferInfo DSGetBufferInfo{nullptr};
    GenTL::PDSGetBufferChunkData DSGetBufferChunkData{nullptr};
    GenTL::PDSGetParentDev DSGetParentDev{nullptr};
    GenTL::PDSGetNumBufferParts DSGetNumBufferParts{nullptr};
    GenTL::PDSGetBufferPartInfo DSGetBufferPartInfo{nullptr};
};

/// Finds all of them. Throws std::runtime_error that names the functions that are missing.
Functions find_functions(const platform::DynamicLibrary& library);

} // namespace zvgentl::tool

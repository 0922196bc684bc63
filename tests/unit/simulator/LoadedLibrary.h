#pragma once

#include "zvgr/ZVGRLib.h"

namespace zvsim_test {

/// Loads the library, and unloads it with the object or before.
class LoadedLibrary {
public:
    LoadedLibrary();
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;
    ~LoadedLibrary();

    void unload();
    /// Whether any part of it is mapped into the process.
    static bool is_mapped();

    decltype(&ZV_DeviceScan) device_scan;
    decltype(&ZVGR_Open) open;
    decltype(&ZVGR_Close) close;
    decltype(&ZVGR_UpdateCameraList) update_camera_list;
    decltype(&ZVGR_CameraOpen2) camera_open;
    decltype(&ZVGR_CameraClose) camera_close;
    decltype(&ZVGR_StreamCreate) stream_create;
    decltype(&ZVGR_StreamCreateAndAlloc) stream_create_and_alloc;
    decltype(&ZVGR_StreamDelete) stream_delete;
    decltype(&ZVGR_CameraCallbackRegister) camera_callback_register;
    decltype(&ZVGR_StreamBufferCallbackRegister) stream_buffer_callback_register;
    decltype(&ZVGR_BufferAllocAndAnnounce) buffer_alloc_and_announce;
    decltype(&ZVGR_BufferToQueue) buffer_to_queue;
    decltype(&ZVGR_CameraStartAcquire_GenTL) start;
    decltype(&ZVGR_CameraStopAcquire_GenTL) stop;

private:
    template <class Function>
    void find(Function& function, const char* name);

    void* m_library;
};

} // namespace zvsim_test

#pragma once

#include "unit/simulator/fixtures.h"

namespace zvsim_test {

/// Loads the library, and unloads it with the object or before.
class LoadedLibrary {
    /// The address of an exported function, whatever its type.
    struct Symbol {
        void* address;
        template <class Function>
        operator Function*() const
        {
            return reinterpret_cast<Function*>(address);
        }
    };

public:
    LoadedLibrary();
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;
    ~LoadedLibrary() { unload(); }

    void unload();
    /// Whether any part of it is mapped into the process.
    static bool is_mapped();

private:
    Symbol find(const char* name) const;

    void* m_library;

public:
    decltype(&ZV_DeviceScan) device_scan{find("ZV_DeviceScan")};
    decltype(&ZVGR_Open) open{find("ZVGR_Open")};
    decltype(&ZVGR_Close) close{find("ZVGR_Close")};
    decltype(&ZVGR_UpdateCameraList) update_camera_list{find("ZVGR_UpdateCameraList")};
    decltype(&ZVGR_CameraOpen2) camera_open{find("ZVGR_CameraOpen2")};
    decltype(&ZVGR_CameraClose) camera_close{find("ZVGR_CameraClose")};
    decltype(&ZVGR_StreamCreate) stream_create{find("ZVGR_StreamCreate")};
    decltype(&ZVGR_StreamCreateAndAlloc) stream_create_and_alloc{find("ZVGR_StreamCreateAndAlloc")};
    decltype(&ZVGR_StreamDelete) stream_delete{find("ZVGR_StreamDelete")};
    decltype(&ZVGR_CameraCallbackRegister) camera_callback_register{find("ZVGR_CameraCallbackRegister")};
    decltype(&ZVGR_StreamBufferCallbackRegister) buffer_callback_register{
        find("ZVGR_StreamBufferCallbackRegister")};
    decltype(&ZVGR_BufferAllocAndAnnounce) buffer_alloc_and_announce{find("ZVGR_BufferAllocAndAnnounce")};
    decltype(&ZVGR_BufferToQueue) buffer_to_queue{find("ZVGR_BufferToQueue")};
    decltype(&ZVGR_CameraStartAcquire_GenTL) start{find("ZVGR_CameraStartAcquire_GenTL")};
    decltype(&ZVGR_CameraStopAcquire_GenTL) stop{find("ZVGR_CameraStopAcquire_GenTL")};
};

/// A loaded library with one camera open.
class Loaded {
public:
    Loaded();

    /// A stream that delivers frames until it is stopped.
    void start(Mode mode);

private:
    ConfigurationFile m_file{"demo_grabber: false\n"
                             "grabbers: [{cameras: [{sensor_width: 64, sensor_height: 48,"
                             " rate: free-running, start_up: 0 ms}]}]\n"};

public:
    LoadedLibrary library;
    Receiver receiver;
    uint32_t grabber{0};
    uint32_t camera{0};
    uint32_t stream{0};
};

/// A joined thread stays in the system's list for a moment.
bool threads_become(size_t number);

} // namespace zvsim_test

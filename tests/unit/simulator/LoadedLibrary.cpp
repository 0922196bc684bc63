#include "unit/simulator/LoadedLibrary.h"

#include <fstream>
#include <stdexcept>
#include <string>

#include <dlfcn.h>

namespace zvsim_test {

LoadedLibrary::LoadedLibrary() : m_library{dlopen(ZVGR_LIBRARY, RTLD_NOW | RTLD_LOCAL)}
{
    if (m_library == nullptr)
        throw std::runtime_error{dlerror()};
    find(device_scan, "ZV_DeviceScan");
    find(open, "ZVGR_Open");
    find(close, "ZVGR_Close");
    find(update_camera_list, "ZVGR_UpdateCameraList");
    find(camera_open, "ZVGR_CameraOpen2");
    find(camera_close, "ZVGR_CameraClose");
    find(stream_create, "ZVGR_StreamCreate");
    find(stream_create_and_alloc, "ZVGR_StreamCreateAndAlloc");
    find(stream_delete, "ZVGR_StreamDelete");
    find(camera_callback_register, "ZVGR_CameraCallbackRegister");
    find(stream_buffer_callback_register, "ZVGR_StreamBufferCallbackRegister");
    find(buffer_alloc_and_announce, "ZVGR_BufferAllocAndAnnounce");
    find(buffer_to_queue, "ZVGR_BufferToQueue");
    find(start, "ZVGR_CameraStartAcquire_GenTL");
    find(stop, "ZVGR_CameraStopAcquire_GenTL");
}

LoadedLibrary::~LoadedLibrary() { unload(); }

void LoadedLibrary::unload()
{
    if (m_library != nullptr)
        dlclose(m_library);
    m_library = nullptr;
}

#ifdef _WIN32
bool LoadedLibrary::is_mapped() { return dlopen("ZVGRLib.dll", RTLD_NOW | RTLD_NOLOAD) != nullptr; }
#else
bool LoadedLibrary::is_mapped()
{
    std::ifstream maps{"/proc/self/maps"};
    for (std::string line; std::getline(maps, line);) {
        if (line.find("libZVGRLib.so") != std::string::npos)
            return true;
    }
    return false;
}
#endif

template <class Function>
void LoadedLibrary::find(Function& function, const char* name)
{
    function = reinterpret_cast<Function>(dlsym(m_library, name));
    if (function == nullptr)
        throw std::runtime_error{std::string{"there is no "} + name};
}

} // namespace zvsim_test

#include "unit/simulator/LoadedLibrary.h"

#include <stdexcept>

#include <dlfcn.h>

#include "support/process/process_state.h"

namespace zvsim_test {

LoadedLibrary::LoadedLibrary() : m_library{dlopen(ZVGR_LIBRARY, RTLD_NOW | RTLD_LOCAL)} {}

void LoadedLibrary::unload()
{
    if (m_library != nullptr)
        dlclose(m_library);
    m_library = nullptr;
}

bool LoadedLibrary::is_mapped()
{
    return zvtest::is_mapped(std::filesystem::path{ZVGR_LIBRARY}.filename().string());
}

LoadedLibrary::Symbol LoadedLibrary::find(const char* name) const
{
    void* const found = m_library != nullptr ? dlsym(m_library, name) : nullptr;
    if (found == nullptr)
        throw std::runtime_error{std::string{name} + ": " + dlerror()};
    return {found};
}

Loaded::Loaded()
{
    uint32_t count = 0;
    EXPECT_EQ(success, library.device_scan(&count));
    grabber = library.open(0);
    count = 1;
    EXPECT_EQ(success, library.update_camera_list(grabber, &camera, &count));
    EXPECT_EQ(success, library.camera_open(camera, nullptr));
}

void Loaded::start(Mode mode)
{
    if (mode == Mode::queued) {
        receiver.on_call = [this](uint64_t buffer) { library.buffer_to_queue(buffer, zv_queue_input); };
        EXPECT_EQ(success, library.stream_create(camera, &stream, 0));
        EXPECT_EQ(success, library.buffer_callback_register(stream, &Receiver::buffer_callback, &receiver));
        uint64_t buffer = 0;
        EXPECT_EQ(success, library.buffer_alloc_and_announce(stream, frame_size, nullptr, &buffer));
        EXPECT_EQ(success, library.buffer_to_queue(buffer, zv_queue_input));
    } else {
        EXPECT_EQ(success, library.stream_create_and_alloc(camera, &stream, ring_frames, 0));
        EXPECT_EQ(success, library.camera_callback_register(camera, &Receiver::frame_callback, &receiver));
    }
    EXPECT_EQ(success, library.start(camera, stream, 0));
}

bool threads_become(size_t number)
{
    return becomes_true([number] { return zvtest::thread_count() == number; });
}

} // namespace zvsim_test

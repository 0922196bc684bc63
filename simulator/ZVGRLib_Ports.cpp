#include <cstring>
#include <utility>

#include "zvgr/ZVGRLib.h"

#include "simulator/Library.h"
#include "simulator/api_call.h"
#include "simulator/features/CameraRegisters.h"
#include "simulator/features/Description.h"
#include "simulator/features/GrabberRegisters.h"

using namespace zvsim;

namespace {

/// What a transfer of that many bytes answers; *size was 0 until now.
uint32_t finished(uint32_t* size, uint32_t asked, uint32_t transferred)
{
    *size = transferred;
    return transferred != 0 || asked == 0 ? status_ok : status_bad_argument;
}

uint32_t read_from(const RegisterSpace& space, uint64_t address, void* buffer, uint32_t* size, uint32_t asked)
{
    if (!space.is_mapped(address))
        return status_bad_argument;
    return finished(size, asked, space.read(address, static_cast<unsigned char*>(buffer), asked));
}

uint32_t write_to(RegisterSpace& space, uint64_t address, const void* buffer, uint32_t* size, uint32_t asked)
{
    if (!space.is_mapped(address))
        return status_bad_argument;
    const uint32_t written = space.write(address, static_cast<const unsigned char*>(buffer), asked);
    if (written != 0)
        space.commit();
    return finished(size, asked, written);
}

/// One transfer, with the library locked: `transfer` gets the number of bytes asked for.
template <class Transfer>
uint32_t transfer(Function function, uint32_t handle, uint64_t address, const void* buffer, uint32_t* size,
                  const Transfer& transfer)
{
    const Call call{function,
                    handle_target(handle),
                    {{{"address", address}, {"size", size != nullptr ? *size : 0}}},
                    const_cast<void*>(buffer),
                    size};
    return api_call(call, status_failed, [&] {
        if (size == nullptr)
            return status_bad_argument;
        const uint32_t asked = std::exchange(*size, 0);
        if (buffer == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        return transfer(library, asked);
    });
}

/// Gives `access` the registers of an open camera.
template <class Access>
uint32_t with_camera(Library& library, uint32_t camera, const Access& access)
{
    const Camera* const found = library.find_camera(camera);
    if (found == nullptr)
        return status_bad_handle;
    if (!found->is_open || found->has_been_lost)
        return status_not_ready;
    CameraSpace space{*found->device};
    return access(space);
}

template <class Access>
uint32_t with_grabber(Library& library, uint32_t grabber, const Access& access)
{
    const Grabber* const found = library.find_grabber(grabber);
    if (found == nullptr)
        return status_bad_handle;
    library.update_links(*found);
    GrabberSpace space{*found->device};
    return access(space);
}

/// The description that belongs to a handle of any kind, or null.
const Description* description_of(Library& library, uint32_t handle)
{
    if (const Grabber* const grabber = library.find_grabber(handle))
        return &grabber->device->description();
    const auto* const stream = library.find_stream<Stream>(handle);
    const Camera* const camera = library.find_camera(stream != nullptr ? stream->camera() : handle);
    return camera != nullptr ? &camera->device->description() : nullptr;
}

} // namespace

uint32_t ZVGR_GrabberReadReg(uint32_t grabber, uint64_t address, void* buffer, uint32_t* size)
{
    return transfer(Function::grabber_read, grabber, address, buffer, size,
                    [&](Library& library, uint32_t asked) {
                        return with_grabber(library, grabber, [&](const RegisterSpace& space) {
                            return read_from(space, address, buffer, size, asked);
                        });
                    });
}

uint32_t ZVGR_GrabberWriteReg(uint32_t grabber, uint64_t address, const void* buffer, uint32_t* size)
{
    return transfer(Function::grabber_write, grabber, address, buffer, size,
                    [&](Library& library, uint32_t asked) {
                        return with_grabber(library, grabber, [&](RegisterSpace& space) {
                            return write_to(space, address, buffer, size, asked);
                        });
                    });
}

uint32_t ZVGR_CameraReadReg(uint32_t camera, uint64_t address, void* buffer, uint32_t* size)
{
    return transfer(Function::camera_read, camera, address, buffer, size,
                    [&](Library& library, uint32_t asked) {
                        return with_camera(library, camera, [&](const RegisterSpace& space) {
                            return read_from(space, address, buffer, size, asked);
                        });
                    });
}

uint32_t ZVGR_CameraWriteReg(uint32_t camera, uint64_t address, const void* buffer, uint32_t* size)
{
    return transfer(Function::camera_write, camera, address, buffer, size,
                    [&](Library& library, uint32_t asked) {
                        return with_camera(library, camera, [&](RegisterSpace& space) {
                            const uint32_t status = write_to(space, address, buffer, size, asked);
                            if (Stream* const stream = library.acquiring_stream(camera))
                                stream->follow_settings();
                            return status;
                        });
                    });
}

uint32_t ZVGR_GetXmlUrl(uint32_t handle, char* url, uint64_t* size)
{
    const Call call{Function::xml_url, handle_target(handle), {}, url, size};
    return api_call(call, status_failed, [&] {
        if (size == nullptr)
            return status_bad_argument;
        const uint64_t room = std::exchange(*size, 0);
        if (url == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        const Description* const description = description_of(library, handle);
        if (description == nullptr)
            return status_bad_handle;
        const std::string text = description->url();
        if (room < text.size() + 1)
            return status_bad_argument;
        std::memcpy(url, text.c_str(), text.size() + 1);
        *size = text.size() + 1;
        return status_ok;
    });
}

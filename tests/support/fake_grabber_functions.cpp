#include <cstring>

#include "zvgr/ZVGRLib.h"

#include "support/fake_grabber_checks.h"

// The functions of ZVGRLib.h over FakeGrabberLibrary: grabbers, cameras and values.

using namespace zvtest;

extern "C" {

uint32_t ZVGR_CALL ZV_DeviceScan(uint32_t* count)
{
    const Entered made("ZV_DeviceScan");
    return perform_status(made, count, [&](FakeWorld& world) {
        *count = world.scanned;
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZV_DeviceInfo(uint32_t index, ZvDeviceInfo* info)
{
    const Entered made("ZV_DeviceInfo", index, info->version);
    return perform_status(made, &info->protocol, [&](FakeWorld& world) {
        if (index >= world.scanned)
            return any_failure;
        info->protocol = world.setup(index).protocol;
        return succeeded;
    });
}

const char* ZVGR_CALL ZV_DeviceDisplayName(uint32_t index)
{
    const Entered made("ZV_DeviceDisplayName", index);
    return fake().perform<const char*>(
        made, nullptr,
        [&](FakeWorld& world) -> const char* {
            return index < world.scanned ? world.setup(index).display_name.c_str() : nullptr;
        },
        no_output);
}

uint32_t ZVGR_CALL ZVGR_Open(uint32_t index)
{
    const Entered made("ZVGR_Open", index);
    return fake().perform<uint32_t>(
        made, ZV_NO_HANDLE,
        [&](FakeWorld& world) { return index < world.scanned ? world.open_grabber(index) : ZV_NO_HANDLE; },
        no_output);
}

uint32_t ZVGR_CALL ZVGR_Close(uint32_t grabber)
{
    const Entered made("ZVGR_Close", grabber);
    return perform_on(made, &FakeWorld::grabbers, grabber, no_memory, [&](FakeWorld& world, OpenGrabber&) {
        world.close_grabber(grabber);
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_UpdateCameraList(uint32_t grabber, uint32_t* cameras, uint32_t* count)
{
    const Entered made("ZVGR_UpdateCameraList", grabber, *count);
    return perform_on(made, &FakeWorld::grabbers, grabber, count, [&](FakeWorld& world, OpenGrabber& found) {
        const uint32_t present = world.setup(found.position).cameras;
        for (uint32_t i = 0; i < present && i < *count && i < zv_max_cameras; ++i)
            cameras[i] = world.find_camera(grabber, i);
        *count = present;
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_CameraInfo2(uint32_t camera, ZvCameraInfo* info)
{
    const Entered made("ZVGR_CameraInfo2", camera, info->version);
    return perform_on(made, &FakeWorld::cameras, camera, no_memory, [&](FakeWorld& world, LiveCamera&) {
        *info = setup_of(world, camera).info;
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_CameraOpen2(uint32_t camera, const char* description_file)
{
    const Entered made("ZVGR_CameraOpen2", camera, description_file);
    return perform_on(made, &FakeWorld::cameras, camera, no_memory, [&](FakeWorld&, LiveCamera& found) {
        found.open = true;
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_CameraClose(uint32_t camera)
{
    const Entered made("ZVGR_CameraClose", camera);
    return perform_on(made, &FakeWorld::cameras, camera, no_memory, [&](FakeWorld&, LiveCamera& found) {
        found.open = false;
        found.acquiring = ZV_NO_HANDLE;
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_GrabberReadReg(uint32_t grabber, uint64_t address, void* buffer, uint32_t* size)
{
    const Entered made("ZVGR_GrabberReadReg", grabber, address, buffer, *size);
    return perform_on(made, &FakeWorld::grabbers, grabber, size, [&](FakeWorld& world, OpenGrabber& found) {
        return read_registers(world.setup(found.position).registers, address, buffer, *size);
    });
}

uint32_t ZVGR_CALL ZVGR_GrabberWriteReg(uint32_t grabber, uint64_t address, const void* buffer,
                                        uint32_t* size)
{
    Entered made("ZVGR_GrabberWriteReg", grabber, address, buffer, *size);
    add_data(made.made, buffer, *size);
    return perform_on(made, &FakeWorld::grabbers, grabber, size, [&](FakeWorld& world, OpenGrabber& found) {
        return write_registers(world.setup(found.position).registers, address, made.made.data);
    });
}

uint32_t ZVGR_CALL ZVGR_CameraReadReg(uint32_t camera, uint64_t address, void* buffer, uint32_t* size)
{
    const Entered made("ZVGR_CameraReadReg", camera, address, buffer, *size);
    return perform_on(made, &FakeWorld::cameras, camera, size, [&](FakeWorld& world, LiveCamera&) {
        return read_registers(setup_of(world, camera).registers, address, buffer, *size);
    });
}

uint32_t ZVGR_CALL ZVGR_CameraWriteReg(uint32_t camera, uint64_t address, const void* buffer, uint32_t* size)
{
    Entered made("ZVGR_CameraWriteReg", camera, address, buffer, *size);
    add_data(made.made, buffer, *size);
    return perform_on(made, &FakeWorld::cameras, camera, size, [&](FakeWorld& world, LiveCamera&) {
        return write_registers(setup_of(world, camera).registers, address, made.made.data);
    });
}

int64_t ZVGR_CALL ZVGR_GetGrabberValueInt(uint32_t handle, const char* name)
{
    return named_value("ZVGR_GetGrabberValueInt", handle, name);
}

int64_t ZVGR_CALL ZVGR_GetGrabberValueEnum(uint32_t handle, const char* name)
{
    return named_value("ZVGR_GetGrabberValueEnum", handle, name);
}

int64_t ZVGR_CALL ZVGR_GetCameraValueInt(uint32_t handle, const char* name)
{
    return named_value("ZVGR_GetCameraValueInt", handle, name);
}

int64_t ZVGR_CALL ZVGR_GetCameraValueEnum(uint32_t handle, const char* name)
{
    return named_value("ZVGR_GetCameraValueEnum", handle, name);
}

uint32_t ZVGR_CALL ZVGR_CameraCallbackRegister(uint32_t camera, ZvCameraCallback callback, void* context)
{
    const Entered made("ZVGR_CameraCallbackRegister", camera, code_address(callback), context);
    return perform_on(made, &FakeWorld::cameras, camera, no_memory, [&](FakeWorld&, LiveCamera& found) {
        found.callback = callback;
        found.context = context;
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_GetXmlUrl(uint32_t handle, char* url, uint64_t* size)
{
    const Entered made("ZVGR_GetXmlUrl", handle, static_cast<const void*>(url), *size);
    return perform_status(made, size, [&](FakeWorld& world) {
        if (!is_live_anywhere(made, world, handle))
            return any_failure;
        const std::string text = world.xml_url(handle);
        if (text.size() + 1 > *size)
            return any_failure;
        std::memcpy(url, text.c_str(), text.size() + 1);
        *size = text.size() + 1;
        return succeeded;
    });
}

} // extern "C"

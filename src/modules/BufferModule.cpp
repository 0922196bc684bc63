#include "modules/BufferModule.h"

#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <new>
#include <tuple>

#include "zvgr/ZVGRLib.h"

#include "log/Log.h"
#include "modules/PortMemory.h"
#include "modules/StreamModule.h"
#include "modules/grabber_info.h"
#include "modules/pixel_formats.h"
#include "modules/settings.h"
#include "platform/memory.h"
#include "resources/descriptions.h"

namespace zvgentl {

using namespace GenTL;

namespace {

constexpr std::align_val_t memory_alignment{4096};

constexpr PortMemory port_memory{"ZV_BufferGenTL.zip", buffer_description, buffer_description_size};

/// A dimension as the grabber delivers it, else as the camera sends it: grabbers may crop or assemble images.
int64_t dimension(uint32_t handle, const char* name)
{
    const int64_t of_grabber = ZVGR_GetGrabberValueInt(handle, name);
    if (of_grabber != ZV_NOT_AVAILABLE && of_grabber != 0)
        return of_grabber;
    return value_or(ZVGR_GetCameraValueInt(handle, name), 0);
}

uint64_t standard_pixel_format(uint64_t camera_format)
{
    if (read(settings::pixel_format_conversion) == 0)
        return camera_format;
    const auto code = static_cast<uint32_t>(camera_format);
    const auto pfnc = pfnc_of(code);
    if (!pfnc)
        return camera_format;
    log_warning(buffer_module_logger, "BufferModule::BufferModule", At{110},
                "Camera Pixel Format was converted from CoaXPress 0x%x to GenICam 0x%x standard format", code,
                *pfnc);
    return *pfnc;
}

} // namespace

const char* name_of(BUFFER_QUEUE_TYPE queue) noexcept
{
    switch (queue) {
    case BUFFER_QUEUE_TYPE::GENERAL:
        return "BUFFER_QUEUE_TYPE::GENERAL";
    case BUFFER_QUEUE_TYPE::INPUT:
        return "BUFFER_QUEUE_TYPE::INPUT";
    case BUFFER_QUEUE_TYPE::OUTPUT:
        return "BUFFER_QUEUE_TYPE::OUTPUT";
    }
    return "UNSUPPORTED BUFFER QUEUE TYPE";
}

AlignedMemory::AlignedMemory(uint64_t size)
{
    // Allocators add the alignment and perhaps a header, and that sum may overflow. No object may be larger.
    if (size > static_cast<uint64_t>(std::numeric_limits<ptrdiff_t>::max()))
        throw std::bad_alloc();
    m_memory.reset(::operator new(size != 0 ? static_cast<size_t>(size) : 1, memory_alignment));
    // Else the first frame waits for every page.
    std::ignore = platform::provide(m_memory.get(), static_cast<size_t>(size));
}

void AlignedMemory::Free::operator()(void* memory) const noexcept
{
    ::operator delete(memory, memory_alignment);
}

BufferModule::BufferModule(StreamModule& stream, void* memory, uint64_t size, uint64_t grabber_handle,
                           void* private_pointer)
    : m_stream(stream), m_facts(buffer_facts.take()), m_copy_size(size)
{
    // The tag is one atomic word, so there is nothing to serialise; the setting is there for those who look.
    std::ignore = read(settings::serialize_buffer_type);
    m_facts->stream.set(&stream);
    m_facts->library_handle.set(grabber_handle);
    m_facts->private_pointer.set(private_pointer);
    query_geometry(size);
    if (memory == nullptr) {
        m_own_memory = AlignedMemory(size);
        memory = m_own_memory.get();
    }
    m_facts->memory.set(memory);
}

void BufferModule::query_geometry(uint64_t size)
{
    const uint32_t handle = m_stream.get_Handle();
    const int64_t width = dimension(handle, "Width");
    const int64_t image_height = dimension(handle, "Height");
    const int64_t segments = value_or(ZVGR_GetGrabberValueInt(handle, "SegmentsPerBuffer"), 1);
    // Unsigned, because hostile values may overflow.
    const uint64_t height = static_cast<uint64_t>(image_height) * static_cast<uint64_t>(segments);

    (*m_facts)[Geometry::width].set(static_cast<uint64_t>(width));
    (*m_facts)[Geometry::height].set(height);
    (*m_facts)[Geometry::size].set(size);
    (*m_facts)[Geometry::data_size].set(size);
    (*m_facts)[Geometry::x_offset].set(
        static_cast<uint64_t>(value_or(ZVGR_GetCameraValueInt(handle, "OffsetX"), 0)));
    (*m_facts)[Geometry::y_offset].set(
        static_cast<uint64_t>(value_or(ZVGR_GetCameraValueInt(handle, "OffsetY"), 0)));

    const int64_t camera_format = value_or(ZVGR_GetCameraValueEnum(handle, "PixelFormat"), 0);
    const uint64_t format = standard_pixel_format(static_cast<uint64_t>(camera_format));
    constexpr uint64_t pfnc_16_bit = 3;
    constexpr uint64_t pfnc_32_bit = 4;
    (*m_facts)[Geometry::pixel_format].set(format);
    (*m_facts)[Geometry::pixel_format_namespace].set(
        read(settings::pixel_format_namespace).value_or(format < 0x10000 ? pfnc_16_bit : pfnc_32_bit));
    (*m_facts)[Geometry::delivered_image_height].set(
        read(settings::delivered_image_height).value_or(static_cast<uint32_t>(height)));
}

std::string BufferModule::getId() const
{
    char id[32];
    std::snprintf(id, sizeof id, "Buffer0x%" PRIx64, get_GrabberHandle());
    return id;
}

std::string BufferModule::get_Url() const { return port_memory.url(); }

GC_ERROR BufferModule::ReadPort(uint64_t address, void* buffer, size_t* size) const
{
    if (port_memory.read(address, buffer, size))
        return GC_ERR_SUCCESS;
    log_error(buffer_module_logger, "BufferModule::ReadPort", At{120},
              "Unsupported port read for address 0x%llx with size %zu",
              static_cast<unsigned long long>(address), *size);
    log_error(buffer_module_logger, "BufferModule::ReadPort", At{123},
              "Exit, Returning error GC_ERR_INVALID_ADDRESS (0x%X)",
              static_cast<unsigned>(GC_ERR_INVALID_ADDRESS));
    return GC_ERR_INVALID_ADDRESS;
}

} // namespace zvgentl

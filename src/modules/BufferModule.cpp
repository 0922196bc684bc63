#include "modules/BufferModule.h"

#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <mutex>
#include <new>

#include "zvgr/ZVGRLib.h"

#include "log/Log.h"
#include "modules/PortMemory.h"
#include "modules/StreamModule.h"
#include "modules/grabber_info.h"
#include "modules/pixel_formats.h"
#include "modules/settings.h"
#include "resources/descriptions.h"

namespace zvgentl {

using namespace GenTL;

namespace {

constexpr std::align_val_t memory_alignment{4096};

constexpr PortMemory port_memory{"ZV_BufferGenTL.zip", buffer_description, buffer_description_size};

SerialLock::Serialise serialise_setting(const PlainSetting& setting)
{
    return read(setting) != 0 ? SerialLock::Serialise::yes : SerialLock::Serialise::no;
}

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
}

void AlignedMemory::Free::operator()(void* memory) const noexcept
{
    ::operator delete(memory, memory_alignment);
}

BufferModule::BufferModule(const StreamModule& stream, void* memory, uint64_t size, uint64_t grabber_handle,
                           void* private_pointer)
    : m_grabber_handle(grabber_handle), m_private(private_pointer), m_stream(stream),
      m_queue_lock(serialise_setting(settings::serialize_buffer_type)), m_copy_size(size), m_memory(memory)
{
    query_geometry(size);
    if (m_memory == nullptr) {
        m_own_memory = AlignedMemory(size);
        m_memory = m_own_memory.get();
    }
}

void BufferModule::query_geometry(uint64_t size)
{
    const uint32_t handle = m_stream.get_Handle();
    const int64_t width = dimension(handle, "Width");
    const int64_t image_height = dimension(handle, "Height");
    const int64_t segments = value_or(ZVGR_GetGrabberValueInt(handle, "SegmentsPerBuffer"), 1);
    // Unsigned, because hostile values may overflow.
    const uint64_t height = static_cast<uint64_t>(image_height) * static_cast<uint64_t>(segments);

    geometry(Geometry::width) = static_cast<uint64_t>(width);
    geometry(Geometry::height) = height;
    geometry(Geometry::size) = size;
    geometry(Geometry::data_size) = size;
    geometry(Geometry::x_offset) =
        static_cast<uint64_t>(value_or(ZVGR_GetCameraValueInt(handle, "OffsetX"), 0));
    geometry(Geometry::y_offset) =
        static_cast<uint64_t>(value_or(ZVGR_GetCameraValueInt(handle, "OffsetY"), 0));

    const int64_t camera_format = value_or(ZVGR_GetCameraValueEnum(handle, "PixelFormat"), 0);
    const uint64_t format = standard_pixel_format(static_cast<uint64_t>(camera_format));
    constexpr uint64_t pfnc_16_bit = 3;
    constexpr uint64_t pfnc_32_bit = 4;
    geometry(Geometry::pixel_format) = format;
    geometry(Geometry::pixel_format_namespace) =
        read(settings::pixel_format_namespace).value_or(format < 0x10000 ? pfnc_16_bit : pfnc_32_bit);
    geometry(Geometry::delivered_image_height) =
        read(settings::delivered_image_height).value_or(static_cast<uint32_t>(height));
}

std::string BufferModule::getId() const
{
    char id[32];
    std::snprintf(id, sizeof id, "Buffer0x%" PRIx64, m_grabber_handle);
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

uint64_t BufferModule::get_Geometry(Geometry value) const noexcept
{
    const auto index = static_cast<size_t>(value);
    return index < m_geometry.size() ? m_geometry[index] : 0;
}

BUFFER_QUEUE_TYPE BufferModule::get_Queue() const
{
    const std::lock_guard lock(m_queue_lock);
    return m_queue.load(std::memory_order_relaxed);
}

void BufferModule::set_Queue(BUFFER_QUEUE_TYPE queue)
{
    const std::lock_guard lock(m_queue_lock);
    m_queue.store(queue, std::memory_order_relaxed);
}

void BufferModule::set_Frame(uint64_t timestamp, uint64_t frame_id) noexcept
{
    m_timestamp.store(timestamp, std::memory_order_relaxed);
    m_frame_id.store(frame_id, std::memory_order_relaxed);
}

} // namespace zvgentl

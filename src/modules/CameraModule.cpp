#include "modules/CameraModule.h"

#include <tuple>
#include <utility>

#include "log/Log.h"
#include "modules/InterfaceModule.h"
#include "modules/StreamModule.h"
#include "modules/grabber_info.h"
#include "modules/settings.h"

namespace zvgentl {

namespace {

StreamMode stream_mode_for(uint32_t grabber)
{
    const bool is_capable = ZVGR_GetGrabberValueInt(grabber, "FW_Dma_Capable_QueuedBuffers_Imp") == 1;
    const auto forced = read(settings::queued_buffer_mode);
    return (forced ? *forced != 0 : is_capable) ? StreamMode::queued : StreamMode::cyclic;
}

} // namespace

CameraModule::CameraModule(InterfaceModule* parent, std::string id)
    : m_id(std::move(id)),
      m_stream(std::make_unique<StreamModule>(this, "Stream" + number_of_id(m_id) + "0")), m_parent(parent)
{
}

CameraModule::~CameraModule()
{
    if (is_Open())
        std::ignore = close_Camera(); // nothing can be done about a failure
}

void CameraModule::init_Camera(uint32_t handle, const ZvCameraInfo& info)
{
    m_camera_handle = handle;
    m_info = info;
}

uint32_t CameraModule::open_Camera()
{
    constexpr const char* own_description = nullptr;
    return ZVGR_CameraOpen2(m_camera_handle, own_description);
}

uint32_t CameraModule::close_Camera() { return ZVGR_CameraClose(m_camera_handle); }

void CameraModule::mark_closed_and_wipe()
{
    m_open.store(false, std::memory_order_relaxed);
    m_stream->close();
    // Contract: a closed camera has no identity until the next list rebuild.
    // Pinned by IFGetDeviceInfo.ReportsEmptyTextsAfterDevClose.
    m_info = ZvCameraInfo{};
}

bool CameraModule::open_Stream(uint32_t index)
{
    constexpr uint32_t ring_frames = 4;
    const StreamMode mode = stream_mode_for(m_parent->get_GrabberHandle());
    log_information(camera_module_logger, "CameraModule::open_Stream", At{110}, "Opening stream type=%s",
                    name_of(mode));
    uint32_t handle = ZV_NO_HANDLE;
    const uint32_t status = mode == StreamMode::queued
                                ? ZVGR_StreamCreate(m_camera_handle, &handle, index)
                                : ZVGR_StreamCreateAndAlloc(m_camera_handle, &handle, ring_frames, 0);
    if (!succeeded(status))
        return false;
    m_stream->connect(handle, mode);
    return true;
}

void CameraModule::abandon() noexcept
{
    m_open.store(false, std::memory_order_relaxed);
    m_stream->abandon();
}

} // namespace zvgentl

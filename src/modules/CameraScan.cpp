#include "modules/CameraScan.h"

#include <algorithm>

#include "modules/grabber_info.h"

namespace zvgentl {

bool CameraScan::find_cameras(uint32_t grabber)
{
    uint32_t found = zv_max_cameras;
    if (!succeeded(ZVGR_UpdateCameraList(grabber, m_handles.data(), &found)))
        return false;
    m_count = std::min<uint32_t>(found, zv_max_cameras);
    return true;
}

bool CameraScan::read_identities()
{
    for (uint32_t i = 0; i < m_count; ++i) {
        m_identities[i] = ZvCameraInfo{};
        m_identities[i].version = 0;
        if (!succeeded(ZVGR_CameraInfo2(m_handles[i], &m_identities[i])))
            return false;
    }
    return true;
}

} // namespace zvgentl

#pragma once

#include <array>
#include <cstdint>

#include "zvgr/ZVGRLib.h"

namespace zvgentl {

/// What a scan of a grabber for cameras found, in the order of the library.
class CameraScan {
public:
    /// Asks the grabber for its cameras; false when the library fails.
    bool find_cameras(uint32_t grabber);
    /// Reads the identity of each camera found; false at the first that the library refuses.
    bool read_identities();

    uint32_t count() const noexcept { return m_count; }
    uint32_t handle(uint32_t position) const { return m_handles.at(position); }
    const ZvCameraInfo& identity(uint32_t position) const { return m_identities.at(position); }

private:
    uint32_t m_count{0};
    std::array<uint32_t, zv_max_cameras> m_handles{};
    std::array<ZvCameraInfo, zv_max_cameras> m_identities{};
};

} // namespace zvgentl

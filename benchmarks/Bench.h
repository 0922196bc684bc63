#pragma once

#include <list>

#include "GenTL/GenTL.h"

#include "system/consumer/Camera.h"
#include "system/consumer/Library.h"
#include "system/consumer/Surroundings.h"

namespace zvbench {

/// The process's one private folder, settings and variables.
inline zvsystem::Surroundings& surroundings()
{
    static zvsystem::Surroundings surroundings;
    return surroundings;
}

inline zvsystem::Surroundings& surroundings_in(zvsystem::Mode mode)
{
    surroundings().set_mode(mode);
    return surroundings();
}

/// The producer with one open camera.
class OneCamera {
public:
    OneCamera(zvsystem::Mode mode, size_t buffers) : m_surroundings(surroundings_in(mode))
    {
        camera.announce(buffers);
    }

private:
    zvsystem::Surroundings& m_surroundings;
    zvsystem::Producer m_producer{ZV_PRODUCER_FILE};
    zvsystem::System m_system{m_producer.functions()};

public:
    const zvsystem::Functions& gentl{m_producer.functions()};
    zvsystem::Camera camera{gentl, m_system.open_interface("FG0"), "Device00"};
};

/// The producer with everything open that the software grabbers have: three grabbers with four cameras, each
/// with an event and many buffers.
class FullTree {
public:
    FullTree()
    {
        const auto first = m_system.open_interface("FG0");
        cameras.emplace_back(gentl, first, "Device00");
        cameras.emplace_back(gentl, first, "Device01");
        cameras.emplace_back(gentl, m_system.open_interface("FG1"), "Device10");
        cameras.emplace_back(gentl, m_system.open_interface("FG2"), "Device20");
        for (auto& camera : cameras)
            camera.announce(buffers_per_camera);
    }
    ~FullTree() { zvsystem::Surroundings::set_frame_size(""); }
    FullTree(const FullTree&) = delete;
    FullTree& operator=(const FullTree&) = delete;

    static constexpr size_t buffers_per_camera = 64;

private:
    static zvsystem::Surroundings& make_surroundings()
    {
        surroundings().expose_demo_grabber();
        zvsystem::Surroundings::set_frame_size("64x48"); // 256 buffers need not be large
        return surroundings_in(zvsystem::Mode::queued);
    }

    zvsystem::Surroundings& m_surroundings{make_surroundings()};
    zvsystem::Producer m_producer{ZV_PRODUCER_FILE};
    zvsystem::System m_system{m_producer.functions()};

public:
    const zvsystem::Functions& gentl{m_producer.functions()};
    std::list<zvsystem::Camera> cameras; // in the order in which handles are searched
};

} // namespace zvbench

#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "modules/BufferModule.h"
#include "port/Port.h"
#include "unit/modules/Module_fixtures.h"

// A small tree apart from the exported functions, with a port for each of its modules.

namespace zvtest {

/// One grabber with two cameras; the second one is open, and its stream, which has a buffer.
class PortTree : public OneGrabber {
protected:
    void SetUp() override
    {
        OneGrabber::SetUp();
        list_cameras(2);
        fake.grabber_int("FW_Dma_Capable_QueuedBuffers_Imp") = 1;
        camera().mark_open();
        ASSERT_TRUE(camera().open_Stream(0));
        ASSERT_NE(nullptr, stream().new_buffer(m_memory.data(), m_memory.size(), nullptr));
        forget();
    }

    zvgentl::DeviceModule& device() { return *iface().get_Device(1); }
    zvgentl::CameraModule& camera() { return *device().get_Camera(); }
    zvgentl::StreamModule& stream() { return *camera().get_Stream(0); }
    zvgentl::PinnedBuffer buffer() { return stream().get_Buffers().at(0); }

    /// Ports of every kind, in the order of the kinds.
    std::vector<zvgentl::Port> ports()
    {
        std::vector<zvgentl::Port> all;
        all.emplace_back(system);
        all.emplace_back(iface());
        all.emplace_back(device());
        all.emplace_back(stream());
        all.emplace_back(buffer());
        all.emplace_back(camera());
        return all;
    }

private:
    std::array<uint8_t, 64> m_memory{};
};

} // namespace zvtest

#include "simulator/Devices.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "simulator/features/Description.h"

namespace zvsim {

CameraDevice::CameraDevice(const CameraModel& model, const GrabberModel& grabber)
    : m_model{model}, m_grabber{grabber}
{
    m_state.settings = model.start;
    m_state.user_id = model.user_id;
}

Pace CameraDevice::pace() const
{
    return {settings().is_rate_set ? settings().frames_per_second : 0, settings().is_triggered};
}

uint64_t CameraDevice::frames_of_acquisition() const
{
    switch (settings().mode) {
    case AcquisitionMode::single_frame:
        return 1;
    case AcquisitionMode::multi_frame:
        return settings().frame_count;
    case AcquisitionMode::continuous:
        break;
    }
    return std::numeric_limits<uint64_t>::max();
}

double CameraDevice::temperature(Clock::time_point now) const
{
    constexpr double room = 22;
    constexpr double rise = 19;
    constexpr double seconds_to_warm_up = 600;
    const std::chrono::duration<double> age = now - m_power_on;
    return room + rise * (1 - std::exp(-age.count() / seconds_to_warm_up));
}

void CameraDevice::begin_acquisition()
{
    m_is_acquiring = true;
    m_state.triggers = 0;
}

bool CameraDevice::take_trigger()
{
    if (m_state.triggers == 0)
        return false;
    --m_state.triggers;
    return true;
}

const Description& CameraDevice::description() const
{
    if (m_described_by != nullptr)
        return m_described_by->description();
    if (!m_description)
        m_description = describe_camera(m_model);
    return *m_description;
}

void CameraDevice::share_description(const CameraDevice& other)
{
    if (&other != this && are_described_alike(other.m_model, m_model))
        m_described_by = &other;
}

GrabberDevice::GrabberDevice(const GrabberModel& model, uint32_t index) : m_model{model}, m_index{index}
{
    for (const CameraModel& camera : model.cameras) {
        m_cameras.push_back(std::make_unique<CameraDevice>(camera, model));
        m_cameras.back()->share_description(*m_cameras.front());
    }
}

const Description& GrabberDevice::description() const
{
    if (!m_description)
        m_description = describe_grabber(m_model);
    return *m_description;
}

} // namespace zvsim

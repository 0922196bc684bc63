/// \file Devices.h
/// Cameras and grabbers as pieces of hardware: they are there, and keep their settings, whether or not anyone
/// has opened them.
#pragma once

#include "simulator/Model.h"

#include <memory>
#include <vector>

namespace zvsim {

/// A camera. Guarded by the library's lock.
class CameraDevice {
public:
    CameraDevice(const CameraModel& model, const GrabberModel& grabber)
        : m_model{model}, m_grabber{grabber}, m_settings{model.start}
    {
    }

    const CameraModel& model() const { return m_model; }
    const GrabberModel& grabber() const { return m_grabber; }
    const CameraSettings& settings() const { return m_settings; }
    /// Bytes of a buffer at the present settings.
    uint64_t payload() const
    {
        return m_settings.format->size_of(m_settings.width, m_settings.height) *
               m_grabber.segments_per_buffer;
    }
    /// The present pixel format as the camera numbers it.
    uint32_t format_code() const { return code_of(*m_settings.format, m_model.format_codes); }

private:
    const CameraModel& m_model;
    const GrabberModel& m_grabber;
    CameraSettings m_settings;
};

/// A grabber with what is connected to it. Guarded by the library's lock.
class GrabberDevice {
public:
    explicit GrabberDevice(const GrabberModel& model) : m_model{model}
    {
        for (const CameraModel& camera : model.cameras)
            m_cameras.push_back(std::make_unique<CameraDevice>(camera, model));
    }

    const GrabberModel& model() const { return m_model; }
    const std::vector<std::unique_ptr<CameraDevice>>& cameras() const { return m_cameras; }

private:
    const GrabberModel& m_model;
    std::vector<std::unique_ptr<CameraDevice>> m_cameras;
};

} // namespace zvsim

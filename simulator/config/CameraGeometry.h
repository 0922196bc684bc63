#pragma once

#include <cstdint>

#include "simulator/Model.h"
#include "simulator/config/YamlReader.h"

// Sensor, size and place of a camera's picture, in the steps of its pixel format.

namespace zvsim {

/// The formats must have been read.
void read_geometry(const YamlMap& map, CameraModel& camera);

/// Bytes of the largest buffer that the camera can fill. `segments`: pictures in a buffer.
uint64_t largest_payload_of(const CameraModel& camera, uint32_t segments);
/// Reports a buffer that no system could be asked for.
void check_payload(const YamlMap& map, const CameraModel& camera, uint32_t segments);
/// True when the sensor has room for at least one step of every format.
bool fits_formats(const CameraModel& camera);
/// Makes the sensor this large, and the picture as much of it as the steps of the format allow.
void set_size(CameraModel& camera, uint32_t width, uint32_t height);
/// Makes it the only format.
void set_format(CameraModel& camera, const PixelFormat& format);

} // namespace zvsim

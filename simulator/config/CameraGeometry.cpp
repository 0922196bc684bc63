#include "simulator/config/CameraGeometry.h"

#include <algorithm>

#include "simulator/Limits.h"
#include "simulator/PictureFolder.h"

namespace zvsim {

namespace {

constexpr uint32_t usual_width = 640;
constexpr uint32_t usual_height = 480;

/// One direction of the picture: its keys, and what they set.
struct Side {
    const char* sensor_key;
    const char* size_key;
    const char* offset_key;
    uint32_t CameraModel::*sensor;
    uint32_t CameraSettings::*size;
    uint32_t CameraSettings::*offset;
    uint32_t (PixelFormat::*step)() const;
};

constexpr Side across{"sensor_width",
                      "width",
                      "offset_x",
                      &CameraModel::sensor_width,
                      &CameraSettings::width,
                      &CameraSettings::offset_x,
                      &PixelFormat::step_x};
constexpr Side down{"sensor_height",
                    "height",
                    "offset_y",
                    &CameraModel::sensor_height,
                    &CameraSettings::height,
                    &CameraSettings::offset_y,
                    &PixelFormat::step_y};

uint32_t in_steps(uint32_t size, uint32_t step) { return size - size % step; }

/// A number that must be a multiple of the step of the camera's format.
void read_in_steps(const YamlMap& map, const char* key, uint32_t& target, uint32_t least, uint32_t most,
                   uint32_t step)
{
    uint32_t number = 0;
    if (!map.integer(key, number, 0, largest_side))
        return;
    if (number >= least && number <= most && number % step == 0) {
        target = number;
        return;
    }
    map.find(key)->wrong(std::to_string(least) + " to " + std::to_string(most) + " in steps of " +
                         std::to_string(step) + ", as sensor and pixel format set them");
}

void read_side(const YamlMap& map, CameraModel& camera, const Side& side, uint32_t usual_sensor)
{
    uint32_t& sensor = camera.*side.sensor = usual_sensor;
    map.integer(side.sensor_key, sensor, 1, largest_side);
    for (const PixelFormat* const format : camera.formats) {
        if (sensor >= (format->*side.step)())
            continue;
        map.report(std::string{side.sensor_key} + " is " + std::to_string(sensor),
                   "at least " + std::to_string((format->*side.step)()) + " for " + format->name);
        return;
    }
    const uint32_t step = (camera.start.format->*side.step)();
    uint32_t& offset = camera.start.*side.offset;
    read_in_steps(map, side.offset_key, offset, 0, in_steps(sensor - step, step), step);
    uint32_t& size = camera.start.*side.size = in_steps(sensor - offset, step);
    read_in_steps(map, side.size_key, size, step, size, step);
}

} // namespace

void read_geometry(const YamlMap& map, CameraModel& camera)
{
    const PictureFolder* const pictures = camera.pictures.get();
    read_side(map, camera, across, pictures != nullptr ? pictures->width() : usual_width);
    read_side(map, camera, down, pictures != nullptr ? pictures->height() : usual_height);
}

void check_payload(const YamlMap& map, const CameraModel& camera, uint32_t segments)
{
    const uint64_t payload = largest_payload_of(camera, segments);
    if (payload > largest_payload)
        map.report("a buffer of this camera can take " + std::to_string(payload) + " bytes",
                   "up to " + std::to_string(largest_payload) +
                       " (sensor size, times bytes of the largest pixel format, times segments_per_buffer)");
}

uint64_t largest_payload_of(const CameraModel& camera, uint32_t segments)
{
    uint64_t largest = 0;
    for (const PixelFormat* const format : camera.formats)
        largest = std::max(largest, format->size_of(camera.sensor_width, camera.sensor_height));
    return largest * segments;
}

bool fits_formats(const CameraModel& camera)
{
    return std::all_of(camera.formats.begin(), camera.formats.end(), [&camera](const PixelFormat* format) {
        return camera.sensor_width >= format->step_x() && camera.sensor_height >= format->step_y();
    });
}

void set_size(CameraModel& camera, uint32_t width, uint32_t height)
{
    camera.sensor_width = width;
    camera.sensor_height = height;
    camera.start.offset_x = camera.start.offset_y = 0;
    camera.start.width = in_steps(width, camera.start.format->step_x());
    camera.start.height = in_steps(height, camera.start.format->step_y());
}

void set_format(CameraModel& camera, const PixelFormat& format)
{
    camera.start.format = &format;
    camera.formats = {&format};
}

} // namespace zvsim

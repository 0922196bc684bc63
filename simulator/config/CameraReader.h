#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "simulator/Model.h"
#include "simulator/PictureFolder.h"
#include "simulator/config/YamlReader.h"

// A camera of the configuration file.

namespace zvsim {

/// The picture folders of one configuration, each read once however many cameras show it. All of them
/// together take no more memory than a single one may.
class PictureFolders {
public:
    explicit PictureFolders(std::vector<std::string>& warnings, uint64_t memory = picture_memory_limit)
        : m_warnings{warnings}, m_memory{memory}
    {
    }

    /// Null, after a warning, when the folder offers no picture.
    std::shared_ptr<const PictureFolder> read(const std::filesystem::path& folder);

private:
    std::vector<std::string>& m_warnings;
    /// What is left.
    uint64_t m_memory;
    std::map<std::filesystem::path, std::shared_ptr<const PictureFolder>> m_folders;
};

YamlKeys camera_keys();

/// A camera as the file describes it, and how many of them there are.
struct CameraEntry {
    CameraModel model;
    uint32_t count{1};
    YamlMap map;
};

/// `segments`: how many of the camera's pictures a buffer of its grabber holds.
CameraEntry read_camera(const YamlValue& value, uint32_t segments, PictureFolders& folders);

/// Bytes of the largest buffer that the camera can fill. `segments`: pictures in a buffer.
uint64_t largest_payload_of(const CameraModel& camera, uint32_t segments);
/// True when the sensor has room for at least one step of every format.
bool fits_formats(const CameraModel& camera);
/// Makes the sensor this large, and the picture as much of it as the steps of the format allow.
void set_size(CameraModel& camera, uint32_t width, uint32_t height);
/// Makes it the only format.
void set_format(CameraModel& camera, const PixelFormat& format);

} // namespace zvsim

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
/// together take no more memory than one may.
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

} // namespace zvsim

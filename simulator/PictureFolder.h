#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "simulator/pictures/PictureFile.h"

namespace zvsim {

/// All PNG and TIFF files of a folder in name order, decoded. The first one sets size and pixel format; files
/// that differ from it, or cannot be read, are left out with a warning each. Immutable.
class PictureFolder {
public:
    /// Null, with a warning in `warnings`, when the folder offers no picture. Those that would make it larger
    /// than `memory` bytes are left out too.
    static std::unique_ptr<const PictureFolder> read(const std::filesystem::path& folder,
                                                     std::vector<std::string>& warnings,
                                                     uint64_t memory = picture_memory_limit);

    /// Bytes of all pictures.
    uint64_t size() const { return m_size; }

    uint32_t width() const { return m_pictures.front().width; }
    uint32_t height() const { return m_pictures.front().height; }
    const PixelFormat& format() const { return *m_pictures.front().format; }
    const Picture& picture(uint64_t number) const { return m_pictures[number % m_pictures.size()]; }

private:
    bool accepts(const Picture& picture, uint64_t memory, std::string& problem) const;

    std::vector<Picture> m_pictures;
    uint64_t m_size{0};
};

} // namespace zvsim

#include "simulator/pictures/PictureFile.h"

#include <algorithm>
#include <new>

namespace zvsim {

namespace {

constexpr uint64_t largest_side = 65536;

std::string extension_of(const std::filesystem::path& file)
{
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), [](char letter) {
        return static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter + 32 : letter);
    });
    return extension;
}

const PixelFormat& format_of(const PictureHeader& header)
{
    const bool is_wide = header.bits == 16;
    if (header.channels == 1)
        return pixel_format(is_wide ? "Mono16" : "Mono8");
    return pixel_format(is_wide ? "RGB16" : "RGB8");
}

} // namespace

std::optional<Picture> picture_for(const PictureHeader& header, uint64_t file_size, uint64_t best_compression,
                                   std::string& problem)
{
    if (header.channels != 1 && header.channels != 3)
        problem = "is neither grey nor RGB";
    else if (header.bits != 8 && header.bits != 16)
        problem = "has " + std::to_string(header.bits) + " bits per sample, not 8 or 16";
    else if (header.width == 0 || header.height == 0)
        problem = "has no pixels";
    else if (header.width > largest_side || header.height > largest_side)
        problem = "has more than 65536 pixels on a side";
    if (!problem.empty())
        return std::nullopt;

    const uint64_t size = header.width * header.height * header.channels * (header.bits / 8);
    if (size > picture_memory_limit)
        problem = "takes more than 1 GiB";
    else if (size / best_compression > file_size)
        problem = "is too short for its pixels";
    if (!problem.empty())
        return std::nullopt;
    return Picture{static_cast<uint32_t>(header.width), static_cast<uint32_t>(header.height),
                   &format_of(header), std::vector<unsigned char>(static_cast<size_t>(size))};
}

bool is_picture_file(const std::filesystem::path& file)
{
    const std::string extension = extension_of(file);
    return extension == ".png" || extension == ".tif" || extension == ".tiff";
}

std::optional<Picture> read_picture(const std::filesystem::path& file, std::string& problem)
try {
    return extension_of(file) == ".png" ? read_png(file, problem) : read_tiff(file, problem);
} catch (const std::bad_alloc&) {
    problem = "does not fit into memory";
    return std::nullopt;
}

} // namespace zvsim

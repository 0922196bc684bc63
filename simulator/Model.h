/// \file Model.h
/// What the library pretends to be: grabbers, cameras and their identities. Plain values, made once by the
/// configuration and not changed while a grabber is open.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace zvsim {

class PictureFolder;

/// A pixel format and its number in the two code spaces that cameras use.
struct PixelFormat {
    const char* name;
    uint32_t bytes_per_pixel;
    uint32_t coaxpress_code;
    uint32_t pfnc_code;
};

constexpr PixelFormat mono8{"Mono8", 1, 0x101, 0x01080001};
constexpr PixelFormat mono16{"Mono16", 2, 0x105, 0x01100007};
constexpr PixelFormat rgb8{"RGB8", 3, 0x401, 0x02180014};

/// Which code space a camera's "PixelFormat" value comes from.
enum class FormatCodes { coaxpress, pfnc };

struct CameraModel {
    std::string vendor;
    std::string model;
    std::string serial_number;
    std::string version;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t offset_x = 0;
    uint32_t offset_y = 0;
    PixelFormat format = mono8;
    FormatCodes format_codes = FormatCodes::coaxpress;
    double frames_per_second = 0; ///< 0: free-running.
    /// From the start to the first frame, as a camera needs it to open its shutter. A caller that notes down
    /// that acquisition runs after the start call has returned depends on it.
    std::chrono::milliseconds start_up{50};
    const PictureFolder* pictures = nullptr; ///< Null: the test pattern.

    uint64_t payload() const { return uint64_t{width} * height * format.bytes_per_pixel; }
    uint32_t format_code() const
    {
        return format_codes == FormatCodes::coaxpress ? format.coaxpress_code : format.pfnc_code;
    }
};

struct GrabberModel {
    std::string display_name;
    uint32_t protocol = 0;
    bool reports_geometry = false; ///< Answers "Width", "Height" and "SegmentsPerBuffer" itself.
    bool has_image_ids = false;    ///< Frames carry an image id.
    std::vector<CameraModel> cameras;
};

} // namespace zvsim

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "simulator/Settings.h"

// What the library pretends to be: grabbers, cameras and their identities. Plain values, made once by the
// configuration and not changed while a grabber is open.

namespace zvsim {

class PictureFolder;

/// Which code space a camera's "PixelFormat" value comes from.
enum class FormatCodes { coaxpress, pfnc };

constexpr uint32_t code_of(const PixelFormat& format, FormatCodes codes)
{
    // A format without a CoaXPress number goes by its PFNC number there too.
    return codes == FormatCodes::coaxpress && format.coaxpress_code != 0 ? format.coaxpress_code
                                                                         : format.pfnc_code;
}

struct CameraModel {
    std::string vendor;
    std::string model;
    std::string serial_number;
    std::string version;
    /// The start value of "DeviceUserID".
    std::string user_id;
    uint32_t sensor_width{0};
    uint32_t sensor_height{0};
    /// What the camera offers; never empty.
    std::vector<const PixelFormat*> formats;
    FormatCodes format_codes{FormatCodes::pfnc};
    /// What the features are set to when the library is loaded.
    CameraSettings start;
    /// From the start to the first frame, as a camera needs it to open its shutter. A caller that notes down
    /// that acquisition runs after the start call has returned depends on it.
    std::chrono::milliseconds start_up{50};
    /// Frames come up to this much late, each by another amount.
    std::chrono::microseconds jitter{0};
    /// Null: the test pattern.
    std::shared_ptr<const PictureFolder> pictures;
    /// Frames of a test pattern begin with a stamp (zvgr/FrameStamp.h).
    bool has_stamp{true};
};

struct GrabberModel {
    std::string display_name;
    uint32_t protocol{0};
    /// Answers "Width", "Height" and "SegmentsPerBuffer" itself.
    bool reports_geometry{false};
    /// Frames carry an image id.
    bool has_image_ids{false};
    /// Pictures of the camera, one below the other, in a buffer.
    uint32_t segments_per_buffer{1};
    std::vector<CameraModel> cameras;
};

} // namespace zvsim

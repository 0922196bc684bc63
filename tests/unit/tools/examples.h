#pragma once

#include <string>
#include <utility>
#include <vector>

#include "zvgr/FrameStamp.h"

#include "gentl/Stream.h"
#include "zvgentl/FeatureOutput.h"
#include "zvgentl/ProducerTree.h"

// What devices, features and frames may be, for tests of what is shown of them.

namespace zvgentl::test {

inline tool::DeviceEntry device_of(const std::string& id, const std::string& model = "A")
{
    return {id, "Maker", model, "The A", "left", "123", "1.0", "CXP", "read/write", {}, {}, ""};
}

inline tool::FeatureLine line_of(const std::string& name, tool::FeatureKind kind, tool::Value value,
                                 int level = 1)
{
    tool::FeatureLine line{{name, level, false}, {}};
    line.feature.name = name;
    line.feature.kind = kind;
    line.feature.value = std::move(value);
    return line;
}

/// A feature of most kinds.
inline tool::FeatureTable example_features()
{
    tool::FeatureLine width = line_of("Width", tool::FeatureKind::integer, std::int64_t{640});
    width.feature.minimum = std::int64_t{16};
    width.feature.maximum = std::int64_t{1024};
    width.feature.increment = std::int64_t{16};
    width.feature.unit = "px";
    width.feature.display_name = "The width";
    width.feature.description = "Of the picture";
    width.feature.visibility = "Beginner";
    tool::FeatureLine format = line_of("PixelFormat", tool::FeatureKind::enumeration, std::string("Mono8"));
    format.feature.entries = {"Mono8", "Mono12"};
    format.feature.selects = {"PixelSize"};
    tool::FeatureLine model = line_of("Model", tool::FeatureKind::string, std::string("A \"B\""));
    model.feature.access.is_writable = false;
    model.feature.maximum = std::int64_t{16};
    tool::FeatureLine start = line_of("Start", tool::FeatureKind::command, {});
    start.feature.access.is_readable = false;
    tool::FeatureLine gain = line_of("Gain", tool::FeatureKind::floating_point, {});
    gain.feature.problem = "the cable\nis out";
    tool::FeatureLine again = line_of("Image", tool::FeatureKind::category, {}, 0);
    again.entry.is_repeated = true;
    return {"Device00 (remote)",
            "Root",
            {line_of("Image", tool::FeatureKind::category, {}, 0), width, format, model, start, gain, again}};
}

/// The pixels must live as long as the frame.
inline tool::Frame frame_with(std::uint64_t id, const std::vector<std::uint8_t>& pixels)
{
    tool::Frame frame;
    frame.id = id;
    frame.data = pixels.data();
    frame.size = pixels.size();
    return frame;
}

inline std::vector<std::uint8_t> stamped_pixels(std::uint64_t counter)
{
    std::vector<std::uint8_t> pixels(100, 7);
    zvgr::write_stamp(pixels.data(), pixels.size(), counter);
    return pixels;
}

} // namespace zvgentl::test

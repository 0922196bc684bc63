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

#pragma once

#include <gtest/gtest.h>

#include "camera.h"
#include "genapi/NodeMap.h"

namespace zvgentl::test {

/// A node map of the camera in camera.h, with sensible values in its registers.
class CameraMap : public testing::Test {
protected:
    CameraMap()
    {
        registers.put<std::uint32_t>(0x00, 640);        // WidthReg
        registers.put<std::uint32_t>(0x08, 0x01080001); // PixelFormatReg: Mono8
        registers.put<std::uint32_t>(0x0C, 1000);       // ExposureReg
        registers.put<std::uint32_t>(0x18, 1);          // HasGain
        registers.put(0x20, 1.5);                       // Gain
    }

    std::string text(const std::string& name) const { return map.get_text(name); }
    tool::Feature feature(const std::string& name) const { return map.describe(name); }
    std::string refusal_of_set(const std::string& name, const std::string& value) const
    {
        const int before = registers.writes;
        const std::string refusal = error_of([&] { map.set(name, value); });
        EXPECT_EQ(before, registers.writes) << "refused, but written";
        return refusal;
    }

    FakeRegisters registers;
    tool::NodeMap map{camera_description(), registers};
};

} // namespace zvgentl::test

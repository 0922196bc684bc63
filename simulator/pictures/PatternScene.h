#pragma once

#include <cstddef>
#include <cstdint>

#include "simulator/Settings.h"
#include "simulator/pictures/Scene.h"

namespace zvsim {

class CameraDevice;

/// Where a row of a window lies on the sensor, and how deep its samples are.
struct PatternWindow {
    uint32_t sensor_width;
    uint32_t sensor_height;
    /// The window's first column.
    uint32_t left;
    uint32_t bits;

    uint16_t full_scale() const { return static_cast<uint16_t>((1U << bits) - 1); }
    /// Pixels after which the diagonal ramp repeats.
    uint32_t ramp_length() const { return bits < 10 ? 1U << bits : 1024; }
    /// From one pixel of the diagonal ramp to the next.
    uint32_t ramp_step() const { return (1U << bits) / ramp_length(); }
};

/// A test pattern as a camera's window shows it. Patterns are fixed to the sensor, so that an offset moves
/// the window over them.
class PatternScene final : public Scene {
public:
    explicit PatternScene(const CameraDevice& camera);

    const PatternWindow& window() const { return m_window; }
    void show(TestPattern pattern) { m_pattern = pattern; }

    uint64_t row_kind(ScenePlace place) const override;
    void draw(ScenePlace place, SceneRow& row) const override;

private:
    PatternWindow m_window;
    TestPattern m_pattern{TestPattern::diagonal_ramp};
};

} // namespace zvsim

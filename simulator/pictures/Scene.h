#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// What a sensor sees: rows of colours, before any pixel format.

namespace zvsim {

/// A part of a sensor's row, in samples as deep as those of the pixel format.
struct SceneRow {
    explicit SceneRow(size_t width) : red(width), green(width), blue(width) {}

    std::vector<uint16_t> red;
    std::vector<uint16_t> green;
    std::vector<uint16_t> blue;
    /// Only `green` counts, for all three.
    bool is_grey{true};
};

/// A row of a picture.
struct ScenePlace {
    /// Its number since the start.
    uint64_t picture;
    /// Row of the sensor.
    uint32_t y;
};

class Scene {
public:
    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    virtual ~Scene() = default;

    /// Rows of one picture that have the same kind look the same: they are drawn once.
    virtual uint64_t row_kind(ScenePlace place) const = 0;
    /// Fills all of `row`.
    virtual void draw(ScenePlace place, SceneRow& row) const = 0;
};

} // namespace zvsim

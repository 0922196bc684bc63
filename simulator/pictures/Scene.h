/// \file Scene.h
/// What a sensor sees: rows of colours, before any pixel format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zvsim {

/// A part of a sensor's row, in samples as deep as those of the pixel format.
struct SceneRow {
    explicit SceneRow(size_t width) : red(width), green(width), blue(width) {}

    std::vector<uint16_t> red;
    std::vector<uint16_t> green;
    std::vector<uint16_t> blue;
    bool is_grey = true; ///< Only `green` counts, for all three.
};

/// A row of a picture.
struct ScenePlace {
    uint64_t picture; ///< Its number since the start.
    uint32_t y;       ///< Row of the sensor.
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

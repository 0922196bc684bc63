#include "simulator/pictures/star.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zvsim {

namespace {

constexpr size_t half_circle = 36; // sectors of five degrees

/// Cotangents of the angles between two sectors, from the left to the right.
std::array<double, half_circle> make_borders()
{
    constexpr double degree = 3.14159265358979323846 / 180;
    std::array<double, half_circle> borders{};
    for (size_t at = 0; at < borders.size(); ++at)
        borders[at] = 1 / std::tan((177.5 - 5 * static_cast<double>(at)) * degree);
    return borders;
}

} // namespace

void draw_star(const PatternWindow& window, ScenePlace place, SceneRow& row)
{
    static const std::array<double, half_circle> borders = make_borders();
    // The star is its own mirror image, so every row is drawn as one above the middle: a row then meets the
    // borders one after the other. Distances from the middle are doubled, which makes them whole numbers.
    const double height = std::abs(2.0 * place.y - (window.sensor_height - 1.0));
    const double middle = window.sensor_width - 1.0;
    const double left = window.left;
    const auto columns = static_cast<double>(row.green.size());
    auto from = row.green.begin();
    bool is_bright = true; // the sectors to the left and to the right are
    for (size_t at = 0; height > 0 && at < borders.size(); ++at, is_bright = !is_bright) {
        const double border = std::ceil((height * borders[at] + middle) / 2) - left;
        const auto end = row.green.begin() + static_cast<std::ptrdiff_t>(std::clamp(border, 0.0, columns));
        from = std::fill_n(from, end - from, is_bright ? window.full_scale() : uint16_t{0});
    }
    std::fill(from, row.green.end(), window.full_scale());
}

} // namespace zvsim

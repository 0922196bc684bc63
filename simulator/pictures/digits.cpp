#include "simulator/pictures/digits.h"

#include <algorithm>
#include <array>

namespace zvsim {

namespace {

constexpr uint32_t digit_height = 5;
constexpr uint32_t cell_width = 4; // three columns of dots, and one between digits
constexpr uint64_t most_digits = 8;

/// Five rows of three dots, from the top left dot in the highest bit.
constexpr std::array<uint16_t, 10> shapes{0b111'101'101'101'111, 0b010'110'010'010'111, 0b111'001'111'100'111,
                                          0b111'001'111'001'111, 0b101'101'111'001'001, 0b111'100'111'001'111,
                                          0b111'100'111'101'111, 0b111'001'001'001'001, 0b111'101'111'101'111,
                                          0b111'101'111'001'111};

/// Where the digits stand: in the middle of the sensor, as large as there is room.
struct Layout {
    explicit Layout(const PatternWindow& window)
        : digits{std::clamp<uint64_t>(window.sensor_width / cell_width, 1, most_digits)},
          dot{std::max<uint64_t>(1, std::min<uint64_t>(window.sensor_width / (digits * cell_width),
                                                       window.sensor_height / (digit_height + 2)))},
          left{(window.sensor_width - std::min<uint64_t>(window.sensor_width, digits * cell_width * dot)) /
               2},
          top{(window.sensor_height - std::min<uint64_t>(window.sensor_height, digit_height * dot)) / 2}
    {
    }

    uint64_t digits;
    /// Pixels that a dot is wide and high.
    uint64_t dot;
    uint64_t left;
    uint64_t top;
};

/// The digit at a place counted from the left.
uint64_t digit_at(uint64_t number, uint64_t place, uint64_t digits)
{
    for (; place + 1 < digits; ++place)
        number /= 10;
    return number % 10;
}

} // namespace

uint64_t row_of_digits(const PatternWindow& window, ScenePlace place)
{
    const Layout layout{window};
    return place.y < layout.top ? digit_height
                                : std::min<uint64_t>((place.y - layout.top) / layout.dot, digit_height);
}

void draw_digits(const PatternWindow& window, ScenePlace place, SceneRow& row)
{
    const Layout layout{window};
    const uint64_t line = row_of_digits(window, place);
    std::fill(row.green.begin(), row.green.end(), uint16_t{0});
    if (line == digit_height)
        return;
    for (uint64_t at = 0; at < layout.digits; ++at) {
        const uint16_t shape = shapes[digit_at(place.picture, at, layout.digits)];
        for (uint64_t column = 0; column + 1 < cell_width; ++column) {
            if ((shape >> (14 - line * 3 - column) & 1U) == 0)
                continue;
            const uint64_t first = layout.left + (at * cell_width + column) * layout.dot;
            const uint64_t end = window.left + row.green.size();
            for (uint64_t x = std::max<uint64_t>(first, window.left); x < std::min(first + layout.dot, end);
                 ++x)
                row.green[x - window.left] = window.full_scale();
        }
    }
}

} // namespace zvsim

#include "simulator/pictures/PatternScene.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "simulator/Devices.h"

namespace zvsim {

namespace {

constexpr uint32_t field_side = 32;
constexpr uint32_t line_distance = 64;
constexpr uint32_t bar_width = 32;
constexpr uint32_t bar_speed = 8;

uint64_t row_itself(const PatternWindow& /*window*/, ScenePlace place) { return place.y; }
uint64_t the_same(const PatternWindow& /*window*/, ScenePlace /*place*/) { return 0; }
uint64_t row_of_fields(const PatternWindow& /*window*/, ScenePlace place) { return place.y / field_side % 2; }
uint64_t line_or_not(const PatternWindow& /*window*/, ScenePlace place)
{
    return place.y % line_distance == 0 ? 1 : 0;
}

void fill(SceneRow& row, uint32_t sample)
{
    std::fill(row.green.begin(), row.green.end(), static_cast<uint16_t>(sample));
}

void diagonal_ramp(const PatternWindow& window, ScenePlace place, SceneRow& row)
{
    uint64_t at = place.picture + place.y + window.left;
    for (uint16_t& sample : row.green)
        sample = static_cast<uint16_t>(at++ % window.ramp_length() * window.ramp_step());
}

uint16_t ramp(const PatternWindow& window, uint64_t at, uint32_t length)
{
    const uint64_t last = std::max(length, 2U) - 1;
    return static_cast<uint16_t>(std::min(at, last) * window.full_scale() / last);
}

void horizontal_ramp(const PatternWindow& window, ScenePlace /*place*/, SceneRow& row)
{
    uint64_t x = window.left;
    for (uint16_t& sample : row.green)
        sample = ramp(window, x++, window.sensor_width);
}

void vertical_ramp(const PatternWindow& window, ScenePlace place, SceneRow& row)
{
    fill(row, ramp(window, place.y, window.sensor_height));
}

void color_bars(const PatternWindow& window, ScenePlace /*place*/, SceneRow& row)
{
    const uint16_t bright = window.full_scale();
    row.is_grey = false;
    for (size_t column = 0; column < row.green.size(); ++column) {
        const uint64_t bar = std::min<uint64_t>((window.left + column) * 8 / window.sensor_width, 7);
        row.red[column] = bar % 4 < 2 ? bright : 0;
        row.green[column] = bar < 4 ? bright : 0;
        row.blue[column] = bar % 2 == 0 ? bright : 0;
    }
}

void checkerboard(const PatternWindow& window, ScenePlace place, SceneRow& row)
{
    const uint64_t field = place.picture % 2 + place.y / field_side;
    uint64_t x = window.left;
    for (uint16_t& sample : row.green)
        sample = (x++ / field_side + field) % 2 == 1 ? window.full_scale() : uint16_t{0};
}

void black(const PatternWindow& /*window*/, ScenePlace /*place*/, SceneRow& row) { fill(row, 0); }

void white(const PatternWindow& window, ScenePlace /*place*/, SceneRow& row)
{
    fill(row, window.full_scale());
}

void grey(const PatternWindow& window, ScenePlace /*place*/, SceneRow& row)
{
    fill(row, 1U << (window.bits - 1));
}

void grid(const PatternWindow& window, ScenePlace place, SceneRow& row)
{
    uint64_t x = window.left;
    for (uint16_t& sample : row.green)
        sample = place.y % line_distance == 0 || x++ % line_distance == 0 ? window.full_scale() : uint16_t{0};
}

void moving_bar(const PatternWindow& window, ScenePlace place, SceneRow& row)
{
    const uint64_t width = window.sensor_width;
    const uint64_t bar = std::min<uint64_t>(bar_width, (width + 3) / 4);
    const uint64_t first = place.picture % width * bar_speed % width;
    uint64_t x = window.left + width - first;
    for (uint16_t& sample : row.green)
        sample = x++ % width < bar ? window.full_scale() : uint16_t{0};
}

void blinking(const PatternWindow& window, ScenePlace place, SceneRow& row)
{
    fill(row, place.picture % 2 == 1 ? window.full_scale() : 0U);
}

/// The finaliser of SplitMix64: every bit of the result depends on every bit of the number.
uint64_t scrambled(uint64_t number)
{
    number = (number ^ number >> 30U) * 0xBF58476D1CE4E5B9U;
    number = (number ^ number >> 27U) * 0x94D049BB133111EBU;
    return number ^ number >> 31U;
}

void noise(const PatternWindow& window, ScenePlace place, SceneRow& row)
{
    const uint64_t start = scrambled(place.picture) + (uint64_t{place.y} << 32U) + window.left;
    const uint32_t surplus = 16 - window.bits;
    row.is_grey = false;
    for (size_t column = 0; column < row.green.size(); ++column) {
        const uint64_t random = scrambled(start + column);
        row.red[column] = static_cast<uint16_t>((random & 0xFFFF) >> surplus);
        row.green[column] = static_cast<uint16_t>((random >> 16U & 0xFFFF) >> surplus);
        row.blue[column] = static_cast<uint16_t>((random >> 32U & 0xFFFF) >> surplus);
    }
}

// The frame's number in large digits.

constexpr uint32_t digit_height = 5;
constexpr uint32_t cell_width = 4; // three columns of dots, and one between digits
constexpr uint64_t most_digits = 8;

/// Five rows of three dots, from the top left dot in the highest bit.
constexpr std::array<uint16_t, 10> shapes{0b111'101'101'101'111, 0b010'110'010'010'111, 0b111'001'111'100'111,
                                          0b111'001'111'001'111, 0b101'101'111'001'001, 0b111'100'111'001'111,
                                          0b111'100'111'101'111, 0b111'001'001'001'001, 0b111'101'111'101'111,
                                          0b111'101'111'001'111};

/// Where the digits are: in the middle of the sensor, as large as there is room for.
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

/// Rows that cut the digits at the same height, or pass above or below them, are alike.
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

// Rays from the middle of the sensor.

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

/// One for each TestPattern, in its order.
struct PatternDrawing {
    uint64_t (*row_kind)(const PatternWindow&, ScenePlace);
    void (*draw)(const PatternWindow&, ScenePlace, SceneRow&);
};

constexpr PatternDrawing drawings[] = {
    {row_itself, diagonal_ramp},
    {the_same, horizontal_ramp},
    {row_itself, vertical_ramp},
    {the_same, color_bars},
    {row_of_fields, checkerboard},
    {the_same, black},
    {the_same, white},
    {the_same, grey},
    {line_or_not, grid},
    {the_same, moving_bar},
    {the_same, blinking},
    {row_itself, noise},
    {row_of_digits, draw_digits},
    {row_itself, draw_star},
};
static_assert(std::size(drawings) == static_cast<size_t>(TestPattern::star) + 1, "one for each pattern");

const PatternDrawing& drawing_of(TestPattern pattern)
{
    const auto number = static_cast<size_t>(pattern);
    return drawings[number < std::size(drawings) ? number : 0];
}

} // namespace

PatternScene::PatternScene(const CameraDevice& camera)
    : m_window{
          std::max({camera.model().sensor_width, camera.settings().offset_x + camera.settings().width, 1U}),
          std::max({camera.model().sensor_height, camera.settings().offset_y + camera.settings().height, 1U}),
          camera.settings().offset_x, camera.settings().format->bits}
{
}

uint64_t PatternScene::row_kind(ScenePlace place) const
{
    return drawing_of(m_pattern).row_kind(m_window, place);
}

void PatternScene::draw(ScenePlace place, SceneRow& row) const
{
    drawing_of(m_pattern).draw(m_window, place, row);
}

} // namespace zvsim

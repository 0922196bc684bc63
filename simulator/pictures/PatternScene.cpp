#include "simulator/pictures/PatternScene.h"

#include <algorithm>

#include "simulator/Devices.h"
#include "simulator/pictures/digits.h"
#include "simulator/pictures/star.h"

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

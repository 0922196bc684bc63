#include "unit/simulator/expected_picture.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "unit/simulator/decode.h"

namespace zvsim_test {

namespace {

using zvsim::TestPattern;

Color grey(uint64_t sample)
{
    const auto value = static_cast<uint32_t>(sample);
    return {value, value, value};
}

Color bar_color(uint32_t bar, uint32_t full)
{
    // White, yellow, cyan, green, magenta, red, blue, black.
    const Color colors[] = {{full, full, full}, {full, full, 0}, {0, full, full}, {0, full, 0},
                            {full, 0, full},    {full, 0, 0},    {0, 0, full},    {0, 0, 0}};
    return colors[bar];
}

uint64_t scrambled(uint64_t z)
{
    z ^= z >> 30;
    z *= 0xBF58476D1CE4E5B9;
    z ^= z >> 27;
    z *= 0x94D049BB133111EB;
    return z ^ z >> 31;
}

Color noise(const Shot& shot, uint32_t x, uint32_t y, unsigned bits)
{
    const uint64_t random = scrambled(scrambled(shot.picture) + (uint64_t{y} << 32) + x);
    const auto sixteen_bits = [random](unsigned from) {
        return static_cast<uint32_t>(random >> from & 0xFFFF);
    };
    return {sixteen_bits(0) >> (16 - bits), sixteen_bits(16) >> (16 - bits), sixteen_bits(32) >> (16 - bits)};
}

bool is_digit_dot(const Shot& shot, uint32_t x, uint32_t y)
{
    static const std::array<std::string, 5> dots{
        "### .#. ### ### #.# ### ### ### ### ### ", "#.# ##. ..# ..# #.# #.. #.. ..# #.# #.# ",
        "#.# .#. ### ### ### ### ### ..# ### ### ", "#.# .#. #.. ..# ..# ..# #.# ..# #.# ..# ",
        "### ### ### ### ..# ### ### ..# ### ### ",
    };
    const int digits = std::clamp<int>(static_cast<int>(shot.sensor_width) / 4, 1, 8);
    const int dot = std::max(1, std::min(static_cast<int>(shot.sensor_width) / (4 * digits),
                                         static_cast<int>(shot.sensor_height) / 7));
    const int left = std::max(0, static_cast<int>(shot.sensor_width) - 4 * digits * dot) / 2;
    const int top = std::max(0, static_cast<int>(shot.sensor_height) - 5 * dot) / 2;
    const int column = static_cast<int>(x) - left;
    const int row = static_cast<int>(y) - top;
    if (column < 0 || row < 0 || column >= 4 * digits * dot || row >= 5 * dot)
        return false;
    const std::string number = "0000000" + std::to_string(shot.picture);
    const int place = column / dot / 4;
    const char digit = number[number.size() - static_cast<size_t>(digits - place)];
    return dots[static_cast<size_t>(row / dot)][static_cast<size_t>((digit - '0') * 4 + column / dot % 4)] ==
           '#';
}

bool is_ray(const Shot& shot, uint32_t x, uint32_t y)
{
    const double across = 2.0 * x - (shot.sensor_width - 1.0);
    const double down = 2.0 * y - (shot.sensor_height - 1.0);
    const double degrees = std::atan2(down, across) * 180 / std::acos(-1.0);
    return std::llround(degrees / 5) % 2 == 0;
}

/// Of the colour at a place of the mosaic, the channel that its filter lets through.
size_t mosaic_channel(const std::string& format, uint32_t x, uint32_t y)
{
    const std::string corner = format.substr(5, 2); // the first two pixels of the first row
    const char other = corner.find('R') != std::string::npos ? 'B' : 'R';
    const std::string second_row = corner[0] == 'G' ? std::string{other, 'G'} : std::string{'G', other};
    const char filter = y % 2 == 0 ? corner[x % 2] : second_row[x % 2];
    return filter == 'R' ? 0 : filter == 'G' ? 1 : 2;
}

Color scaled(const Color& color, double brightness, unsigned bits)
{
    const double full = std::exp2(bits) - 1;
    Color result{};
    std::transform(color.begin(), color.end(), result.begin(), [&](uint32_t sample) {
        return static_cast<uint32_t>(std::min(full, std::floor(sample * brightness + 0.5)));
    });
    return result;
}

/// Luma or chroma of a mean colour, by the text of ITU-R BT.601 and BT.709.
double luma_or_chroma(const std::string& format, const std::array<double, 3>& color, size_t channel,
                      unsigned bits)
{
    const bool is_709 = format.find("709") != std::string::npos;
    const bool is_full_range = format.find("YUV") != std::string::npos;
    const double red_share = is_709 ? 0.2126 : 0.299;
    const double green_share = is_709 ? 0.7152 : 0.587;
    const double blue_share = is_709 ? 0.0722 : 0.114;
    const double full = std::exp2(bits) - 1;
    const double unit = std::exp2(bits - 8.0);
    const double luma = (red_share * color[0] + green_share * color[1] + blue_share * color[2]) / full;
    const double blue_difference = (color[2] / full - luma) / (is_709 ? 1.8556 : 1.772);
    const double red_difference = (color[0] / full - luma) / (is_709 ? 1.5748 : 1.402);
    if (channel == 0)
        return is_full_range ? full * luma : unit * (219 * luma + 16);
    const double difference = channel == 1 ? blue_difference : red_difference;
    return is_full_range ? std::min(full, full * difference + 128 * unit) : unit * (224 * difference + 128);
}

} // namespace

Color color_at(const Shot& shot, uint32_t x, uint32_t y, unsigned bits)
{
    const uint32_t full = (1U << bits) - 1;
    const auto bright_if = [full](bool is_bright) { return grey(is_bright ? full : 0); };
    const uint64_t n = shot.picture;
    switch (shot.pattern) {
    case TestPattern::diagonal_ramp:
        return grey(bits == 8 ? (x + y + n) % 256 : (x + y + n) % 1024 << (bits - 10));
    case TestPattern::horizontal_ramp:
        return grey(uint64_t{x} * full / (shot.sensor_width - 1));
    case TestPattern::vertical_ramp:
        return grey(uint64_t{y} * full / (shot.sensor_height - 1));
    case TestPattern::color_bars:
        return bar_color(x * 8 / shot.sensor_width, full);
    case TestPattern::checkerboard:
        return bright_if((x / 32 + y / 32 + n) % 2 == 1);
    case TestPattern::black:
        return grey(0);
    case TestPattern::white:
        return grey(full);
    case TestPattern::grey:
        return grey((full + 1) / 2);
    case TestPattern::grid:
        return bright_if(x % 64 == 0 || y % 64 == 0);
    case TestPattern::moving_bar: {
        const uint64_t first = n * 8 % shot.sensor_width;
        const uint64_t behind = x >= first ? x - first : x + shot.sensor_width - first;
        return bright_if(behind < 32 && 4 * behind < shot.sensor_width);
    }
    case TestPattern::blinking:
        return bright_if(n % 2 == 1);
    case TestPattern::noise:
        return noise(shot, x, y, bits);
    case TestPattern::frame_counter:
        return bright_if(is_digit_dot(shot, x, y));
    case TestPattern::star:
        return bright_if(is_ray(shot, x, y));
    }
    throw std::logic_error{"no such pattern"};
}

double expected_sample(const Shot& shot, const std::string& format, uint32_t x, uint32_t y, size_t channel)
{
    const FormatLayout layout{format};
    const unsigned bits = layout.bits;
    const auto color = [&](uint32_t at) {
        return scaled(color_at(shot, at, y, bits), shot.brightness, bits);
    };
    if (format.rfind("Bayer", 0) == 0)
        return color(x)[mosaic_channel(format, x, y)];
    if (layout.order == FormatLayout::Order::mono) {
        const Color seen = color(x);
        return (299.0 * seen[0] + 587.0 * seen[1] + 114.0 * seen[2]) / 1000;
    }
    if (!layout.has_luma())
        return channel == 3 ? std::exp2(bits) - 1 : color(x)[channel];
    const uint32_t sharing = channel == 0                                       ? 1
                             : layout.order == FormatLayout::Order::u_y_y_v_y_y ? 4
                             : layout.order == FormatLayout::Order::y_u_y_v     ? 2
                                                                                : 1;
    std::array<double, 3> mean{};
    for (uint32_t at = x / sharing * sharing; at < x / sharing * sharing + sharing; ++at) {
        for (size_t part = 0; part < mean.size(); ++part)
            mean[part] += 1.0 * color(at)[part] / sharing;
    }
    return luma_or_chroma(format, mean, channel, bits);
}

} // namespace zvsim_test

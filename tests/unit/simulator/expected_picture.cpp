#include "unit/simulator/expected_picture.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace zvsim_test {

namespace {

bool begins_with(const std::string& text, const std::string& begin) { return text.rfind(begin, 0) == 0; }

bool ends_with(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

FormatLayout::Order order_of(const std::string& name)
{
    using Order = FormatLayout::Order;
    if (begins_with(name, "Mono") || begins_with(name, "Bayer"))
        return Order::mono;
    if (begins_with(name, "RGBa"))
        return Order::rgba;
    if (begins_with(name, "RGB"))
        return ends_with(name, "_Planar") ? Order::rgb_planar : Order::rgb;
    if (name == "YUV411_8_UYYVYY")
        return Order::u_y_y_v_y_y;
    if (name == "YUV8_UYV")
        return Order::u_y_v;
    if (name == "YUV422_8" || begins_with(name, "YCbCr601_422_") || begins_with(name, "YCbCr709_422_"))
        return Order::y_u_y_v;
    throw std::invalid_argument{"no layout for " + name};
}

unsigned bits_of(const std::string& name)
{
    if (begins_with(name, "YUV"))
        return 8;
    const size_t first = begins_with(name, "YCbCr") ? name.rfind('_') + 1 : name.find_first_of("0123456789");
    return static_cast<unsigned>(std::stoul(name.substr(first)));
}

/// The samples of a frame in the order of its memory.
class SampleReader {
public:
    SampleReader(const FormatLayout& layout, const unsigned char* bytes, size_t size)
        : m_layout{layout}, m_bytes{bytes}, m_size{size}
    {
    }

    uint32_t sample(size_t number) const
    {
        switch (m_layout.packing) {
        case FormatLayout::Packing::containers:
            return m_layout.bits == 8 ? byte(number) : byte(2 * number) + 256 * byte(2 * number + 1);
        case FormatLayout::Packing::gapless:
            return gapless(number * m_layout.bits);
        case FormatLayout::Packing::pairs:
            return of_pair(number / 2 * 3, number % 2 == 1);
        }
        throw std::logic_error{"no such packing"};
    }

private:
    uint32_t byte(size_t at) const
    {
        if (at >= m_size)
            throw std::out_of_range{"the frame is too short"};
        return m_bytes[at];
    }

    /// Bit by bit: the first bit of a sample is its lowest, and the lowest of a byte comes first.
    uint32_t gapless(size_t first_bit) const
    {
        uint32_t value = 0;
        for (unsigned bit = 0; bit < m_layout.bits; ++bit)
            value |= (byte((first_bit + bit) / 8) >> (first_bit + bit) % 8 & 1U) << bit;
        return value;
    }

    /// The high bits fill a byte, before or after the one that both low parts share.
    uint32_t of_pair(size_t at, bool is_second) const
    {
        const uint32_t nibble = is_second ? byte(at + 1) >> 4U : byte(at + 1) & 0xFU;
        const uint32_t high = byte(is_second ? at + 2 : at);
        return m_layout.bits == 12 ? high * 16 + nibble
                                   : high * 4 + nibble; // an unused bit that is set shows
    }

    const FormatLayout& m_layout;
    const unsigned char* m_bytes;
    size_t m_size;
};

/// Number of the sample that holds a channel of a pixel; counted through the whole picture.
size_t sample_number(FormatLayout::Order order, size_t pixel, size_t channel, size_t pixels)
{
    switch (order) {
    case FormatLayout::Order::mono:
        return pixel;
    case FormatLayout::Order::rgb:
        return pixel * 3 + channel;
    case FormatLayout::Order::rgb_planar:
        return channel * pixels + pixel;
    case FormatLayout::Order::rgba:
        return pixel * 4 + channel;
    case FormatLayout::Order::u_y_y_v_y_y: {
        const size_t luma[] = {1, 2, 4, 5};
        return pixel / 4 * 6 + (channel == 0 ? luma[pixel % 4] : channel == 1 ? 0 : 3);
    }
    case FormatLayout::Order::y_u_y_v:
        return pixel / 2 * 4 + (channel == 0 ? pixel % 2 * 2 : channel == 1 ? 1 : 3);
    case FormatLayout::Order::u_y_v: {
        const size_t place[] = {1, 0, 2};
        return pixel * 3 + place[channel];
    }
    }
    throw std::logic_error{"no such order"};
}

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

FormatLayout::FormatLayout(const std::string& name)
    : order{order_of(name)}, packing{ends_with(name, "Packed") ? Packing::pairs
                                     : ends_with(name, "p")    ? Packing::gapless
                                                               : Packing::containers},
      bits{bits_of(name)}
{
}

size_t FormatLayout::bits_per_pixel() const
{
    const size_t sample = packing == Packing::gapless ? bits
                          : packing == Packing::pairs ? 12
                          : bits > 8                  ? 16
                                                      : 8;
    if (order == Order::u_y_y_v_y_y)
        return sample * 6 / 4;
    return sample * (order == Order::y_u_y_v ? 2 : channels());
}

Decoded decode(const std::string& format, size_t width, size_t height, const unsigned char* bytes,
               size_t size)
{
    const FormatLayout layout{format};
    const SampleReader reader{layout, bytes, size};
    Decoded decoded{width, height, layout.channels(), {}};
    decoded.samples.reserve(width * height * decoded.channels);
    for (size_t pixel = 0; pixel < width * height; ++pixel) {
        for (size_t channel = 0; channel < decoded.channels; ++channel)
            decoded.samples.push_back(
                reader.sample(sample_number(layout.order, pixel, channel, width * height)));
    }
    return decoded;
}

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

#include "unit/simulator/decode.h"

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

    /// High bits in a byte of their own, before or after the one that both low parts share.
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

} // namespace zvsim_test

#include "simulator/pictures/ColorMatrix.h"

#include <cmath>

namespace zvsim {

namespace {

/// What the recommendations define: the shares of red and blue in the luma.
struct Shares {
    double red;
    double blue;
};

constexpr Shares bt_601{0.299, 0.114};
constexpr Shares bt_709{0.2126, 0.0722};

} // namespace

ColorMatrix::ColorMatrix(Colors colors, uint32_t bits)
{
    const Shares shares = colors == Colors::ycbcr709_422 ? bt_709 : bt_601;
    const double green = 1 - shares.red - shares.blue;
    const bool is_limited = colors == Colors::ycbcr601_422 || colors == Colors::ycbcr709_422;
    const double unit = std::exp2(bits) / 256; // what 1 is in 8 bit
    const double full_scale = std::exp2(bits) - 1;

    const double luma_gain = is_limited ? 219 * unit / full_scale : 1;
    m_luma = component(luma_gain * shares.red, luma_gain * green, luma_gain * shares.blue,
                       is_limited ? 16 * unit : 0, bits);
    const double chroma_gain = is_limited ? 224 * unit / full_scale : 1;
    const double blue_gain = chroma_gain / 2 / (1 - shares.blue);
    m_blue_chroma = component(-blue_gain * shares.red, -blue_gain * green, chroma_gain / 2, 128 * unit, bits);
    const double red_gain = chroma_gain / 2 / (1 - shares.red);
    m_red_chroma = component(chroma_gain / 2, -red_gain * green, -red_gain * shares.blue, 128 * unit, bits);
}

ColorMatrix::Component ColorMatrix::component(double red, double green, double blue, double offset,
                                              uint32_t bits)
{
    const auto fixed = [](double value) { return std::llround(std::ldexp(value, Component::fraction_bits)); };
    return {fixed(red), fixed(green), fixed(blue), fixed(offset + 0.5), (int64_t{1} << bits) - 1};
}

} // namespace zvsim

#include "simulator/features/Description.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <set>
#include <string_view>

#include "simulator/features/GrabberRegisters.h"
#include "simulator/features/RegisterSpace.h"

namespace zvsim {

namespace {

/// Replaces every @key@ of a template.
void fill_in(std::string& text, std::string_view key, const std::string& value)
{
    const std::string mark = "@" + std::string{key} + "@";
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + value.size()))
        text.replace(at, mark.size(), value);
}

bool is_letter_or_digit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// A name that the format allows where it wants an identifier.
std::string identifier(const std::string& name)
{
    constexpr size_t longest = 64; // leaves room in a URL
    std::string result = name.substr(0, longest);
    std::replace_if(
        result.begin(), result.end(), [](char c) { return !is_letter_or_digit(c); }, '_');
    const bool begins_with_letter = !result.empty() && (result[0] > '9') && result[0] != '_';
    return begins_with_letter ? result : "ZV_" + result;
}

/// Text for an attribute: plain ASCII, whatever the configuration holds.
std::string attribute(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '"')
            result += "&quot;";
        else
            result += c >= ' ' && c <= '~' ? c : '?';
    }
    return result;
}

/// FNV-1a.
uint64_t hash(const std::string& text, uint64_t start)
{
    uint64_t result = start;
    for (const char c : text)
        result = (result ^ static_cast<unsigned char>(c)) * UINT64_C(0x100000001B3);
    return result;
}

/// The same for the same text: consumers keep descriptions by this number.
std::string guid(const std::string& text)
{
    const uint64_t high = hash(text, UINT64_C(0xCBF29CE484222325));
    const uint64_t low = hash(text, UINT64_C(0x84222325CBF29CE4));
    std::array<char, 37> result{};
    std::snprintf(result.data(), result.size(),
                  "%08" PRIX64 "-%04" PRIX64 "-%04" PRIX64 "-%04" PRIX64 "-%012" PRIX64, high >> 32U,
                  high >> 16U & 0xFFFFU, high & 0xFFFFU, low >> 48U, low & UINT64_C(0xFFFFFFFFFFFF));
    return result.data();
}

std::string number(double value)
{
    std::array<char, 32> result{};
    std::snprintf(result.data(), result.size(), "%.15g", value);
    return result.data();
}

std::string entry(const std::string& name, uint32_t value)
{
    return "<EnumEntry Name=\"" + name + "\" NameSpace=\"Standard\">\n\t\t\t<Value>" + std::to_string(value) +
           "</Value>\n\t\t</EnumEntry>\n\t\t";
}

/// Without the white space behind the last entry, which the template has.
std::string joined(std::string entries) { return entries.erase(entries.find_last_of('>') + 1); }

std::string format_entries(const CameraModel& model)
{
    std::string entries;
    std::set<uint32_t> codes; // each value has one name only
    for (const PixelFormat* const format : model.formats) {
        const uint32_t code = code_of(*format, model.format_codes);
        if (codes.insert(code).second)
            entries += entry(format->name, code);
    }
    return joined(entries);
}

std::string size_entries(const CameraModel& model)
{
    std::set<uint32_t> sizes;
    for (const PixelFormat* const format : model.formats)
        sizes.insert(format->bits_per_pixel());
    std::string entries;
    for (const uint32_t bits : sizes)
        entries += entry("Bpp" + std::to_string(bits), bits);
    return joined(entries);
}

std::shared_ptr<const Description> finished(std::string name, std::string text)
{
    constexpr size_t register_size = 4; // some read whole registers alone
    fill_in(text, "PRODUCT_GUID", guid(name));
    fill_in(text, "VERSION_GUID", guid(text));
    text.append((register_size - text.size() % register_size) % register_size, '\n');
    return std::make_shared<const Description>(Description{std::move(name), std::move(text)});
}

} // namespace

std::string Description::url() const
{
    std::array<char, 32> place{};
    std::snprintf(place.data(), place.size(), "%x;%zx", description_address, text.size());
    return "Local:" + name + ".xml;" + place.data();
}

std::shared_ptr<const Description> describe_camera(const CameraModel& model)
{
    std::string text = camera_template();
    fill_in(text, "MODEL_IDENTIFIER", identifier(model.model));
    fill_in(text, "VENDOR_IDENTIFIER", identifier(model.vendor));
    fill_in(text, "TOOL_TIP", attribute(model.vendor + " " + model.model));
    fill_in(text, "PIXEL_FORMAT_ENTRIES", format_entries(model));
    fill_in(text, "PIXEL_SIZE_ENTRIES", size_entries(model));
    fill_in(text, "MOST_FRAMES", std::to_string(most_frames));
    fill_in(text, "LOWEST_RATE", number(lowest_rate));
    fill_in(text, "HIGHEST_RATE", number(highest_rate));
    fill_in(text, "SHORTEST_EXPOSURE", number(shortest_exposure_us));
    fill_in(text, "LONGEST_EXPOSURE", number(longest_exposure_us));
    fill_in(text, "LOWEST_GAIN", number(lowest_gain_db));
    fill_in(text, "HIGHEST_GAIN", number(highest_gain_db));
    return finished("ZV_Camera_" + identifier(model.model), std::move(text));
}

bool are_described_alike(const CameraModel& left, const CameraModel& right)
{
    return left.vendor == right.vendor && left.model == right.model && left.formats == right.formats &&
           left.format_codes == right.format_codes;
}

std::shared_ptr<const Description> describe_grabber(const GrabberModel& model)
{
    std::string text = grabber_template();
    const std::string name = grabber_model_name(model);
    fill_in(text, "MODEL_IDENTIFIER", identifier(name));
    fill_in(text, "VENDOR_IDENTIFIER", identifier(grabber_vendor));
    fill_in(text, "TOOL_TIP", attribute(std::string{grabber_vendor} + " " + name));
    fill_in(text, "LAST_CAMERA", std::to_string(camera_blocks(model) - 1));
    return finished("ZV_Grabber_" + identifier(name), std::move(text));
}

} // namespace zvsim

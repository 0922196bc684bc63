// What the altering faults make of the results of a call. Nothing is written beyond what a sound library
// writes: hardware can lie about anything but the consumer's memory.
#include "simulator/faults/FaultEngine.h"

#include "zvgr/ZVGRLib.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace zvsim {

namespace {

constexpr size_t url_space = 260;
constexpr unsigned char garbage_byte = 0xB7; // neither ASCII nor the begin of UTF-8

template <class Number>
void set(void* target, int64_t value)
{
    *static_cast<Number*>(target) = static_cast<Number>(value);
}

template <class Number>
void limit(void* target, int64_t most)
{
    auto& value = *static_cast<Number*>(target);
    value = static_cast<Number>(std::min<uint64_t>(value, static_cast<uint64_t>(most)));
}

void fill_texts(ZvCameraInfo& info, unsigned char with)
{
    for (char* const text : {info.device_version, info.vendor_name, info.model_name, info.serial_number})
        std::memset(text, with, sizeof(info.vendor_name));
}

/// Random bytes, and an end.
void spoil_texts(ZvCameraInfo& info)
{
    fill_texts(info, 0);
    for (char* const text : {info.device_version, info.vendor_name, info.model_name, info.serial_number}) {
        for (int i = 0; i < 20; ++i)
            text[i] = static_cast<char>(garbage_byte + 7 * i == 0 ? 1 : garbage_byte + 7 * i);
    }
}

void set_url(const Call& call, const char* text)
{
    std::memcpy(call.data, text, std::strlen(text) + 1);
    set<uint64_t>(call.size, static_cast<int64_t>(std::strlen(text) + 1));
}

/// Longer than anybody expects: to the end of the given memory, with the terminating zero or without.
void fill_url(const Call& call, bool is_terminated)
{
    auto* const text = static_cast<char*>(call.data);
    std::memset(text, 'x', url_space);
    std::memcpy(text, "Local:", 6);
    if (is_terminated)
        text[url_space - 1] = '\0';
    set<uint64_t>(call.size, url_space);
}

struct Url {
    std::string name;
    unsigned long long address = 0;
    unsigned long long length = 0;
};

/// What stands in a good URL; nothing for any other.
std::optional<Url> url_from(const Call& call)
{
    const std::string text{static_cast<const char*>(call.data),
                           strnlen(static_cast<char*>(call.data), url_space)};
    const size_t length = text.rfind(';');
    const size_t address = length == std::string::npos ? length : text.rfind(';', length - 1);
    if (address == std::string::npos)
        return std::nullopt;
    try {
        return Url{text.substr(0, address), std::stoull(text.substr(address + 1), nullptr, 16),
                   std::stoull(text.substr(length + 1), nullptr, 16)};
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void change_length(const Call& call, int64_t difference)
{
    const auto url = url_from(call);
    if (!url)
        return;
    const uint64_t cut =
        difference < 0 ? std::min<uint64_t>(url->length, uint64_t{0} - static_cast<uint64_t>(difference)) : 0;
    const uint64_t length =
        difference < 0 ? url->length - cut : url->length + static_cast<uint64_t>(difference);
    std::array<char, url_space> text{};
    const int used = std::snprintf(text.data(), text.size(), "%s;%llX;%llX", url->name.c_str(), url->address,
                                   static_cast<unsigned long long>(length));
    if (used > 0 && static_cast<size_t>(used) < text.size())
        set_url(call, text.data());
}

} // namespace

void FaultEngine::remember_description(const Call& call)
{
    if (const auto url = url_from(call))
        m_descriptions[call.target.value] = {url->address, url->length};
}

void FaultEngine::spoil_description(const Call& call)
{
    const auto known = m_descriptions.find(call.target.value);
    const uint64_t address = call.arguments[0].value;
    const uint32_t read = *static_cast<const uint32_t*>(call.size);
    if (known == m_descriptions.end() || address < known->second.address ||
        address - known->second.address >= known->second.length)
        return;
    auto* const bytes = static_cast<unsigned char*>(call.data);
    for (uint32_t i = 0; i < read; ++i) // the same at every read of the same place
        bytes[i] = static_cast<unsigned char>((address + i) * 167 + m_seed * 31 + 129);
}

void FaultEngine::alter(const Call& call, const Verdict& verdict, uint64_t& result)
{
    if (call.data == nullptr && row_of(call.function).has_output)
        return; // of a call that asked for nothing
    if (call.function == Function::xml_url)
        remember_description(call);
    for (size_t i = 0; i < verdict.alteration_count; ++i) {
        const int64_t amount = verdict.amounts[i];
        switch (verdict.alterations[i]) {
        case FaultKind::grabber_count_too_large:
        case FaultKind::camera_count_too_large:
            set<uint32_t>(call.data, amount);
            break;
        case FaultKind::protocol_unknown:
            static_cast<ZvDeviceInfo*>(call.data)->protocol = static_cast<uint32_t>(amount);
            break;
        case FaultKind::camera_texts_unterminated:
            fill_texts(*static_cast<ZvCameraInfo*>(call.data), 'x');
            break;
        case FaultKind::camera_texts_empty:
            fill_texts(*static_cast<ZvCameraInfo*>(call.data), 0);
            break;
        case FaultKind::camera_texts_garbage:
            spoil_texts(*static_cast<ZvCameraInfo*>(call.data));
            break;
        case FaultKind::register_read_short:
        case FaultKind::register_write_short:
            limit<uint32_t>(call.size, amount);
            break;
        case FaultKind::description_garbage:
            spoil_description(call);
            break;
        case FaultKind::description_truncated:
            change_length(call, -amount);
            break;
        case FaultKind::description_huge:
            change_length(call, amount);
            break;
        case FaultKind::url_empty:
            set_url(call, "");
            break;
        case FaultKind::url_garbage:
            set_url(call, "\x01;;\xB7 not a URL;zz;-1");
            break;
        case FaultKind::url_too_long:
            fill_url(call, true);
            break;
        case FaultKind::url_unterminated:
            fill_url(call, false);
            break;
        case FaultKind::payload_size_wrong:
            set<uint64_t>(call.data, amount);
            break;
        case FaultKind::payload_size_zero:
            set<uint64_t>(call.data, 0);
            break;
        case FaultKind::pixel_format_unknown:
            result = static_cast<uint64_t>(amount);
            break;
        default: // changes no results
            break;
        }
    }
}

} // namespace zvsim

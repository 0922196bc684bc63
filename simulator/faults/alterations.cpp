#include <algorithm>
#include <cstdio>
#include <cstring>

#include "zvgr/ZVGRLib.h"

#include "simulator/faults/FaultEngine.h"

// What the altering faults make of the results of a call. Nothing is written beyond what a sound library
// writes: hardware can lie about anything but the consumer's memory.

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
    unsigned long long address{0};
    unsigned long long length{0};
};

/// What a valid URL contains; nothing for any other.
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

ZvCameraInfo& info_of(const Call& call) { return *static_cast<ZvCameraInfo*>(call.data); }

void change_count(const Call& call, int64_t count) { set<uint32_t>(call.data, count); }
void change_payload(const Call& call, int64_t bytes) { set<uint64_t>(call.data, bytes); }
void change_protocol(const Call& call, int64_t protocol)
{
    static_cast<ZvDeviceInfo*>(call.data)->protocol = static_cast<uint32_t>(protocol);
}
void shorten_transfer(const Call& call, int64_t bytes) { limit<uint32_t>(call.size, bytes); }
void take_ends_of_texts(const Call& call, int64_t /*amount*/) { fill_texts(info_of(call), 'x'); }
void empty_texts(const Call& call, int64_t /*amount*/) { fill_texts(info_of(call), 0); }
void spoil_texts(const Call& call, int64_t /*amount*/) { spoil_texts(info_of(call)); }
void shorten_description(const Call& call, int64_t bytes) { change_length(call, -bytes); }
void lengthen_description(const Call& call, int64_t bytes) { change_length(call, bytes); }
void empty_url(const Call& call, int64_t /*amount*/) { set_url(call, ""); }
void spoil_url(const Call& call, int64_t /*amount*/) { set_url(call, "\x01;;\xB7 not a URL;zz;-1"); }
void lengthen_url(const Call& call, int64_t /*amount*/) { fill_url(call, true); }
void take_end_of_url(const Call& call, int64_t /*amount*/) { fill_url(call, false); }

struct Alteration {
    FaultKind kind;
    void (*alter)(const Call& call, int64_t amount);
};

constexpr Alteration alterations[] = {
    {FaultKind::grabber_count_too_large, change_count},
    {FaultKind::protocol_unknown, change_protocol},
    {FaultKind::camera_count_too_large, change_count},
    {FaultKind::camera_texts_unterminated, take_ends_of_texts},
    {FaultKind::camera_texts_empty, empty_texts},
    {FaultKind::camera_texts_garbage, spoil_texts},
    {FaultKind::register_read_short, shorten_transfer},
    {FaultKind::register_write_short, shorten_transfer},
    {FaultKind::description_truncated, shorten_description},
    {FaultKind::description_huge, lengthen_description},
    {FaultKind::url_empty, empty_url},
    {FaultKind::url_garbage, spoil_url},
    {FaultKind::url_too_long, lengthen_url},
    {FaultKind::url_unterminated, take_end_of_url},
    {FaultKind::payload_size_wrong, change_payload},
    {FaultKind::payload_size_zero, change_payload},
};

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
    for (size_t i = 0; i < verdict.alteration_count; ++i) {
        if (verdict.alterations[i] == FaultKind::pixel_format_unknown)
            result = static_cast<uint64_t>(verdict.amounts[i]);
    }
    if (call.data == nullptr) // of a call that asked for nothing
        return;
    if (call.function == Function::xml_url)
        remember_description(call);
    for (size_t i = 0; i < verdict.alteration_count; ++i) {
        if (verdict.alterations[i] == FaultKind::description_garbage)
            spoil_description(call);
        for (const Alteration& alteration : alterations) {
            if (alteration.kind == verdict.alterations[i])
                alteration.alter(call, verdict.amounts[i]);
        }
    }
}

} // namespace zvsim

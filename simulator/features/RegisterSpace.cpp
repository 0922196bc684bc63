#include "simulator/features/RegisterSpace.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace zvsim {

namespace {

uint64_t unsigned_from(const unsigned char* bytes, size_t length)
{
    uint64_t number = 0;
    for (size_t at = 0; at < length; ++at)
        number = number << 8U | bytes[at];
    return number;
}

void put_unsigned(uint64_t number, unsigned char* bytes, size_t length)
{
    for (size_t at = length; at > 0; --at, number >>= 8U)
        bytes[at - 1] = static_cast<unsigned char>(number & 0xFFU);
}

/// Walks over the registers that hold the bytes from `address` on, in their order. `visit` gets the place,
/// the offset in the register, the offset in the whole access and the number of bytes; false ends the walk.
template <class Find, class Visit>
uint32_t walk(uint64_t address, uint32_t size, const Find& find, const Visit& visit)
{
    uint32_t done = 0;
    while (done < size) {
        const std::optional<RegisterPlace> place = find(address + done);
        if (!place)
            break;
        const auto offset = static_cast<size_t>(address + done - place->address);
        const size_t part = std::min(place->length - offset, size_t{size} - done);
        if (!visit(*place, offset, size_t{done}, part))
            return 0;
        done += static_cast<uint32_t>(part);
    }
    return done;
}

} // namespace

void encode(const RegisterValue& value, RegisterKind kind, unsigned char* bytes, size_t length)
{
    std::memset(bytes, 0, length);
    if (std::holds_alternative<std::monostate>(value))
        return;
    if (kind == RegisterKind::text) {
        const auto& text = std::get<std::string>(value);
        std::copy_n(text.data(), std::min(text.size(), length), bytes);
    } else if (kind == RegisterKind::floating) {
        uint64_t bits = 0;
        std::memcpy(&bits, &std::get<double>(value), sizeof bits);
        put_unsigned(bits, bytes, length);
    } else {
        put_unsigned(static_cast<uint64_t>(std::get<int64_t>(value)), bytes, length);
    }
}

RegisterValue decode(RegisterKind kind, const unsigned char* bytes, size_t length)
{
    if (kind == RegisterKind::text) {
        const auto* const end = std::find(bytes, bytes + length, static_cast<unsigned char>(0));
        return std::string(bytes, end);
    }
    const uint64_t number = unsigned_from(bytes, length);
    if (kind != RegisterKind::floating)
        return static_cast<int64_t>(number);
    double value = 0;
    std::memcpy(&value, &number, sizeof value);
    return value;
}

bool RegisterSpace::is_mapped(uint64_t address) const
{
    return find(address) ||
           (address >= description_address && address - description_address < description().size());
}

uint32_t RegisterSpace::read(uint64_t address, unsigned char* bytes, uint32_t size) const
{
    if (address >= description_address) {
        if (!is_mapped(address))
            return 0;
        const auto offset = static_cast<size_t>(address - description_address);
        const size_t part = std::min(description().size() - offset, size_t{size});
        std::memcpy(bytes, description().data() + offset, part);
        return static_cast<uint32_t>(part);
    }
    return walk(
        address, size, [this](uint64_t at) { return find(at); },
        [&](const RegisterPlace& place, size_t offset, size_t done, size_t part) {
            std::array<unsigned char, longest_register> whole;
            load(place, whole.data());
            std::memcpy(bytes + done, whole.data() + offset, part);
            return true;
        });
}

uint32_t RegisterSpace::write(uint64_t address, const unsigned char* bytes, uint32_t size)
{
    return walk(
        address, size, [this](uint64_t at) { return find(at); },
        [&](const RegisterPlace& place, size_t offset, size_t done, size_t part) {
            std::array<unsigned char, longest_register> whole;
            load(place, whole.data()); // what a partial write leaves alone
            std::memcpy(whole.data() + offset, bytes + done, part);
            return store(place, whole.data());
        });
}

} // namespace zvsim

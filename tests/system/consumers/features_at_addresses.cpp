#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include "system/consumers/description_text.h"
#include "system/consumers/features.h"
#include "system/consumers/known_registers.h"

namespace zvclient {

namespace {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<unsigned char>;

constexpr std::chrono::seconds longest_command{5};
constexpr std::uint64_t largest_coaxpress_format = 0xFFFF;

Bytes big_endian(std::uint64_t value, std::size_t length)
{
    Bytes bytes(length);
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte, value >>= 8U)
        *byte = static_cast<unsigned char>(value & 0xFFU);
    return bytes;
}

std::uint64_t number_of(const Bytes& bytes)
{
    std::uint64_t value = 0;
    for (const unsigned char byte : bytes)
        value = value << 8U | byte;
    return value;
}

Bytes bytes_of_text(const std::string& text, std::size_t length)
{
    need_true(text.size() <= length, "\"" + text + "\" is too long");
    Bytes bytes(length);
    std::copy(text.begin(), text.end(), bytes.begin());
    return bytes;
}

Bytes bytes_of_float(const std::string& text, std::size_t length)
{
    const double value = std::stod(text);
    std::uint64_t bits = 0;
    static_assert(sizeof bits == sizeof value);
    std::memcpy(&bits, &value, sizeof bits);
    return big_endian(bits, length);
}

/// The description must say of the register what is known.
void compare(const std::string& description, const KnownRegister& known)
{
    const std::string feature = known.feature;
    const std::string value = property_of(description, feature, "pValue");
    const std::string node = value.empty() ? feature : value;
    const std::string address = property_of(description, node, "Address");
    const std::string length = property_of(description, node, "Length");
    need_true(!address.empty() && std::stoull(address, nullptr, 0) == known.address,
              feature + " is described at the address \"" + address + '"');
    need_true(length == std::to_string(known.length), feature + " is described with " + length + " bytes");
    const std::string order = property_of(description, node, "Endianess");
    need_true(known.type == RegisterType::text || order == "BigEndian", feature + " is " + order);
}

} // namespace

class Features::Impl {
public:
    Impl(const std::string& description, const ExactPort& port) : m_port{port}
    {
        need_whole_description(description);
        const std::string first_category = property_of(description, "Root", "pFeature");
        is_empty = first_category.empty();
        known = registers_below(first_category);
        for (const KnownRegister& one : known)
            compare(description, one);
    }

    Bytes read(const KnownRegister& one) const
    {
        Bytes bytes(one.length);
        m_port.read(one.address, bytes.data(), bytes.size());
        return bytes;
    }

    void write(const KnownRegister& one, const Bytes& bytes) const
    {
        m_port.write(one.address, bytes.data(), bytes.size());
    }

    void write_and_compare(const KnownRegister& one, const Bytes& bytes) const
    {
        write(one, bytes);
        need_true(read(one) == bytes, std::string(one.feature) + " is not what was written");
    }

    Bytes bytes_of(const KnownRegister& one, const std::string& text) const
    {
        switch (one.type) {
        case RegisterType::text:
            return bytes_of_text(text, one.length);
        case RegisterType::floating:
            return bytes_of_float(text, one.length);
        default:
            return big_endian(number_of_text(one, text), one.length);
        }
    }

    void execute(const KnownRegister& one, std::chrono::milliseconds timeout) const
    {
        write(one, big_endian(1, one.length));
        const auto end = Clock::now() + timeout;
        while (number_of(read(one)) != 0)
            need_true(Clock::now() < end, std::string(one.feature) + " is not done in time");
    }

    KnownRegisters known;
    bool is_empty{false};

private:
    std::uint64_t number_of_text(const KnownRegister& one, const std::string& text) const
    {
        const KnownEntry* const entry = find_entry(one.feature, text);
        if (entry == nullptr)
            return std::stoull(text);
        // A camera numbers all its formats in one way.
        const bool is_by_coaxpress = number_of(read(one)) <= largest_coaxpress_format;
        return is_by_coaxpress ? entry->coaxpress_number : entry->number;
    }

    const ExactPort& m_port;
};

Features::Features(const std::string& description, const ExactPort& port)
    : m_impl{std::make_unique<Impl>(description, port)}
{
}

Features::~Features() = default;

bool Features::is_empty() const { return m_impl->is_empty; }

int Features::read_every() const
{
    int count = 0;
    for (const KnownRegister& one : m_impl->known) {
        m_impl->read(one);
        ++count;
    }
    return count;
}

/// One value each. All keep theirs until the last is written, for some values need those of others.
int Features::write_every() const
{
    int count = 0;
    std::vector<std::pair<const KnownRegister*, Bytes>> before;
    for (const KnownRegister& one : m_impl->known) {
        if (one.type == RegisterType::command) {
            m_impl->execute(one, longest_command);
            ++count;
        } else if (one.sample != nullptr) {
            before.emplace_back(&one, m_impl->read(one));
            m_impl->write_and_compare(one, m_impl->bytes_of(one, one.sample));
            ++count;
        }
    }
    for (auto one = before.rbegin(); one != before.rend(); ++one)
        m_impl->write_and_compare(*one->first, one->second);
    return count;
}

std::int64_t Features::integer(const std::string& name) const
{
    const KnownRegister& one = m_impl->known.at(name);
    need_true(one.type == RegisterType::integer, name + " is no whole number");
    return static_cast<std::int64_t>(number_of(m_impl->read(one)));
}

void Features::set(const std::string& name, const std::string& text) const
{
    const KnownRegister& one = m_impl->known.at(name);
    m_impl->write(one, m_impl->bytes_of(one, text));
}

void Features::execute(const std::string& name, std::chrono::milliseconds timeout) const
{
    m_impl->execute(m_impl->known.at(name), timeout);
}

} // namespace zvclient

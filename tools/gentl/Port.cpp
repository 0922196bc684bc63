#include "gentl/Port.h"

#include <algorithm>

#include "gentl/Error.h"

namespace zvgentl::tool {

using namespace GenTL;

namespace {

std::string hexadecimal(std::uint64_t number)
{
    std::string text;
    do {
        text.insert(text.begin(), "0123456789ABCDEF"[number % 16]);
        number /= 16;
    } while (number != 0);
    return "0x" + text;
}

std::string place(std::uint64_t address, std::size_t size)
{
    return std::to_string(size) + " bytes at " + hexadecimal(address);
}

/// What is still to be moved after one call.
struct Rest {
    std::uint64_t address;
    std::size_t size;
};

Rest after(const char* function, const Rest& rest, std::size_t moved)
{
    if (moved == 0 || moved > rest.size)
        throw Error(GC_ERR_IO, function,
                    "it transferred " + std::to_string(moved) + " of " + place(rest.address, rest.size));
    return {rest.address + moved, rest.size - moved};
}

} // namespace

void Port::read(std::uint64_t address, void* data, std::size_t size) const
{
    auto* const bytes = static_cast<unsigned char*>(data);
    for (Rest rest{address, size}; rest.size > 0;) {
        std::size_t moved = rest.size;
        m_producer.check(
            m_producer.functions().GCReadPort(m_handle, rest.address, bytes + (size - rest.size), &moved),
            "GCReadPort");
        rest = after("GCReadPort", rest, moved);
    }
}

void Port::write(std::uint64_t address, const void* data, std::size_t size) const
{
    const auto* const bytes = static_cast<const unsigned char*>(data);
    for (Rest rest{address, size}; rest.size > 0;) {
        std::size_t moved = rest.size;
        m_producer.check(
            m_producer.functions().GCWritePort(m_handle, rest.address, bytes + (size - rest.size), &moved),
            "GCWritePort");
        rest = after("GCWritePort", rest, moved);
    }
}

std::vector<std::string> Port::urls() const
{
    const Functions& functions = m_producer.functions();
    std::uint32_t count = 0;
    m_producer.check(functions.GCGetNumPortURLs(m_handle, &count), "GCGetNumPortURLs");
    std::vector<std::string> urls;
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto url = find_text(
            m_producer, "GCGetPortURLInfo", [&](INFO_DATATYPE* type, void* buffer, std::size_t* size) {
                return functions.GCGetPortURLInfo(m_handle, i, URL_INFO_URL, type, buffer, size);
            });
        if (url)
            urls.push_back(*url);
    }
    return urls;
}

} // namespace zvgentl::tool

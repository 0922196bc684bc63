#pragma once

#include <array>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>

#include "gentl/Registers.h"

#include "unit/tools/support.h"

namespace zvgentl::test {

/// 4 KiB of register memory; there is nothing beyond it.
class FakeRegisters final : public tool::Registers {
public:
    void read(std::uint64_t address, void* data, std::size_t size) const override
    {
        std::memcpy(data, bytes.data() + place(address, size, "read"), size);
        ++reads;
    }

    void write(std::uint64_t address, const void* data, std::size_t size) const override
    {
        std::memcpy(bytes.data() + place(address, size, "written"), data, size);
        ++writes;
        if (on_write)
            on_write();
    }

    template <class Number>
    void put(std::size_t address, Number number)
    {
        std::memcpy(bytes.data() + address, &number, sizeof number);
    }

    template <class Number>
    Number at(std::size_t address) const
    {
        Number number;
        std::memcpy(&number, bytes.data() + address, sizeof number);
        return number;
    }

    mutable std::array<unsigned char, 4096> bytes{};
    mutable int reads{0};
    mutable int writes{0};
    std::string refusal; // what every access fails with, unless empty
    std::function<void()> on_write;

private:
    std::size_t place(std::uint64_t address, std::size_t size, const char* what) const
    {
        if (!refusal.empty())
            throw std::runtime_error(refusal);
        if (address > bytes.size() || size > bytes.size() - address)
            throw std::runtime_error("address " + std::to_string(address) + " cannot be " + what);
        return static_cast<std::size_t>(address);
    }
};

/// A description of these nodes, with the port that they need.
inline std::string description_of(const std::string& nodes)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<RegisterDescription ModelName=\"Fake\" VendorName=\"Test\" StandardNameSpace=\"None\" "
           "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" "
           "MinorVersion=\"0\" SubMinorVersion=\"0\" ToolTip=\"\" "
           "ProductGuid=\"11111111-2222-3333-4444-555555555555\" "
           "VersionGuid=\"11111111-2222-3333-4444-555555555556\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n" +
           nodes + "<Port Name=\"Device\"/>\n</RegisterDescription>\n";
}

/// A little-endian, unsigned register of 4 bytes.
inline std::string register_of(const std::string& name, std::size_t address, const std::string& mode = "RW")
{
    return "<IntReg Name=\"" + name + "\"><Address>" + std::to_string(address) +
           "</Address><Length>4</Length>" + "<AccessMode>" + mode +
           "</AccessMode><pPort>Device</pPort><Cachable>WriteThrough</Cachable>" +
           "<Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>\n";
}

} // namespace zvgentl::test

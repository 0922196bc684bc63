#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "zvgenapi/NodeMap.h"

namespace zvgenapi::test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// 4 KiB of register memory; there is nothing beyond it.
class Memory : public Port {
public:
    void read(std::uint64_t address, void* data, std::size_t size) override
    {
        std::memcpy(data, bytes.data() + place(address, size), size);
        ++reads;
    }
    void write(std::uint64_t address, const void* data, std::size_t size) override
    {
        std::memcpy(bytes.data() + place(address, size), data, size);
        ++writes;
        if (on_write)
            on_write();
    }
    void put(std::size_t address, const std::vector<unsigned>& values)
    {
        for (const unsigned value : values)
            bytes[address++] = static_cast<unsigned char>(value);
    }
    std::vector<unsigned> at(std::size_t address, std::size_t count) const
    {
        return {bytes.begin() + static_cast<std::ptrdiff_t>(address),
                bytes.begin() + static_cast<std::ptrdiff_t>(address + count)};
    }

    std::vector<unsigned char> bytes = std::vector<unsigned char>(4096);
    int reads{0};
    int writes{0};
    std::function<void()> on_write;
    std::string refusal; // what every access fails with, unless empty

private:
    std::size_t place(std::uint64_t address, std::size_t size) const
    {
        if (!refusal.empty())
            throw std::runtime_error(refusal);
        if (address > bytes.size() || size > bytes.size() - address)
            throw std::out_of_range("there is no register at " + std::to_string(address));
        return static_cast<std::size_t>(address);
    }
};

/// A description of these nodes.
inline std::string description_of(const std::string& nodes)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<RegisterDescription ModelName=\"Fake\" VendorName=\"Test\" ToolTip=\"For tests\" "
           "StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
           "SchemaSubMinorVersion=\"2\" "
           "MajorVersion=\"3\" MinorVersion=\"4\" SubMinorVersion=\"5\" ProductGuid=\"P\" VersionGuid=\"V\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n" +
           nodes + "</RegisterDescription>\n";
}

/// An element: node("Integer", "A", "<Value>1</Value>").
inline std::string node(const std::string& element, const std::string& name, const std::string& content)
{
    return "<" + element + " Name=\"" + name + "\">" + content + "</" + element + ">\n";
}

inline std::string integer(const std::string& name, const std::string& content)
{
    return node("Integer", name, content);
}

/// What all registers need, in front of their own elements.
inline std::string place(const std::string& address, int length, const std::string& mode = "RW")
{
    return "<Address>" + address + "</Address><Length>" + std::to_string(length) + "</Length><AccessMode>" +
           mode + "</AccessMode><pPort>Device</pPort>";
}

/// A little-endian, unsigned register of 4 bytes that is not cached.
inline std::string reg(const std::string& name, const std::string& address, const std::string& mode = "RW")
{
    return node("IntReg", name, place(address, 4, mode) + "<Cachable>NoCache</Cachable>");
}

inline std::string formula(const std::string& name, const std::string& variables, const std::string& text)
{
    return node("IntSwissKnife", name, variables + "<Formula>" + text + "</Formula>");
}

inline std::string variable(const std::string& name, const std::string& target)
{
    return "<pVariable Name=\"" + name + "\">" + target + "</pVariable>";
}

/// A map of these nodes, with a port to some memory.
struct Device {
    explicit Device(const std::string& nodes, const Limits& limits = {})
        : map(NodeMap::load(description_of(nodes + "<Port Name=\"Device\"/>"), limits))
    {
        map.connect("Device", memory);
    }

    Integer integer(const std::string& name) const { return map.get(name).as<Integer>(); }
    Float floating(const std::string& name) const { return map.get(name).as<Float>(); }
    std::int64_t number(const std::string& name) const { return integer(name).value(); }
    std::string text(const std::string& name) const { return map.get(name).to_string(); }
    std::string access(const std::string& name) const { return name_of(map.get(name).access()); }

    Memory memory;
    NodeMap map;
};

/// The kind and the text of the Error that something throws.
template <class Action>
std::pair<std::string, std::string> error_of(const Action& action)
{
    try {
        action();
    } catch (const Error& error) {
        return {error_kind_name(error.kind()), error.what()};
    }
    return {"no error", ""};
}

template <class Action>
std::string kind_of_error(const Action& action)
{
    return error_of(action).first;
}

} // namespace zvgenapi::test

// Reads and writes features by a register description. The device is an array here; with a camera, the port
// would call GCReadPort and GCWritePort, and the description would come from its URL.

#include <array>
#include <cstring>
#include <iostream>
#include <stdexcept>

#include <zvgenapi/NodeMap.h>

namespace {

constexpr const char description[] = R"xml(<RegisterDescription ModelName="Example" SchemaMajorVersion="1">
<Category Name="Root"><pFeature>Width</pFeature><pFeature>Mode</pFeature></Category>
<Integer Name="Width"><pValue>WidthReg</pValue><Min>16</Min><Max>1024</Max><Inc>16</Inc><Unit>px</Unit></Integer>
<IntReg Name="WidthReg">
  <Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>
</IntReg>
<Enumeration Name="Mode">
  <EnumEntry Name="Off"><Value>0</Value></EnumEntry><EnumEntry Name="On"><Value>1</Value></EnumEntry>
  <pValue>ModeBit</pValue>
</Enumeration>
<MaskedIntReg Name="ModeBit">
  <Address>4</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Bit>0</Bit>
</MaskedIntReg>
<Port Name="Device"/></RegisterDescription>)xml";

class ArrayPort final : public zvgenapi::Port {
public:
    void read(std::uint64_t address, void* data, std::size_t size) override
    {
        std::memcpy(data, place(address, size), size);
    }
    void write(std::uint64_t address, const void* data, std::size_t size) override
    {
        std::memcpy(place(address, size), data, size);
    }

private:
    unsigned char* place(std::uint64_t address, std::size_t size)
    {
        if (address > m_bytes.size() || size > m_bytes.size() - address)
            throw std::out_of_range("there is no such register");
        return m_bytes.data() + address;
    }

    std::array<unsigned char, 16> m_bytes{0, 0, 2, 128};
};

void print_features(const zvgenapi::NodeMap& map)
{
    for (const zvgenapi::Node& feature : map.root().as<zvgenapi::Category>().features())
        std::cout << feature.name() << " = " << feature.to_string() << " (" << name_of(feature.access())
                  << ")\n";
}

} // namespace

int main()
try {
    ArrayPort port;
    zvgenapi::NodeMap map = zvgenapi::NodeMap::load(description, sizeof description - 1);
    map.connect("Device", port);
    print_features(map);
    map.get("Width").as<zvgenapi::Integer>().set(320);
    map.get("Mode").as<zvgenapi::Enumeration>().set("On");
    print_features(map);
    map.get("Width").as<zvgenapi::Integer>().set(321); // throws: it changes in steps of 16
    return 1;
} catch (const zvgenapi::Error& error) {
    std::cout << error_kind_name(error.kind()) << ": " << error.what() << "\n";
    return error.kind() == zvgenapi::ErrorKind::range ? 0 : 1;
}

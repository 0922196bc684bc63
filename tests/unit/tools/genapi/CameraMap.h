#pragma once

#include <gtest/gtest.h>

#include "FakeRegisters.h"
#include "genapi/NodeMap.h"

namespace zvgentl::test {

constexpr const char* camera_features = R"xml(
<Group Comment="Tree">
    <Category Name="Root"><pFeature>ImageFormat</pFeature><pFeature>Acquisition</pFeature></Category>
    <Category Name="ImageFormat">
        <pFeature>Width</pFeature><pFeature>OffsetX</pFeature><pFeature>PixelFormat</pFeature>
        <pFeature>ReverseX</pFeature><pFeature>NotThere</pFeature>
    </Category>
    <Category Name="Acquisition">
        <pFeature>ExposureTime</pFeature><pFeature>Gain</pFeature><pFeature>TriggerSelector</pFeature>
        <pFeature>TriggerMode</pFeature><pFeature>AcquisitionStart</pFeature><pFeature>DeviceUserID</pFeature>
    </Category>
</Group>
<Integer Name="Width">
    <ToolTip>Width of the picture</ToolTip><DisplayName>Picture Width</DisplayName><Visibility>Expert</Visibility>
    <pIsLocked>Locked</pIsLocked><pValue>WidthReg</pValue><Min>16</Min><pMax>WidthMax</pMax><Inc>16</Inc>
    <Unit>px</Unit>
</Integer>
<IntSwissKnife Name="WidthMax">
    <pVariable Name="X">OffsetX</pVariable><Formula>1024 - X</Formula>
</IntSwissKnife>
<Integer Name="OffsetX"><pValue>OffsetReg</pValue><Min>0</Min><pMax>OffsetMax</pMax></Integer>
<IntSwissKnife Name="OffsetMax">
    <pVariable Name="W">Width</pVariable><Formula>1024 - W</Formula>
</IntSwissKnife>
<Enumeration Name="PixelFormat">
    <EnumEntry Name="Mono8"><Value>0x01080001</Value></EnumEntry>
    <EnumEntry Name="Mono12"><Value>0x01100005</Value></EnumEntry>
    <EnumEntry Name="RGB8"><pIsAvailable>HasColour</pIsAvailable><Value>0x02180014</Value></EnumEntry>
    <pValue>PixelFormatReg</pValue>
</Enumeration>
<Integer Name="HasColour"><Value>0</Value></Integer>
<Boolean Name="ReverseX"><pValue>FlagBit</pValue><OnValue>1</OnValue><OffValue>0</OffValue></Boolean>
<Float Name="ExposureTime"><pValue>ExposureConverter</pValue><Min>10</Min><Max>1000000</Max><Unit>us</Unit></Float>
<Converter Name="ExposureConverter">
    <FormulaTo>FROM * 10</FormulaTo><FormulaFrom>TO / 10</FormulaFrom><pValue>ExposureReg</pValue>
</Converter>
<SwissKnife Name="Ratio"><pVariable Name="W">Width</pVariable><Formula>W / 100.0</Formula></SwissKnife>
<Enumeration Name="TriggerSelector">
    <EnumEntry Name="FrameStart"><Value>0</Value></EnumEntry>
    <EnumEntry Name="LineStart"><Value>1</Value></EnumEntry>
    <pValue>TriggerSelectorReg</pValue><pSelected>TriggerMode</pSelected>
</Enumeration>
<Integer Name="TriggerMode"><pValue>TriggerModeReg</pValue></Integer>
<Command Name="AcquisitionStart"><pValue>CommandReg</pValue><CommandValue>1</CommandValue></Command>
<Command Name="Reset"><pValue>ResetReg</pValue><CommandValue>7</CommandValue></Command>
<String Name="Vendor"><ImposedAccessMode>RO</ImposedAccessMode><Value>Test Ltd.</Value></String>
<String Name="UserName"><pValue>DeviceUserID</pValue></String>
<IntConverter Name="Doubled">
    <FormulaTo>FROM / 2</FormulaTo><FormulaFrom>TO * 2</FormulaFrom><pValue>CounterReg</pValue>
</IntConverter>
<Integer Name="Address"><pValue>AddressReg</pValue><Representation>IPV4Address</Representation></Integer>
<Integer Name="Mask"><pValue>AddressReg</pValue><Representation>HexNumber</Representation></Integer>
)xml";

constexpr const char* camera_registers = R"xml(
<MaskedIntReg Name="FlagBit">
    <Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Bit>3</Bit><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess>
</MaskedIntReg>
<MaskedIntReg Name="Nibble">
    <Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <LSB>8</LSB><MSB>11</MSB><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess>
</MaskedIntReg>
<FloatReg Name="Gain">
    <pIsAvailable>HasGain</pIsAvailable>
    <Address>0x20</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess>
</FloatReg>
<IntReg Name="TriggerModeReg">
    <Address>0x40</Address>
    <IntSwissKnife Name="TriggerOffset">
        <pVariable Name="S">TriggerSelectorReg</pVariable><Formula>S * 4</Formula>
    </IntSwissKnife>
    <Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess>
</IntReg>
<StringReg Name="DeviceUserID">
    <Address>0x100</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
</StringReg>
<Register Name="Blob">
    <Address>0x200</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
</Register>
<StructReg Comment="Status">
    <Address>0x300</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess>
    <StructEntry Name="Temperature"><LSB>0</LSB><MSB>7</MSB></StructEntry>
    <StructEntry Name="Voltage"><LSB>8</LSB><MSB>15</MSB></StructEntry>
</StructReg>
<IntReg Name="BigEndian">
    <Address>0x310</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
    <Sign>Signed</Sign><Endianess>BigEndian</Endianess>
</IntReg>
)xml";

/// A description with every kind of node that a feature can be made of.
inline std::string camera_description()
{
    return description_of(camera_features + std::string(camera_registers) + register_of("WidthReg", 0x00) +
                          register_of("OffsetReg", 0x04) + register_of("PixelFormatReg", 0x08) +
                          register_of("ExposureReg", 0x0C) + register_of("Locked", 0x14) +
                          register_of("HasGain", 0x18) + register_of("TriggerSelectorReg", 0x30) +
                          register_of("CommandReg", 0x34) + register_of("ResetReg", 0x38, "WO") +
                          register_of("CounterReg", 0x3C, "RO") + register_of("AddressReg", 0x50));
}

/// A node map of this camera, with sensible values in its registers.
class CameraMap : public testing::Test {
protected:
    CameraMap()
    {
        registers.put<std::uint32_t>(0x00, 640);        // WidthReg
        registers.put<std::uint32_t>(0x08, 0x01080001); // PixelFormatReg: Mono8
        registers.put<std::uint32_t>(0x0C, 1000);       // ExposureReg
        registers.put<std::uint32_t>(0x18, 1);          // HasGain
        registers.put(0x20, 1.5);                       // Gain
    }

    std::string text(const std::string& name) const { return map.get_text(name); }
    tool::Feature feature(const std::string& name) const { return map.describe(name); }
    std::string refusal_of_set(const std::string& name, const std::string& value) const
    {
        const int before = registers.writes;
        const std::string refusal = error_of([&] { map.set(name, value); });
        EXPECT_EQ(before, registers.writes) << "refused, but written";
        return refusal;
    }

    FakeRegisters registers;
    tool::NodeMap map{camera_description(), registers};
};

} // namespace zvgentl::test

#include "benchmarks/genapi_description.h"

#include <string_view>

namespace zvbench {

namespace {

constexpr std::string_view head =
    R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Large" VendorName="Benchmark" ToolTip="Many features" StandardNameSpace="None"
	SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
	ProductGuid="11111111-2222-3333-4444-555555555555" VersionGuid="11111111-2222-3333-4444-555555555556"
	xmlns="http://www.genicam.org/GenApi/Version_1_1">
)";

/// One group of features. Every @ is replaced by the number of the group.
constexpr std::string_view group =
    R"(	<Category Name="ImageFormatControl@" NameSpace="Standard">
		<ToolTip>Size, place and format of the picture of sensor @.</ToolTip>
		<Description>Features that decide about the size, the place and the format of the pictures of sensor @.</Description>
		<DisplayName>Image Format Control @</DisplayName>
		<Visibility>Beginner</Visibility>
		<pFeature>Width@</pFeature>
		<pFeature>Height@</pFeature>
		<pFeature>OffsetX@</pFeature>
		<pFeature>PixelFormat@</pFeature>
		<pFeature>ReverseX@</pFeature>
		<pFeature>Gain@</pFeature>
		<pFeature>ExposureTime@</pFeature>
		<pFeature>TriggerSource@</pFeature>
		<pFeature>AcquisitionStart@</pFeature>
		<pFeature>UserName@</pFeature>
		<pFeature>LUTSelector@</pFeature>
		<pFeature>LUTValue@</pFeature>
		<pFeature>PayloadSize@</pFeature>
	</Category>
	<Integer Name="Width@" NameSpace="Standard">
		<ToolTip>Width of the picture in pixels.</ToolTip>
		<Description>Width of the picture that the device sends, in pixels. It cannot be changed while it is streaming.</Description>
		<DisplayName>Width @</DisplayName>
		<Visibility>Beginner</Visibility>
		<pIsLocked>TransferActive@</pIsLocked>
		<Streamable>Yes</Streamable>
		<pValue>WidthReg@</pValue>
		<Min>16</Min>
		<pMax>WidthMax@</pMax>
		<Inc>16</Inc>
		<Unit>px</Unit>
		<Representation>Linear</Representation>
	</Integer>
	<IntReg Name="WidthReg@">
		<Address>0x10000</Address>
		<pAddress>Base@</pAddress>
		<Length>4</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
		<Cachable>WriteThrough</Cachable>
		<Sign>Unsigned</Sign>
		<Endianess>BigEndian</Endianess>
	</IntReg>
	<IntSwissKnife Name="WidthMax@">
		<pVariable Name="SENSOR">SensorWidth@</pVariable>
		<pVariable Name="OFFSET">OffsetX@</pVariable>
		<Formula>((SENSOR - OFFSET) / 16) * 16</Formula>
	</IntSwissKnife>
	<IntReg Name="SensorWidth@">
		<Address>0x10008</Address>
		<pAddress>Base@</pAddress>
		<Length>4</Length>
		<AccessMode>RO</AccessMode>
		<pPort>Device</pPort>
		<Sign>Unsigned</Sign>
		<Endianess>BigEndian</Endianess>
	</IntReg>
	<Integer Name="Base@">
		<Value>0x1000</Value>
	</Integer>
	<Integer Name="Height@" NameSpace="Standard">
		<ToolTip>Height of the picture in pixels.</ToolTip>
		<Description>Height of the picture that the device sends, in pixels. It cannot be changed while it is streaming.</Description>
		<DisplayName>Height @</DisplayName>
		<pIsLocked>TransferActive@</pIsLocked>
		<pValue>HeightReg@</pValue>
		<Min>1</Min>
		<Max>4096</Max>
		<Unit>px</Unit>
	</Integer>
	<IntReg Name="HeightReg@">
		<Address>0x10010</Address>
		<pAddress>Base@</pAddress>
		<Length>4</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
		<Sign>Unsigned</Sign>
		<Endianess>BigEndian</Endianess>
	</IntReg>
	<Integer Name="OffsetX@" NameSpace="Standard">
		<ToolTip>Where the picture begins on the sensor.</ToolTip>
		<Description>The horizontal place of the first pixel of the picture on the sensor.</Description>
		<DisplayName>Offset X @</DisplayName>
		<Visibility>Expert</Visibility>
		<pValue>OffsetXReg@</pValue>
		<Min>0</Min>
		<Max>4096</Max>
		<Inc>2</Inc>
	</Integer>
	<MaskedIntReg Name="OffsetXReg@">
		<Address>0x10018</Address>
		<pAddress>Base@</pAddress>
		<Length>4</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
		<LSB>31</LSB>
		<MSB>16</MSB>
		<Sign>Unsigned</Sign>
		<Endianess>BigEndian</Endianess>
	</MaskedIntReg>
	<Enumeration Name="PixelFormat@" NameSpace="Standard">
		<ToolTip>Format of the pixels.</ToolTip>
		<Description>The format in which the device sends pixels: how many bits, which colours, how they are packed.</Description>
		<DisplayName>Pixel Format @</DisplayName>
		<Visibility>Beginner</Visibility>
		<EnumEntry Name="Mono8" NameSpace="Standard">
			<ToolTip>Eight bits, without colours.</ToolTip>
			<DisplayName>Mono 8</DisplayName>
			<Value>0x01080001</Value>
		</EnumEntry>
		<EnumEntry Name="Mono10" NameSpace="Standard">
			<ToolTip>Ten bits, without colours.</ToolTip>
			<DisplayName>Mono 10</DisplayName>
			<Value>0x01100003</Value>
		</EnumEntry>
		<EnumEntry Name="Mono12" NameSpace="Standard">
			<ToolTip>Twelve bits, without colours.</ToolTip>
			<DisplayName>Mono 12</DisplayName>
			<Value>0x01100005</Value>
		</EnumEntry>
		<EnumEntry Name="BayerRG8" NameSpace="Standard">
			<ToolTip>Eight bits of one colour.</ToolTip>
			<DisplayName>Bayer RG 8</DisplayName>
			<pIsAvailable>ReverseX@</pIsAvailable>
			<Value>0x01080009</Value>
		</EnumEntry>
		<pValue>PixelFormatReg@</pValue>
	</Enumeration>
	<IntReg Name="PixelFormatReg@">
		<Address>0x10020</Address>
		<pAddress>Base@</pAddress>
		<Length>4</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
		<Sign>Unsigned</Sign>
		<Endianess>BigEndian</Endianess>
	</IntReg>
	<Boolean Name="ReverseX@" NameSpace="Standard">
		<ToolTip>Whether the picture is mirrored.</ToolTip>
		<DisplayName>Reverse X @</DisplayName>
		<pValue>ReverseXReg@</pValue>
	</Boolean>
	<StructReg Comment="Flags of sensor @">
		<Address>0x10028</Address>
		<pAddress>Base@</pAddress>
		<Length>4</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
		<Endianess>BigEndian</Endianess>
		<StructEntry Name="ReverseXReg@">
			<Bit>31</Bit>
		</StructEntry>
		<StructEntry Name="TransferActive@">
			<Bit>30</Bit>
		</StructEntry>
	</StructReg>
	<Converter Name="Gain@" NameSpace="Standard">
		<ToolTip>Gain in dB.</ToolTip>
		<Description>By how much the signal is amplified. The register has steps of a tenth of a decibel.</Description>
		<DisplayName>Gain @</DisplayName>
		<FormulaTo>FROM * 10</FormulaTo>
		<FormulaFrom>TO / 10</FormulaFrom>
		<pValue>GainReg@</pValue>
		<Unit>dB</Unit>
		<Slope>Increasing</Slope>
	</Converter>
	<IntReg Name="GainReg@">
		<Address>0x10030</Address>
		<pAddress>Base@</pAddress>
		<Length>2</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
		<pInvalidator>ReverseX@</pInvalidator>
		<Sign>Unsigned</Sign>
		<Endianess>BigEndian</Endianess>
	</IntReg>
	<Float Name="ExposureTime@" NameSpace="Standard">
		<ToolTip>Exposure time in microseconds.</ToolTip>
		<Description>How long the sensor is exposed. Longer times than the period of the frames are cut off.</Description>
		<DisplayName>Exposure Time @</DisplayName>
		<pValue>ExposureTimeReg@</pValue>
		<Min>1.0</Min>
		<Max>1000000.0</Max>
		<Unit>us</Unit>
		<Representation>Logarithmic</Representation>
		<DisplayNotation>Fixed</DisplayNotation>
		<DisplayPrecision>2</DisplayPrecision>
	</Float>
	<FloatReg Name="ExposureTimeReg@">
		<Address>0x10038</Address>
		<pAddress>Base@</pAddress>
		<Length>4</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
		<Endianess>BigEndian</Endianess>
	</FloatReg>
	<Enumeration Name="TriggerSource@" NameSpace="Standard">
		<ToolTip>What triggers a picture.</ToolTip>
		<DisplayName>Trigger Source @</DisplayName>
		<EnumEntry Name="Off"><Value>0</Value></EnumEntry>
		<EnumEntry Name="Line1"><Value>1</Value></EnumEntry>
		<EnumEntry Name="Line2"><Value>2</Value></EnumEntry>
		<EnumEntry Name="Line3"><Value>3</Value></EnumEntry>
		<EnumEntry Name="Line4"><Value>4</Value></EnumEntry>
		<EnumEntry Name="Line5"><Value>5</Value></EnumEntry>
		<EnumEntry Name="Line6"><Value>6</Value></EnumEntry>
		<EnumEntry Name="Line7"><Value>7</Value></EnumEntry>
		<EnumEntry Name="Line8"><Value>8</Value></EnumEntry>
		<EnumEntry Name="Counter1End"><Value>9</Value></EnumEntry>
		<EnumEntry Name="Counter2End"><Value>10</Value></EnumEntry>
		<EnumEntry Name="Counter3End"><Value>11</Value></EnumEntry>
		<EnumEntry Name="Counter4End"><Value>12</Value></EnumEntry>
		<EnumEntry Name="Timer1End"><Value>13</Value></EnumEntry>
		<EnumEntry Name="Timer2End"><Value>14</Value></EnumEntry>
		<EnumEntry Name="Timer3End"><Value>15</Value></EnumEntry>
		<EnumEntry Name="Timer4End"><Value>16</Value></EnumEntry>
		<EnumEntry Name="Encoder1"><Value>17</Value></EnumEntry>
		<EnumEntry Name="Encoder2"><Value>18</Value></EnumEntry>
		<EnumEntry Name="Encoder3"><Value>19</Value></EnumEntry>
		<EnumEntry Name="LogicBlock1"><Value>20</Value></EnumEntry>
		<EnumEntry Name="LogicBlock2"><Value>21</Value></EnumEntry>
		<EnumEntry Name="LogicBlock3"><Value>22</Value></EnumEntry>
		<EnumEntry Name="LogicBlock4"><Value>23</Value></EnumEntry>
		<EnumEntry Name="FrameStart"><Value>24</Value></EnumEntry>
		<EnumEntry Name="FrameEnd"><Value>25</Value></EnumEntry>
		<EnumEntry Name="ExposureStart"><Value>26</Value></EnumEntry>
		<EnumEntry Name="ExposureEnd"><Value>27</Value></EnumEntry>
		<pValue>TriggerSourceReg@</pValue>
	</Enumeration>
	<MaskedIntReg Name="TriggerSourceReg@">
		<Address>0x10044</Address>
		<pAddress>Base@</pAddress>
		<Length>4</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
		<LSB>7</LSB>
		<MSB>0</MSB>
		<Endianess>BigEndian</Endianess>
	</MaskedIntReg>
	<Command Name="AcquisitionStart@" NameSpace="Standard">
		<ToolTip>Starts the stream.</ToolTip>
		<DisplayName>Acquisition Start @</DisplayName>
		<pIsLocked>TransferActive@</pIsLocked>
		<pValue>AcquisitionStartReg@</pValue>
		<CommandValue>1</CommandValue>
	</Command>
	<IntReg Name="AcquisitionStartReg@">
		<Address>0x10040</Address>
		<pAddress>Base@</pAddress>
		<Length>4</Length>
		<AccessMode>WO</AccessMode>
		<pPort>Device</pPort>
		<Sign>Unsigned</Sign>
		<Endianess>BigEndian</Endianess>
	</IntReg>
	<StringReg Name="UserName@">
		<ToolTip>A name that the user gives.</ToolTip>
		<DisplayName>User Name @</DisplayName>
		<Visibility>Guru</Visibility>
		<Address>0x10048</Address>
		<pAddress>Base@</pAddress>
		<Length>32</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
	</StringReg>
	<Integer Name="LUTSelector@" NameSpace="Standard">
		<ToolTip>Which value of the table is meant.</ToolTip>
		<DisplayName>LUT Selector @</DisplayName>
		<Value>0</Value>
		<Min>0</Min>
		<Max>255</Max>
		<pSelected>LUTValue@</pSelected>
	</Integer>
	<IntReg Name="LUTValue@" NameSpace="Standard">
		<ToolTip>A value of the table.</ToolTip>
		<DisplayName>LUT Value @</DisplayName>
		<Address>0x20000</Address>
		<pAddress>Base@</pAddress>
		<pIndex Offset="4">LUTSelector@</pIndex>
		<Length>4</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
		<Sign>Unsigned</Sign>
		<Endianess>BigEndian</Endianess>
	</IntReg>
	<IntSwissKnife Name="PayloadSize@" NameSpace="Standard">
		<ToolTip>Bytes of a picture.</ToolTip>
		<DisplayName>Payload Size @</DisplayName>
		<pVariable Name="W">Width@</pVariable>
		<pVariable Name="H">Height@</pVariable>
		<pVariable Name="FORMAT">PixelFormatReg@</pVariable>
		<Expression Name="BITS">(FORMAT &gt;&gt; 16) &amp; 0xFF</Expression>
		<Formula>(W * H * BITS + 7) / 8</Formula>
	</IntSwissKnife>
)";

constexpr std::string_view tail = "\t<Port Name=\"Device\"/>\n</RegisterDescription>\n";

} // namespace

std::string camera_description(std::size_t bytes)
{
    std::string groups;
    std::string features;
    for (std::size_t number = 0; groups.size() + features.size() < bytes; ++number) {
        const std::string digits = std::to_string(number);
        for (const char c : group)
            if (c == '@')
                groups += digits;
            else
                groups += c;
        features += "\t\t<pFeature>ImageFormatControl" + digits + "</pFeature>\n";
    }
    return std::string(head) + "\t<Category Name=\"Root\">\n" + features + "\t</Category>\n" + groups +
           std::string(tail);
}

} // namespace zvbench

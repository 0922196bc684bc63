#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "simulator/features/CameraRegisters.h"
#include "simulator/features/Description.h"
#include "unit/simulator/described_models.h"
#include "unit/simulator/description_xml.h"

// What the description of a camera offers, against what the camera takes.

namespace {

using namespace zvsim_test;

std::map<std::string, std::string> entries_of(const DescribedNode& enumeration)
{
    std::map<std::string, std::string> entries;
    for (const DescribedProperty& property : enumeration.properties) {
        if (property.name == "EnumEntry")
            entries[property.attributes.at("Name")] = property.children.back().value;
    }
    return entries;
}

TEST(CameraDescription, OffersTheFormatsOfTheModel)
{
    zvsim::CameraModel model = camera_model();
    const DescriptionXml pfnc{describe_camera(model)->text};
    EXPECT_EQ((std::map<std::string, std::string>{
                  {"Mono8", "17301505"}, {"BayerRG12", "17825809"}, {"RGB8", "35127316"}}),
              entries_of(*pfnc.find("PixelFormat")));
    EXPECT_EQ((std::map<std::string, std::string>{{"Bpp8", "8"}, {"Bpp16", "16"}, {"Bpp24", "24"}}),
              entries_of(*pfnc.find("PixelSize")));
    model.format_codes = zvsim::FormatCodes::coaxpress;
    const DescriptionXml coaxpress{describe_camera(model)->text};
    EXPECT_EQ((std::map<std::string, std::string>{{"Mono8", "257"}, {"BayerRG12", "803"}, {"RGB8", "1025"}}),
              entries_of(*coaxpress.find("PixelFormat")));
}

TEST(CameraDescription, HasAnotherVersionWhenItSaysSomethingElse)
{
    zvsim::CameraModel model = camera_model();
    const auto version = [](const zvsim::CameraModel& of) {
        return DescriptionXml{describe_camera(of)->text}.attributes().at("VersionGuid");
    };
    const std::string first = version(model);
    EXPECT_EQ(first, version(camera_model()));
    model.formats.pop_back();
    EXPECT_NE(first, version(model));
}

TEST(CameraDescription, IsKeptOnceForCamerasOfAKind)
{
    const zvsim::GrabberModel model = grabber_model();
    const zvsim::GrabberDevice device{model};
    EXPECT_EQ(&device.cameras()[0]->description(), &device.cameras()[2]->description());
}

TEST(CameraDescription, HasNoChunks)
{
    EXPECT_EQ(std::string::npos, describe_camera(camera_model())->text.find("ChunkModeActive"));
}

/// A camera whose registers take what its description promises.
class DescribedLimits : public testing::Test {
protected:
    bool takes(const std::string& feature, const zvsim::RegisterValue& value)
    {
        const zvsim::CameraRow& row = *zvsim::find_camera_row(feature);
        unsigned char bytes[8];
        encode(value, row.kind, bytes, row.length);
        zvsim::CameraSpace space{camera};
        return space.write(row.address, bytes, row.length) == row.length;
    }

    const zvsim::GrabberModel grabber{grabber_model()};
    zvsim::CameraDevice camera{grabber.cameras.front(), grabber};
    const DescriptionXml xml{camera.description().text};
};

TEST_F(DescribedLimits, OfNumbersAreThoseOfTheCamera)
{
    size_t checked = 0;
    for (const DescribedNode& node : xml.nodes()) {
        if (node.kind != "Float" || node.find("Min") == nullptr)
            continue;
        const double lowest = std::stod(node.value_of("Min"));
        const double highest = std::stod(node.value_of("Max"));
        EXPECT_TRUE(takes(node.name, lowest) && takes(node.name, highest)) << node.name;
        EXPECT_FALSE(takes(node.name, std::nextafter(lowest, -INFINITY))) << node.name;
        EXPECT_FALSE(takes(node.name, std::nextafter(highest, INFINITY))) << node.name;
        ++checked;
    }
    EXPECT_EQ(3U, checked);
}

TEST_F(DescribedLimits, OfIntegersAreThoseOfTheCamera)
{
    for (const char* const name : {"AcquisitionFrameCount", "TLParamsLocked"}) {
        const int64_t lowest = std::stoll(xml.find(name)->value_of("Min"));
        const int64_t highest = std::stoll(xml.find(name)->value_of("Max"));
        EXPECT_TRUE(takes(name, lowest) && takes(name, highest)) << name;
        EXPECT_FALSE(takes(name, lowest - 1) || takes(name, highest + 1)) << name;
    }
}

TEST_F(DescribedLimits, OfEnumerationsAreThoseOfTheCamera)
{
    size_t checked = 0;
    for (const DescribedNode& node : xml.nodes()) {
        if (node.kind != "Enumeration" || zvsim::find_camera_row(node.name)->write == nullptr)
            continue;
        int64_t highest = 0;
        for (const auto& [name, value] : entries_of(node)) {
            EXPECT_TRUE(takes(node.name, int64_t{std::stoll(value)})) << node.name << " " << name;
            highest = std::max<int64_t>(highest, std::stoll(value));
        }
        EXPECT_FALSE(takes(node.name, highest + 1)) << node.name;
        ++checked;
    }
    EXPECT_EQ(7U, checked);
}

} // namespace

#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

#include "simulator/Devices.h"
#include "simulator/PictureSource.h"
#include "support/FailingAllocations.h"
#include "unit/simulator/expected_picture.h"

// All patterns in all pixel formats, against a decoder that knows nothing of the library.

namespace {

using namespace zvsim_test;
using zvsim::TestPattern;
using Bytes = std::vector<unsigned char>;

constexpr uint32_t sensor_width = 163;
constexpr uint32_t sensor_height = 71;

std::vector<TestPattern> all_patterns()
{
    std::vector<TestPattern> patterns;
    for (auto number = 0U; number <= static_cast<unsigned>(TestPattern::star); ++number)
        patterns.push_back(static_cast<TestPattern>(number));
    return patterns;
}

/// A window of the sensor, in steps of the format.
struct Window {
    uint32_t left;
    uint32_t top;
    uint32_t width;
    uint32_t height;
};

/// A camera that shows a window, without the stamp.
struct Camera {
    Camera(const zvsim::PixelFormat& format, const Window& window)
    {
        model.sensor_width = sensor_width;
        model.sensor_height = sensor_height;
        model.has_stamp = false;
        model.start.format = &format;
        model.start.offset_x = window.left * format.step_x();
        model.start.offset_y = window.top * format.step_y();
        model.start.width = window.width * format.step_x();
        model.start.height = window.height * format.step_y();
    }

    zvsim::CameraDevice device() const { return {model, grabber}; }
    std::unique_ptr<zvsim::PictureSource> source() const { return make_picture_source(device()); }
    Bytes frame(const zvsim::Exposure& exposure) const
    {
        Bytes frame(static_cast<size_t>(device().payload()));
        source()->draw(exposure, frame.data(), frame.size());
        return frame;
    }

    zvsim::CameraModel model;
    zvsim::GrabberModel grabber;
};

void expect_shot(const Camera& camera, const Shot& shot, const unsigned char* bytes, size_t size)
{
    const zvsim::CameraSettings& settings = camera.model.start;
    const std::string format = settings.format->name;
    const Decoded decoded = decode(format, settings.width, settings.height, bytes, size);
    constexpr double tolerance = 0.5 + 1e-6; // a rounded sample
    for (uint32_t y = 0; y < settings.height; ++y) {
        for (uint32_t x = 0; x < settings.width; ++x) {
            for (size_t channel = 0; channel < decoded.channels; ++channel) {
                const double expected =
                    expected_sample(shot, format, settings.offset_x + x, settings.offset_y + y, channel);
                ASSERT_NEAR(expected, decoded.at(x, y, channel), tolerance)
                    << format << ", pattern " << static_cast<unsigned>(shot.pattern) << ", picture "
                    << shot.picture << ", pixel " << x << ", " << y << ", channel " << channel;
            }
        }
    }
}

Shot shot_of(TestPattern pattern, uint64_t picture = 0, double brightness = 1)
{
    return {pattern, picture, sensor_width, sensor_height, brightness};
}

void expect_frame(const Camera& camera, const Shot& shot)
{
    const Bytes frame = camera.frame({shot.picture, shot.pattern, shot.brightness});
    expect_shot(camera, shot, frame.data(), frame.size());
}

class EveryFormat : public testing::TestWithParam<zvsim::PixelFormat> {
protected:
    const zvsim::PixelFormat& format() const { return GetParam(); }
};

TEST_P(EveryFormat, TakesTheMemoryThatItsCodeNames)
{
    const FormatLayout layout{format().name};
    EXPECT_EQ(layout.bits_per_pixel(), format().bits_per_pixel());
    EXPECT_EQ(layout.bits, format().bits);
    const uint32_t width = 5 * format().step_x();
    EXPECT_EQ(0U, width * layout.bits_per_pixel() % 8) << "rows end with a byte";
    EXPECT_EQ(width * layout.bits_per_pixel() / 8 * 3, format().size_of(width, 3));
    const bool is_single = layout.order == FormatLayout::Order::mono;
    EXPECT_EQ(is_single ? 1U : 2U, format().pfnc_code >> 24U);
    EXPECT_EQ(0U, format().step_x() % (format().is_bayer() ? 2 : 1)) << "whole mosaics";
    EXPECT_EQ(format().is_bayer() ? 2U : 1U, format().step_y());
    EXPECT_STREQ(format().name, zvsim::pixel_format(format().name).name);
}

TEST_P(EveryFormat, ShowsEveryPatternAsItsFormulaSays)
{
    const std::pair<Window, uint64_t> views[] = {
        {{0, 0, 37, 17}, 1944}, {{3, 5, 7, 9}, 1914}, {{2, 31, 1, 1}, 1908}, {{3, 5, 2, 2}, UINT64_MAX / 8}};
    for (const auto& [window, picture] : views) {
        const Camera camera{format(), window};
        for (const TestPattern pattern : all_patterns())
            ASSERT_NO_FATAL_FAILURE(expect_frame(camera, shot_of(pattern, picture)));
    }
}

TEST_P(EveryFormat, IsBrighterOrDarkerByTheExposure)
{
    const Camera camera{format(), {3, 5, 7, 9}};
    for (const double brightness : {0.0, 0.5, 1.5, 2.0, 1e30}) {
        for (const TestPattern pattern :
             {TestPattern::diagonal_ramp, TestPattern::horizontal_ramp, TestPattern::noise})
            ASSERT_NO_FATAL_FAILURE(expect_frame(camera, shot_of(pattern, 4, brightness)));
    }
}

TEST_P(EveryFormat, HasSegmentsOneBelowTheOther)
{
    Camera camera{format(), {1, 1, 5, 3}};
    camera.grabber.segments_per_buffer = 3;
    for (const TestPattern pattern : {TestPattern::diagonal_ramp, TestPattern::noise}) {
        const Bytes frame = camera.frame({7, pattern, 1});
        const size_t size = frame.size() / 3;
        for (size_t segment = 0; segment < 3; ++segment)
            ASSERT_NO_FATAL_FAILURE(
                expect_shot(camera, shot_of(pattern, 21 + segment), frame.data() + segment * size, size));
    }
}

TEST_P(EveryFormat, LeavesTheRestOfACutFrameAlone)
{
    Camera plain{format(), {1, 1, 3, 2}};
    plain.grabber.segments_per_buffer = 2;
    Camera stamped{plain};
    stamped.model.has_stamp = true;
    const auto source = stamped.source();
    for (const TestPattern pattern : {TestPattern::diagonal_ramp, TestPattern::color_bars}) {
        const zvsim::Exposure exposure{1, pattern, 1};
        const auto whole = plain.frame(exposure);
        for (size_t room = 0; room <= whole.size() + 1; ++room) {
            Bytes target(whole.size() + 64, 0x5A);
            source->draw(exposure, target.data(), room);
            const size_t drawn = std::min(room, whole.size());
            for (size_t at = drawn < zvgr::frame_stamp_size ? 0 : zvgr::frame_stamp_size; at < target.size();
                 ++at)
                ASSERT_EQ(at < drawn ? whole[at] : 0x5A, target[at]) << "room " << room << ", byte " << at;
            const auto stamp = zvgr::read_stamp(target.data(), room);
            EXPECT_EQ(drawn >= zvgr::frame_stamp_size, stamp.has_value());
            EXPECT_TRUE(!stamp || stamp->checksum_ok == (room >= whole.size())) << room;
        }
    }
}

TEST_P(EveryFormat, CarriesTheStamp)
{
    Camera camera{format(), {0, 0, 37, 17}};
    camera.model.has_stamp = true;
    for (const TestPattern pattern : all_patterns()) {
        const auto frame = camera.frame({0x1234567890, pattern, 0.75});
        const auto stamp = zvgr::read_stamp(frame.data(), frame.size());
        ASSERT_TRUE(stamp);
        EXPECT_EQ(0x1234567890U, stamp->counter);
        EXPECT_TRUE(stamp->checksum_ok);
    }
}

TEST_P(EveryFormat, RepeatsAFrameByteForByte)
{
    const Camera camera{format(), {0, 0, 37, 17}};
    const auto source = camera.source();
    for (const TestPattern pattern : all_patterns()) {
        const Bytes first = camera.frame({12, pattern, 1});
        Bytes again(first.size());
        source->draw({11, pattern, 0.3}, again.data(), again.size());
        source->draw({12, pattern, 1}, again.data(), again.size());
        EXPECT_EQ(first, again) << static_cast<unsigned>(pattern);
    }
}

TEST_P(EveryFormat, AllocatesNothingForAFrame)
{
    Camera camera{format(), {0, 0, 5, 3}};
    camera.model.has_stamp = true;
    const auto source = camera.source();
    Bytes frame(static_cast<size_t>(camera.device().payload()));
    const zvtest::CountedAllocations counted;
    for (unsigned pattern = 0; pattern <= static_cast<unsigned>(TestPattern::star); ++pattern) {
        for (const double brightness : {1.0, 0.5})
            source->draw({3, static_cast<TestPattern>(pattern), brightness}, frame.data(), frame.size());
    }
    EXPECT_EQ(0, counted.count());
}

INSTANTIATE_TEST_SUITE_P(Pfnc, EveryFormat, testing::ValuesIn(zvsim::pixel_formats()),
                         [](const auto& format) { return std::string{format.param.name}; });

TEST(Patterns, DifferFromOneAnother)
{
    const Camera camera{zvsim::pixel_format("Mono8"), {0, 0, sensor_width, sensor_height}};
    std::vector<Bytes> films;
    for (const TestPattern pattern : all_patterns()) {
        auto film = camera.frame({0, pattern, 1});
        const auto second = camera.frame({1, pattern, 1});
        film.insert(film.end(), second.begin(), second.end());
        for (size_t other = 0; other < films.size(); ++other)
            EXPECT_NE(films[other], film) << other << " and " << films.size();
        films.push_back(film);
    }
    EXPECT_EQ(14U, films.size());
}

TEST(Patterns, StayWhereTheyAreWhenTheWindowMoves)
{
    const zvsim::PixelFormat& format = zvsim::pixel_format("Mono12");
    const Camera all{format, {0, 0, sensor_width, sensor_height}};
    const Camera part{format, {10, 20, 40, 30}};
    for (const TestPattern pattern : all_patterns()) {
        const auto picture = all.frame({5, pattern, 1});
        const auto window = part.frame({5, pattern, 1});
        const Decoded sensor = decode("Mono12", sensor_width, sensor_height, picture.data(), picture.size());
        const Decoded seen = decode("Mono12", 40, 30, window.data(), window.size());
        for (size_t y = 0; y < 30; ++y) {
            for (size_t x = 0; x < 40; ++x)
                ASSERT_EQ(sensor.at(x + 10, y + 20, 0), seen.at(x, y, 0)) << static_cast<unsigned>(pattern);
        }
    }
}

TEST(Patterns, OnTheSmallestSensorsStayWithinThem)
{
    Camera camera{zvsim::pixel_format("Mono8"), {0, 0, 1, 1}};
    camera.model.has_stamp = true;
    for (const uint32_t width : {1U, 2U, 3U, 5U, 33U}) {
        for (const uint32_t height : {1U, 2U, 6U}) {
            camera.model.start.width = camera.model.sensor_width = width;
            camera.model.start.height = camera.model.sensor_height = height;
            for (const TestPattern pattern : all_patterns()) {
                Bytes target(width * height + 16, 0x5A);
                camera.source()->draw({UINT64_MAX, pattern, 1}, target.data(), target.size());
                EXPECT_EQ(Bytes(16, 0x5A), Bytes(target.end() - 16, target.end()));
            }
        }
    }
}

TEST(Patterns, OfAPictureTooSmallForAStampHaveNone)
{
    Camera camera{zvsim::pixel_format("Mono8"), {0, 0, 4, 2}};
    camera.model.has_stamp = true;
    EXPECT_EQ((Bytes{10, 11, 12, 13, 11, 12, 13, 14}), camera.frame({10, TestPattern::diagonal_ramp, 1}));
}

TEST(Patterns, TakeEveryBrightnessThereIs)
{
    const Camera camera{zvsim::pixel_format("Mono16"), {0, 0, 8, 1}};
    for (const double brightness : {std::nan(""), -1.0, 0.0})
        EXPECT_EQ(Bytes(16, 0), camera.frame({0, TestPattern::white, brightness}));
    for (const double brightness : {1.0, 3.0, 1e300, std::numeric_limits<double>::infinity()})
        EXPECT_EQ(Bytes(16, 0xFF), camera.frame({0, TestPattern::white, brightness}));
}

// The list of values that belongs to PFNC, by name.
const std::map<std::string, uint32_t> pfnc_values{
    {"BayerBG10", 0x0110000F},       {"BayerBG10p", 0x010A0052},      {"BayerBG12", 0x01100013},
    {"BayerBG12p", 0x010C0053},      {"BayerBG14", 0x0110010C},       {"BayerBG16", 0x01100031},
    {"BayerBG8", 0x0108000B},        {"BayerGB10", 0x0110000E},       {"BayerGB10p", 0x010A0054},
    {"BayerGB12", 0x01100012},       {"BayerGB12p", 0x010C0055},      {"BayerGB14", 0x0110010B},
    {"BayerGB16", 0x01100030},       {"BayerGB8", 0x0108000A},        {"BayerGR10", 0x0110000C},
    {"BayerGR10p", 0x010A0056},      {"BayerGR12", 0x01100010},       {"BayerGR12p", 0x010C0057},
    {"BayerGR14", 0x01100109},       {"BayerGR16", 0x0110002E},       {"BayerGR8", 0x01080008},
    {"BayerRG10", 0x0110000D},       {"BayerRG10p", 0x010A0058},      {"BayerRG12", 0x01100011},
    {"BayerRG12p", 0x010C0059},      {"BayerRG14", 0x0110010A},       {"BayerRG16", 0x0110002F},
    {"BayerRG8", 0x01080009},        {"Mono10", 0x01100003},          {"Mono10Packed", 0x010C0004},
    {"Mono10p", 0x010A0046},         {"Mono12", 0x01100005},          {"Mono12Packed", 0x010C0006},
    {"Mono12p", 0x010C0047},         {"Mono14", 0x01100025},          {"Mono14p", 0x010E0104},
    {"Mono16", 0x01100007},          {"Mono8", 0x01080001},           {"RGB10", 0x02300018},
    {"RGB10_Planar", 0x02300022},    {"RGB10p", 0x021E005C},          {"RGB12", 0x0230001A},
    {"RGB12_Planar", 0x02300023},    {"RGB12p", 0x0224005D},          {"RGB14", 0x0230005E},
    {"RGB16", 0x02300033},           {"RGB16_Planar", 0x02300024},    {"RGB8", 0x02180014},
    {"RGB8_Planar", 0x02180021},     {"RGBa10", 0x0240005F},          {"RGBa12", 0x02400061},
    {"RGBa14", 0x02400063},          {"RGBa16", 0x02400064},          {"RGBa8", 0x02200016},
    {"YCbCr601_422_10", 0x0220008D}, {"YCbCr601_422_12", 0x0220008F}, {"YCbCr601_422_8", 0x0210003E},
    {"YCbCr709_422_10", 0x02200095}, {"YCbCr709_422_12", 0x02200097}, {"YCbCr709_422_8", 0x02100041},
    {"YUV411_8_UYYVYY", 0x020C001E}, {"YUV422_8", 0x02100032},        {"YUV8_UYV", 0x02180020}};

TEST(PixelFormats, HaveTheirNamesAndNumbers)
{
    std::map<std::string, uint32_t> offered;
    std::set<uint32_t> coaxpress_codes;
    for (const auto& format : zvsim::pixel_formats()) {
        offered.emplace(format.name, format.pfnc_code);
        EXPECT_TRUE(format.coaxpress_code == 0 || coaxpress_codes.insert(format.coaxpress_code).second)
            << format.name;
    }
    EXPECT_EQ(pfnc_values, offered);
    EXPECT_EQ(48U, coaxpress_codes.size());
    EXPECT_EQ(nullptr, zvsim::find_pixel_format("Mono9"));
}

} // namespace

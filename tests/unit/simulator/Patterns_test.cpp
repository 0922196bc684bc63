#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

#include "simulator/Devices.h"
#include "simulator/PictureSource.h"
#include "support/FailingAllocations.h"

// All patterns in all pixel formats. Examples that were worked out by hand from the definitions of the
// patterns and from the layouts of the standards show what is right; a checksum of each format covers all the
// rest. The stamp of a frame.

namespace {

using Bytes = std::vector<unsigned char>;
using zvsim::TestPattern;

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

/// The code of each pixel format in the list of values that belongs to PFNC, and the checksum of its pixels.
const std::map<std::string, std::pair<uint32_t, uint32_t>> known_formats{
    {"BayerBG10", {0x0110000F, 0x239C4850}},       {"BayerBG10p", {0x010A0052, 0x46B0109E}},
    {"BayerBG12", {0x01100013, 0x2AC4F883}},       {"BayerBG12p", {0x010C0053, 0x035D0A7B}},
    {"BayerBG14", {0x0110010C, 0x32855021}},       {"BayerBG16", {0x01100031, 0x18933608}},
    {"BayerBG8", {0x0108000B, 0xC2AEA126}},        {"BayerGB10", {0x0110000E, 0xF95DE32B}},
    {"BayerGB10p", {0x010A0054, 0x1AAC9016}},      {"BayerGB12", {0x01100012, 0x3002991F}},
    {"BayerGB12p", {0x010C0055, 0xD464C6B3}},      {"BayerGB14", {0x0110010B, 0xCE2915B9}},
    {"BayerGB16", {0x01100030, 0x8E8734C0}},       {"BayerGB8", {0x0108000A, 0x443989D1}},
    {"BayerGR10", {0x0110000C, 0x30267329}},       {"BayerGR10p", {0x010A0056, 0x1DA32DA9}},
    {"BayerGR12", {0x01100010, 0xA833A718}},       {"BayerGR12p", {0x010C0057, 0x13704592}},
    {"BayerGR14", {0x01100109, 0xDD911C97}},       {"BayerGR16", {0x0110002E, 0xB7A42162}},
    {"BayerGR8", {0x01080008, 0xC3BC373C}},        {"BayerRG10", {0x0110000D, 0x91FBF7C4}},
    {"BayerRG10p", {0x010A0058, 0x83D8AB0B}},      {"BayerRG12", {0x01100011, 0xD80F5487}},
    {"BayerRG12p", {0x010C0059, 0x920169E6}},      {"BayerRG14", {0x0110010A, 0x29B2A7CF}},
    {"BayerRG16", {0x0110002F, 0x949CC566}},       {"BayerRG8", {0x01080009, 0x9E3078F2}},
    {"Mono10", {0x01100003, 0xC0CD06FF}},          {"Mono10Packed", {0x010C0004, 0xC6D6D03C}},
    {"Mono10p", {0x010A0046, 0x153E7154}},         {"Mono12", {0x01100005, 0xB655D67F}},
    {"Mono12Packed", {0x010C0006, 0x52126B6B}},    {"Mono12p", {0x010C0047, 0xEF34E123}},
    {"Mono14", {0x01100025, 0xEBF1CEC5}},          {"Mono14p", {0x010E0104, 0xC1854B48}},
    {"Mono16", {0x01100007, 0x9AA245D5}},          {"Mono8", {0x01080001, 0x276112F8}},
    {"RGB10", {0x02300018, 0x6D717231}},           {"RGB10_Planar", {0x02300022, 0x3309C4C1}},
    {"RGB10p", {0x021E005C, 0x48DB92F8}},          {"RGB12", {0x0230001A, 0x3F90B72C}},
    {"RGB12_Planar", {0x02300023, 0xCCF1EF34}},    {"RGB12p", {0x0224005D, 0x1FA1DCDE}},
    {"RGB14", {0x0230005E, 0x027A1B0D}},           {"RGB16", {0x02300033, 0x613B3C8F}},
    {"RGB16_Planar", {0x02300024, 0xA26DF73F}},    {"RGB8", {0x02180014, 0x09044D60}},
    {"RGB8_Planar", {0x02180021, 0x37FDDFD2}},     {"RGBa10", {0x0240005F, 0x320A50DB}},
    {"RGBa12", {0x02400061, 0xE139BBFE}},          {"RGBa14", {0x02400063, 0xE0D90463}},
    {"RGBa16", {0x02400064, 0x1F775691}},          {"RGBa8", {0x02200016, 0x680F4827}},
    {"YCbCr601_422_10", {0x0220008D, 0x51E3D651}}, {"YCbCr601_422_12", {0x0220008F, 0x9D1300EE}},
    {"YCbCr601_422_8", {0x0210003E, 0x8E08FE10}},  {"YCbCr709_422_10", {0x02200095, 0x0ACF60F5}},
    {"YCbCr709_422_12", {0x02200097, 0x5E2EB55C}}, {"YCbCr709_422_8", {0x02100041, 0xC27612CD}},
    {"YUV411_8_UYYVYY", {0x020C001E, 0x765C387B}}, {"YUV422_8", {0x02100032, 0x06553CF8}},
    {"YUV8_UYV", {0x02180020, 0xB38F37C1}},
};

class EveryFormat : public testing::TestWithParam<zvsim::PixelFormat> {
protected:
    const zvsim::PixelFormat& format() const { return GetParam(); }
};

/// FNV-1a.
uint32_t checksum_of(const Bytes& bytes)
{
    return std::accumulate(bytes.begin(), bytes.end(), 0x811C9DC5U,
                           [](uint32_t sum, unsigned char each) { return (sum ^ each) * 0x01000193U; });
}

void append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

TEST_P(EveryFormat, HasItsCodeAndItsPixels)
{
    Bytes shown;
    const std::pair<Window, uint64_t> views[] = {
        {{0, 0, 37, 17}, 1944}, {{3, 5, 7, 9}, 1914}, {{2, 31, 1, 1}, 1908}, {{3, 5, 2, 2}, UINT64_MAX / 8}};
    for (const auto& [window, picture] : views) {
        const Camera camera{format(), window};
        for (const TestPattern pattern : all_patterns())
            append(shown, camera.frame({picture, pattern, 1}));
    }
    Camera camera{format(), {3, 5, 7, 9}};
    for (const double brightness : {0.0, 0.5, 1.5, 2.0, 1e30}) {
        for (const TestPattern pattern :
             {TestPattern::diagonal_ramp, TestPattern::horizontal_ramp, TestPattern::noise})
            append(shown, camera.frame({4, pattern, brightness}));
    }
    EXPECT_EQ(known_formats.at(format().name), std::pair(format().pfnc_code, checksum_of(shown)));
}

TEST_P(EveryFormat, HasSegmentsOneBelowTheOther)
{
    Camera camera{format(), {1, 1, 5, 3}};
    for (const TestPattern pattern : {TestPattern::diagonal_ramp, TestPattern::noise}) {
        Bytes expected;
        camera.grabber.segments_per_buffer = 1;
        for (const uint64_t picture : {21U, 22U, 23U})
            append(expected, camera.frame({picture, pattern, 1}));
        camera.grabber.segments_per_buffer = 3;
        EXPECT_EQ(expected, camera.frame({7, pattern, 1}));
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

/// A sample of a picture, in 8 bits.
struct Example {
    TestPattern pattern;
    uint64_t picture;
    uint32_t x;
    uint32_t y;
    unsigned sample;
};

const Example examples[] = {
    {TestPattern::diagonal_ramp, 0, 0, 0, 0},
    {TestPattern::diagonal_ramp, 100, 100, 60, 4},
    {TestPattern::horizontal_ramp, 9, 81, 5, 127},
    {TestPattern::horizontal_ramp, 9, 162, 5, 255},
    {TestPattern::vertical_ramp, 9, 5, 35, 127},
    {TestPattern::vertical_ramp, 9, 5, 70, 255},
    {TestPattern::color_bars, 9, 0, 5, 255},
    {TestPattern::color_bars, 9, 21, 5, 226},
    {TestPattern::color_bars, 9, 162, 5, 0},
    {TestPattern::checkerboard, 0, 31, 31, 0},
    {TestPattern::checkerboard, 0, 32, 31, 255},
    {TestPattern::checkerboard, 0, 32, 32, 0},
    {TestPattern::checkerboard, 1, 31, 31, 255},
    {TestPattern::black, 9, 5, 5, 0},
    {TestPattern::white, 9, 5, 5, 255},
    {TestPattern::grey, 9, 5, 5, 128},
    {TestPattern::grid, 9, 64, 5, 255},
    {TestPattern::grid, 9, 5, 64, 255},
    {TestPattern::grid, 9, 63, 63, 0},
    {TestPattern::moving_bar, 0, 31, 5, 255},
    {TestPattern::moving_bar, 0, 32, 5, 0},
    {TestPattern::moving_bar, 1, 7, 5, 0},
    {TestPattern::moving_bar, 1, 39, 5, 255},
    {TestPattern::moving_bar, 20, 28, 5, 255},
    {TestPattern::moving_bar, 20, 29, 5, 0},
    {TestPattern::blinking, 2, 5, 5, 0},
    {TestPattern::blinking, 3, 5, 5, 255},
    {TestPattern::star, 9, 162, 35, 255},
    {TestPattern::star, 9, 81, 0, 255},
    {TestPattern::star, 9, 84, 0, 0},
    {TestPattern::frame_counter, 9, 5, 23, 255},
    {TestPattern::frame_counter, 9, 6, 28, 0},
    {TestPattern::frame_counter, 9, 5, 47, 255},
    {TestPattern::frame_counter, 9, 5, 48, 0},
};

TEST(Patterns, AreAsTheyAreDefined)
{
    const Camera camera{zvsim::pixel_format("Mono8"), {0, 0, sensor_width, sensor_height}};
    for (const Example& example : examples) {
        const Bytes frame = camera.frame({example.picture, example.pattern, 1});
        EXPECT_EQ(example.sample, frame[example.y * sensor_width + example.x])
            << static_cast<unsigned>(example.pattern) << ", picture " << example.picture << ", " << example.x
            << " " << example.y;
    }
}

TEST(Patterns, ShowTheNumberOfThePictureInDigits)
{
    Camera camera{zvsim::pixel_format("Mono8"), {0, 0, 40, 5}};
    camera.model.sensor_width = 40; // eight digits of single dots, in the middle
    camera.model.sensor_height = 5;
    std::string dots;
    for (const unsigned char sample : camera.frame({912345678, TestPattern::frame_counter, 1}))
        dots += sample == 255 ? '#' : sample == 0 ? ' ' : '?';
    EXPECT_EQ("     #  ### ### # # ### ### ### ###     "
              "    ##    #   # # # #   #     # # #     "
              "     #  ### ### ### ### ###   # ###     "
              "     #  #     #   #   # # #   # # #     "
              "    ### ### ###   # ### ###   # ###     ",
              dots);
}

/// The first bytes of a picture on a sensor that is eight pixels wide.
struct Layout {
    const char* format;
    TestPattern pattern;
    Bytes bytes;
};

constexpr auto bars = TestPattern::color_bars; // white, yellow, cyan, green, magenta, red, blue, black
constexpr auto ramp =
    TestPattern::diagonal_ramp; // of more than 8 bits: 0x3FE, 0x3FF, 0, 1 in the ten highest

const Layout layouts[] = {
    {"Mono8", bars, {255, 226, 179, 150, 105, 76, 29, 0}},
    {"RGB8", bars, {255, 255, 255, 255, 255, 0, 0, 255, 255, 0, 255, 0}},
    {"RGB8", TestPattern::noise, {0, 0, 0, 5, 16, 22, 20, 58, 56}},
    {"RGB8_Planar", bars, {255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 255, 255, 0, 0, 0, 0, 255, 0, 255, 0}},
    {"RGBa8", bars, {255, 255, 255, 255, 255, 255, 0, 255, 0, 255, 255, 255}},
    {"BayerGR8", bars, {255, 255, 255, 0, 0, 255, 0, 0, 255, 255, 255, 255, 255, 0, 255, 0}},
    {"BayerRG8", bars, {255, 255, 0, 255, 255, 0, 0, 0, 255, 0, 255, 0, 0, 0, 0, 0}},
    {"BayerGB8", bars, {255, 0, 255, 0, 0, 0, 0, 0, 255, 255, 0, 255, 255, 0, 0, 0}},
    {"BayerBG8", bars, {255, 255, 255, 255, 255, 0, 255, 0, 255, 255, 255, 0, 0, 255, 0, 0}},
    {"YUV411_8_UYYVYY", bars, {86, 255, 226, 75, 179, 150, 170, 105, 76, 181, 29, 0}},
    {"YUV422_8", bars, {255, 64, 226, 138, 179, 107, 150, 11, 105, 149, 76, 245}},
    {"YUV8_UYV", bars, {128, 255, 128, 1, 226, 149, 171, 179, 1, 44, 150, 21, 212, 105, 235}},
    {"YCbCr601_422_8", bars, {235, 72, 210, 137, 170, 110, 145, 25, 106, 146, 81, 231}},
    {"YCbCr709_422_8", bars, {235, 72, 219, 133, 188, 98, 173, 21, 78, 158, 63, 235}},
    {"YCbCr709_422_10", bars, {172, 3, 32, 1, 109, 3, 21, 2, 242, 2, 135, 1, 179, 2, 85, 0}},
    {"Mono10", ramp, {0xFE, 3, 0xFF, 3, 0, 0, 1, 0}},
    {"Mono14", ramp, {0xE0, 0x3F, 0xF0, 0x3F, 0, 0, 0x10, 0}},
    {"Mono16", ramp, {0x80, 0xFF, 0xC0, 0xFF, 0, 0, 0x40, 0}},
    {"Mono10p", ramp, {0xFE, 0xFF, 0x0F, 0x40, 0}},
    {"Mono12p", ramp, {0xF8, 0xCF, 0xFF, 0, 0x40, 0}},
    {"Mono14p", ramp, {0xE0, 0x3F, 0xFC, 0x0F, 0, 0x40, 0}},
    {"Mono10Packed", ramp, {0xFF, 0x32, 0xFF, 0, 0x10, 0}},
    {"Mono12Packed", ramp, {0xFF, 0xC8, 0xFF, 0, 0x40, 0}},
    {"RGB10p", ramp, {0xFE, 0xFB, 0xEF, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F}},
};

TEST(PixelFormats, AreLaidOutAsTheStandardsSay)
{
    for (const Layout& layout : layouts) {
        const zvsim::PixelFormat& format = zvsim::pixel_format(layout.format);
        Camera camera{format, {0, 0, 8 / format.step_x(), 1}};
        camera.model.sensor_width = 8;
        const uint64_t picture = layout.pattern == ramp ? 0x3FE : 0;
        Bytes frame = camera.frame({picture, layout.pattern, 1});
        frame.resize(layout.bytes.size());
        EXPECT_EQ(layout.bytes, frame) << layout.format;
    }
}

TEST(Patterns, StayWhereTheyAreWhenTheWindowMoves)
{
    const zvsim::PixelFormat& format = zvsim::pixel_format("Mono8");
    const Camera all{format, {0, 0, sensor_width, sensor_height}};
    const Camera part{format, {10, 20, 40, 30}};
    for (const TestPattern pattern : all_patterns()) {
        const Bytes sensor = all.frame({5, pattern, 1});
        const Bytes seen = part.frame({5, pattern, 1});
        for (size_t y = 0; y < 30; ++y) {
            for (size_t x = 0; x < 40; ++x)
                ASSERT_EQ(sensor[(y + 20) * sensor_width + x + 10], seen[y * 40 + x])
                    << static_cast<unsigned>(pattern);
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

TEST(PixelFormats, AreAllOfferedAndHaveDifferentNumbers)
{
    std::set<std::string> names;
    std::set<uint32_t> coaxpress_codes;
    for (const auto& format : zvsim::pixel_formats()) {
        names.insert(format.name);
        EXPECT_TRUE(format.coaxpress_code == 0 || coaxpress_codes.insert(format.coaxpress_code).second)
            << format.name;
    }
    EXPECT_EQ(known_formats.size(), names.size());
    EXPECT_EQ(48U, coaxpress_codes.size());
    EXPECT_EQ(nullptr, zvsim::find_pixel_format("Mono9"));
}

Bytes plain_frame(size_t size)
{
    Bytes frame(size);
    std::iota(frame.begin(), frame.end(), static_cast<unsigned char>(7));
    return frame;
}

Bytes stamped_frame(size_t size, uint64_t counter = 5)
{
    Bytes frame = plain_frame(size);
    EXPECT_TRUE(zvgr::write_stamp(frame.data(), size, counter));
    return frame;
}

/// Expects a stamp with that counter.
void expect_stamp(const Bytes& frame, size_t size, uint64_t counter, bool is_whole)
{
    const auto stamp = zvgr::read_stamp(frame.data(), size);
    ASSERT_TRUE(stamp);
    EXPECT_EQ(counter, stamp->counter);
    EXPECT_EQ(is_whole, stamp->checksum_ok);
}

bool is_whole(const Bytes& frame) { return zvgr::read_stamp(frame.data(), frame.size())->checksum_ok; }

TEST(FrameStamp, GivesTheCounterBackAlsoFromALargerBuffer)
{
    expect_stamp(stamped_frame(1000, 0x123456789ABCDEF0), 1000, 0x123456789ABCDEF0, true);
    Bytes buffer = stamped_frame(300, 6);
    buffer.resize(500, 0x5A);
    expect_stamp(buffer, buffer.size(), 6, true);
}

TEST(FrameStamp, IsLaidOutAsDocumented)
{
    const Bytes frame = stamped_frame(40, 0x0102);
    const Bytes expected{'Z', 'V', 'F', 'S', 1, 0, 0, 0, 2, 1, 0, 0, 0, 0, 0, 0, 40, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(expected, Bytes(frame.begin(), frame.begin() + 24));
    EXPECT_EQ(7 + 32, frame[32]);
}

TEST(FrameStamp, NoticesEveryChangedBit)
{
    for (const size_t size : {32U, 33U, 63U, 64U, 65U, 131U}) {
        Bytes frame = stamped_frame(size);
        for (size_t bit = 8 * zvgr::frame_stamp_size; bit < 8 * size; ++bit) {
            frame[bit / 8] = static_cast<unsigned char>(frame[bit / 8] ^ 1U << bit % 8);
            EXPECT_FALSE(is_whole(frame)) << size << " bytes, bit " << bit;
            frame[bit / 8] = static_cast<unsigned char>(frame[bit / 8] ^ 1U << bit % 8);
        }
        EXPECT_TRUE(is_whole(frame));
    }
}

TEST(FrameStamp, NoticesAChangedCounterSizeOrChecksumAndExchangedBlocks)
{
    for (const size_t at : {8U, 15U, 16U, 24U, 31U}) {
        Bytes frame = stamped_frame(100);
        ++frame[at];
        EXPECT_FALSE(is_whole(frame)) << "byte " << at;
    }
    Bytes impossible = stamped_frame(100);
    impossible[16] = 31; // smaller than the stamp
    EXPECT_FALSE(is_whole(impossible));
    Bytes exchanged = stamped_frame(32 + 64); // no two bytes of it are the same
    std::swap_ranges(exchanged.begin() + 32, exchanged.begin() + 64, exchanged.begin() + 64);
    EXPECT_FALSE(is_whole(exchanged));
}

TEST(FrameStamp, OfAFrameThatLacksItsEndGivesTheCounterOnly)
{
    expect_stamp(stamped_frame(500, 6), 499, 6, false);
    Bytes cut = plain_frame(100);
    ASSERT_TRUE(zvgr::write_stamp_of_cut_frame(cut.data(), cut.size(), 500, 8));
    expect_stamp(cut, cut.size(), 8, false);
}

TEST(FrameStamp, IsNotFoundWhereThereIsNone)
{
    EXPECT_FALSE(zvgr::read_stamp(plain_frame(100).data(), 100));
    EXPECT_FALSE(zvgr::read_stamp(nullptr, 100));
    Bytes frame = stamped_frame(100);
    EXPECT_FALSE(zvgr::read_stamp(frame.data(), 31));
    ++frame[4];
    EXPECT_FALSE(zvgr::read_stamp(frame.data(), frame.size())) << "an unknown version";
}

TEST(FrameStamp, IsNotWrittenToAFrameThatIsTooSmall)
{
    Bytes frame = plain_frame(31);
    EXPECT_FALSE(zvgr::write_stamp(frame.data(), frame.size(), 1));
    EXPECT_FALSE(zvgr::write_stamp_of_cut_frame(frame.data(), frame.size(), 100, 1));
    EXPECT_FALSE(zvgr::write_stamp(nullptr, 100, 1));
    EXPECT_FALSE(zvgr::write_stamp_of_cut_frame(nullptr, 100, 200, 1));
    EXPECT_EQ(plain_frame(31), frame);
}

} // namespace

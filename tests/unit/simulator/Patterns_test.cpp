#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

#include "simulator/Devices.h"
#include "simulator/PictureSource.h"
#include "support/FailingAllocations.h"
#include "unit/simulator/decode.h"
#include "unit/simulator/expected_picture.h"

// All patterns in all pixel formats, against a decoder that knows nothing of the library.

namespace {

using namespace zvsim_test;
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

/// A camera that shows a window without the stamp.
class Camera {
public:
    Camera(const zvsim::PixelFormat& format, const Window& window)
    {
        m_model.sensor_width = sensor_width;
        m_model.sensor_height = sensor_height;
        m_model.has_stamp = false;
        m_model.start.format = &format;
        m_model.start.offset_x = window.left * format.step_x();
        m_model.start.offset_y = window.top * format.step_y();
        m_model.start.width = window.width * format.step_x();
        m_model.start.height = window.height * format.step_y();
    }

    Camera& with_segments(uint32_t segments)
    {
        m_grabber.segments_per_buffer = segments;
        return *this;
    }
    Camera& with_stamp()
    {
        m_model.has_stamp = true;
        return *this;
    }

    const zvsim::CameraSettings& settings() const { return m_model.start; }
    std::unique_ptr<zvsim::PictureSource> source() const { return make_picture_source(device()); }
    size_t payload() const { return static_cast<size_t>(device().payload()); }

    std::vector<unsigned char> frame(const zvsim::Exposure& exposure) const
    {
        std::vector<unsigned char> frame(payload());
        source()->draw(exposure, frame.data(), frame.size());
        return frame;
    }

private:
    zvsim::CameraDevice device() const { return {m_model, m_grabber}; }

    zvsim::CameraModel m_model;
    zvsim::GrabberModel m_grabber;
};

void expect_shot(const Camera& camera, const Shot& shot, const unsigned char* bytes, size_t size)
{
    const zvsim::CameraSettings& settings = camera.settings();
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

void expect_frame(const Camera& camera, const Shot& shot)
{
    const auto frame = camera.frame({shot.picture, shot.pattern, shot.brightness});
    expect_shot(camera, shot, frame.data(), frame.size());
}

Shot shot_of(TestPattern pattern, uint64_t picture = 0, double brightness = 1)
{
    return {pattern, picture, sensor_width, sensor_height, brightness};
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
}

TEST_P(EveryFormat, ShowsEveryPatternAsItsFormulaSays)
{
    for (const Window& window : {Window{0, 0, 37, 17}, Window{3, 5, 7, 9}, Window{2, 31, 1, 1}}) {
        const Camera camera{format(), window};
        for (const TestPattern pattern : all_patterns())
            ASSERT_NO_FATAL_FAILURE(expect_frame(camera, shot_of(pattern, 1907 + window.width)));
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
    const Camera camera = Camera{format(), {1, 1, 5, 3}}.with_segments(3);
    const size_t size = camera.payload() / 3;
    for (const TestPattern pattern : {TestPattern::diagonal_ramp, TestPattern::noise}) {
        const auto frame = camera.frame({7, pattern, 1});
        for (size_t segment = 0; segment < 3; ++segment)
            ASSERT_NO_FATAL_FAILURE(
                expect_shot(camera, shot_of(pattern, 21 + segment), frame.data() + segment * size, size));
    }
}

TEST_P(EveryFormat, LeavesTheRestOfACutFrameAlone)
{
    const Camera plain = Camera{format(), {1, 1, 3, 2}}.with_segments(2);
    const Camera stamped = Camera{plain}.with_stamp();
    const auto source = stamped.source();
    for (const TestPattern pattern : {TestPattern::diagonal_ramp, TestPattern::color_bars}) {
        const zvsim::Exposure exposure{1, pattern, 1};
        const auto whole = plain.frame(exposure);
        for (size_t room = 0; room <= whole.size() + 1; ++room) {
            std::vector<unsigned char> target(whole.size() + 64, 0x5A);
            source->draw(exposure, target.data(), room);
            const size_t drawn = std::min(room, whole.size());
            for (size_t at = drawn < zvgr::frame_stamp_size ? 0 : zvgr::frame_stamp_size; at < target.size();
                 ++at)
                ASSERT_EQ(at < drawn ? whole[at] : 0x5A, target[at]) << "room " << room << ", byte " << at;
        }
    }
}

TEST_P(EveryFormat, CarriesTheStamp)
{
    const Camera camera = Camera{format(), {0, 0, 37, 17}}.with_stamp();
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
        const auto first = camera.frame({12, pattern, 1});
        std::vector<unsigned char> again(first.size());
        source->draw({11, pattern, 0.3}, again.data(), again.size());
        source->draw({12, pattern, 1}, again.data(), again.size());
        EXPECT_EQ(first, again) << static_cast<unsigned>(pattern);
    }
}

TEST_P(EveryFormat, AllocatesNothingForAFrame)
{
    const Camera camera = Camera{format(), {0, 0, 5, 3}}.with_stamp();
    const auto source = camera.source();
    std::vector<unsigned char> frame(camera.payload());
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
    std::vector<std::vector<unsigned char>> films;
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
    for (const uint32_t width : {1U, 2U, 3U, 5U, 33U}) {
        for (const uint32_t height : {1U, 2U, 6U}) {
            zvsim::CameraModel model;
            model.start.width = model.sensor_width = width;
            model.start.height = model.sensor_height = height;
            model.start.format = &zvsim::pixel_format("Mono8");
            const zvsim::GrabberModel grabber;
            const auto source = make_picture_source(zvsim::CameraDevice{model, grabber});
            for (const TestPattern pattern : all_patterns()) {
                std::vector<unsigned char> target(width * height + 16, 0x5A);
                source->draw({UINT64_MAX, pattern, 1}, target.data(), target.size());
                EXPECT_EQ(std::vector<unsigned char>(16, 0x5A),
                          std::vector<unsigned char>(target.end() - 16, target.end()));
            }
        }
    }
}

TEST(Patterns, TakeEveryBrightnessThereIs)
{
    const Camera camera{zvsim::pixel_format("Mono16"), {0, 0, 8, 1}};
    for (const double brightness : {std::nan(""), -1.0, 0.0})
        EXPECT_EQ(std::vector<unsigned char>(16, 0), camera.frame({0, TestPattern::white, brightness}));
    for (const double brightness : {1.0, 3.0, 1e300, std::numeric_limits<double>::infinity()})
        EXPECT_EQ(std::vector<unsigned char>(16, 0xFF), camera.frame({0, TestPattern::white, brightness}));
}

} // namespace

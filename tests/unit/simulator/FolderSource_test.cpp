#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <gtest/gtest.h>

#include "simulator/Devices.h"
#include "simulator/PictureFolder.h"
#include "simulator/PictureSource.h"
#include "unit/simulator/decode.h"
#include "unit/simulator/tiff_files.h"

namespace {

using namespace zvsim_test;

constexpr uint32_t width = 24;
constexpr uint32_t height = 14;
constexpr Pixels all_kinds[] = {Pixels::grey_8, Pixels::grey_16, Pixels::rgb_8, Pixels::rgb_16};

/// A camera that plays three pictures of one kind.
class PlayedFolder {
public:
    explicit PlayedFolder(Pixels pixels, const std::string& extension = ".png")
    {
        const Folder folder;
        for (unsigned number = 0; number < 3; ++number) {
            m_pictures.push_back(test_picture(width, height, pixels, number));
            const auto file = folder.file(std::to_string(number) + extension);
            if (extension == ".png")
                write_png(file, m_pictures.back());
            else
                write_tiff(file, m_pictures.back());
        }
        std::vector<std::string> warnings;
        m_model.pictures = zvsim::PictureFolder::read(folder.path(), warnings);
        if (m_model.pictures == nullptr)
            throw std::runtime_error{warnings.front()};
        m_model.sensor_width = m_model.start.width = width;
        m_model.sensor_height = m_model.start.height = height;
        m_model.start.format = &m_model.pictures->format();
    }

    PlayedFolder& show(uint32_t left, uint32_t top, uint32_t columns, uint32_t rows)
    {
        m_model.start.offset_x = left;
        m_model.start.offset_y = top;
        m_model.start.width = columns;
        m_model.start.height = rows;
        return *this;
    }
    PlayedFolder& as(const char* format)
    {
        m_model.start.format = &zvsim::pixel_format(format);
        return *this;
    }
    PlayedFolder& with_segments(uint32_t segments)
    {
        m_grabber.segments_per_buffer = segments;
        return *this;
    }

    std::vector<unsigned char> frame(uint64_t number, double brightness = 1) const
    {
        const zvsim::CameraDevice device{m_model, m_grabber};
        std::vector<unsigned char> frame(static_cast<size_t>(device.payload()));
        make_picture_source(device)->draw({number, zvsim::TestPattern::diagonal_ramp, brightness},
                                          frame.data(), frame.size());
        return frame;
    }

    /// A frame of one segment.
    Decoded shown(uint64_t number, double brightness = 1) const
    {
        const auto bytes = frame(number, brightness);
        return decode(m_model.start.format->name, m_model.start.width, m_model.start.height, bytes.data(),
                      bytes.size());
    }

    std::vector<unsigned char> file_pixels(uint64_t number) const
    {
        return m_pictures[number % 3].in_memory();
    }

    Decoded file(uint64_t number) const
    {
        const auto bytes = file_pixels(number);
        return decode(m_model.pictures->format().name, width, height, bytes.data(), bytes.size());
    }

private:
    zvsim::CameraModel m_model;
    zvsim::GrabberModel m_grabber;
    std::vector<TestPicture> m_pictures;
};

TEST(FolderSource, DeliversPicturesBitForBitInALoop)
{
    for (const char* const extension : {".png", ".TIF", ".tiff"}) {
        for (const Pixels pixels : all_kinds) {
            const PlayedFolder played{pixels, extension};
            for (uint64_t number = 0; number < 5; ++number)
                EXPECT_EQ(played.file_pixels(number), played.frame(number)) << extension;
        }
    }
}

TEST(FolderSource, DeliversTheWindowOfASmallerSize)
{
    for (const Pixels pixels : all_kinds) {
        const PlayedFolder played = PlayedFolder{pixels}.show(5, 3, 7, 9);
        const Decoded shown = played.shown(1);
        const Decoded file = played.file(1);
        for (size_t y = 0; y < 9; ++y) {
            for (size_t x = 0; x < 7; ++x) {
                for (size_t channel = 0; channel < file.channels; ++channel)
                    ASSERT_EQ(file.at(x + 5, y + 3, channel), shown.at(x, y, channel)) << x << ", " << y;
            }
        }
    }
}

TEST(FolderSource, ScalesSamplesAndClipsThem)
{
    for (const Pixels pixels : all_kinds) {
        const PlayedFolder played{pixels};
        const Decoded file = played.file(2);
        const double full = pixels == Pixels::grey_8 || pixels == Pixels::rgb_8 ? 255 : 65535;
        for (const double brightness : {0.5, 2.0}) {
            const Decoded shown = played.shown(2, brightness);
            for (size_t at = 0; at < file.samples.size(); ++at)
                ASSERT_EQ(std::min(full, std::floor(file.samples[at] * brightness + 0.5)), shown.samples[at]);
        }
    }
}

TEST(FolderSource, PutsConsecutivePicturesIntoTheSegments)
{
    const PlayedFolder played = PlayedFolder{Pixels::rgb_8}.with_segments(2);
    std::vector<unsigned char> expected = played.file_pixels(2);
    const auto second = played.file_pixels(3);
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(expected, played.frame(1));
}

TEST(FolderSource, GivesAMosaicOfAColorPicture)
{
    const PlayedFolder played = PlayedFolder{Pixels::rgb_8}.as("BayerRG8").show(2, 4, 8, 6);
    const Decoded file = played.file(0);
    const Decoded shown = played.shown(0);
    const size_t filters[2][2] = {{0, 1}, {1, 2}};
    for (size_t y = 0; y < 6; ++y) {
        for (size_t x = 0; x < 8; ++x)
            ASSERT_EQ(file.at(x + 2, y + 4, filters[y % 2][x % 2]), shown.at(x, y, 0));
    }
}

TEST(FolderSource, KeepsFullScaleWhenTheDepthChanges)
{
    const PlayedFolder deeper = PlayedFolder{Pixels::grey_8}.as("Mono16");
    const PlayedFolder flatter = PlayedFolder{Pixels::grey_16}.as("Mono10p");
    const Decoded deep = deeper.shown(0);
    const Decoded flat = flatter.shown(0);
    for (size_t at = 0; at < deep.samples.size(); ++at) {
        ASSERT_EQ(deeper.file(0).samples[at] * 257, deep.samples[at]);
        ASSERT_EQ(flatter.file(0).samples[at] / 64, flat.samples[at]);
    }
}

TEST(FolderSource, IsBlackBeyondThePicture)
{
    const PlayedFolder played = PlayedFolder{Pixels::rgb_16}.show(width - 2, height - 1, 5, 3);
    const Decoded shown = played.shown(0);
    const Decoded file = played.file(0);
    for (size_t y = 0; y < 3; ++y) {
        for (size_t x = 0; x < 5; ++x)
            ASSERT_EQ(x < 2 && y < 1 ? file.at(width - 2 + x, height - 1, 1) : 0, shown.at(x, y, 1));
    }
}

} // namespace

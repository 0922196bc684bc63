#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <gmock/gmock.h>

#include "simulator/Devices.h"
#include "simulator/PictureFolder.h"
#include "simulator/PictureSource.h"
#include "unit/simulator/picture_files.h"

namespace {

using namespace zvsim_test;
using testing::HasSubstr;
using zvsim::PictureFolder;
using Bytes = std::vector<unsigned char>;

constexpr uint32_t width = 24;
constexpr uint32_t height = 14;
constexpr Pixels all_kinds[] = {Pixels::grey_8, Pixels::grey_16, Pixels::rgb_8, Pixels::rgb_16};

/// A folder of pictures, and the warnings of reading it.
class PictureFolders : public testing::Test {
protected:
    void write(const std::string& name, uint32_t columns, uint32_t rows, Pixels pixels = Pixels::grey_8) const
    {
        const TestPicture picture = test_picture(columns, rows, pixels, 1);
        if (name.find(".png") != std::string::npos)
            write_png(folder.file(name), picture);
        else
            write_tiff(folder.file(name), picture);
    }

    const Folder folder;
    std::vector<std::string> warnings;
};

TEST_F(PictureFolders, LeaveOutWhatCannotBeReadOrDoesNotFitTheFirstPicture)
{
    write("a.tif", 16, 4);
    write("b-wider.png", 17, 4);
    write("c-higher.png", 16, 5);
    write("d-deeper.png", 16, 4, Pixels::grey_16);
    write("e-alpha.png", 16, 4, Pixels::rgba_8);
    folder.write("f-text.tiff", "II*?");
    write("g.png", 16, 4);
    testing::internal::CaptureStderr();
    const auto read = PictureFolder::read(folder.path(), warnings);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    ASSERT_NE(nullptr, read);
    const std::string differs{" is left out: its size or pixel format differs from the first picture"};
    EXPECT_THAT(warnings,
                testing::ElementsAre(HasSubstr("b-wider.png" + differs), HasSubstr("c-higher.png" + differs),
                                     HasSubstr("d-deeper.png" + differs),
                                     HasSubstr("e-alpha.png is left out: has an alpha channel"),
                                     HasSubstr("f-text.tiff is left out: ")));
    EXPECT_EQ(2 * 16 * 4U, read->size());
}

TEST_F(PictureFolders, WithoutPicturesAreNone)
{
    EXPECT_EQ(nullptr, PictureFolder::read(folder.file("missing"), warnings));
    folder.write("a.png", "broken");
    EXPECT_EQ(nullptr, PictureFolder::read(folder.path(), warnings));
    EXPECT_THAT(warnings, testing::ElementsAre(HasSubstr("missing cannot be read"), HasSubstr("a.png"),
                                               HasSubstr("no usable PNG or TIFF picture")));
}

using Samples = std::vector<unsigned>;

Samples samples_of(const Bytes& bytes, const zvsim::PixelFormat& format)
{
    const bool is_wide = format.bits > 8;
    Samples samples;
    for (size_t at = 0; at < bytes.size(); at += is_wide ? 2 : 1)
        samples.push_back(bytes[at] + (is_wide ? 256U * bytes[at + 1] : 0U));
    return samples;
}

/// A camera that plays three pictures of one kind. They are not written in the order of their names, and the
/// folder also holds something else.
struct PlayedFolder {
    explicit PlayedFolder(Pixels pixels, const std::string& extension = ".png")
    {
        const Folder folder;
        folder.write("0.txt", "not a picture, and not called one");
        std::filesystem::create_directory(folder.file("3.png"));
        for (const unsigned number : {1U, 2U, 0U}) {
            const TestPicture picture = test_picture(width, height, pixels, number);
            const auto file = folder.file(std::to_string(number) + extension);
            if (extension == ".png" || extension == ".PNG")
                write_png(file, picture);
            else
                write_tiff(file, picture);
            pictures[number] = picture.in_memory();
        }
        std::vector<std::string> warnings;
        model.pictures = PictureFolder::read(folder.path(), warnings);
        if (model.pictures == nullptr || !warnings.empty())
            throw std::runtime_error{"not played"};
        model.sensor_width = model.start.width = width;
        model.sensor_height = model.start.height = height;
        model.start.format = &model.pictures->format();
    }

    PlayedFolder& show(uint32_t left, uint32_t top, uint32_t columns, uint32_t rows)
    {
        model.start.offset_x = left;
        model.start.offset_y = top;
        model.start.width = columns;
        model.start.height = rows;
        return *this;
    }
    PlayedFolder& as(const char* format)
    {
        model.start.format = &zvsim::pixel_format(format);
        return *this;
    }

    Bytes frame(uint64_t number, double brightness = 1) const
    {
        const zvsim::CameraDevice device{model, grabber};
        Bytes frame(static_cast<size_t>(device.payload()));
        make_picture_source(device)->draw({number, zvsim::TestPattern::diagonal_ramp, brightness},
                                          frame.data(), frame.size());
        return frame;
    }
    Samples shown(uint64_t number, double brightness = 1) const
    {
        return samples_of(frame(number, brightness), *model.start.format);
    }
    Samples file(size_t number) const { return samples_of(pictures[number], model.pictures->format()); }

    Bytes pictures[3];
    zvsim::CameraModel model;
    zvsim::GrabberModel grabber;
};

TEST(FolderSource, DeliversPicturesInTheOrderOfTheirNamesBitForBitInALoop)
{
    for (const char* const extension : {".png", ".PNG", ".TIF", ".tiff"}) {
        for (const Pixels pixels : all_kinds) {
            const PlayedFolder played{pixels, extension};
            for (uint64_t number = 0; number < 5; ++number)
                EXPECT_EQ(played.pictures[number % 3], played.frame(number)) << extension;
        }
    }
}

TEST(FolderSource, StaysWithinTheRoomThatItIsGiven)
{
    const PlayedFolder played{Pixels::grey_8};
    const zvsim::CameraDevice device{played.model, played.grabber};
    const size_t whole = played.pictures[0].size();
    for (const size_t room : {size_t{0}, size_t{10}, whole, whole + 6}) {
        Bytes target(whole + 16, 0x5A);
        make_picture_source(device)->draw({0, zvsim::TestPattern::diagonal_ramp, 1}, target.data(), room);
        Bytes expected(whole + 16, 0x5A);
        std::copy_n(played.pictures[0].begin(), std::min(room, whole), expected.begin());
        EXPECT_EQ(expected, target) << room;
    }
}

TEST(FolderSource, DeliversTheWindowOfASmallerSize)
{
    for (const Pixels pixels : all_kinds) {
        const PlayedFolder played = PlayedFolder{pixels}.show(5, 3, 7, 9);
        const Samples file = played.file(1);
        const size_t channels = file.size() / (width * height);
        Samples expected;
        for (size_t y = 3; y < 3 + 9; ++y) {
            const auto row = file.begin() + static_cast<std::ptrdiff_t>((y * width + 5) * channels);
            expected.insert(expected.end(), row, row + static_cast<std::ptrdiff_t>(7 * channels));
        }
        EXPECT_EQ(expected, played.shown(1));
    }
}

TEST(FolderSource, ScalesSamplesAndClipsThem)
{
    for (const Pixels pixels : all_kinds) {
        const PlayedFolder played{pixels};
        const double full = pixels == Pixels::grey_8 || pixels == Pixels::rgb_8 ? 255 : 65535;
        for (const double brightness : {0.5, 2.0}) {
            Samples expected = played.file(2);
            for (unsigned& sample : expected)
                sample = static_cast<unsigned>(std::min(full, std::floor(sample * brightness + 0.5)));
            EXPECT_EQ(expected, played.shown(2, brightness));
        }
    }
}

TEST(FolderSource, PutsConsecutivePicturesIntoTheSegments)
{
    PlayedFolder played{Pixels::rgb_8};
    played.grabber.segments_per_buffer = 2;
    Bytes expected = played.pictures[2];
    expected.insert(expected.end(), played.pictures[0].begin(), played.pictures[0].end());
    EXPECT_EQ(expected, played.frame(1));
}

TEST(FolderSource, GivesAMosaicOfAColorPicture)
{
    const PlayedFolder played = PlayedFolder{Pixels::rgb_8}.as("BayerRG8").show(2, 4, 8, 6);
    const Samples file = played.file(0);
    const size_t filters[2][2] = {{0, 1}, {1, 2}};
    Samples expected;
    for (size_t y = 0; y < 6; ++y) {
        for (size_t x = 0; x < 8; ++x)
            expected.push_back(file[((y + 4) * width + x + 2) * 3 + filters[y % 2][x % 2]]);
    }
    EXPECT_EQ(expected, played.shown(0));
}

TEST(FolderSource, KeepsFullScaleWhenTheDepthChanges)
{
    const PlayedFolder deeper = PlayedFolder{Pixels::grey_8}.as("Mono16");
    const PlayedFolder flatter = PlayedFolder{Pixels::grey_16}.as("Mono10");
    Samples deep = deeper.file(0);
    Samples flat = flatter.file(0);
    for (size_t at = 0; at < deep.size(); ++at) {
        deep[at] *= 257;
        flat[at] /= 64;
    }
    EXPECT_EQ(deep, deeper.shown(0));
    EXPECT_EQ(flat, flatter.shown(0));
}

TEST(FolderSource, IsBlackBeyondThePicture)
{
    const PlayedFolder played = PlayedFolder{Pixels::rgb_16}.show(width - 2, height - 1, 5, 3);
    const Samples file = played.file(0);
    Samples expected(file.end() - 2 * 3, file.end()); // two pixels of three channels
    expected.resize(5 * 3 * 3, 0);
    EXPECT_EQ(expected, played.shown(0));
}

} // namespace

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <gmock/gmock.h>

#include "simulator/Devices.h"
#include "simulator/PictureFolder.h"
#include "simulator/PictureSource.h"
#include "simulator/pictures/PictureFile.h"
#include "unit/simulator/picture_files.h"

// Picture files of both kinds, valid and damaged ones, and cameras that play a folder of them.

namespace {

using namespace zvsim_test;
using Bytes = std::vector<unsigned char>;
using testing::HasSubstr;
using zvsim::PictureFolder;

/// A new folder for the files of a test.
class PictureFile : public testing::Test {
protected:
    void expect_read_as(const std::string& name, const TestPicture& written, const char* format) const
    {
        std::string problem;
        const auto read = zvsim::read_picture(folder.file(name), problem);
        ASSERT_TRUE(read) << problem;
        EXPECT_EQ(written.width, read->width);
        EXPECT_EQ(written.height, read->height);
        EXPECT_STREQ(format, read->format->name);
        EXPECT_EQ(written.in_memory(), read->pixels);
    }
    void expect_refused(const std::string& name, const std::string& reason) const
    {
        std::string problem;
        EXPECT_FALSE(zvsim::read_picture(folder.file(name), problem));
        EXPECT_THAT(problem, HasSubstr(reason)) << name;
        EXPECT_NE("", problem) << name;
    }

    const Folder folder;
};

TEST_F(PictureFile, IsReadBitForBitInEveryForm)
{
    const std::pair<Pixels, const char*> formats[] = {{Pixels::grey_8, "Mono8"},
                                                      {Pixels::grey_16, "Mono16"},
                                                      {Pixels::rgb_8, "RGB8"},
                                                      {Pixels::rgb_16, "RGB16"}};
    for (const auto& [pixels, format] : formats) {
        TestPicture written = test_picture(61, 37, pixels, 1);
        for (const char* const mode : {"wl", "wb", "w8"}) { // byte orders and sizes
            write_tiff(folder.file("a.tif"), written, mode);
            expect_read_as("a.tif", written, format);
        }
        for (const int compression : {COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_PACKBITS}) {
            write_tiff(folder.file("a.tif"), written, "w",
                       [=](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression); });
            expect_read_as("a.tif", written, format);
        }
        write_tiff(folder.file("a.tif"), written, "w", [](TIFF* tiff) {
            TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
            TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        });
        expect_read_as("a.tif", written, format);
        for (const bool is_interlaced : {false, true}) {
            written.is_interlaced = is_interlaced;
            write_png(folder.file("a.png"), written);
            expect_read_as("a.png", written, format);
        }
    }
}

TEST_F(PictureFile, OfSeveralPicturesIsItsFirst)
{
    const TestPicture first = test_picture(8, 8, Pixels::grey_8, 1);
    write_tiff(folder.file("a.tif"), first);
    write_tiff(folder.file("a.tif"), test_picture(8, 8, Pixels::grey_8, 2), "a");
    expect_read_as("a.tif", first, "Mono8");
}

TEST_F(PictureFile, OfPngWithOtherPixelsIsRefusedWithAReason)
{
    const std::pair<Pixels, const char*> problems[] = {{Pixels::grey_1, "1 bits per sample"},
                                                       {Pixels::grey_alpha_8, "alpha channel"},
                                                       {Pixels::rgba_8, "alpha channel"},
                                                       {Pixels::palette_8, "palette"}};
    for (const auto& [pixels, reason] : problems) {
        write_png(folder.file("a.png"), test_picture(8, 8, pixels, 1));
        expect_refused("a.png", reason);
    }
}

TEST_F(PictureFile, ThatIsMissingEmptyOrSomethingElseIsRefused)
{
    for (const char* const extension : {".png", ".tif"}) {
        expect_refused(std::string{"missing"} + extension, "");
        folder.write(std::string{"empty"} + extension, "");
        expect_refused(std::string{"empty"} + extension, "");
        folder.write(std::string{"text"} + extension, "this is not a picture");
        expect_refused(std::string{"text"} + extension, "");
    }
}

/// Fields of a TIFF file that cannot be delivered as it is, and why.
struct Refused {
    const char* reason;
    std::vector<std::pair<uint32_t, int>> fields;
    Pixels pixels{Pixels::grey_8};
};

const Refused refused[] = {
    {"in tiles", {{TIFFTAG_TILEWIDTH, 32}, {TIFFTAG_TILELENGTH, 32}}},
    {"palette", {{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE}}},
    {"grey from black to white", {{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE}}},
    {"alpha channel", {{TIFFTAG_SAMPLESPERPIXEL, 4}}, Pixels::rgb_8},
    {"in separate planes", {{TIFFTAG_PLANARCONFIG, PLANARCONFIG_SEPARATE}}, Pixels::rgb_8},
    {"4 bits per sample", {{TIFFTAG_BITSPERSAMPLE, 4}}},
    {"32 bits per sample", {{TIFFTAG_BITSPERSAMPLE, 32}}},
    {"unsigned numbers", {{TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_INT}}},
    {"from the top left", {{TIFFTAG_ORIENTATION, ORIENTATION_BOTLEFT}}},
    {"too few samples", {{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB}}},
    {"uses compression 7", {{TIFFTAG_COMPRESSION, COMPRESSION_JPEG}, {TIFFTAG_ROWSPERSTRIP, 8}}},
    {"65536 pixels on a side", {{TIFFTAG_IMAGEWIDTH, 70000}}},
    {"more than 1 GiB",
     {{TIFFTAG_IMAGEWIDTH, 65536}, {TIFFTAG_IMAGELENGTH, 65536}, {TIFFTAG_ROWSPERSTRIP, 1}}},
    {"too short for its pixels",
     {{TIFFTAG_IMAGEWIDTH, 30000}, {TIFFTAG_IMAGELENGTH, 30000}, {TIFFTAG_ROWSPERSTRIP, 1}}},
};

TEST_F(PictureFile, OfTiffInAnotherFormIsRefusedWithAReason)
{
    for (const Refused& row : refused) {
        write_tiff(folder.file("a.tif"), test_picture(32, 32, row.pixels, 1), "w", [&row](TIFF* tiff) {
            for (const auto& [tag, value] : row.fields) {
                TIFFSetField(tiff, tag, value);
                static std::vector<uint16_t> colors(256);
                if (value == PHOTOMETRIC_PALETTE && tag == TIFFTAG_PHOTOMETRIC)
                    TIFFSetField(tiff, TIFFTAG_COLORMAP, colors.data(), colors.data(), colors.data());
            }
        });
        expect_refused("a.tif", row.reason);
    }
}

TEST_F(PictureFile, ThatClaimsToBeHugeIsRefusedUnread)
{
    const std::pair<uint32_t, const char*> claims[] = {{0x7FFFFFFF, "65536 pixels on a side"},
                                                       {0xFFFF, "more than 1 GiB"},
                                                       {0x7FFF, "too short for its pixels"}};
    for (const auto& [side, reason] : claims) {
        write_png(folder.file("a.png"), {side, side, Pixels::grey_8, false, {}});
        expect_refused("a.png", reason);
    }
}

int errors_of_the_application = 0;
void count_error(const char* /*module*/, const char* /*format*/, va_list /*arguments*/)
{
    ++errors_of_the_application;
}

TEST_F(PictureFile, DoesNotTouchTheHandlersOfTheApplication)
{
    folder.write("a.tif", "MM");
    const TIFFErrorHandler former_errors = TIFFSetErrorHandler(count_error);
    const TIFFErrorHandler former_warnings = TIFFSetWarningHandler(count_error);
    expect_refused("a.tif", "");
    EXPECT_EQ(&count_error, TIFFSetErrorHandler(former_errors));
    EXPECT_EQ(&count_error, TIFFSetWarningHandler(former_warnings));
    EXPECT_EQ(0, errors_of_the_application);
}

/// A damaged file must be read or refused with a reason, and nothing else may be written anywhere.
class HostilePicture : public testing::TestWithParam<const char*> {
protected:
    HostilePicture() { testing::internal::CaptureStderr(); }
    ~HostilePicture() override { EXPECT_EQ("", testing::internal::GetCapturedStderr()); }

    /// Of the kind of the test, or of the other one.
    std::string content(bool is_of_its_kind = true) const
    {
        const TestPicture picture = test_picture(23, 11, Pixels::grey_16, 1);
        const auto file = m_folder.file("good");
        if ((GetParam() == std::string{"tif"}) == is_of_its_kind)
            write_tiff(file, picture);
        else
            write_png(file, picture);
        return text_of(file);
    }

    bool is_read(const std::string& content) const
    {
        // A new file each time: some file systems save a rewritten one at once.
        const auto file = m_folder.file(std::string{"a."} + GetParam());
        std::filesystem::remove(file);
        m_folder.write(file.filename().string(), content);
        std::string problem;
        const auto picture = zvsim::read_picture(file, problem);
        EXPECT_NE(picture.has_value(), !problem.empty()) << problem;
        EXPECT_TRUE(!picture || picture->pixels.size() <= 3000 * content.size());
        return picture.has_value();
    }

private:
    Folder m_folder;
};

TEST_P(HostilePicture, OfEveryLengthIsReadOrRefused)
{
    const std::string whole = content();
    ASSERT_TRUE(is_read(whole));
    size_t read = 0;
    for (size_t length = 0; length < whole.size(); ++length)
        read += is_read(whole.substr(0, length)) ? 1 : 0;
    EXPECT_LT(read, 20U) << "only what follows the pixels may be missing";
}

TEST_P(HostilePicture, WithAnyByteChangedIsReadOrRefused)
{
    const std::string whole = content();
    for (size_t at = 0; at < whole.size(); ++at) {
        for (const char change : {'\x01', '\x80', '\xFF'}) {
            std::string changed = whole;
            changed[at] = static_cast<char>(changed[at] ^ change);
            is_read(changed);
        }
    }
}

TEST_P(HostilePicture, OfTheOtherKindIsRefused) { EXPECT_FALSE(is_read(content(false))); }

INSTANTIATE_TEST_SUITE_P(Kinds, HostilePicture, testing::Values("png", "tif"),
                         [](const auto& kind) { return std::string{kind.param}; });

constexpr uint32_t width = 24;
constexpr uint32_t height = 14;
constexpr Pixels all_kinds[] = {Pixels::grey_8, Pixels::grey_16, Pixels::rgb_8, Pixels::rgb_16};

/// A folder of pictures, and the warnings of reading it.
class PictureFolders : public testing::Test {
protected:
    void write(const std::string& name, uint32_t columns, uint32_t rows, Pixels pixels = Pixels::grey_8) const
    {
        write_picture(folder.file(name), test_picture(columns, rows, pixels, 1));
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
            write_picture(folder.file(std::to_string(number) + extension), picture);
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

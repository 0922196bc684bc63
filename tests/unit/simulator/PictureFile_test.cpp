#include <algorithm>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>

#include "simulator/pictures/PictureFile.h"
#include "unit/simulator/picture_files.h"

// Picture files of both kinds, valid and damaged ones.

namespace {

using namespace zvsim_test;
using testing::HasSubstr;

std::string content_of(const std::filesystem::path& file)
{
    std::ifstream stream{file, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

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

/// Sets a field of a TIFF file that then cannot be delivered as it is, and why.
struct Refused {
    const char* name;
    const char* reason;
    std::vector<std::pair<uint32_t, int>> fields;
    Pixels pixels{Pixels::grey_8};
};

const Refused refused[] = {
    {"Tiles", "in tiles", {{TIFFTAG_TILEWIDTH, 32}, {TIFFTAG_TILELENGTH, 32}}},
    {"Palette", "palette", {{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE}}},
    {"Negative", "grey from black to white", {{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE}}},
    {"Alpha", "alpha channel", {{TIFFTAG_SAMPLESPERPIXEL, 4}}, Pixels::rgb_8},
    {"Planes", "in separate planes", {{TIFFTAG_PLANARCONFIG, PLANARCONFIG_SEPARATE}}, Pixels::rgb_8},
    {"FewBits", "4 bits per sample", {{TIFFTAG_BITSPERSAMPLE, 4}}},
    {"ManyBits", "32 bits per sample", {{TIFFTAG_BITSPERSAMPLE, 32}}},
    {"SignedNumbers", "unsigned numbers", {{TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_INT}}},
    {"UpsideDown", "from the top left", {{TIFFTAG_ORIENTATION, ORIENTATION_BOTLEFT}}},
    {"OneColorMissing", "too few samples", {{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB}}},
    {"Jpeg", "uses compression 7", {{TIFFTAG_COMPRESSION, COMPRESSION_JPEG}, {TIFFTAG_ROWSPERSTRIP, 8}}},
    {"HugeWidth", "65536 pixels on a side", {{TIFFTAG_IMAGEWIDTH, 70000}}},
    {"MoreThanOneGibibyte",
     "more than 1 GiB",
     {{TIFFTAG_IMAGEWIDTH, 65536}, {TIFFTAG_IMAGELENGTH, 65536}, {TIFFTAG_ROWSPERSTRIP, 1}}},
    {"MorePixelsThanBytes",
     "too short for its pixels",
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
        return content_of(file);
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

} // namespace

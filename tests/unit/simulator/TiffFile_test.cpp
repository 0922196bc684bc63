#include <gmock/gmock.h>

#include "simulator/pictures/TiffFile.h"
#include "unit/simulator/tiff_files.h"

namespace {

using namespace zvsim_test;
using testing::HasSubstr;

void expect_read_as_written(const std::filesystem::path& file, const TestPicture& written)
{
    std::string problem;
    const auto read = zvsim::read_tiff(file, problem);
    ASSERT_TRUE(read) << problem;
    EXPECT_EQ(written.width, read->width);
    EXPECT_EQ(written.height, read->height);
    EXPECT_EQ(written.in_memory(), read->pixels);
}

TEST(TiffFile, IsReadBitForBitInEitherByteOrderAndSize)
{
    const Folder folder;
    for (const Pixels pixels : {Pixels::grey_8, Pixels::grey_16, Pixels::rgb_8, Pixels::rgb_16}) {
        for (const char* const mode : {"wl", "wb", "w8"}) {
            const TestPicture written = test_picture(61, 37, pixels, 1);
            write_tiff(folder.file("a.tif"), written, mode);
            ASSERT_NO_FATAL_FAILURE(expect_read_as_written(folder.file("a.tif"), written)) << mode;
        }
    }
}

TEST(TiffFile, IsReadWithEveryCompressionThatLosesNothing)
{
    const Folder folder;
    for (const int compression : {COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_PACKBITS}) {
        const TestPicture written = test_picture(61, 37, Pixels::rgb_16, 1);
        write_tiff(folder.file("a.tif"), written, "w",
                   [=](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression); });
        ASSERT_NO_FATAL_FAILURE(expect_read_as_written(folder.file("a.tif"), written)) << compression;
    }
}

TEST(TiffFile, IsReadWithAPredictor)
{
    const Folder folder;
    const TestPicture written = test_picture(61, 37, Pixels::grey_16, 1);
    write_tiff(folder.file("a.tif"), written, "w", [](TIFF* tiff) {
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    });
    expect_read_as_written(folder.file("a.tif"), written);
}

TEST(TiffFile, HasThePixelFormatOfItsPixels)
{
    const Folder folder;
    const std::vector<std::pair<Pixels, std::string>> formats{{Pixels::grey_8, "Mono8"},
                                                              {Pixels::grey_16, "Mono16"},
                                                              {Pixels::rgb_8, "RGB8"},
                                                              {Pixels::rgb_16, "RGB16"}};
    for (const auto& [pixels, name] : formats) {
        write_tiff(folder.file("a.tif"), test_picture(8, 8, pixels, 1));
        std::string problem;
        EXPECT_EQ(name, zvsim::read_tiff(folder.file("a.tif"), problem)->format->name);
    }
}

TEST(TiffFile, OfSeveralPicturesIsItsFirst)
{
    const Folder folder;
    const TestPicture first = test_picture(8, 8, Pixels::grey_8, 1);
    write_tiff(folder.file("a.tif"), first);
    write_tiff(folder.file("a.tif"), test_picture(8, 8, Pixels::grey_8, 2), "a");
    expect_read_as_written(folder.file("a.tif"), first);
}

/// A file that cannot be delivered as it stands, and why.
struct Refused {
    const char* name;
    const char* reason;
    std::function<void(TIFF*)> change;
    Pixels pixels{Pixels::grey_8};
};

class RefusedTiff : public testing::TestWithParam<Refused> {};

TEST_P(RefusedTiff, IsAProblemThatHasAName)
{
    const Folder folder;
    write_tiff(folder.file("a.tif"), test_picture(32, 32, GetParam().pixels, 1), "w", GetParam().change);
    std::string problem;
    EXPECT_FALSE(zvsim::read_tiff(folder.file("a.tif"), problem));
    EXPECT_THAT(problem, HasSubstr(GetParam().reason));
}

const std::vector<Refused> refused{
    {"Tiles", "in tiles",
     [](TIFF* tiff) {
         TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 32);
         TIFFSetField(tiff, TIFFTAG_TILELENGTH, 32);
     }},
    {"Palette", "palette",
     [](TIFF* tiff) {
         static std::vector<uint16_t> colors(256);
         TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
         TIFFSetField(tiff, TIFFTAG_COLORMAP, colors.data(), colors.data(), colors.data());
     }},
    {"Negative", "grey from black to white",
     [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE); }},
    {"Alpha", "alpha channel",
     [](TIFF* tiff) {
         const uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
         TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 4);
         TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
     },
     Pixels::rgb_8},
    {"Planes", "in planes",
     [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_SEPARATE); }, Pixels::rgb_8},
    {"FewBits", "4 bits in a sample", [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 4); }},
    {"ManyBits", "32 bits in a sample", [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 32); }},
    {"SignedNumbers", "unsigned numbers",
     [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_INT); }},
    {"UpsideDown", "from the top left",
     [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_BOTLEFT); }},
    {"OneColorMissing", "too few samples",
     [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB); }},
    {"HugeWidth", "65536 pixels on a side",
     [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 70000); }},
    {"MoreThanOneGibibyte", "more than 1 GiB",
     [](TIFF* tiff) {
         TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 65536);
         TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 65536);
         TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 1);
     }},
    {"MorePixelsThanBytes", "too short for its pixels",
     [](TIFF* tiff) {
         TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 30000);
         TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 30000);
         TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 1);
     }},
};

INSTANTIATE_TEST_SUITE_P(TiffFile, RefusedTiff, testing::ValuesIn(refused),
                         [](const auto& file) { return std::string{file.param.name}; });

TEST(TiffFile, ThatLosesPixelsInItsCompressionIsAProblem)
{
    const Folder folder;
    write_tiff(folder.file("a.tif"), test_picture(32, 32, Pixels::grey_8, 1), "w", [](TIFF* tiff) {
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_JPEG);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 8);
    });
    std::string problem;
    EXPECT_FALSE(zvsim::read_tiff(folder.file("a.tif"), problem));
    EXPECT_THAT(problem, HasSubstr("uses compression 7"));
}

} // namespace

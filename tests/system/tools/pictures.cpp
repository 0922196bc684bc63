#include "pictures.h"

#include <memory>
#include <stdexcept>

#include <png.h>
#include <tiffio.h>

namespace zvgentl::test {

namespace {

struct CloseTiff {
    void operator()(TIFF* tiff) const noexcept { TIFFClose(tiff); }
};

png_image empty_image()
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    return image;
}

} // namespace

GreyPicture read_png(const std::filesystem::path& file)
{
    png_image image = empty_image();
    if (png_image_begin_read_from_file(&image, file.string().c_str()) == 0 || image.format != PNG_FORMAT_GRAY)
        throw std::runtime_error("no grey PNG file of 8 bits: " + file.string());
    GreyPicture picture{image.width, image.height, 8, {}};
    picture.samples.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, picture.samples.data(), 0, nullptr) == 0)
        throw std::runtime_error("a damaged PNG file: " + file.string());
    return picture;
}

GreyPicture read_tiff(const std::filesystem::path& file)
{
    const std::unique_ptr<TIFF, CloseTiff> tiff(TIFFOpen(file.string().c_str(), "r"));
    if (!tiff)
        throw std::runtime_error("no TIFF file: " + file.string());
    GreyPicture picture;
    std::uint16_t bits = 0;
    std::uint16_t channels = 1;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &picture.width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &picture.height);
    TIFFGetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, &channels);
    if (channels != 1 || (bits != 8 && bits != 16))
        throw std::runtime_error("no grey TIFF file: " + file.string());
    picture.bits = bits;
    const std::size_t row = std::size_t{picture.width} * (bits / 8U);
    picture.samples.resize(row * picture.height);
    for (std::uint32_t y = 0; y < picture.height; ++y)
        if (TIFFReadScanline(tiff.get(), picture.samples.data() + y * row, y, 0) != 1)
            throw std::runtime_error("a damaged TIFF file: " + file.string());
    return picture;
}

void write_png(const std::filesystem::path& file, const GreyPicture& picture)
{
    png_image image = empty_image();
    image.width = picture.width;
    image.height = picture.height;
    image.format = PNG_FORMAT_GRAY;
    if (png_image_write_to_file(&image, file.string().c_str(), 0, picture.samples.data(), 0, nullptr) == 0)
        throw std::runtime_error("cannot write " + file.string());
}

} // namespace zvgentl::test

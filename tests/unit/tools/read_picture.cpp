#include "read_picture.h"

#include <csetjmp>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include <png.h>
#include <tiffio.h>

namespace zvgentl::test {

using tool::Picture;

namespace {

struct PngReader {
    png_structp png{png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr)};
    png_infop info{png_create_info_struct(png)};
    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }
};

// libpng leaves by longjmp when it fails: nothing that needs a destructor may live here.
bool read_all(const PngReader& reader, std::FILE* file)
{
    if (setjmp(png_jmpbuf(reader.png)) != 0)
        return false;
    png_init_io(reader.png, file);
    png_read_png(reader.png, reader.info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
    return true;
}

std::uint16_t tiff_field(TIFF* tiff, std::uint32_t tag)
{
    std::uint16_t value = 0;
    if (TIFFGetFieldDefaulted(tiff, tag, &value) != 1)
        throw std::runtime_error("a TIFF field is missing");
    return value;
}

} // namespace

Picture read_png(const std::filesystem::path& file)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.string().c_str(), "rb"),
                                                                 std::fclose);
    const PngReader reader;
    if (!stream || !read_all(reader, stream.get()))
        throw std::runtime_error("not a PNG file: " + file.string());
    Picture picture;
    picture.width = png_get_image_width(reader.png, reader.info);
    picture.height = png_get_image_height(reader.png, reader.info);
    picture.channels = png_get_channels(reader.png, reader.info);
    picture.bits = png_get_bit_depth(reader.png, reader.info);
    const png_bytepp rows = png_get_rows(reader.png, reader.info);
    for (std::uint32_t y = 0; y < picture.height; ++y)
        picture.samples.insert(picture.samples.end(), rows[y], rows[y] + picture.row_size());
    return picture;
}

Picture read_tiff(const std::filesystem::path& file)
{
    const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(TIFFOpen(file.string().c_str(), "r"), TIFFClose);
    if (!tiff)
        throw std::runtime_error("not a TIFF file: " + file.string());
    Picture picture;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &picture.width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &picture.height);
    picture.channels = tiff_field(tiff.get(), TIFFTAG_SAMPLESPERPIXEL);
    picture.bits = tiff_field(tiff.get(), TIFFTAG_BITSPERSAMPLE);
    picture.samples.resize(picture.row_size() * picture.height);
    for (std::uint32_t y = 0; y < picture.height; ++y)
        if (TIFFReadScanline(tiff.get(), picture.samples.data() + y * picture.row_size(), y, 0) != 1)
            throw std::runtime_error("a damaged TIFF file: " + file.string());
    return picture;
}

} // namespace zvgentl::test

#include "unit/simulator/tiff_files.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace zvsim_test {

namespace {

uint16_t field(TIFF* tiff, uint32_t tag)
{
    uint16_t value = 0;
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
}

void set_fields(TIFF* tiff, const TestPicture& picture)
{
    const bool is_grey = picture.pixels == Pixels::grey_8 || picture.pixels == Pixels::grey_16;
    const bool is_wide = picture.pixels == Pixels::grey_16 || picture.pixels == Pixels::rgb_16;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, is_grey ? 1 : 3);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, is_wide ? 16 : 8);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, is_grey ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 5);
}

} // namespace

void write_tiff(const std::filesystem::path& file, const TestPicture& picture, const char* mode,
                const std::function<void(TIFF*)>& change)
{
    const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff{TIFFOpen(file.string().c_str(), mode), &TIFFClose};
    if (tiff == nullptr)
        throw std::runtime_error{"cannot write " + file.string()};
    set_fields(tiff.get(), picture);
    change(tiff.get());
    std::vector<unsigned char> pixels = picture.in_memory();
    if (TIFFIsTiled(tiff.get()) != 0) {
        pixels.resize(static_cast<size_t>(TIFFTileSize(tiff.get())));
        TIFFWriteTile(tiff.get(), pixels.data(), 0, 0, 0, 0);
        return;
    }
    const auto row_size = static_cast<size_t>(TIFFScanlineSize(tiff.get()));
    pixels.resize(std::max(pixels.size(), row_size)); // at least one row, however long
    const bool has_planes = field(tiff.get(), TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
    const size_t planes = has_planes ? field(tiff.get(), TIFFTAG_SAMPLESPERPIXEL) : 1;
    size_t from = 0;
    for (size_t plane = 0; plane < planes; ++plane) {
        for (uint32_t row = 0; row < picture.height && from + row_size <= pixels.size();
             ++row, from += row_size)
            TIFFWriteScanline(tiff.get(), pixels.data() + from, row, static_cast<uint16_t>(plane));
    }
}

} // namespace zvsim_test

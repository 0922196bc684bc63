#include "pictures/PictureWriter.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <system_error>

#include <tiffio.h>

namespace zvgentl::tool {

namespace {

[[gnu::format(printf, 4, 0)]] int keep_message(TIFF* /*tiff*/, void* message, const char* /*module*/,
                                               const char* format, va_list arguments)
{
    std::array<char, 512> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    *static_cast<std::string*>(message) = text.data();
    return 1;
}

int ignore_warning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const noexcept { TIFFOpenOptionsFree(options); }
};

struct CloseTiff {
    void operator()(TIFF* tiff) const noexcept { TIFFClose(tiff); }
};

bool set_fields(TIFF* tiff, const Picture& picture)
{
    const auto samples = static_cast<std::uint16_t>(picture.channels);
    const std::uint16_t photometric = picture.channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB;
    bool done = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width) == 1 &&
                TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height) == 1 &&
                TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples) == 1 &&
                TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, static_cast<std::uint16_t>(picture.bits)) == 1 &&
                TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric) == 1 &&
                TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == 1 &&
                TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) == 1 &&
                TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0)) == 1;
    if (done && picture.channels == 4) {
        const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
        done = TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha) == 1;
    }
    return done;
}

bool write_rows(TIFF* tiff, const Picture& picture)
{
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        // The interface takes the row without const, but only reads it when the byte order is the machine's.
        auto* const row = const_cast<std::uint8_t*>(picture.samples.data() + y * picture.row_size());
        if (TIFFWriteScanline(tiff, row, y, 0) != 1)
            return false;
    }
    return TIFFFlush(tiff) == 1;
}

} // namespace

void TiffWriter::write_to(const std::filesystem::path& file, const Picture& picture) const
{
    std::string message;
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
    if (!options)
        throw std::runtime_error("libtiff cannot be used");
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep_message, &message);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignore_warning, nullptr);
    const std::unique_ptr<TIFF, CloseTiff> tiff(TIFFOpenExt(file.u8string().c_str(), "w", options.get()));
    if (!tiff || !set_fields(tiff.get(), picture) || !write_rows(tiff.get(), picture))
        throw std::runtime_error(message.empty() ? "libtiff gave no reason" : message);
}

} // namespace zvgentl::tool

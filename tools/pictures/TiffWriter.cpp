#include "pictures/PictureWriter.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <stdexcept>
#include <string>

#include <tiffio.h>

#include "platform/files.h"

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

// The file as libtiff sees it: it is open already, and stays so.
std::FILE* file_of(thandle_t handle) noexcept { return static_cast<std::FILE*>(handle); }

tmsize_t read_bytes(thandle_t handle, void* data, tmsize_t size)
{
    return static_cast<tmsize_t>(std::fread(data, 1, static_cast<std::size_t>(size), file_of(handle)));
}

tmsize_t write_bytes(thandle_t handle, void* data, tmsize_t size)
{
    return static_cast<tmsize_t>(std::fwrite(data, 1, static_cast<std::size_t>(size), file_of(handle)));
}

toff_t move_to(thandle_t handle, toff_t offset, int origin)
{
    const bool moved = platform::seek(file_of(handle), static_cast<std::int64_t>(offset), origin);
    return static_cast<toff_t>(moved ? platform::place_in(file_of(handle)) : -1);
}

int leave_open(thandle_t /*handle*/) { return 0; }

toff_t size_of(thandle_t handle)
{
    const std::int64_t place = platform::place_in(file_of(handle));
    const toff_t size = move_to(handle, 0, SEEK_END);
    return platform::seek(file_of(handle), place, SEEK_SET) ? size : 0;
}

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

void TiffWriter::write_to(std::FILE* file, const Picture& picture) const
{
    std::string message;
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
    if (!options)
        throw std::runtime_error("libtiff cannot be used");
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep_message, &message);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignore_warning, nullptr);
    const std::unique_ptr<TIFF, CloseTiff> tiff(TIFFClientOpenExt("picture", "w", file, read_bytes,
                                                                  write_bytes, move_to, leave_open, size_of,
                                                                  nullptr, nullptr, options.get()));
    if (!tiff || !set_fields(tiff.get(), picture) || !write_rows(tiff.get(), picture))
        throw std::runtime_error(message.empty() ? "libtiff gave no reason" : message);
}

} // namespace zvgentl::tool

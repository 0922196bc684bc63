#include "simulator/pictures/PictureFile.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <system_error>
#include <tuple>
#include <type_traits>

#include <tiffio.h>

namespace zvsim {

namespace {

/// Longer than any run of LZW codes, the best of the compressions that are read.
constexpr uint64_t best_compression = 3000;

/// The first error of a file. libtiff is C: what it calls must not throw, so the text has a fixed place.
using Message = std::array<char, 256>;

#ifdef __GNUC__
__attribute__((format(printf, 4, 0)))
#endif
int keep_first_error(TIFF* /*tiff*/, void* message, const char* /*module*/, const char* format, va_list arguments)
{
    auto& text = *static_cast<Message*>(message);
    if (text[0] == '\0')
        std::ignore = std::vsnprintf(text.data(), text.size(), format, arguments); // cut if too long
    return 1; // handled: the process-wide handlers belong to the application
}

int drop_warning(TIFF* /*tiff*/, void* /*user*/, const char* /*module*/, const char* /*format*/,
                 va_list /*arguments*/)
{
    return 1;
}

struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

/// libtiff has a function for each kind of letter that file names can have, and only that of the system.
template <class Letter>
TIFF* open_tiff_file(const Letter* name, TIFFOpenOptions* options)
{
    // Not mapped into memory ("m"): a file that shrinks meanwhile would end the process.
    if constexpr (std::is_same_v<Letter, char>)
        return TIFFOpenExt(name, "rm", options);
    else
        return TIFFOpenWExt(name, "rm", options);
}

Tiff open_tiff(const std::filesystem::path& file, uint64_t file_size, Message& message)
{
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options{TIFFOpenOptionsAlloc()};
    if (options == nullptr)
        return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep_first_error, &message);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), drop_warning, nullptr);
    // Tables take more room in memory than in the file, but no file needs more than this.
    const uint64_t most = std::min(picture_memory_limit, 4 * file_size + (uint64_t{16} << 20U));
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(most));
    return Tiff{open_tiff_file(file.c_str(), options.get())};
}

uint16_t number(TIFF* tiff, uint32_t tag)
{
    uint16_t value = 0;
    return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : uint16_t{0};
}

bool is_lossless(uint16_t compression)
{
    return compression == COMPRESSION_NONE || compression == COMPRESSION_LZW ||
           compression == COMPRESSION_ADOBE_DEFLATE || compression == COMPRESSION_DEFLATE ||
           compression == COMPRESSION_PACKBITS;
}

/// Why the pixels cannot be delivered exactly as stored; empty if they can.
std::string objection_to(TIFF* tiff)
{
    const uint16_t photometric = number(tiff, TIFFTAG_PHOTOMETRIC);
    const uint16_t samples = number(tiff, TIFFTAG_SAMPLESPERPIXEL);
    const uint16_t compression = number(tiff, TIFFTAG_COMPRESSION);
    if (TIFFIsTiled(tiff) != 0)
        return "is stored in tiles, not in strips";
    if (!is_lossless(compression))
        return "uses compression " + std::to_string(compression) + ", not LZW, deflate or PackBits";
    if (photometric == PHOTOMETRIC_PALETTE)
        return "has a palette";
    if (photometric != PHOTOMETRIC_MINISBLACK && photometric != PHOTOMETRIC_RGB)
        return "is neither grey from black to white nor RGB";
    const uint16_t wanted = photometric == PHOTOMETRIC_RGB ? 3 : 1;
    if (samples > wanted)
        return "has an alpha channel or other extra samples";
    if (samples < wanted)
        return "has too few samples for its colours";
    if (wanted == 3 && number(tiff, TIFFTAG_PLANARCONFIG) != PLANARCONFIG_CONTIG)
        return "stores its colours in separate planes";
    if (number(tiff, TIFFTAG_SAMPLEFORMAT) != SAMPLEFORMAT_UINT)
        return "does not hold unsigned numbers";
    if (number(tiff, TIFFTAG_ORIENTATION) != ORIENTATION_TOPLEFT)
        return "is not stored from the top left";
    return {};
}

PictureHeader header_of(TIFF* tiff)
{
    uint32_t width = 0;
    uint32_t height = 0;
    if (TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width) != 1 ||
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height) != 1)
        return {};
    return {width, height, number(tiff, TIFFTAG_SAMPLESPERPIXEL), number(tiff, TIFFTAG_BITSPERSAMPLE)};
}

/// Rows come in the byte order of the machine, which is that of the cameras.
bool read_rows(TIFF* tiff, Picture& picture)
{
    const size_t row_size = picture.row_size();
    if (static_cast<uint64_t>(TIFFScanlineSize64(tiff)) != row_size)
        return false;
    for (uint32_t row = 0; row < picture.height; ++row) {
        if (TIFFReadScanline(tiff, picture.pixels.data() + row * row_size, row, 0) != 1)
            return false;
    }
    return true;
}

} // namespace

std::optional<Picture> read_tiff(const std::filesystem::path& file, std::string& problem)
{
    std::error_code error;
    const uint64_t file_size = std::filesystem::file_size(file, error);
    if (error) {
        problem = "cannot be opened: " + error.message();
        return std::nullopt;
    }
    Message message{};
    const Tiff tiff = open_tiff(file, file_size, message);
    if (tiff == nullptr) {
        problem = message[0] != '\0' ? message.data() : "cannot be opened";
        return std::nullopt;
    }
    problem = objection_to(tiff.get());
    if (!problem.empty())
        return std::nullopt;
    auto picture = picture_for(header_of(tiff.get()), file_size, best_compression, problem);
    if (picture && !read_rows(tiff.get(), *picture)) {
        problem = message[0] != '\0' ? message.data() : "is damaged";
        return std::nullopt;
    }
    return picture;
}

} // namespace zvsim

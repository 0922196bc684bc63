#include "pictures/PictureWriter.h"

#include <csetjmp>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include <png.h>

namespace zvgentl::tool {

namespace {

constexpr int light_compression = 1;

/// libpng's writer with its two records; messages of the library end up in m_message.
class PngStruct {
public:
    PngStruct() : m_png(png_create_write_struct(PNG_LIBPNG_VER_STRING, &m_message, on_error, on_warning))
    {
        if (m_png != nullptr)
            m_info = png_create_info_struct(m_png);
    }
    ~PngStruct() { png_destroy_write_struct(&m_png, &m_info); }
    PngStruct(const PngStruct&) = delete;
    PngStruct& operator=(const PngStruct&) = delete;

    bool is_ready() const noexcept { return m_info != nullptr; }
    png_structp png() const noexcept { return m_png; }
    png_infop info() const noexcept { return m_info; }
    const std::string& message() const noexcept { return m_message; }

private:
    static void on_error(png_structp png, png_const_charp text)
    {
        *static_cast<std::string*>(png_get_error_ptr(png)) = text;
        png_longjmp(png, 1);
    }
    static void on_warning(png_structp /*png*/, png_const_charp /*text*/) {}

    std::string m_message;
    png_structp m_png{nullptr};
    png_infop m_info{nullptr};
};

int color_type(unsigned channels) noexcept
{
    if (channels == 4)
        return PNG_COLOR_TYPE_RGB_ALPHA;
    return channels == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY;
}

// libpng leaves by longjmp when it fails: nothing that needs a destructor may live in here.
bool encode(png_structp png, png_infop info, std::FILE* file, const Picture& picture, png_bytepp rows)
{
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_init_io(png, file);
    png_set_IHDR(png, info, picture.width, picture.height, static_cast<int>(picture.bits),
                 color_type(picture.channels), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, light_compression);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_write_info(png, info);
    if (picture.bits == 16)
        png_set_swap(png); // PNG keeps the high byte first
    png_write_image(png, rows);
    png_write_end(png, info);
    return true;
}

} // namespace

void PngWriter::write_to(std::FILE* file, const Picture& picture) const
{
    const PngStruct png;
    if (!png.is_ready())
        throw std::runtime_error("libpng cannot be used");

    std::vector<png_bytep> rows(picture.height);
    for (std::size_t y = 0; y < rows.size(); ++y)
        rows[y] = const_cast<png_bytep>(picture.samples.data() + y * picture.row_size()); // only read
    if (!encode(png.png(), png.info(), file, picture, rows.data()))
        throw std::runtime_error(png.message());
}

} // namespace zvgentl::tool

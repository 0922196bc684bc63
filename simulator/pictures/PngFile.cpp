#include "simulator/pictures/PngFile.h"

#include <csetjmp>
#include <cstdio>
#include <memory>

#include <png.h>

namespace zvsim {

namespace {

constexpr uint32_t largest_side = 65536;

struct CloseFile {
    void operator()(std::FILE* file) const { std::ignore = std::fclose(file); /* only read from */ }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::string& problem_of(png_structp png) { return *static_cast<std::string*>(png_get_error_ptr(png)); }

[[noreturn]] void on_error(png_structp png, png_const_charp message)
{
    problem_of(png) = message;
    png_longjmp(png, 1);
}

void on_warning(png_structp /*png*/, png_const_charp /*message*/) {}

/// The two structures that libpng works on.
class PngReader {
public:
    explicit PngReader(std::string& problem)
        : m_png{png_create_read_struct(PNG_LIBPNG_VER_STRING, &problem, on_error, on_warning)},
          m_info{m_png != nullptr ? png_create_info_struct(m_png) : nullptr}
    {
    }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_destroy_read_struct(&m_png, &m_info, nullptr); }

    bool is_ready() const { return m_info != nullptr; }
    png_structp png() const { return m_png; }
    png_infop info() const { return m_info; }

private:
    png_structp m_png;
    png_infop m_info;
};

// libpng leaves a failing call with longjmp, which runs no destructors: the two functions that contain a
// setjmp own nothing, and their callers own everything.

bool read_header(const PngReader& reader, std::FILE* file)
{
    if (setjmp(png_jmpbuf(reader.png())) != 0) // how libpng reports errors
        return false;
    png_init_io(reader.png(), file);
    png_set_user_limits(reader.png(), largest_side, largest_side);
    png_read_info(reader.png(), reader.info());
    return true;
}

bool read_rows(const PngReader& reader, png_bytepp rows)
{
    if (setjmp(png_jmpbuf(reader.png())) != 0) // how libpng reports errors
        return false;
    if (png_get_bit_depth(reader.png(), reader.info()) == 16)
        png_set_swap(reader.png()); // a file is big-endian
    png_read_image(reader.png(), rows);
    return true;
}

const PixelFormat* format_of(const PngReader& reader)
{
    const int depth = png_get_bit_depth(reader.png(), reader.info());
    switch (png_get_color_type(reader.png(), reader.info())) {
    case PNG_COLOR_TYPE_GRAY:
        return depth == 8 ? &pixel_format("Mono8") : depth == 16 ? &pixel_format("Mono16") : nullptr;
    case PNG_COLOR_TYPE_RGB:
        return depth == 8 ? &pixel_format("RGB8") : nullptr;
    default:
        return nullptr;
    }
}

} // namespace

std::optional<Picture> read_png(const std::filesystem::path& file, std::string& problem)
{
    const File stream{std::fopen(file.string().c_str(), "rb")};
    if (stream == nullptr) {
        problem = "cannot be opened";
        return std::nullopt;
    }
    const PngReader reader{problem};
    if (!reader.is_ready()) {
        problem = "out of memory";
        return std::nullopt;
    }
    if (!read_header(reader, stream.get()))
        return std::nullopt;
    const PixelFormat* const format = format_of(reader);
    if (format == nullptr) {
        problem = "is neither grey with 8 or 16 bit nor colour with 3 x 8 bit";
        return std::nullopt;
    }

    Picture picture;
    picture.width = png_get_image_width(reader.png(), reader.info());
    picture.height = png_get_image_height(reader.png(), reader.info());
    picture.format = format;
    const size_t row_size = size_t{picture.width} * (format->bits_per_pixel() / 8);
    picture.pixels.resize(row_size * picture.height);
    std::vector<png_bytep> rows(picture.height);
    for (size_t row = 0; row < rows.size(); ++row)
        rows[row] = picture.pixels.data() + row * row_size;
    if (!read_rows(reader, rows.data()))
        return std::nullopt;
    return picture;
}

} // namespace zvsim

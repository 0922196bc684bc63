#include "simulator/pictures/PictureFile.h"

#include <array>
#include <csetjmp>
#include <cstdio>
#include <memory>
#include <system_error>
#include <tuple>

#include <png.h>

#include "platform/files.h"

namespace zvsim {

namespace {

/// The most bytes that deflate can expand one byte to, and a few more.
constexpr uint64_t best_compression = 1100;

struct CloseFile {
    void operator()(std::FILE* file) const { std::ignore = std::fclose(file); /* only read from */ }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// libpng is C: what it calls must not throw, so the text of its error has a fixed place.
using Message = std::array<char, 256>;

[[noreturn]] void on_error(png_structp png, png_const_charp text)
{
    auto& message = *static_cast<Message*>(png_get_error_ptr(png));
    std::ignore = std::snprintf(message.data(), message.size(), "%s", text); // cut if too long
    png_longjmp(png, 1);
}

void on_warning(png_structp /*png*/, png_const_charp /*message*/) {}

/// The two structures that libpng works on.
class PngReader {
public:
    PngReader()
        : m_png{png_create_read_struct(PNG_LIBPNG_VER_STRING, &m_message, on_error, on_warning)},
          m_info{m_png != nullptr ? png_create_info_struct(m_png) : nullptr}
    {
    }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_destroy_read_struct(&m_png, &m_info, nullptr); }

    bool is_ready() const { return m_info != nullptr; }
    png_structp png() const { return m_png; }
    png_infop info() const { return m_info; }
    const char* message() const { return m_message.data(); }

private:
    Message m_message{};
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
    png_set_user_limits(reader.png(), PNG_UINT_31_MAX, PNG_UINT_31_MAX); // the caller looks at the size
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

/// Why the pixels cannot be delivered exactly as stored; empty if they can.
std::string objection_to(const PngReader& reader)
{
    const int color_type = png_get_color_type(reader.png(), reader.info());
    if ((color_type & PNG_COLOR_MASK_PALETTE) != 0)
        return "has a palette";
    if ((color_type & PNG_COLOR_MASK_ALPHA) != 0)
        return "has an alpha channel";
    return {};
}

PictureHeader header_of(const PngReader& reader)
{
    return {png_get_image_width(reader.png(), reader.info()),
            png_get_image_height(reader.png(), reader.info()), png_get_channels(reader.png(), reader.info()),
            png_get_bit_depth(reader.png(), reader.info())};
}

} // namespace

std::optional<Picture> read_png(const std::filesystem::path& file, std::string& problem)
{
    const File stream{platform::open_file(file)};
    if (stream == nullptr) {
        problem = "cannot be opened";
        return std::nullopt;
    }
    const PngReader reader;
    if (!reader.is_ready()) {
        problem = "does not fit into memory";
        return std::nullopt;
    }
    if (!read_header(reader, stream.get())) {
        problem = reader.message();
        return std::nullopt;
    }
    problem = objection_to(reader);
    if (!problem.empty())
        return std::nullopt;
    std::error_code error;
    const uint64_t file_size = std::filesystem::file_size(file, error);
    auto picture = picture_for(header_of(reader), error ? 0 : file_size, best_compression, problem);
    if (!picture)
        return std::nullopt;
    std::vector<png_bytep> rows(picture->height);
    for (size_t row = 0; row < rows.size(); ++row)
        rows[row] = picture->pixels.data() + row * picture->row_size();
    if (!read_rows(reader, rows.data())) {
        problem = reader.message();
        return std::nullopt;
    }
    return picture;
}

} // namespace zvsim

#include "unit/simulator/picture_files.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <utility>

#include <png.h>

namespace zvsim_test {

namespace {

struct Kind {
    int color_type;
    int bit_depth;
    size_t channels;
};

/// In the order of Pixels.
constexpr Kind kinds[] = {{PNG_COLOR_TYPE_GRAY, 1, 1},      {PNG_COLOR_TYPE_GRAY, 8, 1},
                          {PNG_COLOR_TYPE_GRAY, 16, 1},     {PNG_COLOR_TYPE_RGB, 8, 3},
                          {PNG_COLOR_TYPE_RGB, 16, 3},      {PNG_COLOR_TYPE_GRAY_ALPHA, 8, 2},
                          {PNG_COLOR_TYPE_RGB_ALPHA, 8, 4}, {PNG_COLOR_TYPE_PALETTE, 8, 1}};

Kind kind_of(Pixels pixels) { return kinds[static_cast<size_t>(pixels)]; }

size_t row_size(const TestPicture& picture)
{
    const Kind kind = kind_of(picture.pixels);
    return (picture.width * kind.channels * static_cast<size_t>(kind.bit_depth) + 7) / 8;
}

[[noreturn]] void on_error(png_structp /*png*/, png_const_charp message)
{
    std::fprintf(stderr, "libpng: %s\n", message);
    std::abort();
}

void set_fields(TIFF* tiff, const TestPicture& picture)
{
    const Kind kind = kind_of(picture.pixels);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(kind.channels));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bit_depth);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 5);
}

} // namespace

Folder::Folder()
{
    std::string name = (std::filesystem::temp_directory_path() / "zvsim-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error{"no temporary folder"};
    m_path = name;
}

Folder::~Folder()
{
    std::error_code ignored; // what cannot be removed stays behind
    std::filesystem::remove_all(m_path, ignored);
}

void Folder::write(const std::filesystem::path& name, const std::string& content) const
{
    std::filesystem::create_directories((m_path / name).parent_path());
    std::ofstream{m_path / name, std::ios::binary} << content;
}

std::string text_of(const std::filesystem::path& file)
{
    std::ifstream stream{file, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

Variable::Variable(std::string name, const std::string& value) : m_name{std::move(name)}
{
    if (const char* const before = std::getenv(m_name.c_str()))
        m_before = before;
    setenv(m_name.c_str(), value.c_str(), 1);
}

Variable::~Variable()
{
    if (m_before)
        setenv(m_name.c_str(), m_before->c_str(), 1);
    else
        unsetenv(m_name.c_str());
}

std::vector<unsigned char> TestPicture::in_memory() const
{
    std::vector<unsigned char> memory = bytes;
    if (kind_of(pixels).bit_depth == 16) {
        for (size_t at = 0; at + 1 < memory.size(); at += 2)
            std::swap(memory[at], memory[at + 1]);
    }
    return memory;
}

TestPicture test_picture(uint32_t width, uint32_t height, Pixels pixels, unsigned seed)
{
    TestPicture picture{width, height, pixels, false, {}};
    picture.bytes.resize(row_size(picture) * height);
    std::mt19937 random{seed};
    for (auto& byte : picture.bytes)
        byte = static_cast<unsigned char>(random());
    return picture;
}

void write_png(const std::filesystem::path& file, const TestPicture& picture)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream{std::fopen(file.string().c_str(), "wb"),
                                                                 &std::fclose};
    if (stream == nullptr)
        throw std::runtime_error{"cannot write " + file.string()};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, on_error, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, stream.get());
    const Kind kind = kind_of(picture.pixels);
    png_set_user_limits(png, picture.width, picture.height);
    png_set_IHDR(png, info, picture.width, picture.height, kind.bit_depth, kind.color_type,
                 picture.is_interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
                 PNG_FILTER_TYPE_BASE);
    png_set_gAMA(png, info, 0.45455); // a reader that honours it changes the pixels
    if (picture.pixels == Pixels::palette_8) {
        const std::vector<png_color> colors(256);
        png_set_PLTE(png, info, colors.data(), static_cast<int>(colors.size()));
    }
    png_write_info(png, info);
    std::vector<unsigned char> bytes = picture.bytes;
    std::vector<png_bytep> rows;
    for (size_t at = 0; at < bytes.size(); at += row_size(picture))
        rows.push_back(bytes.data() + at);
    if (bytes.empty()) {
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("IDAT"), nullptr, 0);
    } else {
        png_write_image(png, rows.data());
        png_write_end(png, nullptr);
    }
    png_destroy_write_struct(&png, &info);
}

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
    for (uint32_t row = 0; row < picture.height && (row + 1) * row_size <= pixels.size(); ++row)
        TIFFWriteScanline(tiff.get(), pixels.data() + row * row_size, row);
}

void write_picture(const std::filesystem::path& file, const TestPicture& picture)
{
    const std::string extension = file.extension().string();
    if (extension == ".png" || extension == ".PNG")
        write_png(file, picture);
    else
        write_tiff(file, picture);
}

} // namespace zvsim_test

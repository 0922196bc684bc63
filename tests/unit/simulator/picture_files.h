#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <tiffio.h>

// What a test puts around the library: folders, pictures, environment variables.

namespace zvsim_test {

/// A new, empty folder that is removed with the object.
class Folder {
public:
    Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder();

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path file(const std::string& name) const { return m_path / name; }
    /// With the folders that lead to the file.
    void write(const std::filesystem::path& name, const std::string& content) const;

private:
    std::filesystem::path m_path;
};

std::string text_of(const std::filesystem::path& file);

/// An environment variable for the length of a test; afterwards it is as before.
class Variable {
public:
    Variable(std::string name, const std::string& value);
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable();

private:
    std::string m_name;
    std::optional<std::string> m_before;
};

/// Kinds of pictures, by the samples of a pixel.
enum class Pixels { grey_1, grey_8, grey_16, rgb_8, rgb_16, grey_alpha_8, rgba_8, palette_8 };

struct TestPicture {
    uint32_t width{0};
    uint32_t height{0};
    Pixels pixels{Pixels::grey_8};
    bool is_interlaced{false};
    /// As a file holds them: 16-bit values big-endian.
    std::vector<unsigned char> bytes;

    /// What a camera delivers: 16-bit values little-endian.
    std::vector<unsigned char> in_memory() const;
};

/// A picture with every byte made from `seed`.
TestPicture test_picture(uint32_t width, uint32_t height, Pixels pixels, unsigned seed);
/// A picture without bytes is only claimed: it may have any size.
void write_png(const std::filesystem::path& file, const TestPicture& picture);

/// Writes a grey or colour picture; `mode` as TIFFOpen() has it. The fields that `change` sets
/// come last and may be wrong; then as many of the pixels are written as the file has room for.
void write_tiff(
    const std::filesystem::path& file, const TestPicture& picture, const char* mode = "w",
    const std::function<void(TIFF*)>& change = [](TIFF*) {});

/// A PNG file or a TIFF file, as its name says.
void write_picture(const std::filesystem::path& file, const TestPicture& picture);

} // namespace zvsim_test

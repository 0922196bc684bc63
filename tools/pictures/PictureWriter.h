#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>

#include "pictures/Picture.h"

namespace zvgentl::tool {

enum class FileFormat { png, tiff };

/// Writes pictures as files of one format. Threads may share a writer.
class PictureWriter {
public:
    virtual ~PictureWriter() = default;

    /// The ending of its files' names, with the dot.
    virtual const char* extension() const noexcept = 0;

    /// Writes the file, in place of one of that name. Throws std::runtime_error, and leaves no part of a file
    /// behind: until the picture is complete it has another name, which nobody can foresee.
    void write(const std::filesystem::path& file, const Picture& picture) const;

protected:
    virtual void write_to(std::FILE* file, const Picture& picture) const = 0;
};

/// PNG, compressed lightly: keeping up with the camera matters more than the last percent of size.
class PngWriter final : public PictureWriter {
public:
    const char* extension() const noexcept override { return ".png"; }

protected:
    void write_to(std::FILE* file, const Picture& picture) const override;
};

/// TIFF without compression.
class TiffWriter final : public PictureWriter {
public:
    const char* extension() const noexcept override { return ".tiff"; }

protected:
    void write_to(std::FILE* file, const Picture& picture) const override;
};

/// Removes what writers that were killed have left in the folder.
void remove_unfinished_pictures(const std::filesystem::path& folder) noexcept;

std::unique_ptr<PictureWriter> make_writer(FileFormat format);

} // namespace zvgentl::tool

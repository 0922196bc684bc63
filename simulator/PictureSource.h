/// \file PictureSource.h
/// Where the pixels of a frame come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace zvsim {

struct CameraModel;

/// The pictures of one acquisition. Made by the starting thread, then used by the stream's thread alone;
/// drawing allocates nothing.
class PictureSource {
public:
    PictureSource() = default;
    PictureSource(const PictureSource&) = delete;
    PictureSource& operator=(const PictureSource&) = delete;
    virtual ~PictureSource() = default;

    /// Writes the frame of this number to `target`, as much of it as fits into `size` bytes and nothing
    /// beyond.
    virtual void draw(uint64_t frame, unsigned char* target, size_t size) = 0;
};

std::unique_ptr<PictureSource> make_picture_source(const CameraModel& camera);

} // namespace zvsim

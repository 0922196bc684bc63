/// \file PictureSource.h
/// Where the pixels of a frame come from.
#pragma once

#include "simulator/Settings.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace zvsim {

class CameraDevice;

/// What a frame is drawn with. Everything else is fixed for the length of an acquisition.
struct Exposure {
    uint64_t frame; ///< Its number since the start.
    TestPattern pattern;
    double brightness; ///< 1: nominal.
};

/// The pictures of one acquisition. Made by the starting thread, then used by the stream's thread alone;
/// drawing allocates nothing.
class PictureSource {
public:
    PictureSource() = default;
    PictureSource(const PictureSource&) = delete;
    PictureSource& operator=(const PictureSource&) = delete;
    virtual ~PictureSource() = default;

    /// Writes the frame to `target`, as much of it as fits into `size` bytes and nothing beyond.
    virtual void draw(const Exposure& exposure, unsigned char* target, size_t size) = 0;
};

/// Pictures of the camera's present size, offset and format.
std::unique_ptr<PictureSource> make_picture_source(const CameraDevice& camera);

} // namespace zvsim

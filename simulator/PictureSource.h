#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "simulator/Settings.h"

namespace zvsim {

class CameraDevice;

/// What a frame is drawn with. Everything else is fixed for the length of an acquisition.
struct Exposure {
    /// Its number since the start.
    uint64_t frame;
    TestPattern pattern;
    /// 1: nominal.
    double brightness;
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

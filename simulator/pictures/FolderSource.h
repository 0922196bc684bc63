#pragma once

#include "simulator/PictureSource.h"
#include "simulator/pictures/FrameEncoder.h"

namespace zvsim {

class PictureFolder;
struct Picture;

/// A picture as a camera's window shows it; black beyond its borders.
class PictureScene final : public Scene {
public:
    PictureScene(const PictureFolder& folder, uint32_t left, uint32_t bits)
        : m_folder{folder}, m_left{left}, m_bits{bits}
    {
    }

    uint64_t row_kind(ScenePlace place) const override { return place.y; }
    void draw(ScenePlace place, SceneRow& row) const override;

private:
    const PictureFolder& m_folder;
    uint32_t m_left;
    uint32_t m_bits;
};

/// The folder's pictures in a loop: bit for bit when the camera has their pixel format and nominal
/// brightness, else converted to what it has.
class FolderSource final : public PictureSource {
public:
    FolderSource(const CameraDevice& camera, const PictureFolder& folder);

    void draw(const Exposure& exposure, unsigned char* target, size_t size) override;

private:
    void copy(const Exposure& exposure, unsigned char* target, size_t size) const;

    const PictureFolder& m_folder;
    PictureScene m_scene;
    FrameEncoder m_encoder;
    size_t m_segments;
    size_t m_rows;
    size_t m_left;
    size_t m_top;
    size_t m_width;
    /// The window lies within the pictures, and the format is theirs.
    bool m_can_copy{false};
};

} // namespace zvsim

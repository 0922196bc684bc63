/// \file FolderSource.h
/// Plays the pictures of a folder.
#pragma once

#include "simulator/PictureSource.h"

namespace zvsim {

class PictureFolder;

/// The folder's pictures in a loop, bit for bit.
class FolderSource final : public PictureSource {
public:
    explicit FolderSource(const PictureFolder& folder) : m_folder{folder} {}

    void draw(const Exposure& exposure, unsigned char* target, size_t size) override;

private:
    const PictureFolder& m_folder;
};

} // namespace zvsim

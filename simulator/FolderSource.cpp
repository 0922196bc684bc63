#include "simulator/FolderSource.h"

#include "simulator/PictureFolder.h"

#include <algorithm>
#include <cstring>

namespace zvsim {

void FolderSource::draw(const Exposure& exposure, unsigned char* target, size_t size)
{
    const auto& pixels = m_folder.picture(exposure.frame).pixels;
    std::memcpy(target, pixels.data(), std::min(size, pixels.size()));
}

} // namespace zvsim

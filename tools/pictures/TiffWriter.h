#pragma once

#include "pictures/PictureWriter.h"

namespace zvgentl::tool {

/// TIFF without compression.
class TiffWriter final : public PictureWriter {
public:
    const char* extension() const noexcept override { return ".tiff"; }

protected:
    void write_to(const std::filesystem::path& file, const Picture& picture) const override;
};

} // namespace zvgentl::tool

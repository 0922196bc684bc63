#pragma once

#include "pictures/PictureWriter.h"

namespace zvgentl::tool {

/// PNG, compressed lightly: keeping up with the camera matters more than the last percent of size.
class PngWriter final : public PictureWriter {
public:
    const char* extension() const noexcept override { return ".png"; }

protected:
    void write_to(const std::filesystem::path& file, const Picture& picture) const override;
};

} // namespace zvgentl::tool

#include "pictures/PictureWriter.h"

#include <stdexcept>
#include <system_error>

namespace zvgentl::tool {

void PictureWriter::write(const std::filesystem::path& file, const Picture& picture) const
{
    // Under another name until it is complete, so that no reader and no full disk ever leaves half a picture.
    std::filesystem::path part = file;
    part += ".part";
    try {
        write_to(part, picture);
        std::filesystem::rename(part, file);
    } catch (const std::exception& reason) {
        std::error_code ignored;
        std::filesystem::remove(part, ignored);
        throw std::runtime_error("cannot write " + file.u8string() + ": " + reason.what());
    }
}

std::unique_ptr<PictureWriter> make_writer(FileFormat format)
{
    if (format == FileFormat::tiff)
        return std::make_unique<TiffWriter>();
    return std::make_unique<PngWriter>();
}

} // namespace zvgentl::tool

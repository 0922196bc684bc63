#include <filesystem>
#include <fstream>

#include "hostile/input.h"
#include "platform/paths.h"
#include "simulator/pictures/PictureFile.h"

using namespace zvsim;

namespace {

namespace fs = std::filesystem;

/// A file of this process, for one input after the other.
class File {
public:
    File()
        : m_folder(platform::make_private_folder("zvgentl-hostile-")),
          m_file(m_folder / ("picture." ZV_PICTURE_KIND))
    {
    }
    ~File()
    {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const fs::path& with(const std::string& content) const
    {
        std::ofstream(m_file, std::ios::binary) << content;
        return m_file;
    }

private:
    fs::path m_folder;
    fs::path m_file;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const File file;
    std::string problem;
    const auto picture = read_picture(file.with(zvhostile::text_of(data, size)), problem);
    zvhostile::require(picture.has_value() == problem.empty(), "there is a picture or a problem");
    if (picture) {
        zvhostile::require(picture->format != nullptr && picture->height > 0,
                           "a picture has a format and rows");
        zvhostile::require(picture->pixels.size() <= picture_memory_limit, "a picture has a bounded size");
        zvhostile::require(picture->row_size() >= picture->width, "a row has all its pixels");
    }
    return 0;
}

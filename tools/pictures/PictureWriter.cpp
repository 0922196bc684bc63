#include "pictures/PictureWriter.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "platform/files.h"
#include "platform/leftovers.h"

namespace zvgentl::tool {

namespace {

constexpr const char* part_prefix = "frame-";
constexpr const char* part_suffix = ".part";

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void fail() { throw std::system_error(errno, std::generic_category()); }

} // namespace

void PictureWriter::write(const std::filesystem::path& file, const Picture& picture) const
{
    const std::filesystem::path part = file.parent_path() / platform::working_name(part_prefix, part_suffix);
    bool is_ours = false;
    try {
        File stream(platform::create_file(part, platform::Readers::usual));
        if (!stream)
            fail();
        is_ours = true;
        write_to(stream.get(), picture);
        if (std::fclose(stream.release()) != 0) // the last bytes may find the disk full
            fail();
        std::error_code error;
        std::filesystem::rename(part, file, error);
        if (error)
            throw std::system_error(error); // whose text is the system's reason alone
    } catch (const std::exception& reason) {
        std::error_code ignored;
        if (is_ours)
            std::filesystem::remove(part, ignored);
        throw std::runtime_error("cannot write " + file.u8string() + ": " + reason.what());
    }
}

void remove_unfinished_pictures(const std::filesystem::path& folder) noexcept
{
    platform::remove_leftovers(folder, part_prefix, part_suffix);
}

std::unique_ptr<PictureWriter> make_writer(FileFormat format)
{
    if (format == FileFormat::tiff)
        return std::make_unique<TiffWriter>();
    return std::make_unique<PngWriter>();
}

} // namespace zvgentl::tool

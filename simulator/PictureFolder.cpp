#include "simulator/PictureFolder.h"

#include <algorithm>
#include <system_error>

namespace zvsim {

namespace {

std::vector<std::filesystem::path> picture_files(const std::filesystem::path& folder, std::error_code& error)
{
    std::vector<std::filesystem::path> files;
    std::filesystem::directory_iterator entry{folder, error};
    for (; !error && entry != std::filesystem::directory_iterator{}; entry.increment(error)) {
        std::error_code ignored; // a file that cannot be examined is not a regular file
        if (is_picture_file(entry->path()) && entry->is_regular_file(ignored))
            files.push_back(entry->path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

std::unique_ptr<const PictureFolder> PictureFolder::read(const std::filesystem::path& folder,
                                                         std::vector<std::string>& warnings, uint64_t memory)
{
    std::error_code error;
    const auto files = picture_files(folder, error);
    if (error) {
        warnings.push_back("picture folder " + folder.u8string() + " cannot be read: " + error.message());
        return nullptr;
    }
    auto pictures = std::make_unique<PictureFolder>();
    for (const auto& file : files) {
        std::string problem;
        auto picture = read_picture(file, problem);
        if (picture && pictures->accepts(*picture, memory, problem)) {
            pictures->m_size += picture->pixels.size();
            pictures->m_pictures.push_back(std::move(*picture));
        } else {
            warnings.push_back("picture " + file.u8string() + " is left out: " + problem);
        }
    }
    if (pictures->m_pictures.empty()) {
        warnings.push_back("picture folder " + folder.u8string() + " holds no usable PNG or TIFF picture");
        return nullptr;
    }
    return pictures;
}

bool PictureFolder::accepts(const Picture& picture, uint64_t memory, std::string& problem) const
{
    if (!m_pictures.empty() &&
        (picture.width != width() || picture.height != height() || picture.format != &format())) {
        problem = "its size or pixel format differs from the first picture";
        return false;
    }
    if (picture.pixels.size() > memory - m_size) {
        problem = "all pictures together would take more than 1 GiB";
        return false;
    }
    return true;
}

} // namespace zvsim

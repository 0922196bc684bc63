#include "gentl/Description.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <stdexcept>
#include <tuple>

#include <zip.h>

namespace zvgentl::tool {

namespace {

struct DiscardArchive {
    void operator()(zip_t* archive) const noexcept { zip_discard(archive); }
};
struct CloseFile {
    void operator()(zip_file_t* file) const noexcept { std::ignore = zip_fclose(file); }
};

/// libzip's report of a failed call.
class ZipError {
public:
    ZipError() { zip_error_init(&m_error); }
    ~ZipError() { zip_error_fini(&m_error); }
    ZipError(const ZipError&) = delete;
    ZipError& operator=(const ZipError&) = delete;

    zip_error_t* get() { return &m_error; }
    std::string text() { return zip_error_strerror(&m_error); }

private:
    zip_error_t m_error{};
};

[[noreturn]] void refuse(const DescriptionFile& file, const std::string& reason)
{
    throw std::runtime_error("the port's description " + file.name + " cannot be unpacked: " + reason +
                             "; `zvgentl xml --raw` saves it as it is");
}

bool is_packed(const std::string& name)
{
    const std::string ending = ".zip";
    return name.size() >= ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), name.rbegin(), [](char expected, unsigned char letter) {
               return expected == static_cast<char>(std::tolower(letter));
           });
}

std::unique_ptr<zip_t, DiscardArchive> open_archive(const DescriptionFile& file)
{
    ZipError error;
    zip_source_t* const source = zip_source_buffer_create(file.data.data(), file.data.size(), 0, error.get());
    if (source == nullptr)
        refuse(file, error.text());
    std::unique_ptr<zip_t, DiscardArchive> archive(zip_open_from_source(source, ZIP_RDONLY, error.get()));
    if (!archive) {
        zip_source_free(source); // an opened archive owns it
        refuse(file, error.text());
    }
    return archive;
}

/// The first file whose name ends in .xml; the only one, if there is just one.
zip_int64_t find_member(zip_t* archive, const DescriptionFile& file)
{
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* const name = zip_get_name(archive, static_cast<zip_uint64_t>(i), 0);
        const std::string text = name == nullptr ? "" : name;
        if (text.size() > 4 &&
            (text.substr(text.size() - 4) == ".xml" || text.substr(text.size() - 4) == ".XML"))
            return i;
    }
    if (count != 1)
        refuse(file, "it holds no file whose name ends in .xml");
    return 0;
}

/// The size that the archive claims is not believed: what comes out is counted.
std::string read_member(zip_t* archive, zip_int64_t index, const DescriptionFile& file, std::size_t limit)
{
    const std::unique_ptr<zip_file_t, CloseFile> member(
        zip_fopen_index(archive, static_cast<zip_uint64_t>(index), 0));
    if (!member)
        refuse(file, zip_strerror(archive));
    std::string text;
    std::string part(std::size_t{64} << 10U, '\0');
    for (;;) {
        const zip_int64_t count = zip_fread(member.get(), part.data(), part.size());
        if (count < 0)
            refuse(file, zip_file_strerror(member.get()));
        if (count == 0)
            return text;
        text.append(part, 0, static_cast<std::size_t>(count));
        if (text.size() > limit)
            refuse(file, "it unpacks to more than the allowed " + std::to_string(limit) + " bytes");
    }
}

std::string without_zeros(std::string text)
{
    text.erase(text.find_last_not_of('\0') + 1);
    return text;
}

} // namespace

DescriptionFile read_description(const Registers& port, const std::vector<std::string>& urls)
{
    if (urls.empty())
        throw std::runtime_error("the port has no description of its registers");
    // Other kinds may stand beside the one that we read; if there is none, the first one says why.
    const auto usable = std::find_if(urls.begin(), urls.end(), [](const std::string& url) {
        try {
            parse_port_url(url);
            return true;
        } catch (const std::runtime_error&) {
            return false;
        }
    });
    const PortUrl url = parse_port_url(usable == urls.end() ? urls.front() : *usable);
    DescriptionFile file;
    file.name = url.file_name;
    file.data.resize(url.length);
    port.read(url.address, file.data.data(), file.data.size());
    return file;
}

std::string unpack(const DescriptionFile& file, std::size_t limit)
{
    if (!is_packed(file.name))
        return without_zeros(file.data);
    const auto archive = open_archive(file);
    return without_zeros(read_member(archive.get(), find_member(archive.get(), file), file, limit));
}

} // namespace zvgentl::tool

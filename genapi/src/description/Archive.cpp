#include "description/Archive.h"

#include <algorithm>
#include <memory>
#include <tuple>

#include <zip.h>

#include "zvgenapi/Error.h"

namespace zvgenapi {

namespace {

constexpr std::size_t part_size = std::size_t{64} << 10U;

struct DiscardArchive {
    void operator()(zip_t* archive) const noexcept { zip_discard(archive); }
};
struct CloseFile {
    void operator()(zip_file_t* file) const noexcept { std::ignore = zip_fclose(file); }
};
using Archive = std::unique_ptr<zip_t, DiscardArchive>;

[[noreturn]] void refuse(const std::string& reason)
{
    throw Error(ErrorKind::description, "the archive cannot be unpacked: " + reason);
}

Archive open_archive(std::string_view bytes)
{
    zip_error_t error;
    zip_error_init(&error);
    const std::unique_ptr<zip_error_t, decltype(&zip_error_fini)> fini(&error, &zip_error_fini);
    zip_source_t* const source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
    if (source == nullptr)
        refuse(zip_error_strerror(&error));
    Archive archive(zip_open_from_source(source, ZIP_RDONLY, &error));
    if (!archive) {
        zip_source_free(source); // an opened archive owns it
        refuse(zip_error_strerror(&error));
    }
    return archive;
}

bool is_xml_name(std::string_view name)
{
    constexpr std::string_view ending = ".xml";
    return name.size() >= ending.size() &&
           std::equal(ending.begin(), ending.end(), name.end() - ending.size(),
                      [](char wanted, char letter) { return wanted == letter || wanted == (letter | 0x20); });
}

zip_uint64_t find_member(zip_t* archive)
{
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* const name = zip_get_name(archive, static_cast<zip_uint64_t>(i), 0);
        if (name != nullptr && is_xml_name(name))
            return static_cast<zip_uint64_t>(i);
    }
    if (count != 1)
        refuse("it contains no file whose name ends in .xml");
    return 0;
}

} // namespace

bool is_archive(std::string_view bytes) noexcept { return bytes.substr(0, 4) == "PK\x03\x04"; }

std::string unpack(std::string_view bytes, std::size_t most_bytes)
{
    const Archive archive = open_archive(bytes);
    const std::unique_ptr<zip_file_t, CloseFile> member(
        zip_fopen_index(archive.get(), find_member(archive.get()), 0));
    if (!member)
        refuse(zip_strerror(archive.get()));
    std::string text;
    std::string part(part_size, '\0');
    for (;;) {
        const zip_int64_t count = zip_fread(member.get(), part.data(), part.size());
        if (count < 0)
            refuse(zip_file_strerror(member.get()));
        if (count == 0)
            return text;
        text.append(part, 0, static_cast<std::size_t>(count));
        if (text.size() > most_bytes)
            throw Error(ErrorKind::limit,
                        "the archive unpacks to more than " + std::to_string(most_bytes) + " bytes");
    }
}

} // namespace zvgenapi

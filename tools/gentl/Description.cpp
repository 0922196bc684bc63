#include "gentl/Description.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <tuple>

#include <zip.h>

#include "gentl/texts.h"

namespace zvgentl::tool {

namespace {

constexpr std::size_t longest_shown = 200;

/// The URL as an error message shows it: on one line, of bounded length.
std::string shown(const std::string& url)
{
    std::string text = url.substr(0, longest_shown);
    std::replace_if(
        text.begin(), text.end(), [](unsigned char letter) { return std::iscntrl(letter) != 0; }, '?');
    return "\"" + text + (url.size() > longest_shown ? "...\"" : "\"");
}

[[noreturn]] void refuse_url(const std::string& url, const std::string& reason)
{
    throw std::runtime_error("the port's description cannot be read from " + shown(url) + ": " + reason);
}

void check_scheme(const std::string& url)
{
    const std::size_t colon = url.find(':');
    if (colon == std::string::npos)
        refuse_url(url, "it has no scheme; expected Local:name;address;length");
    const std::string scheme = lower_case(url.substr(0, colon));
    if (scheme == "file" || scheme == "http" || scheme == "https")
        refuse_url(url,
                   "descriptions at " + scheme + ": URLs are not supported, only those stored in the device");
    if (scheme != "local")
        refuse_url(url, "unknown scheme; expected Local:name;address;length");
}

std::uint64_t number(const std::string& url, const char* what, std::string text)
{
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
        text.erase(0, 2);
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value, 16);
    if (error == std::errc::result_out_of_range)
        refuse_url(url, std::string(what) + " does not fit into 64 bits");
    if (error != std::errc() || stopped != end)
        refuse_url(url, std::string(what) + " is not a hexadecimal number");
    return value;
}

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

[[noreturn]] void refuse_file(const DescriptionFile& file, const std::string& reason)
{
    throw std::runtime_error("the port's description " + file.name + " cannot be unpacked: " + reason +
                             "; `zvgentl xml --raw` saves it exactly as stored");
}

std::unique_ptr<zip_t, DiscardArchive> open_archive(const DescriptionFile& file)
{
    ZipError error;
    zip_source_t* const source = zip_source_buffer_create(file.data.data(), file.data.size(), 0, error.get());
    if (source == nullptr)
        refuse_file(file, error.text());
    std::unique_ptr<zip_t, DiscardArchive> archive(zip_open_from_source(source, ZIP_RDONLY, error.get()));
    if (!archive) {
        zip_source_free(source); // an opened archive owns it
        refuse_file(file, error.text());
    }
    return archive;
}

/// The first file whose name ends in .xml; the only one, if there is just one.
zip_int64_t find_member(zip_t* archive, const DescriptionFile& file)
{
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* const name = zip_get_name(archive, static_cast<zip_uint64_t>(i), 0);
        if (name != nullptr && ends_in(lower_case(name), ".xml"))
            return i;
    }
    if (count != 1)
        refuse_file(file, "it contains no file whose name ends in .xml");
    return 0;
}

/// The size that the archive claims is not believed: what comes out is counted.
std::string read_member(zip_t* archive, zip_int64_t index, const DescriptionFile& file, std::size_t limit)
{
    const std::unique_ptr<zip_file_t, CloseFile> member(
        zip_fopen_index(archive, static_cast<zip_uint64_t>(index), 0));
    if (!member)
        refuse_file(file, zip_strerror(archive));
    std::string text;
    std::string part(std::size_t{64} << 10U, '\0');
    for (;;) {
        const zip_int64_t count = zip_fread(member.get(), part.data(), part.size());
        if (count < 0)
            refuse_file(file, zip_file_strerror(member.get()));
        if (count == 0)
            return text;
        text.append(part, 0, static_cast<std::size_t>(count));
        if (text.size() > limit)
            refuse_file(file, "it unpacks to more than the allowed " + std::to_string(limit) + " bytes");
    }
}

std::string without_zeros(std::string text)
{
    text.erase(text.find_last_not_of('\0') + 1);
    return text;
}

} // namespace

PortUrl parse_port_url(const std::string& url)
{
    check_scheme(url);
    const std::string place = url.substr(0, url.find('?')); // what follows is the version of the schema
    const std::size_t start = std::min(place.find_first_not_of('/', place.find(':') + 1), place.size());
    const std::size_t first = place.find(';', start);
    const std::size_t second = first == std::string::npos ? first : place.find(';', first + 1);
    if (second == std::string::npos || place.find(';', second + 1) != std::string::npos)
        refuse_url(url, "expected three parts, Local:name;address;length");

    PortUrl parsed;
    parsed.file_name = place.substr(start, first - start);
    if (parsed.file_name.empty())
        refuse_url(url, "it has no file name");
    parsed.address = number(url, "the address", place.substr(first + 1, second - first - 1));
    const std::uint64_t length = number(url, "the length", place.substr(second + 1));
    if (length == 0)
        refuse_url(url, "the length is 0");
    if (length > largest_description)
        refuse_url(url, "the length of " + std::to_string(length) + " bytes is above the limit of 64 MiB");
    if (parsed.address + (length - 1) < parsed.address)
        refuse_url(url, "it reaches beyond the last address");
    parsed.length = static_cast<std::size_t>(length);
    return parsed;
}

DescriptionFile read_description(const Registers& port, const std::vector<std::string>& urls)
{
    if (urls.empty())
        throw std::runtime_error("the port has no description of its registers");
    // Some may be of other kinds. If all are, the first one gives the reason.
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
    if (!ends_in(lower_case(file.name), ".zip"))
        return without_zeros(file.data);
    const auto archive = open_archive(file);
    return without_zeros(read_member(archive.get(), find_member(archive.get(), file), file, limit));
}

} // namespace zvgentl::tool

#include "gentl/PortUrl.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <stdexcept>
#include <system_error>

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

[[noreturn]] void refuse(const std::string& url, const std::string& reason)
{
    throw std::runtime_error("the port's description cannot be read from " + shown(url) + ": " + reason);
}

std::string lower_case(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

void check_scheme(const std::string& url)
{
    const std::size_t colon = url.find(':');
    if (colon == std::string::npos)
        refuse(url, "it has no scheme; expected Local:name;address;length");
    const std::string scheme = lower_case(url.substr(0, colon));
    if (scheme == "file" || scheme == "http" || scheme == "https")
        refuse(url, "descriptions of the kind " + scheme + ": are not supported, only those in the device");
    if (scheme != "local")
        refuse(url, "unknown scheme; expected Local:name;address;length");
}

std::uint64_t number(const std::string& url, const char* what, std::string text)
{
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
        text.erase(0, 2);
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value, 16);
    if (error == std::errc::result_out_of_range)
        refuse(url, std::string(what) + " does not fit into 64 bits");
    if (error != std::errc() || stopped != end)
        refuse(url, std::string(what) + " is no hexadecimal number");
    return value;
}

} // namespace

PortUrl parse_port_url(const std::string& url)
{
    check_scheme(url);
    const std::string place = url.substr(0, url.find('?')); // behind it stands the version of the schema
    const std::size_t start = std::min(place.find_first_not_of('/', place.find(':') + 1), place.size());
    const std::size_t first = place.find(';', start);
    const std::size_t second = first == std::string::npos ? first : place.find(';', first + 1);
    if (second == std::string::npos || place.find(';', second + 1) != std::string::npos)
        refuse(url, "expected three parts, Local:name;address;length");

    PortUrl parsed;
    parsed.file_name = place.substr(start, first - start);
    if (parsed.file_name.empty())
        refuse(url, "it has no file name");
    parsed.address = number(url, "the address", place.substr(first + 1, second - first - 1));
    const std::uint64_t length = number(url, "the length", place.substr(second + 1));
    if (length == 0)
        refuse(url, "the length is 0");
    if (length > largest_description)
        refuse(url, "the length of " + std::to_string(length) + " bytes is above the limit of 64 MiB");
    if (parsed.address + (length - 1) < parsed.address)
        refuse(url, "it reaches beyond the last address");
    parsed.length = static_cast<std::size_t>(length);
    return parsed;
}

} // namespace zvgentl::tool

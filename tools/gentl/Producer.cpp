#include "gentl/Producer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "gentl/Error.h"
#include "platform/environment.h"
#include "platform/paths.h"
#include "platform/visible_text.h"

namespace zvgentl::tool {

using namespace GenTL;
namespace fs = std::filesystem;

namespace {

std::vector<fs::path> producers_in(const fs::path& folder)
{
    std::vector<fs::path> found;
    std::error_code error; // a folder that cannot be read counts as empty
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (entry->path().extension() == ".cti")
            found.push_back(entry->path());
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<fs::path> split_path_list(const std::string& list)
{
    std::vector<fs::path> folders;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(platform::path_list_separator, start), list.size());
        if (end > start)
            folders.push_back(fs::u8path(list.substr(start, end - start)));
        start = end + 1;
    }
    return folders;
}

std::vector<fs::path> producers_at(const fs::path& wanted)
{
    if (!fs::exists(wanted))
        throw std::runtime_error("there is no file " + wanted.u8string() +
                                 "; --cti takes the path of a .cti file");
    if (!fs::is_directory(wanted))
        return {wanted};
    auto found = producers_in(wanted);
    if (found.empty())
        throw std::runtime_error("the folder " + wanted.u8string() + " contains no .cti file");
    return found;
}

std::vector<fs::path> producers_of_list(const std::string& list)
{
    std::vector<fs::path> found;
    for (const auto& folder : split_path_list(list))
        for (const auto& file : producers_in(folder))
            if (std::find(found.begin(), found.end(), file) == found.end())
                found.push_back(file);
    if (found.empty())
        throw std::runtime_error(
            std::string("the folders of ") + producer_path_variable + " (" + platform::visible(list) +
            ") contain no .cti file; correct the variable, or name a producer with --cti");
    return found;
}

void load(std::optional<platform::DynamicLibrary>& library, const fs::path& file)
{
    try {
        library.emplace(file);
    } catch (const std::runtime_error& reason) {
        const std::string text = platform::visible(reason.what());
        const bool is_about_another = text.find("needs") != std::string::npos;
        throw std::runtime_error(
            "cannot load " + platform::visible(file.u8string()) + ": " + text +
            (is_about_another
                 ? "\nThe libraries that a producer needs must be next to it or on the library path."
                 : ""));
    }
}

Functions find_functions_of(const platform::DynamicLibrary& library, const fs::path& file)
{
    try {
        return find_functions(library);
    } catch (const std::runtime_error& reason) {
        throw std::runtime_error(file.u8string() + " is not a GenTL producer: " + reason.what());
    }
}

bool is_absent(GC_ERROR code) noexcept
{
    return code == GC_ERR_NOT_IMPLEMENTED || code == GC_ERR_NOT_AVAILABLE;
}

template <class Value>
std::uint64_t widen(const unsigned char* bytes) noexcept
{
    Value value;
    std::memcpy(&value, bytes, sizeof value);
    return static_cast<std::uint64_t>(value);
}

std::uint64_t widen_as(INFO_DATATYPE type, const unsigned char* bytes, const char* function)
{
    switch (type) {
    case INFO_DATATYPE_BOOL8:
        return widen<std::uint8_t>(bytes);
    case INFO_DATATYPE_INT16:
        return widen<std::int16_t>(bytes);
    case INFO_DATATYPE_UINT16:
        return widen<std::uint16_t>(bytes);
    case INFO_DATATYPE_INT32:
        return widen<std::int32_t>(bytes);
    case INFO_DATATYPE_UINT32:
        return widen<std::uint32_t>(bytes);
    case INFO_DATATYPE_INT64:
    case INFO_DATATYPE_UINT64:
        return widen<std::uint64_t>(bytes);
    case INFO_DATATYPE_PTR:
        return widen<std::uintptr_t>(bytes);
    case INFO_DATATYPE_SIZET:
    case INFO_DATATYPE_PTRDIFF:
        return widen<std::size_t>(bytes);
    default:
        throw std::runtime_error(std::string(function) + " answered with type " + std::to_string(type) +
                                 " where a number was expected");
    }
}

} // namespace

std::vector<fs::path> find_producers(const fs::path& wanted)
{
    if (!wanted.empty())
        return producers_at(wanted);
    const std::string list = platform::environment(producer_path_variable);
    if (!list.empty())
        return producers_of_list(list);
    auto beside = producers_in(platform::program_folder());
    if (beside.empty())
        throw std::runtime_error(std::string("no GenTL producer to load: set ") + producer_path_variable +
                                 " to the folder of a .cti file, or name one with --cti");
    return beside;
}

Producer::Producer(const fs::path& file) : m_file(fs::absolute(file))
{
    load(m_library, m_file);
    m_functions = find_functions_of(*m_library, m_file);
    start();
}

Producer::Producer(const Functions& functions) : m_functions(functions) { start(); }

void Producer::start()
{
    check(m_functions.GCInitLib(), "GCInitLib");
    m_known_error_text = last_error_text();
}

Producer::~Producer() { m_functions.GCCloseLib(); }

void* Producer::find_in(const char* library, const char* symbol) const noexcept
{
    return m_library ? m_library->find_in(library, symbol) : nullptr;
}

void Producer::check(GC_ERROR code, const char* function) const
{
    if (code == GC_ERR_SUCCESS)
        return;
    std::string text = last_error_text();
    const bool is_about_this = text != m_known_error_text || text.find(function) != std::string::npos;
    m_known_error_text = text;
    throw Error(code, function, is_about_this ? text : std::string());
}

std::string Producer::last_error_text() const
{
    GC_ERROR code = GC_ERR_SUCCESS;
    std::array<char, 1024> text{};
    std::size_t size = text.size();
    if (m_functions.GCGetLastError(&code, text.data(), &size) != GC_ERR_SUCCESS)
        return {};
    return text.data();
}

std::optional<std::string> Producer::text(TL_INFO_CMD command) const
{
    return find_text(*this, "GCGetInfo",
                     [this, command](INFO_DATATYPE* type, void* buffer, std::size_t* size) {
                         return m_functions.GCGetInfo(command, type, buffer, size);
                     });
}

std::optional<std::uint64_t> Producer::number(TL_INFO_CMD command) const
{
    return find_number(*this, "GCGetInfo",
                       [this, command](INFO_DATATYPE* type, void* buffer, std::size_t* size) {
                           return m_functions.GCGetInfo(command, type, buffer, size);
                       });
}

std::optional<std::string> find_text(const Producer& producer, const char* function, const InfoQuery& query)
{
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    std::size_t size = 0;
    const GC_ERROR code = query(&type, nullptr, &size);
    if (is_absent(code))
        return std::nullopt;
    producer.check(code, function);
    if (type != INFO_DATATYPE_STRING)
        throw std::runtime_error(std::string(function) + " answered with type " + std::to_string(type) +
                                 " where a string was expected");
    std::string text(size, '\0');
    producer.check(query(&type, text.data(), &size), function);
    text.resize(std::min(text.find('\0'), text.size())); // the size counts the terminating zero
    return text;
}

std::optional<std::uint64_t> find_number(const Producer& producer, const char* function,
                                         const InfoQuery& query)
{
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    std::array<unsigned char, sizeof(std::uint64_t)> bytes{};
    std::size_t size = bytes.size();
    const GC_ERROR code = query(&type, bytes.data(), &size);
    if (is_absent(code))
        return std::nullopt;
    producer.check(code, function);
    return widen_as(type, bytes.data(), function);
}

std::uint64_t read_number(const Producer& producer, const char* function, const InfoQuery& query)
{
    const auto number = find_number(producer, function, query);
    if (!number)
        throw Error(GC_ERR_NOT_AVAILABLE, function,
                    "the producer does not provide a value that is needed here");
    return *number;
}

void* read_pointer(const Producer& producer, const char* function, const InfoQuery& query)
{
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    void* pointer = nullptr;
    std::size_t size = sizeof pointer;
    producer.check(query(&type, &pointer, &size), function);
    if (type != INFO_DATATYPE_PTR)
        throw std::runtime_error(std::string(function) + " answered with type " + std::to_string(type) +
                                 " where a pointer was expected");
    return pointer;
}

std::string read_id(const Producer& producer, const char* function, const IdQuery& query)
{
    std::size_t size = 0;
    producer.check(query(nullptr, &size), function);
    std::string id(size, '\0');
    producer.check(query(id.data(), &size), function);
    id.resize(std::min(id.find('\0'), id.size()));
    return id;
}

} // namespace zvgentl::tool

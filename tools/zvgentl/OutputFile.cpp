#include "zvgentl/OutputFile.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fmt/core.h>

#include "platform/files.h"
#include "platform/leftovers.h"

namespace zvgentl::tool {

namespace fs = std::filesystem;

namespace {

constexpr const char* part_prefix = "output-";
constexpr const char* part_suffix = ".part";

} // namespace

OutputFile::OutputFile(fs::path file) : m_file(std::move(file))
{
    std::error_code error; // what cannot be looked at cannot be opened either, which tells why
    if (fs::exists(m_file, error) && !fs::is_regular_file(m_file, error)) {
        m_stream = platform::open_for_writing(m_file);
    } else {
        m_part = m_file.parent_path() / platform::working_name(part_prefix, part_suffix);
        m_stream = platform::create_file(m_part, platform::Readers::usual);
    }
    if (m_stream == nullptr)
        fail(errno);
}

void OutputFile::remove_leftovers(const fs::path& folder) noexcept
{
    platform::remove_leftovers(folder, part_prefix, part_suffix);
}

OutputFile::~OutputFile()
{
    if (m_stream == nullptr)
        return;
    std::fclose(m_stream);
    std::error_code ignored;
    if (!m_part.empty())
        fs::remove(m_part, ignored);
}

void OutputFile::write(const void* data, std::size_t size)
{
    if (std::fwrite(data, 1, size, m_stream) != size)
        fail(errno);
}

void OutputFile::finish()
{
    if (std::fflush(m_stream) != 0) // the last bytes may find the disk full
        fail(errno);
    if (std::fclose(std::exchange(m_stream, nullptr)) != 0)
        fail(errno);
    std::error_code error;
    if (!m_part.empty())
        fs::rename(m_part, m_file, error);
    if (!error)
        return;
    std::error_code ignored;
    fs::remove(m_part, ignored);
    fail(error.value());
}

void OutputFile::fail(int error) const
{
    throw FileError(
        fmt::format("cannot write {}: {}", m_file.u8string(), std::generic_category().message(error)));
}

} // namespace zvgentl::tool

#include "platform/library_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <system_error>

#include "platform/files.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

/// The beginning of a file, with numbers in it, the low byte first.
class Header {
public:
    explicit Header(std::FILE* file) : m_size(std::fread(m_bytes.data(), 1, m_bytes.size(), file)) {}

    std::size_t size() const { return m_size; }
    bool begins_with(const std::string& text) const
    {
        return m_size >= text.size() &&
               std::equal(text.begin(), text.end(), m_bytes.begin(),
                          [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; });
    }
    unsigned number(std::size_t place) const
    {
        return place + 1 < m_size ? m_bytes[place] + m_bytes[place + 1] * 256U : 0;
    }
    std::uint64_t long_number(std::size_t place) const
    {
        std::uint64_t number = 0;
        for (std::size_t i = 8; i-- > 0;)
            number = number * 256 + (place + i < m_size ? m_bytes[place + i] : 0U);
        return number;
    }

private:
    std::array<unsigned char, 4096> m_bytes{};
    std::size_t m_size;
};

struct Processor {
    unsigned elf;
    unsigned windows;
    const char* name;
};

constexpr Processor processors[] = {{3, 0x14C, "32-bit x86"},  {62, 0x8664, "64-bit x86"},
                                    {40, 0x1C4, "32-bit ARM"}, {183, 0xAA64, "64-bit ARM"},
                                    {243, 0x5064, "RISC-V"},   {21, 0, "64-bit PowerPC"},
                                    {22, 0, "s390"},           {8, 0, "MIPS"}};

#if defined(__x86_64__)
constexpr const char* own_processor = "64-bit x86";
#elif defined(__aarch64__)
constexpr const char* own_processor = "64-bit ARM";
#else
constexpr const char* own_processor = "another processor";
#endif

const char* processor_name(unsigned Processor::*number, unsigned wanted)
{
    for (const Processor& row : processors)
        if (row.*number == wanted)
            return row.name;
    return "an unknown processor";
}

std::string other(const std::string& system, const std::string& processor)
{
    return "it is a library for " + processor + " on " + system + "; this program loads those for " +
           own_processor + " on " + own_system();
}

std::string problem_of(const Header& header)
{
    constexpr unsigned elf_library = 3;
    if (header.size() == 0)
        return "it is empty";
    if (header.begins_with("\x7F"
                           "ELF")) {
        const std::string processor = processor_name(&Processor::elf, header.number(18));
        if (std::string(own_system()) != "Linux" || processor != own_processor)
            return other("Linux", processor);
        return header.number(16) == elf_library ? ""
                                                : "it is not a library, but another kind of program file";
    }
    if (header.begins_with("MZ")) {
        const unsigned start = header.number(0x3C);
        const std::string processor = processor_name(&Processor::windows, header.number(start + 4));
        if (std::string(own_system()) != "Windows" || processor != own_processor)
            return other("Windows", processor);
        return {};
    }
    for (const char* const magic : {"\xCF\xFA\xED\xFE", "\xCA\xFE\xBA\xBE"})
        if (header.begins_with(magic))
            return other("macOS", "an Apple computer");
    return "it is not a library";
}

} // namespace

std::string problem_of_library(const fs::path& file)
{
    std::error_code error; // what cannot be looked at cannot be opened either
    if (fs::is_directory(file, error))
        return "it is a folder";
    errno = 0;
    const std::unique_ptr<std::FILE, CloseFile> stream(open_file(file));
    if (!stream)
        return "it cannot be read: " + std::generic_category().message(errno);
    return problem_of(Header(stream.get()));
}

bool is_cut_off(const fs::path& file)
{
    constexpr std::uint64_t is_loaded = 1;
    std::error_code error;
    const auto size = fs::file_size(file, error);
    const std::unique_ptr<std::FILE, CloseFile> stream(error ? nullptr : open_file(file));
    if (!stream)
        return false; // the system tells
    const Header header(stream.get());
    if (!header.begins_with("\x7F"
                            "ELF\x02")) // of 64 bits
        return false;
    const std::uint64_t table = header.long_number(32);
    for (std::uint64_t i = 0; i < header.number(56); ++i) {
        const std::uint64_t row = table + i * header.number(54);
        const std::uint64_t end = header.long_number(row + 8) + header.long_number(row + 32);
        if (header.number(row) == is_loaded && end > size)
            return true;
    }
    return header.size() < 64;
}

} // namespace platform

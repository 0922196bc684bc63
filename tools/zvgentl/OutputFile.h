#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace zvgentl::tool {

/// A file that cannot be written, with its name and the system's reason.
class FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A file that gets its name when it is complete, so that no failure leaves half of it under that name. What
/// is not a regular file (a device, a pipe) is written to as it is. All functions throw FileError.
class OutputFile {
public:
    explicit OutputFile(std::filesystem::path file);
    /// Removes what processes that were killed have left in the folder.
    static void remove_leftovers(const std::filesystem::path& folder) noexcept;
    /// Removes what was written unless it is complete.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(const void* data, std::size_t size);
    void write(const std::string& text) { write(text.data(), text.size()); }
    /// Gives the file its name, in place of one that has it.
    void finish();

private:
    [[noreturn]] void fail(int error) const;

    std::filesystem::path m_file;
    std::filesystem::path m_part; // under this name until it is complete; empty for what is no regular file
    std::FILE* m_stream{nullptr};
};

} // namespace zvgentl::tool

#include "zvgentl/Output.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <new>
#include <system_error>

#include "platform/terminal.h"

namespace zvgentl::tool {

OutputError::OutputError(int error)
    : std::runtime_error("cannot write to standard output: " +
                         (error == EBADF ? "it is closed" : std::generic_category().message(error))),
      m_is_broken_pipe(platform::is_broken_pipe(stdout, error))
{
}

void print_output(const std::string& text) { print_bytes(text.data(), text.size()); }

void print_bytes(const void* data, std::size_t size)
{
    errno = 0;
    if (std::fwrite(data, 1, size, stdout) == size && std::fflush(stdout) == 0)
        return;
    const int error = errno;
    std::clearerr(stdout);
    throw OutputError(error);
}

void print_error(const std::string& text) noexcept
{
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

std::string reason_of(const std::exception& exception)
{
    if (const auto* const failure = dynamic_cast<const std::filesystem::filesystem_error*>(&exception))
        return failure->path1().u8string() + ": " + failure->code().message();
    if (dynamic_cast<const std::bad_alloc*>(&exception) != nullptr ||
        dynamic_cast<const std::length_error*>(&exception) != nullptr)
        return "there is not enough memory";
    return exception.what();
}

} // namespace zvgentl::tool

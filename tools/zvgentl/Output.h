#pragma once

#include <stdexcept>
#include <string>

namespace zvgentl::tool {

/// Standard output that cannot be written.
class OutputError : public std::runtime_error {
public:
    /// `error` is the number of the system (errno).
    explicit OutputError(int error);

    /// Whether nobody reads it any more, which is not worth a message.
    bool is_broken_pipe() const noexcept { return m_is_broken_pipe; }

private:
    bool m_is_broken_pipe;
};

/// Writes all of the text to standard output, at once. Throws OutputError.
void print_output(const std::string& text);

/// The same for bytes that must arrive unchanged. Call platform::keep_bytes before the first of them.
void print_bytes(const void* data, std::size_t size);

/// Writes to the error output; what cannot be written there is lost.
void print_error(const std::string& text) noexcept;

/// What an exception says, in words: without the phrases of libraries around the system's reason.
std::string reason_of(const std::exception& exception);

} // namespace zvgentl::tool

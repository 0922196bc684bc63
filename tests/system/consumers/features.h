#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace zvclient {

class ExactPort;

/// The features of a port as its description names them: read by a parser of such descriptions where there is
/// one, elsewhere register by register. All functions throw std::exception when the port refuses, or when its
/// answer cannot be right.
class Features {
public:
    /// Of the port with this description; the port must live as long as the object.
    Features(const std::string& description, const ExactPort& port);
    ~Features();
    Features(const Features&) = delete;
    Features& operator=(const Features&) = delete;

    /// Whether the port has none.
    bool is_empty() const;

    /// Reads all of them and returns their number. Each must be readable unless it is a command or
    /// write-only.
    int read_every() const;

    /// Executes commands. A parser also writes each feature that is writable, compares it with what is read
    /// then, and writes its old value again. Returns the number of both.
    int write_every() const;

    std::int64_t integer(const std::string& name) const;
    void set(const std::string& name, const std::string& text) const;
    /// Executes a command and waits until the device says that it is done.
    void execute(const std::string& name, std::chrono::milliseconds timeout) const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zvclient

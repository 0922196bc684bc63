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
    virtual ~Features() = default;

    /// Whether the port has none.
    virtual bool is_empty() const = 0;

    /// Reads all of them and returns their number. Each must be readable unless it is a command or
    /// write-only.
    virtual int read_every() const = 0;

    /// Executes commands. A parser also writes each feature that is writable, with the value that it has.
    /// Returns the number of both.
    virtual int write_every() const = 0;

    virtual std::int64_t integer(const std::string& name) const = 0;
    virtual void set(const std::string& name, const std::string& text) const = 0;
    /// Executes a command and waits until the device says that it is done.
    virtual void execute(const std::string& name, std::chrono::milliseconds timeout) const = 0;
};

/// Of the port with this description; the port must live as long as the object.
std::unique_ptr<Features> features_of(const std::string& description, const ExactPort& port);

} // namespace zvclient

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "system/consumers/client.h"

// The features of a port as clients use them. Where a parser of register descriptions is there, they are
// those of the description, every one of them; elsewhere those of the software grabbers and cameras, by
// addresses that are known beforehand.

namespace zvclient {

/// All functions throw std::exception when the port refuses, or when what it answers cannot be right.
class Features {
public:
    /// Of the port with this description; the port must live as long as the object.
    Features(const std::string& description, const ExactPort& port);
    ~Features();
    Features(const Features&) = delete;
    Features& operator=(const Features&) = delete;

    /// Whether the port has none.
    bool is_empty() const;

    /// Reads all; the number of them. Each must be readable unless it is a command or write-only.
    int read_every() const;

    /// Writes each that is writable, compares what is read then, and writes what it was before; the number of
    /// them. Commands are executed.
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

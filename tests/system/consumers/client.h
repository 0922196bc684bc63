#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "GenTL/GenTL.h"

#include "gentl/Functions.h"
#include "gentl/Registers.h"

// What the replayed consumers have in common: a producer loaded by hand, and answers that must be right. How
// they call it is each one's own.

namespace zvclient {

using zvgentl::tool::Functions;

/// Ends the client with the call's name and its code unless it succeeded.
void need(GenTL::GC_ERROR code, const char* call);
/// Ends the client unless it answered this code.
void need_code(GenTL::GC_ERROR wanted, GenTL::GC_ERROR code, const char* call);
/// Ends the client with the text unless the condition holds.
void need_true(bool condition, const std::string& otherwise);

/// A register port, used as it is by consumers that take no short answer: each access is one call that must
/// move every byte.
class ExactPort final : public zvgentl::tool::Registers {
public:
    ExactPort(const Functions& gentl, GenTL::PORT_HANDLE handle) : m_gentl{gentl}, m_handle{handle} {}

    GenTL::PORT_HANDLE handle() const { return m_handle; }
    void read(std::uint64_t address, void* data, std::size_t size) const override;
    void write(std::uint64_t address, const void* data, std::size_t size) const override;

private:
    const Functions& m_gentl;
    GenTL::PORT_HANDLE m_handle;
};

/// Where a URL "Local:NAME;ADDRESS;LENGTH" says that a description lies.
struct DescriptionPlace {
    std::string name;
    std::uint64_t address{0};
    std::size_t length{0};
};
DescriptionPlace place_of(const std::string& url);

/// The description of a port, by its URL: read in one call, unpacked.
std::string description_of(const ExactPort& port, const std::string& url);

/// The pixels of a frame, whole and intact as the camera sent them; its number since the start.
std::uint64_t counter_of(const void* frame, std::size_t size);

/// The frames of an acquisition: each intact, each newer than the one before.
class FrameCheck {
public:
    void expect_newer(const void* frame, std::size_t size);
    int frames() const { return m_frames; }

private:
    int m_frames{0};
    std::uint64_t m_last{0};
};

/// Loads the producer that the arguments name ("FILE queued|cyclic"), with settings and logs in a private
/// folder and a few software cameras, and runs the client. The process's exit code; what went wrong is
/// printed.
int run_client(int count, char** arguments, const std::function<void(const Functions&)>& client);

} // namespace zvclient

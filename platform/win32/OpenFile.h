#pragma once

#include <cstdint>
#include <string>

#include <windows.h>

// An open file of the system, closed with the object.

namespace platform {

/// Everybody else may read, write, rename and delete meanwhile, as on other systems.
constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class OpenFile {
public:
    OpenFile(const std::string& path, DWORD access, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL);
    ~OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool is_open() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE handle() const { return m_handle; }
    /// Gives the handle up to the caller.
    HANDLE release();

private:
    HANDLE m_handle;
};

/// Which file it is, whatever its name is now.
struct FileIdentity {
    std::uint64_t device{0};
    std::uint64_t node{0};
    std::uint64_t size{0};
    DWORD attributes{0};
    bool is_known{false};
};
FileIdentity identity_of(HANDLE file);

/// A byte that no file reaches: its lock keeps nobody from reading or writing.
OVERLAPPED byte_to_lock();

} // namespace platform

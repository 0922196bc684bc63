#pragma once

#include <cstdint>
#include <string>

namespace platform {

/// Mutual exclusion between processes. Holds the exclusive lock of a lock file from construction to
/// destruction. Waits for other processes and for other threads that hold it; the system releases it when its
/// holder dies. The file stays behind, since removing it would let two holders in.
class FileLock {
public:
    explicit FileLock(const std::string& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    bool is_held() const { return m_handle != -1; }
    /// Why it is not held.
    const std::string& reason() const { return m_reason; }

private:
    std::intptr_t m_handle{-1};
    std::string m_reason;
};

} // namespace platform

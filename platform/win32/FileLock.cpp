#include "platform/FileLock.h"

#include <tuple>

#include "platform/win32/OpenFile.h"
#include "platform/win32/wide.h"

namespace platform {

FileLock::FileLock(const std::string& path)
{
    // Reading is enough to lock, so a file that another user made serves as well.
    OpenFile file(path, GENERIC_READ, OPEN_ALWAYS);
    OVERLAPPED place = byte_to_lock();
    if (!file.is_open() || LockFileEx(file.handle(), LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &place) == 0) {
        m_reason = describe_error(GetLastError());
        return;
    }
    m_handle = reinterpret_cast<std::intptr_t>(file.release());
}

FileLock::~FileLock()
{
    if (m_handle == -1)
        return;
    HANDLE const file = reinterpret_cast<HANDLE>(m_handle);
    OVERLAPPED place = byte_to_lock();
    std::ignore = UnlockFileEx(file, 0, 1, 0, &place); // at once: what closing unlocks may take a while
    std::ignore = CloseHandle(file);                   // nobody else closes it: nothing to fail
}

} // namespace platform

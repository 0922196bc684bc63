#include <stdexcept>

#include <windows.h>

#include "system/tools/Process.h"

namespace zvgentl::test {

namespace fs = std::filesystem;

struct FileWatch::Handles {
    fs::path folder;
    HANDLE changes{INVALID_HANDLE_VALUE};
};

FileWatch::FileWatch(const fs::path& folder) : m_handles(std::make_unique<Handles>())
{
    m_handles->folder = folder;
    m_handles->changes = FindFirstChangeNotificationW(folder.c_str(), FALSE, FILE_NOTIFY_CHANGE_FILE_NAME);
    if (m_handles->changes == INVALID_HANDLE_VALUE)
        throw std::runtime_error("cannot watch " + folder.u8string());
}

FileWatch::~FileWatch() { FindCloseChangeNotification(m_handles->changes); }

void FileWatch::wait_for(const std::string& name) const
{
    // A file gets its name when it is complete. A change between the look and the wait ends the wait at once.
    while (!fs::exists(m_handles->folder / fs::u8path(name))) {
        WaitForSingleObject(m_handles->changes, INFINITE);
        FindNextChangeNotification(m_handles->changes);
    }
}

} // namespace zvgentl::test

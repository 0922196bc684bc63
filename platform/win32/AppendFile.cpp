#include "platform/AppendFile.h"

#include <tuple>

#include "platform/win32/OpenFile.h"

namespace platform {

namespace {

HANDLE as_handle(std::intptr_t number) { return reinterpret_cast<HANDLE>(number); }

/// While one lives, no other process has its turn.
class Turn {
public:
    explicit Turn(HANDLE file)
        : m_file(file), m_is_taken(LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &m_place) != 0)
    {
    }
    ~Turn()
    {
        if (m_is_taken)
            std::ignore = UnlockFileEx(m_file, 0, 1, 0, &m_place); // closing the file unlocks it as well
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    bool is_taken() const { return m_is_taken; }

private:
    HANDLE m_file;
    OVERLAPPED m_place{byte_to_lock()};
    bool m_is_taken;
};

} // namespace

bool AppendFile::open(Look /*look*/)
{
    if (m_handle != -1 && has_the_name())
        return true;
    close();
    // Appending without the right to write anywhere else puts each line behind all others. The right to
    // read is for the lock of replace().
    OpenFile file(m_path, FILE_APPEND_DATA | FILE_GENERIC_READ, OPEN_ALWAYS);
    if (!file.is_open() || GetFileType(file.handle()) != FILE_TYPE_DISK)
        return false;
    const FileIdentity opened = identity_of(file.handle());
    m_device = opened.device;
    m_node = opened.node;
    m_size = opened.size;
    m_handle = reinterpret_cast<std::intptr_t>(file.release());
    return true;
}

bool AppendFile::replace(const MoveAway& move_away)
{
    // The lock is on the file that is to be moved: who gets it second finds that the file has lost its name.
    bool is_moved = false;
    {
        const Turn turn(as_handle(m_handle));
        if (!turn.is_taken())
            return true;
        if (has_the_name())
            move_away();
        is_moved = !has_the_name();
    }
    return is_moved ? open() : true; // it could not be moved: keep using it
}

bool AppendFile::append(std::string_view text)
{
    // Not every file system of Windows appends in one step.
    const Turn turn(as_handle(m_handle));
    while (!text.empty()) {
        DWORD count = 0;
        if (WriteFile(as_handle(m_handle), text.data(), static_cast<DWORD>(text.size()), &count, nullptr) ==
            0)
            return false;
        text.remove_prefix(count);
    }
    return true;
}

bool AppendFile::has_the_name()
{
    const OpenFile file(m_path, FILE_READ_ATTRIBUTES, OPEN_EXISTING);
    if (!file.is_open())
        return false;
    const FileIdentity named = identity_of(file.handle());
    if (!named.is_known || named.device != m_device || named.node != m_node)
        return false;
    m_size = named.size;
    return true;
}

void AppendFile::close()
{
    if (m_handle != -1)
        std::ignore = CloseHandle(as_handle(m_handle)); // nobody else closes it: nothing to fail
    m_handle = -1;
    m_device = m_node = m_size = 0;
}

} // namespace platform

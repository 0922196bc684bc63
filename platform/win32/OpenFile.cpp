#include "platform/win32/OpenFile.h"

#include <tuple>
#include <utility>

#include "platform/win32/wide.h"

namespace platform {

OpenFile::OpenFile(const std::string& path, DWORD access, DWORD disposition, DWORD flags)
    : m_handle(CreateFileW(wide(path).c_str(), access, share_all, nullptr, disposition, flags, nullptr))
{
}

OpenFile::~OpenFile()
{
    if (is_open())
        std::ignore = CloseHandle(m_handle); // nobody else closes it: nothing to fail
}

HANDLE OpenFile::release() { return std::exchange(m_handle, INVALID_HANDLE_VALUE); }

FileIdentity identity_of(HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION state{};
    if (GetFileInformationByHandle(file, &state) == 0)
        return {};
    FileIdentity identity;
    identity.device = state.dwVolumeSerialNumber;
    identity.node = std::uint64_t{state.nFileIndexHigh} << 32U | state.nFileIndexLow;
    identity.size = std::uint64_t{state.nFileSizeHigh} << 32U | state.nFileSizeLow;
    identity.attributes = state.dwFileAttributes;
    identity.is_known = true;
    return identity;
}

OVERLAPPED byte_to_lock()
{
    OVERLAPPED place{};
    place.OffsetHigh = 0x40000000;
    return place;
}

} // namespace platform

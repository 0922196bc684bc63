#include "unit/tools/TemporaryFolder.h"

#include <array>
#include <memory>

#include <windows.h> // before the headers that need it

#include <aclapi.h>

namespace zvgentl::test {

namespace fs = std::filesystem;

namespace {

struct FreeLocal {
    void operator()(void* memory) const noexcept { LocalFree(memory); }
};

bool is_own(PSID who)
{
    alignas(TOKEN_USER) std::array<unsigned char, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> user{};
    DWORD size = 0;
    HANDLE token = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
    const BOOL known = GetTokenInformation(token, TokenUser, user.data(), user.size(), &size);
    CloseHandle(token);
    return known != 0 && EqualSid(who, reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid) != 0;
}

} // namespace

UserFolders::UserFolders(const fs::path& home) : m_home(home)
{
    m_variables.emplace_back("APPDATA", (home / "Roaming").u8string());
    m_variables.emplace_back("ProgramData", (home / "ProgramData").u8string());
}

fs::path UserFolders::configuration() const { return m_home / "Roaming" / "zvgentl"; }

bool is_for_its_owner_only(const fs::path& file)
{
    PSECURITY_DESCRIPTOR rights = nullptr;
    ACL* list = nullptr;
    if (GetNamedSecurityInfoW(file.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                              &list, nullptr, &rights) != ERROR_SUCCESS)
        return false;
    const std::unique_ptr<void, FreeLocal> owns_rights(rights);
    bool is_for_us = false;
    for (WORD i = 0; list != nullptr && i < list->AceCount; ++i) {
        ACCESS_ALLOWED_ACE* entry = nullptr;
        GetAce(list, i, reinterpret_cast<void**>(&entry));
        if (is_own(&entry->SidStart))
            is_for_us = true;
        else if (IsWellKnownSid(&entry->SidStart, WinLocalSystemSid) == 0) // which Wine lets in everywhere
            return false;
    }
    return is_for_us;
}

} // namespace zvgentl::test

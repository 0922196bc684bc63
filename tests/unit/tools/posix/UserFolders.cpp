#include "unit/tools/TemporaryFolder.h"

namespace zvgentl::test {

namespace fs = std::filesystem;

UserFolders::UserFolders(const fs::path& home) : m_home(home)
{
    m_variables.emplace_back("HOME", home.string());
    m_variables.emplace_back("XDG_CONFIG_HOME", "");
}

fs::path UserFolders::configuration() const { return m_home / ".config" / "zvgentl"; }

bool is_for_its_owner_only(const fs::path& file)
{
    return fs::status(file).permissions() == fs::perms::owner_all;
}

} // namespace zvgentl::test

#pragma once

#include <filesystem>
#include <list>

#include "TemporaryFolder.h"

namespace zvgentl::test {

/// A user of this system whose folders lie elsewhere, for one test. The bodies lie in one folder per system.
class UserFolders {
public:
    explicit UserFolders(const std::filesystem::path& home);

    /// Where this user keeps the settings of the producer.
    std::filesystem::path configuration() const;

private:
    std::filesystem::path m_home;
    std::list<ScopedVariable> m_variables;
};

/// Whether nobody gets at the file but the user that created it.
bool is_for_its_owner_alone(const std::filesystem::path& file);

} // namespace zvgentl::test

#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zvlog {

/// What is wrong with a configuration, collected while it is read.
using Problems = std::vector<std::string>;

/// The values of a properties file in Poco's syntax. "${key}" means the value of another key,
/// "${system.env.NAME}" that of an environment variable. Empty, and one problem, when that takes more than
/// 10,000 references or a million characters.
class Configuration {
public:
    Configuration() = default;
    Configuration(std::string_view text, Problems& problems);

    /// The value of a key, with its references replaced.
    std::optional<std::string> value(const std::string& key) const;
    /// The names that follow "`key`." in the keys, up to the next dot, each once.
    std::vector<std::string> children(const std::string& key) const;

private:
    struct Work;
    using Values = std::map<std::string, std::string>;

    static std::string expanded(const Values& values, const std::string& text, Work& work);
    static std::optional<std::string> referenced(const Values& values, const std::string& key, Work& work);

    Values m_values;
};

} // namespace zvlog

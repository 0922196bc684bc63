#pragma once

#include <map>
#include <string>
#include <vector>

// A folder and an environment for one test.

/// A folder that is removed with everything in it when the test ends. Its path has no backslashes, which
/// would begin escapes in the files of tests.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

/// Sets variables of the environment and puts the old values back.
class Environment {
public:
    Environment() = default;
    ~Environment();
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    void set(const std::string& name, const std::string& value);
    /// Under the name that each system has for it.
    void set_home(const std::string& folder);
    void unset(const std::string& name);

private:
    std::map<std::string, std::string> m_old; // empty: not set
};

/// A user without any files: an empty home, and an environment that does not lead out of it.
class EmptyHome {
public:
    EmptyHome();
    Folder folder;
    Environment environment;
    std::string user_settings() const { return folder / ".config/zvgentl/settings.properties"; }
    std::string user_logger_config() const { return folder / ".config/zvgentl/logger.properties"; }
    std::string default_log() const { return folder / ".local/state/zvgentl/zvgentl.log"; }
};

/// Root may write anywhere; while this object lives, the test may not. The files of the test must be open to
/// all.
class Unprivileged {
public:
    Unprivileged();
    ~Unprivileged();
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    bool m_was_root;
};

/// The content; empty if there is no such file.
std::string content_of(const std::string& path);
std::vector<std::string> lines_of(const std::string& path);
/// Writes a file exactly as given, and makes its folder.
void write_file(const std::string& path, const std::string& text);
bool is_there(const std::string& path);
std::vector<std::string> names_in(const std::string& folder);
std::size_t count_of(const std::string& text, const std::string& part);

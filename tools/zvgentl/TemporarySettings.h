#pragma once

#include <filesystem>
#include <string>

#include "zvgentl/GrabOptions.h"

namespace zvgentl::tool {

/// The text of a settings file with one key set to a value: other lines stay, earlier values of the key go.
std::string with_setting(const std::string& text, const std::string& key, const std::string& value);

/// The settings file that a producer would read now: the one named by ZV_SETTINGS_FILE, else the user's, else
/// the machine's, the first that exists; empty when there is none.
std::filesystem::path current_settings_file();

/// A copy of the current settings with the stream mode set, which this process uses for as long as the object
/// lives; the user's own file is left alone. Must be made before a producer is loaded and before threads are
/// started.
class TemporarySettings {
public:
    explicit TemporarySettings(StreamMode mode);
    ~TemporarySettings();
    TemporarySettings(const TemporarySettings&) = delete;
    TemporarySettings& operator=(const TemporarySettings&) = delete;

    /// Removes the copies of processes that were killed.
    static void remove_leftovers() noexcept;
    /// Removes the copy early, before the process ends without unwinding.
    void remove() const noexcept;

private:
    std::string m_previous_variable;
    std::filesystem::path m_folder;
};

} // namespace zvgentl::tool

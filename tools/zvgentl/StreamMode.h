#pragma once

#include <filesystem>
#include <string>

#include "zvgentl/GrabOptions.h"

namespace zvgentl::tool {

/// The settings file that a producer would read now: the one named by ZV_SETTINGS_FILE, else the user's, else
/// the machine's, the first that exists; empty when there is none.
std::filesystem::path current_settings_file();

/// What is wrong with that file, by its own path; empty when nothing is. Producers then use their defaults.
std::string settings_problem();

/// The stream mode of this process for as long as the object lives, whatever the settings files say: they are
/// neither read nor changed. Must be made before a producer is loaded and before threads are started.
class ChosenStreamMode {
public:
    explicit ChosenStreamMode(StreamMode mode);
    ~ChosenStreamMode();
    ChosenStreamMode(const ChosenStreamMode&) = delete;
    ChosenStreamMode& operator=(const ChosenStreamMode&) = delete;

private:
    std::string m_previous;
};

} // namespace zvgentl::tool

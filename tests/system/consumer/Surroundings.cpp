#include "system/consumer/Surroundings.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace zvsystem {

namespace fs = std::filesystem;

namespace {

// NOLINTBEGIN(concurrency-mt-unsafe): called while the process has one thread
void set_variable(const char* name, const std::string& value) { setenv(name, value.c_str(), 1); }
// NOLINTEND(concurrency-mt-unsafe)

fs::path make_private_folder()
{
    std::string name = (fs::temp_directory_path() / "zvgentl-system-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), "cannot create the folder " + name);
    return name;
}

} // namespace

Surroundings::Surroundings() : m_folder(make_private_folder())
{
    set_variable("ZV_SETTINGS_FILE", (m_folder / "settings.properties").string());
    set_variable("ZV_LOGGER_CONFIG", "");
    for (const char* const name : {"XDG_CONFIG_HOME", "APPDATA"}) // of either system
        set_variable(name, (m_folder / "config").string());
    for (const char* const name : {"XDG_STATE_HOME", "LOCALAPPDATA"})
        set_variable(name, (m_folder / "state").string());
    set_grabber_file("");
    set_variable("ZV_GRABBER_PICTURES", "");
    set_variable("ZV_GRABBER_PIXEL_FORMAT", "");
    set_frame_size("");
    set_frame_rate("0");
}

Surroundings::~Surroundings()
{
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

void Surroundings::set_mode(Mode mode) const
{
    write_setting("GenTL.Stream.QueuedBufferMode-Overwrite", mode == Mode::queued ? "1" : "0");
}

void Surroundings::expose_demo_grabber() const { write_setting("GenTL.Interface.ExposeDemoGrabber", "1"); }

void Surroundings::let_events_poll() const { write_setting("GenTL.Stream.SignaledEventMode", "0"); }

void Surroundings::set_frame_size(const std::string& size) { set_variable("ZV_GRABBER_SIZE", size); }

void Surroundings::set_frame_rate(const std::string& rate) { set_variable("ZV_GRABBER_RATE", rate); }

void Surroundings::set_grabber_file(const std::string& file) { set_variable("ZV_GRABBER_CONFIG", file); }

/// The last entry of a key counts. What the producer added to the file stays, or it would write its defaults
/// again each time.
void Surroundings::write_setting(const std::string& key, const std::string& value) const
{
    std::ofstream file(m_folder / "settings.properties", std::ios::app);
    file << key << " = " << value << '\n';
    if (!file.flush())
        throw std::runtime_error("cannot write the settings file");
}

} // namespace zvsystem

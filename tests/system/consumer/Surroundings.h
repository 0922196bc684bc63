#pragma once

#include <filesystem>
#include <string>

namespace zvsystem {

enum class Mode { queued, cyclic };

/// What the producer and its libraries find around them: settings, logs and the software grabbers' variables,
/// all in a new private folder that is removed with the object. Made before the producer is loaded; one per
/// process.
class Surroundings {
public:
    Surroundings();
    ~Surroundings();
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    const std::filesystem::path& folder() const noexcept { return m_folder; }

    /// The mode of the streams that will be opened.
    void set_mode(Mode mode) const;
    /// Lists the demo grabber too; for the next system that is opened.
    void expose_demo_grabber() const;
    /// EventGetData polls instead of sleeping; for device lists that will be rebuilt.
    void let_events_poll() const;
    /// The size of the frames of every camera ("640x480"; empty: each its own); takes effect at the next
    /// scan while no grabber is open.
    static void set_frame_size(const std::string& size);
    /// Frames per second ("0": as fast as buffers come); as above.
    static void set_frame_rate(const std::string& rate);
    /// The file that describes the grabbers (empty: the one in the private folder, if there is one); as
    /// above.
    static void set_grabber_file(const std::string& file);

private:
    void write_setting(const std::string& key, const std::string& value) const;

    std::filesystem::path m_folder;
};

} // namespace zvsystem

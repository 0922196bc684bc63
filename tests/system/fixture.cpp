#include "system/fixture.h"

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

namespace zvsystem {

using namespace GenTL;

Surroundings& surroundings()
{
    struct WithSmallFrames : Surroundings {
        WithSmallFrames() { set_frame_size(usual_frame_size); }
    };
    static WithSmallFrames surroundings;
    return surroundings;
}

Surroundings& surroundings_in(Mode mode)
{
    surroundings().set_mode(mode);
    return surroundings();
}

bool eventually(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::yield();
    }
    return true;
}

std::string contents(const std::filesystem::path& file)
{
    std::stringstream text;
    text << std::ifstream{file}.rdbuf();
    return text.str();
}

std::optional<zvgr::FrameStamp> stamp_of(const Camera& camera, BUFFER_HANDLE buffer)
{
    const auto size = static_cast<size_t>(camera.buffer_number(buffer, BUFFER_INFO_SIZE));
    return zvgr::read_stamp(camera.memory(buffer), size);
}

GrabberFile::GrabberFile(const std::string& yaml)
{
    const auto file = surroundings().folder() / "grabbers.yaml";
    std::ofstream{file} << yaml;
    Surroundings::set_grabber_file(file.string());
    Surroundings::set_frame_size("");
}

GrabberFile::~GrabberFile()
{
    Surroundings::set_grabber_file("");
    Surroundings::set_frame_size(usual_frame_size);
}

void FrameCheck::expect_good(const Filled& filled)
{
    ++m_frames;
    const auto stamp = stamp_of(m_camera, filled.buffer);
    ASSERT_TRUE(stamp) << "frame " << m_frames << " carries no stamp";
    EXPECT_TRUE(stamp->checksum_ok) << "frame " << m_frames << " is damaged";
    if (m_last) {
        EXPECT_GT(stamp->counter, *m_last) << "frame " << m_frames << " is old";
    }
    m_last = stamp->counter;
}

void FrameCheck::expect_next(const Filled& filled)
{
    const auto before = m_last;
    expect_good(filled);
    if (before && m_last) {
        EXPECT_EQ(*before + 1, *m_last) << "frames are missing before frame " << m_frames;
    }
}

void FrameCheck::stream(uint64_t frames)
{
    for (uint64_t i = 0; i < frames; ++i) {
        const Filled filled = m_camera.next();
        expect_good(filled);
        m_camera.queue(filled.buffer);
    }
}

} // namespace zvsystem

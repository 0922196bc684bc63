#include <algorithm>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include <arv.h>

#include "benchmarks/BareSystem.h"
#include "benchmarks/Pace.h"
#include "benchmarks/program.h"
#include "benchmarks/threads.h"
#include "benchmarks/ways.h"

// The producer against another library for cameras in the same process: libaravis with its fake camera. Both
// have a camera's thread that sends frames at our pace, and the same consumer.

namespace {

using namespace GenTL;
using namespace zvbench;
using zvsystem::Mode;

constexpr uint64_t mebibyte = 1U << 20U;
constexpr size_t buffers = 8;

/// Of the fake camera, which sleeps in g_usleep().
Pace* aravis_pace = nullptr;

} // namespace

/// Takes the place of glib's function for libaravis, so that the pace is ours.
extern "C" [[gnu::visibility("default")]] void g_usleep(gulong microseconds)
{
    if (aravis_pace != nullptr)
        aravis_pace->wait();
    else
        std::this_thread::sleep_for(std::chrono::microseconds{microseconds});
}

namespace {

/// Whether frames have pixels, which the fake camera and the producer then copy from a ring of frames.
enum class Pixels { none, copied };

class AravisCamera {
public:
    AravisCamera(uint64_t payload, Pixels pixels, int core) : m_payload{payload}, m_pace{core}
    {
        if (pixels == Pixels::copied)
            m_ring.assign(ring_frames, std::vector<char>(payload, 0x55));
        m_device = arv_fake_device_new("1", nullptr);
        require(m_device != nullptr, "libaravis has no fake camera");
        ArvFakeCamera* const camera = arv_fake_device_get_fake_camera(ARV_FAKE_DEVICE(m_device));
        constexpr guint32 width = 64;
        arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_WIDTH, width);
        arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_HEIGHT,
                                       static_cast<guint32>(payload / width));
        arv_fake_camera_set_fill_pattern(camera, &AravisCamera::fill, this);
        aravis_pace = &m_pace;
        m_stream = arv_device_create_stream(m_device, nullptr, nullptr, nullptr);
        for (size_t i = 0; i < buffers; ++i) {
            ArvBuffer* const buffer = arv_buffer_new_allocate(payload);
            std::memset(const_cast<void*>(arv_buffer_get_data(buffer, nullptr)), 0, payload);
            arv_stream_push_buffer(m_stream, buffer);
        }
    }
    ~AravisCamera()
    {
        m_pace.end();
        g_object_unref(m_stream);
        g_object_unref(m_device);
        aravis_pace = nullptr;
    }
    AravisCamera(const AravisCamera&) = delete;
    AravisCamera& operator=(const AravisCamera&) = delete;

    Pace& pace() { return m_pace; }

    /// Takes a frame, asks about it and gives its buffer back. Answers when it was taken.
    Pace::Clock::time_point consume()
    {
        ArvBuffer* const buffer = arv_stream_pop_buffer(m_stream);
        const auto taken = Pace::Clock::now();
        size_t size = 0;
        gint place[4];
        require(arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS, "a frame is damaged");
        m_seen += reinterpret_cast<uintptr_t>(arv_buffer_get_data(buffer, &size));
        arv_buffer_get_image_region(buffer, &place[0], &place[1], &place[2], &place[3]);
        m_seen += size + arv_buffer_get_timestamp(buffer) + arv_buffer_get_frame_id(buffer) +
                  arv_buffer_get_image_pixel_format(buffer);
        arv_stream_push_buffer(m_stream, buffer);
        return taken;
    }

private:
    /// On the camera's thread.
    static void fill(ArvBuffer* buffer, void* context, guint32 /*exposure*/, guint32 /*gain*/, ArvPixelFormat)
    {
        auto& camera = *static_cast<AravisCamera*>(context);
        camera.m_pace.count_frame();
        if (camera.m_ring.empty())
            return;
        const std::vector<char>& frame = camera.m_ring[camera.m_next++ % ring_frames];
        std::memcpy(const_cast<void*>(arv_buffer_get_data(buffer, nullptr)), frame.data(), camera.m_payload);
    }

    uint64_t m_payload;
    std::vector<std::vector<char>> m_ring;
    size_t m_next{0};
    Pace m_pace;
    ArvDevice* m_device{nullptr};
    ArvStream* m_stream{nullptr};
    uint64_t m_seen{0}; // so that no query is left out
};

class ProducerCamera {
public:
    ProducerCamera(uint64_t payload, Pixels pixels, int core)
        : m_system{m_bare, {1, buffers, payload, pixels == Pixels::copied ? Mode::cyclic : Mode::queued}},
          m_pace{core}
    {
        m_thread = std::thread{[this] { run(); }};
    }
    ~ProducerCamera()
    {
        m_pace.end();
        m_thread.join();
    }
    ProducerCamera(const ProducerCamera&) = delete;
    ProducerCamera& operator=(const ProducerCamera&) = delete;

    Pace& pace() { return m_pace; }

    Pace::Clock::time_point consume()
    {
        const BUFFER_HANDLE buffer = m_way.wait();
        const auto taken = Pace::Clock::now();
        require(buffer != nullptr, "a frame was lost");
        m_way.ask(buffer);
        m_way.queue(buffer);
        ++m_free;
        return taken;
    }

private:
    void run()
    {
        for (;;) {
            m_pace.wait();
            if (m_pace.is_over())
                return;
            if (m_free == 0)
                continue;
            --m_free;
            m_pace.count_frame();
            m_way.deliver();
        }
    }

    BareLibraries m_bare;
    BareSystem m_system;
    ProducerWay m_way{m_system, m_system.streams.back()};
    Pace m_pace;
    std::atomic<size_t> m_free{buffers};
    std::thread m_thread;
};

enum class What { elapsed_time, processor_time, latency };

/// One of a frame, in nanoseconds.
template <class Camera>
double measure(Camera& camera, What what, std::chrono::nanoseconds period, size_t frames)
{
    const double processor = processor_time();
    const auto start = Pace::Clock::now();
    std::vector<double> latencies;
    camera.pace().allow(frames, period);
    for (size_t i = 0; i < frames; ++i) {
        const auto taken = camera.consume();
        if (what == What::latency)
            latencies.push_back(
                std::chrono::duration<double, std::nano>{taken - camera.pace().sent()}.count());
    }
    if (what == What::processor_time)
        return (processor_time() - processor) / static_cast<double>(frames);
    if (what == What::elapsed_time)
        return std::chrono::duration<double, std::nano>{Pace::Clock::now() - start}.count() /
               static_cast<double>(frames);
    const auto middle = latencies.begin() + static_cast<ptrdiff_t>(frames / 2);
    std::nth_element(latencies.begin(), middle, latencies.end());
    return *middle;
}

struct Contest {
    What what;
    uint64_t payload;
    Pixels pixels;
    std::chrono::nanoseconds period; // 0: as fast as buffers come
    size_t frames;                   // of a round

    Comparison run() const
    {
        const Cores cores = two_cores();
        AravisCamera anchor{payload, pixels, cores.sender};
        ProducerCamera subject{payload, pixels, cores.sender};
        const PinnedThread consumer{cores.receiver};
        const auto work_of = [this](auto& camera) -> Work {
            return [this, &camera](size_t count) { return measure(camera, what, period, count); };
        };
        return compare(work_of(anchor), work_of(subject),
                       {across_cores, effort().is_trial ? 4 : frames, std::chrono::seconds{40}});
    }
};

} // namespace

int main(int argc, char** argv)
{
    using std::chrono::microseconds;
    const char* const anchor = "libaravis, fake camera";
    const Contest bare{What::elapsed_time, 4096, Pixels::none, microseconds{0}, 5000};
    const Contest copied{What::elapsed_time, 8 * mebibyte, Pixels::copied, microseconds{0}, 40};
    const Contest processor{What::processor_time, mebibyte, Pixels::copied, microseconds{1000}, 200};
    const Contest latency{What::latency, 4096, Pixels::none, microseconds{500}, 200};
    const auto at_least = Gate::Bound::at_least;
    const std::vector<Row> rows{
        {"frames/s without pixels", anchor, {1.0, "x", at_least}, [=] { return speed_of(bare.run()); }},
        {"frames/s of 8 MiB, copied", anchor, {1.2, "x", at_least}, [=] { return speed_of(copied.run()); }},
        {"1000 frames/s of 1 MiB: processor time", anchor, {0.76}, [=] { return ratio_of(processor.run()); }},
        {"median latency", anchor, {1.0}, [=] { return ratio_of(latency.run()); }},
    };
    return run_program(argc, argv, "Compares the producer with libaravis and its fake camera.", rows);
}

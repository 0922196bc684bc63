#include <array>
#include <fstream>

#include "benchmarks/BareSystem.h"
#include "benchmarks/children.h"
#include "benchmarks/log_line/log_line.h"
#include "benchmarks/program.h"
#include "benchmarks/threads.h"
#include "benchmarks/ways.h"
#include "system/consumer/Camera.h"

// Single operations: log lines, handle checks, announcing and revoking, opening and starting.

namespace {

using namespace GenTL;
using namespace zvbench;

constexpr double microsecond = 1e3; // in nanoseconds
constexpr double millisecond = 1e6;

/// The producer's log lines, with the real logger library at its default level.
class LogLines {
    zvsystem::Surroundings m_surroundings;
    zvsystem::LoadedFile m_file{ZV_LOG_LINE_FILE};

public:
    decltype(&::log_line_disabled) disabled{m_file.find("log_line_disabled")};
    decltype(&::log_line_compare) compare{m_file.find("log_line_compare")};
    decltype(&::log_line_written) written{m_file.find("log_line_written")};
};

Result measure_disabled_line()
{
    const LogLines lines;
    return ratio_of(compare(computing(lines.compare), computing(lines.disabled)));
}

Result measure_error_line()
{
    const LogLines lines;
    return fastest_of(time_alone(elapsing(lines.written), 1000), microsecond);
}

void count_disabled_lines(size_t count)
{
    const LogLines lines;
    count_instructions(lines.disabled, count);
}

/// A stream without buffers, into which a benchmark announces its own.
class Announcing {
public:
    explicit Announcing(size_t buffers) : m_buffers(buffers) {}

    void announce()
    {
        for (BUFFER_HANDLE& buffer : m_buffers)
            zvsystem::check(m_gentl.DSAllocAndAnnounceBuffer(m_stream, payload, nullptr, &buffer),
                            "DSAllocAndAnnounceBuffer");
    }

    void revoke() { revoke(m_buffers.begin(), m_buffers.end()); }
    void revoke_backwards() { revoke(m_buffers.rbegin(), m_buffers.rend()); }

    void queue_all()
    {
        for (const BUFFER_HANDLE buffer : m_buffers)
            zvsystem::check(m_gentl.DSQueueBuffer(m_stream, buffer), "DSQueueBuffer");
    }

    void count_queued() const
    {
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        size_t queued = 0;
        size_t size = sizeof queued;
        require(m_gentl.DSGetInfo(m_stream, STREAM_INFO_NUM_QUEUED, &type, &queued, &size) ==
                        GC_ERR_SUCCESS &&
                    queued == m_buffers.size(),
                "a count is wrong");
    }

private:
    template <class Position>
    void revoke(Position first, Position last)
    {
        for (; first != last; ++first)
            zvsystem::check(m_gentl.DSRevokeBuffer(m_stream, *first, nullptr, nullptr), "DSRevokeBuffer");
    }

    static constexpr uint64_t payload = 64;
    BareLibraries m_bare;
    SecondThread m_second;
    BareSystem m_system{m_bare, {1, 0, payload}};
    const zvsystem::Functions& m_gentl{m_system.gentl};
    DS_HANDLE m_stream{m_system.streams.back().stream};
    std::vector<BUFFER_HANDLE> m_buffers;
};

constexpr size_t many_buffers = 4096;

/// Times a step of announcing and revoking many buffers; `step` times itself.
template <class Step>
Result measure_announcing(const Step& step)
{
    Announcing announcing{many_buffers};
    return fastest_of(time_alone([&](size_t) { return step(announcing); }, 1), millisecond);
}

double time_once(const std::function<void()>& step)
{
    return elapsing([&](size_t) { step(); })(1);
}

Result measure_announce()
{
    return measure_announcing([](Announcing& announcing) {
        const double taken = time_once([&] { announcing.announce(); });
        announcing.revoke_backwards();
        return taken;
    });
}

Result measure_revoke(void (Announcing::*revoke)())
{
    return measure_announcing([revoke](Announcing& announcing) {
        announcing.announce();
        return time_once([&] { (announcing.*revoke)(); });
    });
}

Result measure_count_query()
{
    Announcing announcing{many_buffers};
    announcing.announce();
    announcing.queue_all();
    const Work query = computing([&](size_t count) {
        for (; count > 0; --count)
            announcing.count_queued();
    });
    return fastest_of(time_alone(query, effort().is_trial ? 1 : 100), microsecond);
}

void count_announces(size_t count)
{
    Announcing announcing{count};
    count_instructions([&](size_t) { announcing.announce(); }, count);
}

/// A query on the last event of so many streams, compared with a chain that stays the same.
Comparison compare_event_check(size_t streams)
{
    const BareLibraries bare;
    const SecondThread second;
    BareSystem system{bare, {streams, 1}};
    ChainWay chain{bare, system, {1, 16}};
    const EVENT_HANDLE event = system.streams.back().event;
    const Work check = computing([&](size_t count) {
        for (; count > 0; --count) {
            INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
            int32_t value = 0;
            size_t size = sizeof value;
            require(system.gentl.EventGetInfo(event, EVENT_EVENT_TYPE, &type, &value, &size) ==
                        GC_ERR_SUCCESS,
                    "a query failed");
        }
    });
    return compare(frames_of(chain), check);
}

Row check_row(size_t streams)
{
    return {"growth of an event's handle check, 1 stream to " + std::to_string(streams),
            "itself",
            {1.5},
            [streams] { return growth_of(compare_event_check(1), compare_event_check(streams)); }};
}

Result measure_opening()
{
    const Work open = [](size_t cameras) {
        const BareLibraries bare;
        const BareSystem system{bare, {cameras, 0}};
        return system.opened_in().count();
    };
    return fastest_of(time_alone(open, effort().is_trial ? 16 : 1024), millisecond);
}

/// A frame over the software grabbers, whose camera draws it: elapsed time at both ends.
Result measure_software_frame(const char* size, zvsystem::Mode mode)
{
    const zvsystem::Surroundings surroundings;
    zvsystem::Surroundings::set_frame_size(size);
    surroundings.set_mode(mode);
    const zvsystem::Producer producer{ZV_PRODUCER_FILE};
    const zvsystem::System system{producer.functions()};
    zvsystem::Camera camera{producer.functions(), system.open_interface("FG0"), "Device00"};
    camera.announce(16);
    camera.start_and_queue();
    camera.queue(camera.next().buffer); // the camera takes a while to start
    const Work frames = elapsing([&](size_t count) {
        for (; count > 0; --count)
            camera.queue(camera.next().buffer);
    });
    return fastest_of(time_alone(frames, effort().is_trial ? 1 : 200), microsecond);
}

Row software_frame_row(const char* size, zvsystem::Mode mode)
{
    const std::string mode_name = mode == zvsystem::Mode::queued ? "queued" : "cyclic";
    return {"frame of the software camera, " + mode_name + ", " + size, "", {std::nullopt, "us"}, [=] {
                return measure_software_frame(size, mode);
            }};
}

// Processes of their own, over the software grabbers.

/// Where they find a configuration of the software grabbers.
class Grabbers {
public:
    explicit Grabbers(const std::string& text)
    {
        const auto file = m_surroundings.folder() / "grabbers.yaml";
        if (!(std::ofstream{file} << text).flush())
            throw std::runtime_error{"cannot write the configuration of the grabbers"};
        zvsystem::Surroundings::set_grabber_file(file.string());
    }

private:
    zvsystem::Surroundings m_surroundings;
};

Result measure_process(const std::string& grabbers, const std::vector<std::string>& command)
{
    const Grabbers configuration{grabbers};
    return fastest_of(time_alone(elapsing([&](size_t) { run_child(command); }), 1), millisecond);
}

std::string many_grabbers()
{
    std::string text = "demo_grabber: false\ngrabbers:\n";
    for (int grabber = 0; grabber < 64; ++grabber) {
        text += "  - cameras:\n";
        for (int camera = 0; camera < 16; ++camera)
            text += "      - {sensor_width: 64, sensor_height: 48}\n";
    }
    return text;
}

constexpr const char* one_quick_camera =
    "grabbers:\n"
    "  - cameras:\n"
    "      - {sensor_width: 64, sensor_height: 48, start_up: 0 s, rate: 1000}\n";

} // namespace

int main(int argc, char** argv)
{
    using zvsystem::Mode;
    const std::vector<Row> rows{
        {"disabled log line", "load and compare", {2.0}, measure_disabled_line, count_disabled_lines},
        {"announce 4096 buffers", "", {20, "ms"}, measure_announce, count_announces},
        {"revoke 4096 buffers", "", {10, "ms"}, [] { return measure_revoke(&Announcing::revoke); }},
        {"revoke 4096 buffers, the last first",
         "",
         {10, "ms"},
         [] { return measure_revoke(&Announcing::revoke_backwards); }},
        {"count of the queued of 4096 buffers", "", {1, "us"}, measure_count_query},
        {"error line, real logger", "", {1.5, "us"}, measure_error_line},
        check_row(64),
        check_row(1024),
        {"open 1024 cameras, with stream and event", "", {50, "ms"}, measure_opening},
        {"zvgentl list, 64 grabbers with 16 cameras",
         "",
         {100, "ms"},
         [] {
             return measure_process(many_grabbers(), {ZV_TOOL_FILE, "list", "--cti", ZV_PRODUCER_FILE});
         }},
        {"process start to first frame",
         "",
         {10, "ms"},
         [] { return measure_process(one_quick_camera, {ZV_FIRST_FRAME_FILE}); }},
        software_frame_row("64x48", Mode::queued),
        software_frame_row("2048x1024", Mode::queued),
        software_frame_row("64x48", Mode::cyclic),
        software_frame_row("2048x1024", Mode::cyclic),
    };
    return run_program(argc, argv, "Times single operations.", rows);
}

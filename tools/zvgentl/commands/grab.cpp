#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>

#include <fmt/core.h>

#include "gentl/Error.h"
#include "gentl/Stream.h"
#include "platform/Interrupt.h"
#include "platform/visible_text.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/FrameSink.h"
#include "zvgentl/GrabResult.h"
#include "zvgentl/Json.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"
#include "zvgentl/Progress.h"
#include "zvgentl/Selection.h"
#include "zvgentl/StreamMode.h"

namespace zvgentl::tool {

using namespace GenTL;

namespace {

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl grab --frames 100\n"
    "  zvgentl grab --device Device10 --mode cyclic --frames 1000 --json\n"
    "  zvgentl grab --frames 20 --output pictures --format tiff\n"
    "  zvgentl grab --set Width=320 --set ExposureTime=2000\n"
    "  zvgentl grab --frames 0            # until Ctrl-C\n"
    "  zvgentl grab --duration 60 --fail-on-loss --frames-csv frames.csv\n"
    "  zvgentl grab --frames 5 --format raw --output - | consumer\n"
    "\n"
    "Modes: `queued` fills the buffers in place; `cyclic` copies each frame from a ring of the grabber\n"
    "library. The mode applies to this run only: your settings file is not changed.\n"
    "\n"
    "Lost frames are those missing between the first and the last frame that arrived. Queued mode\n"
    "counts them by the frame ids, cyclic mode by the frame counter in the pixels, if the camera writes\n"
    "one.\n"
    "\n"
    "Frames are saved as frame_000000.png and so on. Pictures: each frame is copied, its buffer is queued\n"
    "again at once, and other threads write the file. 8-bit formats become 8-bit files, all others 16-bit\n"
    "files with the values unchanged: a 12-bit picture looks dark until its contrast is stretched. Bayer\n"
    "mosaics are saved in shades of grey. Raw: a line of JSON that describes the frame, then its bytes\n"
    "unchanged (\"size\" of them); one frame after the other in a file named *.raw and on standard output,\n"
    "where the summary goes to the error output.\n"
    "\n"
    "Ctrl-C stops cleanly: the frames that have arrived are saved, and the summary is printed. A second\n"
    "Ctrl-C ends the program at once.\n"
    "\n"
    "Outcomes: complete; incomplete (all frames that were asked for arrived, but others between them were\n"
    "lost); interrupted; timed out (no frame in time); failed.\n"
    "\n"
    "Exit codes: 0 all frames that were asked for arrived and are intact as far as they can be verified,\n"
    "but others may be lost; with --fail-on-loss, none is lost. 1 failed (no frame in time, a damaged\n"
    "frame, output that cannot be written, any other error). 2 wrong command line. 130, 129, 143\n"
    "interrupted by Ctrl-C, a closed terminal, a request to end. 141 nobody reads the output any more.";

const CommandRegistration
    registration({"grab", "Grab frames from a device and save them as pictures", footer}, describe_grab, run);

using Clock = std::chrono::steady_clock;

/// Follows the time between the first frame and the last.
class Span {
public:
    void add(std::uint64_t timestamp)
    {
        m_last = Clock::now();
        m_last_timestamp = timestamp;
        if (m_started)
            return;
        m_started = true;
        m_first = m_last;
        m_first_timestamp = timestamp;
    }

    double seconds() const { return std::chrono::duration<double>(m_last - m_first).count(); }

    double device_seconds(std::uint64_t frequency) const
    {
        if (frequency == 0 || m_last_timestamp <= m_first_timestamp)
            return 0;
        return static_cast<double>(m_last_timestamp - m_first_timestamp) / static_cast<double>(frequency);
    }

private:
    bool m_started{false};
    Clock::time_point m_first;
    Clock::time_point m_last;
    std::uint64_t m_first_timestamp{0};
    std::uint64_t m_last_timestamp{0};
};

std::string first_stream(const Device& device)
{
    const auto ids = device.stream_ids();
    if (ids.empty())
        throw std::runtime_error("the device has no data stream");
    return ids.front();
}

/// Before the stream is opened: features decide how large its frames are.
void set_features(const Device& device, const Assignments& settings)
{
    if (settings.empty())
        return;
    const Port port(device.producer(), device.remote_port());
    set_all(settings, *make_node_map(port));
}

void give_buffers(Stream& stream, const GrabOptions& options, GrabResult& result)
{
    const auto least = stream.number(STREAM_INFO_BUF_ANNOUNCE_MIN);
    if (options.buffers < least)
        throw std::runtime_error(fmt::format(
            "{} buffers are too few: the stream needs at least {} (--buffers)", options.buffers, least));
    result.buffer_size = static_cast<std::size_t>(stream.number(STREAM_INFO_PAYLOAD_SIZE));
    if (result.buffer_size == 0)
        throw std::runtime_error("the stream does not say how large its frames are (payload size 0)");
    stream.add_buffers(options.buffers, result.buffer_size);
}

/// How long to wait for the next frame: as long as a frame may take, but not beyond the end of the grab.
class Patience {
public:
    explicit Patience(const GrabOptions& options)
        : m_for_a_frame(options.timeout_ms), m_has_end(options.duration_s > 0),
          m_end(Clock::now() + std::chrono::seconds(options.duration_s))
    {
    }

    bool is_over() const { return m_has_end && Clock::now() >= m_end; }
    std::chrono::milliseconds left() const
    {
        if (!m_has_end)
            return m_for_a_frame;
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(m_end - Clock::now());
        return std::clamp(rest, std::chrono::milliseconds(0), m_for_a_frame);
    }

private:
    std::chrono::milliseconds m_for_a_frame;
    bool m_has_end;
    Clock::time_point m_end;
};

/// Nothing when an interruption, the end of the time or a time-out ended the wait.
std::optional<BUFFER_HANDLE> next_buffer(const NewBufferEvent& event, const platform::Interrupt& interrupt,
                                         const Patience& patience, GrabResult& result)
{
    try {
        const auto buffer = event.wait(patience.left());
        if (!buffer && interrupt.requested())
            result.outcome = Outcome::interrupted;
        else if (!buffer && !patience.is_over())
            result.outcome = Outcome::timed_out;
        return buffer;
    } catch (const Error& reason) {
        if (reason.code() != GC_ERR_ABORT || !interrupt.requested())
            throw;
        result.outcome = Outcome::interrupted;
        return std::nullopt;
    }
}

/// Counts a frame, takes what is to be saved, and hands its buffer back before anything slow happens.
void take_frame(const Stream& stream, BUFFER_HANDLE buffer, FrameSink& sink, Span& span, GrabResult& result)
{
    const Frame frame = stream.frame(buffer);
    span.add(frame.timestamp);
    const FrameState state = result.count.add(frame);
    if (!result.picture)
        result.picture = PictureKind{frame.width, frame.height, frame.pixel_format};
    sink.take(frame, state);
    stream.queue(buffer);
    sink.pass_on();
}

void run_stream(const Stream& stream, const NewBufferEvent& event, FrameSink& sink,
                const platform::Interrupt& interrupt, Span& span, GrabResult& result)
{
    const std::uint64_t wanted = result.options.wanted();
    std::uint64_t to_skip = result.options.skip;
    Progress progress(result.options.quiet ? nullptr : stderr, wanted);
    const Patience patience(result.options);
    while ((wanted == 0 || result.count.delivered() < wanted) && !patience.is_over()) {
        if (interrupt.requested()) {
            result.outcome = Outcome::interrupted;
            return;
        }
        const auto buffer = next_buffer(event, interrupt, patience, result);
        if (!buffer)
            return;
        if (to_skip > 0) {
            --to_skip;
            stream.queue(*buffer);
            continue;
        }
        take_frame(stream, *buffer, sink, span, result);
        progress.show(result.count.delivered(), result.count.lost());
    }
}

void describe(const SelectedDevice& device, GrabResult& result)
{
    result.interface_id = device.interface_id;
    result.device_id = device.id;
    result.vendor = device.vendor;
    result.model = device.model;
    result.serial_number = device.serial_number;
}

/// From the start to the end of the acquisition. What arrived and was saved counts, however it ends.
void acquire(Stream& stream, const NewBufferEvent& event, FrameSink& sink, platform::Interrupt& interrupt,
             std::uint64_t timestamp_frequency, GrabResult& result)
{
    Span span;
    std::exception_ptr failure;
    try {
        sink.begin(timestamp_frequency);
        stream.start();
        {
            const platform::Interrupt::Action wake(interrupt, [&event] { event.kill(); });
            run_stream(stream, event, sink, interrupt, span, result);
        }
        stream.stop();
        sink.finish();
    } catch (...) {
        failure = std::current_exception();
    }
    result.seconds = span.seconds();
    result.device_seconds = span.device_seconds(timestamp_frequency);
    result.saved = sink.saved();
    result.interrupted_code = interrupt.exit_code();
    if (failure)
        std::rethrow_exception(failure);
}

/// Loads the producer, grabs as the options say and shuts everything down again. A time-out and an
/// interruption are outcomes; everything else that goes wrong throws.
void grab(const GrabOptions& options, GrabResult& result)
{
    const std::string problem = settings_problem();
    if (!problem.empty())
        print_error(fmt::format("zvgentl grab: note: {}\n", platform::visible_lines(problem)));
    const ChosenStreamMode mode(options.mode); // before the producer is loaded
    platform::Interrupt interrupt;
    FrameSink sink(options);

    const auto loaded = load_system(options);
    result.producer = loaded->producer.file().u8string();
    const SelectedDevice selected = select_device(loaded->system, options.interface_id, options.device);
    describe(selected, result);
    const Device device(*selected.iface, selected.id);
    set_features(device, options.settings);
    Stream stream(device, first_stream(device));
    const NewBufferEvent event(stream);
    give_buffers(stream, options, result);
    acquire(stream, event, sink, interrupt, selected.timestamp_frequency, result);
}

std::string summary(const GrabResult& result)
{
    if (result.options.json)
        return json_text(result);
    return result.options.quiet || !result.has_stream() ? std::string() : to_text(result);
}

/// Where frames do not go. When that cannot be written, the summary still reaches the user.
void print_summary(const GrabResult& result)
{
    if (result.options.saves_to_output()) {
        print_error(summary(result));
        return;
    }
    try {
        print_output(summary(result));
    } catch (const OutputError& reason) {
        if (!reason.is_broken_pipe())
            print_error(summary(result));
        throw;
    }
}

} // namespace

int run(const GrabOptions& options)
{
    GrabResult result(options);
    try {
        grab(options, result);
        result.finish();
    } catch (const std::exception& reason) {
        const auto* const output = dynamic_cast<const OutputError*>(&reason);
        if (output != nullptr && output->is_broken_pipe())
            throw;
        result.outcome = Outcome::failed;
        result.problem = reason_of(reason);
        print_summary(result);
        throw;
    }
    print_summary(result);
    return result.exit_code();
}

} // namespace zvgentl::tool

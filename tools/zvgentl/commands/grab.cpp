#include <chrono>
#include <cstdio>
#include <optional>
#include <stdexcept>

#include <fmt/core.h>

#include "gentl/Error.h"
#include "gentl/Stream.h"
#include "platform/Interrupt.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/GrabResult.h"
#include "zvgentl/Json.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/PictureSaver.h"
#include "zvgentl/Progress.h"
#include "zvgentl/Selection.h"
#include "zvgentl/TemporarySettings.h"

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
    "\n"
    "Modes: `queued` fills the buffers in place; `cyclic` copies each frame from a ring of the grabber\n"
    "library. The mode applies to this run only: it is set in a temporary copy of your settings file.\n"
    "\n"
    "Lost frames are those missing between the first and the last frame that arrived. Queued mode\n"
    "counts them by the frame ids, cyclic mode by the frame counter in the pixels, if the camera writes\n"
    "one.\n"
    "\n"
    "Pictures: each frame is copied, its buffer is queued again at once, and other threads write the\n"
    "file (frame_000000.png and so on, replacing files of that name). 8-bit formats become 8-bit files,\n"
    "all others 16-bit files with the values unchanged: a 12-bit picture looks dark until its contrast\n"
    "is stretched. Bayer mosaics are saved in shades of grey.\n"
    "\n"
    "Ctrl-C stops cleanly: the frames that have arrived are saved, and the summary is printed. A second\n"
    "Ctrl-C ends the program at once.\n"
    "\n"
    "Exit codes: 0 all frames arrived, 1 failed (no frame in time, a damaged frame, any other error), 2\n"
    "wrong command line, 130 interrupted.";

const CommandRegistration
    registration({"grab", "Grab frames from a device and save them as pictures", footer}, describe_grab, run);

using Clock = std::chrono::steady_clock;

constexpr std::size_t most_waiting_pictures = 256U << 20U; // bytes

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

PixelSource pixels_of(const Frame& frame)
{
    return {frame.data, frame.size, frame.width, frame.height, frame.row_padding, frame.pixel_format};
}

/// Nothing when an interruption ended the wait.
std::optional<BUFFER_HANDLE> next_buffer(const NewBufferEvent& event, const platform::Interrupt& interrupt,
                                         GrabResult& result)
{
    try {
        const auto buffer = event.wait(std::chrono::milliseconds(result.options.timeout_ms));
        if (!buffer)
            result.outcome = interrupt.requested() ? Outcome::interrupted : Outcome::timed_out;
        return buffer;
    } catch (const Error& reason) {
        if (reason.code() != GC_ERR_ABORT || !interrupt.requested())
            throw;
        result.outcome = Outcome::interrupted;
        return std::nullopt;
    }
}

/// Counts a frame, copies it when it is to be saved, and hands its buffer back before anything slow happens.
void take_frame(const Stream& stream, BUFFER_HANDLE buffer, PictureSaver* saver, Span& span,
                GrabResult& result)
{
    const Frame frame = stream.frame(buffer);
    span.add(frame.timestamp);
    const std::uint64_t number = result.count.delivered();
    result.count.add(frame);
    if (!result.picture)
        result.picture = PictureKind{frame.width, frame.height, frame.pixel_format};
    std::optional<Picture> picture;
    if (saver != nullptr)
        picture = make_picture(pixels_of(frame));
    stream.queue(buffer);
    if (picture)
        saver->save(number, std::move(*picture));
}

void run_stream(const Stream& stream, const NewBufferEvent& event, PictureSaver* saver,
                const platform::Interrupt& interrupt, Span& span, GrabResult& result)
{
    const std::uint64_t wanted = result.options.frames;
    Progress progress(stderr, wanted);
    while (wanted == 0 || result.count.delivered() < wanted) {
        if (interrupt.requested()) {
            result.outcome = Outcome::interrupted;
            return;
        }
        const auto buffer = next_buffer(event, interrupt, result);
        if (!buffer)
            return;
        take_frame(stream, *buffer, saver, span, result);
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

/// Loads the producer, grabs as the options say and shuts everything down again. A time-out and an
/// interruption are outcomes; everything else that goes wrong throws.
GrabResult grab(const GrabOptions& options, platform::Interrupt& interrupt)
{
    GrabResult result(options);
    std::optional<PictureSaver> saver;
    if (!options.output.empty())
        saver.emplace(std::filesystem::u8path(options.output), options.format, most_waiting_pictures);

    const auto loaded = load_system(options);
    result.producer = loaded->producer.file().u8string();
    const SelectedDevice selected = select_device(loaded->system, options.interface_id, options.device);
    describe(selected, result);
    const Device device(*selected.iface, selected.id);
    set_features(device, options.settings);
    Stream stream(device, first_stream(device));
    const NewBufferEvent event(stream);
    give_buffers(stream, options, result);

    Span span;
    stream.start();
    {
        const platform::Interrupt::Action wake(interrupt, [&event] { event.kill(); });
        run_stream(stream, event, saver ? &*saver : nullptr, interrupt, span, result);
    }
    stream.stop();
    result.seconds = span.seconds();
    result.device_seconds = span.device_seconds(selected.timestamp_frequency);
    if (saver) {
        saver->finish();
        result.saved = saver->saved();
    }
    return result;
}

/// Everything is shut down and the temporary settings are gone when it returns or throws.
GrabResult grab_with_mode(const GrabOptions& options)
{
    const TemporarySettings settings(options.mode); // before the producer is loaded, which reads them
    platform::Interrupt interrupt([&settings] { settings.remove(); });
    return grab(options, interrupt);
}

} // namespace

int run(const GrabOptions& options)
{
    const GrabResult result = grab_with_mode(options);
    fmt::print("{}", options.json ? json_text(result) : to_text(result));
    return result.exit_code();
}

} // namespace zvgentl::tool

#include "zvgentl/GrabResult.h"

#include <fmt/core.h>

#include "pictures/PixelFormat.h"
#include "platform/Interrupt.h"
#include "platform/visible_text.h"
#include "zvgentl/Commands.h"

namespace zvgentl::tool {

using platform::visible;

namespace {

std::string delivered_text(const GrabResult& result)
{
    std::string text = result.options.frames == 0
                           ? fmt::format("{} frames", result.count.delivered())
                           : fmt::format("{} of {} frames", result.count.delivered(), result.options.frames);
    const auto rate = result.rate(result.seconds);
    if (!rate)
        return text;
    const double bytes = *rate * static_cast<double>(result.buffer_size);
    return text +
           fmt::format(" in {:.2f} s: {:.1f} frames/s, {:.1f} MB/s", result.seconds, *rate, bytes / 1e6);
}

std::string lost_text(const FrameCount& count)
{
    const auto lost = count.lost();
    if (!lost && count.delivered() == 0)
        return "unknown: no frame arrived";
    if (!lost && !count.stamps_checked())
        return "unknown: frame counters are not read (--no-verify)";
    if (!lost)
        return "unknown: the frames are not numbered";
    std::string text = fmt::format(
        "{} (from the {})", *lost,
        count.loss_source() == LossSource::frame_ids ? "frame ids" : "frame counter in the pixels");
    if (count.late() > 0)
        text += fmt::format(", {} arrived out of order", count.late());
    if (count.repeated() > 0)
        text += fmt::format(", {} arrived twice", count.repeated());
    return text;
}

std::string checked_text(const FrameCount& count)
{
    if (!count.stamps_checked())
        return "no (--no-verify)";
    if (count.stamped() == 0)
        return "no: the frames have no checksum";
    if (count.damaged() == 0)
        return fmt::format("all {} checksums are right", count.stamped());
    return fmt::format("{} of {} FRAMES ARE DAMAGED: their checksums are wrong or missing", count.damaged(),
                       count.delivered());
}

std::string ending_text(const GrabResult& result)
{
    switch (result.outcome) {
    case Outcome::interrupted:
        return "\nInterrupted: stopped cleanly.\n";
    case Outcome::timed_out:
        return fmt::format("\nNo frame arrived within {} ms. Does the camera wait for a trigger, or is it "
                           "slower than that? --timeout sets how long to wait.\n",
                           result.options.timeout_ms);
    default:
        return {};
    }
}

} // namespace

GrabResult::GrabResult(const GrabOptions& grab_options)
    : options(grab_options), count(grab_options.mode, grab_options.verify ? FrameCount::Stamps::checked
                                                                          : FrameCount::Stamps::ignored)
{
}

std::optional<double> GrabResult::rate(double span) const
{
    if (count.delivered() < 2 || span <= 0)
        return std::nullopt;
    return static_cast<double>(count.delivered() - 1) / span;
}

int GrabResult::exit_code() const
{
    if (count.damaged() > 0 || outcome == Outcome::timed_out)
        return exit_failure;
    return outcome == Outcome::interrupted ? platform::exit_interrupted : exit_success;
}

std::string to_text(const GrabResult& result)
{
    std::string text =
        fmt::format("Device     {}/{}  {} {}  {}\n", visible(result.interface_id), visible(result.device_id),
                    visible(result.vendor), visible(result.model), visible(result.serial_number));
    text += fmt::format("Stream     {}, {} buffers of {} bytes\n", mode_name(result.options.mode),
                        result.options.buffers, result.buffer_size);
    if (result.picture)
        text += fmt::format("Picture    {} x {} {}\n", result.picture->width, result.picture->height,
                            pixel_format_name(result.picture->pixel_format));
    text += fmt::format("Delivered  {}\n", delivered_text(result));
    text += fmt::format("Lost       {}\n", lost_text(result.count));
    text += fmt::format("Verified   {}\n", checked_text(result.count));
    if (!result.options.output.empty())
        text += fmt::format("Saved      {} {} files in {}\n", result.saved,
                            result.options.format == FileFormat::png ? "PNG" : "TIFF",
                            visible(result.options.output));
    return text + ending_text(result);
}

} // namespace zvgentl::tool

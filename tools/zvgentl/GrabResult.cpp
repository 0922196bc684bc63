#include "zvgentl/GrabResult.h"

#include <algorithm>

#include <fmt/core.h>

#include "pictures/PixelFormat.h"
#include "platform/visible_text.h"
#include "zvgentl/Commands.h"
#include "zvgentl/LoggerLibrary.h"

namespace zvgentl::tool {

using platform::visible;

namespace {

std::string delivered_text(const GrabResult& result)
{
    std::string text = result.options.wanted() == 0 ? fmt::format("{} frames", result.count.delivered())
                                                    : fmt::format("{} of {} frames", result.count.delivered(),
                                                                  result.options.wanted());
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
    if (count.incomplete() > 0)
        return fmt::format("{} of {} FRAMES ARE DAMAGED: {} are incomplete", count.damaged(),
                           count.delivered(), count.incomplete());
    if (!count.stamps_checked())
        return "no (--no-verify)";
    if (count.stamped() == 0)
        return "no: the frames have no checksum";
    if (count.damaged() == 0)
        return fmt::format("all {} checksums are right", count.stamped());
    return fmt::format("{} of {} FRAMES ARE DAMAGED: their checksums are wrong or missing", count.damaged(),
                       count.delivered());
}

std::uint64_t longest_wait_ms(const GrabOptions& options)
{
    return options.duration_s > 0 ? std::min(options.timeout_ms, options.duration_s * 1000)
                                  : options.timeout_ms;
}

std::string ending_text(const GrabResult& result)
{
    switch (result.outcome) {
    case Outcome::failed:
        return "\nFailed: " + platform::visible_lines(result.problem) + "\n";
    case Outcome::incomplete:
        return fmt::format("\nIncomplete: {} frames were lost between the first and the last.\n",
                           result.count.lost().value_or(0));
    case Outcome::interrupted:
        return "\nInterrupted: stopped cleanly.\n";
    case Outcome::timed_out:
        return fmt::format("\nNo frame arrived within {} ms. Does the camera wait for a trigger, or is it "
                           "slower than that? --timeout sets how long to wait.\n{}",
                           longest_wait_ms(result.options), log_hint());
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

bool GrabResult::fails_on_loss() const noexcept
{
    return options.fail_on_loss && count.delivered() > 0 && count.lost().value_or(1) > 0;
}

void GrabResult::finish() noexcept
{
    if (outcome != Outcome::complete)
        return;
    if (count.delivered() == 0)
        outcome = Outcome::timed_out;
    else if (count.lost().value_or(0) > 0)
        outcome = Outcome::incomplete;
}

int GrabResult::exit_code() const
{
    if (count.damaged() > 0 || outcome == Outcome::timed_out || outcome == Outcome::failed || fails_on_loss())
        return exit_failure;
    return outcome == Outcome::interrupted ? interrupted_code : exit_success;
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
        text += fmt::format("Saved      {} frames as {} in {}\n", result.saved,
                            format_name(result.options.format), visible(result.options.output));
    if (result.fails_on_loss() && !result.count.lost())
        text += "\nFailed: whether frames were lost is not known (--fail-on-loss).\n";
    return text + ending_text(result);
}

} // namespace zvgentl::tool

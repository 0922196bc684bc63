#include "zvgentl/GrabOptions.h"

#include "zvgentl/CommandLine.h"

namespace zvgentl::tool {

namespace {

constexpr std::uint64_t longest_duration_s = 31'536'000; // a year
constexpr std::uint64_t longest_timeout_ms = 86'400'000; // a day
constexpr std::uint64_t most_frames = 1'000'000'000'000;
constexpr std::uint64_t most_buffers = 10000;

} // namespace

const char* mode_name(StreamMode mode) noexcept { return mode == StreamMode::queued ? "queued" : "cyclic"; }

const char* format_name(SaveFormat format) noexcept
{
    switch (format) {
    case SaveFormat::tiff:
        return "tiff";
    case SaveFormat::raw:
        return "raw";
    default:
        return "png";
    }
}

void describe_grab(OptionList& list, GrabOptions& options)
{
    describe_device(list, options);
    describe_settings(list, options.settings);
    list.number("-n,--frames", "N", "Frames to grab; 0 grabs until Ctrl-C [10]", options.frames,
                {0, most_frames});
    list.note("--frames", options.has_frames);
    list.number("--skip", "N", "Frames to drop first [0]", options.skip, {0, most_frames});
    list.number("--duration", "S", "Stop after this many seconds; without --frames, grab all that arrive",
                options.duration_s, {1, longest_duration_s});
    list.number("-b,--buffers", "N", "Number of buffers [8]", options.buffers, {1, most_buffers});
    list.choice<StreamMode>("-m,--mode", "MODE", "Stream mode: queued or cyclic [queued]", options.mode,
                            {{"queued", StreamMode::queued}, {"cyclic", StreamMode::cyclic}});
    list.number("-t,--timeout", "MS", "How long to wait for a frame, in milliseconds [5000]",
                options.timeout_ms, {1, longest_timeout_ms});
    list.text("-o,--output", "PATH",
              "Folder to save all frames in; for raw ones also a file named *.raw, or - for standard output",
              options.output);
    list.choice<SaveFormat>("-f,--format", "FORMAT", "Format of the frames: png, tiff or raw [png]",
                            options.format,
                            {{"png", SaveFormat::png}, {"tiff", SaveFormat::tiff}, {"raw", SaveFormat::raw}});
    list.needs("--format", "--output");
    list.flag("--overwrite", "Remove the frames of an earlier run from the folder first", options.overwrite);
    list.needs("--overwrite", "--output");
    list.flag("--append", "Keep the frames of an earlier run; numbers go on after them", options.append);
    list.needs("--append", "--output");
    list.excludes("--append", "--overwrite");
    list.text("--frames-csv", "FILE", "Save a table with a line for each frame", options.frames_csv);
    list.flag("--fail-on-loss", "Fail when frames were lost, or when that cannot be told",
              options.fail_on_loss);
    list.flag("--no-verify",
              "Do not look for the counter and the checksum that some cameras write into the pixels",
              options.verify);
    list.flag("--json", "Print the summary as JSON, whatever the outcome", options.json);
    list.flag("-q,--quiet", "Show neither progress nor, without --json, a summary", options.quiet);
}

} // namespace zvgentl::tool

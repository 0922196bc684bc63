#include "zvgentl/GrabOptions.h"

#include "zvgentl/CommandLine.h"

namespace zvgentl::tool {

namespace {

constexpr std::uint64_t longest_timeout_ms = 86'400'000; // a day
constexpr std::uint64_t most_frames = 1'000'000'000'000;
constexpr std::uint64_t most_buffers = 10000;

} // namespace

const char* mode_name(StreamMode mode) noexcept { return mode == StreamMode::queued ? "queued" : "cyclic"; }

void describe_grab(OptionList& list, GrabOptions& options)
{
    describe_device(list, options);
    describe_settings(list, options.settings);
    list.number("-n,--frames", "N", "Frames to grab; 0 grabs until Ctrl-C [10]", options.frames,
                {0, most_frames});
    list.number("-b,--buffers", "N", "Number of buffers [8]", options.buffers, {1, most_buffers});
    list.choice<StreamMode>("-m,--mode", "MODE", "Stream mode: queued or cyclic [queued]", options.mode,
                            {{"queued", StreamMode::queued}, {"cyclic", StreamMode::cyclic}});
    list.number("-t,--timeout", "MS", "How long to wait for a frame, in milliseconds [5000]",
                options.timeout_ms, {1, longest_timeout_ms});
    list.text("-o,--output", "DIR", "Folder to save all frames in", options.output);
    list.choice<FileFormat>("-f,--format", "FORMAT", "Format of the pictures: png or tiff [png]",
                            options.format, {{"png", FileFormat::png}, {"tiff", FileFormat::tiff}});
    list.needs("--format", "--output");
    list.flag("--no-verify",
              "Do not look for the counter and the checksum that some cameras write into the pixels",
              options.verify);
    list.flag("--json", "Print the summary as JSON", options.json);
}

} // namespace zvgentl::tool

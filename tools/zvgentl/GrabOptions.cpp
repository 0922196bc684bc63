#include "zvgentl/GrabOptions.h"

#include <map>

#include "zvgentl/Command.h"
#include "zvgentl/PortOptions.h"

namespace zvgentl::tool {

namespace {

constexpr std::uint64_t longest_timeout_ms = 86'400'000; // a day
constexpr std::uint64_t most_frames = 1'000'000'000'000;
constexpr std::size_t most_buffers = 10000;

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl grab --frames 100\n"
    "  zvgentl grab --device Device10 --mode cyclic --frames 1000 --json\n"
    "  zvgentl grab --frames 20 --output pictures --format tiff\n"
    "  zvgentl grab --set Width=320 --set ExposureTime=2000\n"
    "  zvgentl grab --frames 0            # until Ctrl-C\n"
    "\n"
    "Modes: `queued` fills the buffers in place; `cyclic` copies each frame from a ring of the grabber "
    "library. The\n"
    "choice holds for this run only: it is made in a temporary copy of your settings file.\n"
    "\n"
    "Lost frames are those missing between the first and the last frame that arrived. They show in the frame "
    "ids in\n"
    "queued mode, and in the frame counter inside the pixels in cyclic mode, if the camera writes one.\n"
    "\n"
    "Pictures: each frame is copied, its buffer goes back to the camera at once, and other threads write the "
    "file\n"
    "(frame_000000.png and so on, replacing files of that name). 8-bit formats give files of 8 bits, all "
    "others of\n"
    "16 bits with the values unchanged, so that a 12-bit picture looks dark until its range is stretched. "
    "Bayer\n"
    "mosaics are saved as grey.\n"
    "\n"
    "Ctrl-C stops in good order: what has arrived is saved and the summary printed; a second one gives up at "
    "once.\n"
    "\n"
    "Exit codes: 0 all frames arrived, 1 failed (no frame in time, a damaged frame, any other error), 2 "
    "wrong\n"
    "command line, 130 interrupted.";

} // namespace

const char* mode_name(StreamMode mode) noexcept { return mode == StreamMode::queued ? "queued" : "cyclic"; }

void add_grab_options(CLI::App& app, GrabOptions& options)
{
    const std::map<std::string, StreamMode> modes{{"queued", StreamMode::queued},
                                                  {"cyclic", StreamMode::cyclic}};
    const std::map<std::string, FileFormat> formats{{"png", FileFormat::png}, {"tiff", FileFormat::tiff}};

    add_selection_options(app, options.cti, options.interface_id, options.device);
    add_set_option(app, options.settings);
    app.add_option("-n,--frames", options.frames, "Frames to grab; 0 grabs until Ctrl-C [10]")
        ->type_name("N")
        ->check(CLI::Range(std::uint64_t{0}, most_frames).description(""));
    app.add_option("-b,--buffers", options.buffers, "Buffers to give to the stream [8]")
        ->type_name("N")
        ->check(CLI::Range(std::size_t{1}, most_buffers).description(""));
    app.add_option("-m,--mode", options.mode, "Stream mode: queued or cyclic [queued]")
        ->type_name("MODE")
        ->transform(CLI::CheckedTransformer(modes).description(""));
    app.add_option("-t,--timeout", options.timeout_ms, "Longest wait for a frame, in milliseconds [5000]")
        ->type_name("MS")
        ->check(CLI::Range(std::uint64_t{1}, longest_timeout_ms).description(""));
    auto* const output = app.add_option("-o,--output", options.output, "Folder in which to save every frame")
                             ->type_name("DIR");
    app.add_option("-f,--format", options.format, "Picture files: png or tiff [png]")
        ->type_name("FORMAT")
        ->transform(CLI::CheckedTransformer(formats).description(""))
        ->needs(output);
    app.add_flag_callback(
        "--no-verify", [&options] { options.verify = false; },
        "Do not look for the counter and the checksum that some cameras write into the pixels");
    app.add_flag("--json", options.json, "Print the summary as JSON for programs");
    app.footer(footer);
}

} // namespace zvgentl::tool

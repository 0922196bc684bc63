#include <cstdio>

#include <fmt/core.h>

#include "platform/Interrupt.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/Grab.h"
#include "zvgentl/Json.h"
#include "zvgentl/TemporarySettings.h"

namespace zvgentl::tool {

namespace {

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

const CommandRegistration registration({"grab", "Grab frames from a device, and save them as pictures",
                                        footer},
                                       describe_grab, run);

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

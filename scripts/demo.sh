#!/usr/bin/env bash
# Shows the producer at work on a fresh Debian 12: installs what is missing, builds the release preset, lists the
# software grabbers, grabs from one camera in queued mode and from another in cyclic mode, and saves the pictures
# in build/demo/. Ends with a verdict: exit code 0 means that all frames arrived undamaged and were saved.
#
#     scripts/demo.sh
#
# The demo's settings and log are in build/demo/ too; the user's own files are not touched.
set -euo pipefail
if [ "${1:-}" = -h ] || [ "${1:-}" = --help ]; then
    sed -n '2,8s/^# \{0,1\}//p' "$0"
    exit 0
fi
cd "$(dirname "$0")/.."
# shellcheck source=scripts/lib.sh
. scripts/lib.sh

bin=build/release/bin
demo=build/demo
frames=25

verdict()
{
    local code=$?
    if [ $code -eq 0 ]; then
        step "DEMO PASSED: $((2 * frames)) frames from two cameras, pictures in $demo/queued and $demo/cyclic"
    else
        step "DEMO FAILED (exit code $code); the log is in $demo/demo.log" >&2
    fi
}
trap verdict EXIT

# Prints a command as a user would type it, then runs it.
show()
{
    printf '$ %s\n' "$*"
    "$@"
}

# grab DEVICE MODE FORMAT: grabs into the folder named after the mode and counts the saved files.
grab()
{
    local saved
    step "Grab $frames frames from $1 in $2 mode, saved as $3"
    rm -rf "${demo:?}/$2"
    show "$bin/zvgentl" grab --cti "$bin/ZVGRLibGenTL.cti" --device "$1" --mode "$2" --frames "$frames" \
        --output "$demo/$2" --format "$3"
    saved=$(find "$demo/$2" -name "*.$3" -size +0 | wc -l)
    if [ "$saved" -ne "$frames" ]; then
        echo "$saved files in $demo/$2 instead of $frames" >&2
        return 1
    fi
}

step "Packages"
# The preset also configures tests and benchmarks, so that this script and test.sh share a build folder.
# shellcheck disable=SC2086
ensure_packages $packages_to_build libgtest-dev libgmock-dev python3

step "Build the producer, its libraries and zvgentl in build/release"
cmake --preset release --log-level=WARNING
cmake --build --preset release --target ZVGRLibGenTL ZVGRLib ZVLogger zvgentl

mkdir -p "$demo"
cat >"$demo/logger.properties" <<EOF
logging.loggers.root.level = warning
logging.loggers.root.channel = file
logging.channels.file.class = FileChannel
logging.channels.file.path = $PWD/$demo/demo.log
EOF
export ZV_LOGGER_CONFIG="$PWD/$demo/logger.properties"
export ZV_SETTINGS_FILE="$PWD/$demo/settings.properties"
# The caller's environment must not change what the software grabbers deliver.
unset "${!ZV_GRABBER_@}"

step "List the grabbers and cameras"
show "$bin/zvgentl" list --cti "$bin/ZVGRLibGenTL.cti"

grab Device00 queued png
grab Device10 cyclic tiff

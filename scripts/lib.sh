# Shared by the scripts: the packages that they need, and how they report. Sourced, not run.

packages_to_build="g++ cmake ninja-build pkg-config libpoco-dev libcli11-dev nlohmann-json3-dev libfmt-dev libpng-dev
    libtiff-dev libyaml-cpp-dev libzip-dev libxml2-dev libaravis-dev"
packages_to_test="$packages_to_build git python3 gcovr clang-14 clang-tidy-14 clang-format-14 libclang-rt-14-dev
    libgtest-dev libgmock-dev python3-jsonschema python3-yaml ccache valgrind"
packages_to_bench="$packages_to_build git libgtest-dev libgmock-dev python3 valgrind"
packages_to_package="$packages_to_build dpkg-dev file git libgmock-dev libgtest-dev python3
    python3-markdown zip"
packages_to_package_for_windows="nsis wine wine64"
packages_to_test_packages="clang-14 debootstrap unzip"

packages_to_build_windows="g++-mingw-w64-x86-64-posix libz-mingw-w64-dev wine wine64 googletest dpkg-dev bzip2 xz-utils
    $packages_to_build"

# Prints a heading with the time since the script started.
step()
{
    printf '\n==> [%d:%02d] %s\n' $((SECONDS / 60)) $((SECONDS % 60)) "$*"
}

# Tries to install the tools of the Windows build and tells whether they are installed.
can_build_for_windows()
{
    # shellcheck disable=SC2086
    ensure_packages $packages_to_build_windows $packages_to_package_for_windows >/dev/null 2>&1
}

# Installs the named Debian packages that are missing. Needs root or sudo only if there are any.
ensure_packages()
{
    local missing=() package as_root=()
    for package in "$@"; do
        dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    if [ ${#missing[@]} -eq 0 ]; then
        echo "All packages are installed."
        return
    fi
    if ! command -v apt-get >/dev/null; then
        echo "Missing: ${missing[*]} (Debian package names). Install them and run the script again." >&2
        return 1
    fi
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]}"
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null
}

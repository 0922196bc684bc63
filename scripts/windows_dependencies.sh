#!/usr/bin/env bash
# Builds the libraries that the Windows build needs and that Debian does not package for mingw-w64, from Debian's own
# sources, and prints the folder that they are installed in.
#
#     scripts/windows_dependencies.sh
#
# The first run takes about 5 minutes on two idle cores and twice that on busy ones. It can be interrupted: each library
# is kept as soon as it is complete in ${XDG_CACHE_HOME:-~/.cache}/zvgentl-windows, and is built again only when its
# version, its recipe below or the tool chain changes. "current" in that folder is a link to the result of the last run;
# the toolchain file looks there. Needs the packages of packages_to_build_windows in scripts/lib.sh.
set -euo pipefail
shopt -s inherit_errexit
if [ "${1:-}" = -h ] || [ "${1:-}" = --help ]; then
    sed -n '2,10s/^# \{0,1\}//p' "$0"
    exit 0
fi
cd "$(dirname "$0")/.."
exec 3>&1 1>&2 # only the answer goes to standard output

cache=${XDG_CACHE_HOME:-$HOME/.cache}/zvgentl-windows
work=$cache/build
toolchain=$PWD/cmake/toolchains/windows-mingw.cmake

# The Debian source of each library, and the Linux package whose version it is built in: both builds use the same one.
declare -A linux_package=(
    [poco]=libpoco-dev
    [googletest]=googletest
    [yaml-cpp]=libyaml-cpp-dev
    [libpng1.6]=libpng-dev
    [tiff]=libtiff-dev
    [libzip]=libzip-dev
    [libxml2]=libxml2-dev
    [fmtlib]=libfmt-dev
)
headers_only="libcli11-dev nlohmann-json3-dev"
tool_chain="g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev libz-mingw-w64-dev"

# The recipes. Each one builds the sources in $source with "build OPTION...".

# Shared, because the producer and the logger library pass Poco's objects to each other. The others are static, because
# nobody else sees them.
make_poco()
{
    local off
    # mingw-w64's headers have lower-case names.
    sed -i 's/#include <\([A-Za-z0-9]*\.h\)>/#include <\L\1>/' "$source/Foundation/include/Poco/UnWindows.h"
    off=$(sed -n 's/^[[:space:]]*option(ENABLE_\([A-Z0-9_]*\) .*/-DENABLE_\1=OFF/p' "$source/CMakeLists.txt" |
        grep -vE 'ENABLE_(TESTS|FOUNDATION)=' | sort -u)
    # shellcheck disable=SC2086
    build $off -DBUILD_SHARED_LIBS=ON -DPOCO_UNBUNDLED=OFF -DENABLE_TESTS=OFF -DENABLE_FOUNDATION=ON \
        -DCMAKE_SHARED_LINKER_FLAGS=-Wl,--no-insert-timestamp
}

make_googletest()
{
    build -DBUILD_SHARED_LIBS=OFF
}

make_yaml-cpp()
{
    build -DYAML_BUILD_SHARED_LIBS=OFF -DYAML_CPP_BUILD_TESTS=OFF -DYAML_CPP_BUILD_TOOLS=OFF
}

make_libpng1.6()
{
    build -DPNG_SHARED=OFF -DPNG_TESTS=OFF -DPNG_EXECUTABLES=OFF
}

make_tiff()
{
    build -DBUILD_SHARED_LIBS=OFF -Dcxx=OFF -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF \
        -Djpeg=OFF -Dold-jpeg=OFF -Djbig=OFF -Dlerc=OFF -Dlibdeflate=OFF -Dlzma=OFF -Dwebp=OFF -Dzstd=OFF
}

make_libzip()
{
    build -DBUILD_SHARED_LIBS=OFF -DBUILD_TOOLS=OFF -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOC=OFF \
        -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF -DENABLE_ZSTD=OFF -DENABLE_OPENSSL=OFF -DENABLE_GNUTLS=OFF \
        -DENABLE_MBEDTLS=OFF -DENABLE_COMMONCRYPTO=OFF -DENABLE_WINDOWS_CRYPTO=OFF
}

# Only the parser and the tree. Without threads it must not see their header either, or it uses half of them.
make_libxml2()
{
    local off
    off=$(sed -n 's/^option(LIBXML2_WITH_\([A-Z0-9_]*\) .*/-DLIBXML2_WITH_\1=OFF/p' "$source/CMakeLists.txt" |
        grep -v '_TREE=')
    # shellcheck disable=SC2086
    build $off -DBUILD_SHARED_LIBS=OFF -DHAVE_PTHREAD_H=OFF
}

make_fmtlib()
{
    build -DBUILD_SHARED_LIBS=OFF -DFMT_TEST=OFF -DFMT_DOC=OFF
}

# What all recipes have in common. The sources' own paths are replaced, so that a library has the same bytes wherever
# the cache is.
configure()
{
    local no_paths="-ffile-prefix-map=$work=/usr/src/zvgentl-windows -ffile-prefix-map=$result=/usr/lib/zvgentl-windows"
    cmake -S "$source" -B "$work/$library" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
        -DCMAKE_INSTALL_PREFIX="$result" -DCMAKE_BUILD_TYPE=Release -DCMAKE_MODULE_PATH= \
        -DCMAKE_POLICY_DEFAULT_CMP0077=NEW -DCMAKE_C_FLAGS="$no_paths" -DCMAKE_CXX_FLAGS="$no_paths" "$@"
}

# build [CMake options]: builds $source and installs it in $result.
build()
{
    if ! { configure "$@" && cmake --build "$work/$library" && cmake --install "$work/$library"; } \
        >"$work/$library.log" 2>&1; then
        tail -n 30 "$work/$library.log"
        echo "Building $library failed; the whole log is $work/$library.log" >&2
        return 1
    fi
}

versions_of()
{
    dpkg-query -W -f '${source:Package} ${source:Version}\n' "$@"
}

# key: a short name for what is read from standard input.
key()
{
    sha256sum | cut -c 1-16
}

# library_key LIBRARY: changes with everything that goes into the library, and with nothing else. Comments do not count:
# bash leaves them out of a function that it prints.
library_key()
{
    # shellcheck disable=SC2086
    {
        declare -f "make_$1" configure
        grep -v '^[[:space:]]*#' "$toolchain"
        versions_of "${linux_package[$1]}" $tool_chain
    } | key
}

# Asks the machine's own package archives for sources instead of packages, in a configuration apart from the machine's,
# which is not changed.
prepare_apt()
{
    local file
    mkdir -p "$work/apt/parts" "$work/apt/lists/partial" "$work/apt/archives/partial"
    for file in /etc/apt/sources.list.d/*.sources; do
        [ -e "$file" ] && sed 's/^Types:.*/Types: deb-src/' "$file" >"$work/apt/parts/$(basename "$file")"
    done
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -e "$file" ] && sed -n 's/^deb /deb-src /p' "$file" >"$work/apt/parts/$(basename "$file" .list)_src.list"
    done
    cat >"$work/apt/apt.conf" <<END
Dir::Etc::sourcelist "/dev/null";
Dir::Etc::sourceparts "$work/apt/parts";
Dir::State::lists "$work/apt/lists";
Dir::Cache "$work/apt";
APT::Sandbox::User "root";
END
    export APT_CONFIG=$work/apt/apt.conf
    apt-get update -qq || true # not every archive has sources; fetch reports what is missing
}

# fetch LIBRARY: unpacks its source, with Debian's patches, in $source and prints "NAME VERSION". The version of the
# Linux package comes first. An archive's index may be ahead of its files, so the others are tried as well.
fetch()
{
    local wanted versions version folder=$work/fetch
    if [ "$1" = googletest ]; then
        cp -R /usr/src/googletest "$source" # Debian packages the source itself
        versions_of googletest
        return
    fi
    wanted=$(versions_of "${linux_package[$1]}" | cut -d ' ' -f 2)
    versions=$(apt-cache showsrc "$1" | sed -n 's/^Version: //p' | sort -ruV)
    for version in $(grep -Fx "$wanted" <<<"$versions") $versions; do
        rm -rf "$folder"
        mkdir "$folder"
        if (cd "$folder" && apt-get source -qq "$1=$version" >&2) && mv "$folder"/*/ "$source"; then
            echo "$1 $version"
            return
        fi
    done
    echo "The source of the Debian package $1 cannot be downloaded" >&2
    return 1
}

# assemble FOLDER: fills it with all libraries, as they will be found in $prefix.
assemble()
{
    local result
    mkdir -p "$1/include" "$1/share/cmake"
    for result in "${results[@]}"; do
        cp -R "$result/." "$1/"
        { grep -rlI --null -F "$result" "$1" || true; } | xargs -0 -r sed -i "s|$result|$prefix|g"
    done
    cp -R /usr/include/CLI /usr/include/nlohmann "$1/include/"
    cp -R /usr/share/cmake/CLI11 /usr/share/cmake/nlohmann_json "$1/share/cmake/"
    rm "$1/version"
    # shellcheck disable=SC2086
    {
        cat "${results[@]/%//version}"
        versions_of $headers_only libz-mingw-w64-dev
    } >"$1/versions"
}

mkdir -p "$cache/libraries"
exec 4>"$cache/lock"
flock 4
rm -rf "$work"
mkdir "$work"

results=()
for library in $(printf '%s\n' "${!linux_package[@]}" | sort); do
    result=$cache/libraries/$library-$(library_key "$library")
    results+=("$result")
    if [ -e "$result/version" ]; then
        continue
    fi
    rm -rf "$result"
    [ -e "$work/apt" ] || prepare_apt
    source=$work/src/$library
    mkdir -p "$work/src"
    version=$(fetch "$library")
    echo "Building $version for Windows"
    ZV_WINDOWS_PREFIX=$result "make_$library"
    rm -rf "$source" "${work:?}/$library"
    echo "$version" >"$work/version"
    mv "$work/version" "$result/version" # from here on the library is complete
done

# One folder with all of them. It appears in one step, so it is complete whenever it is there.
# shellcheck disable=SC2086
name=$({ printf '%s\n' "${results[@]##*/}" && versions_of $headers_only && declare -f assemble; } | key)
prefix=$cache/$name
if [ -e "$prefix" ]; then
    echo "The libraries for Windows are in the cache."
else
    assemble "$work/all"
    mv "$work/all" "$prefix"
fi
rm -rf "$work"
ln -sfn "$name" "$cache/current"
echo "$prefix" >&3

#!/usr/bin/env bash
# Builds the libraries that the Windows build needs and that Debian does not package for mingw-w64, from Debian's own
# sources, and prints the folder that they are installed in.
#
#     scripts/windows_dependencies.sh
#
# The folder lies in ${XDG_CACHE_HOME:-~/.cache}/zvgentl-windows and is named after the versions of all that goes into
# it, so that a second run builds nothing. "current" beside it leads to the one made last: the toolchain file looks
# there. Needs the packages of packages_to_build_windows in scripts/lib.sh. The first run takes about 3 minutes on two
# cores.
set -euo pipefail
if [ "${1:-}" = -h ] || [ "${1:-}" = --help ]; then
    sed -n '2,10s/^# \{0,1\}//p' "$0"
    exit 0
fi
cd "$(dirname "$0")/.."
root=$PWD
exec 3>&1 1>&2 # what tools print is not the answer

cache=${XDG_CACHE_HOME:-$HOME/.cache}/zvgentl-windows
toolchain=$root/cmake/toolchains/windows-mingw.cmake

# The libraries are of the versions of their Linux packages, which both builds use the headers of.
versions()
{
    dpkg-query -W -f '${source:Package} ${source:Version}\n' libpoco-dev libyaml-cpp-dev libpng-dev libtiff-dev \
        libzip-dev libxml2-dev libbenchmark-dev googletest libfmt-dev libcli11-dev nlohmann-json3-dev libz-mingw-w64-dev \
        g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev
    sha256sum <"$root/scripts/windows_dependencies.sh"
    sha256sum <"$toolchain"
}

key=$(versions | sha256sum | cut -c 1-16)
prefix=$cache/$key
mkdir -p "$cache"
exec 4>"$cache/lock"
flock 4
if [ -e "$prefix/complete" ]; then
    echo "The libraries for Windows are in the cache."
    ln -sfn "$key" "$cache/current"
    echo "$prefix" >&3
    exit 0
fi

work=$cache/build-$key
rm -rf "$prefix" "$work"
mkdir -p "$prefix/include" "$work/apt/parts" "$work/apt/lists/partial" "$work/apt/archives/partial" "$work/src"
export ZV_WINDOWS_PREFIX=$prefix

# The machine's own package sources, asked for sources instead of packages, in a configuration apart from the
# machine's: nothing of it is changed.
prepare_apt()
{
    local file
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
    apt-get update -qq || true # other makers' archives have no sources; what is missing is found out below
}

# fetch SOURCE-PACKAGE: unpacks it, with Debian's patches, as $work/src/SOURCE-PACKAGE. An archive's index may be
# ahead of its files, so older versions are tried as well.
fetch()
{
    local version folder=$work/fetch-$1
    for version in $(apt-cache showsrc "$1" | sed -n 's/^Version: //p' | sort -ruV); do
        rm -rf "$folder"
        mkdir "$folder"
        if (cd "$folder" && apt-get source -qq "$1=$version") && mv "$folder"/*/ "$work/src/$1"; then
            echo "$1 $version" >>"$prefix/versions"
            return
        fi
    done
    echo "No source of the Debian package $1 can be had" >&2
    return 1
}

# build NAME [CMake options]: builds and installs $work/src/NAME.
build()
{
    local name=$1
    shift
    echo "Building $name for Windows"
    if ! { cmake -S "$work/src/$name" -B "$work/$name" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
        -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_BUILD_TYPE=Release -DCMAKE_MODULE_PATH= \
        -DCMAKE_POLICY_DEFAULT_CMP0077=NEW -DCMAKE_C_FLAGS="$no_paths" -DCMAKE_CXX_FLAGS="$no_paths" "$@" &&
        cmake --build "$work/$name" && cmake --install "$work/$name"; } >"$work/$name.log" 2>&1; then
        tail -n 30 "$work/$name.log"
        echo "Building $name failed; $work/$name.log has everything" >&2
        return 1
    fi
}

# poco_components_off: the options that leave Foundation alone.
poco_components_off()
{
    sed -n 's/^[[:space:]]*option(ENABLE_\([A-Z0-9_]*\) .*/-DENABLE_\1=OFF/p' "$work/src/poco/CMakeLists.txt" |
        grep -vE 'ENABLE_(TESTS|FOUNDATION)=' | sort -u
}

# libxml2_parts_off: the options that leave its parser and its tree alone.
libxml2_parts_off()
{
    sed -n 's/^option(LIBXML2_WITH_\([A-Z0-9_]*\) .*/-DLIBXML2_WITH_\1=OFF/p' "$work/src/libxml2/CMakeLists.txt" |
        grep -v '_TREE='
}

# A library says the same of itself wherever the cache lies: two builds of the packages have the same bytes.
no_paths="-ffile-prefix-map=$work=/usr/src/zvgentl-windows -ffile-prefix-map=$prefix=/usr/lib/zvgentl-windows"

prepare_apt
for package in poco yaml-cpp libpng1.6 tiff libzip libxml2 benchmark; do
    fetch "$package"
done
cp -R /usr/src/googletest "$work/src/googletest"

# Windows' own headers have lower-case names here.
sed -i 's/#include <\([A-Za-z0-9]*\.h\)>/#include <\L\1>/' "$work/src/poco/Foundation/include/Poco/UnWindows.h"

# Shared, because the producer and the logger library hand Poco's objects to each other.
mapfile -t off < <(poco_components_off)
build poco "${off[@]}" -DBUILD_SHARED_LIBS=ON -DPOCO_UNBUNDLED=OFF -DENABLE_TESTS=OFF -DENABLE_FOUNDATION=ON \
    -DCMAKE_SHARED_LINKER_FLAGS=-Wl,--no-insert-timestamp
# Static, because nobody else sees them.
build googletest -DBUILD_SHARED_LIBS=OFF
build yaml-cpp -DYAML_BUILD_SHARED_LIBS=OFF -DYAML_CPP_BUILD_TESTS=OFF -DYAML_CPP_BUILD_TOOLS=OFF
build libpng1.6 -DPNG_SHARED=OFF -DPNG_TESTS=OFF -DPNG_EXECUTABLES=OFF
build tiff -DBUILD_SHARED_LIBS=OFF -Dcxx=OFF -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF \
    -Djpeg=OFF -Dold-jpeg=OFF -Djbig=OFF -Dlerc=OFF -Dlibdeflate=OFF -Dlzma=OFF -Dwebp=OFF -Dzstd=OFF
build libzip -DBUILD_SHARED_LIBS=OFF -DBUILD_TOOLS=OFF -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOC=OFF \
    -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF -DENABLE_ZSTD=OFF -DENABLE_OPENSSL=OFF -DENABLE_GNUTLS=OFF \
    -DENABLE_MBEDTLS=OFF -DENABLE_COMMONCRYPTO=OFF -DENABLE_WINDOWS_CRYPTO=OFF
# Without threads it must not see their header either, or it uses half of them.
mapfile -t off < <(libxml2_parts_off)
build libxml2 "${off[@]}" -DBUILD_SHARED_LIBS=OFF -DHAVE_PTHREAD_H=OFF
build benchmark -DGIT_VERSION=0.0.0 -DBENCHMARK_ENABLE_TESTING=OFF -DBENCHMARK_ENABLE_GTEST_TESTS=OFF -DBENCHMARK_ENABLE_WERROR=OFF

# Headers alone serve of these. fmt's own CMake file wants the machine's library as well.
mkdir -p "$prefix/share/cmake" "$prefix/lib/cmake/fmt"
cp -R /usr/include/fmt /usr/include/CLI /usr/include/nlohmann "$prefix/include/"
cp -R /usr/share/cmake/CLI11 /usr/share/cmake/nlohmann_json "$prefix/share/cmake/"
cat >"$prefix/lib/cmake/fmt/fmt-config.cmake" <<'END'
add_library(fmt::fmt-header-only INTERFACE IMPORTED)
set_target_properties(fmt::fmt-header-only PROPERTIES
    INTERFACE_COMPILE_DEFINITIONS FMT_HEADER_ONLY=1
    INTERFACE_INCLUDE_DIRECTORIES "${CMAKE_CURRENT_LIST_DIR}/../../../include")
END
dpkg-query -W -f '${source:Package} ${source:Version}\n' googletest libfmt-dev libcli11-dev nlohmann-json3-dev \
    libz-mingw-w64-dev >>"$prefix/versions"

rm -rf "$work"
touch "$prefix/complete"
ln -sfn "$key" "$cache/current"
echo "$prefix" >&3

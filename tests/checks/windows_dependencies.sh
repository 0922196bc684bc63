#!/usr/bin/env bash
# scripts/windows_dependencies.sh with stand-ins for apt, dpkg-query and cmake: what is built, what is kept after a
# failure or an interruption, and what makes a library be built again. Takes seconds and downloads nothing.
#
#     tests/checks/windows_dependencies.sh
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
# shellcheck source=tests/packages/report.sh
. "$root/tests/packages/report.sh"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export state=$scratch/state

# A tree of its own, because some cases change it, and the stand-ins.
mkdir -p "$scratch/tree/scripts" "$scratch/tree/cmake/toolchains" "$scratch/bin"
script=$scratch/tree/scripts/windows_dependencies.sh
toolchain=$scratch/tree/cmake/toolchains/windows-mingw.cmake
cat >"$scratch/bin/dpkg-query" <<'END'
#!/bin/sh
shift 3
for package in "$@"; do
    echo "$package $(cat "$state/version.$package" 2>/dev/null || echo 1.0)"
done
END
cat >"$scratch/bin/apt-cache" <<'END'
#!/bin/sh
printf 'Version: 1.0\nVersion: 0.9\nVersion: 1.1\n'
END
cat >"$scratch/bin/apt-get" <<'END'
#!/bin/sh
[ "$1" = source ] || exit 0
[ ! -e "$state/gone.$3" ] || exit 100
mkdir "${3%=*}-source"
printf 'option(ENABLE_XML "XML" ON)\noption(LIBXML2_WITH_FTP "FTP" ON)\n' >"${3%=*}-source/CMakeLists.txt"
mkdir -p "${3%=*}-source/Foundation/include/Poco"
touch "${3%=*}-source/Foundation/include/Poco/UnWindows.h"
END
# cmake -S SOURCE -B BUILD ...; cmake --build BUILD; cmake --install BUILD
cat >"$scratch/bin/cmake" <<'END'
#!/bin/sh
library=${2##*/}
case $1 in
-S)
    library=${4##*/}
    echo "$library" >>"$state/built"
    mkdir -p "$4"
    for option in "$@"; do
        case $option in -DCMAKE_INSTALL_PREFIX=*) echo "${option#*=}" >"$4/prefix" ;; esac
    done
    ;;
--build)
    [ ! -e "$state/fails.$library" ]
    ;;
--install)
    prefix=$(cat "$2/prefix")
    mkdir -p "$prefix/lib"
    echo "prefix=$prefix" >"$prefix/lib/$library.pc"
    [ ! -e "$state/killed.$library" ] || kill -KILL $PPID
    ;;
esac
END
chmod +x "$scratch/bin"/*

# start NAME: an empty cache and an unchanged tree.
start()
{
    echo "$1"
    rm -rf "$state" "$scratch/cache"
    mkdir -p "$state"
    cp "$root/scripts/windows_dependencies.sh" "$script"
    cp "$root/cmake/toolchains/windows-mingw.cmake" "$toolchain"
}

# run: sets "code", "answer" and "built", the libraries that this run has built.
run()
{
    : >"$state/built"
    code=0
    answer=$(PATH=$scratch/bin:$PATH XDG_CACHE_HOME=$scratch/cache "$script" 2>"$state/messages") || code=$?
    built=$(tr '\n' ' ' <"$state/built")
}

all="fmtlib googletest libpng1.6 libxml2 libzip poco tiff yaml-cpp "
cache=$scratch/cache/zvgentl-windows

start "The first run"
run
first=$answer
check "succeeds" same 0 $code
check "builds every library once" same "$all" "$built"
check "answers with a folder of the cache" same "$cache" "$(dirname "$answer")"
check "the folder holds every library" same "$all" "$(cd "$answer/lib" && printf '%s ' *.pc | sed 's/\.pc//g')"
check "and names itself where a library knows its place" same "prefix=$answer" "$(cat "$answer/lib/tiff.pc")"
check "versions lists what was built, and the headers" same 11 "$(grep -c ' 1\.0$' "$answer/versions")"
check "current leads to it" same "$answer" "$(realpath "$cache/current")"
check "no other file is left" same "current libraries lock " "$(cd "$cache" && printf '%s ' [a-z]*[a-z])"

echo "Later runs"
run
check "build nothing" same "$first " "$answer $built"
sed -i 's/^# .*/# Another comment/' "$toolchain"
sed -i 's/^    # mingw-w64.*/    # Another comment/; s/^make_tiff()/# Another comment\n&/' "$script"
run
check "build nothing for a changed comment" same "$first " "$answer $built"
sed -i 's/-Dcxx=OFF/-Dcxx=ON/' "$script"
run
check "build the library whose recipe changed" same "tiff " "$built"
check "and answer with another folder" same different "$([ "$answer" = "$first" ] || echo different)"
cp "$root/scripts/windows_dependencies.sh" "$script"
run
check "build nothing when the recipe is as before" same "$first " "$answer $built"
echo 1.1 >"$state/version.libzip-dev"
run
check "build the library whose version changed" same "libzip " "$built"
check "in that version" grep -qx "libzip 1.1" "$answer/versions"
echo 2.0 >"$state/version.libcli11-dev"
run
check "build nothing for other headers" same "" "$built"
check "whose version is in the list" grep -qx "libcli11-dev 2.0" "$answer/versions"
echo 13.0 >"$state/version.g++-mingw-w64-x86-64-posix"
run
check "build everything for another compiler" same "$all" "$built"
echo "set(CMAKE_CXX_FLAGS_INIT -g)" >>"$toolchain"
run
check "build everything for another toolchain file" same "$all" "$built"

start "A library that fails"
touch "$state/fails.libzip"
run
check "ends the run with an error" same 1 $code
check "without an answer" same "" "$answer"
check "and names its log" grep -q "Building libzip failed.*$cache/build/libzip.log" "$state/messages"
check "current leads nowhere" same "" "$(find "$cache" -name current)"
rm "$state/fails.libzip"
run
check "the next run starts with that library" same "libzip poco tiff yaml-cpp " "$built"
check "and answers as if nothing had happened" same "$first" "$answer"

start "A run that is killed"
touch "$state/killed.libxml2"
run
check "does not end well" same 137 $code
rm "$state/killed.libxml2"
run
check "the next run starts with the library that was not complete" same "libxml2 libzip poco tiff yaml-cpp " "$built"
check "and answers as if nothing had happened" same "$first" "$answer"

start "A version that the archive no longer has"
touch "$state/gone.fmtlib=1.0" "$state/gone.libpng1.6=1.0" "$state/gone.libpng1.6=1.1"
run
check "is replaced by the newest" grep -qx "fmtlib 1.1" "$answer/versions"
check "or by an older one" grep -qx "libpng1.6 0.9" "$answer/versions"
touch "$state/gone.libpng1.6=0.9"
rm -rf "$cache"
run
check "without any, the run fails" same "1 " "$code $answer"
check "and names the package" grep -q "Debian package libpng1.6" "$state/messages"

verdict "Libraries for Windows"

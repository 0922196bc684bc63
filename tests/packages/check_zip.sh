#!/usr/bin/env bash
# The zip archive for Windows under Wine, in a prefix of its own: unpacked into a folder with blanks and a letter that is
# none in ASCII, found through GENICAM_GENTL64_PATH by an application in C that another compiler has built, and loaded
# in each of the ways that docs/windows.md names.
#
#     tests/packages/check_zip.sh PACKAGES-FOLDER
set -euo pipefail
shopt -s inherit_errexit
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/packages/report.sh
. "$here/report.sh"
root=$(cd "$here/../.." && pwd)
work=$root/build/package-test/zip
zip=$(find "$(realpath "$1")" -name '*-windows-x86_64.zip')
[ -n "$zip" ] || { echo "There is no zip archive in $1" && exit 1; }
rm -rf "$work"
mkdir -p "$work"
cd "$work" # the producer must not depend on the working directory
unset GENICAM_GENTL64_PATH "${!ZV_@}"
export ZV_WINEPREFIX=$work/prefix
wine=$root/scripts/wine.sh
trap '"$wine" end' EXIT
drive=$ZV_WINEPREFIX/drive_c

windows() { timeout 300 "$wine" "$@" </dev/null 2>/dev/null | tr -d '\r'; }
# said TEXT COMMAND...: the command succeeds and says the text.
said()
{
    local text=$1 output
    shift
    output=$(windows "$@") && grep -F "$text" <<<"$output" && return
    printf '%s\n' "$output"
    return 1
}

echo "An application of another compiler"
libraries=$(dirname "$(x86_64-w64-mingw32-gcc-posix -print-libgcc-file-name)")
check "clang builds it with the interface's header alone" clang-14 --target=x86_64-w64-mingw32 -std=c11 -pedantic \
    -Wall -Wextra -Wconversion -Wshadow -Werror -I "$root/include" -I "$root/tests/support/win32" -L "$libraries" \
    "$here/loading_ways.c" "$root/tests/system/c_consumer.c" -o "$work/application.exe"

echo "Unpacking"
timeout 300 "$wine" begin
mkdir -p "$drive/zwei Wörter" "$drive/Other Maker" "$drive/application"
mv application.exe "$drive/application/"
echo "another maker's file" >"$drive/Other Maker/readme.txt"
unzip -q "$zip" -d "$drive/zwei Wörter"
folder="zwei Wörter/$(basename "$zip" .zip)"
bin="C:\\${folder//\//\\}\\bin"
check "the archive is one folder" same "$(basename "$folder")" "$(ls "$drive/zwei Wörter")"
check "it has the licence" cmp "$root/LICENSE" "$drive/$folder/doc/LICENSE.txt"
check "our programs and libraries are hardened" python3 "$root/tests/checks/hardening.py" \
    "$drive/$folder/bin/"{ZVGRLibGenTL.cti,ZVGRLib.dll,ZVLogger.dll,zvgentl.exe}
check "the application lies elsewhere" same application.exe "$(ls "$drive/application")"

echo "Loading"
check "without the variable the producer is not found" same "" \
    "$(ZV_LOADING=plain windows 'C:\application\application.exe' ZVGRLibGenTL.cti || true)"
# As the dialog for the variables of an account does it. Processes that start from now on have it.
windows reg add 'HKCU\Environment' /f /v GENICAM_GENTL64_PATH /d "C:\\Other Maker;$bin" >/dev/null
for way in altered folder path plain; do
    output=$(ZV_LOADING=$way windows 'C:\application\application.exe' ZVGRLibGenTL.cti) && code=0 || code=$?
    check "$way: the application ends well" same 0 "$code"
    check "$way: it has loaded what was unpacked" same "loaded $bin\\ZVGRLibGenTL.cti" "$(head -n 1 <<<"$output" |
        iconv -f CP1252 -t UTF-8)"
    check "$way: it has received frames" grep -c '^frame ' <<<"$output"
done
check "a way that there is not is refused" same "" \
    "$(ZV_LOADING=none windows 'C:\application\application.exe' ZVGRLibGenTL.cti || true)"
# The checks above would pass with libraries that lie elsewhere, too.
mv "$drive/$folder/bin/libPocoFoundation.dll" "$work/"
check "without a library of its folder it cannot be loaded" same "" \
    "$(ZV_LOADING=altered windows 'C:\application\application.exe' ZVGRLibGenTL.cti || true)"
mv "$work/libPocoFoundation.dll" "$drive/$folder/bin/"

echo "zvgentl"
# From another folder: it must take the producer that the variable names, not the one beside itself.
mkdir -p "$drive/where/it"
unzip -q "$zip" -d "$drive/where/it"
mv "$drive/where/it/$(basename "$zip" .zip)" "$drive/where/it/is"
check "it finds a producer through the variable" said "$bin\\ZVGRLibGenTL.cti" 'C:\where\it\is\bin\zvgentl.exe' list
windows reg delete 'HKCU\Environment' /f /v GENICAM_GENTL64_PATH >/dev/null
check "and without it the one beside itself" said Device00 "$bin\\zvgentl.exe" list
check "it grabs" windows "$bin\\zvgentl.exe" grab --frames 3 --output 'C:\zwei Wörter\Bilder'
check "three pictures are there" same 3 "$(find "$drive/zwei Wörter/Bilder" -name '*.png' -size +0 | wc -l)"

echo "The commands of docs/windows.md"
sed -n '/^```bat$/,/^```$/{/^```/d; s/$/\r/; p}' "$root/docs/windows.md" >"$drive/commands.bat"
check "there are three" same 3 "$(wc -l <"$drive/commands.bat")"
check "they succeed in a batch file" said Device00 cmd /c 'C:\commands.bat'
check "ten pictures are in the folder for what is temporary" same 10 \
    "$(find "$drive/users" -ipath '*/temp/frames/*.png' -size +0 | wc -l)"
verdict "Archive for Windows"

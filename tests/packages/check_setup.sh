#!/usr/bin/env bash
# The Windows installer under Wine, in a prefix of its own: install beside another maker's entry, upgrade in place,
# refuse while a file is in use, move to another folder, remove. Variables are read from the registry, whole.
#
#     tests/packages/check_setup.sh PACKAGES-FOLDER
#
# The older version of the upgrade is an installer of placeholder files. Where the folder holds no installer, the newer one
# is too, which the output says; a real one must also list and grab.
set -euo pipefail
shopt -s inherit_errexit
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/packages/report.sh
. "$here/report.sh"
root=$(cd "$here/../.." && pwd)
work=$root/build/package-test/setup
rm -rf "$work"
mkdir -p "$work"

# placeholders VERSION FILE...: prints the path of an installer of files that say that they are none.
placeholders()
{
    local version=$1 file
    shift
    for file in bin/ZVGRLibGenTL.cti bin/ZVGRLib.dll bin/zvgentl.exe doc/index.html doc/name-without-dot "$@"; do
        mkdir -p "$work/files-$version/$(dirname "$file")"
        echo "placeholder of $file" >"$work/files-$version/$file"
    done
    ZV_ROOT=$root ZV_VERSION=$version ZV_FILES=$work/files-$version cpack -G NSIS --config "$here/placeholders.cmake" \
        -B "$work/$version" >"$work/cpack.log"
    echo "$work/$version/setup.exe"
}

old=$(placeholders 6.0.0 bin/gone-in-the-new-version.txt)
new=$(find "$1" -name '*-windows-x86_64.exe')
[ -n "$new" ] || new=$(placeholders 7.0.0)

export WINEPREFIX=$work/prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe=' LC_ALL=C.UTF-8
unset DISPLAY GENICAM_GENTL64_PATH "${!ZV_@}"
trap 'wineserver -k 2>/dev/null || true' EXIT

environment='HKLM\SYSTEM\CurrentControlSet\Control\Session Manager\Environment'
uninstall='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall'
drive=$WINEPREFIX/drive_c
folder="$drive/Program Files/ZVGenTL"
ours='C:\Program Files\ZVGenTL\bin'
other='C:\Other Maker\GenTL'
third='D:\third\cti'
# With its own folder as _?= the uninstaller stays one process and gives its exit code.
remove='"C:\Program Files\ZVGenTL\uninstall.exe" /S _?=C:\Program Files\ZVGenTL'

windows() { timeout 300 wine "$@" </dev/null 2>/dev/null | tr -d '\r'; }
code_of() { timeout 300 wine "$@" </dev/null >/dev/null 2>&1 && echo 0 || echo $?; }
# line_code COMMAND...: the same for a command line whose last argument takes no quotes, as /D= and _?= do.
line_code()
{
    printf '@%s\r\n@exit %%errorlevel%%\r\n' "$*" >"$drive/line.bat"
    code_of cmd /c 'C:\line.bat'
}
# value NAME: "TYPE TEXT" of a machine-wide variable, nothing when there is none.
value() { windows reg query "$environment" /v "$1" | sed -n "s/^ *$1 *\(REG_[A-Z_]*\) *\(.*\)/\1 \2/p"; }
set_value() { windows reg add "$environment" /f /v "$1" /t "$2" /d "$3" >/dev/null; }
entries() { windows reg query "$uninstall" | grep -ci zvgentl || true; }
version() { windows reg query "$uninstall\\ZVGenTL" /v DisplayVersion | sed -n 's/.*REG_SZ *//p'; }
shortcut() { find "$drive" -name Documentation.lnk; }

is_gone() { [ ! -e "$1" ] || { find "$1" && return 1; }; }
is_there() { [ -s "$1" ] || { echo "there is no $1" && return 1; }; }

echo "Preparing a Wine prefix"
timeout 300 wineboot -i >/dev/null 2>&1
wineserver -w
cp "$new" "$drive/new.exe"
path_before=$(value PATH | sed 's/^[^ ]* //')
# Longer than the strings of NSIS, which end at 1024 characters.
for number in $(seq 100 199); do
    path_before+=";C:\\tools of somebody\\number $number\\bin"
done
set_value PATH REG_EXPAND_SZ "$path_before"
set_value GENICAM_GENTL64_PATH REG_SZ "$other"
check "the long PATH is set" same "REG_EXPAND_SZ $path_before" "$(value PATH)"

echo "Install"
check "a silent install ends with 0" same 0 "$(code_of "$old" /S)"
check "the producer is there" is_there "$folder/bin/ZVGRLibGenTL.cti"
check "the other maker's entry stays before ours" same "REG_SZ $other;$ours" "$(value GENICAM_GENTL64_PATH)"
check "PATH is longer by our folder alone" same "REG_EXPAND_SZ $path_before;$ours" "$(value PATH)"
check "there is one entry among the installed programs" same 1 "$(entries)"
check "every file is there" same "$(cd "$work/files-6.0.0" && find . -type f | sort)" \
    "$(cd "$folder" && find . -type f ! -name uninstall.exe | sort)"
check "the installed version is shown" same 6.0.0 "$(version)"
check "the start menu leads to the documentation" is_there "$(shortcut)"

echo "Upgrade"
set_value GENICAM_GENTL64_PATH REG_SZ "$other;$ours;$third"
check "an upgrade ends with 0" same 0 "$(code_of "$new" /S)"
check "what the new version has no more is gone" is_gone "$folder/bin/gone-in-the-new-version.txt"
check "the variable is as it was" same "REG_SZ $other;$ours;$third" "$(value GENICAM_GENTL64_PATH)"
check "PATH is as it was" same "REG_EXPAND_SZ $path_before;$ours" "$(value PATH)"
check "there is still one entry among the installed programs" same 1 "$(entries)"
check "which shows the new version" test "$(version)" != 6.0.0
check "the same version installs over itself" same 0 "$(code_of "$new" /S)"
check "and is listed once" same "1 REG_SZ $other;$ours;$third" "$(entries) $(value GENICAM_GENTL64_PATH)"
check "the documentation's page exists" is_there "$folder/doc/index.html"

if head -c 2 "$folder/bin/zvgentl.exe" | grep -q MZ; then
    echo "Use"
    # A new process of the prefix gets its variables from the registry, as a new session would. Wine hands out none of more
    # than 1024 characters.
    set_value PATH REG_EXPAND_SZ "%SystemRoot%\\system32;$ours"
    list=$(windows 'C:\Program Files\ZVGenTL\bin\zvgentl.exe' list || true)
    check "zvgentl lists devices" grep -q Device00 <<<"$list"
    check "zvgentl is found on PATH and grabs" same 0 "$(code_of cmd /c "zvgentl grab --frames 3 --output C:\\pictures")"
    check "three pictures are there" same 3 "$(find "$drive/pictures" -name '*.png' 2>/dev/null | wc -l)"
    set_value PATH REG_EXPAND_SZ "$path_before;$ours"
else
    echo "NOTE    the setup holds placeholders; listing and grabbing were left out"
fi

echo "A file in use"
printf '%s\n' 'Target amd64-unicode' "OutFile \"$work/hold.exe\"" 'Name hold' 'SilentInstall silent' \
    'RequestExecutionLevel user' 'Section' 'FileOpen $0 "C:\Program Files\ZVGenTL\bin\ZVGRLib.dll" a' \
    'FileOpen $1 "C:\held" w' 'FileClose $1' 'wait:' 'Sleep 50' 'IfFileExists "C:\release" 0 wait' 'FileClose $0' \
    'SectionEnd' >"$work/hold.nsi"
makensis -V1 "$work/hold.nsi"
timeout 300 wine "$work/hold.exe" </dev/null >/dev/null 2>&1 &
holder=$!
until [ -e "$drive/held" ] || ! kill -0 $holder 2>/dev/null; do sleep 0.1; done
check "an upgrade is refused" same 2 "$(code_of "$new" /S)"
check "a removal is refused" same 2 "$(line_code "$remove")"
check "nothing was removed" is_there "$folder/bin/ZVGRLibGenTL.cti"
touch "$drive/release"
wait $holder || true

echo "Another folder"
check "installing elsewhere ends with 0" same 0 "$(line_code 'C:\new.exe /S /D=C:\Machine Vision\Producer')"
check "the first folder is gone" is_gone "$folder"
check "the variable has the new folder alone" same "REG_SZ $other;$third;C:\\Machine Vision\\Producer\\bin" \
    "$(value GENICAM_GENTL64_PATH)"
check "there is one entry among the installed programs" same 1 "$(entries)"
check "an upgrade without a folder goes where the version is" same 0 "$(code_of "$new" /S)"
check "and nowhere else" is_gone "$folder"
check "which leaves the variable alone" same "REG_SZ $other;$third;C:\\Machine Vision\\Producer\\bin" \
    "$(value GENICAM_GENTL64_PATH)"

echo "Removal"
touch "$drive/Machine Vision/somebody's file"
windows "$drive/Machine Vision/Producer/uninstall.exe" /S >/dev/null
wineserver -w # the uninstaller goes on as a copy of itself
check "our folder is gone" is_gone "$drive/Machine Vision/Producer"
check "the folder around it stays" is_there "$drive/Machine Vision" 
check "the others' entries are left" same "REG_SZ $other;$third" "$(value GENICAM_GENTL64_PATH)"
check "PATH is what it was before" same "REG_EXPAND_SZ $path_before" "$(value PATH)"
check "no entry among the installed programs" same 0 "$(entries)"
check "the start menu is as before" same "" "$(shortcut)"

echo "Variables of other kinds"
windows reg delete "$environment" /f /v GENICAM_GENTL64_PATH >/dev/null
check "an install without the variable ends with 0" same 0 "$(code_of "$new" /S)"
check "the variable is made" same "REG_EXPAND_SZ $ours" "$(value GENICAM_GENTL64_PATH)"
set_value GENICAM_GENTL64_PATH REG_SZ "c:\\program files\\zvgentl\\BIN\\;C:\\Program Files\\ZVGenTL\\bin2"
check "an entry in another spelling counts" same 0 "$(code_of "$new" /S)"
check "and is not doubled" same "REG_SZ c:\\program files\\zvgentl\\BIN\\;C:\\Program Files\\ZVGenTL\\bin2" \
    "$(value GENICAM_GENTL64_PATH)"
check "a removal ends with 0" same 0 "$(line_code "$remove")"
check "what only begins like our folder stays" same "REG_SZ C:\\Program Files\\ZVGenTL\\bin2" \
    "$(value GENICAM_GENTL64_PATH)"
set_value GENICAM_GENTL64_PATH REG_BINARY 414243
check "a variable that is not text is reported with code 3" same 3 "$(code_of "$new" /S)"
check "and left alone" same "REG_BINARY 414243" "$(value GENICAM_GENTL64_PATH)"
windows reg delete "$environment" /f /v GENICAM_GENTL64_PATH >/dev/null
# One character longer than what leaves room for our folder: the system allows 32766.
long_value=$(printf 'C:\\%0*d' $((32766 - ${#ours} - 3)) 0)
printf 'REGEDIT4\r\n\r\n[%s]\r\n"GENICAM_GENTL64_PATH"="%s"\r\n' "${environment/HKLM/HKEY_LOCAL_MACHINE}" \
    "${long_value//\\/\\\\}" >"$drive/long.reg"
windows regedit /S 'C:\long.reg'
check "a variable of 32766 characters less our folder is set" same "$((32766 - ${#ours}))" \
    "$(value GENICAM_GENTL64_PATH | sed 's/^[^ ]* //' | tr -d '\n' | wc -c)"
check "it is too long for our folder, which is reported" same 3 "$(code_of "$new" /S)"
check "and it is left alone" same "REG_SZ $long_value" "$(value GENICAM_GENTL64_PATH)"
windows reg delete "$environment" /f /v GENICAM_GENTL64_PATH >/dev/null
check "the same version repairs it" same 0 "$(code_of "$new" /S)"
check "a last removal ends with 0" same 0 "$(line_code "$remove")"
check "an empty variable is taken away" same "" "$(value GENICAM_GENTL64_PATH)"

verdict "Installer for Windows"

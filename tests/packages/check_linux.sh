#!/usr/bin/env bash
# The packages for Linux in a clean Debian root: install beside another maker's entry, list, grab, upgrade, remove, purge;
# the variable in login shells, X sessions and both kinds of systemd's services; the tar archive in a folder with a blank
# in its name. Needs root. The root is kept in build/package-test for the next run.
#
#     tests/packages/check_linux.sh PACKAGES-FOLDER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/packages/report.sh
. "$here/report.sh"
work=$(cd "$here/../.." && pwd)/build/package-test
deb=$(realpath "$1"/*.deb)
archive=$(realpath "$1"/*.tar.gz)
# shellcheck disable=SC1091
release=$(. /etc/os-release && echo "$VERSION_CODENAME")
clean=$work/$release.tar
root=$work/$release
mkdir -p "$work"

# The package sources of this machine that are of the same release: "ADDRESS SUITE", one a line.
sources() { apt-get indextargets --format '$(REPO_URI) $(CODENAME) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' |
    sed -n "s/ \(${release}[^ ]*\) main\$/ \1/p" | sort -u; }

if [ ! -e "$clean" ]; then
    echo "Making a clean $release"
    rm -rf "$root"
    address=$(sources | sed -n "s/ ${release}$//p" | head -n 1)
    # systemd for the programs that turn its files into variables; it does not run.
    debootstrap --variant=minbase --include=systemd "$release" "$root" "$address" >"$work/debootstrap.log"
    sources | sed 's/^/deb /; s/$/ main/' >"$root/etc/apt/sources.list"
    apt-config dump Acquire::http::Proxy >"$root/etc/apt/apt.conf.d/proxy"
    tar -C "$root" -cf "$clean.part" .
    mv "$clean.part" "$clean"
fi
rm -rf "$root"
mkdir -p "$root"
tar -C "$root" -xf "$clean"
cp /etc/resolv.conf "$root/etc/resolv.conf"

# In a namespace of its own, which takes the mounted /proc with it.
inside() { unshare --mount --pid --fork --mount-proc="$root/proc" chroot "$root" env -i \
    PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C DEBIAN_FRONTEND=noninteractive "$@"; }
variable='echo "${GENICAM_GENTL64_PATH-}"'
login() { inside bash -lc "$variable"; }
x_session() { inside sh -c 'for file in /etc/X11/Xsession.d/*; do [ -e "$file" ] && . "$file"; done; '"$variable"; }
# The variable as systemd's own program for users' services, and our generator for the system's, give it.
user_service() { inside /usr/lib/systemd/user-environment-generators/30-systemd-environment-d-generator |
    sed -n 's/^GENICAM_GENTL64_PATH=//p'; }
system_service()
{
    local generator=/usr/lib/systemd/system-environment-generators/90-zvgentl
    [ ! -x "$root$generator" ] || inside GENICAM_GENTL64_PATH="$1" $generator | sed -n 's/^GENICAM_GENTL64_PATH="\(.*\)"$/\1/p'
}
leftovers() { find "$root" -xdev -path "$root/tmp" -prune -o -iname '*zvg*' -print | grep -v "$root/var/log\|$root/home" || true; }
status() { inside dpkg-query -W -f '${db:Status-Status} ${Version}' zvgentl 2>/dev/null || echo none; }

multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
folder=/usr/lib/$multiarch/gentl
other=/opt/other-maker/gentl
version=$(dpkg-deb -f "$deb" Version)

# Another maker, with the same means.
mkdir -p "$root/usr/lib/environment.d" "$root/etc/X11/Xsession.d"
echo "export GENICAM_GENTL64_PATH=$other" >"$root/etc/profile.d/other-maker.sh"
echo "export GENICAM_GENTL64_PATH=$other" >"$root/etc/X11/Xsession.d/50other-maker"
echo "GENICAM_GENTL64_PATH=$other" >"$root/usr/lib/environment.d/50-other-maker.conf"

# What every kind of process gets while the package is installed.
check_variables()
{
    check "$1: login shells have both makers" same "$other:$folder" "$(login)"
    check "$1: a login shell inside another adds nothing" same "$other:$folder" "$(inside bash -lc "bash -lc '$variable'")"
    check "$1: X sessions have both makers" same "$other:$folder" "$(x_session)"
    check "$1: services of users have both makers" same "$other:$folder" "$(user_service)"
    check "$1: system services have both makers" same "$other:$folder" "$(system_service $other)"
    check "$1: a daemon-reload adds nothing" same "$other:$folder" "$(system_service "$other:$folder")"
    check "$1: system services without another maker" same "$folder" "$(system_service "")"
}

# check_use NAME COMMAND...: the command runs zvgentl with the arguments that follow it.
check_use()
{
    local name=$1
    shift
    check "$name: zvgentl lists the software grabbers" grep Device00 <<<"$("$@" list 2>&1)"
    check "$name: zvgentl grabs three frames" "$@" grab --frames 3 --output "/tmp/$name"
    check "$name: three pictures" same 3 "$(find "$root/tmp/$name" -name '*.png' -size +0 | wc -l)"
}

echo "Install"
before=$(leftovers)
check "the clean root knows nothing of us" same "" "$before"
inside apt-get update -qq >"$work/apt.log" 2>&1
cp "$deb" "$root/tmp/zvgentl.deb"
check "apt installs the package" inside apt-get install -y --no-install-recommends /tmp/zvgentl.deb
check "the package is configured" same "installed $version" "$(status)"
for file in ZVGRLibGenTL.cti libZVGRLib.so libZVLogger.so; do
    check "$file looks for its neighbours beside itself" \
        grep -q 'RUNPATH.*\[$ORIGIN\]' <(readelf -d "$root$folder/$file")
done
check "every program and library is hardened" python3 "$here/../checks/hardening.py" \
    "$root$folder/"{ZVGRLibGenTL.cti,libZVGRLib.so,libZVLogger.so,zvgentl}
check "the loader finds every library" same "" "$(inside ldd "$folder/ZVGRLibGenTL.cti" "$folder/zvgentl" |
    grep "not found" || true)"
check_variables installed
mv "$root/etc/profile.d/other-maker.sh" "$root/tmp/"
check_use without-variables inside zvgentl
check_use login inside bash -lc 'zvgentl "$@"' -
mv "$root/tmp/other-maker.sh" "$root/etc/profile.d/"
check "all files are as they were packed" inside dpkg --verify zvgentl
check "the copyright file states the licence" same "$(sed 's/^/ /; s/^ $/ ./' "$here/../../LICENSE")" \
    "$(sed '1,/^License:/d' "$root/usr/share/doc/zvgentl/copyright")"

echo "Upgrade"
echo "# an administrator was here" >>"$root/etc/profile.d/zvgentl.sh"
dpkg-deb -R "$deb" "$work/newer"
sed -i "s/^Version: .*/Version: $version+newer/" "$work/newer/DEBIAN/control"
dpkg-deb --root-owner-group -b "$work/newer" "$root/tmp/newer.deb" >/dev/null
rm -rf "$work/newer"
check "apt upgrades the package" inside apt-get install -y /tmp/newer.deb
check "the newer version is there" same "installed $version+newer" "$(status)"
check "the administrator's change is kept" grep -q "an administrator" "$root/etc/profile.d/zvgentl.sh"
check_variables upgraded
check "postinst may run again" inside sh /var/lib/dpkg/info/zvgentl.postinst configure "$version"
check "postrm may run again" inside sh /var/lib/dpkg/info/zvgentl.postrm upgrade "$version"

echo "Unwanted"
# As docs/installing.md tells an administrator to keep the variable as it is.
: >"$root/etc/profile.d/zvgentl.sh"
mkdir -p "$root/etc/environment.d"
ln -s /dev/null "$root/etc/environment.d/90-zvgentl.conf"
check "login shells have the other maker alone" same "$other" "$(login)"
check "X sessions have the other maker alone" same "$other" "$(x_session)"
check "services of users have the other maker alone" same "$other" "$(user_service)"
check "system services keep what they have" same "$other" "$(system_service $other)"
check "or nothing" same "" "$(system_service "")"
rm "$root/etc/environment.d/90-zvgentl.conf"

echo "Removal"
mkdir -p "$root/etc/zvgentl"
echo "GenTL.Stream.BufferAllocMin = 8" >"$root/etc/zvgentl/settings.properties"
check "apt removes the package" inside apt-get remove -y zvgentl
check "login shells have the other maker alone" same "$other" "$(login)"
check "X sessions have the other maker alone" same "$other" "$(x_session)"
check "services of users have the other maker alone" same "$other" "$(user_service)"
check "nothing of ours is run for system services" same "" "$(system_service $other)"
check "the program is gone" test ! -e "$root/usr/bin/zvgentl"
check "the machine's settings are kept" test -s "$root/etc/zvgentl/settings.properties"
check "apt purges the package" inside apt-get purge -y zvgentl
check "nothing of ours is left" same "" "$(leftovers | grep -v "$root/root/" || true)"
check "no folder of ours is left" test ! -e "$root$folder"
check "the other maker's files are left" test -s "$root/etc/profile.d/other-maker.sh" \
    -a -s "$root/usr/lib/environment.d/50-other-maker.conf" -a -s "$root/etc/X11/Xsession.d/50other-maker"
check "the package can be installed again" inside apt-get install -y /tmp/zvgentl.deb
check "and purged at once" inside apt-get purge -y zvgentl
check "and leaves nothing then either" same "" "$(leftovers | grep -v "$root/root/" || true)"

echo "Archive"
mkdir "$root/opt/two words"
tar -C "$root/opt/two words" -xzf "$archive"
unpacked="/opt/two words/$(basename "$archive" .tar.gz)"
check "the archive has the licence" cmp "$here/../../LICENSE" "$root$unpacked/share/doc/zvgentl/LICENSE"
check "the archive's programs and libraries are hardened" python3 "$here/../checks/hardening.py" \
    "$root$unpacked/lib/$multiarch/gentl/"{ZVGRLibGenTL.cti,libZVGRLib.so,libZVLogger.so,zvgentl}
check_use archive inside bash -lc ". '$unpacked/environment.sh' && zvgentl \"\$@\"" -
check "the archive's entry comes behind the other maker's" same "$other:$unpacked/lib/$multiarch/gentl" \
    "$(inside bash -lc ". '$unpacked/environment.sh'; . '$unpacked/environment.sh'; $variable")"

rm -rf "$root"
verdict "Packages for Linux"

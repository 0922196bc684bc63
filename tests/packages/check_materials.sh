#!/usr/bin/env bash
# The sums and the bills of materials beside the packages: sums fit, each bill lists every file of its package with its
# sum, and everything that it refers to is in it.
#
#     tests/packages/check_materials.sh PACKAGES-FOLDER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/packages/report.sh
. "$here/report.sh"
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

check "SHA256SUMS fits" sha256sum --check --strict --quiet SHA256SUMS
check "and names every file" same "$(find . -type f ! -name SHA256SUMS -printf '%P\n' | sort)" \
    "$(sed 's/^[^ ]*  //' SHA256SUMS | sort)"
for bill in *.spdx.json; do
    check "$bill is complete" python3 "$here/bill_problems.py" "$bill"
done
check "there is a bill for each system" same "$(ls ./*.deb ./*.zip 2>/dev/null | wc -l)" "$(ls ./*.spdx.json | wc -l)"
for zip in ./*.zip; do
    [ -e "$zip" ] || continue
    echo "libpng1.6 1.0+built" >"$work/versions"
    "$here/../../scripts/materials.py" spdx "$zip" --version 1 --time 0 --versions "$work/versions" --output "$work/bill"
    check "what was built from source has that source's version" \
        grep -q "pkg:deb/debian/libpng1.6@1.0+built?arch=source" "$work/bill"
done
verdict "Sums and bills of materials"

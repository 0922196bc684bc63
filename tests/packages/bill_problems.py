"""Prints what is wrong with a bill of materials (SPDX 2.3 in JSON) of a package that lies beside it."""

import hashlib
import json
import re
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path

LICENSE = Path(__file__).resolve().parents[2] / "LICENSE"


def contents(package):
    with tempfile.TemporaryDirectory() as folder:
        if package.suffix == ".deb":
            subprocess.run(["dpkg-deb", "-x", package, folder], check=True)
        else:
            with zipfile.ZipFile(package) as archive:
                archive.extractall(folder)
        return {f"./{p.relative_to(folder).as_posix()}": hashlib.sha256(p.read_bytes()).hexdigest()
                for p in Path(folder).rglob("*") if p.is_file() and not p.is_symlink()}


def problems_of(bill, folder):
    if bill["spdxVersion"] != "SPDX-2.3" or bill["dataLicense"] != "CC0-1.0":
        yield "is not SPDX 2.3"
    for key in ("name", "documentNamespace", "creationInfo"):
        if not bill.get(key):
            yield f"has no {key}"
    identifiers = [bill["SPDXID"]] + [e["SPDXID"] for e in bill["packages"] + bill["files"]]
    for identifier in identifiers:
        if not re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", identifier) or identifiers.count(identifier) != 1:
            yield f"{identifier} is malformed or not unique"
    for relation in bill["relationships"]:
        for end in ("spdxElementId", "relatedSpdxElement"):
            if relation[end] not in identifiers:
                yield f"{relation[end]} is related, and not there"
    related = {relation["relatedSpdxElement"] for relation in bill["relationships"]}
    yield from (f"{identifier} is related to nothing" for identifier in identifiers[1:] if identifier not in related)

    texts = {text["licenseId"] for text in bill.get("hasExtractedLicensingInfos", [])}
    for package in bill["packages"]:
        licence = package["licenseDeclared"]
        if licence.startswith("LicenseRef-") and licence not in texts:
            yield f"{package['name']}: the text of {licence} is missing"
        if licence == "NOASSERTION":
            yield f"{package['name']}: no licence"
        if not package["versionInfo"]:
            yield f"{package['name']}: no version"

    own = next(package for package in bill["packages"] if package["SPDXID"] == "SPDXRef-Package")
    texts_of_ours = [text["extractedText"] for text in bill.get("hasExtractedLicensingInfos", [])
                     if text["licenseId"] == own["licenseDeclared"]]
    if texts_of_ours != [LICENSE.read_text(encoding="utf-8")]:
        yield "does not state the licence in LICENSE"
    listed = {file["fileName"]: sums["checksumValue"] for file in bill["files"] for sums in file["checksums"]
              if sums["algorithm"] == "SHA256"}
    if listed != contents(folder / own["packageFileName"]):
        yield f"the files or sums are not those of {own['packageFileName']}"


def main():
    path = Path(sys.argv[1])
    problems = list(problems_of(json.loads(path.read_text(encoding="utf-8")), path.parent))
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

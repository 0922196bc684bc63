#!/usr/bin/python3
"""Third-party libraries in the packages: their licence notices, and a bill of materials in SPDX 2.3.

    scripts/materials.py notices --system linux|windows [--versions FILE] --output FILE
    scripts/materials.py spdx PACKAGE --version VERSION --time SECONDS [--versions FILE] --output FILE.spdx.json

PACKAGE is a finished .deb or .zip. Versions and licences are those of the Debian packages that are installed on this
machine and were used by the build, as their copyright files state them. --versions names the file in which
scripts/windows_dependencies.sh recorded the versions of the sources that it built.
"""

import argparse
import hashlib
import json
import re
import subprocess
import tempfile
import zipfile
from datetime import datetime, timezone
from pathlib import Path

# Debian packages whose code is compiled into our files.
COMPILED_IN = {
    "linux": ["libcli11-dev", "libfmt-dev", "nlohmann-json3-dev"],
    "windows": ["libcli11-dev", "libfmt-dev", "libpng-dev", "libtiff-dev", "libyaml-cpp-dev", "libz-mingw-w64-dev",
                "libxml2-dev", "libzip-dev", "mingw-w64-x86-64-dev", "nlohmann-json3-dev"],
}
# The Debian package that each library file in the Windows package comes from. Poco is built from that package's source.
BUNDLED = {
    "libgcc_s_seh-1.dll": "gcc-mingw-w64-x86-64-posix-runtime",
    "libstdc++-6.dll": "gcc-mingw-w64-x86-64-posix-runtime",
    "libwinpthread-1.dll": "mingw-w64-x86-64-dev",
    "libPocoFoundation.dll": "libpoco-dev",
    "zlib1.dll": "libz-mingw-w64",
}
OURS = re.compile(r"(ZVGRLibGenTL\.cti|ZVGRLib\.dll|ZVLogger\.dll)$")
# The names that Debian's copyright files use for licences, and their SPDX identifiers.
IDENTIFIERS = {"expat": "MIT", "mit-1": "MIT", "bsd-2-clause": "BSD-2-Clause", "bsd-3-clause": "BSD-3-Clause", "bsl-1": "BSL-1.0",
               "bsl-1.0": "BSL-1.0", "zlib": "Zlib", "zpl-2.1": "ZPL-2.1", "lgpl-2.1+": "LGPL-2.1-or-later",
               "lgpl-2.1-or-later": "LGPL-2.1-or-later", "apache-2.0": "Apache-2.0", "x11": "X11"}
# The licences in copyright files that are not machine-readable.
READ_BY_HAND = {"libzip-dev": "BSD-3-clause",
                "gcc-mingw-w64-x86-64-posix-runtime": "GPL-3+ with the GCC Runtime Library Exception 3.1"}
MAKER = "Organization: ZEVA Electronics Ltd."
LICENSE = Path(__file__).resolve().parent.parent / "LICENSE"


def debian_fields(package, built):
    """Returns the source package and its version: for what was built from source, the version that was built."""
    shown = subprocess.run(["dpkg-query", "-W", "-f", "${source:Package}\n${source:Version}\n", package],
                           capture_output=True, text=True, check=False)
    if shown.returncode != 0:
        raise SystemExit(f"the package {package} is not installed here, so its version and licence are unknown")
    source, version = shown.stdout.splitlines()
    return source, built.get(source, version)


def built_versions(file):
    return dict(line.split() for line in Path(file).read_text(encoding="utf-8").splitlines()) if file else {}


def copyright_text(package):
    file = Path("/usr/share/doc") / package / "copyright"
    if not file.is_file():
        raise SystemExit(f"{file} does not exist")
    return file.read_text(encoding="utf-8", errors="replace")


def stated_licence(text):
    """Returns the licence that a machine-readable copyright file states for all files without one of their own."""
    for paragraph in re.split(r"\n\s*\n", text):
        if re.search(r"^Files:\s*\*", paragraph, re.M):
            found = re.search(r"^License:\s*(\S.*)$", paragraph, re.M)
            return found.group(1).strip() if found else None
    return None


def write_notices(system, built, output):
    packages = list(COMPILED_IN[system])
    if system == "windows":
        packages = sorted(set(packages) | set(BUNDLED.values()))
    summary, notices = {}, {}
    for package in packages:
        library = " ".join(debian_fields(package, built))
        text = copyright_text(package)
        summary[library] = f"    {library}: {stated_licence(text) or READ_BY_HAND.get(package, 'see its notice')}\n"
        notices[library] = f"{'=' * 100}\n{library}\n{'=' * 100}\n\n{text}"
    parts = ["The programs and libraries of this package contain, or come with, these third-party libraries.\n"
             "Each name is followed by the version and the main licence:\n", "".join(summary.values()),
             "Their notices follow, as Debian publishes them with the packages that were used.\n", *notices.values()]
    Path(output).write_text("\n".join(parts), encoding="utf-8")


class Document:
    """The SPDX document of one package: its files and the libraries that it contains or needs."""

    def __init__(self, name, version, seconds, built):
        self.version = version
        self.built = built
        self.packages, self.files, self.relationships, self.texts = [], [], [], {}
        created = datetime.fromtimestamp(seconds, timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
        self.head = {
            "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": name,
            "creationInfo": {"created": created, "creators": [MAKER, "Tool: materials.py"]},
        }

    def relate(self, one, kind, other):
        self.relationships.append({"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other})

    def add_files(self, folder):
        for path in sorted(p for p in folder.rglob("*") if p.is_file() and not p.is_symlink()):
            content = path.read_bytes()
            self.files.append({
                "SPDXID": f"SPDXRef-File-{len(self.files) + 1}", "fileName": f"./{path.relative_to(folder).as_posix()}",
                "checksums": [{"algorithm": "SHA1", "checksumValue": hashlib.sha1(content).hexdigest()},
                              {"algorithm": "SHA256", "checksumValue": hashlib.sha256(content).hexdigest()}],
                "licenseConcluded": "NOASSERTION", "licenseInfoInFiles": ["NOASSERTION"],
                "copyrightText": "NOASSERTION"})

    def add_own_package(self, package):
        sums = sorted(f["checksums"][0]["checksumValue"] for f in self.files)
        code = hashlib.sha1("".join(sums).encode()).hexdigest()
        self.head["documentNamespace"] = f"https://spdx.org/spdxdocs/{self.head['name']}-{code}"
        self.packages.append({
            "SPDXID": "SPDXRef-Package", "name": "zvgentl", "versionInfo": self.version, "supplier": MAKER,
            "packageFileName": package.name, "downloadLocation": "NOASSERTION", "filesAnalyzed": True,
            "packageVerificationCode": {"packageVerificationCodeValue": code},
            "checksums": [{"algorithm": "SHA256", "checksumValue": hashlib.sha256(package.read_bytes()).hexdigest()}],
            "licenseConcluded": "NOASSERTION", "licenseDeclared": self.own_licence(),
            "licenseInfoFromFiles": ["NOASSERTION"],
            "copyrightText": LICENSE.read_text(encoding="utf-8").splitlines()[0],
            "primaryPackagePurpose": "LIBRARY"})
        self.relate("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-Package")
        for file in self.files:
            self.relate("SPDXRef-Package", "CONTAINS", file["SPDXID"])

    def own_licence(self):
        identifier = "LicenseRef-ZEVA"
        self.texts[identifier] = {"licenseId": identifier, "name": "All rights reserved",
                                  "extractedText": LICENSE.read_text(encoding="utf-8")}
        return identifier

    def licence_of(self, source, package):
        text = copyright_text(package)
        stated = stated_licence(text)
        identifier = IDENTIFIERS.get((stated or "").lower())
        if identifier is None:
            identifier = f"LicenseRef-{re.sub(r'[^A-Za-z0-9.-]', '-', source)}"
            name = stated or READ_BY_HAND.get(package, f"licences of {source}")
            self.texts[identifier] = {"licenseId": identifier, "name": name, "extractedText": text}
        comment = f"Debian states \"{stated}\" for all files without a statement of their own." if stated else \
            "Debian's copyright file is in the extracted text."
        return identifier, comment

    def add_debian_package(self, package):
        """Adds the package unless it has been added already, and returns its identifier."""
        source, version = debian_fields(package, self.built)
        identifier = f"SPDXRef-Debian-{re.sub(r'[^A-Za-z0-9.-]', '-', package)}"
        if all(p["SPDXID"] != identifier for p in self.packages):
            licence, comment = self.licence_of(source, package)
            self.packages.append({
                "SPDXID": identifier, "name": package, "versionInfo": version, "sourceInfo": f"Debian source {source}",
                "supplier": "Organization: Debian", "downloadLocation": "NOASSERTION",
                "filesAnalyzed": False, "licenseConcluded": "NOASSERTION", "licenseDeclared": licence,
                "licenseComments": comment, "copyrightText": "NOASSERTION",
                "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                                  "referenceLocator": f"pkg:deb/debian/{source}@{version}?arch=source"}]})
        return identifier

    def write(self, output):
        document = dict(self.head, packages=self.packages, files=self.files, relationships=self.relationships)
        if self.texts:
            document["hasExtractedLicensingInfos"] = [self.texts[key] for key in sorted(self.texts)]
        Path(output).write_text(json.dumps(document, indent=1, ensure_ascii=False) + "\n", encoding="utf-8")


def unpack(package, folder):
    """Unpacks the package and returns the system that it is for."""
    if package.suffix == ".deb":
        subprocess.run(["dpkg-deb", "-x", package, folder], check=True)
        return "linux"
    with zipfile.ZipFile(package) as archive:
        archive.extractall(folder)
    return "windows"


def depended_on(package):
    depends = subprocess.run(["dpkg-deb", "-f", package, "Depends"], check=True, capture_output=True, text=True).stdout
    return sorted({re.split(r"[\s(|:]", part.strip())[0] for part in depends.split(",") if part.strip()})


def write_spdx(package, version, seconds, built, output):
    document = Document(package.name, version, seconds, built)
    with tempfile.TemporaryDirectory() as folder:
        system = unpack(package, Path(folder))
        document.add_files(Path(folder))
    document.add_own_package(package)
    for name in COMPILED_IN[system]:
        document.relate("SPDXRef-Package", "STATIC_LINK", document.add_debian_package(name))
    if system == "linux":
        for name in depended_on(package):
            document.relate("SPDXRef-Package", "DYNAMIC_LINK", document.add_debian_package(name))
    for file in document.files if system == "windows" else []:
        name = file["fileName"].rsplit("/", 1)[-1]
        if name.endswith(".dll") and not OURS.match(name):
            if name not in BUNDLED:
                raise SystemExit(f"{name} is in the package, but scripts/materials.py does not know where it comes from")
            identifier = document.add_debian_package(BUNDLED[name])
            document.relate(file["SPDXID"], "GENERATED_FROM", identifier)
            document.relate("SPDXRef-Package", "DYNAMIC_LINK", identifier)
    document.write(output)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    commands = parser.add_subparsers(dest="command", required=True)
    notices = commands.add_parser("notices")
    notices.add_argument("--system", choices=sorted(COMPILED_IN), required=True)
    notices.add_argument("--output", required=True)
    spdx = commands.add_parser("spdx")
    spdx.add_argument("package", type=Path)
    spdx.add_argument("--version", required=True)
    spdx.add_argument("--time", type=int, required=True, help="time of the document, in seconds since 1970")
    spdx.add_argument("--output", required=True)
    for command in (notices, spdx):
        command.add_argument("--versions", help="file of \"SOURCE VERSION\" lines for libraries built from source")
    options = parser.parse_args()
    built = built_versions(options.versions)
    if options.command == "notices":
        write_notices(options.system, built, options.output)
    else:
        write_spdx(options.package, options.version, options.time, built, options.output)


if __name__ == "__main__":
    main()

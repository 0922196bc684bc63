#!/usr/bin/env python3
"""Packs the register description of the buffer port. Run this after changing the XML, and commit both files.

The archive has exactly the size in the port's URL: a comment at its end pads the compressed description. Nothing in it
depends on when or where it was created.
"""

import io
import sys
import zipfile
from pathlib import Path

RESOURCES = Path(__file__).resolve().parent.parent / "src" / "resources"
SOURCE = RESOURCES / "ZV_TLBufferGenTL.xml"
ARCHIVE = RESOURCES / "ZV_BufferGenTL.zip"
SIZE = 640


def packed(text, comment):
    file = io.BytesIO()
    entry = zipfile.ZipInfo(SOURCE.name, date_time=(1980, 1, 1, 0, 0, 0))
    entry.create_system = 0
    with zipfile.ZipFile(file, "w") as archive:
        archive.writestr(entry, text, zipfile.ZIP_DEFLATED, compresslevel=9)
        archive.comment = comment
    return file.getvalue()


def main():
    text = SOURCE.read_bytes().replace(b"\r\n", b"\n")
    room = SIZE - len(packed(text, b""))
    if room < 0:
        sys.exit(f"{SOURCE.name} is too long: the archive would have {SIZE - room} bytes, not {SIZE}")
    ARCHIVE.write_bytes(packed(text, b" " * room))
    print(f"{ARCHIVE.name}: {SIZE} bytes, {room} of them in the comment")


if __name__ == "__main__":
    main()

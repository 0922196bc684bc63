#!/usr/bin/env python3
"""Packs the buffer port's register description: run it after a change of the XML, and commit both files.

The archive has exactly the size that the port's URL names; a comment at its end makes up what the compressed
description leaves. Nothing in it depends on when or where it was made.
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
        sys.exit(f"{SOURCE.name} is too long: packed it has {SIZE - room} bytes of {SIZE}")
    ARCHIVE.write_bytes(packed(text, b" " * room))
    print(f"{ARCHIVE.name}: {SIZE} bytes, {room} of them in the comment")


if __name__ == "__main__":
    main()

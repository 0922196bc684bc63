#!/usr/bin/python3
"""Converts the user documentation to HTML pages with an index, for the packages.

    scripts/documentation.py SOURCE-FOLDER PAGES-FOLDER --version VERSION
"""

import argparse
import html
import re
import shutil
from pathlib import Path

import markdown

# Pages for developers, which users do not need.
FOR_DEVELOPERS = {"architecture.md", "testing.md", "performance.md", "windows.md"}
FIRST = ["installing.md"]

PAGE = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>{title}</title>
<style>
body {{ font-family: sans-serif; line-height: 1.5; max-width: 60em; margin: 2em auto; padding: 0 1em; }}
pre, code {{ font-family: monospace; background: #f2f2f2; }}
pre {{ padding: 0.7em; overflow-x: auto; }}
table {{ border-collapse: collapse; }}
th, td {{ border: 1px solid #bbb; padding: 0.3em 0.6em; text-align: left; vertical-align: top; }}
</style>
</head>
<body>
{body}
</body>
</html>
"""


def title_of(text):
    found = re.search(r"^# +(.+)$", text, re.M)
    if not found:
        raise SystemExit("a document has no title")
    return found.group(1).replace("`", "")


def with_working_links(body, names, pages):
    """Points links to the HTML pages; a link to something that is not in the package becomes plain text."""

    def link(match):
        target, text = match.groups()
        file, _, part = target.partition("#")
        if re.match(r"[a-z]+:", target) or not file:
            return match.group(0)
        if (pages / file).is_file():
            return match.group(0)
        if Path(file).name in names and "decisions" not in file:
            return f'<a href="{Path(file).stem}.html{"#" + part if part else ""}">{text}</a>'
        return text

    return re.sub(r'<a href="([^"]*)">(.*?)</a>', link, body, flags=re.S)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("source", type=Path)
    parser.add_argument("pages", type=Path)
    parser.add_argument("--version", required=True)
    options = parser.parse_args()

    files = sorted(f for f in (options.source / "docs").glob("*.md") if f.name not in FOR_DEVELOPERS)
    files.sort(key=lambda f: f.name not in FIRST)
    files.append(options.source / "CHANGELOG.md")
    names = {f.name for f in files}
    shutil.rmtree(options.pages, ignore_errors=True)
    options.pages.mkdir(parents=True)
    # Files that the pages show or link to.
    for file in sorted((options.source / "docs").glob("*.json")):
        shutil.copyfile(file, options.pages / file.name)
    shutil.copytree(options.source / "docs/pictures", options.pages / "pictures")

    entries = []
    for file in files:
        text = file.read_text(encoding="utf-8")
        body = markdown.markdown(text, extensions=["tables", "fenced_code", "toc", "sane_lists"])
        body = '<p><a href="index.html">Contents</a></p>\n' + with_working_links(body, names, options.pages)
        title = html.escape(title_of(text))
        (options.pages / f"{file.stem}.html").write_text(PAGE.format(title=title, body=body), encoding="utf-8")
        entries.append(f'<li><a href="{file.stem}.html">{title}</a></li>')
    title = f"ZVGRLibGenTL {html.escape(options.version)}"
    body = f"<h1>{title}</h1>\n<ul>\n" + "\n".join(entries) + "\n</ul>"
    (options.pages / "index.html").write_text(PAGE.format(title=title, body=body), encoding="utf-8")


if __name__ == "__main__":
    main()

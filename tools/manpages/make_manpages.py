#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
# SPDX-License-Identifier: Apache-2.0

"""Renders the manual pages described in data/manpages.toml into roff, one NAME.1 per page.

    make_manpages.py SOURCE OUTPUT-DIRECTORY --version VERSION

The date in the pages' headers is SOURCE_DATE_EPOCH's when it is set (as in a Debian package
build), so that the same sources give the same pages; otherwise the source file's.
"""

import argparse
import datetime
import os
import re
import sys
import tomllib

SECTION = 1


def escape(text):
    """Plain text as roff: backslashes escaped, no line taken for a request."""
    text = text.replace("\\", "\\e")
    return re.sub(r"^([.'])", r"\\&\1", text, flags=re.MULTILINE)


def literal_escape(text):
    # What is typed is shown with real minus signs, so that it can be copied.
    return escape(text).replace("-", "\\-")


def inline(text):
    """**bold** and *italic* spans as roff fonts; inside them hyphens are minus signs."""
    parts = re.split(r"(\*\*.+?\*\*|\*[^*]+?\*)", text)
    out = []
    for part in parts:
        if part.startswith("**") and part.endswith("**") and len(part) > 4:
            out.append(f"\\fB{literal_escape(part[2:-2])}\\fR")
        elif part.startswith("*") and part.endswith("*") and len(part) > 2:
            out.append(f"\\fI{literal_escape(part[1:-1])}\\fR")
        else:
            out.append(escape(part))
    return "".join(out)


def paragraphs(text):
    lines = []
    for k, paragraph in enumerate(p.strip() for p in text.strip().split("\n\n")):
        if k:
            lines.append(".PP")
        lines.append(inline(" ".join(paragraph.split())))
    return lines


def option_term(option):
    term = ", ".join(f"**{name}**" for name in option["names"])
    if "argument" in option:
        term += f" *{option['argument']}*"
    return term


def tagged(term, text, options=()):
    lines = [".TP", inline(term)] + paragraphs(text)
    if options:
        lines.append(".RS")
        for option in options:
            lines += tagged(option_term(option), option["text"])
        lines.append(".RE")
    return lines


def render(page, manual, version, date):
    name = page["name"]
    lines = [
        f'.\\" Generated from data/manpages.toml by tools/manpages/make_manpages.py.',
        f'.TH {literal_escape(name.upper())} {SECTION} "{date}" "{manual} {version}" '
        '"User Commands"',
        # Left-aligned and unhyphenated: the pages are full of options and paths.
        ".ad l",
        ".nr HY 0",
        ".SH NAME",
        f"{literal_escape(name)} \\- {escape(page['summary'])}",
        ".SH SYNOPSIS",
    ]
    # Each form with its arguments indented under the command name.
    command = f"**{name}**"
    for synopsis in page["synopsis"]:
        if not synopsis.startswith(command):
            raise ValueError(f"{name}: a synopsis starts with the command: {synopsis}")
        lines += [f".SY {literal_escape(name)}", inline(synopsis[len(command):].strip()), ".YS"]
    lines += [".SH DESCRIPTION"] + paragraphs(page["description"])
    if page.get("options"):
        lines.append(".SH OPTIONS")
        for option in page["options"]:
            lines += tagged(option_term(option), option["text"])
    for section in page.get("sections", []):
        lines.append(f".SH {escape(section['title'])}")
        if "text" in section:
            lines += paragraphs(section["text"])
        for item in section.get("items", []):
            lines += tagged(item["term"], item["text"], item.get("options", ()))
        if "literal" in section:
            lines += [".PP", ".nf", ".RS 4"]
            lines += [literal_escape(line) for line in section["literal"].strip("\n").split("\n")]
            lines += [".RE", ".fi"]
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("source")
    parser.add_argument("output")
    parser.add_argument("--version", required=True)
    arguments = parser.parse_args()

    with open(arguments.source, "rb") as file:
        manual = tomllib.load(file)
    epoch = os.environ.get("SOURCE_DATE_EPOCH")
    stamp = int(epoch) if epoch else int(os.path.getmtime(arguments.source))
    date = datetime.datetime.fromtimestamp(stamp, datetime.timezone.utc).strftime("%Y-%m-%d")

    os.makedirs(arguments.output, exist_ok=True)
    for page in manual["page"]:
        path = os.path.join(arguments.output, f"{page['name']}.{SECTION}")
        with open(path, "w", encoding="utf-8") as file:
            file.write(render(page, manual["manual"], arguments.version, date))
    return 0


if __name__ == "__main__":
    sys.exit(main())

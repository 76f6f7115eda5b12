#!/usr/bin/env python3
"""Writes the application defaults file: what packaging/Application.in says, then
every default resource that the sources build in, so that the two never differ.

usage: app_defaults.py SOURCE_ROOT >Application
"""
import pathlib
import re
import sys

TABLE = re.compile(r"VkResource \w+\[\] = \{(.*?)\n?\};", re.S)
# A comment line of a table, or an entry of it.
LINE = re.compile(r'^\s*//\s*(.*)$|\{\s*"([^"]+)",\s*"([^"]*)"\s*\}', re.M)


def defaults(text):
    """The lines for one source file; entries for a component of a changing name are left out."""
    lines = []
    for table in TABLE.findall(text):
        for comment, name, value in LINE.findall(table):
            if name.startswith("*"):
                lines.append(f"{name}: {value}")
            elif comment:
                lines.append(f"! {comment}")
    return lines if any(not line.startswith("!") for line in lines) else []


def main():
    root = pathlib.Path(sys.argv[1])
    sys.stdout.write((root / "packaging/Application.in").read_text(encoding="utf-8"))
    # The looks of everything first, then window by window.
    for source in sorted((root / "src").rglob("*.cc"), key=lambda s: (s.stem != "looks", s)):
        lines = defaults(source.read_text(encoding="utf-8"))
        if lines:
            title = source.stem.removesuffix("_ui").replace("_", " ")
            print(f"\n! ---- {title} ----", *lines, sep="\n")


main()

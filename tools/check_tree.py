#!/usr/bin/env python3
"""Checks the shape of the tree: file and folder sizes, a first line that says what a file holds, sources
and tests that no CMakeLists.txt lists, and paths in the documents that are not there."""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
MAX_LINES = 600
MAX_SOURCES = 25
PATH_IN_DOCS = re.compile(r"`((?:platform|Libraries|importer|fsextensions|fileurl|service|cli|tools|tests|fuzz|bench|"
                          r"docs|examples|cmake|index)/[\w./-]*)`")


def tracked():
    listing = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, check=True,
                             capture_output=True, text=True).stdout
    return [pathlib.PurePosixPath(line) for line in listing.splitlines() if (ROOT / line).is_file()]


def check_sources(files):
    folders = {}
    for file in files:
        if file.suffix not in (".h", ".cpp"):
            continue
        text = (ROOT / file).read_text(encoding="utf-8")
        lines = text.count("\n")
        if lines > MAX_LINES:
            yield f"{file}: {lines} lines, the ceiling is {MAX_LINES}"
        if not text.startswith("//"):
            yield f"{file}: the first line does not say what the file holds"
        if file.suffix == ".h" and "#pragma once" not in text:
            yield f"{file}: no #pragma once"
        folders.setdefault(file.parent, []).append(file)
        if file.suffix == ".cpp":
            listed = any(re.search(rf"\b{re.escape(file.name)}\b", (ROOT / folder / "CMakeLists.txt").read_text())
                         for folder in file.parents if (ROOT / folder / "CMakeLists.txt").is_file())
            if not listed and file.name != "ReplayMain.cpp":
                yield f"{file}: in no CMakeLists.txt"
    for folder, sources in folders.items():
        if len(sources) > MAX_SOURCES:
            yield f"{folder}: {len(sources)} sources, the ceiling is {MAX_SOURCES}"


def check_docs(files):
    for file in files:
        if file.suffix != ".md":
            continue
        for path in PATH_IN_DOCS.findall((ROOT / file).read_text(encoding="utf-8")):
            if not (ROOT / path).exists():
                yield f"{file}: {path} is not there"


def main():
    files = tracked()
    offences = [*check_sources(files), *check_docs(files)]
    print("\n".join(offences))
    return 1 if offences else 0


sys.exit(main())

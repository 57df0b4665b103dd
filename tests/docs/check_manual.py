#!/usr/bin/env python3
"""Fails where the manual page isn't well-formed or doesn't say what the program does.

Usage: check_manual.py TESSEL SEEDS, with a folder of pictures of all kinds, whole and damaged
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

PROJECT = pathlib.Path(__file__).parents[2]
PAGE = PROJECT / "docs/tessel.1"

# Where the numbers and names stand that the page repeats: a file, and patterns of each.
FACTS = {
    "app/main.cpp": [r'kSizeOption = "(.*)"'],
    "app/GalleryLayout.h": [r'"\*?(.+)"', r"kDefaultThumbSize = (\d+)"],
    "app/OutputFile.cpp": [r'mFolder\(path \+ "(.+)"\)'],
    "jpeg/CGraflibJpeg.h": [r"mQuality = (\d+)"],
    "jpeg/CGraphicsJpeg.h": [r"kMaxPixelsPerByte = (\d+)", r"kMaxScans = (\d+)"],
}


def squeezed(text):
    return " ".join(text.split())


def printed_lines(tessel, pictures):
    """What the program prints on standard output, with words in the place of names and numbers."""
    with tempfile.TemporaryDirectory() as folder:
        for picture in pathlib.Path(pictures).iterdir():
            shutil.copy(picture, f"{folder}/{picture.name}.jpg")
        output = ""
        for arguments in [], ["-tsize", "9", folder]:
            output += subprocess.run(
                [tessel, *arguments],
                check=True,
                text=True,
                stdout=subprocess.PIPE,
                stderr=subprocess.DEVNULL,
            ).stdout
    output = re.sub(rf"{folder}/tessel/\S+", "thumbnail", output)
    output = re.sub(rf"{folder}/\S+", "picture", output)
    return set(re.sub(r"\b\d[\d.]*(e-?\d+)?", "N", output).splitlines())


def main(tessel, pictures):
    subprocess.run(["mandoc", "-T", "lint", "-W", "warning", *PAGE.parent.glob("*.1")], check=True)
    rendered = subprocess.run(
        ["mandoc", "-T", "ascii", PAGE], check=True, text=True, stdout=subprocess.PIPE
    ).stdout
    page = squeezed(re.sub(".\b", "", rendered))
    wanted = [squeezed(line) for line in printed_lines(tessel, pictures)]
    for file, patterns in FACTS.items():
        for pattern in patterns:
            found = re.findall(pattern, (PROJECT / file).read_text())
            if not found:
                sys.exit(f"{file}: nothing matches {pattern}")
            wanted += found
    missing = [text for text in wanted if not re.search(rf"(?<!\d){re.escape(text)}(?!\d)", page)]
    for text in missing:
        print(f"{PAGE}: not found: {text}")
    print(f"{len(wanted)} names, numbers and lines looked up")
    return len(missing) > 0


sys.exit(main(*sys.argv[1:]))

"""What the tests of the documents share: a page's commands run as they stand."""

import os
import re

from support.gallery import PROJECT, do

PICTURES = ["photos/beach.jpg", "photos/2023/harbour.JPG", "photos/it's summer/late  sun.jpg"]


def blocks_of(page, language, heading=None):
    """The blocks of a page, or of one of its sections, that are marked with a language."""
    text = (PROJECT / page).read_text()
    if heading:
        section = re.search(rf"^## {re.escape(heading)}\n(.*?)(?=^## |\Z)", text, re.M | re.S)
        assert section, f"{page}: there is no section {heading}"
        text = section[1]
    blocks = re.findall(rf"^```{language}\n(.*?)^```$", text, re.M | re.S)
    assert blocks, f"{page}: there is no block of {language}"
    return blocks


class Reader:
    """Somebody with a folder that holds photos/, for whom the programs are installed."""

    def __init__(self, folder, programs, picture):
        self.folder = folder
        self.photos = folder / "photos"
        self.programs = folder / "bin"
        self.programs.mkdir()
        path = f"{self.programs}:{programs}:{os.environ['PATH']}"
        self.environment = {"PATH": path, "HOME": str(folder), "XDG_RUNTIME_DIR": str(folder)}
        for name in PICTURES:
            (folder / name).parent.mkdir(exist_ok=True)
            (folder / name).write_bytes(picture)

    def replace(self, program, commands):
        """Puts commands of the shell in the place of a program."""
        path = self.programs / program
        path.write_text(f"#!/bin/sh\n{commands}\n")
        path.chmod(0o755)

    def do(self, commands):
        """Runs commands of the shell, none of which may fail, and returns what they print."""
        return do("sh", "-euc", commands, folder=self.folder, **self.environment)

    def follow(self, page, heading):
        """Does what a section of a page says, and returns what is printed."""
        return "".join(self.do(block) for block in blocks_of(page, "sh", heading))

"""Runs commands in turn, and keeps a table of the ratios of their medians."""

import itertools
import json
import os
import pathlib
import random
import shutil
import statistics
import subprocess

THREADS = "VIPS_CONCURRENCY", "OMP_NUM_THREADS", "MAGICK_THREAD_LIMIT"
HEAD = """| measured | tessel | compared with | its figure | tessel : other | goal |
| --- | --- | --- | --- | --- | --- |
"""
# Samples whose noise is as hard to decode as photographs are.
SOFT = bytes(128 + (sample - 128) // 12 for sample in range(256))


class Bench:
    """The pictures, a folder for the galleries of one part, and the table that is filled."""

    def __init__(self, build, pictures, rounds):
        self.build = pathlib.Path(build).resolve()
        self.folder = self.build / "work"
        self.out = self.build / "out"
        self.aside = self.build / "aside"
        self.asides = itertools.count()
        self.rounds = rounds
        self.table = HEAD
        self.log = open(self.build / "compare.log", "w", encoding="utf-8")
        self.close()
        self.empty()
        folder = pathlib.Path(pictures).resolve() if pictures else self.drawn()
        self.photos = sorted(folder.glob("*.jpg"))

    def drawn(self):
        """A folder of twelve pictures of 12 megapixels, drawn once for all runs."""
        folder = self.build / "pictures"
        if not folder.is_dir():
            for number in range(12):
                draw(self.out / f"noisy{number}.jpg", 4242, 2828)
            self.out.rename(folder)
        return folder

    def empty(self):
        for folder in self.folder, self.out:
            self.put_aside(folder)
            folder.mkdir()

    def put_aside(self, path):
        """Takes a file or folder away. It is deleted when all is measured: some file systems spend
        many times what tessel takes on finding room while they remember what was deleted."""
        self.aside.mkdir(exist_ok=True)
        if path.exists():
            path.rename(self.aside / str(next(self.asides)))

    def close(self):
        """Deletes all that was measured."""
        for folder in self.folder, self.out, self.aside:
            shutil.rmtree(folder, ignore_errors=True)

    def link(self, sources, count, name="."):
        """Fills a folder of that name with so many links to pictures, in turn."""
        folder = self.folder / name
        folder.mkdir(exist_ok=True)
        for number in range(count):
            source, target = sources[number % len(sources)], folder / f"{number}.jpg"
            try:
                os.link(source, target)
            except OSError:  # another file system, or too many links
                shutil.copy2(source, target)
        return folder

    def clear(self):
        """Makes all galleries as they are before the first run."""
        for thumbs in list(self.folder.glob("**/tessel")):
            self.put_aside(thumbs.parent / "index.html")
            self.put_aside(thumbs)
        self.put_aside(self.out)
        self.out.mkdir()

    def run(self, program, *arguments):
        """Runs a program of the build that prints JSON, and returns that."""
        done = subprocess.run(
            [self.build / "bench" / program, *map(str, arguments)],
            cwd=self.folder,
            env={**os.environ, **dict.fromkeys(THREADS, "1")},
            stdout=subprocess.PIPE,
            stderr=self.log,
            check=True,
        )
        return json.loads(done.stdout)

    def side_by_side(self, commands, new=False, check=None, times=1):
        """The medians of what commands take that are run in turn: seconds cpu and wall, KiB peak.

        With `new`, each finds all pictures new. `check` is called with its name after each.
        """
        runs = {name: [] for name in commands}
        for _ in range(self.rounds * times):
            for name, command in commands.items():
                if new:
                    self.clear()
                runs[name].append(self.run("measure", *command))
                if check:
                    check(name)
        return {name: medians(results) for name, results in runs.items()}

    def row(self, what, ours, other, theirs, goal=None, text=None):
        """Adds a line to the table. `goal` is the highest ratio, `text` shows a figure."""
        text = text or seconds
        wanted = ratio(goal, 1) if goal else ""
        if goal and ours > goal * theirs:
            wanted += ", **missed**"
        columns = what, text(ours), other, text(theirs), ratio(ours, theirs), wanted
        self.table += f"| {' | '.join(columns)} |\n"


def medians(results):
    return {key: statistics.median(run[key] for run in results) for key in results[0]}


def seconds(value):
    return f"{value:.3f} s" if value >= 0.1 else f"{1000 * value:.2f} ms"


def mebibytes(kib):
    return f"{kib / 1024:.1f} MiB"


def ratio(ours, theirs):
    return f"{ours / theirs:.2f} : 1" if ours >= theirs else f"1 : {theirs / ours:.2f}"


def draw(path, width, height):
    """Draws a picture of soft noise, the same for the same size, and returns its path."""
    samples = random.Random(width).randbytes(3 * width * height).translate(SOFT)
    header = b"P6 %d %d 255\n" % (width, height)
    command = ["cjpeg", "-quality", "91", "-outfile", path]
    subprocess.run(command, input=header + samples, check=True)
    return path

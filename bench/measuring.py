"""Runs commands side by side, and keeps the table and the panels that come of it."""

import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys

SIZE = "192"
ONE_THREAD = {"VIPS_CONCURRENCY": "1", "OMP_NUM_THREADS": "1", "MAGICK_THREAD_LIMIT": "1"}


class Bench:
    """The programs, the folders, and the table that is being filled."""

    def __init__(self, arguments):
        self.build = pathlib.Path(arguments.build).resolve()
        self.programs = self.build / "bench"
        self.folder = pathlib.Path(arguments.folder).resolve()
        self.rounds = arguments.rounds
        self.peer_rounds = arguments.peer_rounds
        self.work = self.build / "work"
        self.out = self.work / "out"
        shutil.rmtree(self.work, ignore_errors=True)
        self.work.mkdir(parents=True)
        self.rows = []
        self.panels = []
        self.log = open(self.build / "compare.log", "w", encoding="utf-8")

    def program(self, name):
        return str((self.build if name.startswith("tessel") else self.programs) / name)

    def measure(self, command, folder):
        """Runs a command in a folder: seconds cpu and wall, KiB peak, page faults."""
        done = subprocess.run(
            [self.program("measure"), *map(str, command)],
            cwd=folder,
            env={**os.environ, **ONE_THREAD, "OUT": str(self.out)},
            stdout=subprocess.PIPE,
            stderr=self.log,
            check=True,
        )
        return json.loads(done.stdout)

    def side_by_side(self, commands, folder, rounds, prepare=None, check=None):
        """The medians for each command, all of them run in turn."""
        results = {name: [] for name in commands}
        for _ in range(rounds):
            for name, command in commands.items():
                if prepare:
                    prepare()
                results[name].append(self.measure(command, folder))
                if check:
                    check(name)
        return {
            name: {key: statistics.median(run[key] for run in runs) for key in runs[0]}
            for name, runs in results.items()
        }

    def clear(self, folder):
        """Makes a folder as it is before the first run, and the output folder empty."""
        shutil.rmtree(folder / "tessel", ignore_errors=True)
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir()

    def row(self, what, ours, other, theirs, text=None, goal=""):
        """Adds a line to the table. `text` turns a figure into words."""
        text = text or seconds
        self.rows.append((what, text(ours), other, text(theirs), ratio(ours, theirs), goal))

    def memory_row(self, what, ours, other, theirs, goal):
        difference = f"{(ours - theirs) / 1024:+.2f} MiB"
        self.rows.append((what, mebibytes(ours), other, mebibytes(theirs), difference, goal))

    def say(self, what):
        print(f"compare: {what}", file=sys.stderr, flush=True)

    def fail(self, what):
        sys.exit(f"compare: {what}")


def seconds(value):
    return f"{value:.3f} s" if value >= 0.1 else f"{1000 * value:.2f} ms"


def mebibytes(kib):
    return f"{kib / 1024:.1f} MiB"


def summary(run):
    return f"{seconds(run['cpu'])}, {seconds(run['wall'])}, {mebibytes(run['peak'])}"


def ratio(ours, theirs):
    return f"{ours / theirs:.2f} : 1" if ours >= theirs else f"1 : {theirs / ours:.2f}"


def link_pictures(sources, folder, count=None):
    """Fills a new folder with links to pictures: each once, or in turn up to a count."""
    folder.mkdir(parents=True)
    sources = sorted(sources)
    for i in range(len(sources) if count is None else count):
        source = sources[i % len(sources)]
        target = folder / (source.name if count is None else f"picture{i}.jpg")
        try:
            os.link(source, target)
        except OSError:  # another file system
            shutil.copy2(source, target)
    return folder


def pictures_in(folder):
    return sorted(path.name for path in folder.iterdir() if path.name.endswith(".jpg"))

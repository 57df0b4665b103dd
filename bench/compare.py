"""Measures tessel beside what it is compared with, and prints one table of ratios.

Everything is run in turn, several times, and medians are compared: only ratios of one run mean
something, as machines and their moods differ. Also draws a chart of the main figures.
"""

import argparse
import pathlib
import shutil
import sys

from chart import draw
from library import library
from measuring import Bench, pictures_in
from runs import memory_growth, unchanged_runs, whole_runs
from tree import tree

SECTIONS = {
    "library": library,
    "runs": whole_runs,
    "unchanged": unchanged_runs,
    "memory": memory_growth,
    "tree": tree,
}


def table(rows):
    heads = ("measured", "tessel", "compared with", "its figure", "tessel : other", "goal")
    lines = [heads, tuple("---" for _ in heads), *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", help="the build folder")
    parser.add_argument("folder", help="large JPEG pictures")
    parser.add_argument("--rounds", type=int, default=7, help="of all but the peers (7)")
    parser.add_argument("--peer-rounds", type=int, default=3, help="of the peers (3)")
    parser.add_argument(
        "--only", nargs="+", choices=SECTIONS, default=SECTIONS, help="parts to run (all)"
    )
    arguments = parser.parse_args()
    if not pictures_in(pathlib.Path(arguments.folder)):
        sys.exit(f"compare: no *.jpg in {arguments.folder}")
    bench = Bench(arguments)
    try:
        for name in arguments.only:
            SECTIONS[name](bench)
    finally:
        shutil.rmtree(bench.work)
    result = table(bench.rows)
    (bench.build / "performance.md").write_text(result + "\n", encoding="utf-8")
    if bench.panels:
        draw(bench.panels, bench.build / "performance.svg")
    print(result)


if __name__ == "__main__":
    main()

"""A large folder by tessel-tree, on all cores, beside one plain run."""

import os
import shutil

from measuring import SIZE, link_pictures, pictures_in

PICTURES = 300


def tree(bench):
    if not shutil.which("parallel"):
        return bench.say("tessel-tree is left out: GNU parallel isn't installed")
    bench.say(f"a folder of {PICTURES} pictures by tessel-tree")
    sources = [bench.folder / name for name in pictures_in(bench.folder)]
    folder = link_pictures(sources, bench.work / "large", PICTURES)
    commands = {
        name: [bench.program(name), "-tsize", SIZE, folder] for name in ("tessel", "tessel-tree")
    }
    outcomes = {}

    def check(name):
        files = sorted((folder / "tessel").iterdir()) + [folder / "index.html"]
        outcomes[name] = {file.name: file.read_bytes() for file in files}

    runs = bench.side_by_side(
        commands, folder, bench.peer_rounds, lambda: bench.clear(folder), check
    )
    if outcomes["tessel"] != outcomes["tessel-tree"]:
        bench.fail("tessel-tree and tessel differ in what they make")
    cores = os.cpu_count()
    bench.row(
        f"{PICTURES} pictures by tessel-tree on {cores} cores, wall",
        runs["tessel-tree"]["wall"],
        "one plain run",
        runs["tessel"]["wall"],
        goal=f"1 : {0.9 * cores:.1f}",
    )
    shutil.rmtree(folder)

"""Whole runs of tessel: of new pictures, of unchanged ones, of many."""

import os
import shutil
import subprocess
import sys

from measuring import SIZE, link_pictures, pictures_in, seconds
from peers import peers


def whole_runs(bench):
    sources = [bench.folder / name for name in pictures_in(bench.folder)]
    folder = link_pictures(sources, bench.work / "pictures")
    names = pictures_in(folder)
    tessel = [bench.program("tessel"), "-tsize", SIZE, folder]
    decoding = [bench.program("decode_only"), *names]
    bench.say(f"{len(names)} whole pictures")
    printed = subprocess.run(decoding, cwd=folder, capture_output=True, check=True).stdout
    largest = int(printed) / 1024
    commands = {"tessel": tessel, "decoding": decoding}
    runs = bench.side_by_side(commands, folder, bench.rounds, lambda: bench.clear(folder))
    ours, least = runs["tessel"], runs["decoding"]
    what = "whole run, "
    bench.row(what + "processor", ours["cpu"], "decoding alone", least["cpu"], goal="1.04 : 1")
    bench.row(what + "wall", ours["wall"], "decoding alone", least["wall"])
    other = "largest picture, decoded"
    bench.memory_row(what + "peak memory", ours["peak"], other, largest, "+8 MiB")
    faults = "{:,.0f}".format
    bench.row(what + "page faults", ours["faults"], "decoding alone", least["faults"], faults)
    peers(bench, folder, names, tessel)


def draw(bench, folder, count, pixels):
    command = [bench.program("draw_noisy"), folder, count, pixels, pixels]
    subprocess.run(list(map(str, command)), check=True)
    return list(folder.iterdir())


def thumbnails(folder):
    """All that would change if a thumbnail were written again."""
    return {
        entry.name: (entry.stat().st_ino, entry.stat().st_mtime_ns, entry.stat().st_ctime_ns)
        for entry in os.scandir(folder / "tessel")
        if entry.name.endswith(".jpg")
    }


def unchanged_runs(bench):
    tiny = draw(bench, bench.work / "tiny", 10, 400)
    bars = []
    for count, times in (1_000, 10), (10_000, 3), (100_000, 1):
        bench.say(f"{count} unchanged pictures")
        folder = link_pictures(tiny, bench.work / f"unchanged{count}", count)
        tessel = [bench.program("tessel"), "-tsize", "8", folder]
        bench.measure(tessel, folder)
        before = thumbnails(folder)
        if len(before) != count:
            sys.exit(f"compare: {len(before)} thumbnails of {count} pictures")
        loop = [bench.program("bare_loop"), folder]
        commands = {"tessel": tessel, "loop": loop}
        runs = bench.side_by_side(commands, folder, bench.rounds * times)
        if thumbnails(folder) != before:
            sys.exit("compare: an unchanged run touched a thumbnail")
        ours, least = runs["tessel"]["cpu"], runs["loop"]["cpu"]
        bench.row(f"{count:,} unchanged, processor", ours, "bare loop", least, goal="1.7 : 1")
        peaks = runs["tessel"]["peak"], runs["loop"]["peak"]
        bench.memory_row(f"{count:,} unchanged, peak memory", peaks[0], "bare loop", peaks[1], "")
        bars.append((f"bare loop, {count:,}", 1e6 * least / count))
        bars.append((f"tessel, {count:,}", 1e6 * ours / count))
        shutil.rmtree(folder)
    bench.panels.append(("Microseconds of processor for one unchanged picture", bars))


def memory_growth(bench):
    bench.say("memory")
    small = draw(bench, bench.work / "small", 1, 300_000)
    commands, folders = {}, []
    for count in 100, 1_000:
        folders.append(link_pictures(small, bench.work / f"small{count}", count))
        commands[count] = [bench.program("tessel"), "-tsize", SIZE, folders[-1]]

    def prepare():
        for folder in folders:
            bench.clear(folder)

    runs = bench.side_by_side(commands, bench.work, bench.rounds, prepare)
    few, many = runs[100], runs[1_000]
    what = "peak memory, 1,000 small pictures"
    bench.memory_row(what, many["peak"], "100 of them", few["peak"], "no growth")
    cost = (many["cpu"] - few["cpu"]) / 900
    bench.rows.append(("one more of them (0.3 megapixels)", seconds(cost), "", "", "", ""))

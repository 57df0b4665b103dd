"""Measures tessel beside what it is compared with, and prints one table of ratios.

Everything is run in turn, several times, and medians are compared: only ratios of one run mean
something, as machines and their moods differ. Also draws a chart of the main figures.
"""

import argparse
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys

SIZE = "192"
QUALITY = "80"  # what tessel's thumbnails have
ONE_THREAD = {"VIPS_CONCURRENCY": "1", "OMP_NUM_THREADS": "1", "MAGICK_THREAD_LIMIT": "1"}

VIPS_WHOLE = """for file; do
    vips thumbnail_image "$file[access=sequential]" "$OUT/$file[Q=80]" 192 --height 192
done"""
PILLOW = """
import os, sys
from PIL import Image
whole, out, *names = sys.argv[1:]
for name in names:
    image = Image.open(name)
    if whole == 'whole':
        image.load()
        image.thumbnail((192, 192), reducing_gap=None)
    else:
        image.draft('RGB', (192, 192))
        image.thumbnail((192, 192))
    image.convert('RGB').save(os.path.join(out, name), quality=80)
"""


# --- Measuring ------------------------------------------------------------------------------------


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
        return str(self.build / name if name == "tessel" else self.programs / name)

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

    def row(self, what, ours, other, theirs, text=None, goal=""):
        """Adds a line to the table. `text` turns a figure into words."""
        text = text or seconds
        self.rows.append((what, text(ours), other, text(theirs), ratio(ours, theirs), goal))

    def memory_row(self, what, ours, other, theirs, goal):
        difference = f"{(ours - theirs) / 1024:+.2f} MiB"
        self.rows.append((what, mebibytes(ours), other, mebibytes(theirs), difference, goal))

    def say(self, what):
        print(f"compare: {what}", file=sys.stderr, flush=True)


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


# --- The library ----------------------------------------------------------------------------------


def library(bench):
    bench.say("the library's operations")
    report = bench.work / "library.json"
    subprocess.run(
        [
            bench.program("library_bench"),
            f"--benchmark_out={report}",
            "--benchmark_out_format=json",
            f"--benchmark_repetitions={bench.rounds}",
            "--benchmark_enable_random_interleaving=true",
        ],
        env={**os.environ, "TESSEL_BENCH_PICTURES": str(bench.folder)},
        stdout=bench.log,
        stderr=bench.log,
        check=True,
    )
    times = {}
    for run in json.loads(report.read_text(encoding="utf-8"))["benchmarks"]:
        if run.get("error_occurred"):
            sys.exit(f"compare: {run['name']}: {run['error_message']}")
        if run["run_type"] == "iteration":
            unit = {"ns": 1e-9, "ms": 1e-3}[run["time_unit"]]
            name = run["run_name"].removesuffix("/iterations:1")
            times.setdefault(name, []).append(run["cpu_time"] * unit)
    times = {name: statistics.median(runs) for name, runs in times.items()}
    scaler_rows(bench, times)
    operations = [name.removeprefix("copy/") for name in times if name.startswith("copy/")]
    pairs = {name: (times["operation/" + name], times["copy/" + name]) for name in operations}
    for name, (time, copy) in sorted(pairs.items(), key=lambda item: -item[1][0] / item[1][1]):
        bench.row(name, time, "copying its source", copy)
    for name in "read", "write":
        cost = times["database/" + name] / 100_000
        bench.rows.append((f"database, {name} a line", f"{1e6 * cost:.2f} µs", "", "", "", ""))


def scaler_rows(bench, times):
    peers = {
        "opencv": ("OpenCV's INTER_AREA, one thread", {"192": "1 : 8", "1024": "1 : 2.5"}),
        "definition": ("its definition, pixel by pixel", {"enlarge": "1 : 1"}),
    }
    for size, what in ("192", "to 192"), ("1024", "to 1024"), ("enlarge", "1.5 times larger"):
        time = times["scaler/" + size]
        if size != "enlarge":
            goal = "1.6 : 1" if size == "192" else ""
            bench.row("scaler " + what, time, "reading every byte", times["read"], goal=goal)
        for peer, (other, goals) in peers.items():
            if f"{peer}/{size}" in times:
                theirs = times[f"{peer}/{size}"]
                bench.row("scaler " + what, time, other, theirs, goal=goals.get(size, ""))
    bars = [("reading every byte", times["read"])]
    for size in "192", "1024":
        labels = {"scaler": "tessel", "opencv": "OpenCV", "definition": "definition"}
        for name, label in labels.items():
            if f"{name}/{size}" in times:
                bars.append((f"{label} to {size}", times[f"{name}/{size}"]))
    bench.panels.append(("The scaler alone, seconds for all pictures", bars))


# --- Whole runs -----------------------------------------------------------------------------------


def clear(bench, folder):
    """Makes a folder as it is before the first run, and the peers' output folder empty."""
    shutil.rmtree(folder / "tessel", ignore_errors=True)
    shutil.rmtree(bench.out, ignore_errors=True)
    bench.out.mkdir()


def peer_commands(bench, names):
    """Other programs that make the same thumbnails, with and without help from the decoder."""
    size = f"{SIZE}x{SIZE}"
    commands = {}
    if shutil.which("vipsthumbnail"):
        target = f"{bench.out}/%s.jpg[Q={QUALITY}]"
        command = ["vipsthumbnail", "-s", size, "-o", target, *names]
        commands["vipsthumbnail, decoder scaling"] = command
    if shutil.which("vips"):
        commands["vips, whole pictures"] = ["sh", "-c", VIPS_WHOLE, "sh", *names]
    ending = ["-thumbnail", size, "-quality", QUALITY]
    if shutil.which("gm"):
        start = ["gm", "mogrify", "-output-directory", bench.out]
        commands["GraphicsMagick, decoder scaling"] = [*start, "-size", size, *ending, *names]
        commands["GraphicsMagick, whole pictures"] = [*start, *ending, *names]
    if shutil.which("mogrify"):
        start = ["mogrify", "-path", bench.out]
        hint = ["-define", f"jpeg:size={size}"]
        commands["ImageMagick, decoder scaling"] = [*start, *hint, *ending, *names]
        commands["ImageMagick, whole pictures"] = [*start, *ending, *names]
    python = next(filter(has_pillow, (sys.executable, "/usr/bin/python3")), None)
    if python:
        for how in "decoder scaling", "whole pictures":
            command = [python, "-c", PILLOW, how.split()[0], bench.out, *names]
            commands[f"Pillow, {how}"] = command
    return commands


def has_pillow(python):
    command = [python, "-c", "import PIL"]
    return (
        os.path.exists(python)
        and subprocess.run(command, capture_output=True, check=False).returncode == 0
    )


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
    runs = bench.side_by_side(commands, folder, bench.rounds, lambda: clear(bench, folder))
    ours, least = runs["tessel"], runs["decoding"]
    what = "whole run, "
    bench.row(what + "processor", ours["cpu"], "decoding alone", least["cpu"], goal="1.10 : 1")
    bench.row(what + "wall", ours["wall"], "decoding alone", least["wall"])
    other = "largest picture, decoded"
    bench.memory_row(what + "peak memory", ours["peak"], other, largest, "+8 MiB")
    faults = "{:,.0f}".format
    bench.row(what + "page faults", ours["faults"], "decoding alone", least["faults"], faults)
    peers(bench, folder, names, tessel)


def peers(bench, folder, names, tessel):
    commands = peer_commands(bench, names)
    if not commands:
        return
    bench.say(f"{len(commands)} other ways to make thumbnails")

    def check(name):
        made = folder / "tessel" if name == "tessel" else bench.out
        missing = [name for name in names if not (made / name).is_file()]
        if missing:
            sys.exit(f"compare: {name} didn't make {len(missing)} thumbnails, such as {missing[0]}")

    commands = {"tessel": tessel, **commands}
    rounds = bench.peer_rounds
    runs = bench.side_by_side(commands, folder, rounds, lambda: clear(bench, folder), check)
    ours = runs["tessel"]
    for name, theirs in list(runs.items())[1:]:
        ratios = (ratio(ours[key], theirs[key]) for key in ("cpu", "wall", "peak"))
        what = "thumbnails: processor, wall, peak memory"
        bench.rows.append((what, summary(ours), name, summary(theirs), ", ".join(ratios), ""))
    bars = [(name, run["cpu"]) for name, run in runs.items()]
    bench.panels.append((f"{len(names)} thumbnails of {SIZE} pixels, seconds of processor", bars))


# --- Many pictures --------------------------------------------------------------------------------


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
            clear(bench, folder)

    runs = bench.side_by_side(commands, bench.work, bench.rounds, prepare)
    few, many = runs[100], runs[1_000]
    what = "peak memory, 1,000 small pictures"
    bench.memory_row(what, many["peak"], "100 of them", few["peak"], "no growth")
    cost = (many["cpu"] - few["cpu"]) / 900
    bench.rows.append(("one more of them (0.3 megapixels)", seconds(cost), "", "", "", ""))


# --- Output ---------------------------------------------------------------------------------------


def table(rows):
    heads = ("measured", "tessel", "compared with", "its figure", "tessel : other", "goal")
    lines = [heads, tuple("---" for _ in heads), *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def chart(panels):
    """Bars, a panel below the other, as the text of an SVG picture."""
    label, bar, line, width = 250, 420, 22, 760
    parts, y = [], 10
    for title, bars in panels:
        y += 26
        parts.append(f'<text x="16" y="{y}" font-weight="bold">{title}</text>')
        longest = max(value for _, value in bars)
        for name, value in bars:
            y += line
            colour = "#1f6f8b" if name.startswith("tessel") else "#b5bec4"
            length = max(1, bar * value / longest)
            parts.append(f'<text x="{label - 8}" y="{y}" text-anchor="end">{name}</text>')
            parts.append(
                f'<rect x="{label}" y="{y - 12}" width="{length:.1f}" height="15" fill="{colour}"/>'
            )
            parts.append(f'<text x="{label + length + 6:.1f}" y="{y}">{value:.3g}</text>')
        y += 14
    head = (
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{y + 10}" '
        f'viewBox="0 0 {width} {y + 10}" font-family="sans-serif" font-size="13" fill="#222">'
    )
    paper = '<rect width="100%" height="100%" fill="white"/>'
    return "\n".join([head, paper, *parts, "</svg>", ""])


SECTIONS = {
    "library": library,
    "runs": whole_runs,
    "unchanged": unchanged_runs,
    "memory": memory_growth,
}


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
    (bench.build / "performance.svg").write_text(chart(bench.panels), encoding="utf-8")
    print(result)


if __name__ == "__main__":
    main()

"""Measures tessel beside what it is compared with, and prints one table of ratios.

All is run in turn, several times, and medians are compared: only ratios of one run mean
something, as machines and their moods differ. Whatever is measured is a process.
"""

import argparse
import importlib.util
import os
import shutil
import sys

from measuring import Bench, draw, mebibytes, medians

PILLOW = """
import sys
from PIL import Image
whole, out, *names = sys.argv[1:]
for name in names:
    image = Image.open(name)
    if whole == 'decoder':
        image.draft('RGB', (192, 192))
    image.thumbnail((192, 192), reducing_gap=None if whole == 'whole' else 2)
    image.convert('RGB').save(out + '/' + name, quality=80)
"""


def scaler(bench):
    """The scaler alone."""
    passes = [bench.run("time_scaler", *bench.photos) for _ in range(bench.rounds)]
    times = medians(passes)
    rows = (
        ("to 192", "reading", "reading every byte", 1.6),
        ("to 192", "OpenCV to 192", "OpenCV's INTER_AREA, one thread", 1 / 8),
        ("to 1024", "OpenCV to 1024", "OpenCV's INTER_AREA, one thread", 1 / 3),
        ("enlarging", "definition enlarging", "its definition, pixel by pixel", 1),
    )
    for size, other, name, goal in rows:
        if other in times:
            ours = times["scaler " + size]
            bench.row("scaler, " + size, ours, name, times[other], goal)


def whole_run(bench):
    """A whole run, beside decoding alone."""
    bench.link(bench.photos, len(bench.photos))
    largest = bench.run("decode_only", *bench.photos) / 1024
    decoding = [bench.build / "bench" / "decode_only", *bench.photos]
    runs = bench.side_by_side({"tessel": tessel(bench), "decoding": decoding}, new=True)
    ours, theirs = runs["tessel"], runs["decoding"]
    bench.row("whole run", ours["cpu"], "decoding alone", theirs["cpu"], 1.04)
    limit = "the largest picture, decoded, and 8 MiB"
    bench.row("whole run, memory", ours["peak"], limit, largest + 8 * 1024, 1, mebibytes)


def growth(bench):
    """The memory of many pictures, beside that of few."""
    small = [draw(bench.build / "small.jpg", 671, 447)]
    folders = {count: bench.link(small, count, str(count)) for count in (100, 1_000)}
    commands = {count: tessel(bench, 192, folder) for count, folder in folders.items()}
    runs = bench.side_by_side(commands, new=True)
    many, few = runs[1_000]["peak"], runs[100]["peak"]
    bench.row("1,000 small ones, memory", many, "100 of them", few, 1.1, mebibytes)


def unchanged(bench):
    """Runs over unchanged pictures in one folder."""
    for count, times in (1_000, 10), (10_000, 3), (100_000, 1):
        bench.empty()
        link_tiny(bench, count)
        ours, loop = rerun(bench, tessel(bench, 8), times)
        bench.row(f"{count:,} unchanged", ours["cpu"], "bare loop", loop["cpu"], 1.7)


def programs(bench):
    """Other programs, on one thread; and --fast beside the fastest of them."""
    bench.link(bench.photos, len(bench.photos))
    names = sorted(path.name for path in bench.folder.iterdir())
    ours = {"tessel": tessel(bench), "fast": tree(bench, 192, "-j", "1", "--fast")}
    peers = peer_commands(bench.out, names)

    def check(name):
        thumbs = bench.folder / "tessel" if name in ours else bench.out
        missing = [name for name in names if not (thumbs / name).is_file()]
        if missing:
            fail(f"{name} didn't make {len(missing)} thumbnails, such as {missing[0]}")

    runs = bench.side_by_side({**ours, **peers}, new=True, check=check)
    times = {name: result["cpu"] for name, result in runs.items()}
    for name in peers:
        bench.row(f"{len(names)} thumbnails", times["tessel"], name, times[name])
    scaling = [name for name in peers if "scaling" in name]
    if scaling:
        name = min(scaling, key=times.get)
        bench.row("tessel-tree -j 1 --fast", times["fast"], name, times[name], 1)


def peer_commands(out, names):
    """Ways to make the same thumbnails, with and without help from the decoder."""
    ending = ["-thumbnail", "192x192", "-quality", "80", *names]
    gm = ["gm", "mogrify", "-output-directory", out]
    magick, hint = ["mogrify", "-path", out], ["-define", "jpeg:size=192x192"]
    python = sys.executable if importlib.util.find_spec("PIL") else "no Pillow"
    pillow = [python, "-c", PILLOW]
    vips = ["vipsthumbnail", "-s", "192x192", "-o", f"{out}/%s.jpg[Q=80]"]
    commands = {
        "vipsthumbnail, decoder scaling": [*vips, *names],
        "GraphicsMagick, decoder scaling": [*gm, "-size", "192x192", *ending],
        "GraphicsMagick, whole pictures": [*gm, *ending],
        "ImageMagick, decoder scaling": [*magick, *hint, *ending],
        "ImageMagick, whole pictures": [*magick, *ending],
        "Pillow, decoder scaling": [*pillow, "decoder", out, *names],
        "Pillow, whole pictures": [*pillow, "whole", out, *names],
    }
    return {name: words for name, words in commands.items() if shutil.which(words[0])}


def large_folder(bench):
    """New photographs in one folder by tessel-tree, on all cores."""
    bench.link(bench.photos, 300)
    ours, plain = tree_beside_plain(bench, tree(bench), tessel(bench))
    cores = os.cpu_count()
    what = f"300 photographs by tessel-tree, wall, {cores} cores"
    bench.row(what, ours["wall"], "one plain run", plain["wall"], 1 / (0.95 * cores))


def many_folders(bench):
    """Many small galleries by tessel-tree, new and unchanged."""
    folders = [link_tiny(bench, 2, f"gallery{number}") for number in range(1_000)]
    listed = bench.build / "folders"
    listed.write_text("\n".join(map(str, folders)), encoding="utf-8")
    plain = ["xargs", "-n", "1", "-a", listed, *tessel(bench, 8)[:-1]]
    ours, runs = tree_beside_plain(bench, tree(bench, 8), plain)
    what = "1,000 galleries by tessel-tree, "
    bench.row(what + "new", ours["cpu"], "plain runs", runs["cpu"], 1 / 2)
    ours, loop = rerun(bench, tree(bench, 8))
    bench.row(what + "unchanged", ours["cpu"], "bare loop", loop["cpu"], 2)


def many_pictures(bench):
    """The memory of tessel-tree for many pictures in one folder."""
    link_tiny(bench, 100_000)
    ours, _ = rerun(bench, tree(bench, 8))
    what, limit = "100,000 by tessel-tree, memory", "10 MiB and 400 bytes a picture"
    bench.row(what, ours["peak"], limit, 10 * 1024 + 400 * 100_000 / 1024, 1, mebibytes)


def tessel(bench, size=192, folder=None):
    return [bench.build / "tessel", "-tsize", size, folder or bench.folder]


def tree(bench, size=192, *options):
    return [bench.build / "tessel-tree", *options, "-tsize", size, bench.folder]


def link_tiny(bench, count, name="."):
    """A folder of pictures that cost next to nothing themselves, in thumbnails of 8 pixels."""
    tiny = bench.build / "tiny.jpg"
    return bench.link([tiny if tiny.exists() else draw(tiny, 24, 16)], count, name)


def rerun(bench, command, times=1):
    """A command when nothing is new, beside the bare loop: the medians of both."""

    def thumbnails():
        """All that would change if one were written again."""
        stats = {file: file.stat() for file in bench.folder.glob("**/tessel/*.jpg")}
        return {file: (stat.st_ino, stat.st_ctime_ns) for file, stat in stats.items()}

    bench.run("measure", *command)
    before = thumbnails()
    loop = [bench.build / "bench" / "bare_loop", bench.folder]
    runs = bench.side_by_side({"command": command, "loop": loop}, times=times)
    if not before or thumbnails() != before:
        fail(f"{command[0].name} made no thumbnails, or made unchanged ones again")
    return runs["command"], runs["loop"]


def tree_beside_plain(bench, command, plain):
    """tessel-tree beside plain runs that make the same files: the medians of both."""
    made = {}

    def check(name):
        files = [*bench.folder.glob("**/tessel/*"), *bench.folder.glob("**/index.html")]
        made[name] = {file: file.read_bytes() for file in files}

    runs = bench.side_by_side({"tree": command, "plain": plain}, new=True, check=check)
    if made["tree"] != made["plain"]:
        fail("tessel-tree and tessel differ in what they make")
    return runs["tree"], runs["plain"]


def fail(what):
    sys.exit(f"compare: {what}")


def main():
    parts = (scaler, whole_run, growth, unchanged, programs)
    parts += (large_folder, many_folders, many_pictures)
    parts = {part.__name__.replace("_", "-"): part for part in parts}
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", help="the build folder")
    parser.add_argument("folder", nargs="?", help="large JPEG pictures (drawn ones)")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--only", nargs="+", choices=parts, default=parts)
    arguments = parser.parse_args()
    bench = Bench(arguments.build, arguments.folder, arguments.rounds)
    if not bench.photos:
        fail(f"no *.jpg in {arguments.folder}")
    for name in arguments.only:
        print(f"compare: {name}: {parts[name].__doc__}", file=sys.stderr, flush=True)
        bench.empty()
        parts[name](bench)
        (bench.build / "performance.md").write_text(bench.table, encoding="utf-8")
    bench.close()
    print(bench.table, end="")


if __name__ == "__main__":
    main()

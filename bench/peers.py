"""Other programs that make the same thumbnails."""

import os
import shutil
import subprocess
import sys

from measuring import SIZE, ratio, summary

QUALITY = "80"  # what tessel's thumbnails have

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
    runs = bench.side_by_side(commands, folder, rounds, lambda: bench.clear(folder), check)
    ours = runs["tessel"]
    for name, theirs in list(runs.items())[1:]:
        ratios = (ratio(ours[key], theirs[key]) for key in ("cpu", "wall", "peak"))
        what = "thumbnails: processor, wall, peak memory"
        bench.rows.append((what, summary(ours), name, summary(theirs), ", ".join(ratios), ""))
    bars = [(name, run["cpu"]) for name, run in runs.items()]
    bench.panels.append((f"{len(names)} thumbnails of {SIZE} pixels, seconds of processor", bars))

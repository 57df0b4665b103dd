"""What the options of tessel-tree change."""

import os
import random
import re
import shlex

import pytest

from support.collection import stop_worker, workers_of
from support.gallery import PROJECT, describe, jpeg, pixels_of, size_of

VERSION = re.search(r"project\(tessel VERSION (\S+)", (PROJECT / "CMakeLists.txt").read_text())[1]


def segment(marker, content):
    return bytes([0xFF, marker]) + (len(content) + 2).to_bytes(2, "big") + content


def with_segment(picture, *parts):
    """The picture with another segment behind its first marker."""
    return picture[:2] + segment(*parts) + picture[2:]


def oriented(picture, orientation):
    """The picture with an Exif tag that says how the camera was held."""
    tags = bytes.fromhex(f"0001 0112 0003 00000001 {orientation:04x} 0000 00000000")
    return with_segment(picture, 0xE1, b"Exif\0\0MM\0*\0\0\0\x08" + tags)


def corners_of(path):
    """What lies in the upper left, upper right, lower left and lower right of a quartered picture."""
    width, height, samples = pixels_of(path)
    places = [(x, y) for y in (height // 4, height * 3 // 4) for x in (width // 4, width * 3 // 4)]
    reds = [samples[3 * (y * width + x)] for x, y in places]
    return "".join("abcd"[round(red / 80)] for red in reds)


def test_upright_turns_thumbnails_as_the_camera_was_held(collection):
    upper = (b"\x00" * 150 + b"\x50" * 150) * 100
    lower = (b"\xa0" * 150 + b"\xf0" * 150) * 100
    picture = jpeg(300, 200, samples=upper + lower)
    for orientation in range(10):
        collection.add(f"{orientation}.jpg", content=oriented(picture, orientation))
    collection.run("--upright")
    thumbs = [collection.folder / f"tessel/{orientation}.jpg" for orientation in range(10)]
    upright = ["abcd", "abcd", "badc", "dcba", "cdab", "acbd", "cadb", "dbca", "bdac", "abcd"]
    assert [corners_of(thumb) for thumb in thumbs] == upright
    assert [size_of(thumb) for thumb in thumbs] == [(192, 128)] * 5 + [(128, 192)] * 4 + [
        (192, 128)
    ]


@pytest.mark.parametrize("options, count", [([], 0), (["--profile"], 1)], ids=["without", "with"])
def test_the_profile_goes_along_if_it_is_wanted(collection, options, count):
    profile = b"ICC_PROFILE\0\x01\x01" + bytes(range(128)) + b"a profile"
    collection.add("x.jpg", content=with_segment(jpeg(300, 200, depth=3), 0xE2, profile))
    collection.run(*options)
    thumb = (collection.folder / "tessel/x.jpg").read_bytes()
    assert thumb.count(segment(0xE2, profile)) == count


def test_fast_thumbnails_are_others_but_nearly_the_same(collection):
    steps = [x // 3 + y // 5 for y in range(600) for x in range(400)]
    noise = random.Random(1)
    samples = bytes(min(255, step // 2 + noise.randrange(60)) for step in steps)
    collection.add("x.jpg", content=jpeg(400, 600, samples=samples))
    collection.run("-tsize", "60", "--fast")
    width, height, fast = pixels_of(collection.folder / "tessel/x.jpg")
    collection.run("-tsize", "60", "--remake")
    exact = pixels_of(collection.folder / "tessel/x.jpg")
    assert (width, height) == exact[:2]
    assert fast != exact[2]
    assert max(abs(one - other) for one, other in zip(fast, exact[2])) < 16


@pytest.mark.parametrize(
    "options, order",
    [
        (["--sort=time"], ["z.jpg", "a2.jpg", "a10.jpg"]),
        (["--sort=time", "--sort", "name"], ["a2.jpg", "a10.jpg", "z.jpg"]),
        ([], ["a2.jpg", "a10.jpg", "z.jpg"]),
    ],
    ids=lambda value: " ".join(value),
)
def test_the_order_of_pictures_on_a_page(collection, options, order):
    collection.add("a10.jpg", time=3)
    collection.add("a2.jpg", time=2)
    collection.add("z.jpg", time=1)
    collection.run("--page", *options)
    page = (collection.folder / "gallery.html").read_text()
    assert re.findall(r'href="(\w+\.jpg)"', page) == order
    first = re.findall('src="(.*?)"', (collection.folder / "galleries.html").read_text())
    assert first == [f"tessel/{order[0]}"]


# What is made again


@pytest.fixture
def made(collection):
    """A collection that is up to date."""
    collection.add("x.jpg", "y.jpg", "album/z.jpg")
    collection.run()
    return collection


@pytest.mark.parametrize(
    "damage",
    [
        pytest.param(lambda thumb: thumb.unlink(), id="missing"),
        pytest.param(lambda thumb: thumb.write_bytes(b""), id="empty"),
        pytest.param(lambda thumb: thumb.write_bytes(b"text"), id="text"),
        pytest.param(lambda thumb: thumb.write_bytes(jpeg(193, 128)), id="too large"),
    ],
)
def test_repair_makes_again_the_thumbnail_that_is(made, damage):
    before = made.state()
    damage(made.folder / "tessel/x.jpg")
    outcome = made.run("--repair")
    assert made.state() == before
    assert outcome.output == "2 galleries, 3 pictures, 1 thumbnail made\n"


def test_repair_makes_the_thumbnail_of_an_older_picture_that_was_restored(made):
    made.add("x.jpg", content=jpeg(100, 300), time=5)
    outcome = made.run("--repair")
    assert outcome.output == "2 galleries, 3 pictures, 1 thumbnail made\n"
    assert size_of(made.folder / "tessel/x.jpg") == (64, 192)
    assert made.run("--repair").output == "2 galleries, 3 pictures, 0 thumbnails made\n"


def test_remake_makes_all_again_but_an_older_thumbnail_stays_where_it_cant(made):
    older = describe(made.folder / "tessel/x.jpg")
    made.add("x.jpg", content=b"text")
    outcome = made.run("--remake", "-tsize", "99")
    sizes = {name: size_of(made.folder / name) for name in made.thumbs() if name != "tessel/x.jpg"}
    assert sizes == {"tessel/y.jpg": (99, 66), "album/tessel/z.jpg": (99, 66)}
    assert describe(made.folder / "tessel/x.jpg") == older
    assert outcome.output.startswith("2 galleries, 3 pictures, 2 thumbnails made\n")


# How it runs


def test_the_log_keeps_what_plain_runs_print_picture_by_picture(collection):
    collection.add(*(f"{number}/{number}.jpg" for number in range(9)))
    collection.add("cut/cut.jpg", content=collection.picture[:-20])
    log = collection.folder.parent / "log"
    log.write_text("kept\n")
    collection.run("--log", log, "-j", "3")
    collection.run(f"--log={log}")
    before, first, *lines, second = log.read_text().splitlines(keepends=True)
    assert before == "kept\n"
    time = r"tessel-tree \d{4}-\d\d-\d\d \d\d:\d\d:\d\d [+-]\d{4}\n"
    assert re.fullmatch(time, first)
    assert re.fullmatch(time, second)
    printed = [
        collection.tessel.run(folder).output.replace(str(collection.twin), str(collection.folder))
        for folder in collection.twin.iterdir()
    ]
    blocks = re.split("(?=Reading )", "".join(lines))
    assert sorted(blocks[1:]) == sorted(printed)


@pytest.mark.parametrize(
    "log",
    ["photos/x.JPG", "photos/", "photos", ""],
    ids=["picture", "folder/", "folder", "nothing"],
)
def test_a_log_may_not_be(collection, log):
    collection.add("x.jpg")
    before = collection.state()
    outcome = collection.tree.run("--log", log, "photos", folder=collection.folder.parent)
    assert outcome.output.startswith("tessel-tree: --log wants ")
    assert outcome.status == 2
    assert collection.state() == before


def test_without_its_log_nothing_is_made(collection, elsewhere):
    collection.add("x.jpg")
    before = collection.state()
    outcome = collection.run("--log", elsewhere)
    assert outcome.output == f"tessel-tree: the log can't be written: {elsewhere}\n"
    assert outcome.status == 1
    assert collection.state() == before


@pytest.mark.parametrize("words", [["-j", "3"], ["-j3"]], ids=" ".join)
def test_so_many_work_at_a_time(collection, words):
    collection.add("large.jpg", content=jpeg(6000, 6000, "-progressive"))
    with collection.start(*words) as run:
        stop_worker(run, "large.jpg")
        assert len(workers_of(run)) == 3
        run.terminate()


# In the place of ssh: runs the command here, but for one machine that doesn't answer.
SSH = """#!/bin/sh
while [ $# -gt 1 ]; do
    case $1 in
        -*) shift ;;
        silent) exit 255 ;;
        *) break ;;
    esac
done
host=$1
shift
if [ "$1" = -- ]; then
    shift
fi
echo "$host" >>"$0.hosts"
exec sh -c "$*"
"""


@pytest.fixture
def machines(collection, work, need):
    """What a run on other machines needs in its environment."""
    need("parallel")
    programs = work / "bin"
    programs.mkdir()
    words = shlex.join(os.fspath(word) for word in collection.tree.words)
    for name, text in {"ssh": SSH, "tessel-tree": f'#!/bin/sh\nexec {words} "$@"\n'}.items():
        (programs / name).write_text(text)
        (programs / name).chmod(0o755)
    return {"PATH": f"{programs}:{os.environ['PATH']}", "HOME": str(work), "PARALLEL": "--dry-run"}


def test_other_machines_make_the_same(collection, machines, work):
    names = ["it's #", "line\nfeed", "\udcff", "-tsize", "$(touch x)", "{}", *map(str, range(40))]
    collection.add(*(f"{name}/x.jpg" for name in names))
    outcome = collection.run("-S", ":,silent,far", "-tsize", "50", environment=machines)
    assert f"{len(names)} galleries, {len(names)} pictures, 0 thumbnails made\n" in outcome.output
    assert outcome.status == 0
    sizes = {size_of(collection.folder / name) for name in collection.thumbs()}
    assert sizes == {(50, 33)}
    assert len(collection.thumbs()) == len(names)
    assert set((work / "bin/ssh.hosts").read_text().split()) == {"far"}


def test_version_and_help_need_no_folder(tree):
    version = tree.run("--version")
    usage = tree.run("--help")
    assert version.output == f"tessel-tree {VERSION}\n"
    assert usage.output.startswith("Usage: tessel-tree [OPTION]... FOLDER...\n")
    assert (version.status, usage.status) == (0, 0)


@pytest.mark.parametrize(
    "words, complaint",
    [
        (["photos", "--prone"], "unknown option: --prone"),
        (["photos", "-tsize", "0"], "-tsize wants a number from 1 to 32767"),
        (["photos", "--prune=no"], "--prune takes no value"),
        (
            ["photos", "-S", "-oProxyCommand=x"],
            "-S wants names of machines, with commas between them",
        ),
        (["photos", ""], "a folder has no name"),
        (["--page"], "which folders?"),
    ],
    ids=lambda value: " ".join(value) if isinstance(value, list) else "",
)
def test_a_wrong_command_line_is_said_in_a_line_and_nothing_is_done(collection, words, complaint):
    collection.add("x.jpg")
    before = collection.state()
    outcome = collection.tree.run(*words, folder=collection.folder.parent)
    assert outcome.output == f"tessel-tree: {complaint}\n"
    assert outcome.status == 2
    assert collection.state() == before

"""What the options of tessel-tree change."""

import os
import random
import re
import shlex

import pytest

from support.collection import stop_worker, workers_of
from support.gallery import PROJECT, describe, jpeg, pixels_of, size_of


def with_segment(picture, marker, content):
    """The picture with another segment behind its first marker."""
    head = bytes([0xFF, marker]) + (len(content) + 2).to_bytes(2, "big")
    return picture[:2] + head + content + picture[2:]


def lying(picture):
    """The picture as of a camera that was held with its right side down."""
    turned = bytes.fromhex("0001 0112 0003 00000001 0006 0000 00000000")
    return with_segment(picture, 0xE1, b"Exif\0\0MM\0*\0\0\0\x08" + turned)


def test_upright_turns_the_thumbnails_of_pictures_that_lie_on_their_side(collection):
    collection.add("x.jpg", content=lying(collection.picture))
    collection.run("--upright")
    assert size_of(collection.folder / "tessel/x.jpg") == (128, 192)


def test_the_options_that_bash_completes_are_those_of_the_help(tree):
    usage = tree.run("--help").output
    completion = (PROJECT / "app/tessel.bash-completion").read_text()
    [options] = re.findall(r'options="(.*?)"', completion, re.DOTALL)
    assert sorted(re.findall(r"(?<=\s)-{1,2}\w+", usage)) == sorted(options.split())


@pytest.mark.parametrize("options, count", [([], 0), (["--profile"], 1)], ids=["without", "with"])
def test_the_profile_goes_along_if_it_is_wanted(collection, options, count):
    profile = b"ICC_PROFILE\0\x01\x01" + bytes(range(128)) + b"a profile"
    collection.add("x.jpg", content=with_segment(jpeg(300, 200, depth=3), 0xE2, profile))
    collection.run(*options)
    assert (collection.folder / "tessel/x.jpg").read_bytes().count(profile) == count


def test_fast_thumbnails_are_others_but_nearly_the_same(collection):
    noise = random.Random(1)
    samples = bytes(x // 3 + noise.randrange(60) for y in range(600) for x in range(400))
    collection.add("x.jpg", content=jpeg(400, 600, samples=samples))
    collection.run("-tsize", "60", "--fast")
    fast = pixels_of(collection.folder / "tessel/x.jpg")
    collection.run("-tsize", "60", "--remake")
    exact = pixels_of(collection.folder / "tessel/x.jpg")
    assert fast[:2] == exact[:2]
    assert fast[2] != exact[2]
    assert max(abs(one - other) for one, other in zip(fast[2], exact[2])) < 16


def test_sorted_by_time_the_oldest_picture_comes_first(collection):
    collection.add("a.jpg", time=3)
    collection.add("b.jpg", time=1)
    collection.add("c.jpg", time=2)
    collection.run("--page", "--sort=time")
    page = (collection.folder / "gallery.html").read_text()
    assert re.findall(r'href="(\w\.jpg)"', page) == ["b.jpg", "c.jpg", "a.jpg"]
    assert 'src="tessel/b.jpg"' in (collection.folder / "galleries.html").read_text()


@pytest.fixture
def made(collection):
    """A collection that is up to date."""
    collection.add("x.jpg", "y.jpg", "album/z.jpg")
    collection.run()
    return collection


@pytest.mark.parametrize(
    "content",
    [None, b"", b"text", jpeg(193, 128), jpeg(191, 128)],
    ids=["missing", "empty", "text", "too large", "too small"],
)
def test_repair_makes_again_a_thumbnail_that_is(made, content):
    before = made.state()
    (made.folder / "tessel/x.jpg").unlink()
    if content is not None:
        (made.folder / "tessel/x.jpg").write_bytes(content)
    outcome = made.run("--repair")
    assert made.state() == before
    assert outcome.output == "2 galleries, 3 pictures, 1 thumbnail made\n"


def test_repair_makes_the_thumbnail_of_an_older_picture_that_was_restored(made):
    made.add("x.jpg", content=jpeg(100, 300), time=5)
    outcome = made.run("--repair")
    assert outcome.output == "2 galleries, 3 pictures, 1 thumbnail made\n"
    assert size_of(made.folder / "tessel/x.jpg") == (64, 192)
    assert made.run("--repair").output == "2 galleries, 3 pictures, 0 thumbnails made\n"


def test_remake_makes_all_again_but_keeps_an_older_thumbnail_where_it_cant(made):
    older = describe(made.folder / "tessel/x.jpg")
    made.add("x.jpg", content=b"text")
    outcome = made.run("--remake", "-tsize", "99")
    sizes = [size_of(made.folder / f"{name}.jpg") for name in ("tessel/y", "album/tessel/z")]
    assert sizes == [(99, 66), (99, 66)]
    assert describe(made.folder / "tessel/x.jpg") == older
    assert outcome.output.startswith("2 galleries, 3 pictures, 2 thumbnails made\n")


def test_the_page_of_galleries_shows_the_first_picture_with_a_thumbnail(collection):
    collection.add("album/1.jpg", content=b"text")
    collection.add("album/2.jpg", "album/3.jpg")
    collection.run("--page")
    page = (collection.folder / "galleries.html").read_text()
    assert re.findall(r'src="(.*?)"', page) == ["album/tessel/2.jpg"]


def test_each_folder_named_gets_a_page_of_its_own_galleries(collection, elsewhere):
    collection.add("album/x.jpg")
    (elsewhere / "other").mkdir()
    (elsewhere / "other/x.jpg").write_bytes(collection.picture)
    collection.run("--page", elsewhere)
    pages = [folder / "galleries.html" for folder in (collection.folder, elsewhere)]
    links = [re.findall(r'href="(.*?)"', page.read_text()) for page in pages]
    assert links == [["album/gallery.html"], ["other/gallery.html"]]


def test_the_log_keeps_what_plain_runs_print_picture_by_picture(collection):
    collection.add(*(f"{number}/{number}.jpg" for number in range(9)))
    collection.add("cut/cut.jpg", content=collection.picture[:-20])
    log = collection.folder.parent / "log"
    log.write_text("kept\n")
    collection.run("--log", log, "-j", "3")
    collection.run(f"--log={log}")
    time = r"tessel-tree \d{4}-\d\d-\d\d \d\d:\d\d:\d\d [+-]\d{4}\n"
    parts = re.fullmatch(f"kept\n{time}(Reading .*){time}", log.read_text(), re.DOTALL)
    assert parts, log.read_text()
    printed = [collection.tessel.run(folder).output for folder in collection.twin.iterdir()]
    expected = [text.replace(f"{collection.twin}", f"{collection.folder}") for text in printed]
    assert sorted(re.split("(?!^)(?=Reading )", parts[1])) == sorted(expected)


def test_so_many_work_at_a_time_as_are_wanted(collection):
    collection.add("large.jpg", content=jpeg(6000, 6000, "-progressive"))
    with collection.started("-j3") as run:
        stop_worker(run, "large.jpg")
        assert len(workers_of(run)) == 3


# In the place of ssh: runs here what is to run on the machine that answers, `far`.
SSH = """#!/bin/sh
while [ "$1" != far ]; do
    [ $# -gt 0 ] || exit 255
    shift
done
shift
[ "$1" != -- ] || shift
echo >>"$0.used"
exec sh -c "$*"
"""


def test_other_machines_make_the_same(collection, need, work):
    need("parallel")
    (work / "bin").mkdir()
    words = shlex.join(map(str, collection.tree.words))
    for name, text in ("ssh", SSH), ("tessel-tree", f'#!/bin/sh\nexec {words} "$@"\n'):
        (work / "bin" / name).write_text(text)
        (work / "bin" / name).chmod(0o755)
    names = ["it's #", "line\nfeed", "\udcff", "-tsize", "$(touch x)", "{}", *map(str, range(40))]
    collection.add(*(f"{name}/x.jpg" for name in names), content=lying(collection.picture))
    path = f"{work}/bin:{os.environ['PATH']}"
    environment = os.environ | {"PATH": path, "HOME": str(work), "PARALLEL": "--dry-run"}
    outcome = collection.run("-S", ":,silent,far", "--upright", env=environment)
    assert outcome.output.endswith("46 galleries, 46 pictures, 0 thumbnails made\n")
    assert outcome.status == 0
    assert (work / "bin/ssh.used").exists()
    assert {size_of(collection.folder / thumb) for thumb in collection.thumbs()} == {(128, 192)}


@pytest.mark.parametrize(
    "option, complaint, status",
    [
        ("--prone", "unknown option: --prone", 2),
        ("--log=elsewhere", "the log can't be written: elsewhere", 1),
    ],
)
def test_nothing_is_done_for(collection, elsewhere, option, complaint, status):
    collection.add("x.jpg")
    before = collection.state()
    outcome = collection.tree.run(option, "photos", folder=elsewhere.parent)
    assert outcome.output == f"tessel-tree: {complaint}\n"
    assert outcome.status == status
    assert collection.state() == before

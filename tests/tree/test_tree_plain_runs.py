"""Without options, the galleries are those that plain runs of tessel make, byte for byte."""

import os

import pytest

from support.gallery import AWKWARD_NAMES, jpeg


def test_an_awkward_collection_is_made_as_by_plain_runs(collection):
    names = [os.fsdecode(name) for name in AWKWARD_NAMES.values()]
    for album in [".", *filter(None, names)]:
        collection.add(*(f"{album}/{name}.jpg" for name in names))
    collection.add("cut.jpg", content=collection.picture[:-20])
    collection.add("text/text.jpg", content=b"text")
    collection.add("empty/empty.jpg", content=b"")
    collection.add("deep/er/still/UPPER.JPG", "deep/er/passed over.jpeg", "deep/text.txt")
    collection.add("early.jpg", content=jpeg(2, 900, depth=3), time=-5)
    collection.link("link.jpg", "early.jpg")
    collection.link("deep/dangling.jpg", "nothing")
    outcome = collection.run("-j", "3")
    assert outcome.status == 0
    assert collection.state() == collection.plain()


def test_a_second_run_writes_nothing(collection):
    collection.add("x.jpg", "album/x.jpg", "album/y.jpg")
    collection.run("--page")
    before = {path: path.stat().st_ctime_ns for path in collection.folder.rglob("*")}
    outcome = collection.run("--page")
    assert outcome.output == "2 galleries, 3 pictures, 0 thumbnails made\n"
    assert {path: path.stat().st_ctime_ns for path in collection.folder.rglob("*")} == before


def test_a_later_run_makes_what_a_plain_run_makes(collection):
    names = ["kept", "changed", "older", "gone", "damaged"]
    collection.add(*(f"album/{name}.jpg" for name in names), "emptied/x.jpg")
    collection.run()
    collection.plain()
    collection.add("album/new.jpg", "album/changed.jpg", content=jpeg(9, 7), time=1_000_000_001)
    collection.add("album/older.jpg", content=jpeg(9, 7), time=999_999_999)
    collection.add("album/damaged.jpg", content=b"text", time=1_000_000_001)
    collection.remove("album/gone.jpg")
    collection.remove("emptied/x.jpg")
    outcome = collection.run()
    assert outcome.output.startswith("2 galleries, 5 pictures, 2 thumbnails made\n")
    assert collection.state() == collection.plain()


def test_some_folders_arent_entered(collection, elsewhere):
    (elsewhere / "x.jpg").write_bytes(collection.picture)
    collection.link("link", elsewhere)
    for name in "tessel", ".hidden", "@eaDir", "private", "other", "text/private":
        collection.add(f"{name}/x.jpg", f"{name}/below/x.jpg")
    before = collection.state()
    outcome = collection.run("--exclude", "private", "--exclude=other")
    assert collection.state() == before
    assert outcome.output == "0 galleries, 0 pictures, 0 thumbnails made\n"


@pytest.mark.parametrize(
    "words",
    [
        ["photos/"],
        ["photos/album/.."],
        ["photos", "link to photos", "photos/"],
        ["photos/album", "photos"],
        ["link to album", "photos"],
    ],
    ids=" and ".join,
)
def test_each_gallery_is_made_once_where_folders_are_named(collection, words):
    collection.add("x.jpg", "album/y.jpg")
    for place in "photos", "photos/album":
        name = f"link to {os.path.basename(place)}"
        (collection.folder.parent / name).symlink_to(place)
    outcome = collection.tree.run(*words, folder=collection.folder.parent)
    assert outcome.output == "2 galleries, 2 pictures, 2 thumbnails made\n"


def test_the_folder_of_the_run_has_its_name_as_heading(collection):
    collection.add("x.jpg")
    collection.tree.run(".", folder=collection.folder)
    assert collection.state() == collection.plain()


def test_what_is_above_a_link_is_what_it_leads_to(collection, elsewhere):
    (elsewhere / "below").mkdir()
    (elsewhere / "x.jpg").write_bytes(collection.picture)
    collection.link("link", elsewhere / "below")
    collection.tree.run(collection.folder / "link/..")
    assert (elsewhere / "index.html").exists()


def test_a_folder_that_doesnt_exist_is_named_and_the_others_are_made(collection):
    collection.add("x.jpg")
    outcome = collection.run(collection.folder / "none")
    assert outcome.output == (
        "1 gallery, 1 picture, 1 thumbnail made\n"
        f"Not finished:\n  {collection.folder}/none: No such file or directory\n"
    )
    assert outcome.status == 1

"""What no run may lose: originals, records, thumbnails, and what isn't the gallery's."""

import os

import pytest

from support.gallery import describe, jpeg

FILES = ["index.html", "gallery.html", "galleries.html", "tessel/tesselbase.txt", "tessel/x.jpg"]
LITTLE_ROOM = {"fsize": 8192}


def test_prune_removes_thumbnails_and_records_of_pictures_that_are_gone(collection):
    collection.add("album/gone.jpg", "album/there.jpg", "all/gone.jpg")
    collection.run()
    collection.remove("album/gone.jpg")
    collection.remove("all/gone.jpg")
    (collection.folder / "all/tessel/gone.jpg").unlink()
    outcome = collection.run("--prune")
    assert collection.thumbs() == ["album/tessel/there.jpg"]
    assert collection.records("album") == ["there.jpg"]
    assert collection.records("all") == []
    assert outcome.status == 0


@pytest.mark.parametrize(
    "record, file",
    [
        pytest.param("other.jpg", "tessel/unrecorded.jpg", id="without a record"),
        pytest.param("../original.jpg", "original.jpg", id="outside"),
        pytest.param("below/a.jpg", "tessel/below/a.jpg", id="below"),
        pytest.param("text.txt", "tessel/text.txt", id="no thumbnail by name"),
        pytest.param("folder.jpg", "tessel/folder.jpg/original", id="in a folder"),
    ],
)
def test_prune_leaves_what_is(collection, record, file):
    collection.add("x.jpg", file)
    collection.add("tessel/tesselbase.txt", content=f"{record}\t1\n".encode())
    collection.run("--prune")
    assert (collection.folder / file).read_bytes() == collection.picture


def test_prune_removes_nothing_through_a_link(collection, elsewhere):
    collection.add("a.jpg", "gone.jpg")
    collection.link("tessel", elsewhere)
    collection.run()
    collection.remove("gone.jpg")
    collection.run("--prune")
    assert sorted(os.listdir(elsewhere)) == ["a.jpg", "gone.jpg", "tesselbase.txt"]


@pytest.mark.parametrize("file", FILES)
def test_a_folder_in_the_way_loses_that_file_alone_and_is_said(collection, file):
    collection.add("x.jpg")
    (collection.folder / file).mkdir(parents=True)
    outcome = collection.run("--page")
    written = [name for name in FILES if (collection.folder / name).is_file()]
    assert written == [name for name in FILES if name != file]
    assert os.path.basename(file).replace("tesselbase.txt", "the database") in outcome.output
    assert outcome.status == 1


def test_a_thumbnail_that_doesnt_fit_is_named_and_the_older_one_stays(collection):
    collection.add("old.jpg", "small.jpg")
    collection.run()
    older = describe(collection.folder / "tessel/old.jpg")
    collection.add("new.jpg", "old.jpg", content=jpeg(1000, 1000), time=1_000_000_001)
    outcome = collection.run("-tsize", "1000", limits=LITTLE_ROOM)
    assert "2 thumbnails can't be written, such as that of " in outcome.output
    assert "Output file write error --- out of disk space?" in outcome.output
    assert outcome.status == 1
    assert collection.records() == ["small.jpg"]
    assert collection.thumbs() == ["tessel/old.jpg", "tessel/small.jpg"]
    assert describe(collection.folder / "tessel/old.jpg") == older
    assert "2 thumbnails made" in collection.run("-tsize", "1000").output


def test_pages_and_a_database_that_dont_fit_leave_the_old_ones(collection):
    collection.add(*(f"{number:0100}.jpg" for number in range(100)), content=jpeg(2, 2))
    collection.run("--page")
    long = "index.html", "gallery.html", "tessel/tesselbase.txt"
    before = [describe(collection.folder / name) for name in long]
    collection.add("new.jpg", content=jpeg(2, 2))
    outcome = collection.run("--page", limits=LITTLE_ROOM)
    assert [describe(collection.folder / name) for name in long] == before
    assert outcome.output.splitlines()[1:] == [
        "Not finished:",
        f"  {collection.folder}: gallery.html can't be written",
        f"  {collection.folder}: index.html can't be written",
        f"  {collection.folder}: the database can't be written",
    ]
    assert outcome.status == 1
    collection.run("--page")
    assert "new.jpg" in collection.records()


def test_what_a_user_may_not_change_is_named_and_stays_on_the_page_of_galleries(
    collection, stranger
):
    collection.add("album/x.jpg", "closed/x.jpg", "kept/x.jpg", "sealed/x.jpg")
    collection.run()
    collection.folder.chmod(0o777)
    (collection.folder / "closed").chmod(0o333)
    (collection.folder / "kept").chmod(0o555)
    (collection.folder / "sealed/tessel").chmod(0o777)
    (collection.folder / "sealed/tessel/tesselbase.txt").chmod(0)
    (collection.folder / "sealed/tessel/x.jpg").unlink()
    outcome = collection.run("--page", **stranger)
    assert outcome.output.startswith("3 galleries, 3 pictures, 0 thumbnails made\n")
    assert f"  {collection.folder}/sealed: the database can't be read\n" in outcome.output
    assert f"  {collection.folder}/closed: Permission denied\n" in outcome.output
    assert f"  {collection.folder}/kept: gallery.html can't be written\n" in outcome.output
    assert 'href="kept/gallery.html"' in (collection.folder / "galleries.html").read_text()


def test_names_are_printed_without_control_characters(collection):
    name = "\033[31m\x07\x9b2J"
    collection.add(f"{name}/damaged.jpg", content=b"text")
    (collection.folder / f"{name}/index.html").mkdir()
    for words in [], [f"--{name}"], [f"none{name}"]:
        outcome = collection.run(*words)
        assert "?[31m??2J" in outcome.output
        assert outcome.output.replace("\n", "").isprintable()


def test_no_log_is_appended_to_a_picture_that_a_link_leads_to(collection, elsewhere):
    collection.add("x.jpg")
    (elsewhere / "log").symlink_to(collection.folder / "x.jpg")
    before = collection.state()
    outcome = collection.run("--log", elsewhere / "log")
    assert outcome.status == 1
    assert collection.state() == before

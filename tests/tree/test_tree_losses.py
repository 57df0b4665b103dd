"""What no run may lose: originals, records, thumbnails, and what isn't the gallery's."""

import os
import re
import resource

import pytest

from support.gallery import describe, jpeg, make_socket, state_of

FILES = ["index.html", "gallery.html", "galleries.html", "tessel/tesselbase.txt", "tessel/x.jpg"]


# --prune


def test_prune_removes_thumbnails_and_records_of_pictures_that_are_gone(collection):
    collection.add("album/gone.jpg", "album/gone too.jpg", "album/there.jpg", "all/gone.jpg")
    collection.run()
    for name in "album/gone.jpg", "album/gone too.jpg", "all/gone.jpg":
        collection.remove(name)
    outcome = collection.run("--prune")
    assert collection.thumbs() == ["album/tessel/there.jpg"]
    assert collection.records("album") == ["there.jpg"]
    assert collection.records("all") == []
    assert outcome.status == 0


@pytest.mark.parametrize(
    "record, file",
    [
        pytest.param("other.jpg\t1", "tessel/unrecorded.jpg", id="without a record"),
        pytest.param("../original.jpg\t1", "original.jpg", id="outside"),
        pytest.param("below/a.jpg\t1", "tessel/below/a.jpg", id="below"),
        pytest.param("text.txt\t1", "tessel/text.txt", id="no thumbnail by name"),
        pytest.param("folder.jpg\t1", "tessel/folder.jpg/original", id="in a folder"),
    ],
)
def test_prune_leaves_what_is(collection, record, file):
    collection.add("x.jpg", file)
    collection.add("tessel/tesselbase.txt", content=f"{record}\n".encode())
    collection.run("--prune")
    assert (collection.folder / file).read_bytes() == collection.picture


def test_prune_leaves_an_album_that_is_named_as_the_thumbnail_folder(collection):
    collection.add("a.jpg", "tessel/original.jpg", "tessel/other.jpg")
    collection.run("--prune")
    assert collection.thumbs() == ["tessel/a.jpg", "tessel/original.jpg", "tessel/other.jpg"]
    assert (collection.folder / "tessel/original.jpg").read_bytes() == collection.picture


def test_prune_removes_nothing_through_a_link(collection, elsewhere):
    collection.add("a.jpg", "gone.jpg")
    collection.link("tessel", elsewhere)
    collection.run()
    collection.remove("gone.jpg")
    collection.run("--prune")
    assert sorted(os.listdir(elsewhere)) == ["a.jpg", "gone.jpg", "tesselbase.txt"]


# What lies in the place of a file


@pytest.mark.parametrize("file", FILES)
@pytest.mark.parametrize(
    "put",
    [
        pytest.param(lambda path, _: os.mkfifo(path), id="FIFO"),
        pytest.param(lambda path, _: make_socket(path), id="socket"),
        pytest.param(lambda path, file: path.symlink_to(file), id="link"),
        pytest.param(lambda path, file: path.hardlink_to(file), id="hard link"),
    ],
)
def test_a_new_file_replaces(collection, elsewhere, put, file):
    collection.add("x.jpg")
    collection.run("--page")
    expected = collection.state()
    (elsewhere / "file").write_text("outside")
    before = state_of(elsewhere)
    (collection.folder / file).unlink()
    put(collection.folder / file, elsewhere / "file")
    outcome = collection.run("--page", "--remake")
    assert collection.state() == expected
    assert state_of(elsewhere) == before
    assert outcome.status == 0


@pytest.mark.parametrize("file", FILES)
def test_a_folder_in_the_place_of_a_file_is_said_and_loses_that_file_alone(collection, file):
    collection.add("x.jpg", "y.jpg")
    (collection.folder / file).mkdir(parents=True)
    outcome = collection.run("--page")
    files = [*FILES, "tessel/y.jpg"]
    written = [name for name in files if (collection.folder / name).is_file()]
    assert written == [name for name in files if name != file]
    assert os.path.basename(file).replace("tesselbase.txt", "the database") in outcome.output
    assert outcome.status == 1


def test_a_thumbnail_that_couldnt_be_written_is_made_when_it_can_be(collection):
    collection.add("x.jpg", "y.jpg")
    (collection.folder / "tessel/x.jpg").mkdir(parents=True)
    outcome = collection.run()
    reason = "1 thumbnail can't be written, such as that of x.jpg"
    assert f"  {collection.folder}: {reason}\n" in outcome.output
    assert collection.records() == ["y.jpg"]
    (collection.folder / "tessel/x.jpg").rmdir()
    collection.run()
    assert collection.state() == collection.plain()


# Little room


def test_a_thumbnail_that_doesnt_fit_is_named_and_the_older_one_stays(collection):
    collection.add("new.jpg", "old.jpg", "small.jpg")
    collection.run()
    older = describe(collection.folder / "tessel/old.jpg")
    (collection.folder / "tessel/new.jpg").unlink()
    large = jpeg(1000, 1000)
    collection.add("new.jpg", "old.jpg", content=large, time=1_000_000_001)
    outcome = collection.run("-tsize", "1000", limits={resource.RLIMIT_FSIZE: 8192})
    assert "2 thumbnails can't be written, such as that of " in outcome.output
    assert "Output file write error --- out of disk space?" in outcome.output
    assert outcome.status == 1
    assert collection.records() == ["small.jpg"]
    assert collection.thumbs() == ["tessel/old.jpg", "tessel/small.jpg"]
    assert describe(collection.folder / "tessel/old.jpg") == older
    assert sorted(os.listdir(collection.folder / "tessel"))[-1] == "tesselbase.txt"
    assert "2 thumbnails made" in collection.run("-tsize", "1000").output


def test_pages_and_a_database_that_dont_fit_leave_the_old_ones(collection):
    names = [f"{number:0100}.jpg" for number in range(100)]
    collection.add(*names, content=jpeg(2, 2))
    collection.run("--page")
    text = ["index.html", "gallery.html", "tessel/tesselbase.txt"]
    before = {name: describe(collection.folder / name) for name in text}
    collection.add("new.jpg", content=jpeg(2, 2))
    outcome = collection.run("--page", limits={resource.RLIMIT_FSIZE: 8192})
    assert {name: describe(collection.folder / name) for name in text} == before
    for what in "index.html", "gallery.html", "the database":
        assert f"  {collection.folder}: {what} can't be written\n" in outcome.output
    assert outcome.status == 1
    collection.run()
    assert (collection.folder / "tessel/new.jpg").exists()
    assert "new.jpg" in collection.records()


# What is around a run


@pytest.mark.parametrize(
    "environment",
    [
        {"TMPDIR": "/none"},
        {"PARALLEL": "--tag --dry-run"},
        {"LC_ALL": "de_DE.UTF-8"},
        {"HOME": "/none"},
    ],
    ids=lambda environment: " ".join(environment),
)
def test_the_environment_changes_nothing(collection, environment):
    collection.add("x.jpg", "album/y.jpg")
    outcome = collection.run(environment=environment)
    assert outcome.output == "2 galleries, 2 pictures, 2 thumbnails made\n"
    assert collection.state() == collection.plain()


def test_a_gallery_that_cant_be_written_stays_on_the_page_of_galleries(collection, stranger):
    collection.add("album/x.jpg", "locked/x.jpg")
    collection.run()
    collection.folder.chmod(0o777)
    (collection.folder / "locked").chmod(0o555)
    outcome = collection.run("--page", **stranger)
    assert f"  {collection.folder}/locked: gallery.html can't be written\n" in outcome.output
    page = (collection.folder / "galleries.html").read_text()
    assert re.findall('href="(.*?)"', page) == ["album/gallery.html", "locked/gallery.html"]


def test_a_folder_that_cant_be_listed_is_named(collection, stranger):
    collection.add("closed/x.jpg", "open/x.jpg")
    (collection.folder / "closed").chmod(0o333)
    (collection.folder / "open").chmod(0o777)
    outcome = collection.run(**stranger)
    assert f"Not finished:\n  {collection.folder}/closed: Permission denied\n" in outcome.output
    assert collection.thumbs() == ["open/tessel/x.jpg"]
    assert outcome.status == 1


def test_names_reach_a_terminal_without_control_characters(collection):
    name = "\033[31m\x07\x9b2J"
    collection.add(f"{name}/damaged.jpg", content=b"text")
    (collection.folder / f"{name}/index.html").mkdir()
    for outcome in collection.run(), collection.run(f"--{name}"), collection.run(f"none{name}"):
        assert [char for char in outcome.output if char != "\n" and not char.isprintable()] == []
        assert "?[31m" in outcome.output

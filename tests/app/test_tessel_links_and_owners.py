"""What lies in the place of a gallery's files, who owns it, and who may change what."""

import os

import pytest

from support.gallery import NOBODY, describe, make_socket, state_of

FILES = ["index.html", "tessel/tesselbase.txt", "tessel/x.jpg"]


@pytest.fixture
def unmade(gallery, elsewhere):
    """A gallery of one picture with an empty thumbnail folder, beside a file that isn't its own."""
    gallery.add("x.jpg")
    gallery.thumbs.mkdir()
    (elsewhere / "file").write_text("outside")
    return gallery


@pytest.fixture(params=["tessel", "tree"])
def either(request, unmade):
    """The same gallery, to be made by either program."""
    unmade.program = request.getfixturevalue(request.param)
    return unmade


@pytest.mark.parametrize("file", FILES)
@pytest.mark.parametrize(
    "put",
    [
        pytest.param(lambda path, file, _: path.symlink_to(file), id="link to a file outside"),
        pytest.param(lambda path, _, picture: path.symlink_to(picture), id="link to the picture"),
        pytest.param(lambda path, file, _: path.symlink_to(f"{file}.new"), id="dangling link"),
        pytest.param(lambda path, *_: path.symlink_to("/dev/zero"), id="link to a device"),
        pytest.param(lambda path, file, _: path.hardlink_to(file), id="hard link outside"),
        pytest.param(lambda path, _, picture: path.hardlink_to(picture), id="hard link inside"),
        pytest.param(lambda path, *_: os.mkfifo(path), id="FIFO"),
        pytest.param(lambda path, *_: make_socket(path), id="socket"),
    ],
)
def test_a_new_file_replaces(either, elsewhere, put, file):
    path = either.folder / file
    put(path, elsewhere / "file", either.folder / "x.jpg")
    before = state_of(elsewhere)
    either.run()
    assert describe(path).startswith("-rw-r--r--")
    assert path.lstat().st_nlink == 1
    assert either.has_whole_page()
    assert either.good_thumbs() == ["x.jpg"]
    assert "x.jpg" in either.records()
    assert (either.folder / "x.jpg").read_bytes() == either.picture
    assert state_of(elsewhere) == before


@pytest.mark.parametrize(
    "put",
    [
        pytest.param(lambda path, folder: path.symlink_to(folder), id="link to a folder"),
        pytest.param(lambda path, _: path.write_text("somebody's"), id="file"),
    ],
)
def test_what_lies_in_the_place_of_the_drafts_stays(unmade, elsewhere, put):
    unmade.database.write_text("gone.jpg\t7\n")
    drafts = unmade.thumbs / "tesselbase.txt.new"
    (elsewhere / "tessel-draft-1").write_text("somebody's")
    put(drafts, elsewhere)
    before = describe(drafts), state_of(elsewhere)
    unmade.run()
    assert list(unmade.records()) == ["gone.jpg", "x.jpg"]
    assert (describe(drafts), state_of(elsewhere)) == before


@pytest.mark.parametrize("database", [None, "gone.jpg\t7\n"], ids=["empty", "with a database"])
def test_a_link_to_a_thumbnail_folder_is_followed(gallery, elsewhere, database):
    gallery.add("x.jpg")
    if database is not None:
        (elsewhere / "tesselbase.txt").write_text(database)
    gallery.thumbs.symlink_to("../elsewhere")
    gallery.run()
    assert gallery.thumbs.is_symlink()
    assert gallery.good_thumbs() == ["x.jpg"]
    assert "x.jpg" in gallery.records()
    assert gallery.run().tried == []


@pytest.mark.parametrize(
    "fill",
    [
        pytest.param(lambda folder: folder.rmdir(), id="nothing"),
        pytest.param(lambda folder: (folder / "x.jpg").write_text("somebody's"), id="a picture"),
        pytest.param(lambda folder: (folder / "tesselbase.txt").mkdir(), id="a folder of folders"),
    ],
)
def test_a_link_to_anything_else_is_left_alone(gallery, elsewhere, fill):
    gallery.add("x.jpg")
    fill(elsewhere)
    gallery.thumbs.symlink_to("../elsewhere")
    before = state_of(elsewhere.parent)
    first = gallery.run()
    assert first.output == ""
    assert gallery.run() == first
    assert gallery.has_whole_page()
    gallery.page.unlink()
    assert state_of(elsewhere.parent) == before


def test_files_keep_modes_and_owners(either):
    paths = [either.folder / name for name in FILES]
    for path in paths:
        path.touch()
        path.chmod(0o604)
        if os.geteuid() == 0:
            os.chown(path, NOBODY, NOBODY - 1)
    before = [describe(path).split()[:2] for path in paths]
    either.run()
    assert [describe(path).split()[:2] for path in paths] == before
    assert either.good_thumbs() == ["x.jpg"]
    assert list(either.records()) == ["x.jpg"]


# What can't be changed stays as it is.


def test_a_folder_that_cant_be_changed_is_left_as_it_is(unmade, stranger):
    unmade.thumbs.chmod(0o555)
    unmade.folder.chmod(0o555)
    before = unmade.state()
    outcome = unmade.run(**stranger)
    assert outcome.tried == ["x.jpg"]
    assert outcome.status == 0
    assert unmade.state() == before


@pytest.fixture
def shared(unmade):
    """The same gallery, whose folders can't be changed, but its page and its database can."""
    for path in unmade.page, unmade.database:
        path.write_text("shared")
        path.chmod(0o666)
    unmade.thumbs.chmod(0o555)
    unmade.folder.chmod(0o555)
    return unmade


def test_files_that_can_be_changed_are_where_their_folder_cant(shared, stranger):
    shared.run(**stranger)
    assert shared.has_whole_page()
    assert list(shared.records()) == ["x.jpg"]


def test_hard_links_in_a_folder_that_cant_be_changed_stay(shared, elsewhere, stranger):
    (elsewhere / "page").hardlink_to(shared.page)
    (elsewhere / "database").hardlink_to(shared.database)
    shared.run(**stranger)
    assert shared.page.read_text() == "shared"
    assert shared.database.read_text() == "shared"


def test_a_folder_that_cant_be_listed_is_left_as_it_is(unmade, stranger):
    unmade.folder.chmod(0o333)
    outcome = unmade.run(**stranger)
    assert (outcome.status, outcome.output) == (0, "")
    unmade.folder.chmod(0o755)
    assert sorted(os.listdir(unmade.folder)) == ["tessel", "x.jpg"]


@pytest.mark.parametrize(
    "mode, page_is_written, records",
    [
        (0o444, False, ["old"]),
        (0o222, True, ["old"]),  # whose records can't be read mustn't lose them
        (0o666, True, ["old", "x.jpg"]),
    ],
    ids=["read only", "write only", "somebody else's"],
)
def test_permissions_of_files_are_kept_to(unmade, stranger, mode, page_is_written, records):
    unmade.folder.chmod(0o777)
    unmade.thumbs.chmod(0o777)
    for path in unmade.page, unmade.database:
        path.write_text("old\t1\n")
        path.chmod(mode)
        if "user" in stranger and mode != 0o666:
            os.chown(path, stranger["user"], -1)
    status = unmade.database.stat()
    unmade.run(**stranger)
    assert unmade.good_thumbs() == ["x.jpg"]
    assert unmade.database.stat().st_uid == status.st_uid
    assert unmade.database.stat().st_mode == status.st_mode
    unmade.page.chmod(0o644)
    unmade.database.chmod(0o644)
    assert unmade.has_whole_page() == page_is_written
    assert list(unmade.records()) == records

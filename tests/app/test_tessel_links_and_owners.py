"""What lies in the place of a gallery's files, who owns it, and who may change what."""

import os

import pytest

from support.gallery import NOBODY, describe, jpeg, make_socket, state_of

FILES = ["index.html", "tessel/tesselbase.txt", "tessel/x.jpg"]


@pytest.fixture
def unmade(gallery, elsewhere):
    """A gallery of one picture with an empty thumbnail folder, beside a file that isn't its own."""
    gallery.add("x.jpg")
    gallery.thumbs.mkdir()
    (elsewhere / "file").write_text("outside")
    return gallery


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
def test_a_new_file_replaces(unmade, elsewhere, put, file):
    path = unmade.folder / file
    put(path, elsewhere / "file", unmade.folder / "x.jpg")
    before = state_of(elsewhere)
    unmade.run()
    assert describe(path).startswith("-rw-r--r--")
    assert path.lstat().st_nlink == 1
    assert unmade.has_whole_page()
    assert unmade.good_thumbs() == ["x.jpg"]
    assert "x.jpg" in unmade.records()
    assert (unmade.folder / "x.jpg").read_bytes() == unmade.picture
    assert state_of(elsewhere) == before


def test_a_link_in_the_place_of_the_drafts_isnt_followed(unmade, elsewhere):
    unmade.database.touch()  # or no draft would be needed
    (unmade.thumbs / "tesselbase.txt.new").symlink_to(elsewhere)
    before = state_of(elsewhere)
    unmade.run()
    assert sorted(os.listdir(unmade.thumbs)) == ["tesselbase.txt", "x.jpg"]
    assert state_of(elsewhere) == before


def test_nothing_makes_way_for_a_thumbnail_that_cant_be_written(unmade):
    unmade.add("x.jpg", content=jpeg(400, 2))
    (unmade.thumbs / "x.jpg").symlink_to("none")
    outcome = unmade.run("-tsize", "40000", ".")
    assert (unmade.thumbs / "x.jpg").is_symlink()
    assert outcome.status == 0


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


def test_files_keep_modes_and_owners(unmade):
    for name in FILES:
        (unmade.folder / name).touch()
        (unmade.folder / name).chmod(0o604)
        if os.geteuid() == 0:
            os.chown(unmade.folder / name, NOBODY, NOBODY - 1)
    before = {name: describe(unmade.folder / name).split()[:2] for name in FILES}
    unmade.run()
    after = {name: describe(unmade.folder / name).split()[:2] for name in FILES}
    assert after == before
    assert unmade.good_thumbs() == ["x.jpg"]
    assert list(unmade.records()) == ["x.jpg"]


@pytest.mark.root
def test_a_database_that_a_file_system_is_mounted_on_is_written_in_place(unmade, elsewhere):
    unmade.database.touch()
    mount = ["unshare", "--mount", "sh", "-ec", 'mount --bind "$0" "$1"; shift; exec "$@"']
    prefix = [*mount, elsewhere / "file", unmade.database]
    if unmade.program.run(prefix=prefix).status != 0:
        pytest.skip("nothing can be mounted here")
    unmade.run(prefix=prefix)
    assert (elsewhere / "file").read_text().startswith("x.jpg\t")
    assert sorted(os.listdir(unmade.thumbs)) == ["tesselbase.txt", "x.jpg"]


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

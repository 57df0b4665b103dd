"""What fails once loses nothing: not the records, not a file that the next run would read."""

import os
import subprocess

import pytest

from support.gallery import NOBODY, do, jpeg, state_of

pytestmark = pytest.mark.native  # errors are injected into the program's own calls
RUNNER = 12345  # a user who owns nothing else
LITTLE_ROOM = {"fsize": 8192}


@pytest.fixture
def made(gallery):
    """A gallery that is up to date."""
    gallery.add("x.jpg", time=1)
    gallery.run(gallery.folder)
    return gallery


@pytest.mark.parametrize(
    "call, error, when",
    [
        pytest.param("mkdir", "ENOSPC", "1+", id="room for its draft's folder"),
        pytest.param("open", "EMFILE", "2", id="descriptor for its draft"),
        pytest.param("rename", "EDQUOT", "1+", id="quota for its name"),
    ],
)
def test_a_database_stays_where_there_is_no(made, failing, call, error, when):
    made.add("y.jpg", time=1)
    made.run(made.folder, prefix=failing(call, error, when, f"{made.database}.new"))
    assert list(made.records()) == ["x.jpg"]
    assert sorted(os.listdir(made.thumbs)) == ["tesselbase.txt", "x.jpg", "y.jpg"]
    assert made.run().tried == ["y.jpg"]


@pytest.mark.parametrize(
    "call, when", [("write", "1+"), ("close", "8+")], ids=["written", "stored"]  # 7 by the loader
)
def test_a_database_stays_where_nothing_can_be(made, failing, call, when):
    before = made.database.read_bytes()
    made.run(prefix=failing(call, "EDQUOT", when))
    assert not made.page.exists()
    assert made.database.read_bytes() == before


@pytest.mark.parametrize("call", ["open", "read"])
def test_a_database_stays_for_which_this_fails(made, failing, call):
    before = made.state()
    outcome = made.run(made.folder, prefix=failing(call, "EIO", 1, made.database))
    assert outcome.tried == ["x.jpg"]
    assert outcome.status == 0
    assert made.state() == before


def test_a_thumbnail_stays_where_the_new_one_is_longer_than_a_file_can_hold(gallery):
    gallery.add("wide.jpg", content=jpeg(2000, 1))
    gallery.run()
    before = (gallery.thumbs / "wide.jpg").read_bytes()
    gallery.database.unlink()
    gallery.run("-tsize", "65501", ".")
    assert (gallery.thumbs / "wide.jpg").read_bytes() == before


def test_a_database_that_memory_doesnt_do_for_stays(made):
    text = "".join(f"{number}.jpg\t1\n" for number in range(1_500_000))
    made.database.write_text(text)
    outcome = made.run(limits={"as": 60_000_000})
    assert outcome.tried == ["x.jpg"]
    assert outcome.status == 0
    assert made.database.read_text() == text


@pytest.mark.parametrize("size, tried", [(64 << 20, []), ((64 << 20) + 1, ["x.jpg"])])
def test_a_database_is_read_up_to_64_mib(made, size, tried):
    os.truncate(made.database, size)
    assert made.run().tried == tried
    assert (made.database.stat().st_size == size) == bool(tried)


def test_a_thumbnail_that_doesnt_fit_ends_the_run_and_is_made_by_the_next(made):
    before = made.database.read_bytes()
    made.add("y.jpg", content=jpeg(1000, 1000), time=1)
    outcome = made.run("-tsize", "1000", ".", limits=LITTLE_ROOM)
    assert outcome.output.endswith("Output file write error --- out of disk space?\n")
    assert outcome.status == 1
    assert made.database.read_bytes() == before
    assert made.run().tried == ["y.jpg"]


@pytest.mark.parametrize("file", ["index.html", "tessel/x.jpg"])
def test_what_an_error_at_its_closing_loses_is_removed(gallery, failing, file):
    gallery.add("x.jpg")
    path = gallery.folder / file
    outcome = gallery.run(gallery.folder, prefix=failing("close", "EDQUOT", path=path))
    assert not path.exists()
    assert list(gallery.records()) == ["x.jpg"]
    assert outcome.status == 0


@pytest.mark.root
@pytest.mark.parametrize(
    "link, folder, tried",
    [(RUNNER, NOBODY, ["x.jpg"]), (NOBODY, NOBODY, ["x.jpg"]), (NOBODY, RUNNER, [])],
    ids=["the runner's own", "one of the folder's owner", "a stranger's"],
)
def test_of_links_to_thumbnail_folders_is_followed(gallery, elsewhere, link, folder, tried):
    gallery.add("x.jpg")
    os.chown(gallery.folder, RUNNER, RUNNER)
    (elsewhere / "tesselbase.txt").touch()
    for path in elsewhere, elsewhere / "tesselbase.txt":
        os.chown(path, folder, folder)
        path.chmod(0o777)
    gallery.thumbs.symlink_to(elsewhere)
    os.lchown(gallery.thumbs, link, link)
    before = state_of(elsewhere)
    assert gallery.run(user=RUNNER).tried == tried
    assert gallery.good_thumbs() == tried
    assert (state_of(elsewhere) == before) == (tried == [])


@pytest.mark.parametrize(
    "path, words, in_place",
    [
        pytest.param("tesselbase.txt", ["-m", "u:nobody:rw"], False, id="list of its own"),
        pytest.param(".", ["-d", "-m", "u:nobody:rw"], True, id="lack of one in a folder with one"),
    ],
)
def test_a_database_keeps_its_access(made, need, path, words, in_place):
    need("setfacl", "getfacl")
    made.database.chmod(0o600)
    if subprocess.run(["setfacl", *words, made.thumbs / path]).returncode != 0:
        pytest.skip("no access lists here")
    before = do("getfacl", "-p", made.database)
    number = made.database.stat().st_ino
    made.add("y.jpg")
    made.run()
    assert do("getfacl", "-p", made.database) == before
    assert list(made.records()) == ["x.jpg", "y.jpg"]
    assert (made.database.stat().st_ino == number) == in_place


def test_nothing_is_written_through_a_link_that_appears_meanwhile(made, trace, work):
    made.add("x.jpg")
    made.run(prefix=[*trace, "-o", work / "calls", "-e", "trace=/^open"])
    calls = (work / "calls").read_text().splitlines()
    writing = [call for call in calls if "O_WRONLY" in call]
    for name in ["index.html", "tessel/x.jpg", "tessel-draft-"]:
        assert any(name in call for call in writing)
    assert [call for call in writing if "O_NOFOLLOW" not in call] == []

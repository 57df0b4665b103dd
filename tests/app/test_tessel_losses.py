"""What fails once loses nothing: not the records, not a file that the next run would read."""

import os
import resource
import subprocess

import pytest

from support.gallery import NOBODY, describe, state_of

pytestmark = pytest.mark.native  # errors are injected into the program's own calls
RUNNER = 12345  # a user who owns nothing else


@pytest.fixture
def made(gallery):
    """A gallery that is up to date."""
    gallery.add("x.jpg", time=1)
    gallery.run(gallery.folder)
    return gallery


@pytest.mark.parametrize(
    "call, error, when",
    [
        pytest.param("mkdir", "ENOSPC", "1+", id="no room for its draft's folder"),
        pytest.param("mkdir", "EDQUOT", "1+", id="no quota for its draft's folder"),
        pytest.param("open", "ENOSPC", "2", id="no room for its draft"),
        pytest.param("open", "EMFILE", "2", id="no descriptor for its draft"),
        pytest.param("rename", "ENOSPC", "1+", id="no room for its name"),
    ],
)
def test_a_database_stays_where_there_is(made, failing, call, error, when):
    before = made.state()
    prefix = failing(call, error, when, f"{made.database}.new")
    made.run(made.folder, prefix=prefix)
    assert made.state() == before
    made.add("y.jpg", time=1)
    made.run(made.folder, prefix=prefix)
    assert list(made.records()) == ["x.jpg"]
    assert made.run().tried == ["y.jpg"]


@pytest.mark.parametrize(
    "call, when", [("write", "1+"), ("close", "8+")], ids=["written", "stored"]  # 7 by the loader
)
def test_a_database_stays_where_nothing_can_be(made, failing, call, when):
    before = made.database.read_bytes()
    made.run(prefix=failing(call, "EDQUOT", when))
    assert not made.page.exists()
    assert made.database.read_bytes() == before


@pytest.mark.parametrize(
    "call, error",
    [("open", "EIO"), ("open", "EMFILE"), ("read", "EIO")],
    ids=["opened", "opened for lack of descriptors", "read"],
)
def test_a_database_stays_that_cant_be(made, failing, call, error):
    before = made.state()
    outcome = made.run(made.folder, prefix=failing(call, error, 1, made.database))
    assert outcome.tried == ["x.jpg"]
    assert outcome.status == 0
    assert made.state() == before


def test_a_database_that_memory_doesnt_do_for_stays(made):
    text = "".join(f"{number}.jpg\t1\n" for number in range(1_500_000))
    made.database.write_text(text)
    outcome = made.run(limits={resource.RLIMIT_AS: 60_000_000})
    assert outcome.tried == ["x.jpg"]
    assert outcome.status == 0
    assert made.database.read_text() == text


@pytest.mark.parametrize("size, tried", [(64 << 20, []), ((64 << 20) + 1, ["x.jpg"])])
def test_a_database_is_read_up_to_64_mib(made, size, tried):
    os.truncate(made.database, size)
    assert made.run().tried == tried
    assert (made.database.stat().st_size == size) == bool(tried)


@pytest.mark.parametrize("file", ["index.html", "tessel/x.jpg"])
def test_what_an_error_at_its_closing_loses_is_removed(gallery, failing, file):
    gallery.add("x.jpg")
    path = gallery.folder / file
    outcome = gallery.run(gallery.folder, prefix=failing("close", "EDQUOT", path=path))
    assert not path.exists()
    assert list(gallery.records()) == ["x.jpg"]
    assert outcome.status == 0


@pytest.mark.root
def test_a_strangers_link_in_the_place_of_the_drafts_isnt_followed(made, elsewhere):
    (elsewhere / "tessel-draft-1").write_text("the runner's")
    made.database.write_text("gone.jpg\t7\n")
    for path in elsewhere, made.folder, made.database:
        os.chown(path, RUNNER, RUNNER)
    os.chown(made.thumbs, NOBODY, NOBODY)
    made.thumbs.chmod(0o1777)
    drafts = made.thumbs / "tesselbase.txt.new"
    drafts.symlink_to(elsewhere)
    os.lchown(drafts, NOBODY, NOBODY)
    before = state_of(elsewhere)
    made.run(user=RUNNER)
    assert list(made.records()) == ["gone.jpg", "x.jpg"]
    assert state_of(elsewhere) == before


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


@pytest.fixture
def access(need):
    """Functions that set and show access lists."""
    need("setfacl", "getfacl")

    def set_list(path, *words):
        if subprocess.run(["setfacl", *words, path]).returncode != 0:
            pytest.skip("no access lists here")

    def show(path):
        return subprocess.run(["getfacl", "-p", path], stdout=subprocess.PIPE).stdout

    return set_list, show


@pytest.mark.parametrize(
    "file_has, folder_has, error, in_place",
    [
        (["-m", "u:nobody:rw"], ["-b"], None, False),
        (["-m", "u:nobody:rw"], ["-b"], "EOPNOTSUPP", True),
        (["-m", "u:nobody:rw"], ["-b"], "ENOSPC", None),
        (["-b"], ["-d", "-m", "u:nobody:rw"], None, True),
    ],
    ids=["its own", "its own, not copied", "its own, without room", "none, and its folder one"],
)
def test_a_database_keeps_its_access_list(
    made, access, failing, file_has, folder_has, error, in_place
):
    set_list, show = access
    made.database.chmod(0o600)
    set_list(made.database, *file_has)
    set_list(made.thumbs, *folder_has)
    before = show(made.database), describe(made.database)
    number = made.database.stat().st_ino
    made.add("y.jpg")
    made.run(prefix=failing("fsetxattr", error) if error else ())
    assert show(made.database) == before[0]
    if in_place is None:
        assert describe(made.database) == before[1]
    else:
        assert list(made.records()) == ["x.jpg", "y.jpg"]
        assert (made.database.stat().st_ino == number) == in_place


def test_nothing_is_written_through_a_link_that_appears_meanwhile(made, need, work):
    need("strace")
    made.add("x.jpg")
    made.run(prefix=["strace", "-o", work / "calls", "-e", "trace=/^open"])
    calls = (work / "calls").read_text().splitlines()
    writing = [call for call in calls if "O_WRONLY" in call]
    for name in ["index.html", "tessel/x.jpg", "tessel-draft-"]:
        assert any(name in call for call in writing)
    assert [call for call in writing if "O_NOFOLLOW" not in call] == []


def test_without_dev_null_a_closed_output_costs_no_page(made, failing):
    before = made.page.read_bytes()
    made.database.unlink()
    made.run(made.folder, prefix=failing("open", "ENOENT", path="/dev/null"), closed=[1])
    assert made.page.read_bytes() == before

"""Runs that are killed, interrupted, or two at once: the next one leaves what one alone would."""

import contextlib
import fcntl
import functools
import os
import shutil
import signal

import pytest

from support.collection import is_running, stop_worker, wait_for, workers_of
from support.gallery import end_of, jpeg


@contextlib.contextmanager
def locked(*folders):
    """Holds the locks of folders, as another program does, until what it yields is called."""
    with contextlib.ExitStack() as files:
        for folder in folders:
            file = os.open(folder, os.O_RDONLY)
            files.callback(os.close, file)
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        yield files.close


@pytest.fixture(scope="session")
def large():
    """A picture that takes long enough for a worker to be found at it."""
    return jpeg(6000, 6000, "-progressive")


@pytest.fixture
def with_large(collection, large):
    """A collection whose last folder holds a large picture."""
    collection.add(*(f"{album}/{number}.jpg" for album in "abc" for number in range(10)))
    collection.add("z/a.jpg")
    collection.add("z/large.jpg", content=large)
    return collection


def test_no_worker_of_a_killed_run_writes_over_what_the_next_one_has_made(with_large):
    with with_large.started("-j", "2") as run:
        worker = stop_worker(run, "large.jpg")
        workers = workers_of(run)
        run.kill()
        run.wait()
    with_large.add("z/large.jpg", time=1_000_000_001)
    assert with_large.run().status == 0
    with contextlib.suppress(ProcessLookupError):
        os.kill(worker, signal.SIGCONT)
    for pid in workers:
        wait_for(lambda: not is_running(pid), f"worker {pid} ends")
    assert with_large.state() == with_large.plain()


def test_a_worker_that_is_killed_costs_its_picture_alone(with_large):
    with with_large.started("-j", "1", "--page") as run:
        os.kill(stop_worker(run, "large.jpg"), signal.SIGKILL)
        outcome = end_of(run)
    assert outcome.output == (
        "4 galleries, 32 pictures, 31 thumbnails made\n"
        f"Not finished:\n  {with_large.folder}/z: "
        "the process that made large.jpg was ended by signal 9\n"
    )
    assert outcome.status == 1
    assert 'href="z/gallery.html"' in (with_large.folder / "galleries.html").read_text()
    outcome = with_large.run()
    assert outcome.output == "4 galleries, 32 pictures, 1 thumbnail made\n"


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM], ids=["key press", "kill"])
def test_what_is_made_is_saved_and_nothing_half_made_stays_after_a(with_large, number):
    thumbs = with_large.folder / "z/tessel"
    with with_large.started("-j", "1") as run:
        worker = stop_worker(run, "large.jpg")  # which never ends by itself then
        (thumbs / "large.jpg").write_bytes(b"what the worker may have written so far")
        (thumbs / "tessel-tree.new").mkdir(exist_ok=True)
        (thumbs / "tessel-tree.new/tessel-draft-1-0").write_bytes(b"the same of an older one")
        run.send_signal(number)
        outcome = end_of(run)
    assert outcome.status == 128 + number
    assert outcome.output == ""
    assert not is_running(worker)
    assert sorted(os.listdir(thumbs)) == [*with_large.records("z"), "tesselbase.txt"]
    assert len(with_large.records("a")) == 10
    with_large.run()
    assert with_large.state() == with_large.plain()


def test_an_older_thumbnail_stays_when_a_run_is_interrupted(with_large):
    with_large.run()
    before = with_large.state()
    with with_large.started("-j", "1", "--remake") as run:
        stop_worker(run, "large.jpg")
        run.terminate()
        end_of(run)
    assert with_large.state() == before


def test_two_runs_at_once_end_like_one(with_large):
    with with_large.started("-j", "2") as one, with_large.started("-j", "2") as other:
        assert [end_of(one).status, end_of(other).status] == [0, 0]
    assert with_large.state() == with_large.plain()


@pytest.mark.parametrize("made", [True, False], ids=["up to date", "not made"])
def test_folders_that_are_locked_are_made_when_they_are_free(collection, made):
    collection.add("a/x.jpg", "b/x.jpg", "c/x.jpg")
    if made:
        collection.run()
        for page in collection.folder.glob("*/index.html"):
            page.unlink()
    locks = locked(collection.folder / "a", collection.folder / "b")
    with locks as unlock, collection.started() as run:
        said = run.stdout.readline()
        pages = list(collection.folder.glob("*/index.html"))
        unlock()
        assert end_of(run).status == 0
    assert said == b"tessel-tree: waiting for folders that another program has locked\n"
    assert pages == [collection.folder / "c/index.html"]
    assert collection.state() == collection.plain()


@pytest.mark.slow
def test_a_lock_that_stays_is_waited_for_a_minute(collection):
    collection.add("locked/x.jpg", "free/x.jpg")
    with locked(collection.folder / "locked"):
        outcome = collection.run("--page")
    reason = f"  {collection.folder}/locked: locked by another program\n"
    assert outcome.output.endswith(f"1 thumbnail made\nNot finished:\n{reason}")
    assert outcome.status == 1
    assert collection.thumbs() == ["free/tessel/x.jpg"]
    assert 'href="locked/gallery.html"' in (collection.folder / "galleries.html").read_text()


@pytest.fixture
def unmake(collection):
    """Takes back what runs have made of a collection. Old pages and databases are left."""

    def unmake():
        for gallery in collection.folder, collection.folder / "album":
            shutil.rmtree(gallery / "tessel", ignore_errors=True)
        collection.add("x.jpg", "album/y.jpg", "album/z.jpg")
        collection.add("index.html", "album/index.html", content=b"old")
        databases = ["tessel/tesselbase.txt", "album/tessel/tesselbase.txt"]
        collection.add(*databases, content=b"gone.jpg\t7\n")

    return unmake


# Calls by what their names begin with, as that is the same on every machine.
@pytest.mark.slow
@pytest.mark.native
@pytest.mark.parametrize("call", ["open", "mkdir", "write", "flock", "fchmod", "rename", "rmdir"])
def test_after_a_kill_at_any_change_the_next_run_makes_all_good(collection, unmake, killed, call):
    unmake()
    expected = collection.plain()
    for where in killed(call, functools.partial(collection.run, "-j", "1"), unmake):
        assert "gone.jpg" in collection.records("album"), where
        collection.run()
        assert collection.state() == expected, where

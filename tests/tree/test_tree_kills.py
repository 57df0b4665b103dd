"""Runs that are killed, interrupted, or two at once: the next one leaves what one alone would."""

import contextlib
import fcntl
import itertools
import os
import shutil
import signal

import pytest

from support.collection import is_running, stop_worker, wait_for, workers_of
from support.gallery import jpeg, state_of

TRACE = ["strace", "-o", "/dev/null"]


@contextlib.contextmanager
def folder_of(path):
    file = os.open(path, os.O_RDONLY)
    try:
        yield file
    finally:
        os.close(file)


@contextlib.contextmanager
def locked(*paths):
    """Holds the locks of folders, as another program does."""
    with contextlib.ExitStack() as stack:
        for path in paths:
            fcntl.flock(stack.enter_context(folder_of(path)), fcntl.LOCK_EX | fcntl.LOCK_NB)
        yield


@pytest.fixture(scope="session")
def large():
    """A picture that takes long enough to be found at work."""
    return jpeg(6000, 6000, "-progressive")


@pytest.fixture
def with_large(collection, large):
    """A collection with some pictures, and a large one in the folder that comes last."""
    collection.add(*(f"{album}/{number}.jpg" for album in "abc" for number in range(10)))
    collection.add("z/a.jpg", "z/b.jpg")
    collection.add("z/large.jpg", content=large)
    return collection


@pytest.mark.parametrize("count", [1, 12, 30])
def test_a_run_that_was_killed_is_ended_by_the_next(with_large, count):
    with with_large.start("-j", "2") as run:
        wait_for(lambda: len(with_large.thumbs()) >= count, f"{count} thumbnails")
        run.kill()
    assert run.returncode == -signal.SIGKILL
    outcome = with_large.run()
    assert outcome.status == 0
    assert with_large.state() == with_large.plain()


def test_workers_end_after_the_process_that_was_killed_and_hold_no_lock(with_large):
    with with_large.start("-j", "2") as run:
        workers = workers_of(run)
        worker = stop_worker(run, "large.jpg")
        run.kill()
    with locked(with_large.folder / "z"):
        assert is_running(worker)
    os.kill(worker, signal.SIGCONT)
    for pid in [*workers, worker]:
        wait_for(lambda: not is_running(pid), f"worker {pid} ends")


def test_a_worker_that_is_killed_costs_its_picture_alone(with_large):
    with with_large.start("-j", "1", "--page") as run:
        os.kill(stop_worker(run, "large.jpg"), signal.SIGKILL)
        output = run.communicate()[0].decode()
    assert output == (
        "4 galleries, 33 pictures, 32 thumbnails made\n"
        f"Not finished:\n  {with_large.folder}/z: "
        "the process that made large.jpg was ended by signal 9\n"
    )
    assert run.returncode == 1
    assert 'href="z/gallery.html"' in (with_large.folder / "galleries.html").read_text()
    assert with_large.records("z") == ["a.jpg", "b.jpg"]
    outcome = with_large.run("--page")
    assert outcome.output == "4 galleries, 33 pictures, 1 thumbnail made\n"
    assert with_large.records("z") == ["a.jpg", "b.jpg", "large.jpg"]


@pytest.mark.parametrize("name", ["SIGINT", "SIGTERM", "SIGHUP"])
def test_a_run_ends_at_once_and_saves_what_is_made_after(with_large, name):
    number = signal.Signals[name]
    with with_large.start("-j", "1") as run:
        worker = stop_worker(run, "large.jpg")  # which then never ends by itself
        made = with_large.thumbs()
        run.send_signal(number)
        output = run.communicate()[0]
    assert output == b""
    assert run.returncode == 128 + number
    assert not is_running(worker)
    assert with_large.records("a") == [f"{number}.jpg" for number in range(10)]
    assert with_large.thumbs() == made
    in_z = [os.path.basename(thumb) for thumb in made if thumb.startswith("z/")]
    assert with_large.records("z") == in_z
    assert sorted(os.listdir(with_large.folder / "z/tessel")) == [*in_z, "tesselbase.txt"]


def test_an_older_thumbnail_stays_when_the_run_is_interrupted(with_large):
    with_large.run()
    before = with_large.state()
    with with_large.start("-j", "1", "--remake") as run:
        stop_worker(run, "large.jpg")
        run.terminate()
    assert with_large.state() == before


def test_two_runs_at_once_end_like_one(with_large):
    runs = [with_large.start("-j", "2") for _ in range(2)]
    for run in runs:
        run.communicate()
    assert [run.returncode for run in runs] == [0, 0]
    assert with_large.state() == with_large.plain()


@pytest.mark.parametrize("pictures", [0, 1], ids=["up to date", "not made"])
def test_folders_that_are_locked_are_made_when_they_are_free(collection, pictures):
    collection.add("a/x.jpg", "b/x.jpg", "c/x.jpg")
    if not pictures:
        collection.run()
        for page in collection.folder.rglob("index.html"):
            page.unlink()
    with locked(collection.folder / "a", collection.folder / "b"):
        run = collection.start()
        said = run.stdout.readline()
        assert said == b"tessel-tree: waiting for folders that another program has locked\n"
        assert sorted(collection.folder.rglob("index.html")) == [collection.folder / "c/index.html"]
    output = run.communicate()[0].decode()
    made = {0: "0 thumbnails", 1: "3 thumbnails"}[pictures]
    assert output == f"3 galleries, 3 pictures, {made} made\n"
    assert collection.state() == collection.plain()


@pytest.mark.slow
def test_a_lock_that_stays_is_waited_for_a_minute(collection):
    collection.add("locked/x.jpg", "free/x.jpg")
    before = state_of(collection.folder / "locked")
    with locked(collection.folder / "locked"):
        outcome = collection.run("--page")
    assert outcome.output.partition("\n")[2] == (
        "1 gallery, 1 picture, 1 thumbnail made\n"
        f"Not finished:\n  {collection.folder}/locked: locked by another program\n"
    )
    assert outcome.status == 1
    assert state_of(collection.folder / "locked") == before
    assert 'href="locked/gallery.html"' in (collection.folder / "galleries.html").read_text()


@pytest.fixture
def old(collection):
    """A collection whose pages and databases are there, but not the thumbnails."""
    collection.add("x.jpg", "album/y.jpg", "album/z.jpg")
    make_old(collection)
    return collection


def make_old(collection):
    for folder in (
        collection.folder,
        collection.folder / "album",
        collection.twin,
        collection.twin / "album",
    ):
        shutil.rmtree(folder / "tessel", ignore_errors=True)
        (folder / "tessel").mkdir()
        (folder / "tessel/tesselbase.txt").write_text("gone.jpg\t7\n")
        (folder / "index.html").write_text("old")


@pytest.mark.slow
@pytest.mark.native
@pytest.mark.parametrize("call", ["open", "mkdir", "write", "flock", "fchmod", "rename", "rmdir"])
def test_after_a_kill_at_any_change_the_next_run_makes_all_good(old, need, call):
    need("strace")
    if old.tree.run("--version", prefix=TRACE).status != 0:
        pytest.skip("nothing can be traced here")
    expected = old.plain()
    for number in itertools.count(1):
        make_old(old)
        kill = f"inject=/^{call}:signal=KILL:when={number}"
        killed = old.run("-j", "1", prefix=[*TRACE, "-e", kill])
        if killed.status == 0:
            break
        assert killed.status == -signal.SIGKILL, killed.output
        assert "gone.jpg" in old.records("album"), f"killed at {call} {number}"
        old.run()
        assert old.state() == expected, f"killed at {call} {number}"
    assert number > 1, f"nothing was killed: {killed.output}"

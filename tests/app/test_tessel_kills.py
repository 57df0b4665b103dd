"""Runs that are killed, or two at once: the next one leaves what one alone would have left."""

import itertools
import shutil

import pytest

TRACE = ["strace", "-o", "/dev/null"]
NAMES = ["a.jpg", "b.jpg", "c.jpg"]


@pytest.fixture
def gone(gallery):
    """A gallery that isn't made yet, with a record of a picture that is gone."""
    gallery.add(*NAMES)
    start_anew(gallery)
    return gallery


def start_anew(gallery):
    shutil.rmtree(gallery.thumbs, ignore_errors=True)
    gallery.page.unlink(missing_ok=True)
    gallery.thumbs.mkdir()
    gallery.database.write_text("gone.jpg\t7\n")


# Calls by what their names begin with, as that is the same on every machine.
@pytest.mark.native
@pytest.mark.parametrize("call", ["open", "mkdir", "write", "fchmod", "close", "rename", "rmdir"])
def test_after_a_kill_at_any_change_the_next_run_makes_all_good(gone, need, call):
    need("strace")
    if gone.program.run(prefix=TRACE).status != 0:
        pytest.skip("nothing can be traced here")
    gone.run()
    expected = gone.state()
    for number in itertools.count(1):
        start_anew(gone)
        kill = f"inject=/^{call}:signal=KILL:when={number}"
        killed = gone.run(prefix=[*TRACE, "-e", kill])
        if killed.status == 0:
            break
        assert killed.status == "SIGKILL", killed.output
        assert gone.records().get("gone.jpg") == 7, f"killed at {call} {number}"
        gone.run()
        assert gone.state() == expected, f"killed at {call} {number}"
    assert number > 1, f"nothing was killed: {killed.output}"


def test_two_runs_at_once_and_a_third_end_like_one(gone):
    gone.run()
    expected = gone.state()
    for _ in range(20):
        start_anew(gone)
        runs = [gone.program.start(".", folder=gone.folder) for _ in range(2)]
        for run in runs:
            run.communicate(timeout=300)
        gone.run()
        assert gone.state() == expected

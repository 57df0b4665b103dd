"""Runs that are killed, or two at once: the next one leaves what one alone would have left."""

import shutil

import pytest

from support.gallery import end_of


@pytest.fixture
def unmake(gallery):
    """Takes back what runs have made of a gallery. A record of a picture that is gone is left."""
    gallery.add("a.jpg", "b.jpg", "c.jpg")

    def unmake():
        shutil.rmtree(gallery.thumbs, ignore_errors=True)
        gallery.page.unlink(missing_ok=True)
        gallery.thumbs.mkdir()
        gallery.database.write_text("gone.jpg\t7\n")

    return unmake


@pytest.fixture
def expected(gallery, unmake):
    """What one run leaves."""
    unmake()
    gallery.run()
    return gallery.state()


# Calls by what their names begin with, as that is the same on every machine.
@pytest.mark.native
@pytest.mark.parametrize("call", ["open", "mkdir", "write", "fchmod", "close", "rename", "rmdir"])
def test_after_a_kill_at_any_change_the_next_run_makes_all_good(
    gallery, unmake, expected, killed, call
):
    for where in killed(call, gallery.run, unmake):
        assert gallery.records().get("gone.jpg") == 7, where
        gallery.run()
        assert gallery.state() == expected, where


def test_two_runs_at_once_and_a_third_end_like_one(gallery, unmake, expected):
    for _ in range(20):
        unmake()
        runs = [gallery.program.start(".", folder=gallery.folder) for _ in range(2)]
        for run in runs:
            end_of(run)
        gallery.run()
        assert gallery.state() == expected

"""A full disk ends a run, and the next one goes on."""

import resource
import subprocess

import pytest

from support.gallery import jpeg

LITTLE_ROOM = {resource.RLIMIT_FSIZE: 8192}


@pytest.fixture
def small_disk(gallery):
    """A gallery on a disk of its own, of 256 kB."""
    command = ["mount", "-t", "tmpfs", "-o", "size=256k,mode=755", "tmpfs", gallery.folder]
    if subprocess.run(command).returncode != 0:
        pytest.skip("nothing can be mounted here")
    yield gallery
    subprocess.run(["umount", gallery.folder], check=True)


def large_database():
    """A database of more than 8192 bytes, with a record of x.jpg that no picture is later than."""
    names = [f"{number}.jpg" for number in range(10_000, 12_000)]
    return "".join(f"{name}\t1\n" for name in names) + "x.jpg\t2000000000\n"


def test_a_thumbnail_that_doesnt_fit_ends_the_run_and_is_made_by_the_next(gallery):
    gallery.add("x.jpg", content=jpeg(1000, 1000))
    outcome = gallery.run("-tsize", "1000", ".", limits=LITTLE_ROOM)
    assert outcome.output.endswith("Output file write error --- out of disk space?\n")
    assert outcome.status == 1
    assert gallery.run().tried == ["x.jpg"]


def test_a_database_that_doesnt_fit_leaves_the_old_one(gallery):
    gallery.add("x.jpg", time=1)
    gallery.run()
    gallery.database.write_text(large_database())
    before = gallery.state()
    outcome = gallery.run(limits=LITTLE_ROOM)
    assert outcome.output == ""
    assert gallery.state() == before


@pytest.mark.root
def test_a_full_disk_loses_no_record(small_disk):
    small_disk.add("x.jpg", time=1)
    small_disk.run()
    before = small_disk.records()
    small_disk.add("y.jpg", time=1)
    with (small_disk.folder / "filling").open("wb", buffering=0) as filling:
        with pytest.raises(OSError, match="No space left"):
            while True:
                filling.write(b"x" * 4096)
    outcome = small_disk.run()
    assert outcome.output.endswith("Output file write error --- out of disk space?\n")
    assert outcome.status == 1
    assert small_disk.records() == before
    (small_disk.folder / "filling").unlink()
    assert small_disk.run().tried == ["y.jpg"]
    assert small_disk.good_thumbs() == ["x.jpg", "y.jpg"]

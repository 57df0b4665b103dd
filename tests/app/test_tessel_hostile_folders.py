"""Folders of anything: a run ends normally, and every good picture gets its thumbnail."""

import os

import pytest

from support.gallery import AWKWARD_NAMES


@pytest.mark.parametrize("name", AWKWARD_NAMES.values(), ids=AWKWARD_NAMES)
def test_a_picture_gets_its_thumbnail_by_the_name_of(gallery, name):
    name = os.fsdecode(name + b".jpg")
    gallery.add(name)
    assert gallery.run().status == 0
    assert gallery.good_thumbs() == [name]


@pytest.mark.parametrize(
    "put",
    [
        pytest.param(os.mkfifo, id="FIFO"),
        pytest.param(os.mkdir, id="folder"),
        pytest.param(lambda path: path.write_bytes(b""), id="empty file"),
        pytest.param(lambda path: path.write_text("text"), id="text"),
        pytest.param(lambda path: path.symlink_to("none"), id="dangling link"),
        pytest.param(lambda path: path.symlink_to("/dev/zero"), id="device without an end"),
    ],
)
def test_no_entry_holds_a_run_up(gallery, put):
    gallery.add("a.jpg", "z.jpg")
    put(gallery.folder / "entry.jpg")
    outcome = gallery.run()
    assert outcome.tried == ["a.jpg", "entry.jpg", "z.jpg"]
    assert outcome.status == 0
    assert sorted(os.listdir(gallery.thumbs)) == ["a.jpg", "tesselbase.txt", "z.jpg"]
    assert gallery.good_thumbs() == ["a.jpg", "z.jpg"]


def test_a_link_to_a_picture_is_a_picture(gallery, elsewhere):
    (elsewhere / "picture").write_bytes(gallery.picture)
    (gallery.folder / "link.jpg").symlink_to("../elsewhere/picture")
    gallery.run()
    assert gallery.good_thumbs() == ["link.jpg"]


def test_a_damaged_picture_keeps_an_earlier_thumbnail(gallery):
    gallery.add("x.jpg", time=5)
    gallery.run()
    gallery.add("x.jpg", content=b"text", time=6)
    assert "Not a JPEG file" in gallery.run().output
    assert gallery.good_thumbs() == ["x.jpg"]


# What isn't written, and what still is, where something is in the way.
@pytest.mark.parametrize("obstacle", ["index.html", "tessel/tesselbase.txt", "tessel/x.jpg"])
def test_a_folder_in_the_place_of_a_file_loses_that_file_alone(gallery, obstacle):
    gallery.add("x.jpg", "y.jpg")
    (gallery.folder / obstacle).mkdir(parents=True)
    outcome = gallery.run()
    files = ["index.html", "tessel/tesselbase.txt", "tessel/x.jpg", "tessel/y.jpg"]
    written = [name for name in files if (gallery.folder / name).is_file()]
    assert written == [name for name in files if name != obstacle]
    assert list((gallery.folder / obstacle).iterdir()) == []
    assert outcome.tried == ["x.jpg", "y.jpg"]
    assert outcome.status == 0


def test_a_file_in_the_place_of_the_thumbnail_folder_leaves_the_page(gallery):
    gallery.add("x.jpg")
    gallery.thumbs.write_text("a file")
    outcome = gallery.run()
    assert outcome.status == 0
    assert gallery.has_whole_page()
    assert gallery.thumbs.read_text() == "a file"

"""Runs that have little: of descriptors, of memory, and nobody who reads what they print."""

import os

import pytest

from support.gallery import jpeg

MANY = [f"{number}.jpg" for number in range(50)]


@pytest.fixture
def many(gallery):
    """A gallery of many pictures, not made yet."""
    gallery.add(*MANY)
    return gallery


@pytest.mark.native
def test_five_descriptors_do_for_any_number_of_pictures(many):
    many.run(limits={"nofile": 5})
    assert many.good_thumbs() == sorted(MANY)
    assert sorted(many.records()) == sorted(MANY)
    assert many.has_whole_page()


@pytest.mark.parametrize("closed", [[1], [0, 1, 2]], ids=["output", "input, output and error"])
def test_closed_standard_descriptors_change_no_file(many, closed):
    many.add("cut.jpg", content=many.picture[:-2])  # of which standard error is told
    many.run()
    before = many.state()
    many.database.unlink()
    assert many.run(closed=closed).status == 0
    assert many.state() == before


def test_a_reader_that_leaves_ends_nothing(many):
    many.add("cut.jpg", content=many.picture[:-20])
    reader, output = os.pipe()
    os.close(reader)
    outcome = many.run(stdout=output)
    os.close(output)
    assert outcome.status == 0
    assert many.good_thumbs() == sorted(MANY)
    assert sorted(many.records()) == sorted([*MANY, "cut.jpg"])


LITTLE_MEMORY = {"as": 60_000_000}


@pytest.mark.native
def test_a_picture_that_memory_doesnt_do_for_is_left_out_alone(gallery):
    gallery.add("progressive.jpg", content=jpeg(6000, 6000, "-progressive"))
    gallery.add("x.jpg", "z.jpg")
    outcome = gallery.run(limits=LITTLE_MEMORY)
    assert outcome.tried == ["progressive.jpg", "x.jpg", "z.jpg"]
    assert outcome.status == 0
    assert gallery.good_thumbs() == ["x.jpg", "z.jpg"]
    assert not (gallery.thumbs / "progressive.jpg").exists()
    gallery.database.unlink()
    gallery.run()
    assert (gallery.thumbs / "progressive.jpg").exists()


@pytest.mark.native
def test_a_picture_in_one_scan_takes_the_memory_of_a_few_rows(gallery):
    gallery.add("large.jpg", content=jpeg(14000, 10000))
    gallery.run(limits=LITTLE_MEMORY)
    assert (gallery.thumbs / "large.jpg").exists()


@pytest.mark.native
def test_a_thumbnail_that_memory_doesnt_do_for_is_tried_once(gallery):
    gallery.add("x.jpg")
    gallery.run("-tsize", "30000", ".", limits=LITTLE_MEMORY)
    assert not (gallery.thumbs / "x.jpg").exists()
    assert gallery.run().tried == []


@pytest.mark.slow
def test_a_picture_that_goes_on_as_a_hole_of_terabytes_ends(gallery):
    gallery.add("x.jpg", content=gallery.picture[:-2])
    os.truncate(gallery.folder / "x.jpg", 2**43)
    assert "Premature end of JPEG file" in gallery.run().output
    assert gallery.good_thumbs() == ["x.jpg"]

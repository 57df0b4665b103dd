"""What a later run makes again, and what it leaves as it is."""

import pytest

LONGS_OF_32_AND_64_BITS = (2**31 - 1, 2**33)


@pytest.fixture
def made(gallery):
    """A gallery of two pictures that is up to date."""
    gallery.add("a.jpg", time=1000000)
    gallery.add("b.jpg", time=-200000)
    gallery.run()
    return gallery


def test_a_run_with_nothing_to_do_changes_and_says_nothing(made):
    before = made.state()
    assert made.run().output == ""
    assert made.state() == before


@pytest.mark.parametrize("time", [-199999, 2**33], ids=["a second later", "after 2038"])
def test_a_later_picture_is_made_once_more(made, time):
    made.add("b.jpg", time=time)
    assert made.run().tried == ["b.jpg"]
    assert made.run().tried == []


def test_a_time_that_no_long_holds_is_recorded_as_its_largest(made):
    made.add("b.jpg", time=2**33)
    made.run()
    assert made.records()["b.jpg"] in LONGS_OF_32_AND_64_BITS


def test_an_earlier_picture_keeps_thumbnail_and_record(made):
    made.add("a.jpg", content=b"not even a picture", time=5)
    assert made.run().tried == []
    assert made.good_thumbs() == ["a.jpg", "b.jpg"]
    assert made.records() == {"a.jpg": 1000000, "b.jpg": -200000}


def test_a_picture_that_is_gone_leaves_thumbnail_and_record(made):
    (made.folder / "b.jpg").unlink()
    assert made.run().output == ""
    assert made.good_thumbs() == ["a.jpg", "b.jpg"]
    assert made.records() == {"a.jpg": 1000000, "b.jpg": -200000}
    assert b"b.jpg" not in made.page.read_bytes()


def test_without_the_database_all_are_made_again(made):
    (made.thumbs / "a.jpg").write_bytes(b"to be written anew, and longer than any thumbnail" * 1000)
    before = made.database.read_bytes()
    made.database.unlink()
    assert made.run().tried == ["a.jpg", "b.jpg"]
    assert made.good_thumbs() == ["a.jpg", "b.jpg"]
    assert made.database.read_bytes() == before


def test_a_picture_that_failed_is_tried_again_only_when_it_is_later(gallery):
    gallery.add("x.jpg", content=b"text", time=5)
    gallery.run()
    gallery.add("x.jpg", time=5)
    assert gallery.run().tried == []
    gallery.add("x.jpg", time=6)
    gallery.run()
    assert gallery.good_thumbs() == ["x.jpg"]


def test_a_picture_that_cant_be_opened_has_no_record_and_is_tried_in_every_run(gallery):
    (gallery.folder / "lost.jpg").symlink_to("none")
    gallery.run()
    assert gallery.records() == {}
    assert gallery.run().tried == ["lost.jpg"]


@pytest.mark.parametrize("name", ["a\tb.jpg", "a\nb.jpg", "a\rb.jpg"], ids=ascii)
def test_a_name_that_no_record_can_hold_is_made_in_every_run(gallery, name):
    gallery.add(name, "z.jpg")
    gallery.run()
    assert list(gallery.records()) == ["z.jpg"]
    assert gallery.run().output.endswith(f"Writing ./tessel/{name}\n")


@pytest.mark.slow
@pytest.mark.parametrize(
    "text",
    [b"\0", b"\t", b"\n", b"x.jpg 9\n"],
    ids=["zeros", "TABs", "empty lines", "lines without a TAB"],
)
def test_a_large_file_of_anything_is_read_as_a_database(gallery, text):
    gallery.add("x.jpg")
    gallery.thumbs.mkdir()
    gallery.database.write_bytes(text * (50_000_000 // len(text)))
    gallery.run()
    assert gallery.good_thumbs() == ["x.jpg"]
    healed = gallery.database.read_bytes()
    assert gallery.run().tried == []
    assert gallery.database.read_bytes() == healed

"""What fails in a run of tessel-tree loses nothing, and ends nothing but what it concerns."""


import pytest

from support.gallery import jpeg

pytestmark = pytest.mark.native  # errors are injected into the program's own calls


def test_an_older_thumbnail_stays_without_room_for_a_folder_of_drafts(collection, failing):
    collection.add("x.jpg")
    collection.run()
    before = collection.state()["tessel/x.jpg"]
    collection.add("x.jpg", content=jpeg(1000, 1000), time=1_000_000_001)
    prefix = failing("mkdir", "ENOSPC", path=collection.folder / "tessel/tessel-tree.new")
    limits = {"fsize": 8192}
    assert collection.run("-tsize", "1000", prefix=prefix, limits=limits).status == 1
    assert collection.state()["tessel/x.jpg"] == before
    assert collection.run("-tsize", "1000").status == 0
    assert collection.state()["tessel/x.jpg"] != before


@pytest.mark.parametrize("page", ["index.html", "gallery.html", "galleries.html"])
def test_a_file_in_the_place_of_the_drafts_stays(collection, page):
    collection.add("x.jpg")
    collection.add("index.html", "gallery.html", "galleries.html", content=b"old")
    collection.add(f"{page}.new", content=b"somebody's")
    assert collection.run("--page").status == 0
    assert (collection.folder / f"{page}.new").read_text() == "somebody's"
    assert (collection.folder / page).read_text() != "old"


def test_more_jobs_than_descriptors_do_all(collection):
    collection.add(*(f"{number}/x.jpg" for number in range(30)))
    outcome = collection.run("-j", "100", limits={"nofile": 24})
    assert outcome.output == "30 galleries, 30 pictures, 30 thumbnails made\n"


def test_a_database_that_memory_doesnt_do_for_ends_no_other_gallery(collection):
    collection.add("other/y.jpg", "x.jpg")
    records = "".join(f"{number}\t\n" for number in range(1_500_000))
    records += "x.jpg\t2000000000\n"  # so that it is closed at once
    collection.add("tessel/tesselbase.txt", content=records.encode())
    outcome = collection.run("-j1", limits={"as": 160_000_000})
    assert outcome.status == 1
    assert collection.thumbs() == ["other/tessel/y.jpg"]
    assert (collection.folder / "tessel/tesselbase.txt").read_text() == records

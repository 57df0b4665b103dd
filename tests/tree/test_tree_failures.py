"""What fails in a run of tessel-tree loses nothing, and ends nothing but what it concerns."""

import os
import resource

import pytest

from support.gallery import Program, jpeg

pytestmark = pytest.mark.native  # errors are injected into the program's own calls


@pytest.fixture
def tree(build):
    return Program([build / "tessel-tree"])


@pytest.fixture
def changed(gallery):
    """A gallery with a thumbnail whose picture has changed, and gives a larger one at 1000."""
    gallery.add("x.jpg", time=1)
    gallery.run()
    gallery.add("x.jpg", content=jpeg(1000, 1000))
    return gallery


LITTLE_ROOM = {resource.RLIMIT_FSIZE: 8192}


@pytest.mark.parametrize(
    "call, error, when, path",
    [
        pytest.param("mkdir", "ENOSPC", "1+", "tessel/tessel-tree.new", id="folder for drafts"),
        pytest.param("open", "EMFILE", "1", "tessel", id="list of the thumbnails"),
        pytest.param("close", "EIO", "9999", "", id="room"),
    ],
)
def test_an_older_thumbnail_stays_without_a(changed, tree, failing, call, error, when, path):
    prefix = failing(call, error, when, changed.folder / path)
    options = ["-j1", "-tsize", "1000", changed.folder]
    assert tree.run(*options, prefix=prefix, limits=LITTLE_ROOM).status == 1
    assert changed.good_thumbs() == ["x.jpg"]
    assert tree.run(*options).status == 0
    assert changed.good_thumbs() == []


@pytest.mark.parametrize("name", ["index.html.new", "gallery.html.new", "galleries.html.new"])
def test_a_file_beside_the_pictures_stays(changed, tree, name):
    (changed.folder / name).write_text("somebody's")
    for page in "index.html", "gallery.html", "galleries.html":
        (changed.folder / page).write_text("old")
    assert tree.run("--page", changed.folder).status == 0
    assert (changed.folder / name).read_text() == "somebody's"
    assert changed.has_whole_page()


def test_more_jobs_than_descriptors_do_all(gallery, tree):
    for number in range(30):
        folder = gallery.folder / str(number)
        folder.mkdir()
        (folder / "x.jpg").write_bytes(gallery.picture)
    limits = {resource.RLIMIT_NOFILE: 24}
    outcome = tree.run("-j", "100", gallery.folder, limits=limits)
    assert outcome.output == "30 galleries, 30 pictures, 30 thumbnails made\n"


def test_a_database_that_memory_doesnt_do_for_ends_no_other_gallery(gallery, tree):
    gallery.add("x.jpg")
    gallery.thumbs.mkdir()
    records = "".join(f"{number}\t\n" for number in range(1_500_000))
    gallery.database.write_text(records + "x.jpg\t2000000000\n")  # so that it is closed at once
    other = gallery.folder / "other"
    other.mkdir()
    (other / "y.jpg").write_bytes(gallery.picture)
    before = gallery.database.read_bytes()
    outcome = tree.run("-j1", gallery.folder, limits={resource.RLIMIT_AS: 160_000_000})
    assert outcome.status == 1
    assert (other / "tessel/y.jpg").read_bytes() == gallery.thumbnail
    assert gallery.database.read_bytes() == before

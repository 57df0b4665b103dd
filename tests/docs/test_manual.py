"""docs/tessel.1: the manual page says what the program does, and the numbers it has."""

import re
import shutil

import pytest

from support.gallery import PROJECT, do

PAGE = PROJECT / "docs/tessel.1"

# Where the names and numbers stand that the page repeats, and what comes before them.
FACTS = [
    ("app/main.cpp", r'kSizeOption = "(.*)"'),
    ("app/GalleryLayout.h", r'kPicturePattern = "\*(.+)"'),
    ("app/GalleryLayout.h", r'kPageFile = "(.+)"'),
    ("app/GalleryLayout.h", r'kThumbFolder = "(.+)"'),
    ("app/GalleryLayout.h", r'kDbaseFile = "(.+)"'),
    ("app/GalleryLayout.h", r"kDefaultThumbSize = (\d+)"),
    ("app/ReplaceFile.h", r'kDraftSuffix = "(.+)"'),
    ("jpeg/CGraflibJpeg.h", r"mQuality = (\d+)"),
    ("jpeg/CGraphicsJpeg.h", r"kMaxPixelsPerByte = (\d+)"),
    ("jpeg/CGraphicsJpeg.h", r"kMaxScans = (\d+)"),
]


@pytest.fixture(scope="module", autouse=True)
def mandoc():
    if not shutil.which("mandoc"):
        pytest.skip("mandoc isn't installed")


@pytest.fixture(scope="module")
def page():
    """The page as it is read, with one blank between words."""
    text = do("mandoc", "-T", "ascii", PAGE)
    return " ".join(re.sub(".\b", "", text).split())


def says(page, words):
    return re.search(rf"(?<!\d){re.escape(' '.join(words.split()))}(?!\d)", page) is not None


@pytest.mark.parametrize("page", PROJECT.glob("docs/*.1"), ids=lambda path: path.name)
def test_pages_are_well_formed(page):
    assert do("mandoc", "-T", "lint", "-W", "warning", page) == ""


@pytest.mark.parametrize("file, pattern", FACTS, ids=[pattern for _, pattern in FACTS])
def test_the_page_repeats(page, file, pattern):
    found = re.findall(pattern, (PROJECT / file).read_text())
    assert len(found) == 1
    assert says(page, found[0])


def test_the_page_lists_every_line_that_is_printed(page, tessel, build, work):
    do(build / "fuzz/make_seeds", work / "seeds")
    folder = work / "gallery"
    folder.mkdir()
    for seed in (work / "seeds/picture").iterdir():  # pictures of all kinds, whole and damaged
        shutil.copy(seed, folder / f"{seed.name}.jpg")
    output = tessel.run().output
    without_errors = ["sh", "-c", 'exec "$@" 2>/dev/null', "sh"]
    output += tessel.run("-tsize", "9", folder, prefix=without_errors).output
    output = re.sub(rf"{folder}/tessel/\S+", "thumbnail", output)
    output = re.sub(rf"{folder}/\S+", "picture", output)
    lines = set(re.sub(r"\b\d[\d.]*(e-?\d+)?", "N", output).splitlines())
    assert "Writing thumbnail" in lines
    assert [line for line in sorted(lines) if not says(page, line)] == []

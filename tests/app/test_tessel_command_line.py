"""What the command line asks for, and what is printed."""

import re
import socket

import pytest

from support.gallery import PROJECT, describe, jpeg, size_of

VERSION = re.search(r"project\(tessel VERSION (\S+)", (PROJECT / "CMakeLists.txt").read_text())[1]
USAGE = f"""\
tessel <options> <foldername>
       options: -tsize <thumbsize>
       Version {VERSION}
"""


def test_without_arguments_the_usage_is_shown(gallery):
    outcome = gallery.program.run(folder=gallery.folder)
    assert outcome.output == USAGE
    assert outcome.status == 0
    assert list(gallery.folder.iterdir()) == []


@pytest.mark.parametrize(
    "words", [[".", "missing"], [".", "-tsize"], ["-tsize", "100"]], ids=" ".join
)
def test_without_the_folder_nothing_is_made_or_said(gallery, words):
    gallery.add("x.jpg")
    outcome = gallery.run(*words)
    assert outcome.output == ""
    assert outcome.status == 0
    assert [path.name for path in gallery.folder.iterdir()] == ["x.jpg"]


@pytest.mark.parametrize(
    "words, size",
    [
        (["."], 192),
        (["elsewhere", "."], 192),
        (["-tsize", "98px", "."], 98),
        (["-tsize=80", "."], 192),
        (["-tsize", "big", "."], 192),
        (["-tsize", "-5", "."], 192),
        (["-tsize", "9", "-tsize", "64", "."], 64),
        (["-tsize", "70/.."], 70),
    ],
    ids=lambda value: " ".join(value) if isinstance(value, list) else str(value),
)
def test_the_last_size_counts_if_it_is_one(gallery, words, size):
    gallery.add("x.jpg")
    (gallery.folder / "70").mkdir()
    gallery.run(*words)
    assert size_of(gallery.thumbs / "x.jpg") == (size, size * 2 // 3)


@pytest.mark.parametrize(
    "folder, heading",
    [(".", "."), ("./", ""), ("../gallery", "gallery"), ("../gallery//", ""), ("./.", ".")],
)
def test_the_folder_is_taken_as_it_is_written(gallery, folder, heading):
    gallery.add("x.jpg")
    outcome = gallery.run(folder)
    assert outcome.output == (
        f"Reading {folder}/x.jpg\n"
        f"{folder}/x.jpg Width=300 Height=200 mBits=8 Data != NULL\n"
        "sizeof(Tpixel)=1\n"
        f"Writing {folder}/tessel/x.jpg\n"
    )
    assert gallery.page.read_text().splitlines()[3] == f"<h2>{heading}</h2>"


def test_a_folder_without_pictures_becomes_a_gallery(gallery):
    assert gallery.run().output == ""
    assert gallery.page.read_text() == (
        "<html><body>\n\n<center>\n<h2>.</h2>\n<table>\n</table>\n</body></html>\n\n"
    )
    assert gallery.database.read_bytes() == b""


def test_what_is_created_has_the_mode_that_the_user_wants(gallery):
    gallery.add("x.jpg")
    gallery.run(umask=0o027)
    made = [gallery.thumbs, gallery.page, gallery.database, gallery.thumbs / "x.jpg"]
    modes = {path.name: describe(path)[:10] for path in made}
    assert modes == {
        "tessel": "drwxr-x---",
        "index.html": "-rw-r-----",
        "tesselbase.txt": "-rw-r-----",
        "x.jpg": "-rw-r-----",
    }


def test_a_thumbnail_that_no_memory_can_hold_is_left_out(gallery):
    gallery.add("x.jpg", content=jpeg(8, 8, depth=3))
    outcome = gallery.run("-tsize", "2147483647", ".")
    assert outcome.output == "Reading ./x.jpg\n./x.jpg Width=8 Height=8 mBits=24 Data != NULL\n"
    assert outcome.status == 0


def test_each_line_is_written_in_one_piece(gallery):
    folder = "." + "/." * 2030
    gallery.add("line\nfeed.jpg", content=jpeg(300, 200, depth=3)[:-1])
    ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)  # keeps pieces apart
    with theirs:
        gallery.run(folder, stdout=theirs)
    pieces = [piece.decode() for piece in iter(lambda: ours.recv(9999), b"")]
    assert pieces == [
        f"Reading {folder}/line\nfeed.jpg\n",
        "Premature end of JPEG file\n",
        f"{folder}/line\nfeed.jpg Width=300 Height=200 mBits=24 Data != NULL\n",
        "ScaleFakt=2.44141\n",
        "sizeof(Tpixel)=3\n",
        f"Writing {folder}/tessel/line\nfeed.jpg\n",
    ]

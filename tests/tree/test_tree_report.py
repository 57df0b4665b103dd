"""What tessel-tree says of a run."""

import os
import pty
import re


def test_the_end_of_a_run_says_what_was_made_and_names_what_wasnt(collection):
    collection.add("x.jpg", "album/damaged.jpg", "album/10.jpeg", "album/y.JPEG")
    collection.run()
    collection.add("album/damaged.jpg", "album/2.jpg", content=b"text", time=1_000_000_001)
    collection.add("album/10.jpg", content=b"")
    collection.add("album/cut.jpg", content=collection.picture[:-2])
    collection.add("blocked/z.jpg")
    (collection.folder / "blocked/index.html").mkdir()
    outcome = collection.run()
    album = f"{collection.folder}/album"
    assert outcome.output == (
        "3 galleries, 6 pictures, 2 thumbnails made\n"
        "Without a thumbnail:\n"
        f"  {album}/2.jpg: Not a JPEG file: starts with 0x74 0x65\n"
        f"  {album}/10.jpg: Empty input file\n"
        "Damaged:\n"
        f"  {album}/cut.jpg: Premature end of JPEG file\n"
        f"  {album}/damaged.jpg: Not a JPEG file: starts with 0x74 0x65"
        " (an older thumbnail stays)\n"
        "Passed over: 2 pictures named *.jpeg; only *.jpg is taken\n"
        f"Not finished:\n  {collection.folder}/blocked: index.html can't be written\n"
    )
    assert outcome.status == 1


def test_what_goes_wrong_twice_is_said_once(collection, work):
    outcome = collection.run(work / "missing", work / "missing")
    assert outcome.output == (
        "0 galleries, 0 pictures, 0 thumbnails made\n"
        f"Not finished:\n  {work}/missing: No such file or directory\n"
    )


def test_a_later_run_still_names_what_has_no_thumbnail(collection):
    collection.add("x.jpg", content=b"text")
    collection.run()
    outcome = collection.run()
    assert outcome.output == (
        "1 gallery, 1 picture, 0 thumbnails made\n"
        f"Without a thumbnail:\n  {collection.folder}/x.jpg\n"
    )
    assert outcome.status == 0


def test_a_terminal_shows_how_far_the_run_is_and_then_the_report(collection):
    collection.add("x.jpg", "album/y.jpg", "album/z.jpg")
    ours, theirs = pty.openpty()
    collection.run(stdout=theirs)
    shown = os.read(ours, 65536).decode()
    os.close(theirs)
    os.close(ours)
    assert re.fullmatch(
        r"(\r\033\[K[0-3] of 3 pictures.*)+\r\033\[K"
        r"2 galleries, 3 pictures, 3 thumbnails made\r\n",
        shown,
    )

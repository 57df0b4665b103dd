"""docs/formats.md: its examples and its table are what the program writes and reads."""

import os
import re

import pytest

from support.gallery import PROJECT
from support.pages import blocks_of

PAGE = "docs/formats.md"


def plain(block):
    """A block without the marks of TABs and line ends."""
    return block.replace("^I", "\t").replace("$\n", "\n")


def test_the_page_is_the_example(reader):
    reader.do("tessel photos")
    assert (reader.photos / "index.html").read_text() == plain(blocks_of(PAGE, "html")[0])


def test_the_database_is_read_and_written_as_in_the_example(reader):
    example = plain(blocks_of(PAGE, "text")[0])
    database = reader.photos / "tessel/tesselbase.txt"
    database.parent.mkdir()
    database.write_text(example)
    os.utime(reader.photos / "beach.jpg", (1700000000, 1700000000))
    assert reader.do("tessel photos") == ""
    assert database.read_text() == example


# What the page says that is read, what is in a file, and what is written then.
READ = {
    "records in any order": ("z\t7\nA\t1\nb\t2\n", "A\t1\nb\t2\nz\t7\n"),
    "two records of one name": ("a\t1\na\t3\n", "a\t1\n"),
    "carriage returns": ("a\t1\r\n\rb\r\t2\n", "a\t1\nb\t2\n"),
    "a second TAB and text after it": ("a\t1\tmore\nb\t2\t\t3\n", "a\t1\nb\t2\n"),
    "white space or a plus sign before the time, other characters after it": (
        "a\t 1\nb\t+2\nc\t3 more\nd\t-4px\n",
        "a\t1\nb\t2\nc\t3\nd\t-4\n",
    ),
    "a time without a number, or with a number of more than 64 bits": (
        "a\tx1\nb\t\nc\t9223372036854775808\n",
        "a\t0\nb\t0\nc\t0\n",
    ),
    "an empty name": ("\t7\n", "\t7\n"),
    "a line without a TAB, an empty line": ("no tab 7\n\na\t1\n\n", "a\t1\n"),
    "a last line without a line feed": ("a\t1\nb\t2", "a\t1\n"),
}


@pytest.mark.parametrize("content, written", READ.values(), ids=READ)
def test_read_is(gallery, content, written):
    gallery.thumbs.mkdir()
    gallery.database.write_text(content)
    gallery.run()
    assert gallery.database.read_text() == written


def test_every_row_of_the_table_is_tested():
    rows = re.findall(r"^\| (.*?) \| ", (PROJECT / PAGE).read_text(), re.M)
    assert rows[0] == "the file contains"
    assert rows[1:] == list(READ)

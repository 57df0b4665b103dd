"""docs/recipes.md: every recipe does what it says."""

import contextlib
import fcntl
import os
import pathlib
import re
import select
import subprocess

import pytest

from support.gallery import PROJECT
from support.pages import blocks_of

PAGE = "docs/recipes.md"
HEADINGS = re.findall("^## (.*)$", (PROJECT / PAGE).read_text(), re.M)


@pytest.mark.parametrize("heading", HEADINGS)
def test_there_is_a_test_of(heading):
    assert f'"{heading}"' in pathlib.Path(__file__).read_text()


def test_never_two_at_once(reader, need):
    need("flock")
    [command] = blocks_of(PAGE, "sh", "Never two at once")
    folder = os.open(reader.photos, os.O_RDONLY)
    fcntl.flock(folder, fcntl.LOCK_EX)
    reader.do(command.replace("flock", "! flock -n"))
    assert not (reader.photos / "index.html").exists()
    os.close(folder)
    reader.do(command)
    assert (reader.photos / "index.html").exists()


def test_every_ten_minutes(reader, need):
    need("systemd-analyze", "parallel")
    reader.replace("systemctl", 'echo "systemctl $*"')
    said = reader.follow(PAGE, "Every ten minutes")
    assert said == "systemctl --user enable --now tessel.timer\n"
    units = reader.folder / ".config/systemd/user"
    reader.do(f"systemd-analyze --user verify {units}/tessel.service {units}/tessel.timer")
    [command] = re.findall("ExecStart=(.*)", (units / "tessel.service").read_text())
    reader.do(command.replace("%h", str(reader.folder)))
    assert (reader.photos / "2023/index.html").exists()


@contextlib.contextmanager
def going_on(reader, commands):
    """Runs commands until the end of a `with` block, for at most a minute; what they print."""
    command = ["timeout", "60", "sh", "-euc", commands]
    options = {"cwd": reader.folder, "env": os.environ | reader.environment, "text": True}
    with subprocess.Popen(command, stdout=subprocess.PIPE, **options) as process:
        try:
            yield process.stdout
        finally:
            process.terminate()


def next_run(lines, printed):
    """The folder of the next run of tessel that ends. Lines that were read are added to others."""
    for line in lines:
        printed.append(line)
        if line.startswith("finished "):
            return line[len("finished ") : -1]
    pytest.fail(f"no run in a minute, only:\n{''.join(printed)}")


def test_as_soon_as_a_picture_comes_or_goes(reader, need, build, picture):
    need("inotifywait")
    photos = reader.photos
    reader.replace("tessel", f'"{build}/tessel" "$@"; echo "finished $1"')
    (reader.folder / "one.jpg").write_bytes(picture)
    [command] = blocks_of(PAGE, "sh", "As soon as a picture comes or goes")
    printed = []
    with going_on(reader, command) as lines:
        # Until it is there. Then what it has in store is behind the first run for another folder.
        while not select.select([lines], [], [], 0.1)[0]:
            (photos / "beach.jpg").write_bytes(picture)
        (reader.folder / "one.jpg").rename(photos / "it's summer/one.jpg")
        while (run := next_run(lines, printed)) == "photos":
            pass
        assert run == "photos/it's summer"

        # From here on, there is one run for each picture, and none for what runs write.
        (photos / "written.jpg").write_bytes(picture)
        assert next_run(lines, printed) == "photos"
        (photos / "written.jpg").unlink()
        assert next_run(lines, printed) == "photos"
        (photos / "2023/harbour.JPG").rename(reader.folder / "harbour.JPG")
        assert next_run(lines, printed) == "photos/2023"
    assert "Writing photos/tessel/written.jpg\n" in printed
    assert "Writing photos/it's summer/tessel/one.jpg\n" in printed
    assert "written.jpg" not in (photos / "index.html").read_text()
    assert "harbour.JPG" not in (photos / "2023/index.html").read_text()
    assert not (photos / "tessel/tessel").exists()


def test_moving_a_gallery(reader, need):
    need("rsync")
    said = reader.follow(PAGE, "Moving a gallery")
    assert re.findall("^Reading .*", said, re.M) == ["Reading photos/beach.jpg"]
    assert (reader.folder / "elsewhere/tessel/beach.jpg").exists()
    assert (reader.folder / "elsewhere/index.html").exists()


def test_publishing_at_web_size(reader, picture):
    exif = b"\xff\xd8\xff\xe1\0\x0cExif\0\0Home"
    (reader.photos / "a  b.JPG").write_bytes(exif + picture[2:])
    said = reader.follow(PAGE, "Publishing at web size")
    assert "Summer/a  b.JPG Width=1600 Height=1066 " in said
    web = reader.folder / "web/tessel"
    assert "<h2>Summer</h2>" in (web / "index.html").read_text()
    published = {str(path.relative_to(web)): path for path in web.rglob("*") if path.is_file()}
    assert sorted(published) == [
        "a  b.JPG",
        "beach.jpg",
        "index.html",
        "tessel/a  b.JPG",
        "tessel/beach.jpg",
        "tessel/tesselbase.txt",
        "tesselbase.txt",
    ]
    assert [name for name, path in published.items() if b"Home" in path.read_bytes()] == []


def test_pictures_named_jpeg(reader, picture):
    for name in "2023/-a  b.JPEG", "new.jpeg", "beach.jpeg":
        (reader.photos / name).write_bytes(picture)
    reader.follow(PAGE, "Pictures named `.jpeg`")
    names = sorted(path.name for path in reader.photos.rglob("*") if path.is_file())
    assert names == [
        "-a  b.jpg",
        "beach.jpeg",
        "beach.jpg",
        "harbour.JPG",
        "late  sun.jpg",
        "new.jpg",
    ]

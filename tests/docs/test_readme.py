"""README.md: its commands build, install and use the programs."""

import re

import pytest

from support.gallery import PROJECT
from support.pages import blocks_of

PAGE = "README.md"


def test_scripts_that_are_named_can_be_run():
    scripts = set(re.findall(r"script/\w+", (PROJECT / PAGE).read_text()))
    assert len(scripts) > 3
    assert [name for name in scripts if not (PROJECT / name).stat().st_mode & 0o111] == []


def test_tessel_writes_what_the_table_says(reader):
    reader.follow(PAGE, "Use it")
    files = re.findall(r"^\| `(photos/.*?)` \|", (PROJECT / PAGE).read_text(), re.M)
    assert files == ["photos/index.html", "photos/tessel/NAME", "photos/tessel/tesselbase.txt"]
    paths = [reader.folder / name.replace("NAME", "beach.jpg") for name in files]
    assert [path for path in paths if not path.exists()] == []
    assert (reader.photos / "galleries.html").exists()


@pytest.mark.slow
def test_what_is_built_and_installed_by_its_commands_runs(reader, need):
    need("apt-get")
    for entry in PROJECT.iterdir():
        if entry.name not in ("build", ".git"):
            (reader.folder / entry.name).symlink_to(entry)
    reader.replace("sudo", 'exec "$@" --simulate')
    [install] = blocks_of(PAGE, "sh", "Install it")
    reader.do(install)
    (reader.folder / "installed").symlink_to(reader.folder / ".local/bin")
    assert "Version" in reader.do("installed/tessel")
    assert reader.do("installed/tessel-tree --version").startswith("tessel-tree ")

"""What comes with the installed programs is found. Their own tests run on them as well."""

import pytest

from support.gallery import do

NAMES = ["tessel", "tessel-tree"]

# As a shell does that meets a command for the first time.
LOAD = """
source /usr/share/bash-completion/bash_completion
_completion_loader "$0"
complete -p "$0"
"""


@pytest.mark.parametrize("name, words", zip(NAMES, ["tesselbase.txt", "galleries.html"]), ids=NAMES)
def test_the_manual_page_is_found(name, words):
    assert words in do("man", name)


@pytest.mark.parametrize("name", NAMES)
def test_the_completion_is_found(name):
    assert do("bash", "-c", LOAD, name).endswith(f" _tessel {name}\n")


def test_the_companion_is_found():
    assert do("tessel-tree", "--version").startswith("tessel-tree ")

"""What comes with the installed programs is found. Their own tests run on them as well."""

import subprocess

import pytest

NAMES = ["tessel", "tessel-tree"]

# As a shell does that meets a command for the first time.
LOAD = """
source /usr/share/bash-completion/bash_completion
_completion_loader "$0"
complete -p "$0"
"""


def output_of(*command):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout


@pytest.mark.parametrize("name, words", zip(NAMES, ["tesselbase.txt", "galleries.html"]), ids=NAMES)
def test_the_manual_page_is_found(name, words):
    assert words in output_of("man", name)


@pytest.mark.parametrize("name", NAMES)
def test_the_completion_is_found(name):
    assert output_of("bash", "-c", LOAD, name).endswith(f" _tessel {name}\n")


def test_the_companion_is_found():
    assert output_of("tessel-tree", "--version").startswith("tessel-tree ")

"""What bash completes for tessel and tessel-tree."""

import pytest

from support.gallery import PROJECT, do

COMPLETION = PROJECT / "app/tessel.bash-completion"

# Prints a line for each completion of the last of the words that follow.
COMPLETE = (
    'source "$0"; COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); '
    '_tessel; printf "%s\\n" "${COMPREPLY[@]}"'
)

SIZES = ["96", "128", "192", "256", "384", "512"]


@pytest.fixture
def folders(work):
    for name in "my photos/sub one", "my photos/sub two", "mine", "it's":
        (work / name).mkdir(parents=True)
    for name in "my.jpg", "my photos/subject.jpg":
        (work / name).touch()
    return work


@pytest.mark.parametrize(
    "words, completions",
    [
        (["tessel", ""], ["my photos", "mine", "it's"]),
        (["tessel", "my"], ["my photos"]),
        (["tessel", "my photos/s"], ["my photos/sub one", "my photos/sub two"]),
        (["tessel", "-"], ["-tsize"]),
        (["tessel", "-tsize", ""], SIZES),
        (["tessel", "-tsize", "1"], ["128", "192"]),
        (["tessel", "-tsize", "192", "m"], ["my photos", "mine"]),
        (["/usr/bin/tessel", "-"], ["-tsize"]),
        (["tessel-tree", "--p"], ["--prune", "--page", "--profile"]),
        (["tessel-tree", "--sort", ""], ["name", "time"]),
        (["tessel-tree", "--sort", "=", "t"], ["time"]),
        (["tessel-tree", "--exclude", "m"], []),
        (["tessel-tree", "-tsize", "1"], ["128", "192"]),
        (["tessel-tree", "--log", "my.j"], ["my.jpg"]),
        (["tessel-tree", "-j", ""], []),
        (["tessel-tree", "m"], ["my photos", "mine"]),
    ],
    ids=lambda value: " ".join(value) or "nothing",
)
def test_the_last_word_becomes(folders, words, completions):
    found = do("bash", "-euc", COMPLETE, COMPLETION, *words, folder=folders).splitlines()
    assert sorted(found) == sorted(completions or [""])


@pytest.mark.parametrize("name", ["tessel", "tessel-tree"])
def test_completions_are_quoted_as_names_of_files(name):
    said = do("bash", "-euc", 'source "$0"; complete -p "$1"', COMPLETION, name)
    assert said == f"complete -o filenames -F _tessel {name}\n"

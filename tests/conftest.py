"""Options, marks and fixtures of the tests of the programs. HACKING.md says how a test is written."""

import contextlib
import itertools
import os
import pathlib
import shlex
import shutil
import subprocess
import tempfile

import pytest

from support.collection import Collection
from support.gallery import NOBODY, PROJECT, Gallery, Program, jpeg
from support.pages import Reader


def pytest_addoption(parser):
    parser.addoption("--build", default="build/release", help="the folder that tessel is built in")
    parser.addoption("--tessel", help="the program, also as 'EMULATOR... PATH'")
    parser.addoption("--tree", help="the same for tessel-tree")
    parser.addoption("--slow", action="store_true", help="run what is slow as well")


def pytest_collection_modifyitems(config, items):
    for item in items:
        if item.get_closest_marker("slow") and not config.getoption("--slow"):
            item.add_marker(pytest.mark.skip("slow: runs with --slow"))
        if item.get_closest_marker("root") and os.geteuid() != 0:
            item.add_marker(pytest.mark.skip("takes the superuser"))


@pytest.fixture(scope="session")
def build(pytestconfig):
    return (PROJECT / pytestconfig.getoption("--build")).resolve()


@contextlib.contextmanager
def open_folder():
    """A new folder that every user may enter. Nobody else may enter pytest's own."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="tessel-"))
    folder.chmod(0o755)
    try:
        yield folder
    finally:
        subprocess.run(["chmod", "-R", "u+rwx", folder], check=True)
        shutil.rmtree(folder)


@pytest.fixture
def work():
    with open_folder() as folder:
        yield folder


@pytest.fixture(scope="session")
def session_work():
    with open_folder() as folder:
        yield folder


def copied(words, path, folder):
    """The program of these words, or else at the path: a copy, as other users may not reach the
    folder of the build."""
    *emulator, path = shlex.split(words) if words else [path]
    return Program([*emulator, shutil.copy(path, folder)])


@pytest.fixture(scope="session")
def tessel(pytestconfig, build, session_work):
    return copied(pytestconfig.getoption("--tessel"), build / "tessel", session_work)


@pytest.fixture(scope="session")
def tree(pytestconfig, build, session_work):
    if not (pytestconfig.getoption("--tree") or (build / "tessel-tree").exists()):
        pytest.skip("tessel-tree isn't built")
    return copied(pytestconfig.getoption("--tree"), build / "tessel-tree", session_work)


@pytest.fixture(autouse=True)
def native(request):
    """Skips what is marked native where the program takes more to start than what is left to it."""
    if request.node.get_closest_marker("native"):
        *emulator, path = request.getfixturevalue("tessel").words
        if emulator:
            pytest.skip(f"an emulator takes more: {emulator[0]}")
        if b"__asan_init" in pathlib.Path(path).read_bytes():
            pytest.skip("sanitizers take more")


@pytest.fixture(scope="session")
def picture():
    """A picture that a default thumbnail is smaller than, in grey."""
    return jpeg(300, 200)


@pytest.fixture(scope="session")
def thumbnail(tessel, picture, session_work):
    """What the program makes of the picture, in a folder where all is well."""
    folder = session_work / "gallery"
    folder.mkdir()
    (folder / "x.jpg").write_bytes(picture)
    tessel.run(folder)
    return (folder / "tessel/x.jpg").read_bytes()


@pytest.fixture
def gallery(tessel, picture, thumbnail, work):
    """An empty folder to be made a gallery of."""
    folder = work / "gallery"
    folder.mkdir()
    return Gallery(tessel, folder, picture, thumbnail)


@pytest.fixture
def collection(tree, tessel, picture, work):
    """An empty folder to be filled with folders of pictures."""
    return Collection(tree, tessel, work / "photos", work / "twin/photos", picture)


@pytest.fixture
def elsewhere(work):
    """A folder beside the gallery or the collection, which no run may change but as a link allows."""
    folder = work / "elsewhere"
    folder.mkdir()
    return folder


@pytest.fixture(scope="session")
def stranger(tessel):
    """The circumstances of a run by a user who may not change everything: for the superuser, that
    is somebody else."""
    somebody = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
    circumstances = somebody if os.geteuid() == 0 else {}
    with contextlib.suppress(PermissionError):
        if tessel.run(**circumstances).status == 0:
            return circumstances
    pytest.skip("another user can't run the program")


@pytest.fixture
def reader(build, work, picture):
    return Reader(work, build, picture)


@pytest.fixture
def need():
    """Skips a test where a program that it takes isn't installed."""

    def need(*programs):
        for program in programs:
            if not shutil.which(program):
                pytest.skip(f"{program} isn't installed")

    return need


@pytest.fixture
def trace(need, tessel):
    """The words before a run whose calls of the system are watched."""
    need("strace")
    words = ["strace", "-o", "/dev/null"]
    if tessel.run(prefix=words).status != 0:
        pytest.skip("nothing can be traced here")
    return words


@pytest.fixture
def failing(trace):
    """A function that gives the words before a run in which calls of the system fail: those whose
    name begins so, the first, the second or whichever is named, and of one path if one is."""

    def failing(call, error, when="1+", path=None):
        which = [] if path is None else ["-P", path]
        return [*trace, "-f", *which, "-e", f"inject=/^{call}:error={error}:when={when}"]

    return failing


@pytest.fixture
def killed(trace):
    """A function that runs a program again and again, killed at the first, the second and at last at
    each call of the system whose name begins so. It tells where when the run has ended."""

    def killed(call, run, unmake):
        for number in itertools.count(1):
            unmake()
            kill = f"inject=/^{call}:signal=KILL:when={number}"
            outcome = run(prefix=[*trace, "-e", kill])
            if outcome.status == 0:
                break
            assert outcome.status == "SIGKILL", outcome.output
            yield f"killed at {call} {number}"
        assert number > 1, f"nothing was killed: {outcome.output}"

    return killed

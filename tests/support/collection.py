"""Collections: folders of pictures, what tessel-tree makes of them, and what plain runs make."""

import contextlib
import os
import pathlib
import signal
import time

from support.gallery import SECONDS, state_of


class Collection:
    """A folder of folders with pictures for tessel-tree, and its twin for plain runs of tessel. The
    names of the pictures are paths below the folder."""

    def __init__(self, tree, tessel, folder, twin, picture):
        self.tree = tree
        self.tessel = tessel
        self.folder = folder
        self.twin = twin
        self.picture = picture
        folder.mkdir(parents=True)
        twin.mkdir(parents=True)

    def add(self, *names, content=None, time=1_000_000_000):
        """Puts pictures, or files of another content, into the folder and into its twin."""
        for name in names:
            assert not os.path.isabs(name), f"this lies outside: {name}"
            for path in self.folder / name, self.twin / name:
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(self.picture if content is None else content)
                os.utime(path, (time, time))

    def remove(self, name):
        for folder in self.folder, self.twin:
            (folder / name).unlink()

    def link(self, name, leads_to):
        for folder in self.folder, self.twin:
            (folder / name).symlink_to(leads_to)

    @contextlib.contextmanager
    def started(self, *options):
        """A run that goes on, in which no signal is ignored. Nothing of it is left behind."""
        signals = ["env", "--default-signal"]
        with self.tree.start(*options, self.folder, prefix=signals) as process:
            try:
                yield process
            finally:
                for pid in [*workers_of(process), process.pid]:
                    with contextlib.suppress(ProcessLookupError):
                        os.kill(pid, signal.SIGKILL)

    def run(self, *options, **circumstances):
        return self.tree.run(*options, self.folder, **circumstances)

    def state(self):
        return state_of(self.folder)

    def plain(self, *galleries):
        """The state that plain runs in these folders leave; without folders, in all that hold or
        held a picture."""
        pictures = {path.parent for path in self.twin.rglob("*.[jJ][pP][gG]")}
        held = {path.parent.parent for path in self.twin.rglob("tessel/tesselbase.txt")}
        all_folders = {path for path in pictures | held if path.name != "tessel"}
        for gallery in [self.twin / name for name in galleries] or sorted(all_folders):
            self.tessel.run(gallery)
        return state_of(self.twin)

    def thumbs(self):
        """The paths of all thumbnails."""
        return sorted(
            str(path.relative_to(self.folder)) for path in self.folder.rglob("tessel/*.jpg")
        )

    def records(self, gallery="."):
        """The pictures that a gallery's database records."""
        text = os.fsdecode((self.folder / gallery / "tessel/tesselbase.txt").read_bytes())
        return [line.partition("\t")[0] for line in text.split("\n")[:-1]]


def wait_for(happened, what):
    """Waits until something has happened, and returns what `happened` then gives."""
    end = time.monotonic() + SECONDS
    while not (found := happened()):
        assert time.monotonic() < end, f"this doesn't happen: {what}"
        time.sleep(0.001)
    return found


def workers_of(process):
    """The processes that a process has started, until it has ended."""
    try:
        children = pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text()
    except OSError:
        return []
    return [int(pid) for pid in children.split()]


def is_running(pid):
    """False for a process that has ended, though its parent may not know yet."""
    try:
        status = pathlib.Path(f"/proc/{pid}/stat").read_text()
    except OSError:
        return False
    return status.rpartition(") ")[2][0] not in "ZX"


def has_open(pid, name):
    """True where a process has a file of this name open."""
    try:
        links = [os.readlink(link) for link in pathlib.Path(f"/proc/{pid}/fd").iterdir()]
    except OSError:
        return False
    return any(link.endswith(f"/{name}") for link in links)


def stop_worker(process, name):
    """Stops the worker of a process that reads the picture of this name, and returns its number."""

    def stop():
        for pid in workers_of(process):
            if has_open(pid, name):
                os.kill(pid, signal.SIGSTOP)
                return pid

    pid = wait_for(stop, f"a worker reads {name}")
    assert has_open(pid, name), f"{name} is too small: the worker was done with it"
    return pid

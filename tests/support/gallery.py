"""What the tests of the programs share: runs of a program, galleries, and what is in folders."""

import dataclasses
import hashlib
import os
import pathlib
import signal
import socket
import stat
import subprocess

PROJECT = pathlib.Path(__file__).resolve().parents[2]
SECONDS = 120  # for one run, also on an emulator
NOBODY = 65534

AWKWARD_NAMES = {
    "two words": b"a b",
    "quotes": b"\"'",
    "TAB": b"\t",
    "line feed": b"\n",
    "carriage return": b"\r",
    "marks of pages and addresses": b"<b>&amp#?%41",
    "option": b"-tsize",
    "nothing before the dot": b"",
    "invalid UTF-8": b"\xff\xfe",
    "backslash and dollar": b"\\n$x",
    "255 bytes": b"n" * 251,
}


@dataclasses.dataclass
class Outcome:
    """How a run ended, and what it printed: standard output and standard error, as they came. The
    status of a run that was ended by a signal is the signal's name."""

    status: int | str
    output: str

    @property
    def tried(self):
        """The pictures that the run made or tried, in alphabetical order."""
        lines = self.output.splitlines()
        return sorted(line.rpartition("/")[2] for line in lines if line.startswith("Reading "))


def do(*command, folder=None, **environment):
    """Runs a command that may not fail, and returns what it prints."""
    done = subprocess.run(
        command,
        cwd=folder,
        env=os.environ | environment,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
    )
    output = os.fsdecode(done.stdout)
    assert done.returncode == 0, f"{command}\nprints:\n{output}"
    return output


def end_of(process):
    """Waits for the end of a run."""
    try:
        output = process.communicate(timeout=SECONDS)[0]
    except subprocess.TimeoutExpired:
        process.kill()
        raise
    code = process.returncode
    status = code if code >= 0 else signal.Signals(-code).name
    return Outcome(status, os.fsdecode(output or b""))


class Program:
    """A program, by the words that call it: an emulator may stand before its path."""

    def __init__(self, words):
        self.words = words

    def start(self, *arguments, folder=None, prefix=(), limits={}, closed=(), **circumstances):
        """Starts a run in a folder, behind the words of `prefix`, under `limits` by the names that
        prlimit has for them, with `closed` descriptors. Other circumstances are those of
        subprocess.Popen, such as a `user`, a `umask` and `stdout`."""

        def close():
            for descriptor in closed:
                os.close(descriptor)

        limited = [f"--{what}={limit}" for what, limit in limits.items()]
        command = [*prefix, *(["prlimit", *limited] if limits else []), *self.words, *arguments]
        every = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "preexec_fn": close}
        every |= circumstances
        return subprocess.Popen(command, cwd=folder, stderr=subprocess.STDOUT, **every)

    def run(self, *arguments, **circumstances):
        with self.start(*arguments, **circumstances) as process:
            return end_of(process)


class Gallery:
    """A folder of pictures, all of them the same one, and what the program makes of it."""

    def __init__(self, program, folder, picture, thumbnail):
        self.program = program
        self.folder = folder
        self.picture = picture
        self.thumbnail = thumbnail
        self.thumbs = folder / "tessel"
        self.page = folder / "index.html"
        self.database = self.thumbs / "tesselbase.txt"

    def add(self, *names, content=None, time=None):
        """Puts pictures into the folder, or files of another content."""
        for name in names:
            path = self.folder / name
            path.write_bytes(self.picture if content is None else content)
            if time is not None:
                os.utime(path, (time, time))

    def run(self, *arguments, **circumstances):
        """Runs the program in the folder; without arguments, for the folder."""
        return self.program.run(*arguments or ["."], folder=self.folder, **circumstances)

    def good_thumbs(self):
        """The names of the thumbnails that are those of the picture, to the byte."""
        files = (path for path in self.thumbs.glob("*.[jJ][pP][gG]") if path.is_file())
        return sorted(path.name for path in files if path.read_bytes() == self.thumbnail)

    def records(self):
        """What the database holds: {name: time}."""
        lines = os.fsdecode(self.database.read_bytes()).split("\n")
        return {name: int(time) for name, _, time in (line.partition("\t") for line in lines[:-1])}

    def has_whole_page(self):
        """True where the page is there to its end."""
        return self.page.is_file() and self.page.read_bytes().endswith(b"</body></html>\n\n")

    def state(self):
        return state_of(self.folder)


def describe(path):
    """What lies there, in a line: kind, mode, owner, and what it holds or leads to."""
    status = path.lstat()
    if stat.S_ISLNK(status.st_mode):
        return f"link to {os.readlink(path)}"
    words = f"{stat.filemode(status.st_mode)} {status.st_uid}:{status.st_gid}"
    if not stat.S_ISREG(status.st_mode):
        return words
    content = path.read_bytes()
    if len(content) > 1000 or not content.isascii():
        content = f"{len(content)} bytes, {hashlib.sha256(content).hexdigest()[:16]}"
    return f"{words} {content}"


def state_of(folder):
    """All that lies in and below a folder, itself included, as a dictionary to compare."""
    return {
        str(path.relative_to(folder)): describe(path)
        for path in [folder, *sorted(pathlib.Path(folder).rglob("*"))]
    }


def make_socket(path):
    socket.socket(socket.AF_UNIX).bind(os.fspath(path))


def jpeg(width, height, *options, depth=1, samples=None):
    """A picture as cjpeg makes it with options, in grey or three samples deep: of these samples, or
    of two greys by turns."""
    if samples is None:
        samples = (b"y\n" * (width * height * depth // 2 + 1))[: width * height * depth]
    head = b"P%d %d %d 255\n" % (5 if depth == 1 else 6, width, height)
    return subprocess.run(
        ["cjpeg", *options], input=head + samples, stdout=subprocess.PIPE, check=True
    ).stdout


def pixels_of(path):
    """Width, height and samples of a picture, as djpeg reads it."""
    assert path.is_file(), f"there is no {path}"
    picture = subprocess.run(["djpeg", path], stdout=subprocess.PIPE, check=True).stdout
    _, width, height, rest = picture.split(maxsplit=3)
    return int(width), int(height), rest.partition(b"\n")[2]


def size_of(path):
    """Width and height of a picture, as djpeg reads it."""
    return pixels_of(path)[:2]

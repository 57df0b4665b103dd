#!/usr/bin/env python3
"""Runs the commands of a Markdown page, or of one of its sections, as they stand there.

Usage: run_commands.py PAGE TESSEL PICTURE [SECTION]

Commands are the fenced blocks marked sh or bash, indented blocks that aren't C++ and, for what
readers needn't see, comments that begin with "<!-- sh". One shell runs them in their order, in a new
folder with links to the project's files and with copies of PICTURE in photos/ and below it. It is
bash, but for fenced blocks marked sh, each of which has the system's sh.
"<!-- needs PROGRAM... -->" skips everything where one of the programs isn't installed.
"""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
PICTURES = ["photos/beach.jpg", "photos/2023/harbour.JPG", "photos/it's summer/late  sun.jpg"]

# What runs in the place of lines that can't.
SUBSTITUTES = [
    # They install packages, and script/test would run this again.
    (r"script/(\w+).*", r"bash -n script/\1"),
    (r"sudo (apt-get install .*)", r"! command -v apt-get || \1 --simulate"),
    # There may be no service manager.
    (r"systemctl --user .*", "systemd-analyze --user verify ~/.config/systemd/user/tessel.*"),
]

BLOCK = re.compile(
    r"^```(?P<language>\w*)\n(?P<fenced>.*?)^```$|^<!-- sh\n(?P<hidden>.*?)^-->$"
    r"|(?<=\n\n)(?P<indented>(?:    [^\n]*\n|\n(?=    ))+)",
    re.M | re.S,
)

# On one line, as the script's lines are the page's. Besides the shell's own means, which overlook
# the head of "this && that", every command's status is checked before the next.
PRELUDE = (
    "set -Eeuo pipefail; "
    'failed() { echo "$PAGE:$1: exit status $2" >&2; exit 1; }; '
    'checked() { (($2 == 0)) || failed "$1" "$2"; }; '
    'trap \'failed "$LINENO" "$?"\' ERR; '
)


def command_lines(text, page):
    """Pairs of a line's number, from 1, and a line of commands for bash."""
    for block in BLOCK.finditer(text):
        kind = block.lastgroup
        lines = block[kind].splitlines()
        if kind == "indented" and lines[0].endswith(";"):
            continue
        if kind == "fenced" and block["language"] not in ("sh", "bash"):
            continue
        if kind == "indented":
            lines = [line[4:] for line in lines]
        first = text.count("\n", 0, block.start(kind)) + 1
        lines = [substitute(line, f"{page}:{first + i}") for i, line in enumerate(lines)]
        if block["language"] == "sh":
            lines = f"sh -euc {shlex.quote(chr(10).join(lines))}".split("\n")
        yield from enumerate(lines, first)


def substitute(line, place):
    for pattern, other in SUBSTITUTES:
        changed = re.sub("^" + pattern, other, line)
        if changed != line:
            print(f"{place}: instead of {line.strip()}: {changed}", flush=True)
            return changed
    return line


def is_complete(command):
    check = subprocess.run(["bash", "-n"], input=command, capture_output=True, text=True)
    return not (check.returncode or check.stderr or command.endswith("\\\n"))


def make_script(text, page):
    """A shell script whose commands stand on the same lines as in the page."""
    script = [PRELUDE] + [""] * text.count("\n")
    command = ""
    begin = 0
    for number, line in command_lines(text, page):
        if not command:
            script[number - 1] += f"checked {begin} $?; "
            begin = number
        command += line + "\n"
        script[number - 1] += line
        if is_complete(command):
            command = ""
    if not begin:
        sys.exit(f"{page}: there are no commands")
    return "\n".join(script) + f"\nchecked {begin} $?\n"


def only_section(text, heading):
    """The text with all other sections blanked."""
    begin = text.index(f"\n## {heading}\n")
    end = text.find("\n## ", begin + 1)
    return "\n" * text.count("\n", 0, begin) + text[begin : end if end > 0 else None]


def make_tree(root, project, picture):
    for entry in project.iterdir():
        if entry.name not in ("build", ".git"):
            (root / entry.name).symlink_to(entry)
    for name in PICTURES:
        (root / name).parent.mkdir(exist_ok=True)
        shutil.copy(picture, root / name)


def main(page, tessel, picture, heading=None):
    text = pathlib.Path(page).read_text()
    if heading:
        text = only_section(text, heading)
    for programs in re.findall(r"^<!-- needs (.*) -->$", text, re.M):
        for program in programs.split():
            if not shutil.which(program):
                print(f"{page}: skipped: {heading or 'all'}: {program} isn't installed")
                return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        make_tree(pathlib.Path(folder), pathlib.Path(__file__).parents[2], picture)
        path = f"{pathlib.Path(tessel).parent}:{os.environ['PATH']}"
        script = pathlib.Path(folder) / "commands"
        script.write_text(make_script(text, page))
        return subprocess.run(
            ["bash", script],
            cwd=folder,
            stdin=subprocess.DEVNULL,
            env={"PATH": path, "PAGE": page, "HOME": folder, "XDG_RUNTIME_DIR": folder},
        ).returncode


sys.exit(main(*sys.argv[1:]))

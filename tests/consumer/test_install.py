"""A program of somebody else's is built with an installed copy in a folder that it was moved to, by
CMake and by pkg-config, with static and with shared libraries; and with the sources as a part of it."""

import os

import pytest

from support.gallery import PROJECT, do

CONSUMER = PROJECT / "tests/consumer"


def install(build, prefix):
    """Installs what is built, and moves it."""
    do("cmake", "--install", build, "--prefix", f"{prefix}-first")
    os.rename(f"{prefix}-first", prefix)
    return prefix


@pytest.fixture(scope="module")
def installed(build, session_work):
    return install(build, session_work / "installed")


@pytest.fixture(scope="module")
def shared(session_work):
    """An installed copy with shared libraries, whose build is gone."""
    build = session_work / "shared-build"
    options = ["-DBUILD_SHARED_LIBS=ON", "-DTESSEL_TESTS=OFF", "-DTESSEL_EXAMPLES=OFF"]
    do("cmake", "-G", "Ninja", "-S", PROJECT, "-B", build, "-DCMAKE_BUILD_TYPE=Debug", *options)
    do("cmake", "--build", build)
    prefix = install(build, session_work / "shared")
    build.rename(session_work / "gone")
    return prefix


@pytest.fixture(scope="module")
def source(build):
    """The program: the tour of the library."""
    return build / "tests/docs/library_tour.cpp"


def build_consumer(folder, source, *options):
    """Builds the program as a CMake project, and returns its path."""
    command = ["cmake", "-G", "Ninja", "-S", CONSUMER, "-B", folder, "-DCMAKE_BUILD_TYPE=Debug"]
    do(*command, f"-DCONSUMER_SOURCE={source}", *options)
    do("cmake", "--build", folder)
    return folder / "consumer"


@pytest.fixture
def pictures_of(work, picture):
    """Runs the program, and returns the names of the pictures that it writes."""

    def pictures_of(program):
        (work / "photo").write_bytes(picture)
        (work / "pictures").mkdir()
        do(program, work / "photo", work / "pictures")
        written = (path for path in (work / "pictures").iterdir() if path.stat().st_size > 0)
        return sorted(path.name for path in written)

    return pictures_of


PICTURES = ["blended.jpg", "card.jpg", "mirrored.jpg", "thumbnail.jpg"]


def test_each_header_says_all_that_it_needs(installed):
    folder = installed / "include/tessel"
    headers = sorted(folder.rglob("*.h"))
    assert "CGraflibJpeg.h" in [header.name for header in headers]
    for header in headers:
        do(
            "c++",
            "-std=c++20",
            "-fsyntax-only",
            "-I",
            folder,
            "-include",
            header,
            "-xc++",
            os.devnull,
        )


@pytest.mark.parametrize("name", ["tessel", "tessel-tree"])
def test_programs_come_with_manual_page_and_completion(installed, name):
    assert (installed / "bin" / name).exists()
    assert (installed / f"share/man/man1/{name}.1").exists()
    assert (installed / "share/bash-completion/completions" / name).exists()


@pytest.mark.parametrize("copy", ["installed", "shared"])
def test_programs_run_where_they_were_moved_to(request, copy):
    folder = request.getfixturevalue(copy)
    assert "Version" in do(folder / "bin/tessel")
    assert do(folder / "bin/tessel-tree", "--version").startswith("tessel-tree ")


@pytest.mark.parametrize("copy", ["installed", "shared"])
def test_cmake_finds_the_library(request, copy, source, work, pictures_of):
    prefix = request.getfixturevalue(copy)
    program = build_consumer(work / "consumer", source, f"-DCMAKE_PREFIX_PATH={prefix}")
    assert pictures_of(program) == PICTURES


def test_pkg_config_finds_the_library(installed, source, work, pictures_of):
    [path] = installed.rglob("tessel.pc")
    flags = do("pkg-config", "--cflags", "--libs", "tessel", PKG_CONFIG_PATH=str(path.parent))
    do("c++", "-std=c++20", source, "-o", work / "consumer", *flags.split())
    assert pictures_of(work / "consumer") == PICTURES


@pytest.mark.parametrize("tool", ["ON", "OFF"])
def test_sources_are_a_part_of_a_project_with_the_tool_or_without(
    tool, source, session_work, pictures_of
):
    folder = session_work / "project"  # the libraries are built once
    path = folder / "_deps/tessel-build/tessel"
    path.unlink(missing_ok=True)
    options = [f"-DTESSEL_SOURCE={PROJECT}", f"-DTESSEL_TOOL={tool}"]
    program = build_consumer(folder, source, *options)
    assert path.exists() == (tool == "ON")
    assert pictures_of(program) == PICTURES

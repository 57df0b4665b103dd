"""A program of somebody else's is built with an installed copy in a folder that it was moved to, by
CMake and by pkg-config, with static and with shared libraries; and with the sources as a part of it."""

import os

import pytest

from support.gallery import PROJECT, do

SHARED = ["-DBUILD_SHARED_LIBS=ON", "-DTESSEL_TESTS=OFF", "-DTESSEL_EXAMPLES=OFF"]
PICTURES = ["blended.jpg", "card.jpg", "mirrored.jpg", "thumbnail.jpg"]


def configure(source, folder, *options):
    """Prepares a build that takes as little time as can be."""
    quick = ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DCMAKE_UNITY_BUILD=ON"]
    do("cmake", "-G", "Ninja", "-S", source, "-B", folder, *quick, *options)


def install(build, prefix):
    """Installs what is built, and moves it."""
    do("cmake", "--install", build, "--prefix", f"{prefix}-first")
    os.rename(f"{prefix}-first", prefix)
    return prefix


@pytest.fixture(scope="module")
def installed(build, session_work):
    """What the build that is tested installs."""
    return install(build, session_work / "installed")


@pytest.fixture(scope="module")
def shared(session_work):
    """An installed copy with shared libraries, whose build is gone."""
    build = session_work / "shared-build"
    configure(PROJECT, build, *SHARED)
    do("cmake", "--build", build)
    prefix = install(build, session_work / "shared")
    build.rename(session_work / "gone")
    return prefix


@pytest.fixture
def tour(build):
    """The source of the program: the tour of the library."""
    return build / "tests/docs/library_tour.cpp"


@pytest.fixture
def check(work, picture):
    """Runs the program, which writes some pictures."""

    def check(program):
        (work / "photo").write_bytes(picture)
        (work / "pictures").mkdir()
        do(program, work / "photo", work / "pictures")
        written = (path for path in (work / "pictures").iterdir() if path.stat().st_size > 0)
        assert sorted(path.name for path in written) == PICTURES

    return check


@pytest.fixture
def check_project(work, tour, check):
    """Builds the program as a CMake project with options, runs it, and returns the build."""

    def check_project(*options):
        build = work / "consumer"
        configure(PROJECT / "tests/consumer", build, f"-DCONSUMER_SOURCE={tour}", *options)
        do("cmake", "--build", build)
        check(build / "consumer")
        return build

    return check_project


def test_each_header_says_all_that_it_needs(installed):
    include = installed / "include/tessel"
    headers = sorted(include.rglob("*.h"))
    assert include / "jpeg/CGraflibJpeg.h" in headers
    do("c++", "-std=c++20", "-fsyntax-only", "-I", include, "-x", "c++", *headers)


@pytest.mark.parametrize("name", ["tessel", "tessel-tree"])
def test_programs_come_with_manual_page_and_completion(installed, name):
    assert (installed / "bin" / name).exists()
    assert (installed / f"share/man/man1/{name}.1").exists()
    assert (installed / "share/bash-completion/completions" / name).exists()


COPIES = ["installed", pytest.param("shared", marks=pytest.mark.slow)]


@pytest.mark.parametrize("copy", COPIES)
def test_programs_run_where_they_were_moved_to(request, copy):
    folder = request.getfixturevalue(copy)
    assert "Version" in do(folder / "bin/tessel")
    assert do(folder / "bin/tessel-tree", "--version").startswith("tessel-tree ")


@pytest.mark.parametrize("copy", COPIES)
def test_cmake_finds_the_library(request, copy, check_project):
    check_project(f"-DCMAKE_PREFIX_PATH={request.getfixturevalue(copy)}")


def test_pkg_config_finds_the_library(installed, tour, work, check):
    [path] = installed.rglob("tessel.pc")
    flags = do("pkg-config", "--cflags", "--libs", "tessel", PKG_CONFIG_PATH=str(path.parent))
    do("c++", "-std=c++20", tour, "-o", work / "consumer", *flags.split())
    check(work / "consumer")


def test_sources_are_a_part_of_a_project_as_shared_libraries(check_project):
    build = check_project(f"-DTESSEL_SOURCE={PROJECT}", "-DTESSEL_TOOL=OFF", *SHARED)
    assert not (build / "_deps/tessel-build/tessel").exists()


@pytest.mark.slow
def test_sources_are_a_part_of_a_project_with_the_programs(check_project):
    build = check_project(f"-DTESSEL_SOURCE={PROJECT}")
    assert "Version" in do(build / "_deps/tessel-build/tessel")

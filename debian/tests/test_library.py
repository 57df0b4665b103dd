"""A program is built with the installed library, by CMake and by pkg-config, and halves a picture."""

import pytest

from support.gallery import PROJECT, do, jpeg, size_of

SOURCE = PROJECT / "examples/halve_lines.cpp"


def by_cmake(folder):
    command = ["cmake", "-S", PROJECT / "tests/consumer", "-B", folder]
    do(*command, f"-DCONSUMER_SOURCE={SOURCE}")
    do("cmake", "--build", folder)
    return folder / "consumer"


def by_pkg_config(folder):
    flags = do("pkg-config", "--static", "--cflags", "--libs", "tessel").split()
    do("c++", "-std=c++20", SOURCE, "-o", folder / "consumer", *flags)
    return folder / "consumer"


@pytest.mark.parametrize("build_program", [by_cmake, by_pkg_config])
def test_a_program_halves_a_picture(tmp_path, build_program):
    program = build_program(tmp_path)
    (tmp_path / "picture.jpg").write_bytes(jpeg(300, 200))
    do(program, tmp_path / "picture.jpg", tmp_path / "half.jpg")
    assert size_of(tmp_path / "half.jpg") == (150, 100)

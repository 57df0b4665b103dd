"""A program is built with the installed library, by CMake and by pkg-config, and makes a thumbnail."""

import subprocess

import pytest

from support.gallery import PROJECT, jpeg, size_of

SOURCE = PROJECT / "examples/make_thumbnail.cpp"


def by_cmake(folder):
    command = ["cmake", "-S", PROJECT / "tests/consumer", "-B", folder]
    subprocess.run([*command, f"-DCONSUMER_SOURCE={SOURCE}"], check=True)
    subprocess.run(["cmake", "--build", folder], check=True)
    return folder / "consumer"


def by_pkg_config(folder):
    command = ["pkg-config", "--static", "--cflags", "--libs", "tessel"]
    flags = subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout.split()
    subprocess.run(["c++", "-std=c++20", SOURCE, "-o", folder / "consumer", *flags], check=True)
    return folder / "consumer"


@pytest.mark.parametrize("build_program", [by_cmake, by_pkg_config])
def test_a_program_makes_a_thumbnail(tmp_path, build_program):
    program = build_program(tmp_path)
    (tmp_path / "picture.jpg").write_bytes(jpeg(300, 200))
    subprocess.run([program, tmp_path / "picture.jpg", tmp_path / "thumb.jpg", "96"], check=True)
    assert size_of(tmp_path / "thumb.jpg") == (96, 64)

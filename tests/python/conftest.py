"""Shared fixtures of the Python package's tests: the build tree (ZET_BUILD_DIR, default
build/release), its zet and polar_frame, a Library, and polarization frames with their
rim points made by polar_frame."""
import os
import pathlib
import subprocess
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("ZET_BUILD_DIR", ROOT / "build" / "release"))
# The package as the build tree holds it, unless PYTHONPATH already names one.
if not os.environ.get("PYTHONPATH"):
    sys.path.insert(0, str(BUILD / "python"))


def run_checked(args, **kw):
    """Runs a program and fails the test on a non-zero exit status."""
    p = subprocess.run([str(a) for a in args], capture_output=True, text=True, **kw)
    assert p.returncode == 0, f"{args[0]} exited with {p.returncode}: {p.stderr}"
    return p


@pytest.fixture(scope="session")
def build_dir():
    return BUILD


@pytest.fixture(scope="session")
def zet():
    return BUILD / "bin" / "zet"


@pytest.fixture(scope="session")
def lib():
    import zetformula
    return zetformula.Library()


def make_frames(folder, count, width=320, height=240):
    folder.mkdir(parents=True, exist_ok=True)
    for seed in range(1, count + 1):
        run_checked([BUILD / "bin" / "polar_frame", folder / f"part_{seed:02d}.pgm", width, height, seed])
    return folder


@pytest.fixture(scope="session")
def frames(tmp_path_factory):
    """Four frames of parts with their rim points."""
    return make_frames(tmp_path_factory.mktemp("frames"), 4)

"""The wheel: built offline by scripts/wheel.sh from the build tree, installed with pip
into a fresh virtual environment of the system's Python (NumPy from the system), and
used from there with nothing of the build tree in sight."""
import os
import subprocess
import sys

from conftest import BUILD, ROOT, run_checked

CHECK = r"""
import os, sys, numpy, zetformula
from zetformula import instructions as zi
here = os.path.dirname(zetformula.__file__)
assert here.startswith(sys.prefix), here
assert zetformula.Library().plugin == os.path.join(here, "zet", "ZetFormulaLib.so")
assert zi.numeric_add_numbers(1, 2, 3).value == 6.0
r = zetformula.Library().call("PtsToBestCircle", 0, numpy.array([[0, 1], [1, 0], [0, -1], [-1, 0.]]))
assert r.status == 0, r
run = zetformula.run_program(sys.argv[1], [sys.argv[2]])
assert run.status == 0 and len(run.results) == 1, run.log
print("ok", sorted(os.listdir(here)))
"""


def test_wheel_installs_into_a_fresh_venv(tmp_path, frames):
    dist = tmp_path / "dist"
    wheel = run_checked(["bash", ROOT / "scripts" / "wheel.sh", dist, BUILD]).stdout.strip().splitlines()[-1]
    venv = tmp_path / "venv"
    run_checked(["/usr/bin/python3", "-m", "venv", "--system-site-packages", venv])
    run_checked([venv / "bin" / "pip", "install", "--no-index", "--no-deps", "-q", wheel])
    env = {k: v for k, v in os.environ.items() if k not in ("PYTHONPATH", "ZET_PLUGIN", "ZET_BUILD_DIR")}
    frame = sorted(frames.glob("*.pgm"))[0]
    p = run_checked([venv / "bin" / "python", "-c", CHECK, ROOT / "examples" / "rim_check.json", frame],
                    env=env, cwd=tmp_path)
    assert p.stdout.startswith("ok")
    for lib in ("libzethost.so.1", "libzetplatform.so.1", "instructions.pyi", "zet"):
        assert lib in p.stdout

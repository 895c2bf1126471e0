"""run_program against `zet run`: the same program over the same images gives the same
results lines in the same order, with any number of jobs, from a file or a dict, over
files or arrays; overlays come back as the arrays of the files zet writes."""
import json
import re
import pathlib

import numpy as np
import pytest

import zetformula
from conftest import ROOT, run_checked

PROGRAM = ROOT / "examples" / "rim_check.json"


def zet_run(zet, tmp_path, images, *extra):
    out = tmp_path / "zet.out"
    run_checked([zet, "run", PROGRAM, *images, "--out", out, "--quiet", *extra])
    return [json.loads(l) for l in (out / "results.jsonl").read_text().splitlines()], out


@pytest.mark.parametrize("jobs", [1, 3])
def test_results_equal_zet_run(zet, frames, tmp_path, jobs):
    expected, zet_out = zet_run(zet, tmp_path, [frames])
    run = zetformula.run_program(str(PROGRAM), [str(frames)], jobs=jobs, out=tmp_path / "py",
                                 overlay_arrays=True)
    assert run.status == 0 and run.results == expected
    for r, overlay in zip(run.results, run.overlays):
        assert np.array_equal(overlay, zetformula.load_image(str(zet_out / r["overlay"])))


def test_dict_program_and_array_images(zet, frames, tmp_path):
    expected, _ = zet_run(zet, tmp_path, [frames], "--no-overlays")
    program = json.loads(re.sub(r"(?m)^\s*//.*$", "", PROGRAM.read_text()))
    files = sorted(frames.glob("*.pgm"))
    # Arrays have no folder for their rim files: give the rim as a literal instead.
    program["variables"]["rim"] = {"type": "point array",
                                   "value": json.loads(files[0].with_suffix(".rim.json").read_text())}
    run = zetformula.run_program(program, [zetformula.load_image(str(files[0]))])
    assert run.results[0]["image"] == 0
    assert run.results[0]["results"] == expected[0]["results"]
    assert run.results[0]["overlay"] is None  # no out and no arrays asked: none written


def test_a_program_that_cannot_run_raises(tmp_path, frames):
    with pytest.raises(ValueError, match="unknown instruction"):
        zetformula.run_program({"steps": [{"instr": "NoSuch"}]}, [str(frames)])


def test_settings_are_put_back(frames):
    before = zetformula.get_settings()
    zetformula.run_program(str(PROGRAM), [str(frames)], settings={"angle_unit": "degrees"})
    assert zetformula.get_settings() == before

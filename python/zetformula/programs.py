"""run_program: the `zet run` runner from Python (docs/programs.md describes programs).

The run is the host's own (zethost's RunProgram, as `zet run` calls it): each result is
the line `zet run` writes to results.jsonl for that image, parsed, in image order,
whatever the number of jobs. NumPy images are written to PNG files in a temporary
folder first (the runner reads files), and their results name them by position.
"""
import json
import os
import shutil
import tempfile

import numpy

from . import _zetformula
from ._library import get_settings, plugin_path, set_settings


class ProgramRun:
    """The outcome of run_program: ``results`` (one dict per image, as results.jsonl),
    ``status`` (zet run's exit status: 0 all images ok, 1 some failed), ``log`` (the
    failures as zet run tells them), ``overlays`` (the overlay images as arrays, when
    asked for; None for an image without one) and ``out`` (the results folder, when
    kept)."""

    def __init__(self, results, status, log, overlays, out):
        self.results = results
        self.status = status
        self.log = log
        self.overlays = overlays
        self.out = out

    def __len__(self):
        return len(self.results)

    def __iter__(self):
        return iter(self.results)

    def __getitem__(self, i):
        return self.results[i]

    def __repr__(self):
        failed = sum(not r["ok"] for r in self.results)
        return f"ProgramRun({len(self.results)} images, {failed} failed, status {self.status})"


def _absolute_files(value, base):
    """Literal image values {"file": relative} made absolute against ``base``."""
    if isinstance(value, dict) and set(value) == {"file"} and isinstance(value["file"], str):
        return {"file": os.path.join(base, value["file"])}
    return value


def write_program(program, folder, base=None):
    """The program file to run: ``program`` itself when it is a path; a dict is written
    to ``folder``, its relative literal image files taken from ``base`` (default: the
    current folder). Returns (file, images of the dict or None)."""
    if not isinstance(program, dict):
        return os.fspath(program), None
    p = dict(program)
    images = p.pop("images", None)
    if images is not None:
        images = [images] if isinstance(images, str) else list(images)
        if base is not None:
            images = [os.path.join(base, i) for i in images]
    base = os.path.abspath(base or os.getcwd())
    steps = []
    for step in p.get("steps", []):
        step = dict(step)
        for key in ("inputs", "params"):
            v = step.get(key)
            if isinstance(v, list):
                step[key] = [_absolute_files(x, base) for x in v]
            elif isinstance(v, dict):
                step[key] = {k: _absolute_files(x, base) for k, x in v.items()}
        steps.append(step)
    if "steps" in p:
        p["steps"] = steps
    file = os.path.join(folder, "program.json")
    with open(file, "w", encoding="utf-8") as f:
        json.dump(p, f)
    return file, images


def image_list(images, folder):
    """File names for ``images`` (a path, an array, or a list of them): arrays are
    written to ``folder``; returns (files, {position: array index})."""
    if images is None:
        return [], {}
    if isinstance(images, (str, os.PathLike, numpy.ndarray)):
        images = [images]
    files, arrays = [], {}
    for item in images:
        if isinstance(item, numpy.ndarray):
            file = os.path.join(folder, f"array_{len(arrays):06d}.png")
            _zetformula.save_image(file, item)
            arrays[len(files)] = len(arrays)
            files.append(file)
        else:
            files.append(os.fspath(item))
    return files, arrays


def run_program(program, images=None, *, jobs=1, out=None, overlays=None, overlay_arrays=False,
                csv=False, settings=None, base=None, plugin=None):
    """Runs an inspection program over images, as `zet run` does.

    ``program``: a program file or a dict of the same content (its relative paths taken
    from ``base``, default the current folder). ``images``: files, folders or NumPy
    images (uint8/uint16 (H, W), uint8 (H, W, 4)), or None for the program's own.
    ``jobs``: threads. ``out``: the folder for results.jsonl, results.csv (``csv``) and
    the overlays; a temporary folder when None. ``overlays``: write overlay images (by
    default when ``out`` is given or ``overlay_arrays`` asks for them as arrays).
    ``settings`` ({"angle_unit", "annotation_color"}) win over the program's, as zet's
    command-line options do; the process's settings are put back afterwards.
    Raises ValueError when the program cannot run at all (zet run's status 2).
    """
    plugin = plugin_path(plugin)
    if overlays is None:
        overlays = out is not None or overlay_arrays
    scratch = tempfile.mkdtemp(prefix="zetformula-")
    saved = get_settings()
    try:
        file, own_images = write_program(program, scratch, base)
        files, arrays = image_list(images if images is not None else own_images, scratch)
        folder = os.fspath(out) if out is not None else os.path.join(scratch, "out")
        settings = settings or {}
        if settings:
            set_settings(**settings)
        status, log = _zetformula.run_program(
            plugin, file, files, folder, int(jobs), bool(csv), bool(overlays),
            "angle_unit" in settings, "annotation_color" in settings)
        if status == 2:
            raise ValueError(log.strip())
        with open(os.path.join(folder, "results.jsonl"), encoding="utf-8") as f:
            results = [json.loads(line) for line in f if line.strip()]
        for position, index in arrays.items():
            results[position]["image"] = index
        arrays_out = None
        if overlay_arrays:
            arrays_out = [_zetformula.load_image(os.path.join(folder, r["overlay"]))
                          if r.get("overlay") else None for r in results]
        return ProgramRun(results, status, log, arrays_out, folder if out is not None else None)
    finally:
        set_settings(**saved)
        shutil.rmtree(scratch, ignore_errors=True)

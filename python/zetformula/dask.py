"""zetformula.dask.run_program: an inspection program over image files on a Dask
distributed cluster.

Each worker process loads the plug-in once (through zethost, as zet does) and runs the
host's program runner on the images it is given, one task per image; the results come
back in image order, each the line `zet run --jobs 1` writes for that image, and the
overlays are written to a folder every worker can reach.

    from distributed import Client
    client = Client("tcp://scheduler:8786")     # or a LocalCluster
    run = zetformula.dask.run_program("rim_check.json", ["/archive/frames"], client,
                                      out="/shared/run1")

Workers must be able to import zetformula (the same wheel installed where they run)
and to read the program and the images under the same paths as the client.
"""
import os
import shutil
import tempfile

from . import _zetformula
from ._library import Library, plugin_path
from .programs import ProgramRun, run_program as _run_local, write_program

# The plug-in of this worker process, loaded by the first task and kept for the next.
_worker_library = None


def _worker_plugin(plugin):
    global _worker_library
    if _worker_library is None or _worker_library.plugin != plugin:
        _worker_library = Library(plugin)
    return _worker_library.plugin


def overlay_names(images):
    """The overlay file names `zet run` gives these images: the file name without its
    extension, .png; a name that several images share gets the image's position."""
    stems = [os.path.splitext(os.path.basename(i))[0] for i in images]
    return [f"{s}-{i + 1}.png" if stems.count(s) > 1 else f"{s}.png" for i, s in enumerate(stems)]


def _run_image(image, shown, overlay, program, out, overlays, settings, base, plugin):
    """One image on a worker: the host's runner into a private folder, the overlay then
    moved to ``out`` under the name the whole run gives it."""
    plugin = _worker_plugin(plugin)
    work = tempfile.mkdtemp(prefix="zetformula-dask-")
    try:
        run = _run_local(program, [image], out=work, overlays=overlays, settings=settings,
                         base=base, plugin=plugin)
        result = run.results[0]
        result["image"] = shown
        if result.get("overlay"):
            shutil.move(os.path.join(work, result["overlay"]), os.path.join(out, overlay))
            result["overlay"] = overlay
        return result
    finally:
        shutil.rmtree(work, ignore_errors=True)


def run_program(program, images=None, client=None, *, out=None, overlays=True, settings=None,
                base=None, plugin=None):
    """Runs ``program`` (a file, or a dict as zetformula.run_program takes) over
    ``images`` (files or folders; None: the program's own) on the cluster of
    ``client`` (default: the current Dask client). Overlays go to ``out`` (a folder
    all workers share; required when ``overlays``). Returns a zetformula.ProgramRun
    whose results are in image order, as `zet run --jobs 1` writes them."""
    from distributed import get_client

    client = client or get_client()
    plugin = plugin_path(plugin)
    if overlays and out is None:
        raise ValueError("overlays need out=, a folder that every worker can write to")
    scratch = tempfile.mkdtemp(prefix="zetformula-")
    try:
        file, own = write_program(program, scratch, base)
        listed = [os.fspath(i) for i in (images if images is not None else own or [])]
        files = _zetformula.program_images(plugin, file, listed)
        if not files:
            raise ValueError("no images to inspect")
    finally:
        shutil.rmtree(scratch, ignore_errors=True)
    if out is not None:
        os.makedirs(out, exist_ok=True)
        out = os.path.abspath(out)
    # Workers get absolute paths; results name the images as the client listed them.
    if not isinstance(program, dict):
        program = os.path.abspath(os.fspath(program))
    elif base is None:
        base = os.getcwd()
    if isinstance(program, dict):
        program = dict(program, images=[])
    absolute = [os.path.abspath(f) for f in files]
    futures = client.map(_run_image, absolute, files, overlay_names(files), program=program,
                         out=out, overlays=overlays, settings=settings, base=base, plugin=plugin,
                         pure=False)
    results = client.gather(futures)
    status = 0 if all(r["ok"] for r in results) else 1
    log = "".join(f"zet run: {r['image']}: {r['error']}\n" for r in results if not r["ok"])
    return ProgramRun(results, status, log, None, out)

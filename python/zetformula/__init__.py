"""zetformula: the formula plug-in from Python, with the semantics of its reference host.

    import zetformula
    lib = zetformula.Library()
    lib.call("Add", 1, 2, 3).value                      # 6.0

The plug-in is loaded through zethost, the loader, execution context and services that
`zet` uses, so a call answers what `zet exec` answers. docs/python.md has the guide.
"""
from . import _zetformula
from ._errors import AmbiguousNameError, InstructionError
from ._library import Library, Result, get_settings, plugin_path, set_settings
from ._types import DEFAULT, Circle, Event, Line, Point, Rect, Report
from .programs import ProgramRun, run_program

__all__ = ["AmbiguousNameError", "Circle", "DEFAULT", "Event", "InstructionError", "Library",
           "Line", "Point", "ProgramRun", "Rect", "Report", "Result", "get_settings",
           "load_image", "plugin_path", "render_overlay", "run_program", "save_image",
           "set_settings"]


def load_image(path):
    """An image file (PGM or PNG) as an array, read as zet reads it."""
    return _zetformula.load_image(path)


def save_image(path, image):
    """Writes an image array as PGM or PNG (by the file's extension), as zet writes it."""
    _zetformula.save_image(path, image)


def render_overlay(background, *sources, default_color=None):
    """The host's overlay renderer: the annotations of ``sources`` (Results or their
    annotation_list) drawn over ``background`` (an image array), as `zet run` draws an
    overlay. Returns a uint8 (H, W, 4) array (R, G, B, 0). ``default_color`` is what
    colour 0 means (default: the process's annotation colour setting)."""
    if default_color is None:
        default_color = get_settings()["annotation_color"]
    lists = [s.annotation_list if isinstance(s, Result) else s for s in sources]
    return _zetformula.render_overlay(background, lists, int(default_color))

"""Library: the plug-in loaded through zethost, used as one `zet exec` session is.

Every call goes to the instruction with the semantics of the host: the same loader,
execution context and services, the same rules for naming instructions and for values
that do not fit their slots. The named store (stopwatches), the C runtime's random
generator and the named instances carry over from call to call of one Library.
"""
import json
import os

from . import _zetformula
from ._errors import AmbiguousNameError, InstructionError
from ._types import Circle, Line, Point, Rect  # noqa: F401  (re-exported)

_HERE = os.path.dirname(os.path.abspath(__file__))


def plugin_path(plugin=None):
    """The plug-in file: ``plugin`` when given, else $ZET_PLUGIN, else the one in the
    wheel (zetformula/zet/ZetFormulaLib.so), else the build tree's."""
    if plugin:
        return os.fspath(plugin)
    env = os.environ.get("ZET_PLUGIN")
    if env:
        return env
    packaged = os.path.join(_HERE, "zet", "ZetFormulaLib.so")
    if os.path.exists(packaged):
        return packaged
    try:
        from ._paths import BUILD_PLUGIN
    except ImportError:
        BUILD_PLUGIN = None
    if BUILD_PLUGIN and os.path.exists(BUILD_PLUGIN):
        return BUILD_PLUGIN
    raise ImportError("zetformula: no plug-in found; pass Library(path) or set ZET_PLUGIN")


def set_settings(angle_unit=None, annotation_color=None):
    """Sets the process-wide settings every instruction reads, as `zet exec`'s
    "settings" do: angle_unit "degrees" or "radians", annotation_color 0x00BBGGRR."""
    s = {}
    if angle_unit is not None:
        s["angle_unit"] = angle_unit
    if annotation_color is not None:
        s["annotation_color"] = annotation_color
    _zetformula.set_settings(s)


def get_settings():
    """The process-wide settings as a dict (angle_unit, annotation_color)."""
    return _zetformula.get_settings()


Result = _zetformula.Result


def _from_json(value, type_code):
    """A catalogue value (zet's JSON form) as Python."""
    if isinstance(value, str) and type_code == 258:
        return float(value.replace("Infinity", "inf"))
    if isinstance(value, dict) and type_code == 260:
        return Point(value["x"], value["y"])
    if isinstance(value, dict) and type_code == 261:
        return Line(value["a"], value["d"])
    return value


def _descriptor(entry):
    """A catalogue entry with its values as Python objects."""
    d = dict(entry)
    d["params"] = [dict(p, value=_from_json(p["value"], p["type"]),
                        min=_from_json(p["min"], p["type"]), max=_from_json(p["max"], p["type"]),
                        choices=[(int(v), label) for v, label in p["choices"]])
                   for p in entry["params"]]
    d["inputs"] = [dict(i, default=_from_json(i["default"], i["type"])) for i in entry["inputs"]]
    d["outputs"] = [dict(o) for o in entry["outputs"]]
    return d


class Library:
    """The plug-in (the wheel's, or ``plugin``, a path) and one execution session over it.

    ``angle_unit`` and ``annotation_color``, when given, set the process-wide settings
    (see set_settings). Two threads that call at once should use a Library each: one
    Library runs one call at a time; Libraries over the same plug-in share it.
    """

    def __init__(self, plugin=None, *, angle_unit=None, annotation_color=None):
        self.plugin = plugin_path(plugin)
        self._s = _zetformula.Session(self.plugin)
        self._catalog = None
        self._descriptors = None
        self._index = {}
        self._functions = None
        if angle_unit is not None or annotation_color is not None:
            set_settings(angle_unit, annotation_color)

    # ---- the catalogue ----

    def catalog(self):
        """Every descriptor in registry order, as `zet catalog` gives them (a dict with
        "library" and "instructions"; values in zet's JSON form)."""
        if self._catalog is None:
            self._catalog = json.loads(self._s.catalog_json())
        return self._catalog

    def _entries(self):
        if self._descriptors is None:
            self._descriptors = [_descriptor(e) for e in self.catalog()["instructions"]]
        return self._descriptors

    def list(self):
        """(position, id, identifier, category, name) per instruction, in registry order."""
        return [(e["position"], e["id"], e["identifier"], e["category"], e["name"])
                for e in self.catalog()["instructions"]]

    def describe(self, name):
        """One instruction's descriptor as Python objects: names, description, params
        (value, min, max, choices as (value, label) pairs), inputs (defaults), outputs,
        and "effects" when the plug-in's catalogue declares them."""
        return self._entries()[self.index(name)]

    def describe_text(self, name):
        """The readable descriptor, as `zet describe` prints it."""
        return self._s.describe_text(self.index(name))

    def index(self, name):
        """The 0-based registry index of an identifier, display name or 1-based position."""
        try:
            return self._index[name]
        except (KeyError, TypeError):
            pass
        try:
            i = self._s.find(name)
        except KeyError as e:
            message = e.args[0] if e.args else str(e)
            if message.startswith("ambiguous instruction"):
                raise AmbiguousNameError(message, message.split("': ", 1)[1].split(", ")) from None
            raise
        self._index[name] = i
        return i

    def __len__(self):
        return self._s.count()

    # ---- calls ----

    def call(self, name, *inputs, params=None, outputs=None, instance=None, settings=None,
             check=False):
        """Runs one instruction, as one `zet exec` request does.

        ``inputs`` in input order (a variadic instruction gets exactly as many as given;
        zetformula.DEFAULT leaves one at its default); ``params`` a list in descriptor
        order or a dict by parameter name; ``outputs`` initial output values;
        ``instance`` names an object made for this name and reused by later calls with
        it; ``settings`` ({"angle_unit", "annotation_color"}) apply to this call only.
        A failure (status 3) or an exception inside the instruction is in the result,
        unless ``check`` asks for InstructionError.
        """
        try:  # the name's index, as index() caches it; written out: this is the hot path
            index = self._index[name]
        except (KeyError, TypeError):
            index = self.index(name)
        result = self._s.call(index, inputs, params, outputs, instance, settings)
        if check and result.status != 0:
            self._fail(index, result)
        return result

    def _call(self, index, inputs, params, outputs, instance, settings, check):
        result = self._s.call(index, inputs, params, outputs, instance, settings)
        if check and result.status != 0:
            self._fail(index, result)
        return result

    def _fail(self, index, result):
        raise InstructionError(self._entries()[index]["identifier"], result)

    @property
    def functions(self):
        """One function per instruction, named from its identifier (see
        zetformula.instructions), bound to this Library."""
        if self._functions is None:
            from ._functions import make_namespace
            self._functions = make_namespace(self)
        return self._functions

    def function(self, name):
        """The generated function of one instruction."""
        from ._functions import function_name
        return getattr(self.functions, function_name(self.describe(name)["identifier"]))

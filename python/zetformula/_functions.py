"""One Python function per instruction, made from the plug-in's own descriptors.

A function is named from the instruction's identifier (unique, unlike display names):
"_Zet_Numeric_AddNumbers_" becomes ``numeric_add_numbers``. Its inputs are its
parameters, in input order and named from the descriptor's input names; a variadic
instruction takes any number of further inputs. The design-time parameters, initial
outputs, instance, settings and check are keyword arguments, as for Library.call, and
a function returns the same zetformula.Result. The docstring is the descriptor.
"""
import keyword
import re
import types

from ._types import DEFAULT

# Descriptor type codes: what a value of each is in Python (docstrings and stubs).
TYPES = {
    256: ("boolean", "bool"),
    257: ("integer", "int"),
    258: ("number", "float"),
    259: ("string", "str"),
    260: ("point", "PointLike"),
    261: ("line", "LineLike"),
    262: ("image", "numpy.ndarray"),
    263: ("choice", "int"),
    512: ("boolean array", "Sequence[bool]"),
    514: ("number array", "ArrayLike"),
    515: ("string array", "Sequence[str]"),
    516: ("point array", "ArrayLike"),
    517: ("line array", "ArrayLike"),
}


def _snake(word):
    word = re.sub(r"([a-z0-9])([A-Z])", r"\1_\2", word)
    word = re.sub(r"([A-Z]+)([A-Z][a-z])", r"\1_\2", word)
    return word.lower()


def _identifier(text):
    name = re.sub(r"\W+", "_", _snake(text)).strip("_") or "value"
    if name[0].isdigit():
        name = "_" + name
    if keyword.iskeyword(name):
        name += "_"
    return name


def function_name(identifier):
    """The function's name for an instruction identifier."""
    core = identifier.strip("_")
    if core.startswith("Zet_"):
        core = core[4:]
    return "_".join(_identifier(part) for part in core.split("_") if part)


def _argument_names(entry):
    reserved = {"params", "outputs", "instance", "settings", "check", "more"}
    names = []
    for i, inp in enumerate(entry["inputs"]):
        name = _identifier(inp["name"] or f"input_{i}")
        while name in names or name in reserved:
            name += f"_{i}"
        names.append(name)
    return names


def _value_text(value, type_code):
    if type_code in (512, 514, 515, 516, 517) and value in ([], None):
        return "empty"
    return repr(value)


def docstring(entry):
    """The descriptor as help() shows it."""
    lines = [f"{entry['name']} ({entry['category']}): {entry['identifier']}, id {entry['id']}", ""]
    if entry.get("description"):
        lines += [entry["description"], ""]
    names = _argument_names(entry)
    if entry["inputs"]:
        lines.append("Inputs:")
        for name, inp in zip(names, entry["inputs"]):
            text = f"    {name} ({inp['name']!r}): {TYPES.get(inp['type'], ('?',))[0]}"
            text += f", default {_value_text(inp['default'], inp['type'])}"
            lines.append(text)
            if inp.get("description"):
                lines.append(f"        {inp['description']}")
        if entry["variadic"]:
            lines.append(f"    *more: further inputs of the kind of {names[-1]} (variadic)")
    if entry["outputs"]:
        lines.append("Outputs (Result.outputs, or result[name]):")
        for i, out in enumerate(entry["outputs"]):
            lines.append(f"    {i} {out['name']!r}: {TYPES.get(out['type'], ('?',))[0]}")
    if entry["params"]:
        lines.append("Parameters (params={name: value} or a list in this order):")
        for p in entry["params"]:
            text = f"    {p['name']!r} [{p['group']}]: {TYPES.get(p['type'], ('?',))[0]}"
            text += f", default {p['value']!r}"
            if p["type"] in (257, 258) and (p["min"] is not None or p["max"] is not None):
                text += f", range {p['min']!r} to {p['max']!r}"
            lines.append(text)
            if p.get("description"):
                lines.append(f"        {p['description']}")
            for value, label in p["choices"]:
                lines.append(f"        {value}: {label}")
    if "effects" in entry:
        lines.append("Effects: " + (", ".join(entry["effects"]) or "none"))
    lines += ["", "Returns a zetformula.Result (status, outputs, reports, events, annotations)."]
    return "\n".join(lines)


def _signature(entry, annotate=False):
    parts = []
    for name, inp in zip(_argument_names(entry), entry["inputs"]):
        hint = f": {TYPES.get(inp['type'], ('', 'object'))[1]}" if annotate else ""
        parts.append(f"{name}{hint} = {'...' if annotate else 'DEFAULT'}")
    if entry["variadic"]:
        parts.append("*more" + (": object" if annotate else ""))
    elif parts or True:
        parts.append("*")
    kw = ["params", "outputs", "instance", "settings"]
    if annotate:
        parts += [f"{k}: Any = ..." for k in kw] + ["check: bool = ..."]
    else:
        parts += [f"{k}=None" for k in kw] + ["check=False"]
    return ", ".join(parts)


def make_function(library, entry):
    """The function of one catalogue entry, calling ``library``."""
    index = entry["position"] - 1
    names = _argument_names(entry)
    inputs = "(" + "".join(f"{n}, " for n in names) + ")" + (" + more" if entry["variadic"] else "")
    name = function_name(entry["identifier"])
    source = (f"def {name}({_signature(entry)}):\n"
              f"    r = _call({index}, {inputs}, params, outputs, instance, settings)\n"
              f"    if check and r.status != 0:\n"
              f"        _fail({index}, r)\n"
              f"    return r\n")
    scope = {"DEFAULT": DEFAULT, "_call": library._s.call, "_fail": library._fail}
    exec(source, scope)  # noqa: S102 - generated from the descriptor, names sanitised above
    f = scope[name]
    f.__doc__ = docstring(entry)
    f.__qualname__ = name
    return f


def make_namespace(library):
    """A namespace with every instruction's function; names are checked to be unique."""
    ns = types.SimpleNamespace()
    for entry in library._entries():
        name = function_name(entry["identifier"])
        if hasattr(ns, name):
            raise RuntimeError(f"two instructions give the function name {name}")
        setattr(ns, name, make_function(library, entry))
    return ns


def stubs(library):
    """The text of instructions.pyi: every function's signature and docstring."""
    out = ['"""Type stubs of zetformula.instructions (generated from the plug-in\'s descriptors)."""',
           "from typing import Any, Sequence, Tuple, Union", "", "import numpy",
           "from numpy.typing import ArrayLike", "", "from ._library import Library, Result",
           "from ._types import Line, Point", "",
           "PointLike = Union[Point, Tuple[float, float]]",
           "LineLike = Union[Line, Tuple[float, float]]", "",
           "library: Library", ""]
    for entry in library._entries():
        doc = docstring(entry).replace("\\", "\\\\").replace('"""', '\\"\\"\\"')
        doc = "\n".join(("    " + l) if l else "" for l in doc.split("\n"))
        out.append(f"def {function_name(entry['identifier'])}({_signature(entry, True)}) -> Result:")
        out.append(f'    """\n{doc}\n    """')
        out.append("")
    return "\n".join(out)

"""The generated functions: one per instruction, unique names, the descriptor as
docstring, the same results as Library.call, and stubs that match the plug-in."""
import pathlib

import zetformula
from zetformula import _functions


def test_one_function_per_instruction(lib):
    names = vars(lib.functions)
    assert len(names) == len(lib) == len(lib.list())
    assert lib.function("Divide") is lib.function(lib.describe("Divide")["identifier"])
    assert _functions.function_name("_Zet_Numeric_AddNumbers_") == "numeric_add_numbers"


def test_docstring_is_the_descriptor(lib):
    d = lib.describe("NumToString")
    doc = lib.function("NumToString").__doc__
    assert d["description"] in doc and d["identifier"] in doc
    for p in d["params"]:
        assert repr(p["name"]) in doc
        for _, label in p["choices"]:
            assert label in doc
    circle = lib.function("PtsToBestCircle").__doc__
    assert "point array" in circle and "default" in circle


def test_effects_reach_the_docstring_when_declared(lib):
    # The catalogue declares effects once the registry carries them; they pass through.
    for entry in lib.catalog()["instructions"]:
        doc = lib.function(entry["identifier"]).__doc__
        if "effects" in entry:
            assert lib.describe(entry["identifier"])["effects"] == entry["effects"]
            assert "Effects: " + (", ".join(entry["effects"]) or "none") in doc
        else:
            assert "Effects:" not in doc


def test_functions_call_like_library_call(lib):
    f = lib.functions
    assert f.numeric_add_numbers(1, 2, 3).value == lib.call("_Zet_Numeric_AddNumbers_", 1, 2, 3).value
    assert f.numeric_add_numbers().outputs == lib.call("_Zet_Numeric_AddNumbers_").outputs
    r = lib.function("Divide")(1, 0, outputs=[5.0])
    assert r.status == 3 and r.outputs == [5.0]


def test_stubs_match_the_plugin(lib):
    installed = pathlib.Path(zetformula.__file__).with_name("instructions.pyi")
    assert installed.read_text() == _functions.stubs(lib) + "\n"
    compile(installed.read_text(), str(installed), "exec")


def test_instructions_module():
    from zetformula import instructions as zi
    assert zi.numeric_add_numbers(2, 3).value == 5.0
    assert "numeric_add_numbers" in zi.__all__

"""Writes zetformula/instructions.pyi from the plug-in's descriptors (the build runs it;
tests/python checks the installed stubs against a fresh run)."""
import sys

import zetformula
from zetformula._functions import stubs

with open(sys.argv[1], "w", encoding="utf-8") as f:
    f.write(stubs(zetformula.Library()) + "\n")

"""One function per instruction of the default plug-in (see zetformula._functions):

    from zetformula import instructions as zi
    zi.numeric_add_numbers(1, 2, 3).value      # 6.0
    help(zi.geometric_pts_to_best_circle)      # the descriptor

Importing this module loads the plug-in into ``library``, a zetformula.Library whose
session (store, instances) every function here shares.
"""
from ._library import Library

library = Library()
globals().update(vars(library.functions))
__all__ = sorted(vars(library.functions))

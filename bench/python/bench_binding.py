"""Speed of the Python binding, each figure beside its baseline in the same run:

- a scalar instruction (Divide) called from Python, three ways (Library.call by name,
  the generated function, the session's call by index), against a plain pybind11
  function of two doubles (_zetformula._baseline_add); goal: within 1 us of it;
- a number array of 10^6 elements in and out (CopyArray, all of it) against
  numpy.copy of the same array; goal: within 2x. Size (array in, a number out) shows
  the input side alone (one copy into the library's vector), CreateRep (a number in, an
  array out) against numpy.full the output side (the vector's storage becomes the
  array's: no copy). CopyArray's own work (a zero-filled output, then the copy) is
  inside its figure.

    PYTHONPATH=build/release/python /usr/bin/python3 bench/python/bench_binding.py
Times are the thread's CPU time (best of 7). Not a test: figures depend on the machine
and its load; the ratios are what to read.
"""
import time
import timeit

import numpy as np

import zetformula
from zetformula import _zetformula


def best(stmt, number, repeat=7, **names):
    # The thread's CPU time, not wall time: on a shared machine the process is preempted
    # often, and the time it waits for a core is not the binding's.
    t = timeit.Timer(stmt, timer=time.thread_time, globals=names)
    return min(t.repeat(repeat=repeat, number=number)) / number


def main():
    lib = zetformula.Library()
    f = lib.functions
    divide = lib.index("Divide")
    s = lib._s
    n = 200_000
    plain = best("add(6.0, 3.0)", n, add=_zetformula._baseline_add)
    rows = [
        ("plain pybind11 function (baseline)", plain),
        ("lib.call('Divide', 6.0, 3.0)", best("call('Divide', 6.0, 3.0)", n, call=lib.call)),
        ("generated function", best("fn(6.0, 3.0)", n, fn=f.numeric_divide_numbers)),
        ("session call by index", best("c(i, (6.0, 3.0), None, None, None, None)", n,
                                       c=s.call, i=divide)),
    ]
    print("Scalar calls (best of 7 x 200000):")
    for name, t in rows:
        print(f"  {name:38s} {t * 1e9:8.0f} ns   {(t - plain) * 1e9:+7.0f} ns vs baseline")

    x = np.random.default_rng(1).normal(size=1_000_000)
    copy = best("np.copy(x)", 50, np=np, x=x)
    both = best("call('_CNArrCopyArray_', x, 0, -1)", 50, call=lib.call, x=x)
    size = best("call('_Zet_System_CNArrSize_', x)", 50, call=lib.call, x=x)
    full = best("np.full(1_000_000, 2.5)", 50, np=np)
    rep = best("call('_Zet_Array_CNArrCreateRep_', 1e6, 2.5)", 50, call=lib.call)
    assert np.array_equal(lib.call("_CNArrCopyArray_", x, 0, -1).value, x)
    print("Number array of 10^6 (best of 7 x 50):")
    print(f"  numpy.copy (baseline)                  {copy * 1e6:8.0f} us")
    print(f"  CopyArray in and out                   {both * 1e6:8.0f} us   {both / copy:5.2f}x")
    print(f"  Size (array in only)                   {size * 1e6:8.0f} us   {size / copy:5.2f}x")
    print(f"  numpy.full (baseline of the next)      {full * 1e6:8.0f} us")
    print(f"  CreateRep (array out only)             {rep * 1e6:8.0f} us   {rep / full:5.2f}x")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Compares the OS layer's differential tables of two implementations (osdiff's output
on Linux and under Wine) and prints the agreement counts per kind.

    compare.py LINUX_TABLE WINDOWS_TABLE

Exit status 1 when any case differs (cases where Wine departs from Windows are left
out of the tables by osdiff itself).
"""
import sys
from collections import defaultdict


def read(path):
    rows, rand_values = {}, {}
    with open(path, "rb") as f:
        lines = f.read().decode("latin-1").split("\n")
    i = 0
    while i < len(lines):
        line = lines[i]
        i += 1
        if not line:
            continue
        parts = line.split("\t")
        if parts[0] == "randv":
            values = []
            while len(values) < 200000 and i < len(lines):
                values += [int(v) for v in lines[i].split()]
                i += 1
            rand_values[parts[1]] = values
            continue
        if parts[0] == "file":
            rows[(parts[0], parts[1], "")] = parts[2:]
        else:
            rows[(parts[0], parts[1], parts[2])] = parts[3:]
    return rows, rand_values


def main():
    linux, linux_rand = read(sys.argv[1])
    windows, windows_rand = read(sys.argv[2])
    counts = defaultdict(lambda: [0, 0])  # kind -> [agree, total]
    unexpected = []
    for key in sorted(set(linux) | set(windows)):
        kind = key[0]
        a, b = linux.get(key), windows.get(key)
        counts[kind][1] += 1
        if a == b:
            counts[kind][0] += 1
        else:
            unexpected.append((key, a, b))
    agree = total = 0
    for seed in sorted(set(linux_rand) | set(windows_rand)):
        x, y = linux_rand.get(seed, []), windows_rand.get(seed, [])
        total += max(len(x), len(y))
        agree += sum(1 for p, q in zip(x, y) if p == q)
    counts["rand values"] = [agree, total]
    for kind in ("date", "time", "file", "rand", "rand values"):
        a, t = counts[kind]
        print(f"{kind:12} {a} of {t} agree")
    for key, a, b in unexpected:
        print(f"DIFFERS: {key[0]} {key[1]!r} {key[2]}: linux {a} windows {b}")
    return 1 if unexpected else 0


if __name__ == "__main__":
    sys.exit(main())

"""Packs an installed zetformula tree (cmake --install --component python) into a wheel:
   wheel.py STAGE VERSION OUT_DIR
Shared libraries are stored once, under the name the others load them by (the soname
link); the tag is this interpreter's (cpXY-cpXY-platform)."""
import base64
import hashlib
import os
import sys
import sysconfig
import zipfile

stage, version, out = sys.argv[1:4]
tag = f"cp{sys.version_info.major}{sys.version_info.minor}"
platform = sysconfig.get_platform().replace("-", "_").replace(".", "_")
name = f"zetformula-{version}-{tag}-{tag}-{platform}.whl"
info = f"zetformula-{version}.dist-info"

files = {}  # name in the wheel -> file on disk
links = {}
for folder, _, names in os.walk(stage):
    for n in names:
        path = os.path.join(folder, n)
        arc = os.path.relpath(path, stage)
        if os.path.islink(path):
            links[os.path.realpath(path)] = arc
        else:
            files[arc] = path
# A versioned library (libzethost.so.1.0.0) goes in as its soname link (libzethost.so.1).
for real, link in links.items():
    arc = os.path.relpath(real, stage)
    if arc in files:
        files[link] = files.pop(arc)

metadata = f"""Metadata-Version: 2.1
Name: zetformula
Version: {version}
Summary: The formula instruction plug-in from Python, NumPy and Dask, through its reference host
Requires-Python: =={sys.version_info.major}.{sys.version_info.minor}.*
Requires-Dist: numpy
"""
wheel = f"""Wheel-Version: 1.0
Generator: zetformula wheel.py
Root-Is-Purelib: false
Tag: {tag}-{tag}-{platform}
"""
records = []


def digest(data):
    return "sha256=" + base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()


target = os.path.join(out, name)
with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED) as z:
    for arc in sorted(files):
        with open(files[arc], "rb") as f:
            data = f.read()
        zi = zipfile.ZipInfo(arc, date_time=(2024, 1, 1, 0, 0, 0))
        zi.external_attr = (os.stat(files[arc]).st_mode & 0o777 | 0o100000) << 16
        zi.compress_type = zipfile.ZIP_DEFLATED
        z.writestr(zi, data)
        records.append(f"{arc},{digest(data)},{len(data)}")
    for arc, text in ((f"{info}/METADATA", metadata), (f"{info}/WHEEL", wheel),
                      (f"{info}/top_level.txt", "zetformula\n")):
        data = text.encode()
        z.writestr(arc, data)
        records.append(f"{arc},{digest(data)},{len(data)}")
    records.append(f"{info}/RECORD,,")
    z.writestr(f"{info}/RECORD", "\n".join(records) + "\n")
print(target)

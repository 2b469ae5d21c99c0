#!/usr/bin/env python3
"""The library needs the C and C++ run times and ICU, and nothing else; and it has no static initialiser.

Usage: needed_libraries.py LIBRARY OBJECT_FOLDER
"""
import pathlib
import re
import subprocess
import sys

library, objects = sys.argv[1], pathlib.Path(sys.argv[2])
problems = []

dynamic = subprocess.run(["readelf", "--dynamic", "--wide", library], check=True, capture_output=True, text=True).stdout
allowed = re.compile(r"(libc|libm|libpthread|ld-linux[^.]*|ld64|libgcc_s|libstdc\+\+|libicu(uc|i18n|data))\.so\.\d+")
needed = re.findall(r"\(NEEDED\)\s+Shared library: \[(.*?)\]", dynamic)
for name in needed:
    if not allowed.fullmatch(name):
        problems.append(f"the library needs {name}")

# Every object that was compiled for the library, looked at one by one: the start files of the compiler have
# an initialiser of their own.
files = sorted(objects.rglob("*.o"))
if not files:
    problems.append(f"no objects below {objects}")
for file in files:
    sections = subprocess.run(["readelf", "--sections", "--wide", file], check=True, capture_output=True, text=True).stdout
    for section in re.findall(r"\s(\.(?:init_array|ctors|preinit_array|fini_array|dtors)\S*)\s", sections):
        problems.append(f"{file.name} has a static initialiser ({section})")

print("\n".join(problems) or f"needed: {', '.join(needed)}; {len(files)} objects without initialisers")
sys.exit(1 if problems else 0)

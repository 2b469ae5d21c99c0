#!/usr/bin/env python3
"""The built library exports exactly what header, symbol map and function table say, under the right versions.

Usage: exports.py LIBRARY SOURCE_FOLDER
"""
import pathlib
import re
import subprocess
import sys

library, root = sys.argv[1], pathlib.Path(sys.argv[2])
problems = []


def differ(what, left_name, left, right_name, right):
    for name in sorted(set(left) - set(right)):
        problems.append(f"{what}: {name} is in {left_name} but not in {right_name}")
    for name in sorted(set(right) - set(left)):
        problems.append(f"{what}: {name} is in {right_name} but not in {left_name}")


def declared(header):
    text = (root / "include" / header).read_text()
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    # a function that C and C++ declare differently stands there twice
    return sorted(set(re.findall(r"^DOV0_EXPORT[^;]*?\b(\w+)\s*\(", text, flags=re.M)))


def mapped(node):
    text = (root / "src/dov0610.map").read_text()
    text = re.sub(r"#.*", "", text)
    body = re.search(node + r"\s*\{(.*?)\}", text, flags=re.S).group(1)
    return [name for name in re.findall(r"(\w+);", body)]


def exported():
    listing = subprocess.run(["readelf", "--dyn-syms", "--wide", library], check=True, capture_output=True, text=True)
    versions = {}
    for line in listing.stdout.splitlines():
        columns = line.split()
        if len(columns) < 8 or columns[4] not in ("GLOBAL", "WEAK") or columns[6] == "UND":
            continue
        name, _, version = columns[7].partition("@")
        if columns[3] == "OBJECT" and columns[6] == "ABS":
            continue  # the version nodes themselves
        if columns[5] != "DEFAULT":
            problems.append(f"{name} is not of default visibility, so that it cannot be replaced")
        versions.setdefault(version.lstrip("@"), []).append(name)
    return versions


built = exported()
differ("versions", "the library", built, "the map", ["version_1.0", "platform_1.0"])
functions, platform = declared("dov0610.h"), declared("dov0610_platform.h")
differ("functions", "the header", functions, "the map", mapped("version_1.0"))
differ("platform operations", "the header", platform, "the map", mapped("platform_1.0"))
differ("functions", "the header", functions, "the library", built.get("version_1.0", []))
differ("platform operations", "the header", platform, "the library", built.get("platform_1.0", []))
for name in functions:
    if not name.startswith("DOV0_"):
        problems.append(f"{name} is not named DOV0_...")

dynamic = subprocess.run(["readelf", "--dynamic", "--wide", library], check=True, capture_output=True, text=True).stdout
if "Library soname: [libdov0610.so]" not in dynamic:
    problems.append("the library is not named libdov0610.so inside")
if re.search(r"\bSYMBOLIC\b", dynamic):
    problems.append("the library binds its own symbols, so that no operation can be replaced")

print("\n".join(problems) or f"{len(functions)} functions and {len(platform)} platform operations agree")
sys.exit(1 if problems else 0)

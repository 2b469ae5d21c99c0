#!/usr/bin/env python3
"""docs/functions.md agrees with the header, the sources and the tests.

Each exported function has a row; its file holds it, and it alone, with trace control data of the right names on the
line right above; its test file holds a test.

Usage: function_table.py SOURCE_FOLDER
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
problems = []

header = re.sub(r"/\*.*?\*/", "", (root / "include/dov0610.h").read_text(), flags=re.S)
functions = re.findall(r"^DOV0_EXPORT[^;]*?\b(DOV0_\w+)\s*\(", header, flags=re.M)
rows = re.findall(r"^\| `(\w+)` \| `(\S+)` \| `(\S+)` \|$", (root / "docs/functions.md").read_text(), flags=re.M)

named = [row[0] for row in rows]
for name in sorted(set(functions) ^ set(named)):
    problems.append(f"{name} is only in {'the header' if name in functions else 'the table'}")
for name in sorted({name for name in named if named.count(name) > 1}):
    problems.append(f"{name} has more than one row")

control = re.compile(r'^TRACE_CONTROL\("(\w+)", (\w+)\);\n(.*)$', flags=re.M)
for name, file, test in rows:
    path = root / file
    if not path.is_file():
        problems.append(f"{name}: there is no {file}")
        continue
    if not re.fullmatch(r"src/(foundation|prodspec|time|text|ber|nls|net)/dov0[a-z0-9]{4}\.cpp", file):
        problems.append(f"{name}: {file} is not where a function's file goes")
    text = path.read_text()
    controls = control.findall(text)
    if [c[:2] for c in controls] != [(path.stem, name)]:
        problems.append(f"{name}: {file} has the trace control data {[c[:2] for c in controls]}")
    elif not re.search(rf'^extern "C" .*\b{name}\(', controls[0][2]):
        problems.append(f"{name}: the function does not begin right below its trace control data")
    defined = re.findall(r'^extern "C" [^;{]*?\b(\w+)\([^;{]*\{', text, flags=re.M)
    if defined != [name]:
        problems.append(f"{file} defines {defined}")
    test_path = root / test
    if not test_path.is_file() or not re.search(r"^TEST(_F|_P)?\(", test_path.read_text(), flags=re.M):
        problems.append(f"{name}: {test} has no test")
    if test_path.name != name.removeprefix("DOV0_") + "_test.cpp" or test_path.parent.name != path.parent.name:
        problems.append(f"{name}: {test} is not where its test goes")

listed = {row[1] for row in rows}
for path in sorted((root / "src").glob("*/dov0*.cpp")):
    if str(path.relative_to(root)) not in listed:
        problems.append(f"{path.relative_to(root)} has no row")

print("\n".join(problems) or f"{len(rows)} rows agree")
sys.exit(1 if problems else 0)

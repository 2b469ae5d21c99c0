#!/usr/bin/env python3
"""The manual that doxygen makes of the headers documents what the symbol map exports, and nothing else.

Each function has a description; each of its arguments has one too, and its result where it has one. The constants
that the manual names go into a C program that prints their values.

Usage: manual.py XML_FOLDER SOURCE_FOLDER PROGRAM
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as tree

manual, root, program = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
problems = []
functions, constants, texts = {}, set(), set()


def text_of(element, path):
    found = element.find(path)
    return "" if found is None else "".join(found.itertext()).strip()


def look_at_function(member):
    name = member.findtext("name")
    if name in functions:
        return  # in its group and in its file
    functions[name] = member
    if not text_of(member, "briefdescription"):
        problems.append(f"{name} has no sentence that says what it is for")
    described = {"".join(item.itertext()).strip() for item in member.iter("parametername")}
    for parameter in member.findall("param"):
        argument = parameter.findtext("declname")
        if argument and argument not in described:
            problems.append(f"{name}: the argument {argument} is not described")
    returns = any(section.get("kind") == "return" for section in member.iter("simplesect"))
    if returns != (text_of(member, "type") != "void"):
        problems.append(f"{name}: the result is {'described' if returns else 'not described'}, its type is {text_of(member, 'type')}")


for file in sorted(manual.glob("*.xml")):
    for member in tree.parse(file).iter("memberdef"):
        kind = member.get("kind")
        if kind == "function":
            look_at_function(member)
        elif kind == "enum":
            constants.update(value.findtext("name") for value in member.findall("enumvalue"))
        elif kind == "define" and member.find("param") is None and text_of(member, "initializer"):
            (texts if text_of(member, "initializer").startswith('"') else constants).add(member.findtext("name"))

exported = set(re.findall(r"(\w+);", re.sub(r"#.*", "", (root / "src/dov0610.map").read_text()).replace("*;", "")))
exported.discard("")
for name in sorted(exported - set(functions)):
    problems.append(f"{name} is exported and not in the manual")
for name in sorted(set(functions) - exported):
    problems.append(f"{name} is in the manual and not exported")

constants -= {"DOV0_EXPORT", "DOV0_NOEXCEPT"}
lines = ['#include "dov0610.h"', "#include <stdio.h>", "int main(void)", "{"]
lines += [f'    printf("{name} %lld\\n", (long long)({name}));' for name in sorted(constants)]
lines += [f'    printf("{name} \\"%s\\"\\n", {name});' for name in sorted(texts)]
program.write_text("\n".join(lines + ["    return 0;", "}", ""]))

if problems:
    print("\n".join(problems), file=sys.stderr)
    sys.exit(1)
print(f"{len(functions)} functions are documented; {len(constants) + len(texts)} constants")

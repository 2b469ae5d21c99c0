#!/usr/bin/env python3
"""Changes the library one place at a time and sees whether its tests notice.

    tests/mutate/mutate.py [--seed N] [--per-family N] [--only FAMILY] [--report FILE] [--replay FILE]

A sample of mutants is drawn from every family: a comparison turned or moved by one, a logical operator, a constant plus
or minus one, a deleted statement, two swapped arguments, another trace bit, another letter in a text. Each is made in
a copy of the tree under build/mutate, where only the changed file is compiled and the library is linked again. Then the tests
of its function run, and if they pass, those of its family, and if these pass too, the same once more under the address and
undefined-behaviour sanitizers. A mutant that does not compile, or whose machine code is the same, is dropped and another
one drawn in its place.

Survivors that cannot be told from the original are listed in equivalent.txt with the reason; any other survivor
makes the exit status 1. --replay runs the survivors of an earlier report again.
"""
import argparse
import collections
import hashlib
import json
import os
import pathlib
import random
import re
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
TREE = ROOT / "build/mutate/tree"
BUILD = ROOT / "build/mutate/build"
SANITIZED_BUILD = ROOT / "build/mutate/sanitized"
EQUIVALENT = pathlib.Path(__file__).with_name("equivalent.txt")
FAMILIES = ["foundation", "prodspec", "time", "text", "ber", "nls", "net"]
TRACE_BITS = ["Detail", "Storage", "Dump", "State", "Flow", "Error", "Configuration"]
TEST_SECONDS = 30

# The families whose tests have more than their own program.
FAMILY_LABELS = {
    "foundation": "foundation_tests|platform_tests|control_data_tests|trace_storage_tests|replacement_tests",
    "nls": "nls_tests|messages_tests|examples_tests",
    "prodspec": "prodspec_tests|tools_tests",
}

# Services of one family that only another one's functions use.
FILE_LABELS = {
    "src/foundation/is_numeric.cpp": "prodspec_tests",
}

Mutant = collections.namedtuple("Mutant", "file line kind before after")


def run(*command, **options):
    return subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, **options)


def strings_blanked(line):
    """The code of a line: comments cut, the insides of texts and character constants replaced."""
    out, quote, i = [], "", 0
    while i < len(line):
        c = line[i]
        if quote:
            if c == "\\":
                out.append("\0\0")
                i += 2
                continue
            out.append(c if c == quote else "\0")
            quote = "" if c == quote else quote
        elif line.startswith("//", i):
            break
        else:
            quote = c if c in "\"'" and not (c == "'" and i and line[i - 1].isalnum()) else ""
            out.append(c)
        i += 1
    return "".join(out)


def replaced(line, match, text, group=0):
    return line[:match.start(group)] + text + line[match.end(group):]


def mutants_of_line(line):
    """All (kind, changed line) of one line."""
    code = strings_blanked(line)
    if not code.strip() or code.lstrip().startswith(("#", "//", "static_assert", "TRACE_CONTROL", "using ", "extern ")):
        return
    for match in re.finditer(r" (==|!=|<=|>=|<|>) ", code):
        for other in {"==": ["!="], "!=": ["=="], "<": ["<=", ">"], "<=": ["<", ">"], ">": [">=", "<"],
                      ">=": [">", "<"]}[match[1]]:
            yield "comparison", replaced(line, match, other, 1)
    for match in re.finditer(r" (&&|\|\|) ", code):
        yield "logic", replaced(line, match, "||" if match[1] == "&&" else "&&", 1)
    for match in re.finditer(r" ([+-]) ", code):
        yield "arithmetic", replaced(line, match, "-" if match[1] == "+" else "+", 1)
    for match in re.finditer(r"(?<![\w.\"'])(0x[0-9A-Fa-f]+|0|[1-9]\d*)(?=[UL]*\b)(?![\w.]*')", code):
        value = int(match[1], 0)
        for changed in (value + 1, value - 1):
            if changed >= 0:
                yield "constant", replaced(line, match, hex(changed) if match[1].startswith("0x") else str(changed), 1)
    if re.fullmatch(r"\s+(?!return|break|continue|case|const |auto |goto|delete|using )[\w.>:*()\[\]+-]+"
                    r"(\(.*\)| [-+|&^*/%<>]*= .*|\+\+|--);", code.rstrip()) or re.fullmatch(r"\s+(\+\+|--)[\w.>-]+;", code.rstrip()):
        yield "deletion", re.match(r"\s*", line)[0] + ";"
    # Whether two texts are the same, and what is exchanged, does not depend on the order.
    symmetrical = [match.span() for match in re.finditer(r"\bstrn?cmp\([^()]*\) [!=]= 0|\bswap\([^()]*\)", code)]
    is_declaration = re.fullmatch(r"\s*\w+ \w+(, \w+)+;", code.rstrip())
    for match in re.finditer(r"(?<=[(,])( ?)([\w.\->]+), ([\w.\->]+)(?=[,)])", code):
        if is_declaration or any(start <= match.start() < end for start, end in symmetrical):
            continue
        yield "arguments", line[:match.start(2)] + match[3] + ", " + match[2] + line[match.end(3):]
    for match in re.finditer(r"Trace::(\w+)", code):
        if match[1] in TRACE_BITS:
            for bit in ("Storage", "Detail", "Error"):
                if bit != match[1]:
                    yield "trace bit", replaced(line, match, bit, 1)
    for match in re.finditer(r'"(\0+)"', code):
        text = line[match.start(1):match.end(1)]
        letters = [i for i, c in enumerate(text) if c.isalpha() and text[i - 1:i] not in ("\\", "%") and
                   not re.search(r"%[-.0-9*l]*$", text[:i]) and not re.search(r"\\x[0-9A-Fa-f]*$", text[:i])]
        if letters:
            at = match.start(1) + letters[len(letters) // 2]
            yield "text", line[:at] + ("Q" if line[at] != "Q" else "q") + line[at + 1:]


def candidates(family):
    found = collections.defaultdict(list)
    for file in sorted((ROOT / "src" / family).iterdir()):
        in_comment = False
        for number, line in enumerate(file.read_text().split("\n")):
            in_comment = in_comment or "/*" in line
            if not in_comment:
                for kind, after in mutants_of_line(line):
                    if after != line:
                        found[kind].append(Mutant(f"src/{family}/{file.name}", number, kind, line, after))
            in_comment = in_comment and "*/" not in line
    return found


def drawn(family, generator):
    """The family's mutants in the order of drawing, the kinds taking turns."""
    found = candidates(family)
    for mutants in found.values():
        generator.shuffle(mutants)
    kinds = sorted(found)
    while any(found.values()):
        for kind in kinds:
            if found[kind]:
                yield found[kind].pop()


def suites():
    """Source file to the pattern of its tests' names, from the function table."""
    table = {}
    for line in (ROOT / "docs/functions.md").read_text().split("\n"):
        cells = [cell.strip(" `") for cell in line.split("|")]
        if len(cells) > 3 and cells[2].startswith("src/") and cells[3].startswith("tests/"):
            text = (ROOT / cells[3]).read_text()
            names = sorted(set(re.findall(r"^TEST(?:_[FP])?\((\w+),", text, re.M)))
            table[cells[2]] = "^(.*/)?(" + "|".join(names) + r")[./]"
    return table


def prepare():
    TREE.mkdir(parents=True, exist_ok=True)
    files = run("git", "-C", ROOT, "ls-files").stdout.split("\n")
    archive = subprocess.Popen(["tar", "cf", "-", "--ignore-failed-read", *[f for f in files if f]], cwd=ROOT,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    subprocess.run(["tar", "xf", "-", "-m"], cwd=TREE, stdin=archive.stdout, check=True)
    for build, sanitizers in ((BUILD, ""), (SANITIZED_BUILD, "address,undefined")):
        for command in (["cmake", "-S", TREE, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                         "-DCMAKE_CXX_FLAGS=-O1 -g0", "-DDOV0_SANITIZERS=" + sanitizers, "-DBUILD_TESTING=ON",
                         "-DDOV0_BUILD_TOOLS=ON", "-DDOV0_BUILD_EXAMPLES=ON", "-DDOV0_BUILD_MESSAGES=ON"],
                        ["cmake", "--build", build, "--parallel", "2"]):
            result = run(*command)
            if result.returncode != 0:
                sys.exit(result.stdout)


def library_hash():
    """Of what the library does: its loaded sections, without the build's own identifiers."""
    dump = subprocess.run(["objdump", "-s", "-j", ".text", "-j", ".rodata", "-j", ".data", "-j", ".data.rel.ro",
                           "-j", ".bss", str(BUILD / "libdov0610.so")], stdout=subprocess.PIPE, check=True)
    return hashlib.sha256(dump.stdout).hexdigest()


def passes(build, *selection):
    result = run("ctest", "--test-dir", build, "-j", "3", "--stop-on-failure", "--timeout", TEST_SECONDS,
                 "--no-tests=error", "-LE", "library", *selection,
                 env={**os.environ, "ASAN_OPTIONS": "detect_leaks=1:allocator_may_return_null=1:"
                                                    "detect_stack_use_after_return=1:strict_string_checks=1"})
    failed = re.search(r"\d+ - (\S+) \(", result.stdout)
    return result.returncode == 0, failed[1] if failed else ""


def labels_of(file):
    family = file.split("/")[1]
    return "^(" + FILE_LABELS.get(file, FAMILY_LABELS.get(family, family + "_tests")) + ")$"


def compiles(build):
    return run("cmake", "--build", build, "--parallel", "2", "--target", "dov0610").returncode == 0


def try_mutant(mutant, patterns, original, listed):
    """One of killed, equivalent, survived, dropped, and what killed it or why."""
    target = TREE / mutant.file
    text = target.read_text()
    lines = text.split("\n")
    if lines[mutant.line] != mutant.before:
        return "dropped", "the source has changed"
    lines[mutant.line] = mutant.after
    target.write_text("\n".join(lines))
    try:
        if not compiles(BUILD):
            return "dropped", "does not compile"
        if library_hash() == original:
            return "dropped", "same machine code"
        if mutant.file in patterns:
            passed, killer = passes(BUILD, "-R", patterns[mutant.file])
            if not passed:
                return "killed", killer
        passed, killer = passes(BUILD, "-L", labels_of(mutant.file))
        if not passed:
            return "killed", killer
        if key(mutant) in listed:
            return "equivalent", listed[key(mutant)]
        if not compiles(SANITIZED_BUILD):
            return "dropped", "does not compile with the sanitizers"
        passed, killer = passes(SANITIZED_BUILD, "-L", labels_of(mutant.file))
        return ("survived", "") if passed else ("killed", killer + ", sanitized")
    finally:
        target.write_text(text)


def equivalents():
    """Listed mutants: the file, the line before and the line after, each stripped, with a reason above them."""
    listed = {}
    if EQUIVALENT.exists():
        for block in EQUIVALENT.read_text().split("\n\n"):
            lines = [line for line in block.strip().split("\n")]
            if len(lines) >= 4 and not lines[0].startswith("#"):
                listed[(lines[0], lines[1].removeprefix("- ").strip(), lines[2].removeprefix("+ ").strip())] = lines[3]
    return listed


def key(mutant):
    return (mutant.file, mutant.before.strip(), mutant.after.strip())


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seed", type=int, default=610)
    parser.add_argument("--per-family", type=int, default=45)
    parser.add_argument("--only", choices=FAMILIES)
    parser.add_argument("--report", default=str(ROOT / "build/mutate/report.json"))
    parser.add_argument("--replay")
    options = parser.parse_args()

    prepare()
    original = library_hash()
    for build in (BUILD, SANITIZED_BUILD):
        for family in FAMILIES:
            passed, killer = passes(build, "-L", labels_of(f"src/{family}/"))
            if not passed:
                sys.exit(f"the tests of {family} in {build.name} fail without any change: {killer}")
    patterns, listed, results = suites(), equivalents(), []
    if options.replay:
        earlier = [entry for entry in json.loads(pathlib.Path(options.replay).read_text())
                   if entry["outcome"] in ("survived", "equivalent")]
        queues = {"replay": iter([Mutant(**{f: entry[f] for f in Mutant._fields}) for entry in earlier])}
        wanted = len(earlier)
    else:
        families = [options.only] if options.only else FAMILIES
        queues = {f: drawn(f, random.Random(f"{options.seed} {f}")) for f in families}
        wanted = options.per_family
    for name, queue in queues.items():
        counted = 0
        for mutant in queue:
            if counted >= wanted:
                break
            start = time.monotonic()
            outcome, detail = try_mutant(mutant, patterns, original, listed)
            counted += outcome != "dropped"
            results.append({**mutant._asdict(), "outcome": outcome, "detail": detail})
            print(f"{name} {counted}: {outcome} {mutant.kind} {mutant.file}:{mutant.line + 1} {detail}"
                  f" ({time.monotonic() - start:.1f} s)", flush=True)
            if outcome == "survived":
                print(f"    - {mutant.before.strip()}\n    + {mutant.after.strip()}", flush=True)
            pathlib.Path(options.report).write_text(json.dumps(results, indent=1))

    print(f"\n{'family':12} {'mutants':>8} {'killed':>8} {'equivalent':>11} {'survived':>9}")
    total = collections.Counter()
    for family in FAMILIES:
        count = collections.Counter(r["outcome"] for r in results if r["file"].split("/")[1] == family)
        total += count
        print(f"{family:12} {count['killed'] + count['equivalent'] + count['survived']:8} {count['killed']:8}"
              f" {count['equivalent']:11} {count['survived']:9}")
    tried = total["killed"] + total["survived"]
    print(f"{'all':12} {tried + total['equivalent']:8} {total['killed']:8} {total['equivalent']:11} {total['survived']:9}")
    if tried:
        print(f"killed of those that differ: {100 * total['killed'] / tried:.1f} %; dropped: {total['dropped']}")
    return 1 if total["survived"] else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Holds the corpus of each fuzz target to a floor of line coverage.

Usage: coverage_floor.py PROJECT_FOLDER BUILD_FOLDER [TARGET...]

A target's source names its functions in lines "// Functions: NAME NAME ...". What counts is the lines of the source
files that these functions are defined in. Fails when a corpus covers less than the floor, and when something is named
that there is not.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

FLOOR = 90.0  # percent of lines


def file_of(function, sources):
    definition = re.compile(r"^[^ \n/].*\b%s\(" % re.escape(function), re.MULTILINE)
    files = [name for name, text in sources.items() if definition.search(text)]
    if len(files) != 1:
        sys.exit(f"coverage_floor.py: {function} is defined in {files or 'no file'}")
    return files[0]


def lines_by_file(project, build, target):
    """Runs a target on its corpus; returns {file: {line: count}} for the files of src/."""
    program = build / "fuzz" / f"fuzz_{target}"
    corpus = project / "fuzz" / "corpus" / target
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, LLVM_PROFILE_FILE=f"{folder}/%m.profraw", TMPDIR=folder)
        run = subprocess.run([program, "-runs=0", f"-artifact_prefix={folder}/", corpus], env=environment, capture_output=True, text=True)
        if run.returncode != 0:
            sys.exit(f"coverage_floor.py: {target} does not get through its corpus\n{run.stdout}{run.stderr}")
        raw = list(pathlib.Path(folder).glob("*.profraw"))
        data = f"{folder}/profile"
        subprocess.run(["llvm-profdata", "merge", "-sparse", "-o", data, *raw], check=True)
        report = subprocess.run(
            ["llvm-cov", "export", "-format=lcov", f"-instr-profile={data}", build / "libdov0610.so", "-object", program],
            check=True, capture_output=True, text=True).stdout
    result = {}
    for line in report.splitlines():
        if line.startswith("SF:"):
            found = re.search(r"(?:^|/)(src/.*)", line[3:])
            lines = result.setdefault(found.group(1), {}) if found else {}
        elif line.startswith("DA:"):
            number, count = line[3:].split(",")[:2]
            lines[int(number)] = lines.get(int(number), 0) + int(count)
    return result


def main():
    project, build = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    sources = {str(path.relative_to(project)): path.read_text() for path in project.glob("src/*/*.cpp")}
    targets = sys.argv[3:] or sorted(path.name for path in (project / "fuzz" / "corpus").iterdir())
    failed = False
    for target in targets:
        named = re.findall(r"^// Functions: (.*)$", (project / "fuzz" / f"{target}.cpp").read_text(), re.MULTILINE)
        if not named:
            sys.exit(f"coverage_floor.py: {target} names no functions")
        files = sorted({file_of(function, sources) for function in " ".join(named).split()})
        lines = lines_by_file(project, build, target)
        counts = {file: lines.get(file, {}) for file in files}
        if not all(counts.values()):
            sys.exit(f"coverage_floor.py: {target}: nothing known of {[file for file in files if not counts[file]]}")
        number = sum(len(count) for count in counts.values())
        covered = sum(1 for count in counts.values() for hits in count.values() if hits > 0)
        percent = 100.0 * covered / number
        print(f"{target:20} {percent:6.1f} % of {number} lines")
        if percent < FLOOR:
            failed = True
            for file, count in counts.items():
                missed = [str(line) for line, hits in sorted(count.items()) if hits == 0]
                if missed:
                    print(f"    not reached: {file}:{','.join(missed)}")
    if failed:
        sys.exit(f"coverage_floor.py: below the floor of {FLOOR} %")


if __name__ == "__main__":
    main()

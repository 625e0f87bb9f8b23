#!/usr/bin/env python3
"""coverage.py [--list] [--tests REGEX]: what the tests execute of the shipped code.

Builds the `coverage` preset, runs the tests of the shipped rooms, and prints for each file of
adapter/, matcher/ and platform/ how many lines and branches (each condition true and false) were
executed. --list names those that were not. --tests chooses other tests by their names. The report
lies in build/coverage/coverage.json. Needs clang and llvm 14.
"""

import argparse
import json
import os
import pathlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "coverage"
ROOMS = ("adapter/", "matcher/", "platform/")
# Tests that reach the shipped rooms as libraries; the tools' tests run whole programs instead.
ROOM_TESTS = (r"^(orl_(triangulation|features|table_first_use|matching|matching_allocation|"
              r"matcher_api|first_match|wiped_memory|finger_matcher|platform|adapter|"
              r"adapter_matching|adapter_memory|engine_log)_tests|"
              r"fuzz_(finger_record|match_pair|delaunay_mesh|bir_extraction|engine_states))$")


def run(command, **options):
    return subprocess.run(command, cwd=ROOT, check=True, **options)


def tests_chosen(pattern):
    """Names and programs of the tests whose names match."""
    listed = run(["ctest", "--test-dir", str(BUILD), "--show-only=json-v1", "-R", pattern],
                 stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    if not listed.startswith(b"{"):  # no list for what is no regular expression
        return []
    return [(test["name"], test.get("command", [None])[0]) for test in json.loads(listed)["tests"]]


def profile_of(pattern):
    """Runs the tests and returns their merged profile and the programs that made it."""
    run(["cmake", "--preset", "coverage"], stdout=subprocess.DEVNULL)
    names = [name for name, _ in tests_chosen(pattern)]
    if not names:
        print(f"coverage.py: no test's name matches {pattern!r}", file=sys.stderr)
        sys.exit(2)
    run(["cmake", "--build", "--preset", "coverage", "--target", *names])
    profiles = BUILD / "profiles"
    shutil.rmtree(profiles, ignore_errors=True)
    environment = dict(os.environ, LLVM_PROFILE_FILE=str(profiles / "%m-%p.profraw"))
    run(["ctest", "--test-dir", str(BUILD), "-R", pattern, "--output-on-failure"],
        env=environment)
    merged = BUILD / "coverage.profdata"
    run(["llvm-profdata-14", "merge", "-sparse", "-o", str(merged),
         *map(str, profiles.glob("*.profraw"))])
    programs = [program for _, program in tests_chosen(pattern)]
    modules = [str(module) for module in sorted((BUILD / "tests").glob("*_probe.so"))]
    return merged, programs + modules


def export(merged, programs):
    """The report of llvm-cov as a dictionary, one entry a file of the shipped rooms."""
    objects = [word for program in programs[1:] for word in ("-object", program)]
    output = run(["llvm-cov-14", "export", "-format=text", "-instr-profile", str(merged),
                  programs[0], *objects], stdout=subprocess.PIPE).stdout
    (BUILD / "coverage.json").write_bytes(output)
    files = {}
    for entry in json.loads(output)["data"][0]["files"]:
        name = os.path.relpath(entry["filename"], ROOT)
        if name.startswith(ROOMS):
            files[name] = entry
    return files


def lines_of(entry):
    """Line number to count, for each line that holds code, from the report's segments.

    A segment (line, column, count, has count, begins region, is gap) holds to the next one; a line
    counts what its regions count at most, as the report's own summary does.
    """
    counts = {}
    wrapped = None
    by_line = {}
    for segment in entry["segments"]:
        by_line.setdefault(segment[0], []).append(segment)
    if not by_line:
        return counts
    for line in range(min(by_line), max(by_line) + 1):
        here = by_line.get(line, [])
        starts = [s for s in here if s[3] and s[4] and not s[5]]
        mapped = bool(starts) or (wrapped is not None and wrapped[3])
        if here and not here[0][3] and here[0][4] and not starts:
            mapped = False  # a region that was skipped
        if mapped:
            count = wrapped[2] if wrapped is not None and wrapped[3] else 0
            counts[line] = max([count] + [s[2] for s in starts])
        if here:
            wrapped = here[-1]
    return counts


def branches_of(entries):
    """(line, column, outcome) to count; a template's instances are added up."""
    counts = {}
    for entry in entries:
        for branch in entry.get("branches", []):
            line, column, _, _, taken, not_taken = branch[:6]
            for outcome, count in ((True, taken), (False, not_taken)):
                key = (line, column, outcome)
                counts[key] = counts.get(key, 0) + count
    return counts


def share(reached, total):
    return f"{reached:5d}/{total:<5d} {100 * reached / total if total else 100:6.1f} %"


def print_table(files, list_missing):
    totals = {}
    print(f"{'file':50s} {'lines':>19s} {'branches':>20s}")
    for name in sorted(files):
        lines = lines_of(files[name])
        branches = branches_of([files[name]])
        figures = (sum(c > 0 for c in lines.values()), len(lines),
                   sum(c > 0 for c in branches.values()), len(branches))
        print(f"{name:50s} {share(*figures[:2])}  {share(*figures[2:])}")
        for room in (name[:name.rindex('/')], "all"):
            totals[room] = [a + b for a, b in zip(totals.get(room, [0] * 4), figures)]
        if list_missing:
            source = (ROOT / name).read_text().splitlines()
            for line in sorted(line for line, count in lines.items() if count == 0):
                print(f"    line {line}: {source[line - 1].strip()}")
            for (line, column, outcome), count in sorted(branches.items()):
                if count == 0:
                    print(f"    branch {line}:{column} never {str(outcome).lower()}: "
                          f"{source[line - 1].strip()}")
    tracked = run(["git", "ls-files", *ROOMS], stdout=subprocess.PIPE, text=True).stdout.split()
    for name in sorted(set(tracked) - set(files)):
        if name.endswith(".cpp"):
            print(f"{name:50s} not in the programs that ran")
    for room in sorted(totals):
        print(f"{room:50s} {share(*totals[room][:2])}  {share(*totals[room][2:])}")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--list", action="store_true", help="name what was not executed")
    parser.add_argument("--tests", default=ROOM_TESTS, help="regular expression of test names")
    arguments = parser.parse_args()
    merged, programs = profile_of(arguments.tests)
    print_table(export(merged, programs), arguments.list)


if __name__ == "__main__":
    sys.exit(main())

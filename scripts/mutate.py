#!/usr/bin/env python3
"""mutate.py [--rooms ROOM...] [--files REGEX] [--count N | --survivors] [--seed N] [--list]

Do the tests notice a changed program?

Changes one token of the shipped code at a time (a limit by one, < to <=, && to ||, two arguments
swapped, a statement dropped ...), builds the tests of that room and runs them. A change that no test
notices is a survivor: it wants a new test, or it changes nothing that can be seen, and then a line
with the reason in scripts/equivalent_mutations.txt.

The work is done in a copy of the sources, build/mutation/tree; results are appended to
build/mutation/results.jsonl, and changes that stand there are not tried again. The exit status is 0
only when nothing survived. Which changes are tried follows from the seed and the code.
"""

import argparse
import collections
import dataclasses
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutation"
TREE = WORK / "tree"
BUILD = WORK / "build"
RESULTS = WORK / "results.jsonl"
EQUIVALENTS = ROOT / "scripts" / "equivalent_mutations.txt"
# A change that makes a loop endless ends after this many times what the test takes, and some more.
TIMES_AS_LONG = 5
MORE_SECONDS = 10
# What lets the compiler cache take files that use a precompiled header.
CACHE_SLOPPINESS = "pch_defines,time_macros,include_file_mtime,include_file_ctime"

# The test programs that cover a room, the quickest first; a fuzz target runs over its corpus.
TESTS = {
    "adapter": ["orl_adapter_tests", "fuzz_engine_states", "orl_adapter_matching_tests",
                "orl_adapter_memory_tests", "orl_engine_log_tests", "fuzz_bir_extraction"],
    "matcher/api": ["orl_matcher_api_tests", "orl_wiped_memory_tests", "orl_finger_matcher_tests",
                    "fuzz_finger_record"],
    "matcher/features": ["orl_features_tests", "orl_table_first_use_tests", "fuzz_finger_record",
                         "orl_matching_tests"],
    "matcher/matching": ["orl_matching_tests", "orl_matching_allocation_tests",
                         "orl_wiped_memory_tests", "fuzz_match_pair"],
    "matcher/triangulation": ["orl_triangulation_tests", "fuzz_delaunay_mesh"],
    "platform": ["orl_platform_tests", "orl_adapter_tests", "orl_engine_log_tests"],
}
# Not part of the Linux products, or a stand-in for tests.
LEFT_OUT = ("_windows.cpp", "_capture.cpp", "_capture.h")


@dataclasses.dataclass(frozen=True)
class Mutation:
    file: str
    line: int  # from 1
    before: str  # the whole line
    after: str
    occurrence: int = 1  # among equal changes of equal lines of the file

    def key(self):
        """Tells the change without its line number, which moves."""
        number = f" #{self.occurrence}" if self.occurrence > 1 else ""
        return f"{self.file}{number} | {self.before.strip()} | {self.after.strip()}"


def integer_changes(text):
    suffix = re.search(r"[uUlL]*$", text).group()
    value = int(text[:len(text) - len(suffix)].replace("'", ""), 0)
    return [f"{changed}{suffix}" for changed in (value + 1, value - 1) if changed >= 0]


def float_changes(text):
    suffix = "F" if text[-1] in "fF" else ""
    value = float(text.rstrip("fF").replace("'", ""))
    return [repr(value * 1.01 if value else 0.01) + suffix]


# Pattern of a token, and what it becomes. Binary operators stand between spaces, which tells them
# from template brackets, references and pointers.
TOKENS = [
    (r" <= ", lambda _: [" < "]), (r" < ", lambda _: [" <= "]),
    (r" >= ", lambda _: [" > "]), (r" > ", lambda _: [" >= "]),
    (r" == ", lambda _: [" != "]), (r" != ", lambda _: [" == "]),
    (r" && ", lambda _: [" || "]), (r" \|\| ", lambda _: [" && "]),
    (r" \+ ", lambda _: [" - "]), (r" - ", lambda _: [" + "]),
    (r" \* ", lambda _: [" / "]), (r" / ", lambda _: [" * "]), (r" % ", lambda _: [" / "]),
    (r" << ", lambda _: [" >> "]), (r" >> ", lambda _: [" << "]),
    (r" & ", lambda _: [" | "]), (r" \| ", lambda _: [" & "]), (r" \^ ", lambda _: [" | "]),
    (r" \+= ", lambda _: [" -= "]), (r" -= ", lambda _: [" += "]),
    (r"\+\+(?=\w)", lambda _: ["--"]), (r"--(?=\w)", lambda _: ["++"]),
    (r"!(?=[\w(])", lambda _: [""]),
    (r"\btrue\b", lambda _: ["false"]), (r"\bfalse\b", lambda _: ["true"]),
    (r"\bTRUE\b", lambda _: ["FALSE"]), (r"\bFALSE\b", lambda _: ["TRUE"]),
    (r"\bstd::min\b", lambda _: ["std::max"]), (r"\bstd::max\b", lambda _: ["std::min"]),
    (r"\bbreak;", lambda _: [";"]), (r"\bcontinue;", lambda _: [";"]),
    (r"(?<![\w.'])(?:\d[\d']*)?\.\d+[fF]?\b|(?<![\w.'])\d[\d']*\.\d*[fF]?(?!\w)", float_changes),
    (r"(?<![\w.'])(?:0[xX][0-9a-fA-F']+|\d[\d']*)[uUlL]*\b(?!\.)", integer_changes),
]
SIMPLE = r"[A-Za-z_][\w.]*(?:->\w+)*(?:\[\w+\])?(?:\(\))?"
TWO_ARGUMENTS = re.compile(rf"(?<=[(,] )({SIMPLE}), ({SIMPLE})(?=[,)])|"
                           rf"(?<=\()({SIMPLE}), ({SIMPLE})(?=[,)])")
# Functions whose two arguments may stand in either order.
COMMUTATIVE = re.compile(r"(?:std::min|std::max|_mm\d*_(?:and|or|xor|add|min|max|mul|mulhi|madd|cmpeq)"
                         r"_\w+)\($")
STATEMENT = re.compile(r"^\s+(?:(?:[A-Za-z_][\w:.>\-\[\]]*\(.*\))|"
                       r"(?:[A-Za-z_*][\w.>\-\[\]()]*(?: [+\-|&^]?=) .*)|(?:(?:\+\+|--).*)|"
                       r"(?:return;));$")
# Preprocessor, comments, and what only the compiler looks at.
SKIPPED_LINE = re.compile(r".*(__attribute__|ORL_FORMAT_ARGUMENTS)|"
                          r"^\s*(#|//|/\*|\* |\*/|static_assert|assert\(|using |namespace |template|return \{\};)")


def code_part(line):
    """The line with strings, characters and a trailing comment blanked, so that columns stay."""
    blank = lambda match: match.group()[0] + "~" * (len(match.group()) - 2) + match.group()[-1]
    line = re.sub(r'"(?:[^"\\]|\\.)*"', blank, line)
    line = re.sub(r"(?<!\w)'(?:[^'\\]|\\.)'", blank, line)
    return re.sub(r"//.*|/\*.*", lambda match: " " * len(match.group()), line)


def mutations_of(name):
    found = []
    seen = collections.Counter()
    declaring = False  # within a static_assert or assert of several lines
    for number, line in enumerate((ROOT / name).read_text().splitlines(), 1):
        code = code_part(line)
        if declaring or SKIPPED_LINE.match(code):
            begins = declaring or re.match(r"\s*(static_assert|assert\()", code)
            declaring = bool(begins) and ";" not in code
            continue
        changes = []
        for pattern, replacements in TOKENS:
            for match in re.finditer(pattern, code):
                for text in replacements(match.group()):
                    changes.append(line[:match.start()] + text + line[match.end():])
        for match in TWO_ARGUMENTS.finditer(code):
            first, second = [group for group in match.groups() if group]
            if first != second and not COMMUTATIVE.search(code[:match.start()]):
                changes.append(f"{line[:match.start()]}{second}, {first}{line[match.end():]}")
        if STATEMENT.match(code) and code.count("(") == code.count(")"):
            changes.append(re.match(r"\s*", line).group() + ";")
        for after in changes:
            seen[line, after] += 1
            found.append(Mutation(name, number, line, after, seen[line, after]))
    return found


def files_of(rooms, pattern):
    tracked = subprocess.run(["git", "ls-files", *rooms], cwd=ROOT, check=True,
                             stdout=subprocess.PIPE, text=True).stdout.split()
    return [name for name in tracked
            if name.endswith((".cpp", ".h")) and not name.endswith(LEFT_OUT)
            and re.search(pattern, name)]


def tests_of(name):
    return TESTS[max((room for room in TESTS if name.startswith(room + "/")), key=len)]


def prepare_tree():
    """Copies the sources, without -Werror, since a change may leave something unused."""
    names = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, stdout=subprocess.PIPE,
                           text=True).stdout.splitlines()
    for name in names:
        source, target = ROOT / name, TREE / name
        if not source.is_file():
            continue
        text = source.read_bytes()
        if name == "cmake/project_options.cmake":
            text = text.replace(b" -Werror", b"")
        if not target.exists() or target.read_bytes() != text:
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(text)
            shutil.copymode(source, target)
    # Each change is undone again; the compiler cache spares the second build of the same text.
    launcher = shutil.which("ccache") or ""
    subprocess.run(["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=",
                    "-DCMAKE_C_COMPILER=gcc", "-DCMAKE_CXX_COMPILER=g++",
                    f"-DCMAKE_CXX_COMPILER_LAUNCHER={launcher}", "-DCMAKE_CXX_FLAGS=-O1 -w"],
                   check=True, stdout=subprocess.DEVNULL)


def build(target):
    environment = dict(os.environ, CCACHE_SLOPPINESS=CACHE_SLOPPINESS)
    return subprocess.run(["ninja", "-C", BUILD, "-j", "2", target], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, env=environment)


def passes(target, seconds=None):
    """Runs one test program; False when it fails, crashes or does not end in that time."""
    program = BUILD / ("fuzz" if target.startswith("fuzz_") else "tests") / target
    command = [program]
    if target.startswith("fuzz_"):
        command.append(f"fuzz/corpus/{target[len('fuzz_'):]}")
    else:
        command += ["--gtest_fail_fast", "--gtest_brief=1"]
    environment = dict(os.environ)
    library = BUILD / "lib" / "liborl_finger_matcher.so"
    environment["ORL_FINGER_MATCHER_LIBRARY"] = str(library)
    try:
        return subprocess.run(command, cwd=TREE, env=environment, timeout=seconds,
                              stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode == 0
    except subprocess.TimeoutExpired:
        return False


def try_mutation(mutation, seconds_of):
    """'killed by TEST', 'not built' or 'SURVIVED'."""
    target_file = TREE / mutation.file
    original = target_file.read_text()
    lines = original.splitlines()
    lines[mutation.line - 1] = mutation.after
    target_file.write_text("\n".join(lines) + "\n")
    try:
        for test in tests_of(mutation.file):
            if build(test).returncode != 0:
                return "not built"
            if not passes(test, seconds_of[test]):
                return f"killed by {test}"
        return "SURVIVED"
    finally:
        target_file.write_text(original)


def equivalents():
    """Key to reason, from lines 'file | before | after | reason'."""
    known = {}
    if EQUIVALENTS.exists():
        for line in EQUIVALENTS.read_text().splitlines():
            parts = line.split(" | ")
            if line and not line.startswith("#"):
                known[" | ".join(parts[:-1])] = parts[-1]
    return known


def earlier_results():
    if not RESULTS.exists():
        return {}
    entries = [json.loads(line) for line in RESULTS.read_text().splitlines()]
    return {entry["key"]: entry["outcome"] for entry in entries}


def check_baseline(rooms):
    """How long each test may take, from how long it takes without any change."""
    seconds_of = {}
    for test in dict.fromkeys(test for room in rooms for test in TESTS[room]):
        built = build(test)
        started = time.monotonic()
        if built.returncode != 0 or not passes(test):
            sys.exit(f"{test} fails without any change:\n{built.stdout[-2000:]}")
        seconds_of[test] = TIMES_AS_LONG * (time.monotonic() - started) + MORE_SECONDS
    return seconds_of


def run(chosen, seconds_of, known, done):
    tally = collections.Counter()
    for number, mutation in enumerate(chosen, 1):
        key = mutation.key()
        if key in known:
            outcome = "equivalent: " + known[key]
        elif done.get(key, "SURVIVED") != "SURVIVED":
            outcome = done[key]
        else:
            started = time.monotonic()
            outcome = try_mutation(mutation, seconds_of)
            with RESULTS.open("a") as results:
                results.write(json.dumps({"key": key, "outcome": outcome,
                                          "seconds": round(time.monotonic() - started, 1)}) + "\n")
        tally[re.split(r" by |:", outcome)[0]] += 1
        print(f"{number}/{len(chosen)} {outcome}\n    {mutation.file}:{mutation.line}: "
              f"{mutation.before.strip()}\n        ->  {mutation.after.strip()}", flush=True)
    print(", ".join(f"{count} {outcome}" for outcome, count in sorted(tally.items())))
    return tally["SURVIVED"] == 0


def positive(text):
    if not re.fullmatch("[1-9][0-9]*", text):
        raise argparse.ArgumentTypeError(f"not a positive whole number: {text!r}")
    return int(text)


def regular_expression(text):
    try:
        re.compile(text)
    except re.error as error:
        raise argparse.ArgumentTypeError(f"not a regular expression: {text!r} ({error})")
    return text


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rooms", nargs="+", default=["adapter", "matcher/api"], choices=TESTS)
    parser.add_argument("--files", default="", metavar="REGEX", type=regular_expression,
                        help="only files of such names")
    parser.add_argument("--count", type=positive, default=100, help="how many changes to try")
    parser.add_argument("--survivors", action="store_true",
                        help="only those that survived an earlier run and have no reason yet")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--list", action="store_true", help="only tell which would be tried")
    arguments = parser.parse_args()
    files = files_of(arguments.rooms, arguments.files)
    if not files:
        parser.error(f"no file of {', '.join(arguments.rooms)} has such a name: {arguments.files!r}")
    possible = [mutation for name in files for mutation in mutations_of(name)]
    if arguments.survivors:
        done, known = earlier_results(), equivalents()
        possible = [mutation for mutation in possible
                    if done.get(mutation.key()) == "SURVIVED" and mutation.key() not in known]
        arguments.count = len(possible)
    chosen = random.Random(arguments.seed).sample(possible, min(arguments.count, len(possible)))
    print(f"{len(possible)} changes possible in {', '.join(arguments.rooms)}; "
          f"{len(chosen)} chosen by seed {arguments.seed}")
    if arguments.list:
        for mutation in chosen:
            print(f"{mutation.file}:{mutation.line}\n    {mutation.before.strip()}\n"
                  f"    {mutation.after.strip()}")
        return 0
    prepare_tree()
    seconds_of = check_baseline(arguments.rooms)
    return 0 if run(chosen, seconds_of, equivalents(), earlier_results()) else 1


if __name__ == "__main__":
    sys.exit(main())

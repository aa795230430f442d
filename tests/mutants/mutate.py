#!/usr/bin/env python3
"""Tests the tests: applies small changes to a copy of the sources, builds, runs the tests, and lists
the changes that nobody noticed. See README.md beside this file for the tables' form.

Exit status: 0 when every change was noticed, 1 when some were not, 2 when a table does not fit the
sources (a text that is not found once, a change that does not compile) or the tests fail unchanged.
"""

import argparse
import collections
import re
import shutil
import subprocess
import sys
import time
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
TABLES = TOP / "tests" / "mutants"
WORK = TOP / "build" / "mutate"
TREE, BUILD = WORK / "tree", WORK / "build"
TEST_SECONDS = 120  # a change that makes a test wait this long counts as noticed

Mutant = collections.namedtuple("Mutant", "room kind what file old new place")


class TableError(Exception):
    """A table that cannot be applied; the text names the place."""


def read_table(table):
    """The changes of one file: "## FILE", then entries "kind: what", "- old" and "+ new" lines."""
    file, entry = None, None
    mutants = []

    def finish():
        if entry is not None:
            if file is None or not entry["old"]:
                raise TableError(f"{entry['place']}: needs a file above and a line that begins with -")
            mutants.append(Mutant(table.stem, entry["kind"], entry["what"], file,
                                  "\n".join(entry["old"]), "\n".join(entry["new"]),
                                  entry["place"]))

    for number, line in enumerate(table.read_text().splitlines(), 1):
        place = f"{table.name}:{number}"
        if line.startswith("## "):
            finish()
            file, entry = line[3:].strip(), None
        elif line.startswith(("- ", "+ ")) or line in ("-", "+"):
            if entry is None:
                raise TableError(f"{place}: a text without an entry above")
            entry["old" if line[0] == "-" else "new"].append(line[2:])
        elif match := re.fullmatch(r"(\w+): (.+)", line):
            finish()
            entry = {"kind": match[1], "what": match[2], "old": [], "new": [], "place": place}
        elif line.strip() and not line.startswith("#"):
            raise TableError(f"{place}: neither file, entry nor text: {line}")
    finish()
    return mutants


def find_text(source, text, place):
    """Where `text` stands in `source`, from the start of a word on and however it is broken into
    lines: it must stand there once."""
    pattern = r"(?<!\w)" * text[0].isalnum() + r"\s+".join(re.escape(word) for word in text.split())
    found = list(re.finditer(pattern, source))
    if len(found) != 1:
        raise TableError(f"{place}: the text stands {len(found)} times in the file, not once")
    return found[0].span()


def change(source, mutant):
    first, end = find_text(source, mutant.old, mutant.place)
    return source[:first] + mutant.new + source[end:]


def check_tables(mutants):
    """All places that do not fit, not just the first."""
    problems = []
    for mutant in mutants:
        try:
            change((TOP / mutant.file).read_text(), mutant)
        except (TableError, OSError) as problem:
            problems.append(str(problem))
    return problems


def copy_sources():
    """The tracked files as they are now; unchanged ones keep their times, so builds stay short."""
    listed = subprocess.run(["git", "ls-files", "-z"], cwd=TOP, check=True, capture_output=True)
    names = {name for name in listed.stdout.decode().split("\0") if name}
    if TREE.exists():
        for old in [path for path in TREE.rglob("*") if path.is_file()]:
            if str(old.relative_to(TREE)) not in names:
                old.unlink()
    for name in names:
        source, copy = TOP / name, TREE / name
        if source.exists() and not (copy.exists() and copy.read_bytes() == source.read_bytes()):
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, copy)


def run(command, log):
    with open(WORK / log, "ab") as output:
        return subprocess.run(command, stdout=output, stderr=subprocess.STDOUT).returncode == 0


def configure():
    return run(["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                "-DCMAKE_CXX_FLAGS_DEBUG=-O1", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"], "build.log")


def build(target="all"):
    return run(["cmake", "--build", BUILD, "--target", target], "build.log")


def tests_pass(*which):
    return run(["ctest", "--test-dir", BUILD, "--stop-on-failure", "--timeout", str(TEST_SECONDS),
                "-j2", "--no-tests=error", *which], "tests.log")


def judge(mutant):
    """noticed, UNNOTICED, or why it could not be tried."""
    copy = TREE / mutant.file
    original = copy.read_text()
    try:
        copy.write_text(change(original, mutant))
        # The room's own tests first: they are built and notice soonest.
        for target, tests in ((mutant.room + "Tests", "-L"), ("all", "-LE")):
            if not build(target):
                return "does not compile"
            if not tests_pass(tests, mutant.room):
                return "noticed"
        return "UNNOTICED"
    finally:
        copy.write_text(original)


def show_shares(results, name, key):
    print(f"\n{name:<24}{'changes':>8}{'noticed':>9}{'share':>8}")
    groups = collections.defaultdict(list)
    for mutant, verdict in results:
        groups[key(mutant)].append(verdict == "noticed")
    for group, noticed in [*sorted(groups.items()), ("all", [v == "noticed" for _, v in results])]:
        print(f"{group:<24}{len(noticed):>8}{sum(noticed):>9}{sum(noticed) / len(noticed):>8.0%}")


def choose(options):
    mutants = [mutant for table in sorted(TABLES.glob("*.txt")) for mutant in read_table(table)]
    wanted = [mutant for mutant in mutants
              if options.room in (None, mutant.room) and options.kind in (None, mutant.kind)
              and (options.find is None or options.find in f"{mutant.what} {mutant.file}")]
    if not wanted:
        raise TableError("no change fits; see --list")
    return wanted


def main():
    parser = argparse.ArgumentParser(prog="scripts/mutate", description=__doc__.splitlines()[0])
    parser.add_argument("--room", help="only the table tests/mutants/ROOM.txt")
    parser.add_argument("--kind", help="only changes of this kind")
    parser.add_argument("--find", metavar="TEXT", help="only changes whose description or file holds TEXT")
    parser.add_argument("--list", action="store_true", help="check the tables and list the changes")
    options = parser.parse_args()
    try:
        mutants = choose(options)
        problems = check_tables(mutants)
    except TableError as problem:
        problems = [str(problem)]
    if problems:
        print("\n".join(problems), file=sys.stderr)
        return 2
    if options.list:
        for mutant in mutants:
            print(f"{mutant.room:<12}{mutant.kind:<12}{mutant.file}: {mutant.what}")
        print(f"{len(mutants)} changes")
        return 0

    WORK.mkdir(parents=True, exist_ok=True)
    copy_sources()
    if not (configure() and build() and tests_pass()):
        print(f"the unchanged sources do not build and pass; see {WORK}/*.log", file=sys.stderr)
        return 2
    results = []
    for number, mutant in enumerate(mutants, 1):
        start = time.monotonic()
        verdict = judge(mutant)
        results.append((mutant, verdict))
        print(f"{number}/{len(mutants)} {verdict:<17}{time.monotonic() - start:5.0f} s  "
              f"{mutant.place} {mutant.what}", flush=True)
    show_shares(results, "room", lambda mutant: mutant.room)
    show_shares(results, "kind", lambda mutant: mutant.kind)
    for mutant, verdict in results:
        if verdict != "noticed":
            print(f"{verdict}: {mutant.place} {mutant.file}: {mutant.what}")
    verdicts = {verdict for _, verdict in results}
    return 0 if verdicts == {"noticed"} else 2 if "does not compile" in verdicts else 1


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Tests the tests: applies small changes to a copy of the sources, builds, runs the tests, and lists
the changes that nobody noticed. See README.md beside this file for the tables' form.

Exit status: 0 when every change was noticed, 1 when some were not, 2 when a table does not fit the
sources (a text that is not found once, a change that does not compile) or the tests fail unchanged.
"""

import argparse
import collections
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
TABLES = TOP / "tests" / "mutants"
WORK = TOP / "build" / "mutate"
TREE, BUILD = WORK / "tree", WORK / "build"
VERDICTS = WORK / "verdicts.jsonl"
TEST_SECONDS = 1200  # of a room's tests with nothing changed, at most
patience = {}  # by room: the seconds after which its tests count as having noticed
ROOMS = re.findall(r"^add_room_tests\((\w+)Tests", (TOP / "tests" / "CMakeLists.txt").read_text(), re.M)

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


def run(command, log, seconds=None):
    """Whether the command ends well in time; what it started ends with it."""
    with open(WORK / log, "ab") as output:
        process = subprocess.Popen(command, stdout=output, stderr=subprocess.STDOUT,
                                   cwd=BUILD if BUILD.exists() else WORK, start_new_session=True)
        try:
            return process.wait(seconds) == 0
        except subprocess.TimeoutExpired:
            return False
        finally:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()


def configure():
    linker = ["-DCMAKE_%s_LINKER_FLAGS=-fuse-ld=lld" % kind for kind in ("EXE", "SHARED", "MODULE")]
    return run(["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                "-DCMAKE_CXX_FLAGS_DEBUG=-O1", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
                *(linker if shutil.which("ld.lld") else [])], "build.log")


def build(*targets):
    return run(["cmake", "--build", BUILD, "--target", *targets], "build.log")


def run_tests(room):
    """The room's tests in one process, up to the first that fails; its name, or None."""
    log = WORK / "tests.log"
    start = log.stat().st_size if log.exists() else 0
    began = time.monotonic()
    seconds = patience.get(room, TEST_SECONDS)
    if run([BUILD / "bin" / f"{room}Tests", "--gtest_fail_fast"], log.name, seconds):
        patience.setdefault(room, 30 + 5 * (time.monotonic() - began))
        return None
    with open(log, "rb") as output:
        output.seek(start)
        text = output.read().decode(errors="replace")
    failed = re.findall(r"^\[  FAILED  \] ([\w./]+)", text, re.M)
    begun = re.findall(r"^\[ RUN      \] (\S+)", text, re.M)  # the last one did not end
    return failed[0] if failed else begun[-1] if begun else room


def judge(mutant):
    """noticed and the test that did, UNNOTICED, or why it could not be tried."""
    copy = TREE / mutant.file
    original = copy.read_text()
    try:
        copy.write_text(change(original, mutant))
        # The room's own tests first: they are built and notice soonest.
        for room in sorted(ROOMS, key=lambda room: room != mutant.room):
            if not build(f"{room}Tests"):
                return "does not compile", ""
            if test := run_tests(room):
                return "noticed", test
        return "UNNOTICED", ""
    finally:
        copy.write_text(original)


def read_verdicts():
    """What earlier runs noticed, by the change's text."""
    if not VERDICTS.exists():
        return {}
    kept = [json.loads(line) for line in VERDICTS.read_text().splitlines()]
    return {tuple(verdict["change"]): verdict for verdict in kept}


def keep_verdict(mutant, verdict, test):
    with open(VERDICTS, "a") as output:
        json.dump({"change": identify(mutant), "verdict": verdict, "test": test,
                   "what": mutant.what}, output)
        output.write("\n")


def identify(mutant):
    return mutant.file, mutant.old, mutant.new


def show_shares(results, name, key):
    print(f"\n{name:<24}{'changes':>8}{'noticed':>9}{'share':>8}")
    groups = collections.defaultdict(list)
    for mutant, verdict in results:
        groups[key(mutant)].append(verdict == "noticed")
    for group, noticed in [*sorted(groups.items()), ("all", [v == "noticed" for _, v in results])]:
        print(f"{group:<24}{len(noticed):>8}{sum(noticed):>9}{sum(noticed) / len(noticed):>8.0%}")


def choose(options):
    rooms = options.room or sorted(table.stem for table in TABLES.glob("*.txt"))
    mutants = [mutant for room in rooms for mutant in read_table(TABLES / f"{room}.txt")]
    wanted = [mutant for mutant in mutants
              if options.kind in (None, mutant.kind)
              and (options.find is None or options.find in f"{mutant.what} {mutant.file}")]
    if not wanted:
        raise TableError("no change fits; see --list")
    return sorted(wanted, key=lambda mutant: mutant.file.endswith(".h"))  # those take longest


def main():
    parser = argparse.ArgumentParser(prog="scripts/mutate", description=__doc__.splitlines()[0])
    parser.add_argument("--room", nargs="+", choices=[table.stem for table in TABLES.glob("*.txt")],
                        help="only the tables tests/mutants/ROOM.txt, in this order")
    parser.add_argument("--kind", help="only changes of this kind")
    parser.add_argument("--find", metavar="TEXT", help="only changes whose description or file holds TEXT")
    parser.add_argument("--resume", action="store_true",
                        help="do not try again what an earlier run saw noticed")
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

    # A job in the background ignores these, and so would the programs that tests send them to.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    signal.signal(signal.SIGQUIT, signal.SIG_DFL)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(2))  # leaves the copy as it was
    WORK.mkdir(parents=True, exist_ok=True)
    copy_sources()
    if not (configure() and build(*[f"{room}Tests" for room in ROOMS])
            and not any([run_tests(room) for room in ROOMS])):
        print(f"the unchanged sources do not build and pass; see {WORK}/*.log", file=sys.stderr)
        return 2
    known = read_verdicts() if options.resume else {}
    results = []
    for number, mutant in enumerate(mutants, 1):
        earlier = known.get(identify(mutant))
        if earlier is not None and earlier["verdict"] == "noticed":
            results.append((mutant, "noticed"))
            continue
        start = time.monotonic()
        verdict, test = judge(mutant)
        keep_verdict(mutant, verdict, test)
        results.append((mutant, verdict))
        print(f"{number}/{len(mutants)} {verdict:<17}{time.monotonic() - start:5.0f} s  "
              f"{mutant.place} {mutant.what}{test and f'  [{test}]'}", flush=True)
    show_shares(results, "room", lambda mutant: mutant.room)
    show_shares(results, "kind", lambda mutant: mutant.kind)
    for mutant, verdict in results:
        if verdict != "noticed":
            print(f"{verdict}: {mutant.place} {mutant.file}: {mutant.what}")
    verdicts = {verdict for _, verdict in results}
    return 0 if verdicts == {"noticed"} else 2 if "does not compile" in verdicts else 1


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Spoils one rule of the program at a time and looks whether a test notices.

    tests/mutation/run.py [--folder FOLDER] [--jobs N] [WORD...]
    tests/mutation/run.py --check
    tests/mutation/run.py --list [WORD...]

Each change in tests/mutation/changes.txt is made in a copy of the tree, never in the checkout: the named test
programs are built there and run, and the change is put back. WORDs narrow the changes to those whose file or
title holds one of them.

--folder FOLDER  where the copy and its build go; kept, so that the next run builds only what differs. A
                 temporary folder otherwise, which goes at the end.
--jobs N         how many compilers and tests at a time; 2 by default
--check          only looks whether every change still fits the checkout, in a moment
--list           prints the changes

Ends with 0 when every change was noticed, 1 when one survived, and 2 when the table does not fit the tree, a
change does not build, or the tree fails without any.
"""

import argparse
import dataclasses
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
TOP = HERE.parent.parent
TABLE = HERE / "changes.txt"
# A change may turn a loop endless or let it fill the memory.
TEST_SECONDS = 120
BUILD_SECONDS = 1800
MEMORY_BYTES = 8 << 30
ALL_NOTICED, SURVIVED, BROKEN = 0, 1, 2


class Fault(Exception):
    """The table, or the tree, is not fit to be tried."""


@dataclasses.dataclass
class Change:
    title: str
    line: int
    file: str = ""
    tests: list[str] = dataclasses.field(default_factory=list)
    old: list[str] = dataclasses.field(default_factory=list)
    new: list[str] = dataclasses.field(default_factory=list)

    @property
    def old_text(self):
        return "\n".join(self.old)

    @property
    def new_text(self):
        return "\n".join(self.new)

    def faults(self, top):
        """What keeps the change from being made to the tree at `top`."""
        source = top / self.file
        if not self.file or not self.tests or not self.old:
            yield "lacks a file, a test or an old text"
        elif not source.is_file():
            yield f"{self.file} is not there"
        else:
            count = source.read_text(encoding="utf-8").count(self.old_text)
            if count != 1:
                yield f"its old text occurs {count} times in {self.file}"
        if self.old == self.new:
            yield "changes nothing"
        for test in self.tests:
            if not (top / "tests" / "unit" / f"{test}.cpp").is_file():
                yield f"there is no test program {test}"


def read_table():
    """The changes in the order of the table; its head says how it is written."""
    changes = []
    for number, line in enumerate(TABLE.read_text(encoding="utf-8").splitlines(), 1):
        kind, text = line[:2], line[2:]
        if not line.strip() or line.startswith("#"):
            continue
        if kind == "= ":
            changes.append(Change(text, number))
        elif not changes:
            raise Fault(f"{TABLE.name}:{number}: stands before the first change")
        elif kind == "@ ":
            changes[-1].file, *changes[-1].tests = text.split()
        elif kind == "- ":
            changes[-1].old.append(text)
        elif kind == "+ ":
            changes[-1].new.append(text)
        else:
            raise Fault(f"{TABLE.name}:{number}: is neither a title, a place, an old nor a new line")
    return changes


def check_table(changes, top):
    faults = [f"{TABLE.name}:{change.line}: {change.title}: {fault}"
              for change in changes for fault in change.faults(top)]
    titles = [change.title for change in changes]
    faults += [f"{TABLE.name}: the title stands twice: {title}" for title in sorted(set(titles))
               if titles.count(title) > 1]
    if not changes:
        faults.append(f"{TABLE.name}: holds no change")
    if faults:
        raise Fault("\n".join(faults))


def git(*arguments):
    return subprocess.run(["git", "-C", TOP, *arguments], check=False, capture_output=True)


def refuse_inside_checkout(folder):
    """The next copy would take a folder in it for a part of the project, unless it is ignored."""
    if folder == TOP or (TOP in folder.parents and git("check-ignore", "-q", folder).returncode != 0):
        raise Fault(f"{folder} lies in the checkout; take one outside, or below build")


def copy_tree(tree):
    """Makes `tree` equal to the checkout, with what is not committed; equal files keep their times."""
    listed = git("ls-files", "-z", "--cached", "--others", "--exclude-standard")
    if listed.returncode != 0:
        raise Fault(f"no checkout: {listed.stderr.decode(errors='replace').strip()}")
    names = {name for name in os.fsdecode(listed.stdout).split("\0") if (TOP / name).is_file()}
    for name in names:
        source, target = TOP / name, tree / name
        if target.is_file() and target.read_bytes() == source.read_bytes():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(source, target)
    for target in [path for path in tree.rglob("*") if path.is_file()]:
        if str(target.relative_to(tree)) not in names:
            target.unlink()


class Bench:
    """The copy of the tree and its build."""

    def __init__(self, folder, jobs):
        self.tree = folder / "tree"
        self.build_folder = folder / "build"
        self.jobs = jobs

    def configure(self):
        # Built to be made fast, not to be debugged.
        options = {"CMAKE_BUILD_TYPE": "Debug", "CMAKE_CXX_FLAGS_DEBUG": "-O0 -g0"}
        if shutil.which("ccache"):
            options["CMAKE_CXX_COMPILER_LAUNCHER"] = "ccache"
        done, words = self.run(["cmake", "-S", self.tree, "-B", self.build_folder, "-G", "Ninja",
                                *(f"-D{name}={value}" for name, value in options.items())], BUILD_SECONDS)
        if not done:
            raise Fault("the tree cannot be configured:\n" + tail(words))

    def build(self, tests):
        return self.run(["cmake", "--build", self.build_folder, "--parallel", str(self.jobs), "--target",
                         *tests], BUILD_SECONDS)

    def test(self, tests):
        """Runs the programs as CTest does, so in their own environment."""
        return self.run(["ctest", "--test-dir", self.build_folder, "--output-on-failure",
                         "--no-tests=error", "--parallel", str(self.jobs),
                         "--tests-regex", f"^({'|'.join(tests)})$"], TEST_SECONDS * len(tests))

    @staticmethod
    def run(command, seconds):
        """Whether the command ended well, and all that it said."""
        def limit_memory():
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY_BYTES, MEMORY_BYTES))

        # One group, so that no test of a stopped run is left behind.
        with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              errors="replace", start_new_session=True, preexec_fn=limit_memory) as process:
            try:
                words, _ = process.communicate(timeout=seconds)
            except BaseException as reason:
                os.killpg(process.pid, 9)
                words, _ = process.communicate()
                if not isinstance(reason, subprocess.TimeoutExpired):
                    raise
                return False, words
            return process.returncode == 0, words

    def check_unchanged(self, changes):
        tests = sorted({test for change in changes for test in change.tests})
        built, words = self.build(tests)
        if not built:
            raise Fault("unchanged tree fails: it does not build\n" + tail(words))
        passed, words = self.test(tests)
        if not passed:
            raise Fault("unchanged tree fails: " + noticed_by(words) + "\n" + tail(words))
        return len(tests)

    def try_change(self, change):
        """"noticed", "SURVIVED" or "does not build", and what tells more of it."""
        source = self.tree / change.file
        whole = source.read_text(encoding="utf-8")
        try:
            source.write_text(whole.replace(change.old_text, change.new_text), encoding="utf-8")
            built, words = self.build(change.tests)
            if not built:
                return "does not build", tail(words)
            passed, words = self.test(change.tests)
            return ("SURVIVED", " ".join(change.tests)) if passed else ("noticed", noticed_by(words))
        finally:
            source.write_text(whole, encoding="utf-8")


def tail(words):
    return "\n".join(words.splitlines()[-30:])


def noticed_by(words):
    """The first test function that failed, else the program and how it ended."""
    function = re.search(r"^FAIL!  : (\S+?\(.*?\))", words, re.MULTILINE)
    program = re.search(r"^\s*\d+ - (\S+) \((.*)\)", words, re.MULTILINE)
    if function:
        return function.group(1)
    return f"{program.group(1)} ({program.group(2)})" if program else "the test run was stopped"


def try_all(changes, bench):
    started = time.monotonic()
    print("copying and building the unchanged tree ...", flush=True)
    copy_tree(bench.tree)
    check_table(changes, bench.tree)
    bench.configure()
    programs = bench.check_unchanged(changes)
    print(f"unchanged tree passes {programs} test program(s), {time.monotonic() - started:.0f} s", flush=True)

    results = []
    for number, change in enumerate(changes, 1):
        begun = time.monotonic()
        result, detail = bench.try_change(change)
        results.append(result)
        print(f"{number:3}/{len(changes)} {result:14} {time.monotonic() - begun:4.0f} s  "
              f"{pathlib.PurePath(change.file).name}: {change.title}\n{'':12}{detail}", flush=True)

    print(f"\n{results.count('noticed')} noticed of {len(changes)}, {results.count('SURVIVED')} survived, "
          f"{results.count('does not build')} not built, {time.monotonic() - started:.0f} s")
    for change, result in zip(changes, results):
        if result != "noticed":
            print(f"  {result}: {TABLE.name}:{change.line}: {change.title}")
    if "does not build" in results:
        return BROKEN
    return SURVIVED if "SURVIVED" in results else ALL_NOTICED


def chosen(changes, words):
    some = [change for change in changes
            if not words or any(word in change.file or word in change.title for word in words)]
    if not some:
        raise Fault("no change has these words")
    return some


def arguments():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n", 1)[1], add_help=False)
    parser.add_argument("--help", "-h", action="store_true")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--folder", type=pathlib.Path)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("words", nargs="*")
    return parser.parse_args()


def main():
    options = arguments()
    if options.help:
        print(__doc__.rstrip())
        return ALL_NOTICED
    changes = read_table()
    check_table(changes, TOP)
    if options.check:
        print(f"{len(changes)} changes in {len({change.file for change in changes})} files fit the tree.")
        return ALL_NOTICED
    changes = chosen(changes, options.words)
    if options.list:
        for change in changes:
            print(f"{change.file}: {change.title} ({', '.join(change.tests)})")
        return ALL_NOTICED
    if options.folder:
        folder = options.folder.resolve()
        refuse_inside_checkout(folder)
        return try_all(changes, Bench(folder, options.jobs))
    with tempfile.TemporaryDirectory(prefix="kvteditor-mutation-") as folder:
        return try_all(changes, Bench(pathlib.Path(folder), options.jobs))


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Fault as fault:
        print(fault, file=sys.stderr)
        sys.exit(BROKEN)
    except KeyboardInterrupt:
        sys.exit(130)

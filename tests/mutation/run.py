#!/usr/bin/env python3
"""Changes one place in the sources at a time and looks whether a test notices; README.md says more.

    tests/mutation/run.py [--count N] [--seed N] [--jobs N] [--folder FOLDER] [--longest N] [--list] [WORD...]

--count N        how many changes; 300 by default
--seed N         draws others; 1 by default
--jobs N         how many at a time; 2 by default
--folder FOLDER  where the copy of the tree and its build are kept; build/mutation by default
--longest N      leaves out tests that take more seconds, the slow ones and the views', but never the source's own;
                 all tests together might notice what survives
--list           only prints the changes
WORD             only files whose path holds one of these words

Ends with 0 when 98 % were noticed and equivalent.txt is up to date.
"""

import argparse
import collections
import concurrent.futures
import functools
import itertools
import json
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
TOP = HERE.parent.parent
WANTED_SCORE = 98

# What is changed, and into what. The formatter puts a space on both sides of an operator and of nothing else.
RULES = (
    *(("comparison", f" {old} ", f" {new} ")
      for old, new in (("==", "!="), ("!=", "=="), ("<", ">="), (">=", "<"), (">", "<="), ("<=", ">"))),
    *(("bound", f" {old} ", f" {new} ") for old, new in (("<", "<="), ("<=", "<"), (">", ">="), (">=", ">"))),
    ("bound", r" [-+] 1\b", ""),
    ("bound", r"\.size\(\)(?! [-+])", ".size() - 1"),
    ("logic", " && ", " || "),
    ("logic", r" \|\| ", " && "),
    ("logic", r"(?<![\w)\]])!(?=[\w(:*])", ""),
    ("logic", r"\btrue\b", "false"),
    ("logic", r"\bfalse\b", "true"),
    ("constant", r"(?<![\w.'])(?:0x[0-9A-Fa-f]+|0|[1-9]\d*)(?![\w.'])", lambda match: str(int(match[0], 0) + 1)),
    ("empty", r"\bisEmpty\(\)", "isNull()"),
    ("empty", r"\bisNull\(\)", "isEmpty()"),
    ("empty", r"(?<![\w!.:>)])(?:\w+(?:\.|->))+is(?:Empty|Null)\(\)", r"!\g<0>"),
    ("signal", r"\bemit [^;]*;", "{}"),
    ("signal", r"(?<=\s)(?:setStatus|setBusy|beginResetModel|endResetModel)\([^;{]*\);", "{}"),
)
# Comments, preprocessor lines, static assertions, strings and characters.
NO_CODE = re.compile(r'//[^\n]*|/\*.*?\*/|^[ \t]*#[^\n]*|static_assert[^;]*;|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"'
                     r"|(?<!\d)'(?:\\.|[^'\\\n])*'", re.DOTALL | re.MULTILINE)

Change = collections.namedtuple("Change", "file old new line rule text")
Test = collections.namedtuple("Test", "name command folder tier")


def changes_of(path):
    """Every change that the rules make to a source."""
    source = path.read_text(encoding="utf-8")
    code = NO_CODE.sub(lambda match: re.sub(r"[^\n]", " ", match[0]), source)
    for rule, pattern, replacement in RULES:
        for match in re.finditer(pattern, code):
            begin, end = source.rfind("\n", 0, match.start()) + 1, source.find("\n", match.end())
            new = replacement(match) if callable(replacement) else match.expand(replacement)
            lines = source[begin:match.start()] + new + source[match.end():end]
            yield Change(str(path.relative_to(TOP)), " ".join(source[begin:end].split()), " ".join(lines.split()),
                         source.count("\n", 0, match.start()) + 1, rule, source[:begin] + lines + source[end:])


def drawn(files, seed):
    """All changes in the order of the draw. However many are taken, each file has its share."""
    ranked = []
    for path in files:
        changes = list(changes_of(path))
        random.Random(f"{seed} {path.name}").shuffle(changes)
        ranked += [((place + 0.5) / len(changes), change) for place, change in enumerate(changes)]
    return [change for _, change in sorted(ranked)]


def read_equivalents():
    """The changes that nobody can observe, and why."""
    blocks = re.findall(r"^(\S+): (.*)\n- (.*)\n\+ (.*)$", (HERE / "equivalent.txt").read_text(encoding="utf-8"),
                        re.MULTILINE)
    return {(file, old, new): reason for file, reason, old, new in blocks}


def run(command, **options):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, errors="replace", check=False, **options)
    return done.returncode == 0, done.stdout


def must_run(*command):
    done, words = run(command)
    return words if done else sys.exit(f"{words[-3000:]}\nwithout a change: {command[0]} failed")


class Build:
    """A copy of the tree, built once. A change compiles one source and links it into a library of its own, which
    the test programs load instead of the one that they were linked with."""

    def __init__(self, folder, jobs, longest):
        tree, self.folder, self.longest = folder / "tree", folder / "build", longest
        shutil.copytree(TOP, tree, dirs_exist_ok=True,
                        ignore=shutil.ignore_patterns("build", ".git", folder.name))
        for path in (tree / "src").glob("*/CMakeLists.txt"):
            # Precompiled headers can be shared only by targets with the same definitions.
            path.write_text(re.sub(r"add_library\((kvteditor_floor_\w+) STATIC\b([^)]*\))", r"add_library(\1 SHARED\2\n"
                                   r'set_target_properties(\1 PROPERTIES DEFINE_SYMBOL "")',
                                   path.read_text(encoding="utf-8")), encoding="utf-8")
        must_run("cmake", "-S", tree, "-B", self.folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                 "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -g0")
        must_run("cmake", "--build", self.folder, "--parallel", str(jobs), "--target",
                 *{"tst_views" if test.tier == 2 else test.name for test in self.find_tests()})
        self.tests = list(self.find_tests())
        commands = must_run("ninja", "-C", self.folder, "-t", "commands").splitlines()
        self.linkers = [line for line in commands if " -shared " in line]
        # By source: its compiler's command, and the object that the command makes.
        self.compilers = {match[2].removeprefix(f"{tree}/"): (line, match[1]) for line in commands
                          if (match := re.search(r" -o (\S+) -c (\S+)$", line)) and self.linker(match[1])}
        self.wins = collections.Counter()
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            list(pool.map(self.seconds, [test for test in self.tests if test.tier == 0]))

    def linker(self, output):
        return next((line for line in self.linkers if f" {output} " in line), None)

    def find_tests(self):
        """The unit tests, later the slow ones, and last those of the views."""
        found = json.loads(must_run("ctest", "--test-dir", self.folder, "--show-only=json-v1"))
        for test in found["tests"]:
            facts = {entry["name"]: entry["value"] for entry in test["properties"]}
            labels = set(facts.get("LABELS", []))
            if labels & {"unit", "qml"} and "lint" not in labels and not test["name"].endswith("_portable"):
                yield Test(test["name"], tuple(test.get("command", ())), facts["WORKING_DIRECTORY"],
                           2 if "qml" in labels else 1 if "slow" in labels else 0)

    @functools.cache
    def seconds(self, test):
        """How long a test takes without a change."""
        begun = time.monotonic()
        with tempfile.TemporaryDirectory() as own:
            failure = self.failure(test, own, 1200)
        return sys.exit(f"without a change: {failure}") if failure else time.monotonic() - begun

    @staticmethod
    def failure(test, libraries, seconds):
        """The first test function that fails, or how the program ended; empty when it passes."""
        # A change may make a loop endless or let it fill the memory. What a stopped test leaves goes with the library.
        command = ["timeout", "-s", "KILL", str(seconds), "prlimit", f"--as={8 << 30}", "env", f"TMPDIR={libraries}",
                   f"LD_LIBRARY_PATH={libraries}", "QT_QPA_PLATFORM=offscreen", "QT_QUICK_BACKEND=software",
                   *test.command]
        with subprocess.Popen(command, cwd=test.folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, errors="replace", start_new_session=True) as program:
            for line in program.stdout:
                if line.startswith("FAIL!"):
                    os.killpg(program.pid, signal.SIGKILL)
                    return line.split()[2]
        return f"{test.name} ended with {program.returncode}" if program.returncode else ""

    def in_order(self, file):
        """The tests, those first that have to do with the file."""
        own = f"tst_{pathlib.Path(file).stem}"
        if self.longest:
            tests = [test for test in self.tests
                     if test.name == own or (test.tier == 0 and self.seconds(test) <= self.longest)]
        else:
            tests = [test for test in self.tests if test.tier < 2 or "/app/" in file]
        return sorted(tests, key=lambda test: (test.tier, test.name != own, -self.wins[file, test.name],
                                               self.seconds(test) if test.tier == 0 else 0))

    def outcome(self, change):
        """What noticed the change, "SURVIVED", or None when there is none: it does not compile, or to the same."""
        compiler, made = self.compilers[change.file]
        with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as own:
            source, target = pathlib.Path(own, pathlib.Path(change.file).name), pathlib.Path(own, "changed.o")
            source.write_text(change.text, encoding="utf-8")
            compiler = re.sub(r" -c \S+$", f" -c {source}", compiler).replace(made, str(target))
            if (not run(compiler, shell=True, cwd=self.folder)[0]
                    or target.read_bytes() == (self.folder / made).read_bytes()):
                return None
            linker = self.linker(made).replace(made, str(target))
            if not run(re.sub(r" -o (?:\S*/)?(\S+)", rf" -o {own}/\1", linker), shell=True, cwd=self.folder)[0]:
                return None
            for test in self.in_order(change.file):
                if failure := self.failure(test, own, 30 + 5 * self.seconds(test)):
                    self.wins[change.file, test.name] += 1
                    return failure
        return "SURVIVED"


def show(change, words):
    print(f"{change.file}:{change.line}: {change.rule}: {words}\n- {change.old}\n+ {change.new}", flush=True)


def try_all(changes, equivalents, options):
    begun = time.monotonic()
    build = Build(options.folder.resolve(), options.jobs, options.longest)
    print(f"the unchanged tree passes, {time.monotonic() - begun:.0f} s", flush=True)

    def try_one(change):
        outcome = "equivalent" if change[:3] in equivalents else build.outcome(change)
        if outcome:
            show(change, outcome)
        return outcome

    outcomes, waiting = [], iter(changes)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        while batch := list(itertools.islice(waiting, options.count - len(outcomes))):
            outcomes += filter(None, pool.map(try_one, batch))
    counted = len(outcomes) - outcomes.count("equivalent")
    noticed = counted - outcomes.count("SURVIVED")
    score = 100 * noticed / max(counted, 1)
    print(f"\n{noticed} of {counted} noticed, {score:.1f} %; {len(outcomes) - counted} more are equivalent; "
          f"{time.monotonic() - begun:.0f} s")
    return score >= WANTED_SCORE


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n", 1)[1])
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--folder", type=pathlib.Path, default=TOP / "build" / "mutation")
    parser.add_argument("--longest", type=float)
    parser.add_argument("--list", action="store_true")
    parser.add_argument("words", nargs="*")
    options = parser.parse_args()

    files = [path for room in ("core", "api", "app") for path in sorted((TOP / "src" / room).glob("*.cpp"))
             if path.name != "main.cpp"]
    equivalents = read_equivalents()
    stale = equivalents.keys() - {change[:3] for path in files for change in changes_of(path)}
    for file, old, _ in sorted(stale):
        print(f"equivalent.txt: fits no change any more: {file}: {old}")
    wanted = [path for path in files if any(word in str(path.relative_to(TOP)) for word in options.words or [""])]
    changes = drawn(wanted, options.seed)
    if options.list:
        for change in changes[:options.count]:
            show(change, equivalents.get(change[:3], ""))
        return 0
    return 0 if try_all(changes, equivalents, options) and not stale else 1


if __name__ == "__main__":
    sys.exit(main())

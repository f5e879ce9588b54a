"""Builds the mutants that the lists beside this file name and runs the tests on each.

A mutant is the program with one fault in it. One that the tests notice is killed; one that survives
shows what they do not look at, unless it is argued equivalent: then no test could tell.
"""

import argparse
import fnmatch
import json
import os
import queue
import re
import resource
import shutil
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
LISTS = ["src.txt", "batch.txt"]
LEAST_SCORE = 95  # percent of those that are not argued equivalent
PROGRAMS = {"trellion_tests": "tests", "trellion_batch_tests": "tests/batch"}
MEMORY = 6 << 30  # a fault can have no end
FILE_SIZE = 1 << 30


class ListError(Exception):
    pass


class Mutant:
    """A fragment of a source, what it becomes, and why that is equivalent, if it is."""

    def __init__(self, source, tests, place):
        self.source, self.tests, self.place = source, tests, place
        self.was, self.becomes, self.argument = [], [], []

    def pattern(self):
        return r"\s*\n\s*".join(re.escape(line) for line in self.was)

    def applied(self, text):
        found = list(re.finditer(self.pattern(), text))
        if len(found) != 1:
            times = f"{len(found)} times" if found else "not"
            raise ListError(f"{self.place}: stale, {times} in {self.source}: {' '.join(self.was)}")
        begin, end = found[0].span()
        return text[:begin] + "\n".join(self.becomes) + text[end:]

    def __str__(self):
        return f"{self.source}: {' '.join(self.was)} -> {' '.join(self.becomes) or 'nothing'}"


def read_list(path):
    """The mutants of a list. An entry has one or more lines with "-", what is there, with "+", what
    it becomes, and with "=", why no test can tell. "[FILE] TESTS" comes before those of a file.
    """
    mutants, source, tests = [], None, None
    before = None  # the sign of the last line, if it was one of an entry
    for number, line in enumerate(path.read_text().splitlines(), 1):
        place = f"{path.name}:{number}"
        head = re.fullmatch(r"\[(\S+)\]\s*(\S*)", line)
        sign, text = line[:1], line[2:].strip()
        if head:
            source, tests = head.groups()
            before = None
        elif not line or sign == "#":
            before = None
        elif source is None or sign not in "-+=" or (sign != "-" and before is None):
            raise ListError(f"{place}: not understood: {line}")
        else:
            if sign == "-" and before != "-":
                mutants.append(Mutant(source, tests or "*", place))
            entry = mutants[-1]
            {"-": entry.was, "+": entry.becomes, "=": entry.argument}[sign].append(text)
            before = sign
    return mutants


def complaints(mutants):
    """What is wrong with the entries of a list."""
    for mutant in mutants:
        try:
            if not mutant.becomes:
                raise ListError(f"{mutant.place}: what it becomes is missing")
            mutant.applied((TOP / mutant.source).read_text())
        except (ListError, OSError) as error:
            yield str(error)


class Tree:
    """A copy of the sources with a build of its own. What stays as it is keeps its time."""

    def __init__(self, number):
        self.directory = TOP / "build" / "mutants" / str(number)
        self.sources = self.directory / "sources"
        self.build = self.directory / "build"
        self.scratch = self.directory / "scratch"
        self.log = self.directory / "log"
        self.environment = os.environ | {
            "TMPDIR": str(self.scratch),
            "CCACHE_BASEDIR": str(self.sources),
        }
        # Nothing ever comes from it: a child that is left our input shows.
        self.input, self.kept_open = os.pipe()
        self.running = None

    def prepare(self):
        self.directory.mkdir(parents=True, exist_ok=True)
        listing = run("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard")
        wanted = {name for name in listing.split("\0") if name and (TOP / name).is_file()}
        for name in wanted:
            self.write(name, (TOP / name).read_bytes(), (TOP / name).stat().st_mode)
        for there in [path for path in self.sources.rglob("*") if path.is_file()]:
            if str(there.relative_to(self.sources)) not in wanted:
                there.unlink()
        command = ["cmake", "-G", "Ninja", "-S", self.sources, "-B", self.build]
        command += ["-DCMAKE_BUILD_TYPE=None", "-DCMAKE_CXX_FLAGS=-O1"]  # with assertions
        if shutil.which("ld.lld"):
            command += ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld"]
        if shutil.which("ccache"):
            command += ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"]
        if self.call(command, 600) != 0 or not self.make(list(PROGRAMS)):
            raise SystemExit(f"cannot build; see {self.log}")

    def write(self, name, content, mode=0o644):
        path = self.sources / name
        path.parent.mkdir(parents=True, exist_ok=True)
        if not path.exists() or path.read_bytes() != content:
            path.write_bytes(content)
        path.chmod(mode)

    def make(self, targets):
        return self.call(["ninja", "-C", self.build, *targets], 1800) == 0

    def test(self, program, tests, limit, *more):
        """The exit status; None when it took too long."""
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir(parents=True)
        command = [self.build / PROGRAMS[program] / program, "--gtest_filter=" + tests, *more]
        return self.call(command, limit, limited=True)

    def call(self, command, limit, limited=False):
        def become():
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
            resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))

        with open(self.log, "wb") as log:
            process = subprocess.Popen(
                [str(word) for word in command],
                cwd=self.sources,
                env=self.environment,
                stdin=self.input,
                stdout=log,
                stderr=subprocess.STDOUT,
                start_new_session=True,
                preexec_fn=become if limited else None,
            )
            self.running = process.pid  # and of its group
            try:
                return process.wait(limit)
            except subprocess.TimeoutExpired:
                return None
            finally:
                self.stop()
                process.wait()

    def stop(self):
        """Kills what runs, and what works below the scratch directory: faults let children outlive
        the tests."""
        group, self.running = self.running, None
        if group is not None:
            try:
                os.killpg(group, signal.SIGKILL)
            except ProcessLookupError:
                pass
        for entry in Path("/proc").glob("[0-9]*"):
            try:
                if os.readlink(entry / "cwd").startswith(str(self.scratch)):
                    os.kill(int(entry.name), signal.SIGKILL)
            except OSError:
                pass  # it is gone, or not ours

    def last_test(self):
        text = self.log.read_text(errors="replace")
        failed = re.findall(r"^\[  FAILED  \] ([^\s,]+)", text, re.M)
        begun = re.findall(r"^\[ RUN      \] (\S+)", text, re.M)
        return failed[0] if failed else begun[-1] if begun else "its start"


def run(*command):
    return subprocess.run(command, cwd=TOP, check=True, capture_output=True, text=True).stdout


def measured_tests(tree):
    """The seconds that each test takes, by program. Tests that fail are left out."""
    seconds = {}
    for program in PROGRAMS:
        report = tree.directory / "report.json"
        if tree.test(program, "*", 900, f"--gtest_output=json:{report}") not in (0, 1):
            raise SystemExit(f"{program} does not come to its end; see {tree.log}")
        seconds[program] = {}
        for suite in json.loads(report.read_text())["testsuites"]:
            for test in suite["testsuite"]:
                name = f"{suite['name']}.{test['name']}"
                if "failures" in test:
                    print(f"Left out, fails without a mutant: {name}", flush=True)
                else:
                    seconds[program][name] = float(test["time"].rstrip("s"))
    return seconds


class Trial:
    """Tries mutants in a tree until there are no more files with any."""

    def __init__(self, seconds, files, tell):
        self.seconds, self.files, self.tell = seconds, files, tell

    def work(self, tree):
        while True:
            try:
                mutants = self.files.get_nowait()
            except queue.Empty:
                return
            original = (TOP / mutants[0].source).read_text()
            for mutant in mutants:
                tree.write(mutant.source, mutant.applied(original).encode())
                self.tell(mutant, *self.fate(tree, mutant))
            tree.write(mutants[0].source, original.encode())

    def fate(self, tree, mutant):
        """What became of a mutant, "killed", "survived" or "broken", and by what."""
        own, other = PROGRAMS if mutant.source.startswith("src/") else reversed(PROGRAMS)
        first = self.matching(own, mutant.tests)
        rest = self.seconds[own].keys() - first
        for program, chosen in ((own, first), (own, rest), (other, self.seconds[other])):
            if not tree.make([program]):
                return "broken", "does not compile: " + tree.log.read_text(errors="replace")
            by = self.killer(tree, program, set(chosen))
            if by:
                return "killed", by
        return "survived", ""

    def killer(self, tree, program, chosen):
        """The test that notices, twice in a row: the first time can be the machine's load."""
        limit = 20 + 5 * sum(self.seconds[program][name] for name in chosen)
        while chosen:
            status = tree.test(program, ":".join(sorted(chosen)), limit, "--gtest_fail_fast")
            by = tree.last_test()
            if status == 0:
                return None
            if by not in chosen or tree.test(program, by, limit) != 0:
                return by + {1: "", None: " (hangs)"}.get(status, " (crash)")
            chosen.discard(by)
        return None

    def matching(self, program, tests):
        patterns = tests.split(":")
        names = self.seconds[program]
        return {name for name in names if any(fnmatch.fnmatchcase(name, p) for p in patterns)}


def parse_arguments():
    parser = argparse.ArgumentParser(prog="./mutate", description=__doc__.splitlines()[0])
    add = parser.add_argument
    add("pattern", nargs="?", default="", help="a regular expression for the files, such as batch/p")
    add("-j", "--jobs", type=int, default=os.cpu_count(), help="mutants at a time (all cores)")
    add("--check", action="store_true", help="only tell whether the lists fit the sources")
    return parser.parse_args()


def interrupted(*_):
    raise SystemExit("interrupted")


def main():
    arguments = parse_arguments()
    signal.signal(signal.SIGTERM, interrupted)
    try:
        mutants = [mutant for name in LISTS for mutant in read_list(TOP / "mutants" / name)]
    except ListError as error:
        sys.exit(str(error))
    errors = list(complaints(mutants))
    if errors:
        sys.exit("\n".join(errors))
    mutants = [m for m in mutants if re.search(arguments.pattern, m.source)]
    print(f"{len(mutants)} mutants", flush=True)
    if arguments.check or not mutants:
        return

    by_file = {}
    for mutant in mutants:
        by_file.setdefault(mutant.source, []).append(mutant)
    files = queue.Queue()
    for group in sorted(by_file.values(), key=len, reverse=True):
        files.put(group)
    trees = [Tree(n) for n in range(max(1, min(arguments.jobs, len(by_file))))]
    for tree in trees:
        tree.prepare()
    seconds = measured_tests(trees[0])

    fates = {}
    lock = threading.Lock()
    start = time.monotonic()

    def tell(mutant, fate, by):
        with lock:
            fates[mutant] = fate
            minutes, rest = divmod(int(time.monotonic() - start), 60)
            count = f"[{len(fates)}/{len(mutants)} {minutes}:{rest:02}]"
            print(f"{count} {fate} {mutant.place} {mutant.source} {by}", flush=True)

    trial = Trial(seconds, files, tell)
    workers = [threading.Thread(target=trial.work, args=[tree], daemon=True) for tree in trees]
    try:
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
    finally:
        for tree in trees:
            tree.stop()
    sys.exit(summary(mutants, fates))


def summary(mutants, fates):
    """Prints what is left and returns the exit status."""
    survivors = [m for m in mutants if fates.get(m) == "survived"]
    argued = [m for m in survivors if m.argument]
    wrong = [m for m in mutants if m.argument and fates.get(m) == "killed"]
    broken = [m for m in mutants if fates.get(m) not in ("survived", "killed")]
    for title, group in (
        ("Survived", [m for m in survivors if not m.argument]),
        ("Survived, argued equivalent", argued),
        ("Argued equivalent, yet killed", wrong),
        ("Broken", broken),
    ):
        if group:
            print(f"\n{title}:")
        for mutant in group:
            print(f"  {mutant.place} {mutant}")
            if mutant.argument:
                print(f"    {' '.join(mutant.argument)}")
    n_killed = len(mutants) - len(survivors) - len(broken)
    score = 100 * n_killed / max(1, len(mutants) - len(argued))
    print(f"\n{len(mutants)} mutants, {n_killed} killed, {len(survivors)} survived "
          f"({len(argued)} argued equivalent), score {score:.1f} %")
    return 1 if broken or wrong or score < LEAST_SCORE else 0


if __name__ == "__main__":
    main()

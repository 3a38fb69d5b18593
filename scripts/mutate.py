#!/usr/bin/env python3
"""Changes src/ in one small place at a time and tells which changes no unit test notices.

usage: mutate.py BUILD_TREE [COUNT] [--seed N] [--jobs J] [--only TEXT] [--patience N]

COUNT mutants (default 100) are taken from all over src/, or from the files with TEXT in their names; the seed (default 1) says
which. Each is compiled and linked to a clusutil.dll of its own, beside copies of the test programs in BUILD_TREE/../mutation;
src/ itself is not touched. A mutant is caught when a test fails, crashes or takes N times as long (default 3) as without it, and
20 seconds: more patience is for a machine with much else to do. Those that do not compile, and those
of which the compiler makes the same code, are not counted. What is known from an earlier run with the same sources is kept.

Survivors are printed with what was changed. One that is no other behaviour is listed, with the reason, in
scripts/mutation/equivalent.txt. Exit code 1 when there are others, or when the list names what is no mutant any more.
"""
import argparse
import collections
import concurrent.futures
import difflib
import hashlib
import json
import queue
import shutil
import signal
import sys
import threading
import time
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent / "mutation"))
import operators  # noqa: E402
import tree as trees  # noqa: E402
from sources import ROOT, product_sources  # noqa: E402

EQUIVALENT = ROOT / "scripts/mutation/equivalent.txt"
# Says what compiles and makes no code.
WITHOUT_CODE = {"src/core/FormatCheck.h"}
SLOW = 0.2  # seconds of a test that is left for the end
COUNTED = ("caught", "survived")


def read_equivalents(text):
    """The listed mutants' keys, with their reasons. Entries are parted by empty lines:

    src/FILE FUNCTION
    - the line
    + the line as changed
    the reason
    """
    reasons = {}
    for entry in text.split("\n\n"):
        lines = [line for line in entry.splitlines() if line and not line.startswith("#")]
        if not lines:
            continue
        if len(lines) < 4 or lines[1][:2] != "- " or lines[2][:2] != "+ ":
            raise SystemExit(f"{EQUIVALENT.name}: no entry:\n{entry}")
        file, _, function = lines[0].partition(" ")
        reasons[(file, function, lines[1][2:], lines[2][2:])] = " ".join(lines[3:])
    return reasons


def in_order(mutants, seed):
    """The mutants as they are tried: one of each line before a second of any, and lines as they come."""
    def rank(*parts):
        return hashlib.sha256("\0".join((str(seed), *map(str, parts))).encode()).hexdigest()

    by_line = collections.defaultdict(list)
    for mutant in mutants:
        by_line[mutant.file, mutant.line].append(mutant)
    ranked = []
    for (file, _), group in by_line.items():
        group.sort(key=lambda mutant: rank(*mutant.key()))
        ranked += [(turn, rank(file, mutant.function, mutant.before), mutant.start, mutant.after, mutant)
                   for turn, mutant in enumerate(group)]
    return [entry[-1] for entry in sorted(ranked, key=lambda entry: entry[:-1])]


class Results:
    """What became of each mutant, kept in a file: of one that was caught as long as its source stays, of a survivor as long as
    the tests stay, too."""

    def __init__(self, file, tests):
        self.file = file
        self.tests = tests
        self.lock = threading.Lock()
        self.known = {}
        for line in file.read_text().splitlines() if file.exists() else ():
            result = json.loads(line)
            if result["outcome"] != "survived" or result["tests"] == tests:
                self.known[result["mutant"]] = result

    @staticmethod
    def name(mutant, text):
        return hashlib.sha256(f"{text}\0{mutant.start}\0{mutant.end}\0{mutant.replacement}".encode()).hexdigest()

    def of(self, mutant, text):
        return self.known.get(self.name(mutant, text))

    def add(self, mutant, text, outcome, by):
        result = {"mutant": self.name(mutant, text), "outcome": outcome, "by": by, "tests": self.tests,
                  "place": f"{mutant.file}:{mutant.line}", "after": mutant.after}
        with self.lock:
            self.known[result["mutant"]] = result
            with self.file.open("a") as out:
                out.write(json.dumps(result) + "\n")
        return result


class Laboratory:
    """The worker folders, and what the tests do with the library as it is."""

    def __init__(self, build, work, jobs, patience):
        self.patience = patience
        self.tree = trees.Tree(build, work)
        self.work = work
        self.workers = queue.Queue()
        self.folders = [work / f"worker-{number}" for number in range(1, jobs + 1)]
        self.objects = {}  # source -> digest of its object
        self.alone = collections.defaultdict(list)  # program -> tests that need a process of their own
        self.slow = collections.defaultdict(list)  # program -> tests
        self.seconds = {}  # program -> of a whole run
        self.wines = []

    def open(self):
        first = self.folders[0]
        print(f"Compiling src/ for {len(self.folders)} worker(s) ...", flush=True)
        self.tree.prepare(first)
        self.tree.compile_all(first)
        self.objects = {source: trees.digest(first / self.tree.object_of(source)) for source in self.tree.compilations}
        shutil.rmtree(self.work / "objects", ignore_errors=True)
        shutil.copytree(first / "objects", self.work / "objects")
        for folder in self.folders:
            if folder != first:
                self.tree.prepare(folder)
                shutil.copytree(first / "objects", folder / "objects", dirs_exist_ok=True)
                for headers in (trees.HEADERS, trees.HEADERS + ".gch"):
                    shutil.copy(first / headers, folder / headers)
            problem = self.tree.link(folder, "src/core/")
            if problem:
                raise SystemExit(f"the library does not link:\n{problem}")
            self.wines.append(trees.Wine(folder))
            self.workers.put((folder, self.wines[-1]))
        shutil.copy2(first / trees.LINKED[1], self.work)
        self.learn(self.wines[0])

    def close(self):
        for wine in self.wines:
            wine.stop()

    def learn(self, wine):
        """Runs the tests on the library as it is: all in one process, as it is fastest, and alone what fails so."""
        print("Running the tests on the library as it is ...", flush=True)
        for program in trees.PROGRAMS:
            code, output, self.seconds[program] = self.timed(wine, program, 600)
            while code != 0:
                failed = [test for test in trees.failed_tests(output) if test not in self.alone[program]]
                if not failed:
                    raise SystemExit(f"{program} fails without a mutant:\n{output[-3000:]}")
                self.alone[program] += failed
                code, output, self.seconds[program] = self.timed(wine, program, 600, self.all_but(self.alone[program]))
            self.slow[program] = trees.tests_longer_than(output, SLOW)
            for test in self.alone[program]:
                if self.timed(wine, program, 120, f"--gtest_filter={test}")[0] != 0:
                    raise SystemExit(f"{program} {test} fails without a mutant")

    @staticmethod
    def timed(wine, program, seconds, *arguments):
        started = time.monotonic()
        code, output = wine.run(program, seconds, *arguments)
        return code, output, time.monotonic() - started

    @staticmethod
    def all_but(tests):
        return "--gtest_filter=-" + ":".join(tests)

    def rounds(self, file):
        """The runs of programs that a mutant of the file has to survive, as (program, filter)."""
        programs = trees.programs_for(file)
        for program in programs:
            yield program, self.all_but(self.alone[program] + self.slow[program])
        for program in programs:
            if self.slow[program]:
                yield program, "--gtest_filter=" + ":".join(self.slow[program])
        for program in programs:
            for test in self.alone[program]:
                yield program, "--gtest_filter=" + test

    def try_out(self, mutant, text):
        """The outcome for a mutant, and what caught it."""
        folder, wine = self.workers.get()
        sources = self.tree.dependents.get(mutant.file, {mutant.file})
        try:
            (folder / mutant.file).write_text(mutant.apply(text), encoding="utf-8")
            changed = False
            for source in sorted(sources):
                if self.tree.compile(folder, source):
                    return "not compiled", None
                changed |= trees.digest(folder / self.tree.object_of(source)) != self.objects[source]
            if not changed:
                return "same code", None
            if self.tree.link(folder, mutant.file):
                return "not compiled", None
            for program, choice in self.rounds(mutant.file):
                code, output = wine.run(program, self.patience * self.seconds[program] + 20, "--gtest_fail_fast", choice)
                if code != 0:
                    return "caught", (trees.failed_tests(output) or [program])[0]
            return "survived", None
        finally:
            (folder / mutant.file).write_text(text, encoding="utf-8")
            for source in sources:
                shutil.copy(self.work / self.tree.object_of(source), folder / self.tree.object_of(source))
            shutil.copy2(self.work / "core_test.exe", folder / trees.LINKED[1])
            self.workers.put((folder, wine))


def examine(chosen, texts, results, laboratory, reasons, count, jobs):
    """Tries mutants until `count` of them are counted; gives each that was looked at with its outcome."""
    outcomes = {}
    counted = 0
    pending = {}
    order = iter(chosen)
    pool = concurrent.futures.ThreadPoolExecutor(jobs)
    try:
        while True:
            while counted + len(pending) < count:
                mutant = next(order, None)
                if mutant is None:
                    break
                known = results.of(mutant, texts[mutant.file])
                if mutant.key() in reasons:
                    outcomes[mutant] = "equivalent"
                    counted += 1
                elif known:
                    outcomes[mutant] = known["outcome"]
                    counted += known["outcome"] in COUNTED
                else:
                    pending[pool.submit(laboratory.try_out, mutant, texts[mutant.file])] = mutant
            if not pending:
                return outcomes
            done, _ = concurrent.futures.wait(pending, return_when=concurrent.futures.FIRST_COMPLETED)
            for future in done:
                mutant = pending.pop(future)
                outcome, by = future.result()
                results.add(mutant, texts[mutant.file], outcome, by)
                outcomes[mutant] = outcome
                counted += outcome in COUNTED
                print(f"{counted:4} {outcome:12} {mutant.file}:{mutant.line} {mutant.operator}" + (f" ({by})" if by else ""),
                      flush=True)
    finally:
        pool.shutdown(cancel_futures=True)


def difference(mutant, text):
    lines = difflib.unified_diff(text.splitlines(), mutant.apply(text).splitlines(), mutant.file, mutant.file, n=1, lineterm="")
    return "\n".join(list(lines)[2:])


def report(outcomes, texts, stale):
    """The lines to print, and whether all is well."""
    numbers = collections.Counter(outcomes.values())
    survivors = sorted((mutant for mutant, outcome in outcomes.items() if outcome == "survived"),
                       key=lambda mutant: (mutant.file, mutant.start))
    lines = []
    for mutant in survivors:
        lines += ["", f"{mutant.file}:{mutant.line} {mutant.operator}", f"{mutant.file} {mutant.function}", f"- {mutant.before}",
                  f"+ {mutant.after}", difference(mutant, texts[mutant.file])]
    lines += [f"{EQUIVALENT.name} lists what is no mutant of {file}: - {before} + {after}" for file, _, before, after in stale]
    total = sum(numbers[outcome] for outcome in (*COUNTED, "equivalent"))
    lines += ["", f"{total} mutants: {numbers['caught']} caught, {numbers['equivalent']} listed as equivalent, "
                  f"{numbers['survived']} survived. Not counted: {numbers['not compiled']} that do not compile, "
                  f"{numbers['same code']} with the same code."]
    return lines, not survivors and not stale


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path)
    parser.add_argument("count", type=int, nargs="?", default=100)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--only", default="")
    parser.add_argument("--patience", type=float, default=3)
    options = parser.parse_args()

    texts = {str(file.relative_to(ROOT)): file.read_text(encoding="utf-8") for file in product_sources("src")}
    mutants = [mutant for file, text in texts.items() if file not in WITHOUT_CODE for mutant in operators.mutants_of(file, text)]
    reasons = read_equivalents(EQUIVALENT.read_text(encoding="utf-8"))
    stale = sorted(set(reasons) - {mutant.key() for mutant in mutants})
    chosen = in_order([mutant for mutant in mutants if options.only in mutant.file], options.seed)

    build = options.build.resolve()
    work = build.parent / "mutation"
    work.mkdir(parents=True, exist_ok=True)
    programs = "".join(trees.digest(build / "bin" / (program + ".exe")) for program in trees.PROGRAMS)
    results = Results(work / "results.jsonl", hashlib.sha256(programs.encode()).hexdigest())
    laboratory = Laboratory(build, work, options.jobs, options.patience)
    signal.signal(signal.SIGTERM, lambda number, frame: sys.exit(128 + number))
    try:
        laboratory.open()
        outcomes = examine(chosen, texts, results, laboratory, reasons, options.count, options.jobs)
    finally:
        laboratory.close()
    lines, well = report(outcomes, texts, stale)
    (work / "report.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")
    print("\n".join(lines))
    sys.exit(0 if well else 1)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Tells how much of the code the tests hold fast: changes one small thing at a time and looks whether a test fails.

A mutant is one place of one source changed: a comparison exchanged, a constant moved by one, a truncation made a
rounding, a call or an assignment dropped, two arguments swapped. A seed draws them from all places alike. Each is
compiled and linked to the test programs in front of the library's own object, and meets the tests of its source, the
rest of that program, those of the folders above, and the replays of the fuzz targets, until something fails. A
test that does not end in several times the processor time it needs without mutant, or takes too much memory, counts as
failed. What does not compile, or gives the same object as before, is no mutant and is replaced by the next.

Everything happens in build/mutation, or the folder that KORMELIN_MUTATION names: a copy of the sources, its build, and
results-SEED.tsv. An interrupted run goes on where it was. Fails if fewer than 90 of 100 mutants are killed, those
counted, too, that change nothing anyone could see; survivors.md tells why nobody could.
"""

import argparse
import collections
import concurrent.futures
import difflib
import fnmatch
import hashlib
import json
import os
import pathlib
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import threading
import time

from places import OPERATORS, number_of, places_of

HERE = pathlib.Path(__file__).resolve().parent
TOP = HERE.parent.parent
WORK = pathlib.Path(os.environ.get("KORMELIN_MUTATION", TOP / "build" / "mutation")).resolve()
TREE = WORK / "tree"
BUILD = WORK / "build"

SOURCES = ("src/*.cpp", "src/RDTools/Bitmap*.cpp", "src/RDImageProcessing/*.cpp", "src/RDAfisTools/*.cpp")
# Kernels that stand in headers; each is part of few objects.
HEADERS = ("BoxQuotient", "BoxSums", "ByteRuns", "ObjectRuns", "SpanMean")
PROGRAMS = ("RDTools", "RDImageProcessing", "RDAfisTools", "top")
FLAGS = "-O1 -w"
MEMORY = 4 << 30
ENOUGH = 0.9

FIELDS = ("key", "verdict", "by", "seconds", "operator", "file", "line", "old", "new")
KILLED, SURVIVED, BROKEN, SAME = "killed", "survived", "does not compile", "same object"


def replays():
    return sorted(path.stem for path in (TREE / "fuzz").glob("*Fuzz.cpp"))


def run(command, log, cpu, cwd):
    """Exit status, negative for a signal, and processor seconds. The limit of real time is for tests that sleep."""

    def limits():
        resource.setrlimit(resource.RLIMIT_CPU, (int(cpu) + 1, int(cpu) + 1))
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    with open(log, "wb") as out:
        process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=out, stderr=subprocess.STDOUT, cwd=cwd, preexec_fn=limits,
            start_new_session=True,
        )
        end = time.monotonic() + 60 + 20 * cpu
        while True:
            pid, status, usage = os.wait4(process.pid, os.WNOHANG)
            if pid:
                break
            if time.monotonic() > end:
                os.killpg(process.pid, signal.SIGKILL)
            time.sleep(0.02)
        process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, usage.ru_utime + usage.ru_stime


class Step:
    """A program with arguments that passes without mutant."""

    def __init__(self, program, arguments, name):
        self.program, self.arguments, self.name = program, arguments, name
        self.key = " ".join([program, *arguments])


class Suite:
    """The build of the unchanged project, and what to run for a source."""

    def __init__(self):
        commands = json.loads((BUILD / "compile_commands.json").read_text())
        self.compile = {str(pathlib.Path(c["file"]).relative_to(TREE)): shlex.split(c["command"]) for c in commands
                        if pathlib.Path(c["file"]).is_relative_to(TREE)}
        self.links = {}
        self.times = {}
        self.times_file = WORK / "times.json"
        if self.times_file.exists():
            self.times = json.loads(self.times_file.read_text())
        self.lock = threading.Lock()
        self.dependants = self.read_dependants()

    @staticmethod
    def read_dependants():
        """Which sources each header of the project goes into."""
        objects = collections.defaultdict(set)
        target = None
        for line in subprocess.run(["ninja", "-C", BUILD, "-t", "deps"], capture_output=True, text=True,
                                   check=True).stdout.splitlines():
            if line and not line.startswith(" "):
                target = line.split(": #deps")[0]
            elif line.strip():
                path = os.path.normpath(os.path.join(BUILD, line.strip()))
                objects[os.path.relpath(path, TREE)].add(target)
        return objects

    def link(self, program):
        with self.lock:
            if program not in self.links:
                text = subprocess.run(["ninja", "-C", BUILD, "-t", "commands", "-s", program], capture_output=True,
                                      text=True, check=True).stdout
                match = re.search(r"^: && (.*?) && ", text, re.M)
                self.links[program] = shlex.split(match.group(1))
            return self.links[program]

    def steps(self, file):
        """From what most likely fails to what least does."""
        path = pathlib.PurePath(file)
        folder = path.parts[1] if len(path.parts) > 2 else "top"
        tests = TREE / "tests" / ("" if folder == "top" else folder)
        suites = set()
        for test in tests.glob(f"{path.stem}*Test.cpp"):
            suites |= set(re.findall(r"^(?:TYPED_)?TEST(?:_F|_P)?\((\w+),", test.read_text(), re.M))
        first = PROGRAMS.index(folder)
        main = f"tests/kormelin_tests_{folder}"
        own = ":".join(f"{p}{suite}{s}.*" for suite in sorted(suites) for p, s in (("", ""), ("*/", ""), ("*/", "/*"), ("", "/*")))
        fast = ["--gtest_fail_fast"]
        if suites:
            yield Step(main, [f"--gtest_filter={own}", *fast], folder)
            yield Step(main, [f"--gtest_filter=-{own}", *fast], folder)
        else:
            yield Step(main, fast, folder)
        for name in PROGRAMS[first + 1 :]:
            yield Step(f"tests/kormelin_tests_{name}", fast, name)
        for name in replays():
            corpus = TREE / "fuzz" / "corpus" / name
            if corpus.is_dir():
                yield Step(f"fuzz/{name}Replay", [str(corpus)], name)

    def seconds(self, step, where):
        """Processor time of the step without mutant, which must pass."""
        stamp = f"{step.key} {(BUILD / step.program).stat().st_mtime_ns}"
        stamp = hashlib.sha256(stamp.encode()).hexdigest()[:16]
        with self.lock:
            if stamp in self.times:
                return self.times[stamp]
            status, used = run([str(BUILD / step.program), *step.arguments], where / "log", 600, where)
            if status:
                sys.exit(f"{step.key} fails without mutant ({status}): {where / 'log'}")
            self.times[stamp] = used
            self.times_file.write_text(json.dumps(self.times))
            return used


class Worker:
    def __init__(self, suite, number):
        self.suite = suite
        self.folder = WORK / f"worker{number}"
        self.objects = self.folder / "objects"
        self.overlay = self.folder / "overlay"
        for folder in (self.objects, self.overlay, self.folder / "cwd"):
            folder.mkdir(parents=True, exist_ok=True)

    def compile(self, source, text_file, out, overlay):
        command = list(self.suite.compile[source])
        if pathlib.Path(command[0]).name == "ccache":
            del command[0]
        command[command.index("-o") + 1] = str(out)
        command[command.index("-c") + 1] = str(text_file)
        command[1:1] = ["-include", str(HERE / "rounding.hpp"), *(["-I", str(overlay)] if overlay else [])]
        return run(command, self.folder / "log", 300, BUILD)[0] == 0

    def sources_with(self, file):
        """The sources whose objects hold the code of the file."""
        if file.endswith(".cpp"):
            return [file]
        found = []
        stem = pathlib.PurePath(file).stem
        for target in self.suite.dependants[file]:
            name = re.sub(r"^(tests/)?CMakeFiles/[^/]*\.dir/(.*)\.o$", r"\1\2", target)
            if name.startswith("src/") or re.fullmatch(rf"tests/.*/{stem}\w*Test\.cpp", name):
                found.append(name)
        return sorted(found)

    def baseline(self, source):
        """The unchanged object, made the same way as the mutants."""
        content = (TREE / source).read_bytes()
        out = WORK / "baseline" / hashlib.sha256(source.encode() + content).hexdigest()[:20] / "o"
        if not out.exists():
            out.parent.mkdir(parents=True, exist_ok=True)
            self.compile(source, TREE / source, self.folder / "baseline.o", None)
            os.replace(self.folder / "baseline.o", out)
        return out.read_bytes()

    def judge(self, place, other):
        shutil.rmtree(self.objects)
        shutil.rmtree(self.overlay)
        self.objects.mkdir()
        changed = self.overlay / pathlib.PurePath(place.file).relative_to("src")
        changed.parent.mkdir(parents=True)
        changed.write_text(place.apply(other))
        objects, same = {}, True
        for source in self.sources_with(place.file):
            out = self.objects / (source.replace("/", "-") + ".o")
            text = changed if source == place.file else TREE / source
            if not self.compile(source, text, out, self.overlay):
                return BROKEN, ""
            objects[source] = out
            same = same and out.read_bytes() == self.baseline(source)
        if same:
            return SAME, ""
        linked = {}
        for step in self.suite.steps(place.file):
            seconds = self.suite.seconds(step, self.folder / "cwd")
            if step.program not in linked:
                linked[step.program] = self.folder / pathlib.PurePath(step.program).name
                if not self.link(step.program, objects, linked[step.program]):
                    return BROKEN, ""
            log = self.folder / "log"
            status, _ = run([str(linked[step.program]), *step.arguments], log, 5 + 5 * seconds, self.folder / "cwd")
            if status:
                return KILLED, self.killer(step, status, log)
        return SURVIVED, ""

    def link(self, program, objects, out):
        command = list(self.suite.link(program))
        command[command.index("-o") + 1] = str(out)
        tests = {s: o for s, o in objects.items() if s.startswith("tests/")}
        for i, word in enumerate(command):
            for source, changed in tests.items():
                if word.endswith(source[len("tests/") :] + ".o"):
                    command[i] = str(changed)
        # In front of the archive: its own member of that name is not taken then.
        command[1:1] = [str(o) for s, o in objects.items() if s not in tests]
        return run(command, self.folder / "log", 300, BUILD)[0] == 0

    @staticmethod
    def killer(step, status, log):
        text = log.read_text(errors="replace")
        match = re.search(r"\[  FAILED  \] ([\w/.]+)", text)
        if match:
            return f"{step.name}: {match.group(1)}"
        running = re.findall(r"\[ RUN      \] ([\w/.]+)", text)
        what = signal.Signals(-status).name if status < 0 else f"status {status}"
        return f"{step.name}: {running[-1] if running else ''} {what}"


def copy_tree():
    """The files of the project as they are now. Times of files that did not change stay, so little is built again."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=TOP,
                            capture_output=True, check=True).stdout.decode().split("\0")
    wanted = {name for name in listed if name and (TOP / name).is_file()}
    for name in wanted:
        source, target = TOP / name, TREE / name
        if not target.exists() or target.read_bytes() != source.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)
    for path in TREE.rglob("*"):
        if path.is_file() and str(path.relative_to(TREE)) not in wanted:
            path.unlink()


def build(jobs):
    if not (BUILD / "build.ninja").exists():
        subprocess.run(
            ["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", f"-DCMAKE_CXX_FLAGS_DEBUG={FLAGS}",
             f"-DCMAKE_C_FLAGS_DEBUG={FLAGS}", "-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=gold", "-DKORMELIN_BUILD_TESTS=ON",
             "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST", "-DKORMELIN_BUILD_EXAMPLES=OFF"],
            check=True, stdout=subprocess.DEVNULL)
    targets = [f"kormelin_tests_{name}" for name in PROGRAMS] + [f"{name}Replay" for name in replays()]
    result = subprocess.run(["ninja", "-C", BUILD, "-k0", f"-j{jobs}", *targets], capture_output=True, text=True)
    if result.returncode:
        sys.exit(result.stdout[-5000:])


def all_places(only):
    files = sorted(p for pattern in SOURCES for p in TREE.glob(pattern))
    files += [TREE / "src" / "RDImageProcessing" / f"{name}.hpp" for name in HEADERS]
    for path in files:
        name = str(path.relative_to(TREE))
        if path.exists() and (only is None or only in name or fnmatch.fnmatch(name, only)):
            yield from places_of(name, path.read_text())


def read_results(path):
    """The last verdict of each mutant; the key is that of its place and of what stands there."""
    results = {}
    if path.exists():
        for line in path.read_text().splitlines()[1:]:
            row = dict(zip(FIELDS, line.split("\t")))
            if len(row) == len(FIELDS):
                results[row["key"]] = row
    return results


def one_line(text):
    return " ".join(text.split())


def mutant_key(place, other):
    return f"{place.key}-{number_of(other):016x}"[:17]


def show(place, other):
    new = place.apply(other)
    lines = difflib.unified_diff(place.source.splitlines(), new.splitlines(), lineterm="", n=0)
    return "\n".join("    " + line for line in list(lines)[3:] if line[1:].strip() or line[:1] == "-")


def table(title, names, rows, what):
    print(f"\n{title:<20}{'mutants':>9}{'killed':>9}{'survived':>10}{'explained':>11}{'score':>9}{'of the rest':>13}")
    for name in [*names, "all"]:
        of = [row for row in rows if name == "all" or what(row) == name]
        if of:
            killed = sum(row["verdict"] == KILLED for row in of)
            explained = sum(row["verdict"] == SURVIVED and row["explained"] for row in of)
            rest = len(of) - explained
            print(f"{name:<20}{len(of):>9}{killed:>9}{len(of) - killed:>10}{explained:>11}{killed / len(of):>9.1%}"
                  f"{killed / rest if rest else 1:>13.1%}")


def folder_of(row):
    return str(pathlib.PurePath(row["file"]).parent)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=300, help="mutants (300)")
    parser.add_argument("--seed", type=int, default=1, help="which sample (1)")
    parser.add_argument("--jobs", type=int, default=1, help="mutants at a time (1)")
    parser.add_argument("--only", metavar="PATTERN", help="files whose path holds or matches this")
    parser.add_argument("--list", action="store_true", help="what was found so far; nothing is built or run")
    parser.add_argument("--again", action="store_true", help="try the survivors once more, with the tests as they are now")
    parser.add_argument("--key", action="append", help="try these mutants alone")
    options = parser.parse_args()

    results_file = WORK / f"results-{options.seed}.tsv"
    results = read_results(results_file)
    explained = set(re.findall(r"`([0-9a-f]{12}-[0-9a-f]{4})`", (HERE / "survivors.md").read_text()))
    WORK.mkdir(parents=True, exist_ok=True)
    if not options.list:
        copy_tree()
        build(max(options.jobs, 2))
    places = sorted(all_places(options.only), key=lambda place: number_of(options.seed, place.key))
    drawn = [(place, place.mutant(options.seed)) for place in places]
    if options.key:
        drawn = [(place, other) for place in places for other in place.others if mutant_key(place, other) in options.key]
        results = {key: row for key, row in results.items() if key not in options.key}
    elif options.again:
        for key in [key for key, row in results.items() if row["verdict"] == SURVIVED and key not in explained]:
            del results[key]

    if not results_file.exists():
        results_file.write_text("\t".join(FIELDS) + "\n")

    lock = threading.Lock()
    queue = iter(drawn)
    chosen = []  # in the order in which they were drawn

    def counted():
        return sum(1 for entry in chosen if entry[2] is None or entry[2]["verdict"] in (KILLED, SURVIVED))

    def work(number):
        worker = Worker(suite, number)
        while True:
            with lock:
                if counted() >= options.count:
                    return
                place, other = next(queue, (None, None))
                if place is None:
                    return
                key = mutant_key(place, other)
                entry = [place, other, results.get(key)]
                chosen.append(entry)
            if entry[2] is None:
                begin = time.monotonic()
                verdict, by = worker.judge(place, other)
                old = place.source[place.start : place.end]
                row = (key, verdict, by, f"{time.monotonic() - begin:.1f}", place.operator, place.file, place.line,
                       one_line(old), one_line(other))
                with lock:
                    entry[2] = dict(zip(FIELDS, map(str, row)))
                    with open(results_file, "a") as out:
                        out.write("\t".join(map(str, row)) + "\n")
                    print(f"{counted():4}  {verdict:16}  {place.file}:{place.line}  {by}", flush=True)
                    if verdict == SURVIVED:
                        print(f"      {key}\n{show(place, other)}", flush=True)

    if options.list:
        chosen = [[place, other, results[mutant_key(place, other)]] for place, other in drawn
                  if mutant_key(place, other) in results]
    else:
        suite = Suite()
        with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
            for future in [pool.submit(work, number) for number in range(options.jobs)]:
                future.result()

    rows = []
    for place, other, row in chosen:
        if row and row["verdict"] in (KILLED, SURVIVED) and len(rows) < options.count:
            rows.append({**row, "place": place, "other": other, "explained": row["key"] in explained})
    print("\nSurvivors")
    for row in sorted((row for row in rows if row["verdict"] == SURVIVED), key=lambda row: (row["file"], row["place"].line)):
        mark = "explained" if row["explained"] else "?"
        print(f"{row['file']}:{row['place'].line}  {row['operator']}  {row['key']}  {mark}\n{show(row['place'], row['other'])}")
    table("operator", OPERATORS, rows, lambda row: row["operator"])
    table("folder", sorted({folder_of(row) for row in rows}), rows, folder_of)
    dropped = collections.Counter(row["verdict"] for _, _, row in chosen if row)
    print(f"\nnot counted: {dropped[BROKEN]} that do not compile, {dropped[SAME]} with the same object; "
          f"{sum(float(row['seconds']) for row in rows) / max(len(rows), 1):.1f} seconds a mutant")
    killed = sum(row["verdict"] == KILLED for row in rows)
    return 0 if rows and killed >= ENOUGH * len(rows) else 1


if __name__ == "__main__":
    sys.exit(main())

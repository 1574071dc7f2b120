#!/usr/bin/env python3
"""usage: performance.py MEASURED DOCS [--before COMMIT]

Writes the tables of DOCS/performance.md, which stand between comments, from what performance.sh has measured in the
folder MEASURED, and prints the table of the goals. Figures of an earlier state stand in DOCS/performance-before.json;
--before makes that file anew. Fails if a goal is not reached or was not measured.
"""
import json
import os
import platform
import re
import sys

MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}
SIZES = {"320": "320x300", "500": "500x600", "1600": "1600x1500"}
MEMCPY = "Memcpy/1600x1500"
UPRIGHT = "Segment/four-fingers-1600x1500/mode:0"


def read_benchmarks(measured, name):
    with open(os.path.join(measured, f"{name}.json"), encoding="utf-8") as file:
        return json.load(file)["benchmarks"]


def read_times(measured, state):
    """Median of each benchmark in microseconds: of the processor's time, of threads of the clock's."""
    times = {}
    for entry in read_benchmarks(measured, f"{state}-times") + read_benchmarks(measured, f"{state}-threads"):
        if entry.get("error_occurred"):
            raise SystemExit(f"{entry['name']}: {entry['error_message']}")
        if entry.get("aggregate_name") != "median":
            continue
        name = entry["run_name"].removesuffix("/real_time")
        time = entry["real_time"] if name.startswith("Threads/") else entry["cpu_time"]
        times[plain_name(name)] = time * MICROSECONDS[entry["time_unit"]]
    return times


def plain_name(name):
    """Operator/size, with /opencv behind it where it is OpenCV's."""
    match = re.fullmatch(r"(\w+)(/opencv)?/(320|500|1600)", name)
    if match:
        return f"{match[1]}/{SIZES[match[3]]}{match[2] or ''}"
    return name.removeprefix("Filter/")


def read_counts(path):
    """Instructions of each function counted_..., without that."""
    counts = {}
    with open(path, encoding="utf-8") as file:
        for line in file:
            match = re.match(r"\s*([\d,]+) \(.*:counted_(\w+) \[", line)
            if match:
                counts[match[2]] = int(match[1].replace(",", ""))
    return counts


def read_functions(path, most=12):
    """(instructions, function) of the functions that take most of a run."""
    functions = []
    with open(path, encoding="utf-8") as file:
        for line in file:
            match = re.match(r"\s*([\d,]+) \(\s*[\d.]+%\)\s+(\S*?):(.*) \[", line)
            if match and "PROGRAM TOTALS" not in line:
                functions.append((int(match[1].replace(",", "")), short_function(match[3])))
    return functions[:most]


def short_function(name):
    name = name.replace("(anonymous namespace)::", "")
    name = re.sub(r"\{lambda\([^{}]*\)#\d+\}", "{lambda}", name)
    depth, plain = 0, []
    for letter in name:  # without arguments and template arguments
        depth += letter in "(<"
        if depth == 0:
            plain.append(letter)
        depth -= letter in ")>"
    words = "".join(plain).replace(" const", "").split()
    return words[-1] if words else name


def table(head, rows):
    align = "|".join("---" if i == 0 else "--:" for i in range(len(head)))
    return "\n".join(["| " + " | ".join(head) + " |", f"|{align}|"] + ["| " + " | ".join(row) + " |" for row in rows])


def number(value):
    if value is None:
        return ""
    return f"{value:.3g}" if value < 100 else f"{value:,.0f}"


def thousands(value):
    return "" if value is None else f"{value / 1000:,.0f}"


def quotient(a, b):
    return None if a is None or not b else a / b


def goals(times, memory):
    """(what, reached figure or None, goal, whether a goal is a lowest figure)."""
    def of(name, other):
        return quotient(times.get(name), times.get(other))

    def opencv(name):
        return of(name, name + "/opencv")

    def search(name):
        """The larger of the two goals counts: 40 microseconds, or a fifteenth of the plain search."""
        time, plain = times.get(name), times.get(name + "/plain")
        return None if time is None or plain is None else time / max(40.0, plain / 15)

    threads = "Threads/four-fingers-1600x1500/"
    one, two = times.get(threads + "1"), times.get(threads + "2")
    entries = [
        ("whole run, mode 0, four upright fingers, 1600 by 1500, to memcpy", of(UPRIGHT, MEMCPY), 100, False),
        ("the same hand leaning, in a picture of 1.65 times the pixels, to that memcpy",
         of("Segment/leaning-hand/mode:0", MEMCPY), 160, False),
        ("the upright hand at 1000 pixels per inch, 3200 by 3000, to 500",
         of("Segment/four-fingers-3200x3000-1000ppi/mode:0", UPRIGHT), 4.2, False),
        ("mode 1 on the upright hand, to memcpy", of(UPRIGHT.replace(":0", ":1"), MEMCPY), 25, False),
        ("reduction by five, 1600 by 1500, to `cv::resize` INTER_AREA", opencv("Reduce5/1600x1500"), 0.25, False),
        ("box mean 5 by 5, 500 by 600, to `cv::blur`", opencv("Box5/500x600"), 0.4, False),
        ("box mean 21 by 21, 500 by 600, to `cv::blur`", opencv("Box21/500x600"), 0.8, False),
        ("rotating filter, width 9, 320 by 300, to memcpy of 1600 by 1500",
         of("Rotating9Deviation/320x300", MEMCPY), 3.5, False),
        ("labelling with statistics, 500 by 600, to `cv::connectedComponentsWithStats`",
         opencv("Components/500x600"), 0.1, False),
        ("search of the entropy threshold, to 40 µs or 1/15 of the plain search", search("SearchEntropy"), 1, False),
        ("search of Yager's threshold, to the same", search("SearchYager"), 1, False),
        ("rotation, nearest, 1600 by 1500, to `cv::warpAffine`", opencv("TurnNearest/1600x1500"), 0.6, False),
        ("rotation, bilinear, 1600 by 1500, to `cv::warpAffine`", opencv("TurnBilinear/1600x1500"), 1.0, False),
        ("histogram, 500 by 600, to `cv::calcHist`", opencv("Histogram/500x600"), 1.0, False),
        ("table, 500 by 600, to `cv::LUT`", opencv("Table/500x600"), 1.0, False),
        ("threshold, 500 by 600, to `cv::threshold`", opencv("Threshold/500x600"), 1.0, False),
        ("two threads with a handle each, to one", None if not one or not two else 2 * one / two, 1.9, True),
        ("peak memory beside the input, bytes per pixel of the input", max(memory, default=None), 4, False),
    ]
    return entries


def is_reached(figure, goal, lowest):
    return figure is not None and (figure >= goal if lowest else figure <= goal)


def goal_table(entries):
    rows = []
    for what, figure, goal, lowest in entries:
        reached = "not measured" if figure is None else "yes" if is_reached(figure, goal, lowest) else "**no**"
        rows.append([what, ("at least " if lowest else "at most ") + f"{goal:g}", number(figure), reached])
    return table(["What", "Goal", "Measured", "Reached"], rows)


def run_table(times, before):
    rows = []
    for name in sorted(times):
        if name.startswith("Segment/"):
            old = before["times"].get(name)
            rows.append([name.removeprefix("Segment/").replace("/mode:", ", mode "), number(quotient(old, 1000)),
                         number(times[name] / 1000), number(quotient(old, before["times"].get(MEMCPY))),
                         number(times[name] / times[MEMCPY])])
    return table(["Picture", "before, ms", "now, ms", "before, memcpys", "now, memcpys"], rows)


def stage_table(times, before):
    steps = [("looks at the input", "1-validate", None), ("reduction to 100 pixels per inch", "2-reduce", None),
             ("smoothing, stretching and threshold", "3-binarize", None),
             ("objects, upright and cut apart", "4-find-segments", None), ("rules", "5-rules", None),
             ("detection with boxes", "until-boxes", None),
             ("turning of the input, cutting out", "until-cuts", "until-boxes"),
             ("refinement and pruning", "whole", "until-cuts"), ("whole run", "whole", None)]
    rows = []
    for text, stage, less in steps:
        row = [text]
        for hand in ("upright", "leaning"):
            for values in (before["times"], times):
                value, start = values.get(f"Stage/{hand}/{stage}"), values.get(f"Stage/{hand}/{less}", 0.0)
                row.append(number(None if value is None else max(value - start, 0.0)))
        rows.append(row)
    return table(["Stage", "upright before, µs", "now, µs", "leaning before, µs", "now, µs"], rows)


def operator_table(times, before):
    rows = []
    for name in sorted(times):
        if not re.fullmatch(r"\w+/\d+x\d+", name) or name == MEMCPY:
            continue
        size = name.split("/")[1]
        other = times.get(name + "/opencv")
        rows.append([name.replace("/", " "), number(before["times"].get(name)), number(times[name]), number(other),
                     number(quotient(times[name], other)), number(quotient(times[name], times.get("Copy/" + size)))])
    for name in ("SearchEntropy", "SearchYager"):
        rows.append([name, number(before["times"].get(name)), number(times.get(name)), "", "", ""])
    return table(["Operator", "before, µs", "now, µs", "OpenCV, µs", "ratio", "copies of its input"], rows)


def count_table(counts, before):
    rows = [[name.replace("_", " "), thousands(before["counts"].get(name)), thousands(counts[name])] for name in counts]
    return table(["Operator", "before, thousands", "now, thousands"], sorted(rows))


def function_tables(counts, functions, before):
    parts = []
    for title, total, entries in (("Before", before["counts"].get("Run_mode0_upright"), before["functions"]),
                                  ("Now", counts.get("Run_mode0_upright"), functions)):
        rows = [[f"`{name}`", thousands(count), f"{100 * count / total:.1f} %"] for count, name in entries] if total else []
        parts.append(f"{title}:\n\n" + table(["Function", "thousands of instructions", "share"], rows))
    return "\n\n".join(parts)


def memory_rows(path):
    """The lines of measure.sh's table as lists of words."""
    with open(path, encoding="utf-8") as file:
        lines = [line.split() for line in file]
    return [line for line in lines if len(line) == 9 and line[1] in ("0", "1")]


def machine(measured):
    model = platform.processor() or platform.machine()
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        for line in file:
            if line.startswith("model name"):
                model = line.split(":", 1)[1].strip()
                break
    with open(os.path.join(measured, "compiler.txt"), encoding="utf-8") as file:
        compiler = file.read().strip()
    with open(os.path.join(measured, "now-times.json"), encoding="utf-8") as file:
        load = json.load(file)["context"].get("load_avg", [])
    return (f"{model}, {os.cpu_count()} cores, Linux {platform.release()}, {compiler}; load of the machine when the "
            f"benchmarks began: {load[0]:.1f}." if load else f"{model}, {os.cpu_count()} cores, {compiler}.")


def replace_block(text, name, content):
    begin, end = f"<!-- begin {name} -->", f"<!-- end {name} -->"
    if text.count(begin) != 1 or text.count(end) != 1:
        raise SystemExit(f"performance.md: no place for {name}")
    first, last = text.index(begin) + len(begin), text.index(end)
    return text[:first] + "\n" + content + "\n" + text[last:]


def main(arguments):
    if len(arguments) not in (3, 5) or (len(arguments) == 5 and arguments[3] != "--before"):
        print(__doc__.strip(), file=sys.stderr)
        return 2
    measured, docs = arguments[1], arguments[2]
    before_path = os.path.join(docs, "performance-before.json")
    if len(arguments) == 5:
        before = {"commit": arguments[4], "times": read_times(measured, "before"),
                  "counts": read_counts(os.path.join(measured, "before-operators.txt")),
                  "functions": read_functions(os.path.join(measured, "before-functions.txt"))}
        before["times"] = {name: float(f"{time:.4g}") for name, time in sorted(before["times"].items())}
        with open(before_path, "w", encoding="utf-8") as file:
            json.dump(before, file, indent=1)
            file.write("\n")
    with open(before_path, encoding="utf-8") as file:
        before = json.load(file)

    times = read_times(measured, "now")
    counts = read_counts(os.path.join(measured, "now-operators.txt"))
    functions = read_functions(os.path.join(measured, "now-functions.txt"))
    memory = memory_rows(os.path.join(measured, "memory.txt"))
    reached = goals(times, [float(row[6]) for row in memory])
    document = os.path.join(docs, "performance.md")
    with open(document, encoding="utf-8") as file:
        text = file.read()
    for name, content in (
            ("machine", machine(measured)), ("goals", goal_table(reached)), ("runs", run_table(times, before)),
            ("stages", stage_table(times, before)), ("operators", operator_table(times, before)),
            ("instructions", count_table(counts, before)), ("profile", function_tables(counts, functions, before)),
            ("memory", table(["Picture", "mode", "peak, kB", "bytes per pixel"],
                             [[row[0], row[1], row[5], row[6]] for row in memory]))):
        text = replace_block(text, name, content)
    with open(document, "w", encoding="utf-8") as file:
        file.write(text)
    print(goal_table(reached))
    missed = [entry for entry in reached if not is_reached(*entry[1:])]
    for what, figure, _, _ in missed:
        print(f"{'not measured' if figure is None else 'not reached'}: {what}", file=sys.stderr)
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))

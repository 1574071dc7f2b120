#!/usr/bin/env bash
# usage: coverage.sh [--html]
# Runs the tests with every line and branch of the library counted (preset coverage), and prints the shares that they
# reach: by folder, and the files that fall short. Fails if a folder of src reaches less than 95 % of its lines or 90 %
# of its branches, or if what reads bitmaps and what takes the exported calls is not reached whole. With --html, every
# line stands marked in build/coverage/index.html.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

html=()
case "${1:-}" in
    "") ;;
    --html) html=(--html-details "$repository/build/coverage/index.html") ;;
    *) sed -n '2,6s/^# //p' "${BASH_SOURCE[0]}" >&2 && exit 2 ;;
esac
install_missing "${build_packages[@]}" libgtest-dev libgmock-dev gcovr
configure coverage
build coverage
# Without the counts of earlier runs, and without the notes on sources that are no more.
ninja -C "$repository/build/coverage" -t cleandead >/dev/null
find "$repository/build/coverage" -name '*.gcda' -delete
find "$repository/build/coverage" -name '*.gcno' | while read -r note; do
    [ -e "${note%.gcno}.o" ] || rm "$note"
done
(cd "$repository" && ctest --preset coverage --parallel "$jobs" --quiet --output-log build/coverage/tests.log) || {
    tail -n 60 "$repository/build/coverage/tests.log" >&2
    exit 1
}

# Branches to the handlers of exceptions are left out: nearly every call has one.
summary=$repository/build/coverage/summary.json
# What an interrupted run leaves lies in the folder where it was started.
cd "$repository/build/coverage"
gcovr --root "$repository" --filter "$repository/src/" --filter "$repository/include/" --exclude-throw-branches \
    --exclude-unreachable-branches --json-summary "$summary" "${html[@]}" "$repository/build/coverage"
python3 - "$summary" <<'EOF'
import json, os, re, sys

LIMITS = (95.0, 90.0)  # lines, branches
WHOLE = re.compile(r"src/(RDTools/Bitmap\w*|HandleBase|Kormelin\w*"
                   r"|VelmarinKormelinSegmentation)\.[ch]pp")


def shares(counts):
    return [100.0 * covered / total if total else 100.0 for covered, total in (counts[:2], counts[2:])]


def row(name, counts):
    lines, branches = shares(counts)
    print("%-56s %5d of %5d %6.1f %%   %5d of %5d %6.1f %%" % (name, *counts[:2], lines, *counts[2:], branches))


files = {f["filename"]: [f[k] for k in ("line_covered", "line_total", "branch_covered", "branch_total")]
         for f in json.load(open(sys.argv[1]))["files"]}
folders = {}
for name, counts in files.items():
    for folder in (os.path.dirname(name), "all"):
        folders[folder] = [a + b for a, b in zip(folders.get(folder, [0] * 4), counts)]

print("\n%-56s %22s   %22s" % ("", "lines", "branches"))
failed = []
for folder in sorted(folders, key=lambda name: (name == "all", name)):
    row(folder, folders[folder])
    if folder.startswith("src") and any(share < limit for share, limit in zip(shares(folders[folder]), LIMITS)):
        failed.append("%s reaches less than %g %% of lines or %g %% of branches" % (folder, *LIMITS))
short = [name for name in files if any(share < limit for share, limit in zip(shares(files[name]), LIMITS))]
print("\nFiles below %g %% of lines or %g %% of branches:%s" % (*LIMITS, "" if short else " none"))
for name in sorted(short, key=lambda name: shares(files[name])[1]):
    row(name, files[name])
whole = [name for name in files if WHOLE.fullmatch(name)]
if len(whole) < 10:
    failed.append("the files to be reached whole are not where they were")
for name in whole:
    if shares(files[name]) != [100.0, 100.0]:
        row(name, files[name])
        failed.append("%s is not reached whole" % name)
print("".join("\ncoverage: " + text for text in failed), file=sys.stderr)
sys.exit(1 if failed else 0)
EOF

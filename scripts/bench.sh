#!/bin/bash
# Builds and runs the benchmarks and prints how the library stands beside its
# peers: a peer's median time divided by the library's, so above 1 the library
# is faster. `scripts/bench.sh data qxb` runs only these two. Peers that are not
# installed are left out; docs/performance.md names their packages.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

need_packages "${build_packages[@]}" python3
configure release
build release

bin=$root/build/release/bin
out=$root/build/release/bench
[[ $# -gt 0 ]] || set -- $(cd "$bin" && ls -- *_bench | sed 's/_bench$//')

# On some processors the C library's memcpy of a few kilobytes takes up to forty
# times as long when the addresses have an unlucky distance, which the place of
# a buffer in the heap decides. With this it copies by another route, for all.
export GLIBC_TUNABLES=glibc.cpu.x86_rep_movsb_threshold=100000000

for name in "$@"; do
  echo "Running $name" >&2
  "$bin/${name}_bench" --benchmark_repetitions=9 --benchmark_enable_random_interleaving=true \
    --benchmark_report_aggregates_only=true --benchmark_format=json >"$out/$name.json"
done

python3 - "${@/#/$out/}" <<'PYTHON'
import json, re, sys

# A benchmark is named Job<Subject, Element>/arguments, job/Subject/arguments or
# JobSubject. The library's subjects begin with QX, or are these.
TEMPLATE = re.compile(r"(\w+)<((?:[^<>,]|<.*>)+)(?:, ([^<>]+))?>(.*)")
SLASHED = re.compile(r"([^/<>]+)/([A-Za-z][^/<>]*)(.*)")
PLAIN = re.compile(r"(Suppressed|Printed)(\w+)")
LIBRARY = {"Tags", "Pool", "Hanoi", "UnionFind", "Record"}
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}

jobs = {}
for path in sys.argv[1:]:
    for b in json.load(open(path + ".json"))["benchmarks"]:
        if b.get("error_occurred"):
            sys.exit(b["run_name"] + ": " + b["error_message"])
        if b["aggregate_name"] != "median":
            continue
        if match := TEMPLATE.match(b["run_name"]):
            job, subject, element, rest = match.groups(default="")
        elif match := SLASHED.match(b["run_name"]):
            (job, subject, rest), element = match.groups(), ""
        elif match := PLAIN.match(b["run_name"]):
            (job, subject), element, rest = match.groups(), "", ""
        else:
            continue
        clock = "real_time" if "real_time" in rest else "cpu_time"
        row = (job, element, re.sub("/(real_time|iterations:1)", "", rest))
        jobs.setdefault(row, {})[subject] = b[clock] * NANOSECONDS[b["time_unit"]]

print("| job | library, ns | peer / library |\n|---|---|---|")
for row, times in sorted(jobs.items()):
    ours = {s for s in times if s in LIBRARY or s.startswith("QX")}
    for subject in sorted(ours):
        own = times[subject]
        ratios = [(t / own, s) for s, t in times.items() if s not in ours]
        job = " ".join(filter(None, (row[0], subject, row[1]))) + row[2]
        print(f"| {job} | {own:,.1f} | " + ", ".join(f"{s} {r:.2f}" for r, s in sorted(ratios)) + " |")
PYTHON

#!/usr/bin/env bash
# Instruction counts of the benchmarked operations under valgrind --tool=callgrind, steady
# on a shared machine where times are not:
#   scripts/callgrind.sh [N] [OP...]     N calls per operation (default 200); no OP: all
# build/bench/count_ops runs each operation N times with collection on and dumps the counts
# under its name; this prints instructions per call (less the empty loop of "baseline") and
# per unit (segment, position asked, attribute, value, column), the cost of the segment last
# in the whole chain, and the ratios ours/libyang where libyang's operations were counted.
set -euo pipefail
cd "$(dirname "$0")/.."

n=${1:-200}
[ $# -gt 0 ] && shift

command -v valgrind >/dev/null || { echo "callgrind.sh: valgrind is not installed (scripts/setup.sh bench)" >&2; exit 1; }
cmake -S . -B build -G Ninja -DZAN_BENCH=ON >&2
cmake --build build -j2 --target count_ops zan_fe >&2

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
valgrind --tool=callgrind --collect-atstart=no --callgrind-out-file="$out/cg.out" \
  build/bench/count_ops "$n" "$@" >"$out/units" 2>"$out/valgrind.log" ||
  { cat "$out/valgrind.log" >&2; exit 1; }

python3 - "$out" "$n" <<'EOF'
import glob
import os
import sys

sys.path.insert(0, "scripts")
from bench_table import table  # noqa: E402  the one table printer of the benchmark scripts

out, n = sys.argv[1], int(sys.argv[2])
units = {}
order = []
for line in open(os.path.join(out, "units")):
    name, count, unit = line.split()
    units[name] = (float(count), unit)
    order.append(name)

total = {}
for path in glob.glob(os.path.join(out, "cg.out.*")):
    name = ir = None
    for line in open(path):
        prefix = "desc: Trigger: Client Request: "
        if line.startswith(prefix):
            name = line[len(prefix):].strip()
        elif line.startswith("totals:"):
            ir = int(line.split()[1])
    if name is not None and ir is not None:
        total[name] = ir

base = total.get("baseline", 0) / n
per_call = {k: v / n - base for k, v in total.items() if k != "baseline"}

rows = []
for name in order:
    if name == "baseline" or name not in per_call:
        continue
    count, unit = units[name]
    rows.append([name, f"{per_call[name]:,.0f}", f"{count:g} {unit}", f"{per_call[name] / count:,.1f}"])
if "resolve_chain_tail" in per_call and "resolve_chain_tail_parent" in per_call:
    last = per_call['resolve_chain_tail'] - per_call['resolve_chain_tail_parent']
    rows.append(["segment last in the whole chain (tail - tail_parent)", f"{last:,.0f}", "1 segment", f"{last:,.1f}"])


print(f"Instructions (callgrind Ir), {n} calls per operation, empty loop "
      f"({base:,.0f} per call) taken off\n")
table(rows, ["Operation", "Per call", "Units per call", "Per unit"])

pairs = [("three-level keyed path, dispatcher", "resolve_grandchild", "peer_find_path"),
         ("three-level keyed path, dispatcher and walk", "resolve_walk_grandchild", "peer_find_path"),
         ("row of tbl_conf_mac_nacl_eol, 395 leaves each side", "properties_mac_nacl", "peer_print_mac_ace_full"),
         ("row of tbl_conf_mac_nacl_eol as configured", "properties_mac_nacl", "peer_print_mac_ace"),
         ("columns of the largest table / leaf paths of its list", "columns_largest_table", "peer_schema_leaves")]
prows = [[what, f"{per_call[o]:,.0f}", f"{per_call[t]:,.0f}", f"{per_call[o] / per_call[t]:.2f}"]
         for what, o, t in pairs if o in per_call and t in per_call]
if prows:
    print("\nSide by side with libyang (instructions per call)\n")
    table(prows, ["Operation", "Ours", "libyang", "ours/libyang"])
EOF

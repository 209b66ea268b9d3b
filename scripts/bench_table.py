#!/usr/bin/env python3
"""Prints one table of the benchmark figures from Google Benchmark JSON files, then the
comparable pairs with libyang as ratios ours/libyang (CPU time, same process where the
peer executable ran them), then the figures the project aims at.

usage: bench_table.py RESULT.json...
"""
import json
import sys

# Counters that divide an iteration, in the order they are looked for.
PER = ["per_segment", "per_attribute", "per_value", "per_column"]
COUNT = ["segments", "attributes", "values", "columns"]

# (what, ours, libyang, counter compared)
PAIRS = [
    ("three-level keyed path, dispatcher", "BM_ResolveGrandchild", "BM_PeerFindPath", None),
    ("three-level keyed path, dispatcher and walk to the row", "BM_ResolveWalkGrandchild", "BM_PeerFindPath", None),
    ("row of tbl_conf_mac_nacl_eol, 395 leaves each side", "BM_PropertiesMacNacl", "BM_PeerPrintMacAceFull", None),
    ("row of tbl_conf_mac_nacl_eol as configured (libyang: only the leaves with a value)",
     "BM_PropertiesMacNacl", "BM_PeerPrintMacAce", None),
    ("per attribute, 395 leaves each side", "BM_PropertiesMacNacl", "BM_PeerPrintMacAceFull", "per_attribute"),
    ("columns of the largest table / leaf paths of its list", "BM_ColumnsLargestTable", "BM_PeerSchemaLeaves",
     "per_column"),
]


def unit_ns(unit):
    return {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[unit]


def load(paths, context=None):
    out = {}
    for p in paths:
        with open(p) as fh:
            data = json.load(fh)
        if context is not None:
            context.append(data.get("context", {}))
        for b in data.get("benchmarks", []):
            if b.get("error_occurred"):
                out[b["run_name"]] = {"error": b.get("error_message", "error")}
                continue
            # With repetitions, the median aggregate stands for the benchmark.
            if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
                continue
            name = b.get("run_name", b["name"])
            if b.get("run_type") == "iteration" and name in out and "median" in out[name]:
                continue
            scale = unit_ns(b["time_unit"])
            entry = {"cpu": b["cpu_time"] * scale, "real": b["real_time"] * scale,
                     "median": b.get("run_type") == "aggregate", "label": b.get("label", "")}
            for k in PER:
                if k in b:
                    entry["per"] = (k, b[k] * 1e9)   # rate counters are inverted to seconds
            for k in COUNT:
                if k in b:
                    entry["count"] = (k, b[k])
            for k in ("allocs", "tables"):
                if k in b:
                    entry[k] = b[k]
            out[name] = entry
    return out


def fmt_ns(ns):
    if ns is None:
        return "-"
    if ns >= 1e6:
        return f"{ns / 1e6:.2f} ms"
    if ns >= 1e3:
        return f"{ns / 1e3:.2f} us"
    return f"{ns:.1f} ns"


def table(rows, head):
    widths = [max(len(str(r[i])) for r in rows + [head]) for i in range(len(head))]
    line = lambda r: "| " + " | ".join(str(c).ljust(w) for c, w in zip(r, widths)) + " |"
    print(line(head))
    print("|" + "|".join("-" * (w + 2) for w in widths) + "|")
    for r in rows:
        print(line(r))


def main(paths):
    contexts = []
    b = load(paths, contexts)
    rows = []
    for name, e in b.items():
        if "error" in e:
            rows.append([name, "error: " + e["error"], "", "", "", ""])
            continue
        per = e.get("per")
        count = e.get("count")
        rows.append([name, fmt_ns(e["cpu"]), fmt_ns(e["real"]),
                     f"{count[0]} {count[1]:g}" if count else "",
                     f"{fmt_ns(per[1])} {per[0]}" if per else "",
                     f"{e['allocs']:g}" if "allocs" in e else ""])
    loads = [" ".join(f"{x:.2f}" for x in c.get("load_avg", [])) for c in contexts]
    first = contexts[0] if contexts else {}
    print(f"{first.get('num_cpus', '?')} CPUs at {first.get('mhz_per_cpu', '?')} MHz; load average "
          f"(1, 5, 15 min) at the start of each suite: {'; '.join(loads)}\n")
    print("Figures (CPU time; wall time shows the load of the shared cores)\n")
    table(rows, ["Benchmark", "CPU", "Wall", "Count", "Per unit", "Allocations"])

    pairs = []
    for what, ours, theirs, counter in PAIRS:
        if ours not in b or theirs not in b or "error" in b[ours] or "error" in b[theirs]:
            continue
        if counter:
            o = b[ours].get("per", (None, None))[1]
            t = b[theirs].get("per", (None, None))[1]
        else:
            o, t = b[ours]["cpu"], b[theirs]["cpu"]
        pairs.append([what, f"{ours}", fmt_ns(o), f"{theirs}", fmt_ns(t), f"{o / t:.2f}"])
    if pairs:
        print("\nSide by side with libyang (ours/libyang below 1: ours is faster)\n")
        table(pairs, ["Operation", "Ours", "CPU", "libyang", "CPU", "ours/libyang"])
    else:
        print("\nNo libyang figures (bench_peer not built: libyang 2 is not installed).")

    aims = []

    def aim(what, value, bound, text, fmt=fmt_ns):
        if value is not None:
            aims.append([what, fmt(value), text, "met" if value <= bound else "not met"])

    get = lambda n: b[n]["cpu"] if n in b and "error" not in b[n] else None
    g, peer = get("BM_ResolveWalkGrandchild"), get("BM_PeerFindPath")
    if g is not None and peer is not None:
        aim("three-level path and walk, ours/libyang", g / peer, 0.5, "<= 0.5", lambda v: f"{v:.2f}")
    miss = get("BM_ResolveMiss")
    if miss is not None:
        aim("miss, per position asked (331)", miss / 331, 2.0, "<= 2 ns")
        aim("miss, allocations", b["BM_ResolveMiss"].get("allocs", 0), 0, "0", lambda v: f"{v:g}")
    tail, parent = get("BM_ResolveChainTail"), get("BM_ResolveChainTailParent")
    if tail is not None and parent is not None:
        aim("segment last in the whole chain", tail - parent, 700, "< 700 ns")
    if "BM_PropertiesMacNacl" in b and "per" in b["BM_PropertiesMacNacl"]:
        aim("row to properties, per attribute (395)", b["BM_PropertiesMacNacl"]["per"][1], 30, "<= 30 ns")
    full = get("BM_PeerPrintMacAceFull")
    props = get("BM_PropertiesMacNacl")
    if full is not None and props is not None:
        aim("row to properties, ours/libyang JSON", props / full, 0.2, "<= 0.2", lambda v: f"{v:.2f}")
    if "BM_ColumnsAllTables" in b and "per" in b["BM_ColumnsAllTables"]:
        aim("column description of all tables, per column", b["BM_ColumnsAllTables"]["per"][1], 15, "<= 15 ns")
    if aims:
        print("\nAims\n")
        table(aims, ["Figure", "Measured", "Aim", ""])


if __name__ == "__main__":
    main(sys.argv[1:])

#!/usr/bin/env python3
"""Prints the size table of bench_scale's Google Benchmark JSON: per shape and size the load,
the heap the store holds per row, one keyed get of the last row and the dump per row, beside
libyang's parse of the same content; then the growth from 10,000 to 100,000 rows (ideal 10)
and the keyed get's from 1,000 to 100,000 (ideal 1); then libyang's parse with the same lists
in one container, and its growth from the size before.

usage: scale_table.py RESULT.json
"""
import json
import re
import sys

SCALE = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}   # to milliseconds


def load(path):
    with open(path) as fh:
        data = json.load(fh)
    out = {}
    for b in data.get("benchmarks", []):
        if b.get("error_occurred"):
            continue
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        m = re.match(r"BM_(\w+)/shape:(\d)/rows:(\d+)", b.get("run_name", b["name"]))
        if not m:
            continue
        what, shape, rows = m.group(1), int(m.group(2)), int(m.group(3))
        entry = {"ms": b["cpu_time"] * SCALE[b["time_unit"]], "rows": b.get("rows", rows)}
        if "heap_per_row" in b:
            entry["heap"] = b["heap_per_row"]
        out[(what, shape, rows)] = entry
    return out


def fmt(v, digits=2):
    return "-" if v is None else f"{v:,.{digits}f}"


def main(argv):
    if len(argv) != 2:
        sys.exit(__doc__.strip().splitlines()[-1])
    r = load(argv[1])
    shapes = ["flat", "child", "mix"]
    sizes = sorted({k[2] for k in r})
    get = lambda what, s, n, key="ms": r.get((what, s, n), {}).get(key)
    print("| shape | rows | load ms | load µs/row | heap B/row | get µs | dump µs/row "
          "| libyang parse ms | libyang µs/row | libyang heap B/row | load ours/libyang | heap ours/libyang |")
    print("|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|")
    for s, name in enumerate(shapes):
        for n in sizes:
            rows = int(get("ScaleLoad", s, n, "rows") or n)
            load_ms, heap = get("ScaleLoad", s, n), get("ScaleLoad", s, n, "heap")
            get_ms, dump_ms = get("ScaleGetLast", s, n), get("ScaleDump", s, n)
            ly_ms, ly_heap = get("PeerScaleParse", s, n), get("PeerScaleParse", s, n, "heap")
            per = lambda ms: None if ms is None else ms * 1e3 / rows
            ratio = lambda a, b: None if a is None or not b else a / b
            print(f"| {name} | {rows:,} | {fmt(load_ms)} | {fmt(per(load_ms))} | {fmt(heap, 0)} | "
                  f"{fmt(None if get_ms is None else get_ms * 1e3)} | {fmt(per(dump_ms))} | {fmt(ly_ms)} | "
                  f"{fmt(per(ly_ms))} | {fmt(ly_heap, 0)} | {fmt(ratio(load_ms, ly_ms))} | {fmt(ratio(heap, ly_heap))} |")
    if 10000 in sizes and 100000 in sizes:
        print()
        print("| shape | load x (10k to 100k) | heap x | dump x | get x (1k to 100k) | libyang parse x | libyang heap x |")
        print("|---|---:|---:|---:|---:|---:|---:|")
        for s, name in enumerate(shapes):
            def growth(what, key="ms", lo=10000, hi=100000):
                a, b = get(what, s, lo, key), get(what, s, hi, key)
                if a is None or b is None or not a:
                    return None
                ra, rb = get(what, s, lo, "rows") or lo, get(what, s, hi, "rows") or hi
                # memory is per row: its growth is the total's
                return b / a * (rb / ra if key == "heap" else 1)
            print(f"| {name} | {fmt(growth('ScaleLoad'), 1)} | {fmt(growth('ScaleLoad', 'heap'), 1)} | "
                  f"{fmt(growth('ScaleDump'), 1)} | {fmt(growth('ScaleGetLast', lo=min(sizes)), 1)} | "
                  f"{fmt(growth('PeerScaleParse'), 1)} | {fmt(growth('PeerScaleParse', 'heap'), 1)} |")

    if any(k[0] == "PeerContainedScaleParse" for k in r):
        # libyang with the same lists in one container: its parse is linear there
        print()
        print("| shape | rows | libyang in a container: parse ms | µs/row | heap B/row | parse x | "
              "load ours/libyang | heap ours/libyang |")
        print("|---|---:|---:|---:|---:|---:|---:|---:|")
        for s, name in enumerate(shapes):
            for i, n in enumerate(sizes):
                rows = int(get("ScaleLoad", s, n, "rows") or n)
                ly_ms, ly_heap = get("PeerContainedScaleParse", s, n), get("PeerContainedScaleParse", s, n, "heap")
                before = get("PeerContainedScaleParse", s, sizes[i - 1]) if i else None
                growth = None if ly_ms is None or not before else ly_ms / before
                ratio = lambda a, b: None if a is None or not b else a / b
                print(f"| {name} | {rows:,} | {fmt(ly_ms)} | {fmt(None if ly_ms is None else ly_ms * 1e3 / rows)} | "
                      f"{fmt(ly_heap, 0)} | {fmt(growth, 1)} | {fmt(ratio(get('ScaleLoad', s, n), ly_ms))} | "
                      f"{fmt(ratio(get('ScaleLoad', s, n, 'heap'), ly_heap))} |")


if __name__ == "__main__":
    main(sys.argv)

#!/usr/bin/env python3
"""Writes what the zanfe tool must print, from the catalogue:

  tables.tsv     the 'tables' listing: row, table, path, key ('-' for what an empty row lacks)
  columns.json   the 'columns --json' object, tables in row order
  attributes.json  segment path of every position to the attribute names of its rows
  root_segments.txt  'ls *': the segments of the ROOT chain, in chain order
  all_segments.txt   'ls --all *': all segments in traverser order
  rows.tsv       per table: its name, its row types and the names of its key's entries as its
                 to_nvlist delivers them (each list joined by ','), separated by tabs

usage: expect_tool.py SCHEMA_DIR OUT_DIR
"""
import json
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [os.path.join(HERE, "..", "..", "gen"), os.path.join(HERE, "..", "frontend")]
sys.dont_write_bytecode = True
import catalogue  # noqa: E402
import expect  # noqa: E402  (the front-end tests' reading of columns, attribute names and keys)


def lineage(pos):
    """Positions from the root down to pos; a table listed under itself (tbl_cfg_vlan_eol)
    counts once."""
    chain, seen = [], set()
    while pos is not None and pos.name not in seen:
        seen.add(pos.name)
        chain.append(pos)
        pos = pos.parent
    return chain[::-1]


def path(pos):
    return "/".join(p.segment for p in lineage(pos))


def key(pos):
    if pos.key.kind == "compound":
        return ",".join(name for name, _ in pos.key.parts)
    return pos.key.name


def main(schema, out):
    cat = catalogue.load(schema)
    rows, cols = [], {}
    for i, name in enumerate(cat.table_rows):
        if name is None:
            rows.append(f"{i}\t-\t-\t-")
            continue
        pos = cat.positions[name]
        rows.append(f"{i}\t{name}\t{path(pos)}\t{key(pos)}")
        cols[name] = [[n, code] for r in pos.rows for code, _, _, n, _ in expect.columns(cat, r)]
    os.makedirs(out, exist_ok=True)
    with open(os.path.join(out, "root_segments.txt"), "w", encoding="utf-8") as fh:
        fh.write("".join(p.segment + "\n" for p in cat.dispatchers[0].chain))
    with open(os.path.join(out, "all_segments.txt"), "w", encoding="utf-8") as fh:
        fh.write("".join(p.segment + "\n" for p in cat.traversers()))
    with open(os.path.join(out, "rows.tsv"), "w", encoding="utf-8") as fh:
        for p in cat.tables():
            fh.write(f"{p.name}\t{','.join(p.rows)}\t{','.join(n for n, _ in expect.key_entries(cat, p)[1])}\n")
    with open(os.path.join(out, "tables.tsv"), "w", encoding="utf-8") as fh:
        fh.write("\n".join(rows) + "\n")
    with open(os.path.join(out, "columns.json"), "w", encoding="utf-8") as fh:
        json.dump(cols, fh, indent=0)
    # every position's segment path (keys left out) to the attribute names of its table's rows
    attrs = {}
    for pos in cat.traversers():
        table = cat.positions[pos.table] if pos.table else pos
        attrs[path(pos)] = [c[4] for r in table.rows for c in expect.columns(cat, r)]
    with open(os.path.join(out, "attributes.json"), "w", encoding="utf-8") as fh:
        json.dump(attrs, fh, indent=0)


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2])

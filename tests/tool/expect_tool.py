#!/usr/bin/env python3
"""Writes what the zanfe tool must print, from the catalogue:

  tables.tsv     the 'tables' listing: row, table, path, key ('-' for what an empty row lacks)
  columns.json   the 'columns --json' object, tables in row order

usage: expect_tool.py SCHEMA_DIR OUT_DIR
"""
import json
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "gen"))
import catalogue  # noqa: E402


def columns(cat, record, prefix=""):
    out = []
    for f in cat.records[record].all_fields:
        if f.kind == "nested":
            out += columns(cat, f.type, prefix + f.name + ("" if f.glued else "."))
        else:
            out.append([prefix + f.name, cat.leaves[f.word]])
    return out


def path(pos):
    """Segments from the root; a table listed under itself (tbl_cfg_vlan_eol) counts once."""
    segs, seen = [], set()
    while pos is not None and pos.name not in seen:
        seen.add(pos.name)
        segs.append(pos.segment)
        pos = pos.parent
    return "/".join(reversed(segs))


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
        cols[name] = [c for r in pos.rows for c in columns(cat, r)]
    os.makedirs(out, exist_ok=True)
    with open(os.path.join(out, "tables.tsv"), "w", encoding="utf-8") as fh:
        fh.write("\n".join(rows) + "\n")
    with open(os.path.join(out, "columns.json"), "w", encoding="utf-8") as fh:
        json.dump(cols, fh, indent=0)


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2])

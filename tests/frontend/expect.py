#!/usr/bin/env python3
"""Writes what the front-end tests expect, derived from the catalogue on its own terms
(not from the front-end generator), one fact a line:

  export NAME                             a name the library must export
  table ROW NAME|- NCOLS                  a row of the table arrays ("-": empty row)
  column CODE DEPTH OWNER NAME ATTR       a column of the table above; OWNER is the record
                                          that holds the leaf, DEPTH its nesting level, ATTR
                                          the attribute name a rendering to properties gives
                                          it (a dot behind every nested field, glued or not)
  type ROW NAME|- CATEGORY|- KPROP KVLIST a row of the type arrays, kinds of both arrays
  record ORDINAL NAME NCOLS               a record type in slot order, with its column count
  order N                                 the table above's place in the catalogue's table order
  key INDEX NAME WORD [NAME WORD ...]     the entries of the table above's key as to_nvlist
                                          delivers them, read from its INDEX-th row record

usage: expect.py SCHEMA_DIR OUT_FILE
"""
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "gen"))
import catalogue  # noqa: E402


def columns(cat, record, prefix="", depth=1, attr=""):
    out = []
    for f in cat.records[record].all_fields:
        if f.kind == "nested":
            out += columns(cat, f.type, prefix + f.name + ("" if f.glued else "."), depth + 1, attr + f.name + ".")
        else:
            out.append((cat.leaves[f.word], depth, record, prefix + f.name, attr + f.name))
    return out


def kinds(cat, slot):
    if slot.name is None:
        return 1, 1
    if slot.category == "record":
        return (2 if cat.records[slot.name].base else 1), 1
    if slot.category == "library":
        return cat.libraries[slot.name].kind, 1
    return {"enum": (3, 3), "flags": (4, 4)}[slot.category]


def key_entries(cat, pos):
    """(record index, [(name, word)]): a compound key's parts from its key record; otherwise
    the one key leaf, which is singleton_id wherever the row record numbers its rows."""
    key = pos.key
    if key.kind == "compound":
        return pos.rows.index(key.name), list(key.parts)
    fields = {f.name: f.word for f in cat.records[pos.rows[0]].fields}
    if "singleton_id" in fields:
        return 0, [("singleton_id", fields["singleton_id"])]
    return 0, [(key.name, fields[key.name])]


def main(schema, out):
    cat = catalogue.load(schema)
    lines = []
    frame = ["zan_config_db_data_model_fe_init", "fe_zan_config_db_zan_config_db_context_path_query_dispatch",
             "zan_config_db_table_lookup", "zan_config_db_type_lookup",
             "zan_config_db_table_dispatch_fe_table_vft", "zan_config_db_fe_gx_dispatch_vft",
             "zan_config_db_field_dispatch_type_field_lut", "zan_config_db_fe_gx_type_dispatch_vft",
             "zan_config_db_type_gx_lut"]
    lines += [f"export {n}" for n in frame]
    ctx = "zan_config_db_zan_config_db_context"
    for p in cat.positions.values():
        lines += [f"export {ctx}_P_{p.name}_fe_path_traverse", f"export {ctx}_Q_{p.name}_fe_query_traverse"]
    lines.append(f"export fe_{ctx}_ROOT_path_query_dispatch")
    lines += [f"export fe_{ctx}_{d.parent.marker}_path_query_dispatch" for d in cat.dispatchers if d.parent]
    lines += [f"export {r}_to_ntlist" for r in sorted(cat.records)]
    lines += [f"export {p.name}_table_columns_to_ntlist" for p in cat.positions.values() if not p.entrance_of]
    for row, name in enumerate(cat.table_rows):
        if name is None:
            lines.append(f"table {row} - 0")
            continue
        cols = [c for r in cat.positions[name].rows for c in columns(cat, r)]
        lines.append(f"table {row} {name} {len(cols)}")
        lines += [f"column {code} {depth} {owner} {n} {a}" for code, depth, owner, n, a in cols]
        lines.append(f"order {[p.name for p in cat.tables()].index(name)}")
        index, entries = key_entries(cat, cat.positions[name])
        lines.append(f"key {index} " + " ".join(f"{n} {w}" for n, w in entries))
    for s in cat.slots:
        kp, kv = kinds(cat, s)
        lines.append(f"type {s.index} {s.name or '-'} {s.category or '-'} {kp} {kv}")
    for i, r in enumerate(cat.record_order()):
        lines.append(f"record {i} {r.name} {len(columns(cat, r.name))}")
    if "obj_type" in cat.enums:
        lines += [f"group {g.name} {' '.join(g.values)}" for g in cat.enums["obj_type"].extensions]
    text = "\n".join(lines) + "\n"
    if os.path.exists(out) and open(out).read() == text:
        return
    with open(out + ".tmp", "w") as fh:
        fh.write(text)
    os.replace(out + ".tmp", out)


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2])

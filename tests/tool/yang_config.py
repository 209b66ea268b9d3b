#!/usr/bin/env python3
"""Writes a configuration (the loader's format) that touches every position of the table
tree: every table under each of its parents (second entrances too, tbl_cfg_vlan_eol under
itself as deep as the YANG module goes), every key kind, every union arm (each union of a
table selects its arms in turn, row after row, until every union reached has taken each
arm), every array, and the attributes with a default both left out and given.

Values are distinct and cover the edges of the encodings RFC 7951 gives them: u_int64 above
2^53 (a string in RFC 7951), negative int16 and int32, IPv4 and IPv6, enumerations and flag
sets by name.

usage: yang_config.py SCHEMA_DIR OUTPUT.json
"""
import json
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "gen"))
sys.dont_write_bytecode = True
import catalogue  # noqa: E402

SELF_LEVELS = 3   # levels of tbl_cfg_vlan_eol the module unrolls
MAX_ROWS = 400    # rows of one table under one parent, enough for every arm of its unions


class Values:
    def __init__(self):
        self.n = 0

    def leaf(self, cat, f):
        self.n += 1
        n = self.n
        if f.kind == "enum":
            values = cat.enums[f.type].values
            return values[n % len(values)]
        if f.kind == "flags":
            bits = cat.flagsets[f.type].bits
            return [bits[0], bits[-1]] if n % 2 else []
        if f.kind == "array":
            if f.shape == "chars":
                return f"c{n % 10}"
            return [n % 200 + 1, n % 200 + 3, n % 200 + 2]   # distinct: a leaf-list holds no repeats
        w = f.word
        if w == "rsl_vstring":
            return f"text {n}"
        if w == "ip_address":
            return f"10.1.{n // 256 % 256}.{n % 256}" if n % 2 else f"2001:db8::{n % 9999:x}"
        if w == "rsl_mac_addr":
            return f"00:1b:{n % 256:02x}:{n // 256 % 256:02x}:00:{n % 7:02x}"
        if w == "rsl_boolean":
            return n % 2 == 1
        if w in ("int16", "int32"):
            return -(n % 30000)
        if w == "u_int8":
            return n % 256
        if w == "u_int16":
            return n % 65536
        if w == "u_int64":
            return (1 << 63) + n
        return n


def arms_max(cat, record):
    r = cat.records[record]
    here = len(r.arms)
    return max([here] + [arms_max(cat, f.type) for f in r.all_fields if f.kind == "nested"])


def fill(cat, vals, record, prefix, row, index, keys, arms):
    """Every attribute of a record into row, defaults left out in row 0. Each union type
    selects its arms in turn wherever it stands (arms: union type -> arms taken so far)."""
    r = cat.records[record]
    arm = 0
    if r.is_union:
        taken = arms.setdefault(record, [])
        arm = len(taken) % len(r.arms) + 1
        taken.append(arm)
    for f in r.all_fields:
        name = prefix + f.name
        if f.kind == "nested":
            if f.arm and f.arm != arm:
                continue
            fill(cat, vals, f.type, name + ".", row, index, keys, arms)
            continue
        if name in keys:
            continue
        if f.name == "descriminator":
            row[name] = f"ZAN_CFG_{arm - 1}"
            continue
        if f.kind == "array" and f.shape == "seq":
            continue
        if f.default is not None and index == 0:
            continue
        row[name] = vals.leaf(cat, f)


def all_arms_taken(cat, arms):
    """Whether every union type reached so far has selected each of its arms."""
    return all(len(set(taken)) == len(cat.records[name].arms) for name, taken in arms.items())


def key_values(cat, table, index, vals):
    """The key attributes of row `index`, distinct among the rows under one parent."""
    t = cat.positions[table]
    if t.key.kind == "compound":
        parts = t.key.parts
    else:
        parts = [(t.key.name, t.key.word)]
    out = {}
    for name, word in parts:
        if word == "rsl_vstring":   # distinct everywhere: a path names no row twice
            vals.n += 1
            out[name] = f"key {vals.n}"
        elif word == "ip_address":
            out[name] = f"192.0.2.{index + 1}" if index % 2 == 0 else f"2001:db8:1::{index + 1:x}"
        elif word == "u_int64":
            out[name] = (1 << 63) + index
        elif word in ("int16", "int32"):
            out[name] = index - 3
        else:
            out[name] = index + 1
    return out


def rows_of(cat, pos, vals, self_level, budget):
    table = cat.positions[pos.table]
    rows, arms = [], {}
    i = 0
    while i < 2 or (not all_arms_taken(cat, arms) and i < MAX_ROWS):
        row = key_values(cat, pos.table, i, vals)
        for r in table.rows:
            fill(cat, vals, r, "", row, i, row.keys(), arms)
        if i == 0 and budget:
            children = {}
            for child in [p for p in cat.traversers() if p.parent is not None and p.parent.table == pos.table]:
                level = 1
                if child.table == pos.table:
                    if self_level >= SELF_LEVELS:
                        continue
                    level = self_level + 1
                children[child.table] = rows_of(cat, child, vals, level, budget - 1)
            if children:
                row["children"] = children
        rows.append(row)
        i += 1
    return rows


def config(cat):
    vals = Values()
    doc = {}
    for p in cat.traversers():
        if p.parent is None or p.parent is p:
            doc[p.table] = rows_of(cat, p, vals, 1, 8)
    return doc


def main():
    cat = catalogue.load(sys.argv[1])
    with open(sys.argv[2], "w", encoding="utf-8") as fh:
        json.dump(config(cat), fh, indent=1)
        fh.write("\n")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Writes the YANG module the libyang comparison loads: the VRF / address-family /
route-target lists with their keys, and the MAC access-list entry, each list holding the
columns of its table as leaves (the column names, which YANG identifiers can carry, dots
included), typed after the column's leaf word.

usage: gen_yang.py SCHEMA_DIR OUTPUT.yang
"""
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "gen"))
import catalogue  # noqa: E402

MODULE = "zan-peer"

# The tables modelled, outermost first: (list name, table, child lists).
TREE = [
    ("vrf", "tbl_ci_vrf_eol", [
        ("vrf_afi", "tbl_ci_vrf_afi_mode_eol", [
            ("vrf_afi_rt", "tbl_ci_vrf_mode_rt_eol", []),
        ]),
    ]),
    ("mac_ace", "tbl_conf_mac_nacl_eol", []),
]

INTEGERS = {"u_int8": "uint8", "u_int16": "uint16", "int16": "int16", "u_int32": "uint32",
            "int32": "int32", "u_int64": "uint64"}


def leaf_fields(cat, record, prefix=""):
    out = []
    for f in cat.records[record].all_fields:
        if f.kind == "nested":
            out += leaf_fields(cat, f.type, prefix + f.col_text)
        else:
            out.append((prefix + f.col_text, f))
    return out


def yang_type(cat, f, pad):
    if f.kind == "enum":
        values = list(cat.enums[f.type].values)
        for e in cat.enums[f.type].extensions:
            values += e.values
        body = "".join(f'{pad}  enum "{v}" {{ value {i}; }}\n' for i, v in enumerate(values))
        return f"type enumeration {{\n{body}{pad}}}"
    if f.kind == "flags":
        bits = cat.flagsets[f.type].bits
        body = "".join(f'{pad}  bit {b} {{ position {i}; }}\n' for i, b in enumerate(bits))
        return f"type bits {{\n{body}{pad}}}"
    if f.kind == "array":
        raise SystemExit(f"gen_yang: {f.record.name}.{f.name}: arrays are not modelled")
    if f.word in INTEGERS:
        return f"type {INTEGERS[f.word]};"
    if f.word == "rsl_boolean":
        return "type boolean;"
    if f.word == "rsl_mac_addr":
        return "type mac-address;"
    if f.word == "ip_address":
        return "type ip-address;"
    if f.word == "rsl_vstring":
        return "type string;"
    raise SystemExit(f"gen_yang: {f.record.name}.{f.name}: no YANG type for {f.word}")


def emit_list(cat, name, table, children, depth, out):
    pos = cat.positions[table]
    if pos.key is None or pos.key.kind != "single":
        raise SystemExit(f"gen_yang: {table}: a list needs a single key")
    pad = "  " * depth
    out.append(f"{pad}list {name} {{")
    out.append(f"{pad}  key {pos.key.name};")
    leaves = []
    for r in pos.rows:
        leaves += leaf_fields(cat, r)
    if pos.key.name not in [n for n, _ in leaves]:
        raise SystemExit(f"gen_yang: {table}: key {pos.key.name} is no column")
    for col, f in leaves:
        out.append(f"{pad}  leaf {col} {{ {yang_type(cat, f, pad + '  ')} }}")
    for child in children:
        emit_list(cat, *child, depth + 1, out)
    out.append(f"{pad}}}")


def main():
    schema_dir, output = sys.argv[1], sys.argv[2]
    cat = catalogue.load(schema_dir)
    out = [
        f"module {MODULE} {{",
        "  yang-version 1.1;",
        f'  namespace "urn:zanfe:bench:{MODULE}";',
        "  prefix zp;",
        "",
        "  typedef mac-address {",
        "    type string { pattern '[0-9a-fA-F]{2}(:[0-9a-fA-F]{2}){5}'; }",
        "  }",
        "  typedef ip-address {",
        "    type string;",
        "  }",
        "",
    ]
    for top in TREE:
        emit_list(cat, *top, 1, out)
    out.append("}")
    text = "\n".join(out) + "\n"
    tmp = output + ".tmp"
    with open(tmp, "w") as fh:
        fh.write(text)
    os.replace(tmp, output)


if __name__ == "__main__":
    main()

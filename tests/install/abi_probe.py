#!/usr/bin/env python3
"""Writes a C file that holds every type and every function declaration of the C interface
headers given, as members of one structure passed to one exported function. Built with -g
into a shared object, it carries the whole interface in its debug information, so that
abidiff against a recorded baseline reports any change of a type: a member added, removed,
moved or retyped, a parameter or result changed, an enumerator renumbered.

usage: abi_probe.py HEADER... > probe.c
"""
import os
import re
import sys

FUNCTION = re.compile(r"^(?!static|typedef|#|\s)[\w ]+?[ *](\w+)\((?:[^;{]*)\)\s*;", re.M)


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.S)
    return re.sub(r"//[^\n]*", " ", text)


def typedef_names(text):
    """The name each typedef declares: the one in "(*name)" for a function pointer, else the
    last word of the declaration (which may hold a braced body)."""
    for m in re.finditer(r"\btypedef\b", text):
        depth, i = 0, m.end()
        while i < len(text) and not (text[i] == ";" and depth == 0):
            depth += {"{": 1, "}": -1}.get(text[i], 0)
            i += 1
        decl = text[m.end():i]
        pointer = re.search(r"\(\s*\*\s*(\w+)\s*\)", decl)
        yield pointer.group(1) if pointer else re.findall(r"\w+", decl)[-1]


def main(headers):
    types, functions = [], []
    for h in headers:
        text = strip_comments(open(h).read())
        types += typedef_names(text)
        functions += [m.group(1) for m in FUNCTION.finditer(text)]
    out = ["/* Written by abi_probe.py: the C interface, one member per type and function. */"]
    out += ['#include "%s"' % os.path.basename(h) for h in headers]
    out.append("struct zan_abi_interface {")
    out += ["    %s* type_%s;" % (t, t) for t in sorted(set(types))]
    out += ["    __typeof__(&%s) fn_%s;" % (f, f) for f in sorted(set(functions))]
    out.append("};")
    out.append("__attribute__((visibility(\"default\"))) void zan_abi_interface(struct zan_abi_interface* all) { (void)all; }")
    print("\n".join(out))


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__.strip().splitlines()[-1])
    main(sys.argv[1:])

#!/usr/bin/env python3
"""Generator driver: reads the catalogue and runs one backend.

  zangen.py --schema DIR --backend NAME --list            print the files the backend writes
  zangen.py --schema DIR --backend NAME --out DIR         write them (unchanged files keep their time)
  zangen.py --schema DIR --check                          only read and check the catalogue

A backend is a module gen/backends/NAME.py with a function files(catalogue) that returns
a dict {relative file name: text}. A broken catalogue stops the build with one line that
names the file, line and element.
"""
import argparse
import importlib
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)

import catalogue  # noqa: E402


def main(argv=None):
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--schema", required=True)
    ap.add_argument("--backend")
    ap.add_argument("--out")
    ap.add_argument("--list", action="store_true")
    ap.add_argument("--check", action="store_true")
    a = ap.parse_args(argv)
    try:
        cat = catalogue.load(a.schema)
    except catalogue.CatalogueError as e:
        print(f"zangen: catalogue error: {e}", file=sys.stderr)
        return 1
    if a.check:
        return 0
    if not a.backend:
        ap.error("--backend is needed")
    backend = importlib.import_module("backends." + a.backend)
    files = backend.files(cat)
    if a.list:
        print(";".join(sorted(files)))
        return 0
    if not a.out:
        ap.error("--out or --list is needed")
    for name, text in files.items():
        path = os.path.join(a.out, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if os.path.exists(path):
            with open(path, encoding="utf-8") as fh:
                if fh.read() == text:
                    continue
        with open(path + ".tmp", "w", encoding="utf-8") as fh:
            fh.write(text)
        os.replace(path + ".tmp", path)
    return 0


if __name__ == "__main__":
    sys.exit(main())

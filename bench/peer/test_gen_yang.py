"""The YANG module of the libyang comparison against the catalogue it is generated from: each
modelled list holds its table's columns in column order, keyed by the table's key, typed
after the leaf words; and the figure table picks medians and divides as it says."""
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.abspath(os.path.join(HERE, "..", ".."))
sys.path.insert(0, os.path.join(ROOT, "gen"))
sys.path.insert(0, HERE)
sys.path.insert(0, os.path.join(ROOT, "scripts"))

import catalogue  # noqa: E402
import gen_yang  # noqa: E402
import bench_table  # noqa: E402


def parse(text):
    """list name -> (key, [(leaf, type text)]), from the module's one-leaf-per-line layout."""
    lists, stack = {}, []
    lines = text.splitlines()
    i = 0
    while i < len(lines):
        line = lines[i].strip()
        m = re.match(r"list (\S+) \{$", line)
        if m:
            stack.append(m.group(1))
            lists[m.group(1)] = [None, []]
        elif line.startswith("key "):
            lists[stack[-1]][0] = line[4:-1]
        elif line.startswith("leaf "):
            name = line.split()[1]
            body = line
            while body.count("{") > body.count("}"):
                i += 1
                body += "\n" + lines[i].strip()
            lists[stack[-1]][1].append((name, body))
        elif line == "}" and stack:
            stack.pop()
        i += 1
    return lists


class Module(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.cat = catalogue.load(os.path.join(ROOT, "schema"))
        with tempfile.TemporaryDirectory() as tmp:
            out = os.path.join(tmp, "zan-peer.yang")
            subprocess.run([sys.executable, os.path.join(HERE, "gen_yang.py"), os.path.join(ROOT, "schema"), out],
                           check=True)
            with open(out) as fh:
                cls.text = fh.read()
        cls.lists = parse(cls.text)

    def modelled(self):
        out = []

        def walk(entries):
            for name, table, children in entries:
                out.append((name, table))
                walk(children)
        walk(gen_yang.TREE)
        return out

    def test_every_list_holds_its_tables_columns_in_order_with_its_key(self):
        for name, table in self.modelled():
            with self.subTest(table=table):
                key, leaves = self.lists[name]
                self.assertEqual([n for n, _ in leaves], [n for n, _ in self.cat.table_columns(table)])
                self.assertEqual(key, self.cat.positions[table].key.name)

    def test_the_largest_row_has_395_leaves(self):
        self.assertEqual(len(self.lists["mac_ace"][1]), 395)

    def test_leaf_types_follow_the_leaf_words(self):
        for name, table in self.modelled():
            fields = dict(gen_yang.leaf_fields(self.cat, self.cat.positions[table].rows[0]))
            for leaf, body in self.lists[name][1]:
                f = fields[leaf]
                with self.subTest(leaf=leaf):
                    if f.kind == "enum":
                        values = re.findall(r'enum "([^"]+)" \{ value (\d+); \}', body)
                        self.assertEqual([v for v, _ in values], self.cat.enums[f.type].values)
                        self.assertEqual([int(n) for _, n in values], list(range(len(values))))
                    elif f.word in gen_yang.INTEGERS:
                        self.assertIn(f"type {gen_yang.INTEGERS[f.word]};", body)
                    elif f.word == "rsl_mac_addr":
                        self.assertIn("type mac-address;", body)
                    else:
                        self.assertIn("type string;", body, f.word)

    def test_a_compound_keyed_table_is_refused(self):
        with self.assertRaises(SystemExit):
            gen_yang.emit_list(self.cat, "svr", "tbl_ip_dhcp_svr", [], 1, [])


class FigureTable(unittest.TestCase):
    def write(self, benchmarks):
        fh = tempfile.NamedTemporaryFile("w", suffix=".json", delete=False)
        json.dump({"benchmarks": benchmarks}, fh)
        fh.close()
        self.addCleanup(os.unlink, fh.name)
        return fh.name

    def test_the_median_of_repetitions_stands_and_rates_become_nanoseconds(self):
        runs = [{"name": "BM_X", "run_name": "BM_X", "run_type": "iteration", "cpu_time": t, "real_time": t,
                 "time_unit": "us", "per_column": t * 1e-6 / 10, "columns": 10} for t in (1.0, 9.0, 2.0)]
        aggs = [{"name": "BM_X_" + a, "run_name": "BM_X", "run_type": "aggregate", "aggregate_name": a,
                 "cpu_time": t, "real_time": t, "time_unit": "us", "per_column": t * 1e-6 / 10, "columns": 10}
                for a, t in (("mean", 4.0), ("median", 2.0), ("stddev", 3.6))]
        got = bench_table.load([self.write(runs + aggs)])["BM_X"]
        self.assertAlmostEqual(got["cpu"], 2000.0)
        self.assertAlmostEqual(got["per"][1], 200.0)
        self.assertEqual(got["count"], ("columns", 10))

    def test_a_run_without_repetitions_is_taken_as_is_and_errors_are_kept(self):
        got = bench_table.load([self.write([
            {"name": "BM_A", "run_name": "BM_A", "run_type": "iteration", "cpu_time": 5.0, "real_time": 7.0,
             "time_unit": "ns"},
            {"name": "BM_B", "run_name": "BM_B", "run_type": "iteration", "error_occurred": True,
             "error_message": "code 3, want 1"}])])
        self.assertEqual((got["BM_A"]["cpu"], got["BM_A"]["real"]), (5.0, 7.0))
        self.assertEqual(got["BM_B"], {"error": "code 3, want 1"})


if __name__ == "__main__":
    unittest.main()

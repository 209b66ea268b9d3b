"""The YANG backend on the fixture catalogue: the module it writes passes yanglint, and
instance data is accepted or refused by yanglint as the catalogue means it (keys, the
entrance, union arms by discriminator, defaults, leaf-lists, bits, the variant extension).
"""
import json
import os
import subprocess
import sys
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
sys.path.insert(0, os.path.join(ROOT, "gen"))

import catalogue  # noqa: E402
from backends import yang  # noqa: E402

FIXTURE = os.path.join(os.path.dirname(__file__), "fixture")
YANGLINT = os.environ.get("YANGLINT", "yanglint")
TOP = "zan-config:top"


class FixtureModule(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.tmp = tempfile.TemporaryDirectory()
        (name, text), = yang.files(catalogue.load(FIXTURE)).items()
        cls.text = text
        cls.module = os.path.join(cls.tmp.name, name)
        with open(cls.module, "w", encoding="utf-8") as fh:
            fh.write(text)

    @classmethod
    def tearDownClass(cls):
        cls.tmp.cleanup()

    def lint(self, *args):
        return subprocess.run([YANGLINT, *args], capture_output=True, text=True)

    def test_module_passes_yanglint_without_a_word(self):
        p = self.lint(self.module)
        self.assertEqual((p.returncode, p.stdout, p.stderr), (0, "", ""))

    def test_tree(self):
        tree = self.lint("-f", "tree", self.module).stdout
        for line in ["+--rw top* [name]", "+--rw U_tbl_kid* [singleton_id]", "+--rw kid_again* [singleton_id]",
                     "+--rw pair* [a b]", "+--rw descriminator?   zan_cfg_union", "+--rw ports*", "+--rw fl?",
                     "+--rw extra?"]:
            self.assertIn(line, tree)
        self.assertIn("type bits-type;", self.text)             # a flag set named like a built-in type
        self.assertIn('default "ZAN_CFG_0";', self.text)       # default=1 of a descriminator, by name
        self.assertIn("zc:from-variant 1;", self.text)

    def test_instance_data(self):
        entry = {"name": "a", "u": {"descriminator": "ZAN_CFG_0", "compound_7": {"x": 1}, "tail": {"x": 2}},
                 "ports": [5, 3], "fl": "B0 B1", "mac": "00:1b:54:0a:00:01",
                 "U_tbl_kid": [{"singleton_id": 1}], "kid_again": [{"singleton_id": 1, "top_key": 4}]}
        cases = [
            ("every kind of member", {TOP: [entry]}, True),
            ("the default descriminator selects the first arm", {TOP: [{"name": "a", "u": {"compound_7": {"x": 1}}}]},
             True),
            ("second arm selected", {TOP: [{"name": "a", "u": {"descriminator": "ZAN_CFG_1", "named": {"c": "RED"}}}]},
             True),
            ("data in the unselected arm", {TOP: [{"name": "a", "u": {"descriminator": "ZAN_CFG_1",
                                                                      "compound_7": {"x": 1}}}]}, False),
            ("no arm selected", {TOP: [{"name": "a", "u": {"descriminator": "ZAN_CFG_NONE", "tail": {"x": 1}}}]}, True),
            ("no arm selected, an empty one given", {TOP: [{"name": "a", "u": {"descriminator": "ZAN_CFG_NONE",
                                                                               "named": {}}}]}, False),
            ("no arm selected, data in one", {TOP: [{"name": "a", "u": {"descriminator": "ZAN_CFG_NONE",
                                                                        "named": {"c": "RED"}}}]}, False),
            ("compound key", {"zan-config:pair": [{"a": 1, "b": "10.0.0.1", "v": 3},
                                                  {"a": 1, "b": "2001:db8::1"}]}, True),
            ("duplicate key", {TOP: [{"name": "a"}, {"name": "a"}]}, False),
            ("no key", {TOP: [{"mac": "00:1b:54:0a:00:01"}]}, False),
            ("unknown flag", {TOP: [{"name": "a", "fl": "B2"}]}, False),
            ("enumerator by number", {TOP: [{"name": "a", "u": {"descriminator": 1}}]}, False),
            ("a child list at the top", {"zan-config:U_tbl_kid": [{"singleton_id": 1}]}, False),
            ("repeated leaf-list value", {TOP: [{"name": "a", "ports": [5, 5]}]}, False),
        ]
        for i, (what, doc, ok) in enumerate(cases):
            with self.subTest(what):
                f = os.path.join(self.tmp.name, f"d{i}.json")
                with open(f, "w", encoding="utf-8") as fh:
                    json.dump(doc, fh)
                p = self.lint("-t", "config", self.module, f)
                self.assertEqual(p.returncode == 0, ok, p.stderr)

    def test_a_child_segment_that_is_also_an_attribute_is_refused(self):
        cat = catalogue.load(FIXTURE)
        cat.positions["tbl_kid"].segment = "mac"
        with self.assertRaises(SystemExit) as e:
            yang.module_text(cat)
        self.assertIn("segment mac is also an attribute of tbl_top", str(e.exception))


if __name__ == "__main__":
    unittest.main()

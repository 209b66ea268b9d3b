"""The front-end backend of the generator on the small fixture catalogue: which files it
writes, what the descriptors hold, and the catalogue faults it refuses."""
import os
import re
import shutil
import sys
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
sys.path.insert(0, os.path.join(ROOT, "gen"))

import catalogue  # noqa: E402
from backends import frontend  # noqa: E402

FIXTURE = os.path.join(ROOT, "tests", "gen", "fixture")


def generate(schema_dir):
    return frontend.files(catalogue.load(schema_dir))


class FixtureOutput(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.cat = catalogue.load(FIXTURE)
        cls.files = frontend.files(cls.cat)

    def test_one_column_file_per_domain_with_records_or_tables_and_a_header_on_each(self):
        self.assertEqual(sorted(self.files), [
            "fe_arrays.cpp", "fe_catalogue.hpp", "fe_chain.cpp", "fe_ntlist_base.cpp", "fe_ntlist_dom.cpp",
            "fe_ntlist_messages.cpp", "zanfe.map"])
        for name, text in self.files.items():
            self.assertRegex(text.splitlines()[0], r"generated from schema/\S+.* do not edit", name)
        self.assertIn("generated from schema/dom.zs", self.files["fe_ntlist_dom.cpp"])

    def test_column_texts_are_stored_once_with_dots_only_on_unglued_nested_fields(self):
        text = self.files["fe_ntlist_dom.cpp"]
        pool = re.findall(r'^    "([^"\\]*)\\0";?  // (\d+)$', text, re.M)
        names = [n for n, _ in pool]
        self.assertEqual(len(names), len(set(names)))
        self.assertIn("u.", names)      # nested
        self.assertIn("ifc", names)     # glued on: no dot
        self.assertNotIn("ifc.", names)
        # tail. and compound_7. both lead to arm_a, whose x stands once
        self.assertEqual(names.count("x"), 1)
        # offsets are where the texts start
        off = 0
        for n, o in pool:
            self.assertEqual(int(o), off)
            off += len(n) + 1

    def test_descriptors_point_nested_fields_at_the_exported_entry_and_number_messages_in_slot_order(self):
        text = self.files["fe_ntlist_dom.cpp"]
        self.assertIn("&if_handle_to_ntlist},  // ifc", text)
        order = [r.name for r in self.cat.record_order()]
        for r in ("top", "arm_a", "pair"):
            m = order.index(r) * 4
            self.assertIn(f"r_{r}{{k_texts, a_{r}, ", text)
            self.assertRegex(text, rf"r_{r}{{k_texts, a_{r}, \d+ /\* attributes \*/, {m} /\* messages {m}-{m + 3} \*/}};")
        self.assertIn("t_tbl_pair[] = {&pair_key_to_ntlist, &pair_to_ntlist};", text)
        msgs = re.findall(r'^    "(.*)",$', self.files["fe_ntlist_messages.cpp"], re.M)
        self.assertEqual(len(msgs), 4 * len(order))
        i = order.index("top") * 4
        self.assertEqual(msgs[i:i + 4], ["top to_ntlist, null arguments", "top to_nlist, prior error",
                                         "no space in buffer for attribute name %s.Availbale length is %zu",
                                         "top to_ntlist failed (%s)"])

    def test_version_script_lists_the_interface_and_hides_the_rest(self):
        script = self.files["zanfe.map"]
        names = re.findall(r"^    (\w+);$", script, re.M)
        expected = set(frontend.FRAME_EXPORTS) | {r + "_to_ntlist" for r in self.cat.records} \
            | {"tbl_top_table_columns_to_ntlist", "tbl_kid_table_columns_to_ntlist", "tbl_pair_table_columns_to_ntlist"}
        self.assertEqual(set(names), expected)
        self.assertEqual(len(names), len(expected))
        self.assertRegex(script, r"local:\s*\*;")


class Refusals(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.mkdtemp()
        for f in os.listdir(FIXTURE):
            shutil.copy(os.path.join(FIXTURE, f), self.dir)

    def tearDown(self):
        shutil.rmtree(self.dir)

    def test_a_column_name_longer_than_the_name_buffer_names_its_table(self):
        path = os.path.join(self.dir, "dom.zs")
        with open(path) as fh:
            text = fh.read()
        with open(path, "w") as fh:
            fh.write(text.replace("record arm_a: x int32", "record arm_a: " + "x" * 260 + " int32"))
        with self.assertRaisesRegex(catalogue.CatalogueError, r"dom\.zs:\d+: table tbl_top: column u\.compound_7\.x+\.\.\. is longer"):
            generate(self.dir)


if __name__ == "__main__":
    unittest.main()

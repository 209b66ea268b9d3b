"""The value-list part of the front-end backend on the small fixture catalogue: which entry
points each type gets, what its descriptors hold, the type vector's column and the messages."""
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


def defined(text, suffix):
    return set(re.findall(rf'^extern "C" int32_t (\w+){suffix}\(', text, re.M))


class VlistOutput(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.cat = catalogue.load(FIXTURE)
        cls.files = frontend.files(cls.cat)
        cls.code = "".join(t for n, t in cls.files.items() if n.startswith("fe_vlist_") and n.endswith(".cpp"))
        cls.msgs = re.findall(r'^    "(.*)",  // \d+$', cls.files["fe_vlist_messages.cpp"], re.M)

    def test_every_record_has_its_whole_rendering_and_selector_and_arm_types_their_null_run(self):
        records = set(self.cat.records)
        self.assertEqual(defined(self.code, "_to_vlist_all"), records | {"zan_cfg_union", "colour", "bits"})
        self.assertEqual(defined(self.code, "_to_vlist") - {"zan_cfg_union", "colour", "bits"}, records)
        # arm_a stands in an arm and also behind it (tail.); the union itself is nobody's arm.
        self.assertEqual(defined(self.code, "_to_null_vlist"), {"arm_a", "arm_b"})
        decls = self.files["fe_vlist_decls.hpp"]
        for r in records:
            self.assertIn(f"int32_t {r}_to_vlist_all(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_vlist*, int32_t, "
                          "uint32_t*);", decls)

    def test_descriptors_carry_arms_defaults_arrays_and_extensions(self):
        code = self.code
        self.assertRegex(code, r'\{"compound_7", \{Kind::arm, Default::none, 1, \{\.one = &top_u_compound_7_get\}, \{\}, '
                               r'nullptr, &top_u_descriminator_get_value, .*&arm_a_to_vlist_all, &arm_a_to_null_vlist, '
                               r'&arm_a_to_vlist, nullptr')
        self.assertRegex(code, r'\{"named", \{Kind::arm, Default::none, 2, ')
        self.assertRegex(code, r'\{"descriminator", \{Kind::discriminator, Default::arm_one, .*&top_u_descriminator_get_value, '
                               r'nullptr, nullptr, \d+, k_no_msg\}, &zan_cfg_union_to_vlist')
        self.assertRegex(code, r'\{"x", \{Kind::leaf, Default::zero, .*&arm_a_x_get_value, nullptr, &int32_to_vlist')
        self.assertRegex(code, r'\{"ports", \{Kind::counted_array, .*&top_ports_state_flag_whole_get, '
                               r'&top_num_ports_get_value, nullptr, &u_int32_to_vlist')
        self.assertRegex(code, r'\{"c", \{Kind::typed, .*&colour_to_vlist')
        # The extension's attribute stands in its own table, after the base fields.
        self.assertRegex(code, r'constexpr Field x_v1_top_ext\[\] = \{\n    \{"extra", \{Kind::leaf')
        self.assertRegex(code, r"constexpr Type r_top\{\{f_top, 6, e_top, 1, true, \d+\}, ")
        # The schema library's own record reads no variant and has no message for it.
        self.assertRegex(code, r"constexpr Type r_if_handle\{\{f_if_handle, 1, nullptr, 0, false, k_no_msg\}, k_no_msg, ")

    def test_type_vector_column_points_at_each_rows_function(self):
        arrays = self.files["fe_arrays.cpp"]
        vector = arrays[arrays.index("zan_config_db_fe_gx_type_dispatch_vft"):arrays.index("zan_config_db_type_gx_lut[")]
        self.assertIn("{type_top_name, 1 /* record */, &top_to_vlist_all}", vector)
        self.assertIn("{type_if_handle_name, 1 /* record */, &if_handle_to_vlist_all}", vector)
        self.assertIn("{type_ip_address_name, 1 /* record */, &ip_address_to_vlist_all}", vector)
        self.assertIn("{enum_colour_name, 3 /* enum */, &colour_to_vlist_all}", vector)
        self.assertRegex(vector, r"\{nullptr, 1 /\* record \*/, nullptr\},  // 1: empty")
        self.assertNotRegex(vector, r"\{\w+_name, \d /\* \w+ \*/, nullptr\}")

    def test_messages_keep_their_glued_words(self):
        for m in ("top_u to_vlist_all arm_a_to_vlist top_u_compound_7 failed",
                  "top_u to_vlist_all: arm_b set null failed for namedfor top_u",
                  "arm_a to_vlist_all: int32 set null failed for xfor arm_a",
                  "top to_vlist_all failed for top_ports",
                  "top version < 1, cannot render value for attr in extension v1_top_ext",
                  "top to_vlist rendering null for this extra",
                  "zan_cfg_union Recieved variant %d < base version 0"):
            self.assertIn(m, self.msgs)
        self.assertEqual(len(self.msgs), int(re.search(r"k_to_vlist_format_count = (\d+);",
                                                       self.files["fe_vlist_messages.cpp"]).group(1)))


def with_fixture(extra_base="", extra_dom=""):
    """The front end's files for the fixture with lines added to base.zs and dom.zs."""
    tmp = tempfile.mkdtemp()
    try:
        for f in os.listdir(FIXTURE):
            shutil.copy(os.path.join(FIXTURE, f), tmp)
        for name, extra in (("base.zs", extra_base), ("dom.zs", extra_dom)):
            with open(os.path.join(tmp, name), "a") as fh:
                fh.write(extra)
        return frontend.files(catalogue.load(tmp))
    finally:
        shutil.rmtree(tmp)


class Refusals(unittest.TestCase):
    def test_a_leaf_without_a_value_list_form_names_its_record_and_field(self):
        with self.assertRaisesRegex(catalogue.CatalogueError, r"dom\.zs:\d+: record odd, field d: leaf double"):
            with_fixture("leaf double code=50\n", "record odd: d double\n")


class Sequences(unittest.TestCase):
    def test_sequence_elements_render_through_the_paired_family_declared_once(self):
        files = with_fixture(extra_dom="base record chain: first array seq pair; again array seq pair\n")
        decl = ("int32_t pair_to_nlist_vlist_all(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_nlist*, gx_do_vlist*, "
                "int32_t, uint32_t*);")
        where = [n for n, t in files.items() if n.startswith("fe_vlist_") and decl in t.splitlines()]
        self.assertEqual(where, ["fe_vlist_decls.hpp"])
        code = files["fe_vlist_dom.cpp"]
        self.assertRegex(code, r'\{"first", \{Kind::sequence, Default::none, 0, \{\.one = &chain_first_get_first\}, '
                               r'\{\.one = &chain_first_state_flag_get\}, nullptr, nullptr, &chain_first_get_next, .*'
                               r'&pair_to_nlist_vlist_all')
        msgs = files["fe_vlist_messages.cpp"]
        for m in ("chain to_vlist_all: pairto_nlist_vlist_all failed for chain_first",
                  "chain to_ nlist_vlist_all rendering error again %u %u",
                  "chain to_vlist: gx_do_vlist_add_null failed for chain_again",
                  "chain to_vlist_all: gx_do_xxx_new failed", "chain to_vlist: gx_do_vlist_add_array failed: %d"):
            self.assertIn(f'"{m}"', msgs)


if __name__ == "__main__":
    unittest.main()

"""The front-end backend of the generator on the small fixture catalogue: which files it
writes, what the descriptors hold (the value-list family's entry points, descriptors, type
vector column and messages among them), and the catalogue faults it refuses."""
import os
import re
import shutil
import sys
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
sys.path.insert(0, os.path.join(ROOT, "gen"))

import catalogue  # noqa: E402
from backends import fe_rows, frontend  # noqa: E402
from backends import fe_nlist  # noqa: E402

FIXTURE = os.path.join(ROOT, "tests", "gen", "fixture")


def generate(schema_dir):
    return frontend.files(catalogue.load(schema_dir))


class OnFixture(unittest.TestCase):
    """The fixture catalogue and the front end's files for it, made once for all classes."""
    made = None

    @classmethod
    def setUpClass(cls):
        if OnFixture.made is None:
            cat = catalogue.load(FIXTURE)
            OnFixture.made = (cat, frontend.files(cat))
        cls.cat, cls.files = OnFixture.made


class FixtureOutput(OnFixture):
    def test_one_column_file_per_domain_with_records_or_tables_and_a_header_on_each(self):
        self.assertEqual(sorted(self.files), [
            "fe_arrays.cpp", "fe_catalogue.hpp",
            "fe_nlist_base.cpp", "fe_nlist_dom.cpp", "fe_nlist_messages.cpp",
            "fe_ntlist_base.cpp", "fe_ntlist_dom.cpp", "fe_ntlist_messages.cpp", "fe_nvlist.cpp", "fe_props_base.cpp", "fe_props_dom.cpp", "fe_props_messages.cpp", "fe_resolve_chain.cpp", "fe_resolve_dom.cpp", "fe_resolve_imports.hpp",
            "fe_resolve_messages.cpp", "fe_rows_dom.cpp", "fe_vlist_base.cpp", "fe_vlist_decls.hpp", "fe_vlist_dom.cpp",
            "fe_vlist_messages.cpp", "zanfe.map"])
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
        # The four messages' texts and numbers: Columns.EveryTypeTracesItsFourMessages.

    def test_version_script_lists_the_interface_and_hides_the_rest(self):
        script = self.files["zanfe.map"]
        names = re.findall(r"^    (\w+);$", script, re.M)
        expected = set(frontend.FRAME_EXPORTS) | {r + "_to_ntlist" for r in self.cat.records} \
            | {"tbl_top_table_columns_to_ntlist", "tbl_kid_table_columns_to_ntlist", "tbl_pair_table_columns_to_ntlist"} \
            | {f"zan_config_db_zan_config_db_context_{pq}_{t}_fe_{w}_traverse" for t in self.cat.positions
               for pq, w in (("P", "path"), ("Q", "query"))} \
            | {"fe_zan_config_db_zan_config_db_context_ROOT_path_query_dispatch",
               "fe_zan_config_db_zan_config_db_context_inst_tbl_top_path_query_dispatch"}
        self.assertEqual(set(names), expected)
        self.assertEqual(len(names), len(expected))
        self.assertRegex(script, r"local:\s*\*;")

    def test_property_descriptors_name_accessors_arms_defaults_and_null_renderings(self):
        text = self.files["fe_props_base.cpp"] + self.files["fe_props_dom.cpp"]
        # Arms carry their number, the discriminator accessor and both renderings of the arm type.
        self.assertRegex(text, r'\{"compound_7\.", \{Kind::arm, Default::none, 1, \{\.one = &top_u_compound_7_get\}.*'
                               r'&top_u_descriminator_get_value, .*&arm_a_to_properties, &arm_a_to_null_properties, .*11\}')
        self.assertRegex(text, r'\{"descriminator", \{Kind::discriminator, Default::arm_one, .*, 13\}')
        self.assertRegex(text, r'\{"x", \{Kind::leaf, Default::zero, .*, 1\}')
        self.assertIn("Kind::counted_array", text)
        # Null renderings: the arm types (normal) and the extension (lenient); the union holding
        # the arms has none of its own, nobody nulls it.
        for name in ("arm_a", "arm_b", "v1_top_ext"):
            self.assertIn(f"int32_t {name}_to_null_properties(rsl_ctx_t c", text)
        self.assertNotIn("int32_t top_u_to_null_properties(rsl_ctx_t c", text)
        self.assertRegex(text, r"constexpr Type r_v1_top_ext\{\{f_v1_top_ext, 1, nullptr, 0, false, k_no_msg\}, true")
        # The base record reads no variant; every record has its plain form.
        self.assertRegex(text, r"constexpr Type r_if_handle\{\{f_if_handle, 1, nullptr, 0, false, k_no_msg\}, false")
        for r in self.cat.records:
            self.assertIn(f"int32_t {r}_to_properties_plain(", text)
        messages = self.files["fe_props_messages.cpp"]
        self.assertIn('"top_u to_properties: arm_a_to_properties failed for descriminator_compound_7"', messages)

    def test_paired_rendering_has_every_record_and_nulls_for_what_stands_in_an_arm(self):
        text = self.files["fe_nlist_base.cpp"] + self.files["fe_nlist_dom.cpp"]
        for r in self.cat.records:
            self.assertIn(f"int32_t {r}_to_nlist_vlist_all(rsl_ctx_t c", text)
        nulls = set(re.findall(r"int32_t (\w+)_to_null_nlist_vlist\(rsl_ctx_t c", text))
        self.assertEqual(nulls, {"arm_a", "arm_b"})
        # Arms: prefix with the dot, the discriminator read, both renderings of the arm type.
        self.assertRegex(text, r'\{"compound_7", "compound_7\.", \{Kind::arm, Default::none, 1, '
                               r'\{\.one = &top_u_compound_7_get\}.*&top_u_descriminator_get_value, .*'
                               r'&arm_a_to_nlist_vlist_all, &arm_a_to_null_nlist_vlist')
        # Enumerations go through their own value-list conversion, which that family declares.
        self.assertIn('{"c", nullptr, {Kind::enumeration', text)
        self.assertIn("&colour_to_vlist", text)
        self.assertIn('#include "fe_vlist_decls.hpp"', self.files["fe_nlist_dom.cpp"])
        self.assertIn("int32_t colour_to_vlist(", self.files["fe_vlist_decls.hpp"])
        # The messages' texts: the paired-list tests (test_nlist.cpp) trace each form.

    def test_run_of_letters_has_the_length_of_the_type_and_suffix(self):
        self.assertEqual(fe_nlist.run("vrf_info"), "abcdefghijklmnopabcdefghijk")
        self.assertEqual(fe_nlist.run("timestamp"), "abcdefghijklmnopabcdefghijkl")

    def test_type_rows_hold_the_rendering_and_tables_their_slot_two(self):
        arrays = self.files["fe_arrays.cpp"]
        self.assertRegex(arrays, r"\{type_top_name, 1 /\* record \*/, &top_to_properties\}")
        self.assertRegex(arrays, r"\{enum_colour_name, 3 /\* enum \*/, &colour_to_properties_perf\}")
        self.assertRegex(arrays, r"\{table_tbl_top_name, 5 /\* table \*/, &tbl_top_to_properties, ")


class Resolution(OnFixture):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.msgs = re.findall(r'^    "(.*)",  // \d+$', cls.files["fe_resolve_messages.cpp"], re.M)

    def first(self, kind, name):
        text = "".join(self.files[f] for f in self.files if f.startswith("fe_resolve_"))
        m = re.search(rf"constexpr \w+ {kind}_{name}{{.*?(\d+), (\d+)(?:, Shape::\w+)?}}", text)
        return int(m.group(1)), int(m.group(2))

    def test_sites_and_messages_are_numbered_in_code_order_p_then_q_per_position(self):
        # top 2; ROOT 1 + 2*2; tbl_top's dispatcher 1 + 2*2: then the positions in traverser order
        self.assertEqual(self.first("P", "tbl_top"), (12, 0))
        self.assertEqual(self.first("Q", "tbl_top"), (17, 1))        # root P: 5 messages, 1 site
        self.assertEqual(self.first("P", "tbl_pair"), (29, 4))       # one-key Q: 12 messages, 3 sites
        self.assertEqual(self.first("Q", "tbl_pair"), (34, 5))
        self.assertEqual(self.first("P", "tbl_kid"), (46, 13))       # compound Q: 10 + 2 messages, 6 + 2 sites
        self.assertEqual(self.first("Q", "tbl_kid"), (54, 18))       # child P: 8 messages, 5 sites
        self.assertEqual(len(self.msgs), 74 + 12)

    def test_a_second_entrance_has_its_own_expecting_keys_message(self):
        # The other messages' texts: the resolution tests (test_resolve.cpp) trace each.
        self.assertEqual(self.msgs[74], " Expecting keys for Q_tbl_kid_b before moving to next path")

    def test_second_entrance_uses_its_tables_identifiers_and_key_but_its_own_segment_and_link(self):
        self.assertRegex(self.files["fe_resolve_chain.cpp"], r'P_tbl_kid_b\{"kid_again", 9, "P_tbl_kid_b", "inst_tbl_kid", k_pq_luids\[3\], table_tbl_kid_luid, '
                               r'&tbl_kid_table_field_vft, "top", table_tbl_top_luid, "top_special", &zan_top_get_field_info')
        text = self.files["fe_resolve_dom.cpp"]
        self.assertIn('Q_tbl_kid_b{"singleton_id", "key kid_singleton_id", table_tbl_kid_luid, &tbl_kid_get_field', text)
        self.assertIn('{"a", type_int32_luid, &pair_key_a_set, &int32_destroy}, {"b", type_ip_address_luid', text)

    def test_dispatchers_are_named_by_marker_and_walk_their_chain_in_order(self):
        text = self.files["fe_resolve_chain.cpp"]
        paths = re.search(r"paths_inst_tbl_top\[\] = \{(.*?)\};", text, re.S).group(1)
        self.assertEqual(re.findall(r"&P_(\w+),", paths), ["tbl_kid", "tbl_kid_b"])
        chain = re.search(r"chain_inst_tbl_top\[\] = \{(.*?)\};", text, re.S).group(1)
        self.assertLess(chain.index("Q_tbl_kid_fe"), chain.index("Q_tbl_kid_b_fe"))
        self.assertIn("dispatch<zan::gen::D_inst_tbl_top, zan::gen::paths_inst_tbl_top>(std::make_index_sequence<2>{}", text)
        self.assertIn('D_inst_tbl_top{"inst_tbl_top", 12, chain_inst_tbl_top, 2, 7 /* first message */}', text)


class RowOperations(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.cat = catalogue.load(FIXTURE)
        cls.tables = [p.name for p in cls.cat.tables()]
        cls.files, cls.slots = fe_rows.files(cls.cat, set(cls.tables))

    def test_name_copy_sites_rise_by_one_per_table_in_table_order(self):
        text = self.files["fe_rows_dom.cpp"]
        sites = [int(m, 16) for m in re.findall(r"constexpr Table t_\w+\{.*?(0x[0-9a-f]+) /\* site \*/", text)]
        self.assertEqual(sites, [0x1861FC00 + i for i in range(len(self.tables))])
        self.assertEqual(re.findall(r"constexpr Table t_(\w+)\{", text), self.tables)

    def test_the_key_record_is_read_first_and_compound_keys_render_through_their_key_type(self):
        text = self.files["fe_rows_dom.cpp"]
        self.assertIn("tops_tbl_pair[] = {{&tbl_pair_pair_key_get_field, &pair_key_to_vlist_all, "
                      "&pair_key_to_vlist}, {&tbl_pair_pair_get_field,", text)
        self.assertIn('nv_tbl_pair{&tbl_pair_pair_key_get_field, "pair_key", nullptr, nullptr, &pair_key_to_nvlist}',
                      text)
        self.assertIn('{"a", &pair_key_a_get, &int32_to_nvlist, 0 /* message */}', text)
        self.assertIn('"pair_key to_nvlist arbor_nvlist_add_ip_address for %s failed err=%d",  // 1',
                      self.files["fe_nvlist.cpp"])

    def test_tables_without_value_list_rendering_keep_slot_three_empty(self):
        files, slots = fe_rows.files(self.cat)
        self.assertEqual({t: s[0] for t, s in slots.items()}, {t: None for t in self.tables})
        self.assertNotIn("_to_vlist", files["fe_rows_dom.cpp"])
        self.assertEqual(self.slots["tbl_top"], ("tbl_top_to_vlist", "tbl_top_to_nvlist"))


class ProductFigures(unittest.TestCase):
    def test_the_product_catalogue_comes_to_its_sites_and_messages(self):
        cat = catalogue.load(os.path.join(ROOT, "schema"))
        msgs, first = frontend.layout(cat)
        self.assertEqual(len(msgs), 6975)
        self.assertEqual(first[("P", "tbl_cfg_ip_dhcp_relay_bootp_ignore_eol")][1], 0)
        self.assertEqual(len(frontend.resolve_exports(cat)), 662 + 23)
        last = cat.traversers()[-1]
        msg, site = first[("Q", last.name)]
        self.assertEqual(msg + len(frontend.q_messages(cat, last)), 6975)
        self.assertEqual(site + frontend.q_sites(cat, last), 2215)

    def test_a_product_catalogue_that_misses_the_figures_is_refused(self):
        cat = catalogue.load(os.path.join(ROOT, "schema"))
        cat.dispatchers[1].chain[0].link_override = "none"    # a child turned nolink: 4 sites fewer
        with self.assertRaisesRegex(catalogue.CatalogueError, r"2211 allocation sites, expected 2215"):
            frontend.layout(cat)




def defined(text, suffix):
    return set(re.findall(rf'^extern "C" int32_t (\w+){suffix}\(', text, re.M))


class VlistOutput(OnFixture):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
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

    def test_messages_are_counted_and_the_enumerations_variant_message_kept(self):
        # The other messages' glued words: the value-list tests (test_vlist.cpp) trace each.
        self.assertIn("zan_cfg_union Recieved variant %d < base version 0", self.msgs)
        self.assertEqual(len(self.msgs), int(re.search(r"k_to_vlist_format_count = (\d+);",
                                                       self.files["fe_vlist_messages.cpp"]).group(1)))


def with_fixture(extra_base="", extra_dom="", dom_replace=()):
    """The front end's files for the fixture with lines added to base.zs and dom.zs and
    texts replaced in dom.zs."""
    tmp = tempfile.mkdtemp()
    try:
        for f in os.listdir(FIXTURE):
            shutil.copy(os.path.join(FIXTURE, f), tmp)
        for name, extra in (("base.zs", extra_base), ("dom.zs", extra_dom)):
            with open(os.path.join(tmp, name), "a") as fh:
                fh.write(extra)
        path = os.path.join(tmp, "dom.zs")
        with open(path) as fh:
            text = fh.read()
        for old, new in dom_replace:
            text = text.replace(old, new)
        with open(path, "w") as fh:
            fh.write(text)
        return generate(tmp)
    finally:
        shutil.rmtree(tmp)


class Refusals(unittest.TestCase):
    def test_a_leaf_without_a_value_list_form_names_its_record_and_field(self):
        with self.assertRaisesRegex(catalogue.CatalogueError, r"dom\.zs:\d+: record odd, field d: leaf double"):
            with_fixture("leaf double code=50\n", "record odd: d double\n")

    def test_a_key_word_without_name_value_conversion_names_its_table(self):
        with self.assertRaisesRegex(catalogue.CatalogueError, r"dom\.zs:\d+: table tbl_pair: key word u_int8 has no"):
            with_fixture(dom_replace=(("pair_key{a:int32,", "pair_key{a:u_int8,"),
                                      ("pair_key: a int32", "pair_key: a u_int8")))

    def test_a_column_name_longer_than_the_name_buffer_names_its_table(self):
        with self.assertRaisesRegex(catalogue.CatalogueError,
                                    r"dom\.zs:\d+: table tbl_top: column u\.compound_7\.x+\.\.\. is longer"):
            with_fixture(dom_replace=(("record arm_a: x int32", "record arm_a: " + "x" * 260 + " int32"),))


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


if __name__ == "__main__":
    unittest.main()

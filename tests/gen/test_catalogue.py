"""Tests of the catalogue reader and the generator driver.

Three groups: the reader's semantics on a small fixture with one of every element; a table
of broken catalogues and the error each must give; and the figures of the product's own
catalogue that the rest of the system relies on.
"""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from collections import Counter

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
sys.path.insert(0, os.path.join(ROOT, "gen"))

import catalogue  # noqa: E402

FIXTURE = os.path.join(os.path.dirname(__file__), "fixture")
SCHEMA = os.path.join(ROOT, "schema")


class FixtureSemantics(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.cat = catalogue.load(FIXTURE)

    def test_slots_sorted_by_bytes_with_empty_rows_and_pinned_names(self):
        names = [s.name for s in self.cat.slots]
        self.assertEqual(names[1], None)
        self.assertEqual(names[4:6], [None, None])
        # zz_last is pinned behind colour although it sorts last by bytes
        self.assertEqual(names[names.index("colour") + 1], "zz_last")
        named = [n for n in names if n and n != "zz_last"]
        self.assertEqual(named, sorted(named, key=str.encode))
        cats = {s.name: s.category for s in self.cat.slots if s.name}
        self.assertEqual((cats["bits"], cats["colour"], cats["ip_address"], cats["top"]),
                         ("flags", "enum", "library", "record"))
        sym = {s.name: s.symbol for s in self.cat.slots if s.name}
        self.assertEqual((sym["bits"], sym["colour"], sym["top"]),
                         ("flag_bits_name", "enum_colour_name", "type_top_name"))

    def test_column_names_follow_dots_and_glued_fields(self):
        cols = self.cat.table_columns("tbl_top")
        self.assertEqual([c for c, _ in cols],
                         ["name", "u.descriminator", "u.compound_7.x", "u.named.c", "u.tail.x",
                          "ifchandle", "mac", "ports", "fl", "extra"])
        self.assertEqual([code for _, code in cols], [8, 103, 5, 103, 5, 4, 15, 106, 109, 8])
        # the property name of the glued field keeps its dot
        ifc = next(f for f in self.cat.records["top"].fields if f.name == "ifc")
        self.assertEqual((ifc.prop_text, ifc.col_text), ("ifc.", "ifc"))

    def test_union_arms_are_numbered_and_trailing_fields_are_not_arms(self):
        u = self.cat.records["top_u"]
        self.assertTrue(u.is_union)
        self.assertEqual([(f.name, f.arm) for f in u.fields],
                         [("descriminator", 0), ("compound_7", 1), ("named", 2), ("tail", 0)])
        self.assertEqual(u.fields[0].type, "zan_cfg_union")
        self.assertEqual(u.fields[0].default, "1")

    def test_leaf_kinds_arrays_defaults_and_extensions(self):
        top = {f.name: f for f in self.cat.records["top"].fields}
        self.assertEqual((top["ports"].shape, top["ports"].type, top["ports"].bound),
                         ("counted", "u_int32", "num_ports"))
        self.assertEqual((top["fl"].kind, top["fl"].type), ("flags", "bits"))
        self.assertEqual(self.cat.records["arm_a"].fields[0].default, "0")
        self.assertEqual(self.cat.records["arm_b"].fields[0].type, "colour")
        ext = self.cat.records["top"].extensions
        self.assertEqual([(e.level, e.name, [f.name for f in e.fields]) for e in ext],
                         [(1, "v1_top_ext", ["extra"])])
        self.assertTrue(self.cat.records["if_handle"].base)
        self.assertFalse(self.cat.records["top"].base)

    def test_keys_rows_and_positions(self):
        pos = self.cat.positions
        self.assertEqual((pos["tbl_top"].key.kind, pos["tbl_top"].key.name, pos["tbl_top"].key.word),
                         ("single", "name", "rsl_vstring"))
        self.assertEqual(pos["tbl_kid"].key.kind, "singleton")
        self.assertEqual(pos["tbl_pair"].key.parts, [("a", "int32"), ("b", "ip_address")])
        self.assertEqual(pos["tbl_pair"].rows, ["pair_key", "pair"])
        self.assertEqual(len(self.cat.table_columns("tbl_pair")), 3)
        # shapes, markers and links
        self.assertEqual([(p.name, p.shape) for p in self.cat.traversers()],
                         [("tbl_top", "root"), ("tbl_pair", "root"), ("tbl_kid", "child"), ("tbl_kid_b", "child")])
        self.assertEqual(pos["tbl_pair"].marker, "inst_tbl_pairs")
        self.assertEqual(pos["tbl_kid_b"].marker, "inst_tbl_kid")   # an entrance leaves its table's marker
        self.assertEqual(pos["tbl_kid"].link_field, "top_child_kid")
        self.assertEqual(pos["tbl_kid_b"].link_field, "top_special")
        self.assertEqual(pos["tbl_kid"].parent_row, "top")
        self.assertEqual(pos["tbl_kid_b"].table, "tbl_kid")
        self.assertEqual([p.name for p in self.cat.tables()], ["tbl_top", "tbl_kid", "tbl_pair"])
        self.assertEqual([d.marker for d in self.cat.dispatchers], ["ROOT", "inst_tbl_top"])

    def test_table_rows_are_byte_ordered_without_first_rows(self):
        self.assertEqual(self.cat.table_rows, ["tbl_kid", "tbl_pair", "tbl_top"])


BROKEN = [
    # (what, file, text replaced, replacement, words the error must contain)
    ("dangling nested type", "dom.zs", "-> arm_b", "-> arm_c", ["dom.zs:", "top_u", "arm_c"]),
    ("record defined twice", "dom.zs", "record pair: v u_int8", "record pair: v u_int8\nrecord pair: w u_int8",
     ["pair", "twice"]),
    ("arm away from its descriminator", "dom.zs", "descriminator enum default=1; arm compound_7.",
     "descriminator enum default=1; q int32; arm compound_7.", ["top_u", "arms"]),
    ("column count disagrees", "dom.zs", "columns=10", "columns=9", ["tbl_top", "10 columns"]),
    ("extension restating a field", "dom.zs", "v1_top_ext: extra rsl_vstring", "v1_top_ext: mac rsl_mac_addr",
     ["v1_top_ext", "mac"]),
    ("segment used twice", "dom.zs", "segment=pair", "segment=top", ["segment top"]),
    ("path-query identifier repeated", "dom.zs", "pq=300102030405060708090a0b0c0d0e0f",
     "pq=000102030405060708090a0b0c0d0e0f", ["tbl_pair", "tbl_top"]),
    ("key not in the row", "dom.zs", "key=name:rsl_vstring", "key=nome:rsl_vstring", ["tbl_top", "nome"]),
    ("key of the wrong word", "dom.zs", "key=name:rsl_vstring", "key=name:int32", ["tbl_top", "name"]),
    ("compound key field missing", "dom.zs", "b:ip_address}", "c:ip_address}", ["pair_key", "c"]),
    ("position in no chain", "tree.zs", "tbl_top tbl_pair", "tbl_top", ["tbl_pair", "no dispatcher"]),
    ("position in two chains", "tree.zs", "tbl_kid tbl_kid_b", "tbl_kid tbl_kid_b tbl_pair", ["tbl_pair", "two chains"]),
    ("unknown statement", "dom.zs", "domain dom", "domain dom\ntabel tbl_x", ["dom.zs:2", "tabel"]),
    ("unknown leaf word", "dom.zs", "mac rsl_mac_addr", "mac rsl_mac", ["rsl_mac"]),
    ("records nesting in a cycle", "dom.zs", "record arm_a: x int32 default=0", "record arm_a: x int32 default=0; back. -> top",
     ["cycle"]),
    ("enumeration that does not exist", "dom.zs", "c enum colour", "c enum color", ["color"]),
    ("bad identifier", "dom.zs", "pq=100102030405060708090a0b0c0d0e0f", "pq=1001", ["tbl_kid", "hex"]),
    ("entrance that restates a key", "dom.zs", "entrance=tbl_kid segment=kid_again",
     "entrance=tbl_kid key=singleton segment=kid_again", ["tbl_kid_b", "key"]),
    ("empty slot beyond the end", "base.zs", "slots empty: 1 4-5", "slots empty: 1 4-5 40", ["beyond"]),
    ("cut count of a fixed array", "dom.zs", "ports array u_int32[num_ports]", "ports array u_int32[4:16]",
     ["top", "ports"]),
]


class BrokenCatalogues(unittest.TestCase):
    def test_each_fault_is_refused_with_a_message_naming_it(self):
        for what, fname, old, new, words in BROKEN:
            with self.subTest(what):
                d = tempfile.mkdtemp()
                try:
                    for f in os.listdir(FIXTURE):
                        shutil.copy(os.path.join(FIXTURE, f), d)
                    path = os.path.join(d, fname)
                    with open(path) as fh:
                        text = fh.read()
                    self.assertIn(old, text, "fixture changed: " + what)
                    with open(path, "w") as fh:
                        fh.write(text.replace(old, new, 1))
                    with self.assertRaises(catalogue.CatalogueError) as ctx:
                        catalogue.load(d)
                    msg = str(ctx.exception)
                    self.assertNotIn("\n", msg)
                    for w in words:
                        self.assertIn(w, msg)
                finally:
                    shutil.rmtree(d)

    def test_driver_reports_one_line_and_fails(self):
        d = tempfile.mkdtemp()
        try:
            for f in os.listdir(FIXTURE):
                shutil.copy(os.path.join(FIXTURE, f), d)
            gen = os.path.join(ROOT, "gen", "zangen.py")
            ok = subprocess.run([sys.executable, gen, "--schema", d, "--check"], capture_output=True, text=True)
            self.assertEqual((ok.returncode, ok.stderr), (0, ""))
            with open(os.path.join(d, "dom.zs"), "a") as fh:
                fh.write("record broken: x. -> nowhere\n")
            bad = subprocess.run([sys.executable, gen, "--schema", d, "--check"], capture_output=True, text=True)
            self.assertEqual(bad.returncode, 1)
            self.assertEqual(len(bad.stderr.strip().split("\n")), 1)
            self.assertIn("nowhere", bad.stderr)
        finally:
            shutil.rmtree(d)


class ProductCatalogue(unittest.TestCase):
    """Figures of the product's schema that the families and their tests rely on, where the
    database tests (tests/database) and the front end's (tests/frontend) do not check them
    on what is generated: the counts of positions, tables, records, rows and slots, the
    first and last names, the empty rows, the column census, the first position's
    identifier and the dhcp pool's link field are theirs."""

    @classmethod
    def setUpClass(cls):
        cls.cat = catalogue.load(SCHEMA)

    def test_tables_positions_and_tree(self):
        c = self.cat
        self.assertEqual(Counter(p.shape for p in c.positions.values()), {"root": 107, "child": 220, "nolink": 4})
        self.assertEqual(len(c.dispatchers), 23)
        self.assertEqual(len(c.dispatchers[0].chain), 107)
        self.assertEqual(c.dispatchers[0].chain[0].name, "tbl_cfg_ip_dhcp_relay_bootp_ignore_eol")
        self.assertEqual(c.dispatchers[16].marker, "inst_tbl_flow_record")
        entrances = sorted(p.name for p in c.positions.values() if p.entrance_of)
        self.assertEqual(entrances, ["tbl_ci_vrf_mode_rt_eol_b", "tbl_conf_ip_nacl_ext_eol_final_b"])
        keys = Counter(c.positions[p.table].key.kind for p in c.positions.values())
        self.assertEqual(keys, {"singleton": 289, "single": 40, "compound": 2})
        links = [p.link_field for p in c.positions.values() if p.link_field]
        self.assertEqual(len(links), 220)
        self.assertEqual(c.positions["tbl_ci_ip_idgrp_out_eol"].link_field, "uidb_act_interface_ip_idgrp_out_eol")
        self.assertEqual(c.positions["tbl_ci_ip_addr_eol"].link_field, "uidb_act_interface_ci_ip_addr_eol")
        segs = Counter("U" if p.segment == "U_" + p.name else "bare" if p.segment == p.name[4:] else "own"
                       for p in c.positions.values())
        self.assertEqual(segs, {"U": 154, "bare": 82, "own": 95})

    def test_columns_of_all_tables(self):
        c = self.cat
        self.assertEqual([n for n, _ in c.columns("vrf_info")], ["table_id", "vrf_id", "namestr"])
        codes = Counter(f.code for r in c.records.values() for f in r.all_fields if f.kind != "nested")
        self.assertEqual(codes, {5: 588, 4: 479, 8: 187, 103: 133, 101: 73, 106: 23, 15: 6, 0: 4, 6: 4,
                                 109: 3, 2: 2, 9: 2, 3: 1})
        glued = [(r.name, f.name) for r in c.records.values() for f in r.fields if f.kind == "nested" and f.glued]
        self.assertEqual(len(glued), 16)

    def test_unions_defaults_arrays_extensions(self):
        c = self.cat
        unions = [r for r in c.records.values() if r.is_union]
        self.assertEqual(Counter(len(u.arms) for u in unions),
                         {2: 74, 3: 31, 4: 16, 5: 4, 6: 2, 9: 2, 16: 1, 19: 1})
        self.assertEqual(len(c.records["conf_mac_nacl_listed_ether_type_cp"].arms), 19)
        self.assertEqual(sum(1 for r in c.records.values() if any(f.default for f in r.fields)), 34)
        self.assertEqual(sum(r.base for r in c.records.values()), 27)
        shapes = Counter(f.shape for r in c.records.values() for f in r.fields if f.kind == "array")
        self.assertEqual(shapes, {"fixed": 4, "counted": 7, "seq": 5, "chars": 7})
        # vlan_group's count is the one whose low 16 bits count
        cut = [(r.name, f.name) for r in c.records.values() for f in r.fields if f.kind == "array" and f.bound_bits == 16]
        self.assertEqual(cut, [("vlan_group", "vlans")])
        self.assertEqual(sum(len(r.extensions) for r in c.records.values()), 10)
        self.assertEqual(sum(bool(r.extensions) for r in c.records.values()), 6)

    def test_type_slots(self):
        c = self.cat
        named = [s for s in c.slots if s.name]
        runs = {26: ("aom_obj_action", "batch_state"), 411: ("ci_ip_secur_ilabel_eol_1_cp", None),
                428: (None, "ci_ip_secur_ml_eol"), 576: ("cl_username_secret_enctype5_cp_3_cp", "conf_ip_nacl_ext_desc_cp"),
                716: ("en_address", "extended_acl_options"), 794: ("hostname_name_cp", None),
                806: (None, "if_handle"), 863: ("layer_scratch", None), 902: ("mdns_wired_vlans", "ntp_access_acl_name_str_set_cp"),
                995: ("sec_level_cp", "stat_counters"), 998: ("stat_direction", "rsl_aes_password_vstring"),
                1003: ("rsl_boolean", None), 1009: ("rsl_mac_addr", "rsl_password_vstring")}
        for row, (before, after) in runs.items():
            self.assertIsNone(c.slots[row].name, row)
            if before:
                self.assertEqual(c.slots[row - 1].name, before)
            if after:
                self.assertEqual(c.slots[row + 1].name, after)
        self.assertEqual(Counter(s.category for s in named), {"record": 1012, "library": 28, "enum": 14, "flags": 4})
        ext = c.enums["obj_type"].extensions
        self.assertEqual(len(ext), 42)
        self.assertEqual(sum(len(e.values) for e in ext), 178)
        self.assertEqual(len({v for e in ext for v in e.values}), 147)
        self.assertTrue(all(1 <= e.level <= 30 and 1 <= len(e.values) <= 18 for e in ext))


if __name__ == "__main__":
    unittest.main()

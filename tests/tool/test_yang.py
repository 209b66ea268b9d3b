"""The YANG module zan-config and the tool's RFC 7951 output and input, checked by libyang's
own yanglint: the module without a warning, both configurations (the built-in one and one
generated to touch every table, arm, array, default and key kind) as valid config data, the
round trip dump --format rfc7951 -> --db -> dump --json byte for byte, and the refusals.

Run by ctest with ZANFE, YANGLINT, YANG_MODULE and ZAN_SCHEMA in the environment.
"""
import copy
import json
import os
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE, os.path.join(HERE, "..", "..", "gen")]
sys.dont_write_bytecode = True
import catalogue  # noqa: E402
import yang_config  # noqa: E402

ZANFE = os.environ.get("ZANFE", "zanfe")
YANGLINT = os.environ.get("YANGLINT", "yanglint")
MODULE = os.environ.get("YANG_MODULE", "")
PREFIX = "zan-config:"


def run(*args, check=True):
    p = subprocess.run(args, capture_output=True, text=True)
    if check and p.returncode != 0:
        raise AssertionError(f"{' '.join(args)} failed ({p.returncode}): {p.stderr}")
    return p


class Yang(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.tmp = tempfile.TemporaryDirectory()
        cls.cat = catalogue.load(os.environ["ZAN_SCHEMA"])
        cls.generated = cls.path("generated.json")
        with open(cls.generated, "w", encoding="utf-8") as fh:
            json.dump(yang_config.config(cls.cat), fh)
        cls.docs = {}

    @classmethod
    def tearDownClass(cls):
        cls.tmp.cleanup()

    @classmethod
    def path(cls, name):
        return os.path.join(cls.tmp.name, name)

    def write(self, name, doc):
        p = self.path(name)
        with open(p, "w", encoding="utf-8") as fh:
            fh.write(doc if isinstance(doc, str) else json.dumps(doc, indent=1))
        return p

    def db(self, which):
        return [] if which == "default" else ["--db", self.generated]

    def rfc_dump(self, which):
        if which not in self.docs:
            self.docs[which] = run(ZANFE, *self.db(which), "dump", "--format", "rfc7951").stdout
        return self.docs[which]

    def yanglint(self, data_file):
        return run(YANGLINT, "-t", "config", MODULE, data_file, check=False)

    # ------------------------------------------------------------------ the module
    def test_module_passes_yanglint_without_a_word(self):
        p = run(YANGLINT, MODULE, check=False)
        self.assertEqual((p.returncode, p.stdout, p.stderr), (0, "", ""))

    def test_module_has_every_position_once_per_parent_and_the_unrolled_self_levels(self):
        tree = run(YANGLINT, "-f", "tree", MODULE).stdout
        names = [line.split("+--rw ")[1].split("*")[0] for line in tree.splitlines() if "+--rw " in line and "*" in line
                 and "[" in line]
        segments = {p.segment for p in self.cat.positions.values()}
        self.assertEqual(set(names), segments)
        self.assertEqual(names.count("cfg_vlan_eol"), yang_config.SELF_LEVELS)
        # each default of the catalogue once, in its record's grouping
        module = open(MODULE, encoding="utf-8").read()
        defaults = [f for r in self.cat.records.values() for f in r.all_fields if f.default is not None]
        self.assertEqual(module.count('default "'), len(defaults))
        self.assertIn("when \"../descriminator = 'ZAN_CFG_18'\"", module)   # the 19-arm union's last arm

    # ------------------------------------------------------------------ output and round trip
    def test_dump_validates_and_round_trips_byte_for_byte(self):
        for which in ("default", "generated"):
            with self.subTest(which):
                doc = self.rfc_dump(which)
                f = self.write(f"{which}.rfc7951.json", doc)
                p = self.yanglint(f)
                self.assertEqual((p.returncode, p.stderr), (0, ""))
                before = run(ZANFE, *self.db(which), "dump", "--json").stdout
                after = run(ZANFE, "--db", f, "dump", "--json").stdout
                self.assertEqual(after, before)

    def test_generated_configuration_reaches_every_position_arm_and_array(self):
        doc = json.loads(self.rfc_dump("generated"))
        lists, arms, leaf_lists = set(), set(), 0

        def walk(node, depth):
            nonlocal leaf_lists
            for name, v in node.items():
                name = name.removeprefix(PREFIX)
                if isinstance(v, list) and v and isinstance(v[0], dict):
                    lists.add(name)
                    for e in v:
                        walk(e, depth + 1)
                elif isinstance(v, list):
                    leaf_lists += 1
                elif isinstance(v, dict):
                    if "descriminator" in v:
                        arms.add(v["descriminator"])
                    walk(v, depth)
        walk(doc, 0)
        self.assertEqual(lists, {p.segment for p in self.cat.positions.values()})
        widest = max(len(r.arms) for r in self.cat.records.values())
        self.assertEqual(arms, {f"ZAN_CFG_{i}" for i in range(widest)})
        self.assertGreater(leaf_lists, 0)

    def test_get_prints_the_rows_under_their_ancestors_keys(self):
        doc = json.loads(self.rfc_dump("default"))
        vrf = doc[PREFIX + "vrf"][0]
        afi = vrf["vrf_afi"][0]
        vrf_path = f"/vrf[vrf_key_vrf_name={vrf['vrf_key_vrf_name']}]"
        path = f"{vrf_path}/vrf_afi[vrf_af_afi={afi['vrf_af_afi']}]"
        got = json.loads(run(ZANFE, "get", path, "--format", "rfc7951").stdout)
        # the row as dump shows it, less the lists of its child rows, which get does not print
        own = {k: v for k, v in afi.items() if not (isinstance(v, list) and v and isinstance(v[0], dict))}
        self.assertLess(len(own), len(afi))
        self.assertEqual(got, {PREFIX + "vrf": [{"vrf_key_vrf_name": vrf["vrf_key_vrf_name"], "vrf_afi": [own]}]})
        self.assertEqual(self.yanglint(self.write("get.json", got)).returncode, 0)
        # a table path: every row below, each as dump shows it
        got = json.loads(run(ZANFE, "get", f"{vrf_path}/vrf_afi", "--format", "rfc7951").stdout)
        self.assertEqual([e["vrf_af_afi"] for e in got[PREFIX + "vrf"][0]["vrf_afi"]],
                         [e["vrf_af_afi"] for e in vrf["vrf_afi"]])

    # ------------------------------------------------------------------ refusals
    def arm_document(self, in_row):
        """The generated dump with data put into an arm its discriminator does not select: of
        a union that is a row's record (in_row), or one nested in it."""
        doc = json.loads(self.rfc_dump("generated"))
        unions = [r for r in self.cat.records.values() if r.is_union and len(r.arms) > 1]

        def find(node, is_row):
            if is_row == in_row and node.get("descriminator") == "ZAN_CFG_0":
                return node
            for v in node.values():
                for e in v if isinstance(v, list) and v and isinstance(v[0], dict) else []:
                    hit = find(e, True)
                    if hit:
                        return hit
                if isinstance(v, dict):
                    hit = find(v, False)
                    if hit:
                        return hit
            return None
        union = find(doc, False)
        rec = next(r for r in unions if r.arms[0].name in union and all(f.name in union for f in r.fields[:1]))
        second = rec.arms[1]
        leaf = next(f for f in self.cat.records[second.type].all_fields if f.kind == "leaf" and f.word == "int32")
        union[second.name] = {leaf.name: 7}
        return doc, second.name

    def test_data_in_an_unselected_arm_is_refused_by_yanglint_and_the_loader(self):
        for in_row in (False, True):
            with self.subTest(in_row=in_row):
                bad, arm = self.arm_document(in_row)
                f = self.write(f"arm{in_row}.json", bad)
                p = self.yanglint(f)
                self.assertNotEqual(p.returncode, 0)
                self.assertIn("When condition", p.stderr + p.stdout)
                p = run(ZANFE, "--db", f, "dump", "--json", check=False)
                self.assertEqual((p.returncode, p.stdout), (1, ""))
                self.assertEqual(len(p.stderr.strip().splitlines()), 1, p.stderr)
                self.assertIn(f"/{arm}: data in arm {arm}", p.stderr)

    def test_bad_instance_data_is_refused_with_its_place(self):
        top = PREFIX + "vrf"
        policy = PREFIX + "cfg_ip_dhcp_relay_info_policy_eol"
        cases = [
            ({"other:x": []}, "other:x: \"other:x\" belongs to module other"),
            ({PREFIX + "no_such": []}, "zan-config:no_such: no top-level list no_such"),
            ({PREFIX + "vrf_afi": []}, "zan-config:vrf_afi: no top-level list vrf_afi"),
            ({top: {}}, f"{top}: expected an array of list entries"),
            ({top: [{"vrf_key_vrf_name": "a", "nope": 1}]}, f"{top}[0]/nope: no leaf, container or list nope"),
            ({top: [{"vrf_key_vrf_name": 5}]}, f"{top}[0]/vrf_key_vrf_name: expected a string"),
            ({top: [{"vrf_key_vrf_name": "a"}, {"vrf_key_vrf_name": "a"}]}, f"{top}[1]: duplicate key"),
            ({top: [{"vrf_key_vrf_name": "a", "vrf_afi": [{"vrf_af_afi": "x"}]}]},
             f"{top}[0]/vrf_afi[0]/vrf_af_afi: expected an integer"),
            ({top: [{"vrf_key_vrf_name": "a", "vrf_afi": [{"vrf_af_afi": 1, "parent_details_1": 3}]}]},
             f"{top}[0]/vrf_afi[0]/parent_details_1: expected a container object"),
            ({PREFIX + "cfg_vlan_eol": [{"vlan_num": "1", "cfg_vlan_eol": [{"vlan_num": "2", "vlan_list_plain": "x"}]}]},
             "zan-config:cfg_vlan_eol[0]/cfg_vlan_eol[0]/vlan_list_plain: expected an integer"),
            ({policy: [{"singleton_id": 1, "compound_0": {"compound_1": {"compound_6": {"replace": 1}}}}]},
             f"{policy}[0]/compound_0/compound_1/compound_6: arm compound_6 given, but no descriminator selects it"),
            ({policy: [{"singleton_id": 1, "compound_0": {"compound_1": {"descriminator": "ZAN_CFG_0x"}}}]},
             f"{policy}[0]/compound_0/compound_1/descriminator: string \"ZAN_CFG_0x\" is no value of zan_cfg_union"),
            ({policy: [{"singleton_id": 1, "compound_0": {"compound_1": {"descriminator": 1}}}]},
             f"{policy}[0]/compound_0/compound_1/descriminator: expected an enumerator name, got number 1"),
        ]
        for i, (doc, want) in enumerate(cases):
            with self.subTest(want):
                f = self.write(f"bad{i}.json", doc)
                p = run(ZANFE, "--db", f, "dump", check=False)
                self.assertEqual((p.returncode, p.stdout), (1, ""))
                self.assertEqual(p.stderr.count("\n"), 1, p.stderr)
                self.assertIn(f"{f}: {want}", p.stderr)

    def test_format_is_checked(self):
        for args in (["dump", "--format", "xml"], ["dump", "--format", "rfc7951", "--json"],
                     ["get", "/vrf", "--format", "rfc7951", "--with-state"],
                     ["get", "/vrf", "--format", "rfc7951", "--values"]):
            with self.subTest(args):
                p = run(ZANFE, *args, check=False)
                self.assertEqual((p.returncode, p.stdout), (2, ""))
                self.assertEqual(p.stderr.count("\n"), 1)

    def test_rows_nested_deeper_than_the_module_unrolls_are_refused(self):
        def vlan(n, depth):
            row = {"vlan_num": str(n), "vlan_list_plain": n}
            if depth > 1:
                row["children"] = {"tbl_cfg_vlan_eol": [vlan(n + 1, depth - 1)]}
            return row
        for depth, ok in ((yang_config.SELF_LEVELS, True), (yang_config.SELF_LEVELS + 1, False)):
            with self.subTest(depth):
                f = self.write(f"vlan{depth}.json", {"tbl_cfg_vlan_eol": [vlan(1, depth)]})
                p = run(ZANFE, "--db", f, "dump", "--format", "rfc7951", check=False)
                if ok:
                    self.assertEqual(p.returncode, 0, p.stderr)
                    self.assertEqual(self.yanglint(self.write("v.json", p.stdout)).returncode, 0)
                else:
                    self.assertEqual((p.returncode, p.stdout), (1, ""))
                    self.assertIn("nest more than 3 levels deep", p.stderr)
                # get of the deepest row alone: printed under its ancestors, or refused as dump is
                path = "".join(f"/cfg_vlan_eol[vlan_num={n}]" for n in range(1, depth + 1))
                p = run(ZANFE, "--db", f, "get", path, "--format", "rfc7951", check=False)
                self.assertEqual(p.returncode, 0 if ok else 1, p.stderr)


if __name__ == "__main__":
    unittest.main()

"""Backend: the YANG 1.1 module zan-config, the table tree of the catalogue as instance-data
schema for the tools of the field (yanglint, tree viewers, RESTCONF clients).

Mapping:
  - each table position is a `list` named by its path segment, nested under the lists of its
    parent table, keyed by its key's leaves (`singleton_id` for singletons, every part of a
    compound key). A second entrance is a list of its own under its second parent, carrying
    the entered table's rows, key and children.
  - a table that is its own parent (tbl_cfg_vlan_eol) cannot nest without end in YANG, which
    allows no recursion: its list stands at the top and is unrolled SELF_LEVELS deep, each
    level holding the next one and the table's other children. Rows nested deeper than that
    have no place in the module; the RFC 7951 printer refuses them with a one-line error.
  - a row's records are groupings used by the list, so their attributes stand in the list in
    schema order (both records of a two-record table); nested records are containers named
    by the field, glued ones too.
  - leaf words map to the YANG built-in types and to ietf-inet-types / ietf-yang-types;
    enumerations (with their values) and flag sets (`bits`, with positions) are typedefs;
    counted arrays are ordered leaf-lists, fixed ones with max-elements; character arrays are
    strings with their length limit; catalogue defaults become `default`.
  - a union's arms are containers with a `when` on the discriminator: a document holding data
    in an arm that `descriminator` does not select fails validation. ZAN_CFG_NONE selects no
    arm; value k selects arm k.
  - secret fields (catalogue.secret_name) carry `nacm:default-deny-all`, from
    ietf-netconf-acm (imported only when a field is secret), which the build puts beside
    the module.
  - attributes and enumerators that exist from a variant on carry the extension statement
    `zc:from-variant` (which tools that do not know it skip) and say so in their description.
"""

SELF_LEVELS = 3
MODULE = "zan-config"
PREFIX = "zc"
NAMESPACE = "urn:zanfe:params:xml:ns:yang:zan-config"
REVISION = "2026-11-23"

INTEGERS = {"u_int8": "uint8", "u_int16": "uint16", "int16": "int16", "u_int32": "uint32",
            "int32": "int32", "u_int64": "uint64"}
WORD_TYPES = dict(INTEGERS, rsl_vstring="string", rsl_boolean="boolean",
                  rsl_mac_addr="yang:mac-address", ip_address="inet:ip-address")
# Typedef names are the catalogue's type names, but for these (see typedef_name).
BUILTINS = {"binary", "bits", "boolean", "decimal64", "empty", "enumeration", "identityref",
            "instance-identifier", "int8", "int16", "int32", "int64", "leafref", "string", "union",
            "uint8", "uint16", "uint32", "uint64"}
WIDTH_MAX = {"u_int8": 255, "u_int16": 65535, "int16": 32767, "u_int32": 4294967295,
             "int32": 2147483647}
MODULE_TEXT = ("Configuration database context zan_config_db_context: every table of the catalogue as "
               "a list under its parent table, keyed by its key, each row holding its records. "
               "Generated from the catalogue; do not edit.")
VARIANT_TEXT = ("The attribute or enumerator exists from this variant (extension level) on; a record "
                "of a lower variant does not render it.")


def count_limit(r, f):
    """The largest count the field's count field can hold (None: a word without a limit)."""
    bound = next((g for g in r.all_fields if g.name == f.bound), None)
    return WIDTH_MAX.get(bound.word) if bound else None


class YangError(Exception):
    pass


def q(text):
    """A YANG double-quoted string."""
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def typedef_name(name):
    """A catalogue type's typedef: its own name, unless that is a YANG built-in type's."""
    return name + "-type" if name in BUILTINS else name


class Writer:
    def __init__(self, cat):
        self.cat = cat
        self.lines = []
        self.groupings = []        # record names in first-use order
        self.enums = []            # enumeration names used
        self.flagsets = []

    def out(self, depth, text):
        self.lines.append("  " * depth + text)

    # ------------------------------------------------------------------ types
    def use_record(self, name):
        if name in self.groupings:
            return
        self.groupings.append(name)
        for f in self.cat.records[name].all_fields:
            if f.kind == "nested":
                self.use_record(f.type)
            elif f.kind == "enum" and f.type not in self.enums:
                self.enums.append(f.type)
            elif f.kind == "flags" and f.type not in self.flagsets:
                self.flagsets.append(f.type)
            elif f.kind == "array" and f.shape == "seq":
                raise YangError(f"record {name}: sequence {f.name} stands in a table row")

    def enum_typedef(self, name):
        e = self.cat.enums[name]
        if e.library or not e.values:
            raise YangError(f"enumeration {name} has no values of its own")
        since = {}
        for x in sorted(e.extensions, key=lambda x: x.level):
            for v in x.values:
                since.setdefault(v, x.level)
        self.out(1, f"typedef {typedef_name(name)} {{")
        self.out(2, "type enumeration {")
        for i, v in enumerate(e.values):
            if v in since:
                self.out(3, f"enum {q(v)} {{")
                self.out(4, f"value {i};")
                self.out(4, f"{PREFIX}:from-variant {since[v]};")
                self.out(4, f"description {q(f'Exists from variant {since[v]} on.')};")
                self.out(3, "}")
            else:
                self.out(3, f"enum {q(v)} {{ value {i}; }}")
        self.out(2, "}")
        self.out(2, f"description {q(f'Enumeration {name}.')};")
        self.out(1, "}")

    def flags_typedef(self, name):
        fs = self.cat.flagsets[name]
        self.out(1, f"typedef {typedef_name(name)} {{")
        self.out(2, "type bits {")
        for i, b in enumerate(fs.bits):
            self.out(3, f"bit {b} {{ position {i}; }}")
        self.out(2, "}")
        self.out(2, f"description {q(f'Flag set {name}.')};")
        self.out(1, "}")

    def default_of(self, f):
        d = f.default
        if d.startswith('"'):
            d = d[1:-1]
        if f.kind == "enum":
            values = self.cat.enums[f.type].values
            d = values[int(d)] if d.isdigit() else d
        elif f.word == "rsl_boolean":
            d = "true" if d not in ("0", "false") else "false"
        return d

    # ------------------------------------------------------------------ records
    def grouping(self, name):
        r = self.cat.records[name]
        self.out(1, f"grouping {name} {{")
        self.out(2, f"description {q(f'Attributes of record {name}' + (', a union' if r.is_union else '') + '.')};")
        levels = {}
        for e in r.extensions:
            for f in e.fields:
                levels[f.name] = e.level
        for f in r.all_fields:
            self.field(r, f, levels.get(f.name, 0), 2)
        self.out(1, "}")

    def field(self, r, f, level, d):
        what = f"Field {f.name} of record {r.name}"
        if f.kind == "nested":
            self.out(d, f"container {f.name} {{")
            if f.arm:
                self.out(d + 1, f"when {q(f'../descriminator = {chr(39)}ZAN_CFG_{f.arm - 1}{chr(39)}')};")
                what = f"Arm {f.arm} of union {r.name} (descriminator ZAN_CFG_{f.arm - 1}), field {f.name}"
            glued = ", its columns glued to the field name" if f.glued else ""
            if f.secret:
                self.out(d + 1, "nacm:default-deny-all;")
            self.out(d + 1, f"description {q(f'{what}: record {f.type}{glued}.')};")
            self.out(d + 1, f"uses {f.type};")
            self.out(d, "}")
            return
        if f.kind == "array" and f.shape != "chars":
            self.out(d, f"leaf-list {f.name} {{")
            self.out(d + 1, f"type {WORD_TYPES[f.type]};")
            self.out(d + 1, "ordered-by user;")
            if f.shape == "fixed":
                self.out(d + 1, f"max-elements {f.bound};")
                what += f", {f.bound} elements of {f.type}"
            else:
                limit = count_limit(r, f)
                if limit is not None:
                    self.out(d + 1, f"max-elements {limit};")
                what += f", elements of {f.type} counted by {f.bound}"
        else:
            self.out(d, f"leaf {f.name} {{")
            if f.kind in ("enum", "flags"):
                self.out(d + 1, f"type {typedef_name(f.type)};")
            elif f.kind == "array":   # characters
                if f.bound.isdigit():
                    self.out(d + 1, f'type string {{ length "0..{f.bound}"; }}')
                    what += f", at most {f.bound} characters"
                else:
                    limit = count_limit(r, f)
                    if limit is not None:
                        self.out(d + 1, f'type string {{ length "0..{limit}"; }}')
                    else:
                        self.out(d + 1, "type string;")
                    what += f", characters counted by {f.bound}"
            else:
                self.out(d + 1, f"type {WORD_TYPES[f.word]};")
            if f.default is not None:
                self.out(d + 1, f"default {q(self.default_of(f))};")
        if f.secret:
            self.out(d + 1, "nacm:default-deny-all;")
        if level:
            self.out(d + 1, f"{PREFIX}:from-variant {level};")
            what += f"; exists from variant {level} on"
        self.out(d + 1, f"description {q(what + '.')};")
        self.out(d, "}")

    # ------------------------------------------------------------------ tables
    def children_of(self, table):
        """Positions whose rows stand under rows of `table`, in traverser order."""
        return [p for p in self.cat.traversers() if p.parent is not None and p.parent.table == table]

    def key_leaves(self, pos):
        t = self.cat.positions[pos.table]
        if t.key.kind == "compound":
            return [n for n, _ in t.key.parts]
        return [t.key.name]

    def attribute_names(self, table):
        return {f.name for r in table.rows for f in self.cat.records[r].all_fields}

    def table_list(self, pos, d, self_level=1):
        table = self.cat.positions[pos.table]
        self.out(d, f"list {pos.segment} {{")
        self.out(d + 1, f"key {q(' '.join(self.key_leaves(pos)))};")
        where = f"Table {table.name}"
        if pos.entrance_of:
            where += f" entered from {pos.parent.table} (position {pos.name})"
        if pos.parent is pos:
            where += (f", its own parent: level {self_level} of the {SELF_LEVELS} levels"
                      " the module unrolls (YANG allows no recursion)")
        self.out(d + 1, f"description {q(where + '; one entry per row.')};")
        for r in table.rows:
            self.use_record(r)
            self.out(d + 1, f"uses {r};")
        names = self.attribute_names(table)
        for child in self.children_of(table.name):
            if child.segment in names:
                raise YangError(f"{child.name}: segment {child.segment} is also an attribute of {table.name}")
            if child is pos or (child.parent is child and child.table == table.name):
                if self_level < SELF_LEVELS:
                    self.table_list(child, d + 1, self_level + 1)
                continue
            self.table_list(child, d + 1)
        self.out(d, "}")

    def any_secret(self):
        return any(f.secret for r in self.cat.records.values() for f in r.all_fields)

    def module(self):
        body_start = len(self.lines)
        tops = [p for p in self.cat.traversers() if p.parent is None or p.parent is p]
        for p in tops:
            self.table_list(p, 1)
        body = self.lines[body_start:]
        self.lines = self.lines[:body_start]
        head = [
            f"module {MODULE} {{",
            "  yang-version 1.1;",
            f"  namespace {q(NAMESPACE)};",
            f"  prefix {PREFIX};",
            "",
            "  import ietf-inet-types { prefix inet; }",
            "  import ietf-yang-types { prefix yang; }",
        ] + (["  import ietf-netconf-acm { prefix nacm; }"] if self.any_secret() else []) + [
            "",
            f"  description {q(MODULE_TEXT)};",
            "",
            f"  revision {REVISION} {{",
            f"    description {q('Tables, records, enumerations and flag sets of the catalogue.')};",
            "  }",
            "",
            "  extension from-variant {",
            "    argument level;",
            f"    description {q(VARIANT_TEXT)};",
            "  }",
            "",
        ]
        self.lines = head
        for e in self.enums:
            self.enum_typedef(e)
        for fs in self.flagsets:
            self.flags_typedef(fs)
        # groupings may use further records while being written: walk until none is new
        done = 0
        while done < len(self.groupings):
            self.grouping(self.groupings[done])
            done += 1
        self.lines.append("")
        self.lines += body
        self.lines.append("}")
        return "\n".join(self.lines) + "\n"


def module_text(cat):
    try:
        return Writer(cat).module()
    except YangError as e:
        raise SystemExit(f"zangen yang: {e}")


def files(cat):
    return {f"{MODULE}@{REVISION}.yang": module_text(cat)}

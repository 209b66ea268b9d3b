"""Reads the schema catalogue (schema/*.zs) into one checked model.

The catalogue is a set of line-oriented files. A line ending in a backslash continues on
the next one; '#' starts a comment. The statements:

  domain NAME
  leaf WORD code=N
  library NAME kind=K
  enum NAME: V0 V1 ...            (or "enum NAME: library")
  flags NAME: BIT0 BIT1 ...
  [base] record NAME: FIELD; FIELD; ...
  extension TYPE LEVEL NAME: [FIELD; ...]     (of a record)  or  [VALUE ...] (of an enum)
  table NAME key=... segment=... [rows=A,B] [columns=N] [marker=M] [link=L|none]
        [entrance=TABLE] pq=HEX32
  dispatcher ROOT: POS ...  |  dispatcher PARENT link=child|plain: POS ...
  table_rows first: T ...  |  table_rows empty: N ...
  slots empty: N|A-B ...   |  order after NAME: NAME ...

A record field is one of:
  name WORD [default=V]            leaf (WORD a leaf word)
  name enum [ENUM] [default=V]     enumeration leaf; descriminator means zan_cfg_union
  name flags FLAGSET
  name array ELEM[BOUND]           fixed (BOUND a number) or counted (BOUND a field) array;
                                   BOUND "field:16": the count is the field's low 16 bits
  name array seq TYPE              sequence of records
  name array chars[BOUND]          character array with its length field or fixed size
  [arm] name. -> TYPE              nested record; "arm" marks a union arm
  [arm] name -> TYPE               nested record whose column name is glued on (no dot)

Every check that fails raises CatalogueError naming the file, line and element.
"""

from __future__ import annotations

import os
import re
from dataclasses import dataclass, field
from typing import Optional


class CatalogueError(Exception):
    pass


# Leaf words that describe a field's shape rather than a value conversion of their own.
SHAPE_WORDS = ("enum", "array", "flags")

MAX_NAME = 256  # characters of a full attribute name


@dataclass
class Loc:
    file: str
    line: int

    def __str__(self):
        return f"{self.file}:{self.line}"


def secret_name(name: str) -> bool:
    """The one rule that marks a field secret (passwords, secrets, keys, communities): a word
    of its name (split at '_' and '.') begins with "passw", "secret" or "communit" (but for
    "extended_community", a route target), or is "psk", or the name holds "key_string" or
    "private_key". A nested field so marked makes
    everything below it secret. The YANG module carries nacm:default-deny-all on these
    nodes, and the RESTCONF server (server/access.cpp, the same rule) leaves them out of
    what readers get."""
    if "key_string" in name or "private_key" in name:
        return True
    words = re.split(r"[_.]", name)
    return any(w.startswith(("passw", "secret")) or w == "psk" or
               (w.startswith("communit") and (i == 0 or words[i - 1] != "extended")) for i, w in enumerate(words))


@dataclass
class Field:
    name: str                 # bare field name, as accessors use it
    kind: str                 # 'leaf' | 'enum' | 'flags' | 'nested' | 'array'
    word: str = ""            # column word: u_int32, enum, array, ...
    type: str = ""            # nested record, enum, flag set, or array element type
    glued: bool = False       # nested without the dot in its column name
    arm: int = 0              # 1-based union arm number, 0 when not an arm
    default: Optional[str] = None   # '1', '0' or a quoted text
    shape: str = ""           # arrays: 'fixed' | 'counted' | 'seq' | 'chars'
    bound: str = ""           # fixed size, or the count/length field
    bound_bits: int = 32      # counted arrays: how many low bits of the count field count
    record: "Record" = None
    code: Optional[int] = None    # type code of the column; None for a nested field

    @property
    def secret(self) -> bool:
        """Whether the field holds a secret (see secret_name)."""
        return secret_name(self.name)

    @property
    def prop_text(self) -> str:
        """Text this field adds to a property name."""
        return self.name + "." if self.kind == "nested" else self.name

    @property
    def col_text(self) -> str:
        """Text this field adds to a column name."""
        if self.kind == "nested":
            return self.name if self.glued else self.name + "."
        return self.name


@dataclass
class Extension:
    owner: str
    level: int
    name: str
    fields: list = field(default_factory=list)     # records: Field list
    values: list = field(default_factory=list)     # enumerations: value names
    loc: Loc = None


@dataclass
class Record:
    name: str
    domain: str
    base: bool                 # owned by the schema library: reads no variant, kind 2
    fields: list
    extensions: list = field(default_factory=list)
    loc: Loc = None
    index: int = -1            # order of definition in the catalogue

    @property
    def is_union(self) -> bool:
        return any(f.name == "descriminator" for f in self.fields)

    @property
    def arms(self):
        return [f for f in self.fields if f.arm]

    @property
    def all_fields(self):
        """Attributes in schema order: the base fields, then each extension's, level by level."""
        out = list(self.fields)
        for e in sorted(self.extensions, key=lambda e: e.level):
            out += e.fields
        return out


@dataclass
class Enum:
    name: str
    values: list
    library: bool = False
    extensions: list = field(default_factory=list)
    loc: Loc = None


@dataclass
class FlagSet:
    name: str
    bits: list
    loc: Loc = None


@dataclass
class Library:
    name: str
    kind: int
    loc: Loc = None


@dataclass
class Key:
    kind: str                  # 'singleton' | 'single' | 'compound'
    name: str = ""             # field name, or the key record of a compound key
    word: str = ""             # field word of a single key
    parts: list = field(default_factory=list)    # compound: [(name, word)] in search order


@dataclass
class Position:
    name: str
    domain: str
    segment: str
    pq: bytes
    key: Optional[Key] = None
    rows: list = field(default_factory=list)
    columns: Optional[int] = None
    marker_override: str = ""
    link_override: str = ""    # '' rule, 'none', or the field name
    entrance_of: str = ""
    loc: Loc = None
    # filled in from the tree
    parent: Optional["Position"] = None
    dispatcher: Optional["Dispatcher"] = None
    order: int = -1            # order of the 331 traversers: dispatcher by dispatcher

    @property
    def table(self) -> str:
        """The table whose identifier, rows and key this position uses."""
        return self.entrance_of or self.name

    @property
    def label_p(self) -> str:
        return "P_" + self.name

    @property
    def label_q(self) -> str:
        return "Q_" + self.name

    @property
    def marker(self) -> str:
        """Table marker left in pdc_list; a second entrance leaves its table's."""
        if self.marker_override:
            return self.marker_override
        return "inst_" + self.table

    @property
    def parent_row(self) -> str:
        """Field name the from-table's vector is asked for: the parent table without tbl_."""
        return self.parent.name[4:] if self.parent else ""

    @property
    def link_field(self) -> Optional[str]:
        """Child link field of the parent's row, or None."""
        if self.parent is None or self.link_override == "none":
            return None
        if self.link_override:
            return self.link_override
        sep = "_child_" if self.dispatcher.link == "child" else "_"
        return self.parent_row + sep + self.name[4:]

    @property
    def shape(self) -> str:
        if self.parent is None:
            return "root"
        return "nolink" if self.link_override == "none" else "child"


@dataclass
class Dispatcher:
    parent: Optional[Position]       # None for ROOT
    link: str                        # 'child' | 'plain' | '' for ROOT
    chain: list = field(default_factory=list)   # Position list
    loc: Loc = None

    @property
    def marker(self) -> str:
        return "ROOT" if self.parent is None else self.parent.marker


@dataclass
class TypeSlot:
    index: int
    name: Optional[str]              # None for an empty row
    category: str = ""               # 'record' | 'library' | 'enum' | 'flags' | ''

    @property
    def symbol(self) -> Optional[str]:
        if self.name is None:
            return None
        prefix = {"enum": "enum_", "flags": "flag_"}.get(self.category, "type_")
        return f"{prefix}{self.name}_name"


class Catalogue:
    def __init__(self):
        self.leaves = {}          # word -> code
        self.libraries = {}       # name -> Library
        self.enums = {}           # name -> Enum
        self.flagsets = {}        # name -> FlagSet
        self.records = {}         # name -> Record
        self.positions = {}       # name -> Position, in file order
        self.dispatchers = []     # Dispatcher list in chain order of the top dispatcher
        self.domains = []         # domain names in file order
        self.slots = []           # TypeSlot list, 1129
        self.table_rows = []      # table name or None, 331
        self._empty_slots = []
        self._order_after = []    # (anchor, [names], Loc)
        self._first_rows = []
        self._empty_rows = []
        self._tree_lines = []

    # ------------------------------------------------------------------ model queries
    def tables(self):
        """The 329 tables (positions that are not second entrances), in file order."""
        return [p for p in self.positions.values() if not p.entrance_of]

    def traversers(self):
        """The 331 positions in traverser order: dispatcher by dispatcher, chain order."""
        return sorted(self.positions.values(), key=lambda p: p.order)

    def record_order(self):
        """The 1,012 records in type-slot order."""
        slot = {s.name: s.index for s in self.slots if s.name}
        return sorted(self.records.values(), key=lambda r: slot[r.name])

    def arm_types(self):
        """Names of the records that can stand in a union arm, directly or nested deeper: the
        types that have null renderings."""
        out = set()

        def visit(n):
            if n in out:
                return
            out.add(n)
            for f in self.records[n].all_fields:
                if f.kind == "nested":
                    visit(f.type)
        for r in self.records.values():
            for f in r.arms:
                visit(f.type)
        return out

    def obj_type_groups(self):
        """The extension groups of the obj_type enumeration (empty without it)."""
        return list(self.enums["obj_type"].extensions) if "obj_type" in self.enums else []

    def columns(self, record_name, prefix=""):
        """Static column list (name, code) of a record, as the column description yields it."""
        out = []
        for f in self.records[record_name].all_fields:
            if f.kind == "nested":
                out += self.columns(f.type, prefix + f.col_text)
            else:
                out.append((prefix + f.col_text, f.code))
        return out

    def table_columns(self, table_name):
        pos = self.positions[table_name]
        cols = []
        for r in pos.rows:
            cols += self.columns(r)
        return cols

    def depth(self, record_name):
        r = self.records[record_name]
        return 1 + max([self.depth(f.type) for f in r.all_fields if f.kind == "nested"], default=0)

    # ------------------------------------------------------------------ reading
    @staticmethod
    def load(schema_dir) -> "Catalogue":
        cat = Catalogue()
        files = sorted(f for f in os.listdir(schema_dir) if f.endswith(".zs"))
        if not files:
            raise CatalogueError(f"{schema_dir}: no catalogue files")
        for fn in files:
            cat._read_file(os.path.join(schema_dir, fn))
        cat._finish()
        return cat

    def _read_file(self, path):
        base = os.path.basename(path)
        domain = None
        with open(path, encoding="utf-8") as fh:
            raw = fh.read().split("\n")
        logical = []
        buf, start = "", None
        for no, line in enumerate(raw, 1):
            line = line.split("#", 1)[0].rstrip() if not line.lstrip().startswith("#") else ""
            if start is None:
                start = no
            if line.endswith("\\"):
                buf += line[:-1] + " "
                continue
            buf += line
            if buf.strip():
                logical.append((start, " ".join(buf.split())))
            buf, start = "", None
        for no, text in logical:
            loc = Loc(base, no)
            word = text.split(" ", 1)[0]
            handler = getattr(self, "_st_" + word, None)
            try:
                if word == "domain":
                    domain = text.split()[1]
                    if domain in self.domains:
                        raise CatalogueError(f"domain {domain} given twice")
                    self.domains.append(domain)
                    continue
                if domain is None:
                    raise CatalogueError("statement before the domain line")
                if handler is None:
                    raise CatalogueError(f"unknown statement '{word}'")
                handler(text, loc, domain)
            except CatalogueError as e:
                msg = str(e)
                raise CatalogueError(msg if msg.startswith(base) else f"{loc}: {msg}")

    def _st_leaf(self, text, loc, domain):
        m = re.fullmatch(r"leaf (\w+) code=(\d+)", text)
        if not m:
            raise CatalogueError(f"bad leaf line: {text}")
        self.leaves[m.group(1)] = int(m.group(2))

    def _st_library(self, text, loc, domain):
        m = re.fullmatch(r"library (\w+) kind=([24])", text)
        if not m:
            raise CatalogueError(f"bad library line: {text}")
        self._unique(m.group(1), self.libraries, "library type")
        self.libraries[m.group(1)] = Library(m.group(1), int(m.group(2)), loc)

    def _st_enum(self, text, loc, domain):
        m = re.fullmatch(r"enum (\w+): (.*)", text)
        if not m:
            raise CatalogueError(f"bad enum line: {text}")
        name, rest = m.group(1), m.group(2).split()
        self._unique(name, self.enums, "enumeration")
        if rest == ["library"]:
            self.enums[name] = Enum(name, [], library=True, loc=loc)
        else:
            if len(set(rest)) != len(rest):
                raise CatalogueError(f"enumeration {name}: a value stands twice")
            self.enums[name] = Enum(name, rest, loc=loc)

    def _st_flags(self, text, loc, domain):
        m = re.fullmatch(r"flags (\w+): (.*)", text)
        if not m:
            raise CatalogueError(f"bad flags line: {text}")
        self._unique(m.group(1), self.flagsets, "flag set")
        self.flagsets[m.group(1)] = FlagSet(m.group(1), m.group(2).split(), loc)

    def _st_base(self, text, loc, domain):
        if not text.startswith("base record "):
            raise CatalogueError(f"bad line: {text}")
        self._record(text[len("base "):], loc, domain, True)

    def _st_record(self, text, loc, domain):
        self._record(text, loc, domain, False)

    def _record(self, text, loc, domain, base):
        m = re.fullmatch(r"record (\w+): (.*)", text)
        if not m:
            raise CatalogueError(f"bad record line: {text}")
        name = m.group(1)
        if name in self.records:
            raise CatalogueError(f"record {name} defined twice (first at {self.records[name].loc})")
        rec = Record(name, domain, base, [], loc=loc, index=len(self.records))
        rec.fields = self._fields(name, m.group(2))
        arm = 0
        for f in rec.fields:
            f.record = rec
            if f.arm:
                arm += 1
                f.arm = arm
        seen = set()
        for f in rec.fields:
            if f.name in seen:
                raise CatalogueError(f"record {name}: field {f.name} stands twice")
            seen.add(f.name)
        self.records[name] = rec

    def _fields(self, owner, body):
        fields = []
        for part in [p.strip() for p in body.split(";")]:
            if not part:
                raise CatalogueError(f"record {owner}: empty field")
            fields.append(self._field(owner, part))
        return fields

    def _field(self, owner, part):
        m = re.fullmatch(r"(arm )?(\w+)(\.?) -> (\w+)", part)
        if m:
            return Field(m.group(2), "nested", type=m.group(4), glued=not m.group(3),
                         arm=1 if m.group(1) else 0)
        default = None
        dm = re.search(r' default=("[^"]*"|\d+)$', part)
        if dm:
            default, part = dm.group(1), part[:dm.start()]
        m = re.fullmatch(r'(\w+) (\w+)(?: (.*))?', part)
        if not m:
            raise CatalogueError(f"record {owner}: cannot read field '{part}'")
        name, word, extra = m.groups()
        f = Field(name, "leaf", word=word, default=default)
        if word == "enum":
            f.kind = "enum"
            f.type = extra or ("zan_cfg_union" if name == "descriminator" else "")
            if not f.type:
                raise CatalogueError(f"record {owner}: enumeration field {name} names no enumeration")
        elif word == "flags":
            f.kind = "flags"
            f.type = extra or ""
            if not f.type:
                raise CatalogueError(f"record {owner}: flag field {name} names no flag set")
        elif word == "array":
            f.kind = "array"
            am = re.fullmatch(r"seq (\w+)|chars\[(\w+)\]|(\w+)\[(\w+)(?::(16))?\]", extra or "")
            if not am:
                raise CatalogueError(f"record {owner}: array field {name} has no element or bound")
            if am.group(1):
                f.shape, f.type = "seq", am.group(1)
            elif am.group(2):
                f.shape, f.type, f.bound = "chars", "char", am.group(2)
            else:
                f.type, f.bound = am.group(3), am.group(4)
                f.shape = "fixed" if f.bound.isdigit() else "counted"
                if am.group(5):
                    if f.shape == "fixed":
                        raise CatalogueError(f"record {owner}: fixed array {name} has no count to cut")
                    f.bound_bits = 16
        elif extra:
            raise CatalogueError(f"record {owner}: field {name}: unexpected '{extra}'")
        return f

    def _st_extension(self, text, loc, domain):
        m = re.fullmatch(r"extension (\w+) (\d+) (\w+):(.*)", text)
        if not m:
            raise CatalogueError(f"bad extension line: {text}")
        owner, level, name, body = m.group(1), int(m.group(2)), m.group(3), m.group(4).strip()
        ext = Extension(owner, level, name, loc=loc)
        if owner in self.records:
            ext.fields = self._fields(name, body) if body else []
            rec = self.records[owner]
            for f in ext.fields:
                if f.name in {g.name for g in rec.all_fields}:
                    raise CatalogueError(f"extension {name}: field {f.name} is already a field of {owner}")
                if f.kind == "nested" or f.arm:
                    raise CatalogueError(f"extension {name}: field {f.name} must be a leaf")
                f.record = rec
            self.records[owner].extensions.append(ext)
        elif owner in self.enums:
            ext.values = body.split()
            self.enums[owner].extensions.append(ext)
        else:
            raise CatalogueError(f"extension {name} of unknown type {owner} (define the type first)")

    def _st_table(self, text, loc, domain):
        parts = text.split()
        name, opts = parts[1], {}
        for p in parts[2:]:
            if "=" not in p:
                raise CatalogueError(f"table {name}: cannot read '{p}'")
            k, v = p.split("=", 1)
            if k in opts:
                raise CatalogueError(f"table {name}: {k} given twice")
            opts[k] = v
        known = {"segment", "key", "rows", "columns", "marker", "link", "entrance", "pq"}
        for k in opts:
            if k not in known:
                raise CatalogueError(f"table {name}: unknown option {k}")
        if name in self.positions:
            raise CatalogueError(f"table {name} defined twice (first at {self.positions[name].loc})")
        if not re.fullmatch(r"[0-9a-f]{32}", opts.get("pq", "")):
            raise CatalogueError(f"table {name}: pq must be 32 hex digits")
        if "segment" not in opts:
            raise CatalogueError(f"table {name}: no segment")
        pos = Position(name, domain, opts["segment"], bytes.fromhex(opts["pq"]), loc=loc,
                       marker_override=opts.get("marker", ""), link_override=opts.get("link", ""),
                       entrance_of=opts.get("entrance", ""))
        if pos.entrance_of:
            for k in ("key", "rows", "columns"):
                if k in opts:
                    raise CatalogueError(f"table {name}: a second entrance takes {k} from its table")
        else:
            if not name.startswith("tbl_"):
                raise CatalogueError(f"table {name}: table names begin with tbl_")
            pos.key = self._key(name, opts.get("key", ""))
            pos.rows = opts["rows"].split(",") if "rows" in opts else [name[4:]]
            pos.columns = int(opts["columns"]) if "columns" in opts else None
        self.positions[name] = pos

    def _key(self, table, text):
        if text == "singleton":
            return Key("singleton", "singleton_id", "u_int32")
        m = re.fullmatch(r"(\w+):(\w+)", text)
        if m:
            return Key("single", m.group(1), m.group(2))
        m = re.fullmatch(r"(\w+)\{(.*)\}", text)
        if m:
            parts = [tuple(p.split(":")) for p in m.group(2).split(",")]
            if any(len(p) != 2 for p in parts) or len(parts) < 2:
                raise CatalogueError(f"table {table}: bad compound key '{text}'")
            return Key("compound", m.group(1), parts=parts)
        raise CatalogueError(f"table {table}: bad key '{text}'")

    def _st_dispatcher(self, text, loc, domain):
        m = re.fullmatch(r"dispatcher (\w+)(?: link=(child|plain))?: (.*)", text)
        if not m:
            raise CatalogueError(f"bad dispatcher line: {text[:80]}")
        self._tree_lines.append((m.group(1), m.group(2) or "", m.group(3).split(), loc))

    def _st_table_rows(self, text, loc, domain):
        m = re.fullmatch(r"table_rows (first|empty): (.*)", text)
        if not m:
            raise CatalogueError(f"bad table_rows line: {text}")
        if m.group(1) == "first":
            self._first_rows = m.group(2).split()
        else:
            self._empty_rows = [int(x) for x in m.group(2).split()]

    def _st_slots(self, text, loc, domain):
        m = re.fullmatch(r"slots empty: (.*)", text)
        if not m:
            raise CatalogueError(f"bad slots line: {text}")
        for item in m.group(1).split():
            a, _, b = item.partition("-")
            self._empty_slots += list(range(int(a), int(b or a) + 1))

    def _st_order(self, text, loc, domain):
        m = re.fullmatch(r"order after (\w+): (.*)", text)
        if not m:
            raise CatalogueError(f"bad order line: {text}")
        self._order_after.append((m.group(1), m.group(2).split(), loc))

    @staticmethod
    def _unique(name, table, what):
        if name in table:
            raise CatalogueError(f"{what} {name} defined twice")

    # ------------------------------------------------------------------ checking
    def _finish(self):
        self._check_types()
        self._build_tree()
        self._check_positions()
        self._build_slots()
        self._build_table_rows()

    def _check_types(self):
        for r in self.records.values():
            for f in r.fields + [f for e in r.extensions for f in e.fields]:
                where = f"{r.loc}: record {r.name}, field {f.name}"
                if f.kind == "nested" and f.type not in self.records:
                    raise CatalogueError(f"{where}: nested type {f.type} is not a record")
                if f.kind == "leaf" and (f.word not in self.leaves or f.word in SHAPE_WORDS):
                    raise CatalogueError(f"{where}: unknown leaf word {f.word}")
                if f.kind == "enum" and f.type not in self.enums:
                    raise CatalogueError(f"{where}: unknown enumeration {f.type}")
                if f.kind == "flags" and f.type not in self.flagsets:
                    raise CatalogueError(f"{where}: unknown flag set {f.type}")
                if f.kind == "array":
                    if f.shape == "seq" and f.type not in self.records:
                        raise CatalogueError(f"{where}: sequence element {f.type} is not a record")
                    if f.shape in ("fixed", "counted") and f.type not in ("u_int8", "u_int16", "u_int32"):
                        raise CatalogueError(f"{where}: array element {f.type} has no element conversion")
                if f.kind != "nested":
                    if f.word not in self.leaves:
                        raise CatalogueError(f"{where}: word {f.word} has no type code")
                    f.code = self.leaves[f.word]
            if r.is_union:
                disc = [i for i, f in enumerate(r.fields) if f.name == "descriminator"][0]
                arms = [i for i, f in enumerate(r.fields) if f.arm]
                if not arms or arms != list(range(disc + 1, disc + 1 + len(arms))):
                    raise CatalogueError(f"{r.loc}: union {r.name}: arms must follow descriminator directly")
                if len(arms) > 22:
                    raise CatalogueError(f"{r.loc}: union {r.name}: more arms than zan_cfg_union names")
            elif r.arms:
                raise CatalogueError(f"{r.loc}: record {r.name} has arms but no descriminator")
        # no cycles among nested records
        state = {}

        def visit(n, path):
            if state.get(n) == 1:
                raise CatalogueError(f"records nest in a cycle: {' -> '.join(path + [n])}")
            if state.get(n) == 2:
                return
            state[n] = 1
            for f in self.records[n].fields:
                if f.kind == "nested":
                    visit(f.type, path + [n])
            state[n] = 2
        for n in self.records:
            visit(n, [])
        for e in self.enums.values():
            for x in e.extensions:
                bad = [v for v in x.values if v not in e.values]
                if bad:
                    raise CatalogueError(f"{x.loc}: extension {x.name}: {bad[0]} is no value of {e.name}")

    def _build_tree(self):
        if not self._tree_lines or self._tree_lines[0][0] != "ROOT":
            raise CatalogueError("tree: the first dispatcher must be ROOT")
        seen = {}
        order = 0
        for parent, link, chain, loc in self._tree_lines:
            if parent == "ROOT":
                d = Dispatcher(None, "", loc=loc)
            else:
                if parent not in self.positions:
                    raise CatalogueError(f"{loc}: dispatcher of unknown table {parent}")
                d = Dispatcher(self.positions[parent], link, loc=loc)
            for name in chain:
                if name not in self.positions:
                    raise CatalogueError(f"{loc}: chain names unknown position {name}")
                if name in seen:
                    raise CatalogueError(f"{loc}: position {name} stands in two chains")
                p = self.positions[name]
                seen[name] = d
                p.dispatcher, p.order = d, order
                p.parent = d.parent
                order += 1
                d.chain.append(p)
            self.dispatchers.append(d)
        missing = [n for n in self.positions if n not in seen]
        if missing:
            raise CatalogueError(f"position {missing[0]} stands in no dispatcher chain")

    def _check_positions(self):
        segs = {}
        for p in self.positions.values():
            if p.segment in segs:
                raise CatalogueError(f"{p.loc}: segment {p.segment} of {p.name} is also {segs[p.segment]}'s")
            segs[p.segment] = p.name
            if p.entrance_of:
                t = self.positions.get(p.entrance_of)
                if t is None or t.entrance_of:
                    raise CatalogueError(f"{p.loc}: {p.name} is an entrance of unknown table {p.entrance_of}")
                continue
            for r in p.rows:
                if r not in self.records:
                    raise CatalogueError(f"{p.loc}: table {p.name}: row type {r} is not a record")
            if p.columns is not None:
                n = len(self.table_columns(p.name))
                if n != p.columns:
                    raise CatalogueError(f"{p.loc}: table {p.name}: {n} columns, catalogue says {p.columns}")
            if p.key.kind == "compound":
                if p.key.name not in self.records:
                    raise CatalogueError(f"{p.loc}: table {p.name}: key record {p.key.name} unknown")
                names = {f.name: f.word for f in self.records[p.key.name].fields}
                for kn, kw in p.key.parts:
                    if names.get(kn) != kw:
                        raise CatalogueError(f"{p.loc}: table {p.name}: key field {kn} {kw} not in {p.key.name}")
            else:
                top = self.records[p.rows[0]]
                f = next((f for f in top.fields if f.name == p.key.name), None)
                if f is None or f.word != p.key.word:
                    raise CatalogueError(f"{p.loc}: table {p.name}: key {p.key.name} {p.key.word} not in row {top.name}")
        luids = {}
        for p in self.positions.values():
            if p.pq in luids:
                raise CatalogueError(f"{p.loc}: path-query identifier of {p.name} repeats {luids[p.pq]}'s")
            luids[p.pq] = p.name
            if p.parent is None and p.link_override:
                raise CatalogueError(f"{p.loc}: root position {p.name} has a link")

    def _build_slots(self):
        cats = {}
        for n in self.records:
            cats[n] = "record"
        for src, cat in ((self.libraries, "library"), (self.enums, "enum"), (self.flagsets, "flags")):
            for n in src:
                if n in cats:
                    raise CatalogueError(f"type name {n} is both {cats[n]} and {cat}")
                cats[n] = cat
        names = sorted(cats, key=lambda s: s.encode())
        for anchor, moved, loc in self._order_after:
            for m in moved:
                if m not in cats:
                    raise CatalogueError(f"{loc}: order names unknown type {m}")
                names.remove(m)
            if anchor not in names:
                raise CatalogueError(f"{loc}: order anchor {anchor} unknown or itself moved")
            i = names.index(anchor) + 1
            names[i:i] = moved
        total = len(names) + len(self._empty_slots)
        if len(set(self._empty_slots)) != len(self._empty_slots):
            raise CatalogueError("slots: an empty row stands twice")
        empty = set(self._empty_slots)
        if any(e >= total or e < 0 for e in empty):
            raise CatalogueError("slots: an empty row lies beyond the last row")
        it = iter(names)
        self.slots = []
        for i in range(total):
            if i in empty:
                self.slots.append(TypeSlot(i, None))
            else:
                n = next(it)
                self.slots.append(TypeSlot(i, n, cats[n]))

    def _build_table_rows(self):
        tables = [p.name for p in self.tables()]
        for t in self._first_rows:
            if t not in tables:
                raise CatalogueError(f"table_rows: {t} is no table")
        rest = sorted((t for t in tables if t not in self._first_rows), key=lambda s: s.encode())
        order = self._first_rows + rest
        total = len(order) + len(self._empty_rows)
        rows, it = [], iter(order)
        for i in range(total):
            rows.append(None if i in self._empty_rows else next(it))
        self.table_rows = rows


def load(schema_dir):
    return Catalogue.load(schema_dir)

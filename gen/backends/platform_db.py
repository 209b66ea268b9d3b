"""Database side of the reference platform from the catalogue.

Writes constant descriptors and the database names the front end imports, each name a
one-line entry point into the store's templates (platform/db/shim.hpp):

  db_<domain>.cpp   records and table positions of one catalogue domain: type and table
                    names, identifiers, field vectors, row and field accessors, the
                    operations of compound key records
  db_types.cpp      library types, enumerations and flag sets
  db_index.cpp      the two numberings (type slots, table rows) and the list of domains

Identifiers are the first 16 bytes of an MD5 over a fixed text ("table:<name>",
"type:<name>"), so they stay the same from build to build. Every C name is checked to be
unique across all files before anything is written.
"""

import hashlib

WORDS = {
    "u_int8": "u_int8", "u_int16": "u_int16", "int16": "int16", "u_int32": "u_int32",
    "int32": "int32", "u_int64": "u_int64", "rsl_vstring": "rsl_vstring",
    "rsl_boolean": "rsl_boolean", "rsl_mac_addr": "rsl_mac_addr", "ip_address": "ip_address",
    "enum": "enum_value", "flags": "flag_bits", "char": "character",
}
NUMERIC = {"u_int8", "u_int16", "int16", "u_int32", "int32", "u_int64", "rsl_boolean"}
KINDS = {"leaf": "leaf", "enum": "enumeration", "flags": "flags", "nested": "nested"}
SHAPES = {"fixed": "fixed_array", "counted": "counted_array", "seq": "sequence", "chars": "chars"}


class GenError(Exception):
    pass


def luid(text):
    d = hashlib.md5(("zan-luid:" + text).encode()).hexdigest()
    return f"0x{d[:16]}, 0x{d[16:32]}"


def cstr(s):
    return "nullptr" if s is None else '"' + s + '"'


def head(sources):
    return (f"// generated from {sources} by gen/backends/platform_db.py, do not edit\n"
            '#include "shim.hpp"\n\n')


class Names:
    """Every C name the backend defines, to refuse a catalogue whose names collide."""

    def __init__(self):
        self.seen = {}

    def add(self, name, what):
        if name in self.seen:
            raise GenError(f"C name {name} stands for both {self.seen[name]} and {what}")
        self.seen[name] = what


def all_fields(rec):
    """Fields with their extension level. An extension field that the record also lists
    is that same field, marked with the extension's level."""
    out = [[f, 0] for f in rec.fields]
    for ext in sorted(rec.extensions, key=lambda e: e.level):
        for f in ext.fields:
            same = [x for x in out if x[0].name == f.name]
            if same:
                same[0][1] = ext.level
            else:
                out.append([f, ext.level])
    return [tuple(x) for x in out]


def field_desc(f, level):
    kind = SHAPES[f.shape] if f.kind == "array" else KINDS[f.kind]
    word = "none"
    typ = bound_name = None
    bound = 0
    if f.kind == "leaf":
        word = WORDS[f.word]
    elif f.kind in ("enum", "flags"):
        word, typ = WORDS[f.word], f.type
    elif f.kind == "nested":
        typ = f.type
    elif f.shape == "seq":
        typ = f.type
    else:
        word = WORDS[f.type]
        if f.bound.isdigit():
            bound = int(f.bound)
        else:
            bound_name = f.bound
    return (f"    {{{cstr(f.name)}, {cstr(typ)}, {cstr(bound_name)}, {bound}, K::{kind}, W::{word}, "
            f"{f.arm}, {level}}},")


def accessor_lines(rec, f, i, names):
    p = f"{rec.name}_{f.name}"
    what = f"field {f.name} of {rec.name}"
    out = []
    if f.kind == "array":
        macro = {"fixed": "ZDB_ARRAY", "counted": "ZDB_ARRAY", "chars": "ZDB_CHARS", "seq": "ZDB_SEQ"}[f.shape]
        made = {"ZDB_ARRAY": ("_get", "_state_flag_get", "_state_flag_whole_get"),
                "ZDB_CHARS": ("_get", "_state_flag_get"),
                "ZDB_SEQ": ("_get_first", "_get_next", "_state_flag_get")}[macro]
        out.append(f"{macro}({p}, {i})")
        if f.bound and not f.bound.isdigit():
            names.add(f"{rec.name}_{f.bound}_get_value", f"bound of {what}")
            out.append(f"ZDB_BOUND({rec.name}_{f.bound}, {i})")
    elif f.kind == "leaf" and f.word in NUMERIC or f.kind == "enum":
        made = ("_get", "_state_flag_get", "_get_value")
        out.append(f"ZDB_NUM({p}, {i})")
    else:
        made = ("_get", "_state_flag_get")
        out.append(f"ZDB_LEAF({p}, {i})")
    for m in made:
        names.add(p + m, what)
    return out


def links_by_row(cat):
    links = {}
    for p in cat.traversers():
        lf = p.link_field
        if lf:
            parent = cat.positions[p.parent.table]
            row = parent.rows[0]
            if lf not in links.setdefault(row, []):
                links[row].append(lf)
    return links


def parent_rows(cat):
    rows = []
    for d in cat.dispatchers[1:]:
        row = cat.positions[d.parent.table].rows[0]
        if row not in rows:
            rows.append(row)
    return rows


def domain_file(cat, domain, names, links, parents):
    records = [r for r in cat.records.values() if r.domain == domain]
    positions = [p for p in cat.positions.values() if p.domain == domain]
    sources = sorted({r.loc.file for r in records} | {p.loc.file for p in positions})
    ns = f"zan::db::gen::{domain}"
    o = [head(", ".join("schema/" + s for s in sources))]
    o.append(f"namespace {ns} {{\nextern const zan::db::desc::FieldDesc F[];\n"
             f"extern const zan::db::desc::RecordDesc R[];\nextern const zan::db::desc::TableDesc T[];\n}}\n"
             f"using namespace zan::db::desc;\nusing namespace {ns};\n")

    # records: names, identifiers, field vectors
    o.append("\n// Record types: ZDB_RECORD(type, record index, identifier)")
    for i, r in enumerate(records):
        for sym in (f"type_{r.name}_name", f"type_{r.name}_luid", f"zan_{r.name}_field_vft"):
            names.add(sym, f"record {r.name}")
        o.append(f"ZDB_RECORD({r.name}, {i}, {luid('type:' + r.name)})")
        if r.name in parents:
            names.add(f"zan_{r.name}_get_field_info", f"parent row {r.name}")
            o.append(f"ZDB_FIELD_INFO({r.name}, {i})")

    # field descriptors
    o.append("\n// Fields: {name, type, count or length field, fixed size, kind, word, arm, extension level}")
    o.append(f"namespace {ns} {{\nconst FieldDesc F[] = {{")
    starts, n = [], 0
    for r in records:
        starts.append(n)
        o.append(f"    // {n}: {r.name} ({r.loc})")
        for f, level in all_fields(r):
            o.append(field_desc(f, level))
            n += 1
    if n == 0:
        o.append("    {nullptr, nullptr, nullptr, 0, K::leaf, W::none, 0, 0},")
    o.append("};")
    o.append("// Records: ZDB_R(type, first field, fields, base, child link fields)")
    o.append("const RecordDesc R[] = {")
    for r, s in zip(records, starts):
        lk = links.get(r.name)
        o.append(f"    ZDB_R({r.name}, {s}, {len(all_fields(r))}, {int(r.base)}, {cstr(' '.join(lk) if lk else None)}),")
    if not records:
        o.append("    {nullptr, nullptr, nullptr, nullptr, 0, 0, 0, nullptr},")
    o.append("};\n}")

    # accessors
    o.append("\n// Accessors of each field: ZDB_<shape>(<type>_<field>, field index)")
    for r, s in zip(records, starts):
        for k, (f, _) in enumerate(all_fields(r)):
            o += accessor_lines(r, f, s + k, names)

    # compound key records
    keys = [p.key for p in cat.tables() if p.key.kind == "compound" and p.key.name in
            {r.name for r in records}]
    if keys:
        o.append("\n// Key records of compound keys")
    for key in keys:
        i = [r.name for r in records].index(key.name)
        rec = records[i]
        for m in ("_create", "_len", "_marshal", "_destroy"):
            names.add(key.name + m, f"key record {key.name}")
        o.append(f"ZDB_KEY({key.name}, {i})")
        for k, (f, _) in enumerate(all_fields(rec)):
            names.add(f"{key.name}_{f.name}_set", f"key record {key.name}")
            o.append(f"ZDB_KEY_SET({key.name}_{f.name}, {starts[i] + k})")

    # table positions
    o.append("\n// Tables: ZDB_TABLE(table without tbl_, position index, identifier); ZDB_ROW per row type")
    for i, p in enumerate(positions):
        if p.entrance_of:
            continue
        x = p.name[4:]
        for sym in (f"table_{p.name}_name", f"table_{p.name}_luid", f"{p.name}_get_field",
                    f"{p.name}_table_field_vft"):
            names.add(sym, f"table {p.name}")
        o.append(f"ZDB_TABLE({x}, {i}, {luid('table:' + p.name)})")
        for n_row, row in enumerate(p.rows):
            names.add(f"{p.name}_{row}_get_field", f"table {p.name}")
            o.append(f"ZDB_ROW({x}, {row}, {i}, {n_row})")
    o.append("\n// Positions: {name, identifier, vector (ZDB_T: those of the table), segment, path-query identifier,")
    o.append("//             key, key parts, row types, parent, child link field, entered table, traverser order,")
    o.append("//             key shape, key word}")
    o.append(f"namespace {ns} {{\nconst TableDesc T[] = {{")
    for p in positions:
        t = cat.positions[p.table]
        key = t.key
        shape = {"singleton": "key_singleton", "single": "key_single", "compound": "key_compound"}[key.kind]
        parts = ",".join(n for n, _ in key.parts) if key.kind == "compound" else None
        word = WORDS[key.word] if key.kind != "compound" else "none"
        if p.entrance_of:
            name, lu, vft = cstr(p.name), "nullptr", "nullptr"
        else:
            name, lu, vft = f"ZDB_T({p.name[4:]})", "", ""
        o.append(f"    {{{', '.join(x for x in (name, lu, vft) if x)}, {cstr(p.segment)}, \"{p.pq.hex()}\", {cstr(key.name)}, "
                 f"{cstr(parts)}, {cstr(','.join(t.rows))}, {cstr(p.parent.name if p.parent else None)}, "
                 f"{cstr(p.link_field)}, {cstr(p.entrance_of or None)}, {p.order}, {shape}, W::{word}}},")
    if not positions:
        o.append("    {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, "
                 "nullptr, 0, key_singleton, W::none},")
    o.append("};")
    o.append(f"extern const DomainDesc k_domain;\nconst DomainDesc k_domain = {{\"{domain}\", R, {len(records)}, "
             f"T, {len(positions)}}};\n}}  // namespace {ns}\n")
    return "\n".join(o)


def types_file(cat, names):
    o = [head("schema/base.zs, schema/object_model.zs")]
    o.append("using namespace zan::db::desc;\n")
    o.append("// Library types, enumerations, flag sets: ZDB_TYPE(name prefix, type, identifier)")
    entries = []
    for lib in cat.libraries.values():
        names.add(f"type_{lib.name}_name", f"library type {lib.name}")
        o.append(f"ZDB_TYPE(type, {lib.name}, {luid('type:' + lib.name)})")
        entries.append(("type", lib.name, "library", lib.kind, None, None))
    for e in cat.enums.values():
        names.add(f"enum_{e.name}_name", f"enumeration {e.name}")
        names.add(f"{e.name}_get_value", f"enumeration {e.name}")
        o.append(f"ZDB_TYPE(enum, {e.name}, {luid('type:' + e.name)})")
        o.append(f"ZDB_ENUM_VALUE({e.name})")
        levels = None
        if e.extensions:
            lv = {}
            for x in e.extensions:
                for v in x.values:
                    lv[v] = min(lv.get(v, x.level), x.level)
            levels = [lv.get(v, 0) for v in e.values]
        entries.append(("enum", e.name, "enumeration", 3, e.values, levels))
    for fs in cat.flagsets.values():
        names.add(f"flag_{fs.name}_name", f"flag set {fs.name}")
        names.add(f"{fs.name}_get_value", f"flag set {fs.name}")
        o.append(f"ZDB_TYPE(flag, {fs.name}, {luid('type:' + fs.name)})")
        o.append(f"ZDB_FLAG_VALUE({fs.name})")
        entries.append(("flag", fs.name, "flags", 4, fs.bits, None))
    for _, name, category, _, _, _ in entries:
        names.add(f"zan_{name}_field_vft", f"{category} {name}")
        names.add(f"type_{name}_luid", f"{category} {name}")
    o.append("\nnamespace zan::db::gen::types {\nnamespace {")
    for prefix, name, _, _, values, levels in entries:
        if values:
            o.append(f"const char* const V_{name}[] = {{")
            line = "   "
            for v in values:
                if len(line) + len(v) > 110:
                    o.append(line)
                    line = "   "
                line += f" \"{v}\","
            o.append(line + "\n};")
        if levels:
            o.append(f"const uint8_t L_{name}[] = {{{', '.join(map(str, levels))}}};")
    o.append("}  // namespace")
    o.append("// {name, identifier, vector, category, class, values, enumerators or bits, levels}")
    o.append("extern const TypeDesc k_types[];\nconst TypeDesc k_types[] = {")
    for prefix, name, category, kind, values, levels in entries:
        o.append(f"    {{{prefix}_{name}_name, type_{name}_luid, &zan_{name}_field_vft, Category::{category}, "
                 f"{kind}, {len(values or [])}, {('V_' + name) if values else 'nullptr'}, "
                 f"{('L_' + name) if levels else 'nullptr'}}},")
    o.append(f"}};\nextern const uint32_t k_type_count;\nconst uint32_t k_type_count = {len(entries)};\n"
             "}  // namespace zan::db::gen::types\n")
    return "\n".join(o)


def index_file(cat, domains):
    o = [head("schema/*.zs")]
    o.append("namespace zan::db::gen {")
    for d in domains:
        o.append(f"namespace {d} {{ extern const desc::DomainDesc k_domain; }}")
    o.append("namespace types {\nextern const desc::TypeDesc k_types[];\nextern const uint32_t k_type_count;\n}")
    o.append("}  // namespace zan::db::gen\n")
    prefix = {"record": "type", "library": "type", "enum": "enum", "flags": "flag"}
    o.append("// Type slots in the numbering of zan_config_db_type_dispatch_type_mrst_lookup:")
    o.append("// S(name prefix, type) for a named slot, E(slot) for an empty one.")
    o.append("#define ZDB_SLOTS(S, E) \\")
    for s in cat.slots:
        o.append(f"    E({s.index}) \\" if s.name is None else f"    S({prefix[s.category]}, {s.name}) \\")
    o.append("")
    o.append("#define ZDB_DECLARE_SLOT(P, T) extern const char P##_##T##_name[]; extern const uint8_t type_##T##_luid[];"
             " extern const zan_field_vft zan_##T##_field_vft;")
    o.append("#define ZDB_SLOT_ROW(P, T) {P##_##T##_name, type_##T##_luid, &zan_##T##_field_vft},")
    o.append("#define ZDB_EMPTY_ROW(N) {nullptr, nullptr, nullptr},")
    o.append("#define ZDB_NOTHING(N)")
    o.append('extern "C" {\nZDB_SLOTS(ZDB_DECLARE_SLOT, ZDB_NOTHING)\n}')
    o.append("\n// Table rows in the numbering of zan_config_db_table_mrst_lookup: R(table), E(row) when empty.")
    o.append("#define ZDB_ROWS(R, E) \\")
    for i, t in enumerate(cat.table_rows):
        o.append(f"    E({i}) \\" if t is None else f"    R({t}) \\")
    o.append("")
    o.append("#define ZDB_DECLARE_ROW(X) extern const char table_##X##_name[];")
    o.append("#define ZDB_ROW_NAME(X) table_##X##_name,")
    o.append("#define ZDB_EMPTY_NAME(N) nullptr,")
    o.append('extern "C" {\nZDB_ROWS(ZDB_DECLARE_ROW, ZDB_NOTHING)\n}\n')
    o.append("namespace zan::db::gen {\nnamespace {")
    o.append("const zan_db_type_lut_row k_slot_rows[] = {ZDB_SLOTS(ZDB_SLOT_ROW, ZDB_EMPTY_ROW)};")
    o.append("const char* const k_table_rows[] = {ZDB_ROWS(ZDB_ROW_NAME, ZDB_EMPTY_NAME)};")
    o.append("const desc::DomainDesc* const k_domains[] = {")
    for d in domains:
        o.append(f"    &{d}::k_domain,")
    o.append("};\n}  // namespace")
    o.append(f"static_assert(sizeof k_slot_rows / sizeof k_slot_rows[0] == {len(cat.slots)});")
    o.append(f"static_assert(sizeof k_table_rows / sizeof k_table_rows[0] == {len(cat.table_rows)});")
    latest = max([x.level for r in cat.records.values() for x in r.extensions] +
                 [x.level for e in cat.enums.values() for x in e.extensions] + [0])
    o.append("// {domains, count, types, count, type slots, table rows, count, latest variant}")
    o.append(f"const desc::CatalogueDesc k_catalogue = {{k_domains, {len(domains)}, types::k_types, "
             f"types::k_type_count, &zan_config_db_type_dispatch_type_lut, k_table_rows, {len(cat.table_rows)}, "
             f"{latest}}};")
    o.append("}  // namespace zan::db::gen\n")
    o.append(f'extern "C" const zan_db_type_lut zan_config_db_type_dispatch_type_lut = {{{len(cat.slots)}, '
             "zan::db::gen::k_slot_rows};\n")
    return "\n".join(o)


def files(cat):
    names = Names()
    links = links_by_row(cat)
    parents = set(parent_rows(cat))
    domains = [d for d in cat.domains
               if any(r.domain == d for r in cat.records.values())
               or any(p.domain == d for p in cat.positions.values())]
    out = {}
    try:
        for d in domains:
            out[f"db_{d}.cpp"] = domain_file(cat, d, names, links, parents)
        out["db_types.cpp"] = types_file(cat, names)
        out["db_index.cpp"] = index_file(cat, domains)
    except GenError as e:
        raise SystemExit(f"zangen: platform_db: {e}")
    return out

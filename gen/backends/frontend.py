"""Front-end code from the catalogue: constant descriptors, one-line entry points into the
hand-written templates, the five arrays, the dispatcher chain and the export list.

Files written (all into the front end's generated directory):

  fe_catalogue.hpp          counts the hand-written code sizes its tables by
  fe_ntlist_<domain>.cpp    per domain: the column texts (each once), the descriptors of the
                            domain's records and tables, and their exported entry points
  fe_ntlist_messages.cpp    message table of the to_ntlist unit, four formats per record
  fe_arrays.cpp             the five arrays the initialiser registers, with the imported
                            database names they hold
  fe_resolve_imports.hpp    database names path and query resolution imports; the traversers
  fe_resolve_<domain>.cpp   per domain: query traverser descriptors and entry points
  fe_resolve_chain.cpp      every path traverser's descriptor and entry point, the dispatchers
                            (each a compile-time chain over its path descriptors, so that the
                            compares inline) and the segment loop's order of dispatchers
  fe_resolve_messages.cpp   message table of the path and query traversal unit
  zanfe.map                 linker version script: the library's exported names, nothing else

Generated code never holds a function body beyond one call into a template; everything
schema-specific is data. Identifiers of generated data live in namespace zan::gen.
"""

from catalogue import CatalogueError, MAX_NAME
from . import fe_nlist, fe_rows, fe_vlist
from .fe_common import (CTX, GENERATOR, LEAF_CONV, LEAF_TRACED, Messages, Units, c_str, columns_fn, extension_core,
                        field_array, field_initialiser, field_word, head, ntlist_fn, pairs_fn, props_fn, props_null_fn,
                        sources, type_core, typed_names, vlist_fn)

# The frame's own exported names (the families' names follow from the catalogue).
FRAME_EXPORTS = (
    "zan_config_db_data_model_fe_init",
    "fe_zan_config_db_zan_config_db_context_path_query_dispatch",
    "zan_config_db_table_lookup",
    "zan_config_db_type_lookup",
    "zan_config_db_table_dispatch_fe_table_vft",
    "zan_config_db_fe_gx_dispatch_vft",
    "zan_config_db_field_dispatch_type_field_lut",
    "zan_config_db_fe_gx_type_dispatch_vft",
    "zan_config_db_type_gx_lut",
)

NTLIST_MESSAGES = (                 # per record, in this order; <t> is the record's name
    "{t} to_ntlist, null arguments",
    "{t} to_nlist, prior error",
    "no space in buffer for attribute name %s.Availbale length is %zu",
    "{t} to_ntlist failed (%s)",
)

KIND_RECORD, KIND_BASE, KIND_ENUM, KIND_FLAGS, KIND_TABLE = 1, 2, 3, 4, 5
KIND_WORD = {1: "record", 2: "base", 3: "enum", 4: "flags or scalar", 5: "table"}


def exports(cat):
    """Every name the library exports, in a stable order."""
    return (list(FRAME_EXPORTS) + resolve_exports(cat) + [ntlist_fn(r.name) for r in cat.record_order()]
            + [columns_fn(p.name) for p in cat.tables()])


def type_kinds(cat, slot):
    """(kind in the property array, kind in the value-list array) of a type row."""
    if slot.name is None:
        return KIND_RECORD, KIND_RECORD
    if slot.category == "record":
        return (KIND_BASE if cat.records[slot.name].base else KIND_RECORD), KIND_RECORD
    if slot.category == "library":
        return cat.libraries[slot.name].kind, KIND_RECORD
    if slot.category == "enum":
        return KIND_ENUM, KIND_ENUM
    if slot.category == "flags":
        return KIND_FLAGS, KIND_FLAGS
    raise CatalogueError(f"type row {slot.index}: {slot.name} has no category")


class Pool:
    """Column texts of one file, each stored once, NUL after each."""

    def __init__(self):
        self.offset = {}
        self.texts = []
        self.size = 0

    def add(self, text, where):
        if text not in self.offset:
            if self.size > 0xFFFF:
                raise CatalogueError(f"{where}: the column texts of its domain outgrow 16-bit offsets")
            self.offset[text] = self.size
            self.texts.append(text)
            self.size += len(text) + 1
        return self.offset[text]

    def render(self, name):
        lines = [f"constexpr char {name}[] ="]
        for i, t in enumerate(self.texts):
            end = ";" if i == len(self.texts) - 1 else ""
            lines.append(f"    {c_str(t)[:-1]}\\0\"{end}  // {self.offset[t]}")
        return "\n".join(lines) + "\n"


# ---------------------------------------------------------------------- checks
def check(cat):
    for r in cat.records.values():
        if not r.all_fields:
            raise CatalogueError(f"{r.loc}: record {r.name} has no attributes")
        for f in r.all_fields:
            if f.kind != "nested" and not 0 <= f.code <= 0xFFFF:
                raise CatalogueError(f"{r.loc}: record {r.name}, field {f.name}: type code {f.code} too large")
    for p in cat.tables():
        for name, _ in cat.table_columns(p.name):
            if len(name) > MAX_NAME:
                raise CatalogueError(f"{p.loc}: table {p.name}: column {name[:40]}... is longer than {MAX_NAME}")
    named = [s for s in cat.slots if s.name]
    if len(named) != len({s.name for s in named}):
        raise CatalogueError("type slots: a name stands twice")


# ---------------------------------------------------------------------- per-domain column description
def ntlist_domain(cat, domain, records, tables, ordinal):
    pool = Pool()
    out = [head(sources(cat, domain), f"Column description of the {domain} domain: "
                f"{len(records)} record types, {len(tables)} tables."),
           '#include "to_ntlist.hpp"\n']

    # Entry points this file defines or calls, declared once with their visibility.
    called = [r.name for r in records] + [f.type for r in records for f in r.all_fields if f.kind == "nested"]
    decls = list(dict.fromkeys(called + [row for p in tables for row in p.rows]))
    out.append('extern "C" {')
    for n in decls:
        out.append(f"ZAN_FE_EXPORT int32_t {ntlist_fn(n)}(arbor_ntlist* list, const char* prefix, uint32_t* err);")
    for p in tables:
        out.append(f"ZAN_FE_EXPORT int32_t {columns_fn(p.name)}(arbor_ntlist* list, uint32_t* err);")
    out.append("}\n")

    body = []
    for r in records:
        rows = []
        for f in r.all_fields:
            off = pool.add(f.col_text, f"{r.loc}: record {r.name}")
            if f.kind == "nested":
                rows.append(f"    {{{off}, 0 /* nested */, &{ntlist_fn(f.type)}}},  // {f.col_text}")
            else:
                rows.append(f"    {{{off}, {f.code} /* {f.word} */, nullptr}},  // {f.col_text}")
        msg = ordinal[r.name] * len(NTLIST_MESSAGES)
        body.append(f"// {r.name}\nconstexpr ntlist::Attr a_{r.name}[] = {{\n" + "\n".join(rows) + "\n};")
        body.append(f"constexpr ntlist::Type r_{r.name}{{k_texts, a_{r.name}, {len(r.all_fields)} /* attributes */, "
                    f"{msg} /* messages {msg}-{msg + 3} */}};\n")
    for p in tables:
        fns = ", ".join(f"&{ntlist_fn(row)}" for row in p.rows)
        body.append(f"constexpr zan_type_to_ntlist_fn t_{p.name}[] = {{{fns}}};")

    ns = f"zan::gen::{domain}"
    out.append(f"namespace {ns} {{\nnamespace ntlist = zan::fe::ntlist;\n")
    out.append("// Column texts: attribute names, nested ones with their dot unless glued on.")
    out.append(pool.render("k_texts"))
    out += body
    out.append(f"\n}}  // namespace {ns}\n")

    for r in records:
        out.append(f'extern "C" ZAN_FE_EXPORT int32_t {ntlist_fn(r.name)}(arbor_ntlist* list, const char* prefix, '
                   f'uint32_t* err) {{ return zan::fe::ntlist::type_columns({ns}::r_{r.name}, list, prefix, err); }}')
    for p in tables:
        out.append(f'extern "C" ZAN_FE_EXPORT int32_t {columns_fn(p.name)}(arbor_ntlist* list, uint32_t* err) '
                   f'{{ return zan::fe::ntlist::table_columns({ns}::t_{p.name}, list, err); }}')
    return "\n".join(out) + "\n"


def ntlist_messages(cat):
    out = [head("schema/*.zs", "Message table of the to_ntlist unit: four formats per record type, "
                "types in slot order."),
           '#include "to_ntlist.hpp"\n#include "fe_catalogue.hpp"\n',
           "namespace zan::gen {\n",
           "extern const char* const ntlist_formats[k_ntlist_formats] = {"]
    for i, r in enumerate(cat.record_order()):
        out.append(f"    // {i * len(NTLIST_MESSAGES)}: {r.name}")
        out += [f"    {c_str(m.format(t=r.name))}," for m in NTLIST_MESSAGES]
    out.append("};\n\n}  // namespace zan::gen\n")
    return "\n".join(out)


# ---------------------------------------------------------------------- arrays
def arrays(cat, props=None, vlist_rows=None, row_ops=None):
    tables = [p.name for p in cat.tables()]
    out = [head("schema/*.zs", "The five arrays the initialiser registers: table rows in the database's "
                "numbering, type rows in slot order."),
           '#include "fe_internal.hpp"\n',
           "// Imported from the database library.",
           'extern "C" {']
    for t in tables:
        out.append(f"extern const zan_field_vft {t}_table_field_vft;")
        out.append(f"extern const char table_{t}_name[];")
    for s in cat.slots:
        if s.name:
            out.append(f"extern const zan_field_vft zan_{s.name}_field_vft;")
            out.append(f"extern const char {s.symbol}[];")
    out.append("}\n")
    out.append('extern "C" {')
    for t in tables:
        out.append(f"ZAN_FE_EXPORT int32_t {columns_fn(t)}(arbor_ntlist* list, uint32_t* err);")
    out.append("}\n")

    nt, nty = len(cat.table_rows), len(cat.slots)
    out.append(f'extern "C" ZAN_FE_EXPORT const zan_table_vft_row zan_config_db_table_dispatch_fe_table_vft[{nt}] = {{')
    for i, t in enumerate(cat.table_rows):
        out.append(f"    {{&{t}_table_field_vft}},  // {i}" if t else f"    {{nullptr}},  // {i}: empty")
    out.append("};\n")

    # Rendering to properties: the table's slot 2 and the type rows' function.
    props_rows, props_tables = props or ({}, set())
    out.append('extern "C" {')
    for t in tables:
        if t in props_tables:
            out.append(f"int32_t {t}_to_properties(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_properties*, int32_t, "
                       "uint32_t*);")
    for fn in sorted(set(props_rows.values())):
        out.append(f"int32_t {fn}(rsl_ctx_t, rsl_ctx_id_t, const char*, gx_do_properties*, const void*, int32_t, "
                   "uint32_t*);")
    row_ops = row_ops or {}
    for t, (tv, tn) in row_ops.items():
        if tv:
            out.append(f"int32_t {tv}(rsl_ctx_t, rsl_ctx_id_t, gx_do_uri*, gx_do_nlist*, const void*, gx_do_vlist*, "
                       "int32_t, uint32_t*);")
        out.append(f"int32_t {tn}(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_nvlist*, uint32_t*);")
    vlist_rows = vlist_rows or {}
    for fn in sorted(set(vlist_rows.values())):
        out.append(f"int32_t {fn}(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_vlist*, int32_t, uint32_t*);")
    out.append("}\n")

    out.append("// table_name, kind, to_properties, to_vlist, to_nvlist, columns_to_ntlist")
    out.append(f'extern "C" ZAN_FE_EXPORT const zan_gx_table_row zan_config_db_fe_gx_dispatch_vft[{nt}] = {{')
    for i, t in enumerate(cat.table_rows):
        if t:
            tp = f"&{t}_to_properties" if t in props_tables else "nullptr"
            tv, tn = (f"&{f}" if f else "nullptr" for f in row_ops.get(t, (None, None)))
            out.append(f"    {{table_{t}_name, {KIND_TABLE} /* table */, {tp}, {tv}, {tn}, &{columns_fn(t)}}},  // {i}")
        else:
            out.append(f"    {{nullptr, {KIND_TABLE} /* table */, nullptr, nullptr, nullptr, nullptr}},  // {i}: empty")
    out.append("};\n")

    out.append(f'extern "C" ZAN_FE_EXPORT const zan_type_field_row zan_config_db_field_dispatch_type_field_lut[{nty}] = {{')
    for s in cat.slots:
        out.append(f"    {{&zan_{s.name}_field_vft}},  // {s.index}" if s.name else f"    {{nullptr}},  // {s.index}: empty")
    out.append("};\n")

    # The operation of a type row: to_vlist_all here, to_properties in zan_config_db_type_gx_lut.
    for array, row, which in (("zan_config_db_fe_gx_type_dispatch_vft", "zan_gx_type_vlist_row", 1),
                              ("zan_config_db_type_gx_lut", "zan_gx_type_props_row", 0)):
        out.append("// name, kind, operation")
        out.append(f'extern "C" ZAN_FE_EXPORT const {row} {array}[{nty}] = {{')
        for s in cat.slots:
            kind = type_kinds(cat, s)[which]
            if s.name:
                fn = props_rows.get(s.name) if which == 0 else vlist_rows.get(s.name)
                op = f"&{fn}" if fn else "nullptr"
                out.append(f"    {{{s.symbol}, {kind} /* {KIND_WORD[kind]} */, {op}}},  // {s.index}")
            else:
                out.append(f"    {{nullptr, {kind} /* {KIND_WORD[kind]} */, nullptr}},  // {s.index}: empty")
        out.append("};\n")
    return "\n".join(out)


# ---------------------------------------------------------------------- path and query resolution
# The product's figures for the unit: a catalogue of 331 positions must come to exactly
# these many allocation sites and trace call sites.
PRODUCT_POSITIONS, SITE_COUNT, MESSAGE_COUNT = 331, 2215, 6975

# Messages of each function, in code order; leading blanks as the decoder's formats have them.
TOP_MESSAGES = (" Processing seg %u\\n",
                " zan_config_db zan_config_db_context path_query_dispatch : No valid path found\\n")
P_HEAD = ("  PD add FE Path %s uri: %s", "   Found path : %s\\n", " Create arbor traverse inst for path failed")
P_CHILD = (" Invalid from table VFT (incorrect path order)", " create arbor_id failed", " create arbor_id failed\\n")
P_TAIL = (" Set arbor traverse inst failed, RSL err %u", "  PDC store FE Path %s table: %s")
Q_HEAD = (" Expecting keys for {label} before moving to next path",
          " Gxcore doesn't send key but RSL defines key search",   # one site: no key list, or nothing read
          " nvlist_num <= 0", " nvlist_num = %d",
          " Failed to allocate memory for key_name_arr", " Failed to allocate memory for nvlist_item_value_arr")
Q_ONE = ("  PD add FE Key %s", " Processing query key : %s", " could not find the field_luid",
         " Create arbor query inst failed", " Set arbor query inst failed, RSL err %u",
         " Arbor encountered RSL error : %u")
Q_COMPOUND = (" Failed to allocate memory for ckey_pos_arr", " Processing query key : {key}",
              " could not find the field_luid")
Q_UNSUPPORTED = " Arbor: unsupported type {word}"
Q_RSL_ERROR = " Arbor encountered RSL error : %u"
D_MESSAGES = ("  PDC stored table match %s",
              " zan_config_db zan_config_db_context {marker} path_query_dispatch: %s Query path not found\\n",
              " zan_config_db zan_config_db_context {marker} path_query_dispatch: Generate prop param failed\\n")
# Typed objects of compound key parts: the type identifier and the release operation.
PART_TYPES = {"rsl_vstring": "rsl_vstring_destroy", "ip_address": "ip_address_destroy", "int32": "int32_destroy"}


def path_fn(p):
    return f"zan_config_db_zan_config_db_context_P_{p.name}_fe_path_traverse"


def query_fn(p):
    return f"zan_config_db_zan_config_db_context_Q_{p.name}_fe_query_traverse"


def dispatch_fn(d):
    return f"fe_zan_config_db_zan_config_db_context_{d.marker}_path_query_dispatch"


def resolve_exports(cat):
    return ([f(p) for p in cat.traversers() for f in (path_fn, query_fn)]
            + [dispatch_fn(d) for d in cat.dispatchers])


def key_of(cat, p):
    return cat.positions[p.table].key


def key_field(cat, p):
    t = cat.positions[p.table]
    if t.key.kind == "compound":
        return "key " + t.key.name
    return f"key {t.name[4:]}_{t.key.name}"


def parent_row(cat, p):
    return cat.positions[p.parent.table].rows[0]


def p_messages(p):
    return list(P_HEAD) + (list(P_CHILD) if p.shape == "child" else []) + list(P_TAIL)


def q_messages(cat, p):
    key = key_of(cat, p)
    head_ = [m.format(label=p.label_q) for m in Q_HEAD]
    if key.kind != "compound":
        return head_ + list(Q_ONE)
    return (head_ + [m.format(key=key.name) for m in Q_COMPOUND]
            + [Q_UNSUPPORTED.format(word=w) for _, w in key.parts] + [Q_RSL_ERROR])


def p_sites(p):
    return 5 if p.shape == "child" else 1


def q_sites(cat, p):
    key = key_of(cat, p)
    return 6 + len(key.parts) if key.kind == "compound" else 3


def d_messages(d):
    out = [D_MESSAGES[0]]
    for _ in d.chain:
        out += [m.format(marker=d.marker) for m in D_MESSAGES[1:]]
    return out


def layout(cat):
    """Message table in code order and the first message and site of every function:
    the top dispatcher, the dispatchers in chain order, then P and Q of every position
    in traverser order."""
    msgs = list(TOP_MESSAGES)
    first = {}
    for d in cat.dispatchers:
        first[("D", d.marker)] = len(msgs)
        msgs += d_messages(d)
    site = 0
    for p in cat.traversers():
        first[("P", p.name)] = (len(msgs), site)
        msgs += p_messages(p)
        site += p_sites(p)
        first[("Q", p.name)] = (len(msgs), site)
        msgs += q_messages(cat, p)
        site += q_sites(cat, p)
    if len(cat.positions) != PRODUCT_POSITIONS:
        return msgs, first
    if site != SITE_COUNT:
        raise CatalogueError(f"path and query traversal: {site} allocation sites, expected {SITE_COUNT}")
    if len(msgs) != MESSAGE_COUNT:
        raise CatalogueError(f"path and query traversal: {len(msgs)} messages, expected {MESSAGE_COUNT}")
    return msgs, first


def check_resolve(cat):
    for p in cat.traversers():
        key = key_of(cat, p)
        if key.kind == "compound":
            for n, w in key.parts:
                if w not in PART_TYPES:
                    raise CatalogueError(f"{p.loc}: table {p.name}: key part {n} of word {w} has no typed object")
        if p.shape == "child" and p.link_field is None:
            raise CatalogueError(f"{p.loc}: table {p.name}: child without a link field")
    if cat.dispatchers[0].parent is not None:
        raise CatalogueError("the first dispatcher must be ROOT")


def luid_bytes(b):
    return "{" + ", ".join(f"0x{x:02x}" for x in b) + "}"


def resolve_imports(cat):
    """Header: what the resolution code imports from the database, and the traversers."""
    out = [head("schema/*.zs", "Database names path and query resolution imports, and the traversers."),
           "#pragma once\n#include \"resolve.hpp\"\n",
           'extern "C" {']
    for t in cat.tables():
        out.append(f"extern const uint8_t table_{t.name}_luid[16];")
        out.append(f"extern const zan_field_vft {t.name}_table_field_vft;")
        out.append(f"void {t.name}_get_field(rsl_ctx_t, rsl_ctx_id_t, const char*, uint32_t*, const uint8_t**, uint32_t*);")
    rows = list(dict.fromkeys(parent_row(cat, p) for p in cat.traversers() if p.shape == "child"))
    for r in rows:
        out.append(f"void zan_{r}_get_field_info(rsl_ctx_t, rsl_ctx_id_t, const char*, uint32_t*, const uint8_t**, uint32_t*);")
    for w in PART_TYPES:
        out.append(f"extern const uint8_t type_{w}_luid[16];")
    for t in cat.tables():
        if t.key.kind != "compound":
            continue
        k = t.key.name
        out.append(f"void* {k}_create(rsl_ctx_t, rsl_ctx_id_t);")
        out.append(f"uint32_t {k}_len(rsl_ctx_t, rsl_ctx_id_t, const void*);")
        out.append(f"uint32_t {k}_marshal(rsl_ctx_t, rsl_ctx_id_t, uint8_t*, const void*, uint32_t, uint32_t*);")
        out.append(f"void {k}_destroy(rsl_ctx_t, rsl_ctx_id_t, void*);")
        for n, _ in t.key.parts:
            out.append(f"void {k}_{n}_set(rsl_ctx_t, rsl_ctx_id_t, void*, const void*, uint32_t*);")
    out.append("")
    for p in cat.traversers():
        out.append(f"ZAN_FE_EXPORT int32_t {path_fn(p)}(rsl_ctx_t, rsl_ctx_id_t, gx_do_uri_segment*, gx_do_nlist*, "
                   f"gx_do_nlist*, arbor_params_t*, const void**);")
        out.append(f"ZAN_FE_EXPORT int32_t {query_fn(p)}(rsl_ctx_t, rsl_ctx_id_t, uint64_t, gx_do_nvlist*, "
                   f"gx_do_nlist*, arbor_params_t*, uint32_t, uint32_t);")
    out.append("}\n")
    return "\n".join(out)


SHAPE = {"root": "Shape::root", "child": "Shape::child", "nolink": "Shape::nolink"}
P_ARGS = ("rsl_ctx_t c, rsl_ctx_id_t i, gx_do_uri_segment* s, gx_do_nlist* pd, gx_do_nlist* pdc, "
          "arbor_params_t* pa, const void** v")
Q_ARGS = ("rsl_ctx_t c, rsl_ctx_id_t i, uint64_t g, gx_do_nvlist* k, gx_do_nlist* pd, arbor_params_t* pa, "
          "uint32_t r, uint32_t m")


def path_desc(cat, p, first, n):
    """The constant descriptor of one path traverser, the n-th; its path-query LUID is row n of
    the block k_pq_luids."""
    t = cat.positions[p.table]
    pm, ps = first[("P", p.name)]
    if p.shape == "child":
        pt = p.parent.table
        child = (f"{c_str(p.parent_row)}, table_{pt}_luid, {c_str(p.link_field)}, "
                 f"&zan_{parent_row(cat, p)}_get_field_info")
    else:
        child = "nullptr, nullptr, nullptr, nullptr"
    return [f"\n// {p.name}" + (f" (second entrance of {p.table})" if p.entrance_of else ""),
            f"constexpr PathDesc P_{p.name}{{{c_str(p.segment)}, {len(p.segment)}, {c_str(p.label_p)}, "
            f"{c_str(p.marker)}, k_pq_luids[{n}], table_{t.name}_luid, &{t.name}_table_field_vft, {child}, "
            f"{pm}, {ps}, {SHAPE[p.shape]}}};"]


def resolve_domain(cat, domain, positions, first):
    out = [head(sources(cat, domain), f"Query traversers of the {domain} domain: {len(positions)} positions."),
           '#include "fe_resolve_imports.hpp"\n',
           f"namespace zan::gen::{domain} {{",
           "using namespace zan::fe::resolve;\n",
           "// Query traversers: key name, key field string, table LUID, key field lookup,",
           "//   first message, first site"]
    shims = []
    for p in positions:
        t = cat.positions[p.table]
        key = t.key
        qm, qs = first[("Q", p.name)]
        out.append(f"\n// {p.name}" + (f" (second entrance of {p.table})" if p.entrance_of else ""))
        q = (f"{c_str(key.name)}, {c_str(key_field(cat, p))}, table_{t.name}_luid, &{t.name}_get_field, "
             f"{qm}, {qs}")
        if key.kind == "compound":
            parts = ", ".join(f"{{{c_str(n)}, type_{w}_luid, &{key.name}_{n}_set, &{PART_TYPES[w]}}}"
                              for n, w in key.parts)
            out.append(f"constexpr KeyPart parts_{p.name}[] = {{{parts}}};")
            out.append(f"constexpr CompoundDesc Q_{p.name}{{{{{q}}}, parts_{p.name}, {len(key.parts)}, "
                       f"&{key.name}_create, &{key.name}_len, &{key.name}_marshal, &{key.name}_destroy}};")
            qcall = "compound_traverse"
        else:
            out.append(f"constexpr QueryDesc Q_{p.name}{{{q}}};")
            qcall = "query_traverse"
        shims.append(f'extern "C" int32_t {query_fn(p)}({Q_ARGS}) {{ '
                     f'return zan::fe::resolve::{qcall}(zan::gen::{domain}::Q_{p.name}, c, i, g, k, pd, pa, r, m); }}')
    out.append(f"\n}}  // namespace zan::gen::{domain}\n")
    return "\n".join(out + shims) + "\n"


D_ARGS = ("rsl_ctx_t c, rsl_ctx_id_t i, uint64_t g, gx_do_uri_segment* s, gx_do_nlist* pd, gx_do_nlist* pdc, "
          "arbor_params_t* pa, uint64_t, uint32_t r, const void** v, uint32_t m")


def text_switch(texts, found, missing="nullptr", var="s"):
    """Code finding which of `texts` (all different) the NUL-terminated `var` is: a switch on
    its length, then on the characters that split the texts of that length, down to one text,
    which one compare confirms. `found(i)` is the answer for texts[i]."""
    def split(group, n, depth):
        if len(group) == 1:
            i = group[0]
            return [f"{depth}return std::memcmp({var}, {c_str(texts[i])}, {n}) == 0 ? {found(i)} : {missing};"]
        # The character that leaves the smallest largest group; ties: the first such.
        best = min(range(n), key=lambda k: (max(sum(1 for j in group if texts[j][k] == texts[i][k])
                                                for i in group), k))
        by = {}
        for i in group:
            by.setdefault(texts[i][best], []).append(i)
        out = [f"{depth}switch ({var}[{best}]) {{"]
        for ch, sub in by.items():
            out.append(f"{depth}case {char_lit(ch)}:")
            out += split(sub, n, depth + "    ")
        out.append(f"{depth}default: return {missing};")
        out.append(f"{depth}}}")
        return out

    by_len = {}
    for i, t in enumerate(texts):
        by_len.setdefault(len(t), []).append(i)
    out = [f"    switch (std::strlen({var})) {{"]
    for n in sorted(by_len):
        out.append(f"    case {n}: {{")
        out += split(by_len[n], n, "        ")
        out.append("    }")
    out.append(f"    default: return {missing};")
    out.append("    }")
    return out


def char_lit(ch):
    return "'\\''" if ch == "'" else ("'\\\\'" if ch == "\\" else f"'{ch}'")


def direct_offer(cat):
    """Tables of the segment loop's direct offer: the dispatchers in chain order, the place of
    every segment text, and the lookups of segment texts and markers."""
    ds = cat.dispatchers
    if len(ds) > 32:
        raise CatalogueError("more than 32 dispatchers: the loop keeps their markers in one 32-bit mask")
    places = []
    for k, d in enumerate(ds):
        places += [(p, k, at) for at, p in enumerate(d.chain)]
    texts = [p.segment for p, _, _ in places]
    if len(set(texts)) != len(texts):
        raise CatalogueError("two positions share a segment text")
    out = ["\n// The segment loop's direct offer: the dispatchers in chain order, and each position with",
           "// its dispatcher's place in the chain and its own place in that dispatcher's chain.",
           "namespace zan::fe::resolve {",
           "extern const DispatchDesc* const k_dispatchers[] = {"]
    out += [f"    &zan::gen::D_{d.marker}," for d in ds]
    out.append("};")
    out.append(f"extern const uint32_t k_dispatcher_count = {len(ds)};")
    out.append("namespace {\nconstexpr SegmentPlace k_places[] = {")
    out += [f"    {{&zan::gen::P_{p.name}, {k}, {at}}},  // {p.segment}" for p, k, at in places]
    out.append("};\n}  // namespace\n")
    out.append("const SegmentPlace* find_segment(const char* s) {")
    out += text_switch(texts, lambda i: f"&k_places[{i}]")
    out.append("}\n")
    out.append("int32_t find_marker(const char* s) {")
    out += text_switch([d.marker for d in ds], str, "-1")
    out.append("}\n}  // namespace zan::fe::resolve\n")
    return out


def resolve_chain(cat, first):
    """The path traversers and the dispatchers in one unit, so that each dispatcher's chain
    inlines the compares of its traversers."""
    out = [head("schema/*.zs",
                f"The {len(cat.dispatchers)} dispatchers, each a marker and a chain, and the path traversers "
                f"of all {len(cat.traversers())} positions."),
           '#include "fe_resolve_imports.hpp"\n',
           'extern "C" {']
    for d in cat.dispatchers:
        out.append(f"ZAN_FE_EXPORT int32_t {dispatch_fn(d)}({D_ARGS});")
    out.append("}\n")
    out.append("namespace zan::gen {\nusing namespace zan::fe::resolve;\n")
    out += ["// Path traversers: segment, its length, label, marker, path-query LUID, table LUID, table vector,",
            "//   parent row field, parent table LUID, child link field, link field lookup,",
            "//   first message, first site, shape"]
    out.append("// The path-query LUIDs, one read-only block in the order of the traversers.")
    out.append(f"constexpr uint8_t k_pq_luids[{len(cat.traversers())}][16] = {{")
    out += [f"    {luid_bytes(p.pq)},  // {p.name}" for p in cat.traversers()]
    out.append("};")
    for n, p in enumerate(cat.traversers()):
        out += path_desc(cat, p, first, n)
    out.append("\n// Chains: the path traversers in order, then per entry its query traverser and label")
    for d in cat.dispatchers:
        out.append(f"constexpr const PathDesc* paths_{d.marker}[] = {{")
        out += [f"    &P_{p.name}," for p in d.chain]
        out.append("};")
        out.append(f"constexpr ChainEntry chain_{d.marker}[] = {{")
        out += [f"    {{&{query_fn(p)}, {c_str(p.label_p)}}}," for p in d.chain]
        out.append("};")
        out.append(f"constexpr DispatchDesc D_{d.marker}{{{c_str(d.marker)}, {len(d.marker)}, chain_{d.marker}, "
                   f"{len(d.chain)}, {first[('D', d.marker)]} /* first message */}};\n")
    out.append("}  // namespace zan::gen\n")
    for p in cat.traversers():
        out.append(f'extern "C" int32_t {path_fn(p)}({P_ARGS}) {{ '
                   f'return zan::fe::resolve::path_traverse(zan::gen::P_{p.name}, c, i, s, pd, pdc, pa, v); }}')
    for d in cat.dispatchers:
        out.append(f'extern "C" int32_t {dispatch_fn(d)}({D_ARGS}) {{ '
                   f'return zan::fe::resolve::dispatch<zan::gen::D_{d.marker}, zan::gen::paths_{d.marker}>('
                   f'std::make_index_sequence<{len(d.chain)}>{{}}, c, i, g, s, pd, pdc, pa, r, v, m); }}')
    out.append("\n// The order in which the segment loop asks the dispatchers. Flattened: their chains are")
    out.append("// inlined here, so that a miss costs no dispatcher call; each dispatcher stays an exported")
    out.append("// function of its own as well.")
    out.append("[[gnu::flatten]] int32_t zan::fe::offer_segment(rsl_ctx_t c, rsl_ctx_id_t i, uint64_t g, gx_do_uri_segment* s, "
               "gx_do_nlist* pd, gx_do_nlist* pdc, arbor_params_t* pa, uint32_t r, const void** v, uint32_t m) {")
    out.append("    return zan::fe::resolve::offer<")
    out.append(",\n".join(f"        &{dispatch_fn(d)}" for d in cat.dispatchers) + ">(c, i, g, s, pd, pdc, pa, r, v, m);")
    out.append("}")
    out += direct_offer(cat)
    return "\n".join(out) + "\n"


def resolve_messages(msgs):
    out = [head("schema/*.zs", f"Message table of the path and query traversal unit: {len(msgs)} formats, one "
                "per call site in code order (top dispatcher, dispatchers, then P and Q of each position)."),
           '#include "resolve.hpp"\n',
           "namespace zan::gen {\nnamespace {",
           "constexpr const char* k_formats[] = {"]
    for i, m in enumerate(msgs):
        out.append(f"    {c_str(m)},  // {i}")
    out.append("};\n}  // namespace\n")
    out.append("extern const lt_unit k_resolve_unit{\"path and query traversal\", "
               "sizeof k_formats / sizeof k_formats[0], k_formats};")
    out.append("static_assert(sizeof k_formats / sizeof k_formats[0] == " f"{len(msgs)});")
    out.append("\n}  // namespace zan::gen\n")
    return "\n".join(out)


def resolve_files(cat):
    check_resolve(cat)
    msgs, first = layout(cat)
    out = {"fe_resolve_imports.hpp": resolve_imports(cat),
           "fe_resolve_chain.cpp": resolve_chain(cat, first),
           "fe_resolve_messages.cpp": resolve_messages(msgs)}
    for d in cat.domains:
        ps = [p for p in cat.traversers() if p.domain == d]
        if ps:
            out[f"fe_resolve_{d}.cpp"] = resolve_domain(cat, d, ps, first)
    return out


def counts(cat):
    records = len(cat.records)
    return "\n".join([
        head("schema/*.zs", "Counts the hand-written front end sizes its tables by."),
        "#pragma once\n#include <cstdint>\n",
        "namespace zan::gen {",
        f"inline constexpr uint32_t k_record_types = {records};",
        f"inline constexpr uint32_t k_tables = {len(cat.tables())};",
        f"inline constexpr uint32_t k_ntlist_formats = {records * len(NTLIST_MESSAGES)};",
        "}  // namespace zan::gen\n"])


def version_script(cat):
    body = "\n".join(f"    {n};" for n in exports(cat))
    return (f"/* generated from schema/*.zs by {GENERATOR}, do not edit */\n"
            f"/* The names the library exports; everything else stays inside. */\n"
            f"{{\n  global:\n{body}\n  local:\n    *;\n}};\n")


# ---------------------------------------------------------------------- entry point
def props_rows(cat, rendered, tables):
    """Function of each type row in zan_config_db_type_gx_lut, and the tables with a slot 2."""
    done = {r.name for r in rendered}
    rows = {}
    for s in cat.slots:
        if not s.name:
            continue
        if s.category == "record":
            if s.name in done:
                rows[s.name] = props_fn(s.name)
        elif s.category in ("library", "enum", "flags"):
            rows[s.name] = f"{s.name}_to_properties_perf"
    return rows, set(tables)


def files(cat):
    check(cat)
    props_out, rendered, props_tables = props_files(cat)
    vlist_out, vlist_rows = fe_vlist.files(cat)
    ordinal = {r.name: i for i, r in enumerate(cat.record_order())}
    out = {
        "fe_catalogue.hpp": counts(cat),
        "fe_ntlist_messages.cpp": ntlist_messages(cat),
        "zanfe.map": version_script(cat),
    }
    rows_out, row_ops = fe_rows.files(cat, {p.name for p in cat.tables() if all(r in vlist_rows for r in p.rows)})
    out.update(rows_out)
    out["fe_arrays.cpp"] = arrays(cat, props_rows(cat, rendered, props_tables), vlist_rows, row_ops)
    out.update(resolve_files(cat))
    out.update(props_out)
    out.update(vlist_out)
    out.update(fe_nlist.files(cat))
    for d in cat.domains:
        records = [r for r in cat.records.values() if r.domain == d]
        tables = [p for p in cat.tables() if p.domain == d]
        if records or tables:
            out[f"fe_ntlist_{d}.cpp"] = ntlist_domain(cat, d, records, tables, ordinal)
    return out


# ---------------------------------------------------------------------- rendering to properties
def props_plan(cat):
    """(rendered records in slot order, null renderings {name: lenient}, obj_type groups)."""
    rendered = list(cat.record_order())
    arm = cat.arm_types()
    nulls = {r.name: False for r in rendered if r.name in arm}
    for r in rendered:
        for e in r.extensions:
            nulls[e.name] = True
    groups = cat.obj_type_groups()
    for g in groups:
        nulls[g.name] = True
    return rendered, nulls, groups


def props_field(cat, r, f, msgs, u, with_null):
    """Initialiser of one Field, with the messages it names, in code order."""
    t, acc = r.name, f"{r.name}_{f.name}"
    d = {"text": c_str(f.prop_text), "len": str(len(f.prop_text)), **u.access(r, f)}
    if f.kind == "nested":
        d["nested"] = f"&{props_fn(f.type)}"
        if f.arm or with_null:
            d["nested_null"] = f"&{props_null_fn(f.type)}"
        d["msg"] = str(msgs.add(f"{t} to_properties: {props_fn(f.type)} failed for "
                                + (f"descriminator_{f.name}" if f.arm else acc)))
        if f.arm or with_null:
            d["msg_null"] = str(msgs.add(f"{t} to_null_properties: {props_null_fn(f.type)} failed for {t}"))
    elif f.kind == "array" and f.shape == "seq":
        d["element"] = f"&{pairs_fn(f.type)}"
        d["msg_array_null"] = str(msgs.add(f"{t} to_properties: gx_do_properties_set_null failed for {acc}"))
        d["msg"] = str(msgs.add(f"{t} to_properties: {f.type}_to_nlist_vlist_all failed for {acc}"))
        d["msg_seq"] = str(msgs.add(f"{t} to_properties: gx_do_xxx_new failed"))
        msgs.add(f"{t} to_properties: gx_do_nvlist_new failed")
        msgs.add(f"{t} to_ nlist_vlist_all rendering error {f.name} %u %u")
        msgs.add(f"{t} to_properties: gx_do_properties_set_array failed: %d")
        if with_null:
            d["msg_null"] = str(msgs.add(f"{t} to_properties: {f.type}_set_null_properties failed for {t}"))
    elif f.kind == "array":
        if f.shape == "chars":
            d["msg"] = str(msgs.add(f"{t} to_properties: var_string_to_properties failed for {f.name}"))
        else:
            d["vconv"] = f"&{vlist_fn(f.type)}"
            d["msg"] = str(msgs.add(f"{t} to_properties: {f.type}_to_vlist failed for {acc}"))
            d["msg_array_null"] = str(msgs.add(f"{t} to_properties: gx_do_properties_set_null failed for {acc}"))
        if with_null:
            d["msg_null"] = str(msgs.add(f"{t} to_properties: {f.type if f.shape != 'chars' else 'var_string'}"
                                         f"_set_null_properties failed for {t}"))
    else:
        word = field_word(f)
        if d["kind"] == "Kind::typed":   # enumerations and flag sets convert as leaves do here
            d["kind"] = "Kind::leaf"
        d["conv"] = f"&{props_fn(word)}"
        if f.kind in ("enum", "flags") or word in LEAF_TRACED:
            d["msg"] = str(msgs.add(f"{t} to_properties: {props_fn(word)} failed for {acc}"))
        if with_null:
            d["msg_null"] = str(msgs.add(f"{t} to_properties: {word}_set_null_properties failed for {t}"))
    return field_init(d)


FIELD_ORDER = (("text", None), ("core", None), ("conv", "nullptr"), ("nested", "nullptr"),
               ("nested_null", "nullptr"), ("element", "nullptr"), ("msg_array_null", "k_no_msg"),
               ("msg_seq", "k_no_msg"), ("len", None))


def field_init(d):
    return field_initialiser(d, FIELD_ORDER)


def props_null_only(name, attrs, msgs):
    """Fields of a lenient null rendering: (text, trace word) per attribute."""
    rows = []
    for text, word in attrs:
        m = msgs.add(f"{text} to_properties: {word}_set_null_properties failed for {text}")
        rows.append(field_init({"text": c_str(text), "len": len(text), "kind": "Kind::leaf", "msg_null": m}))
    return rows


def props_files(cat):
    rendered, nulls, groups = props_plan(cat)
    msgs = Messages()
    units = Units()
    sig_t = f"int32_t {{}}({CTX}, const char*, gx_do_properties*, const void*, int32_t, uint32_t*)"
    sig_n = f"int32_t {{}}({CTX}, const char*, gx_do_properties*, uint32_t*)"
    sig_l = f"int32_t {{}}({CTX}, const char*, gx_do_properties*, int32_t, int32_t, const void*, uint32_t*)"
    for r in rendered:
        u = units[r.domain]
        u.defined.append(sig_t.format(props_fn(r.name)))
        with_null = nulls.get(r.name) is False
        rows = [props_field(cat, r, f, msgs, u, with_null) for f in r.fields]
        u.body.append(field_array(f"f_{r.name}", rows, r.name))
        for f in r.fields:
            if f.kind == "nested":
                u.decls[props_fn(f.type)] = sig_t.format(props_fn(f.type))
                if f.arm or with_null:
                    u.decls[props_null_fn(f.type)] = sig_n.format(props_null_fn(f.type))
            elif f.shape == "seq":
                u.decls[pairs_fn(f.type)] = (f"int32_t {pairs_fn(f.type)}({CTX}, const void*, "
                                             "gx_do_nlist*, gx_do_vlist*, int32_t, uint32_t*)")
            elif f.kind not in ("array",) and field_word(f) not in LEAF_CONV:
                u.decls[props_fn(field_word(f))] = sig_l.format(props_fn(field_word(f)))
        exts = []
        for e in sorted(r.extensions, key=lambda e: e.level):
            erows = [props_field(cat, r, f, msgs, u, False) for f in e.fields]
            if erows:
                u.body.append(field_array(f"x_{e.name}", erows))
            m1, m2 = msgs.extension(r, e)
            # An extension without attributes is not called: the record only checks the prefix.
            exts.append("{" + extension_core(e.name, erows, m1, m2) + ", "
                        + (f"&{props_null_fn(e.name)}" if erows else "nullptr") + "}")
        if exts:
            u.body.append(f"constexpr Extension e_{r.name}[] = {{" + ", ".join(exts) + "};")
        has_arrays = any(f.kind == "array" and f.shape in ("fixed", "counted") for f in r.fields)
        m_long = msgs.add("name (%s) length greater than buffer size %zu")
        m_var = msgs.add(f"{r.name} Received variant %d < base version %d") if not r.base else "k_no_msg"
        m_args = msgs.add(f"{r.name} to_properties null argument(s)") if with_null else "k_no_msg"
        m_new = msgs.add(f"{r.name} to_properties: gx_do_vlist_new failed") if has_arrays else "k_no_msg"
        m_arr = msgs.add(f"{r.name} to_properties: gx_do_properties_set_array failed") if has_arrays else "k_no_msg"
        core = type_core(f"f_{r.name}", len(r.fields), r.name, exts, not r.base, m_var)
        u.body.append(f"constexpr Type r_{r.name}{{{core}, false, {m_long}, {m_args}, {m_new}, {m_arr}}};\n")
        u.shims.append(f'extern "C" int32_t {props_fn(r.name)}(rsl_ctx_t c, rsl_ctx_id_t i, const char* p, '
                       f"gx_do_properties* o, const void* h, int32_t s, uint32_t* e) "
                       f"{{ return zan::fe::props::render(zan::gen::props::r_{r.name}, c, i, p, o, h, s, e); }}")
        # The six-argument form: no caller, no row, not exported; kept one per type.
        u.shims.append(f'extern "C" int32_t {r.name}_to_properties_plain(rsl_ctx_t c, rsl_ctx_id_t i, const char* p, '
                       f"gx_do_properties* o, const void* h, uint32_t* e) "
                       f"{{ return {props_fn(r.name)}(c, i, p, o, h, 0, e); }}")
        if with_null:
            u.defined.append(sig_n.format(props_null_fn(r.name)))
            u.shims.append(null_shim(r.name))
    # lenient null renderings: record extensions and obj_type groups
    lenient = [(r.domain, e.name, [(f.prop_text, field_word(f)) for f in e.fields])
               for r in rendered for e in r.extensions]
    lenient += [("base", g.name, [(v, "") for v in g.values]) for g in groups]
    for domain, name, attrs in lenient:
        u = units[domain]
        u.defined.append(sig_n.format(props_null_fn(name)))
        rows = props_null_only(name, attrs, msgs)
        if rows:
            u.body.append(field_array(f"f_{name}", rows))
        core = type_core(rows and f"f_{name}", len(rows), name, [], False, "k_no_msg")
        u.body.append(f"constexpr Type r_{name}{{{core}, true, k_no_msg, k_no_msg, k_no_msg, k_no_msg}};")
        u.shims.append(null_shim(name))
    # enumerations and flag sets
    u = units["base"]
    def shim(template, name):
        return (f'extern "C" int32_t {props_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, const char* n, '
                f"gx_do_properties* o, int32_t d, int32_t p, const void* v, uint32_t* e) "
                f"{{ return zan::fe::props::{template}(zan::gen::props::m_{name}, c, i, n, o, d, p, v, e); }}")
    u.typed(cat, msgs, shim)   # enumerators from 0, those of extension levels included
    for n in typed_names(cat):
        u.decls[props_fn(n)] = sig_l.format(props_fn(n))
        u.shims.append(f'extern "C" int32_t {n}_to_properties_perf(rsl_ctx_t c, rsl_ctx_id_t i, const char* p, '
                       f"gx_do_properties* o, const void* h, int32_t, uint32_t* e) "
                       f"{{ return {props_fn(n)}(c, i, p, o, 0, 1, h, e); }}")
    # tables
    tables = []
    for p in cat.tables():
        u = units[p.domain]
        tops = []
        for row in p.rows:
            get = u.imp(f"{p.name}_{row}_get_field", f"const void* {{}}({CTX}, const void*);")
            u.decls[props_fn(row)] = sig_t.format(props_fn(row))
            tops.append(f"{{{get}, &{props_fn(row)}}}")
        u.body.append(f"constexpr Top t_{p.name}[] = {{" + ", ".join(tops) + "};")
        u.shims.append(f'extern "C" int32_t {p.name}_to_properties(rsl_ctx_t c, rsl_ctx_id_t i, const void* r, '
                       f"gx_do_properties* o, int32_t s, uint32_t* e) {{ return zan::fe::props::render_table("
                       f"zan::gen::props::t_{p.name}, {len(p.rows)}, c, i, o, r, s, e); }}")
        tables.append(p.name)
    files = {}
    for name, u in sorted(units.items()):
        protos = [u.decls[n] for n in sorted(u.decls) if n.replace("_to_properties", "") not in LEAF_CONV]
        files[f"fe_props_{name}.cpp"] = u.file(
            cat, name, "Rendering to properties", '#include "to_properties.hpp"', "props",
            dict.fromkeys(protos + u.defined), "// Entry points of this family, here or in the other domains, and of the leaf library.")
    files["fe_props_messages.cpp"] = msgs.table("to_properties unit", "to_properties.hpp", "to_properties",
                                                   "to_properties")
    return files, rendered, tables


def null_shim(name):
    """<name>_to_null_properties: the null rendering of r_<name>."""
    return (f'extern "C" int32_t {props_null_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, const char* p, '
            f"gx_do_properties* o, uint32_t* e) {{ return zan::fe::props::render_null("
            f"zan::gen::props::r_{name}, c, i, p, o, e); }}")

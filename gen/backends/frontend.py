"""Front-end code from the catalogue: constant descriptors, one-line entry points into the
hand-written templates, the five arrays, the dispatcher chain and the export list.

Files written (all into the front end's generated directory):

  fe_catalogue.hpp          counts the hand-written code sizes its tables by
  fe_ntlist_<domain>.cpp    per domain: the column texts (each once), the descriptors of the
                            domain's records and tables, and their exported entry points
  fe_ntlist_messages.cpp    message table of the to_ntlist unit, four formats per record
  fe_arrays.cpp             the five arrays the initialiser registers, with the imported
                            database names they hold
  fe_chain.cpp              the dispatcher chain of the segment loop
  zanfe.map                 linker version script: the library's exported names, nothing else

Generated code never holds a function body beyond one call into a template; everything
schema-specific is data. Identifiers of generated data live in namespace zan::gen.
"""

from catalogue import CatalogueError, MAX_NAME

GENERATOR = "gen/backends/frontend.py"

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


# ---------------------------------------------------------------------- names
def ntlist_fn(record):
    return f"{record}_to_ntlist"


def columns_fn(table):
    return f"{table}_table_columns_to_ntlist"


def exports(cat):
    """Every name the library exports, in a stable order."""
    return (list(FRAME_EXPORTS) + [ntlist_fn(r.name) for r in cat.record_order()]
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


# ---------------------------------------------------------------------- text helpers
def head(source, what):
    return (f"// generated from {source} by {GENERATOR}, do not edit\n"
            f"// {what}\n")


def c_str(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def sources(cat, domain):
    files = sorted({r.loc.file for r in cat.records.values() if r.domain == domain}
                   | {p.loc.file for p in cat.positions.values() if p.domain == domain})
    return ", ".join("schema/" + f for f in files)


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
def arrays(cat):
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

    # to_properties, to_vlist and to_nvlist of a table row come with the table row
    # family; until then they stay null.
    out.append("// table_name, kind, to_properties, to_vlist, to_nvlist, columns_to_ntlist")
    out.append(f'extern "C" ZAN_FE_EXPORT const zan_gx_table_row zan_config_db_fe_gx_dispatch_vft[{nt}] = {{')
    for i, t in enumerate(cat.table_rows):
        if t:
            out.append(f"    {{table_{t}_name, {KIND_TABLE} /* table */, nullptr, nullptr, nullptr, &{columns_fn(t)}}},  // {i}")
        else:
            out.append(f"    {{nullptr, {KIND_TABLE} /* table */, nullptr, nullptr, nullptr, nullptr}},  // {i}: empty")
    out.append("};\n")

    out.append(f'extern "C" ZAN_FE_EXPORT const zan_type_field_row zan_config_db_field_dispatch_type_field_lut[{nty}] = {{')
    for s in cat.slots:
        out.append(f"    {{&zan_{s.name}_field_vft}},  // {s.index}" if s.name else f"    {{nullptr}},  // {s.index}: empty")
    out.append("};\n")

    # The operation of a type row (to_vlist_all here, to_properties in zan_config_db_type_gx_lut)
    # comes with its rendering family; until then it stays null.
    for array, row, which in (("zan_config_db_fe_gx_type_dispatch_vft", "zan_gx_type_vlist_row", 1),
                              ("zan_config_db_type_gx_lut", "zan_gx_type_props_row", 0)):
        out.append("// name, kind, operation")
        out.append(f'extern "C" ZAN_FE_EXPORT const {row} {array}[{nty}] = {{')
        for s in cat.slots:
            kind = type_kinds(cat, s)[which]
            if s.name:
                out.append(f"    {{{s.symbol}, {kind} /* {KIND_WORD[kind]} */, nullptr}},  // {s.index}")
            else:
                out.append(f"    {{nullptr, {kind} /* {KIND_WORD[kind]} */, nullptr}},  // {s.index}: empty")
        out.append("};\n")
    return "\n".join(out)


def chain(cat):
    return "\n".join([
        head("schema/" + cat.dispatchers[0].loc.file, "The dispatcher chain the segment loop offers each segment to."),
        '#include "fe_internal.hpp"\n',
        "// The chain is empty until path resolution brings its dispatchers: ROOT, then one per",
        f"// parent table, {len(cat.dispatchers)} in all, each a straight call in chain order.",
        "int32_t zan::fe::offer_segment(rsl_ctx_t, rsl_ctx_id_t, uint64_t, gx_do_uri_segment*, gx_do_nlist*, "
        "gx_do_nlist*,\n                             arbor_params_t*, uint32_t, const void**, uint32_t) {",
        "    return k_pq_not_here;",
        "}\n"])


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
def files(cat):
    check(cat)
    ordinal = {r.name: i for i, r in enumerate(cat.record_order())}
    out = {
        "fe_catalogue.hpp": counts(cat),
        "fe_ntlist_messages.cpp": ntlist_messages(cat),
        "fe_arrays.cpp": arrays(cat),
        "fe_chain.cpp": chain(cat),
        "zanfe.map": version_script(cat),
    }
    for d in cat.domains:
        records = [r for r in cat.records.values() if r.domain == d]
        tables = [p for p in cat.tables() if p.domain == d]
        if records or tables:
            out[f"fe_ntlist_{d}.cpp"] = ntlist_domain(cat, d, records, tables, ordinal)
    return out

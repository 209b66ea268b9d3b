"""Front-end code for the value operations of the table rows and for key rendering.

Files written (into the front end's generated directory, beside frontend.py's):

  fe_rows_<domain>.cpp   per domain: each table's key descriptor and tbl_<t>_to_nvlist, its
                         row descriptor with tbl_<t>_to_vlist and tbl_<t>_to_vlist_all, and
                         the key types of its compound keys
  fe_nvlist.cpp          the enumerations' <enum>_to_nvlist and the message table of the
                         to_nvlist unit

As everywhere in the front end, a generated function is one call into a template
(render/to_nvlist.cpp, rows/table_ops.cpp) with a constant descriptor.
"""

from catalogue import CatalogueError

# Call sites of the name copies of tbl_<t>_to_vlist: one per table in table order, each the
# unit's base with the site number OR-ed in.
ROWS_SITE_BASE = 0x1861FC00

# Failure trace of one key part; the operation word names the leaf.
KEY_PART_MESSAGE = "{k} to_nvlist arbor_nvlist_add_{w} for %s failed err=%d"
ENUM_VARIANT_MESSAGE = "{e} Recieved variant %d < base version 0"
VARIANT_ENUMS = ("obj_type", "zan_cfg_union")

# Leaf words a key may have, each with its own name-value conversion.
KEY_WORDS = ("u_int32", "int32", "rsl_vstring", "ip_address")

CTX = "rsl_ctx_t, rsl_ctx_id_t"


def head(source, what):
    return (f"// generated from {source} by gen/backends/fe_rows.py, do not edit\n"
            f"// {what}\n")


def c_str(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def nvlist_fn(table):
    return f"{table}_to_nvlist"


def vlist_fn(table):
    return f"{table}_to_vlist"


def row_key(cat, p):
    """(name, word) of the leaf that a table's to_nvlist renders, or None for a compound key.

    A row whose record carries singleton_id is numbered, and renders that number as its
    key even where its query finds it by another field."""
    key = p.key
    if key.kind == "compound":
        return None
    top = cat.records[p.rows[0]]
    if any(f.name == "singleton_id" for f in top.fields):
        return "singleton_id", "u_int32"
    return key.name, key.word


def sites(cat):
    return {p.name: ROWS_SITE_BASE | i for i, p in enumerate(cat.tables())}


def messages(cat):
    """The to_nvlist unit's formats: the key parts' in table order, then the variant checks."""
    out, index = [], {}
    for p in cat.tables():
        if p.key.kind == "compound":
            for n, w in p.key.parts:
                index[(p.key.name, n)] = len(out)
                out.append(KEY_PART_MESSAGE.format(k=p.key.name, w=w))
    for e in VARIANT_ENUMS:
        if e in cat.enums:
            index[e] = len(out)
            out.append(ENUM_VARIANT_MESSAGE.format(e=e))
    return out, index


def check(cat):
    for p in cat.tables():
        if p.key.kind == "compound":
            if p.key.name not in p.rows:
                raise CatalogueError(f"{p.loc}: table {p.name}: key record {p.key.name} is none of its rows")
            words = [w for _, w in p.key.parts]
        else:
            words = [row_key(cat, p)[1]]
            if len(p.rows) != 1:
                raise CatalogueError(f"{p.loc}: table {p.name}: several rows need a compound key")
        for w in words:
            if w not in KEY_WORDS:
                raise CatalogueError(f"{p.loc}: table {p.name}: key word {w} has no name-value conversion")
        if len(p.rows) > 2:
            raise CatalogueError(f"{p.loc}: table {p.name}: more than two rows")


def row_order(p):
    """The table's records in the order its operations read them: the key record first."""
    if p.key.kind == "compound":
        return [p.key.name] + [r for r in p.rows if r != p.key.name]
    return list(p.rows)


def domain_file(cat, domain, tables, site, msg, vlisted):
    imports, decls, body, shims = {}, {}, [], []
    sig_vall = f"int32_t {{}}({CTX}, const void*, gx_do_vlist*, int32_t, uint32_t*)"
    sig_sel = f"int32_t {{}}({CTX}, const char*, char**, const void*, gx_do_vlist*, int32_t, uint32_t*)"
    for p in tables:
        rows = row_order(p)
        for r in rows:
            imports[f"{p.name}_{r}_get_field"] = f"const void* {p.name}_{r}_get_field({CTX}, const void*);"
        key = row_key(cat, p)
        body.append(f"// {p.name}")
        if key is None:
            k = p.key.name
            parts = []
            for n, w in p.key.parts:
                imports[f"{k}_{n}_get"] = f"const void* {k}_{n}_get({CTX}, const void*, uint32_t*);"
                parts.append(f"{{{c_str(n)}, &{k}_{n}_get, &{w}_to_nvlist, {msg[(k, n)]} /* message */}}")
            if f"{k}_to_nvlist" not in decls:
                decls[f"{k}_to_nvlist"] = (f"int32_t {k}_to_nvlist({CTX}, const char*, gx_do_nvlist*, "
                                           "const void*, uint32_t*);")
                body.append(f"constexpr KeyPart parts_{k}[] = {{\n    " + ",\n    ".join(parts) + "\n};")
                body.append(f"constexpr KeyType key_{k}{{parts_{k}, {len(parts)}}};")
                shims.append(f'extern "C" int32_t {k}_to_nvlist(rsl_ctx_t c, rsl_ctx_id_t i, const char* n, '
                             f"gx_do_nvlist* l, const void* o, uint32_t* e) "
                             f"{{ return zan::fe::nvlist::key_type(zan::gen::rows::key_{k}, c, i, n, l, o, e); }}")
            body.append(f"constexpr TableKey nv_{p.name}{{&{p.name}_{k}_get_field, {c_str(k)}, nullptr, nullptr, "
                        f"&{k}_to_nvlist}};")
        else:
            n, w = key
            acc = f"{rows[0]}_{n}_get"
            imports[acc] = f"const void* {acc}({CTX}, const void*, uint32_t*);"
            body.append(f"constexpr TableKey nv_{p.name}{{&{p.name}_{rows[0]}_get_field, {c_str(n)}, &{acc}, "
                        f"&{w}_to_nvlist, nullptr}};")
        shims.append(f'extern "C" int32_t {nvlist_fn(p.name)}(rsl_ctx_t c, rsl_ctx_id_t i, const void* r, '
                     f"gx_do_nvlist* l, uint32_t* e) "
                     f"{{ return zan::fe::nvlist::table_key(zan::gen::rows::nv_{p.name}, c, i, r, l, e); }}")
        if p.name in vlisted:
            tops = []
            for r in rows:
                decls[f"{r}_to_vlist_all"] = sig_vall.format(f"{r}_to_vlist_all") + ";"
                decls[f"{r}_to_vlist"] = sig_sel.format(f"{r}_to_vlist") + ";"
                tops.append(f"{{&{p.name}_{r}_get_field, &{r}_to_vlist_all, &{r}_to_vlist}}")
            body.append(f"constexpr Top tops_{p.name}[] = {{" + ", ".join(tops) + "};")
            body.append(f"constexpr Table t_{p.name}{{tops_{p.name}, {len(rows)} /* records */, "
                        f"0x{site[p.name]:08x} /* site */}};")
            shims.append(f'extern "C" int32_t {vlist_fn(p.name)}(rsl_ctx_t c, rsl_ctx_id_t i, gx_do_uri* u, '
                         f"gx_do_nlist* n, const void* r, gx_do_vlist* l, int32_t s, uint32_t* e) "
                         f"{{ return zan::fe::rows::to_vlist(zan::gen::rows::t_{p.name}, c, i, u, n, r, l, s, e); }}")
            shims.append(f'extern "C" int32_t {p.name}_to_vlist_all(rsl_ctx_t c, rsl_ctx_id_t i, gx_do_uri* u, '
                         f"const void* r, gx_do_vlist* l, int32_t s, uint32_t* e) "
                         f"{{ return zan::fe::rows::to_vlist_all(zan::gen::rows::t_{p.name}, c, i, u, r, l, s, e); }}")
    out = [head(", ".join(sorted({"schema/" + p.loc.file for p in tables})),
                f"Value operations and keys of the {len(tables)} tables of the {domain} domain."),
           '#include "to_nvlist.hpp"\n#include "table_ops.hpp"\n',
           'extern "C" {', "// Imported from the database library."]
    out += [imports[k] for k in sorted(imports)]
    out.append("// Key types here, records' value-list renderings of their own family.")
    out += [decls[k] for k in sorted(decls)]
    out.append("}\n")
    out.append("namespace zan::gen::rows {\nusing namespace zan::fe::nvlist;\nusing zan::fe::rows::Top;\n"
               "using zan::fe::rows::Table;\n")
    out += body
    out.append("\n}  // namespace zan::gen::rows\n")
    out += shims
    return "\n".join(out) + "\n"


def enums_file(cat, msgs, msg):
    out = [head("schema/*.zs", "Enumerations in name-value form, and the message table of the to_nvlist unit."),
           '#include "to_nvlist.hpp"\n', 'extern "C" {']
    enums = [e for e in cat.enums.values() if not e.library]
    for e in enums:
        out.append(f"uint32_t {e.name}_get_value({CTX}, const void*, uint32_t*);")
    out.append("}\n")
    out.append("namespace zan::gen {\n")
    out.append(f"extern const uint32_t k_to_nvlist_format_count = {len(msgs)};")
    out.append(f"extern const char* const to_nvlist_formats[{len(msgs)}] = {{")
    out += [f"    {c_str(m)},  // {i}" for i, m in enumerate(msgs)]
    out.append("};")
    out.append(f'extern constinit const lt_unit k_to_nvlist_unit{{"to_nvlist", {len(msgs)}, to_nvlist_formats}};\n')
    out.append("namespace nv {\nusing zan::fe::nvlist::Enum;\n")
    shims = []
    for e in enums:
        out.append(f"constexpr const char* n_{e.name}[] = {{" + ", ".join(c_str(v) for v in e.values) + "};")
        levels = "nullptr"
        if e.extensions:
            # A value in several groups is gated by the lowest of their levels.
            level = {}
            for x in e.extensions:
                for v in x.values:
                    level[v] = min(level.get(v, x.level), x.level)
            out.append(f"constexpr uint8_t l_{e.name}[] = {{" + ", ".join(str(level.get(v, 0)) for v in e.values)
                       + "};")
            levels = f"l_{e.name}"
        variant = e.name in VARIANT_ENUMS
        out.append(f"constexpr Enum m_{e.name}{{n_{e.name}, {levels}, {len(e.values)}, &{e.name}_get_value, "
                   f"{'true' if variant else 'false'}, "
                   f"{msg[e.name] if variant else 'UINT32_MAX'} /* variant message */}};")
        shims.append(f'extern "C" int32_t {e.name}_to_nvlist(rsl_ctx_t c, rsl_ctx_id_t i, const char* n, '
                     f"gx_do_nvlist* l, int32_t d, int32_t p, const void* h, uint32_t* e) "
                     f"{{ return zan::fe::nvlist::enumeration(zan::gen::nv::m_{e.name}, c, i, n, l, d, p, h, e); }}")
    out.append("\n}  // namespace nv\n}  // namespace zan::gen\n")
    return "\n".join(out + shims) + "\n"


def files(cat, vlisted=frozenset()):
    """The files, and the functions of slots 3 and 4 of each table's row: {table: (to_vlist
    or None, to_nvlist)}. Tables in `vlisted` get their value-list operations; the others
    wait for their records' value-list rendering."""
    check(cat)
    site = sites(cat)
    msgs, msg = messages(cat)
    out = {"fe_nvlist.cpp": enums_file(cat, msgs, msg)}
    for d in cat.domains:
        tables = [p for p in cat.tables() if p.domain == d]
        if tables:
            out[f"fe_rows_{d}.cpp"] = domain_file(cat, d, tables, site, msg, vlisted)
    slots = {p.name: (vlist_fn(p.name) if p.name in vlisted else None, nvlist_fn(p.name)) for p in cat.tables()}
    return out, slots

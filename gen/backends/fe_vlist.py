"""Rendering to value lists from the catalogue: descriptors and one-line entry points into
render/to_vlist_all.cpp for every record type (<t>_to_vlist_all, the selector <t>_to_vlist,
and <t>_to_null_vlist for the types that can stand in an unselected union arm), the
value-list forms and row functions of the enumerations and flag sets, and the null runs of
obj_type's extension groups.

Files written:

  fe_vlist_decls.hpp        the family's entry points, declared once for every file
  fe_vlist_<domain>.cpp     per domain: imported accessors, descriptors, entry points
  fe_vlist_messages.cpp     message table of the unit, in the order the descriptors use them

files(cat) returns (files, rows): rows maps a type row's name to the function of its
to_vlist_all column in zan_config_db_fe_gx_type_dispatch_vft.
"""

from catalogue import CatalogueError
from backends.fe_common import (CTX, LEAF_CONV, Messages, Units, c_str, extension_core, field_array,
                                field_initialiser, field_word, head, initialiser, pairs_fn, typed_names,
                                type_core, vlist_all_fn, vlist_fn, vlist_null_fn)

SIG_ALL = f"int32_t {{}}({CTX}, const void*, gx_do_vlist*, int32_t, uint32_t*)"
SIG_NULL = f"int32_t {{}}({CTX}, gx_do_vlist*, uint32_t*)"
SIG_SEL = f"int32_t {{}}({CTX}, const char*, char**, const void*, gx_do_vlist*, int32_t, uint32_t*)"
SIG_TYPED = f"int32_t {{}}({CTX}, const void*, gx_do_vlist*, int32_t, int32_t, uint32_t*)"
SIG_PAIRS = f"int32_t {{}}({CTX}, const void*, gx_do_nlist*, gx_do_vlist*, int32_t, uint32_t*)"


FIELD_ORDER = (("name", None), ("core", None), ("tconv", "nullptr"), ("nested", "nullptr"),
               ("nested_null", "nullptr"), ("select", "nullptr"), ("pairs", "nullptr"), ("msg_sel", "k_no_msg"),
               ("msg_state_null", "k_no_msg"), ("msg_sel_state_null", "k_no_msg"), ("msg_fatal", "k_no_msg"),
               ("msg_sel_fatal", "k_no_msg"))


# Message members of a Type after its core, in declaration order.
TYPE_MSGS = ("msg_sel_variant", "msg_vlist_new", "msg_add_array", "msg_sel_vlist_new", "msg_xxx_new",
             "msg_nvlist_new", "msg_seq_add_array", "msg_sel_xxx_new", "msg_sel_nvlist_new", "msg_sel_seq_add_array")


def init(d):
    return field_initialiser(d, FIELD_ORDER)


def check(cat):
    for r in cat.records.values():
        for f in r.all_fields:
            if f.kind == "leaf" and f.word not in LEAF_CONV:
                raise CatalogueError(f"{r.loc}: record {r.name}, field {f.name}: leaf {f.word} has no value-list form")
            if f.kind == "array" and f.shape in ("fixed", "counted") and f.type not in LEAF_CONV:
                raise CatalogueError(f"{r.loc}: record {r.name}, field {f.name}: element {f.type} has no value-list form")
            if f.kind == "array" and f.shape == "seq" and f.type not in cat.records:
                raise CatalogueError(f"{r.loc}: record {r.name}, field {f.name}: sequence of unknown {f.type}")
        if any(f.arm for f in r.fields) and not r.is_union:
            raise CatalogueError(f"{r.loc}: record {r.name} has arms but no descriminator")


def field_row(r, f, msgs, u, with_null):
    """Members of one Field, with the messages it names, in code order."""
    t, acc = r.name, f"{r.name}_{f.name}"
    d = {"name": c_str(f.name), **u.access(r, f)}
    if f.kind == "nested":
        d.update(nested=f"&{vlist_all_fn(f.type)}", select=f"&{vlist_fn(f.type)}")
        if f.arm:
            d["nested_null"] = f"&{vlist_null_fn(f.type)}"
            d["msg"] = msgs.add(f"{t} to_vlist_all {f.type}_to_vlist {acc} failed")
            d["msg_null"] = msgs.add(f"{t} to_vlist_all: {f.type} set null failed for {f.name}for {t}")
        else:
            d["msg"] = msgs.add(f"{t} to_vlist_all {f.type}_to_vlist for {acc} failed")
            if with_null:
                d["nested_null"] = f"&{vlist_null_fn(f.type)}"
    elif f.kind == "array" and f.shape == "seq":
        d["pairs"] = f"&{pairs_fn(f.type)}"
        d["msg_state_null"] = msgs.add(f"{t} to_vlist_all: gx_do_vlist_add_null failed for {acc}")
        d["msg"] = msgs.add(f"{t} to_vlist_all: {f.type}to_nlist_vlist_all failed for {acc}")
        d["msg_fatal"] = msgs.add(f"{t} to_ nlist_vlist_all rendering error {f.name} %u %u")
    elif f.kind == "array" and f.shape in ("fixed", "counted"):
        d["vconv"] = f"&{vlist_fn(f.type)}"
        d["msg_state_null"] = msgs.add(f"{t} to_vlist_all failed for {acc}")
        d["msg"] = msgs.add(f"{t} to_vlist_all {f.type}_to_vlist for {acc} failed")
    else:
        word = field_word(f)
        if f.kind != "array":   # character arrays convert through var_string_to_vlist
            d["tconv" if f.kind in ("enum", "flags") else "vconv"] = f"&{vlist_fn(word)}"
        d["msg"] = msgs.add(f"{t} to_vlist_all {word}_to_vlist for {acc} failed")
    return d


def sequence_messages(msgs, t, op, member):
    """A Type's traces of its sequence fields' lists in one operation (to_vlist_all, to_vlist)."""
    return {f"msg_{member}xxx_new": msgs.add(f"{t} {op}: gx_do_xxx_new failed"),
            f"msg_{member}nvlist_new": msgs.add(f"{t} {op}: gx_do_nvlist_new failed"),
            f"msg_{member}seq_add_array": msgs.add(f"{t} {op}: gx_do_vlist_add_array failed: %d")}


def record(cat, r, msgs, u, with_null):
    t = r.name
    out = []
    fields = [field_row(r, f, msgs, u, with_null) for f in r.fields]
    xs = []
    for e in sorted(r.extensions, key=lambda e: e.level):
        rows = [field_row(r, f, msgs, u, with_null) for f in e.fields]
        xs.append([e, rows, *msgs.extension(r, e)])
    has_arrays = any(f.kind == "array" and f.shape in ("fixed", "counted") for f in r.fields)
    has_seq = any(f.kind == "array" and f.shape == "seq" for f in r.fields)
    m = {"msg_variant": msgs.add(f"{t} Received variant %d < base version %d") if not r.base else "k_no_msg"}
    if has_arrays:
        m["msg_vlist_new"] = msgs.add(f"{t} to_vlist_all gx_do_vlist_new failed")
        m["msg_add_array"] = msgs.add(f"{t} to_vlist_all gx_do_vlist_add_array failed")
    if has_seq:
        m.update(sequence_messages(msgs, t, "to_vlist_all", ""))

    # The null run: one message per attribute, extension attributes included.
    if with_null:
        for f, d in zip(r.all_fields, fields + [d for x in xs for d in x[1]]):
            if not f.arm:
                word = f.type if f.kind == "nested" else field_word(f)
                d["msg_null"] = msgs.add(f"{t} to_vlist_all: {word} set null failed for {f.name}for {t}")

    # The selector.
    if not r.base:
        m["msg_sel_variant"] = msgs.add(f"{t} Received variant %d < base version %d")
    if has_arrays:
        m["msg_sel_vlist_new"] = msgs.add(f"{t} to_vlist gx_do_vlist_new failed")
    for f, d in zip(r.fields, fields):
        acc = f"{t}_{f.name}"
        if f.kind == "array" and f.shape in ("fixed", "counted"):
            d["msg_sel"] = msgs.add(f"{t} to_vlist {f.type}_to_vlist for {acc} failed")
        elif f.kind == "array" and f.shape == "seq":
            d["msg_sel_state_null"] = msgs.add(f"{t} to_vlist: gx_do_vlist_add_null failed for {acc}")
            d["msg_sel"] = msgs.add(f"{t} to_vlist: {f.type}to_nlist_vlist_all failed for {acc}")
            d["msg_sel_fatal"] = msgs.add(f"{t} to_ nlist_vlist_all rendering error {f.name} %u %u")
    if has_seq:
        m.update(sequence_messages(msgs, t, "to_vlist", "sel_"))
    ext_rows = []
    for e, rows, m_null, m_err in xs:
        m_sel = msgs.add(f"{t} version < {e.level}, cannot render value for attr in extension {e.name}")
        for f, d in zip(e.fields, rows):
            d["msg_sel"] = msgs.add(f"{t} to_vlist rendering null for this {f.name}")
        if rows:
            out.append(field_array(f"x_{e.name}", [init(d) for d in rows]))
        ext_rows.append(f"{{{extension_core(e.name, rows, m_null, m_err)}, {m_sel}}}")

    out.insert(0, field_array(f"f_{t}", [init(d) for d in fields], t) if fields else f"// {t}")
    if ext_rows:
        out.append(f"constexpr Extension e_{t}[] = {{" + ", ".join(ext_rows) + "};")
    type_order = tuple((k, "k_no_msg") for k in TYPE_MSGS)
    out.append(f"constexpr Type r_{t}{{" + type_core(fields and f"f_{t}", len(fields), t, ext_rows, not r.base,
                                                    m["msg_variant"])
               + ", " + initialiser(m, type_order)[1:-1] + "};\n")
    return out


def shims(name, with_null, selector=True):
    ns = "zan::gen::vlist"
    out = [f'extern "C" int32_t {vlist_all_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, const void* o, gx_do_vlist* l, '
           f"int32_t s, uint32_t* e) {{ return zan::fe::vlist::render_all({ns}::r_{name}, c, i, o, l, s, e); }}"]
    if with_null:
        out.append(f'extern "C" int32_t {vlist_null_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, gx_do_vlist* l, '
                   f"uint32_t* e) {{ return zan::fe::vlist::render_null({ns}::r_{name}, c, i, l, e); }}")
    if selector:
        out.append(f'extern "C" int32_t {vlist_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, const char* t, char** p, '
                   f"const void* o, gx_do_vlist* l, int32_t s, uint32_t* e) "
                   f"{{ return zan::fe::vlist::select({ns}::r_{name}, c, i, t, p, o, l, s, e); }}")
    return out


def base_unit(cat, u, msgs):
    """Enumerations, flag sets and obj_type's extension groups."""
    ns = "zan::gen::vlist"
    def shim(template, name):
        return (f'extern "C" int32_t {vlist_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, const void* h, '
                f"gx_do_vlist* l, int32_t d, int32_t p, uint32_t* e) "
                f"{{ return zan::fe::vlist::{template}({ns}::m_{name}, c, i, h, l, d, p, e); }}")
    u.typed(cat, msgs, shim, gated=True)
    # Row functions of the type vector: the row's fifth argument is not looked at.
    for n in typed_names(cat):
        u.shims.append(f'extern "C" int32_t {vlist_all_fn(n)}(rsl_ctx_t c, rsl_ctx_id_t i, const void* h, '
                       f"gx_do_vlist* l, int32_t, uint32_t* e) {{ return {vlist_fn(n)}(c, i, h, l, 0, 1, e); }}")
    # obj_type's extension groups: one null per value, no caller.
    groups = cat.obj_type_groups()
    for g in groups:
        rows = [init({"name": c_str(v), "kind": "Kind::leaf",
                      "msg_null": msgs.add(f"{v} to_vlist_all:  set null failed for {v}for {v}")}) for v in g.values]
        u.body.append(field_array(f"f_{g.name}", rows))
        core = type_core(f"f_{g.name}", len(rows), g.name, [], False, "k_no_msg")
        u.body.append(f"constexpr Type r_{g.name}{{{core}, " + ", ".join(["k_no_msg"] * len(TYPE_MSGS)) + "};")
        u.shims.append(f'extern "C" int32_t {vlist_null_fn(g.name)}(rsl_ctx_t c, rsl_ctx_id_t i, gx_do_vlist* l, '
                       f"uint32_t* e) {{ return zan::fe::vlist::render_null({ns}::r_{g.name}, c, i, l, e); }}")
    return groups


def decls(cat, nulls, groups):
    seq_elements = sorted({f.type for r in cat.records.values() for f in r.fields
                           if f.kind == "array" and f.shape == "seq"})
    out = [head("schema/*.zs", "Entry points of the value-list family, declared once."),
           "#pragma once\n#include \"to_vlist_all.hpp\"\n", 'extern "C" {']
    for r in cat.record_order():
        out.append(SIG_ALL.format(vlist_all_fn(r.name)) + ";")
        out.append(SIG_SEL.format(vlist_fn(r.name)) + ";")
        if r.name in nulls:
            out.append(SIG_NULL.format(vlist_null_fn(r.name)) + ";")
    for n in typed_names(cat):
        out.append(SIG_TYPED.format(vlist_fn(n)) + ";")
        out.append(SIG_ALL.format(vlist_all_fn(n)) + ";")
    for g in groups:
        out.append(SIG_NULL.format(vlist_null_fn(g.name)) + ";")
    out.append("// Sequence elements: the paired-name family's.")
    for n in seq_elements:
        out.append(SIG_PAIRS.format(pairs_fn(n)) + ";")
    out.append("}\n")
    return "\n".join(out)


def files(cat):
    check(cat)
    msgs = Messages()
    nulls = cat.arm_types()
    units = Units()
    for r in cat.record_order():
        u = units[r.domain]
        with_null = r.name in nulls
        u.body += record(cat, r, msgs, u, with_null)
        u.shims += shims(r.name, with_null)
    groups = base_unit(cat, units["base"], msgs)
    out = {"fe_vlist_decls.hpp": decls(cat, nulls, groups)}
    for name, u in sorted(units.items()):
        out[f"fe_vlist_{name}.cpp"] = u.file(cat, name, "Rendering to value lists", '#include "fe_vlist_decls.hpp"',
                                             "vlist")
    out["fe_vlist_messages.cpp"] = msgs.table("to_vlist_all unit (whole-type renderings and selectors)",
                                              "to_vlist_all.hpp", "to_vlist", "to_vlist_all")
    return out, type_rows(cat)


def type_rows(cat):
    """Function of each named type row in the to_vlist_all column."""
    rows = {}
    for s in cat.slots:
        if s.name:
            rows[s.name] = vlist_all_fn(s.name)   # records, enumerations and flag sets here; base types imported
    return rows

"""Paired name and value rendering from the catalogue: for every record and union type a
constant descriptor and the one-line <type>_to_nlist_vlist_all, and for every type that can
stand in a union arm (directly or deeper), and for each extension group of obj_type, the
descriptor and the one-line <type>_to_null_nlist_vlist. Everything else is the template in
render/to_nlist_vlist_all.cpp. The value-list conversions of enumerations and flag sets that
it calls are declared by the value-list family (fe_vlist_decls.hpp).

Files (into the front end's generated directory, through frontend.files()):

  fe_nlist_<domain>.cpp     per domain: descriptors and entry points
  fe_nlist_messages.cpp     message table of the unit, in the order the descriptors use them
"""

from backends.fe_common import (CTX, LEAF_CONV, Messages, Units, c_str, extension_core, field_array, field_word,
                                field_initialiser, pairs_fn, pairs_null_fn, type_core, vlist_fn)

SUFFIX = " to_nlist_vlist_all"
RUN_LETTERS = "abcdefghijklmnop"
SIG_FULL = f"int32_t {{}}({CTX}, const void*, gx_do_nlist*, gx_do_vlist*, int32_t, uint32_t*)"
SIG_NULL = f"int32_t {{}}({CTX}, gx_do_nlist*, gx_do_vlist*, uint32_t*)"


def run(type_name):
    """Stand-in of a type's name in its field failure traces: the letters repeated and cut to
    the length of "<type> to_nlist_vlist_all"."""
    n = len(type_name) + len(SUFFIX)
    return (RUN_LETTERS * (n // len(RUN_LETTERS) + 1))[:n]


def plan(cat):
    """(records in slot order, names of the types with a null rendering, obj_type groups)."""
    nulls = cat.arm_types()
    order = list(cat.record_order())
    return order, [r.name for r in order if r.name in nulls], cat.obj_type_groups()


def conversion(f):
    """(kind, conversion member, its function) of a leaf-like field."""
    word = field_word(f)
    if f.kind == "array" and f.shape == "chars":
        return "Kind::chars", None, None
    if f.kind in ("enum", "flags") and word not in LEAF_CONV:
        return "Kind::enumeration", "econv", vlist_fn(word)
    return "Kind::leaf", "vconv", vlist_fn(word)


ORDER = (("name", None), ("prefix", "nullptr"), ("core", None), ("econv", "nullptr"), ("nested", "nullptr"),
         ("nested_null", "nullptr"), ("msg_null_name", "k_no_msg"), ("msg_length", "k_no_msg"),
         ("msg_more", "k_no_msg"))


def init(d):
    return field_initialiser(d, ORDER)


def full_field(r, f, msgs, u):
    """Descriptor of one field in the full form."""
    t, acc, rn = r.name, f"{r.name}_{f.name}", run(r.name)
    d = {"name": c_str(f.name), **u.access(r, f)}
    if f.kind == "nested":
        d.update(prefix=c_str(f.prop_text), nested=f"&{pairs_fn(f.type)}")
        u.decls[pairs_fn(f.type)] = SIG_FULL.format(pairs_fn(f.type))
        if f.arm:
            u.decls[pairs_null_fn(f.type)] = SIG_NULL.format(pairs_null_fn(f.type))
            d.update(nested_null=f"&{pairs_null_fn(f.type)}",
                     msg=msgs.add(f"{t} to_ nlist_vlist_all {f.type}_to_vlist for {acc} failed"),
                     msg_null=msgs.add(f"{t} to_nlist_vlist_all: {f.type} failed for {f.name}for {t}"))
        else:
            d["msg"] = msgs.add(f"{rn} {f.type}_to_vlist for {acc} failed")
        d["msg_length"] = msgs.add(f"{t} to_ nlist_vlist_all rendering error {f.name} %u %u")
    elif f.kind == "array" and f.shape == "seq":
        u.decls[pairs_fn(f.type)] = SIG_FULL.format(pairs_fn(f.type))
        d.update(nested=f"&{pairs_fn(f.type)}",
                 msg=msgs.add(f"{t} to_nlist_vlist_all: {f.type}to_nlist_vlist_all failed for {acc}"),
                 msg_length=msgs.add(f"{t} to_ nlist_vlist_all rendering error {f.name} %u %u"),
                 msg_more=msgs.add(f"{t} to_nlist_vlist_all: gx_do_xxx_new failed"))
        msgs.add(f"{t} to_nlist_vlist_all: gx_do_nvlist_new failed")
        msgs.add(f"{t} to_nlist_vlist_all: gx_do_vlist_add_array failed: %d")
        msgs.add(f"{t}_ to_nlist_vlist_all: gx_do_vlist_add_null failed for {acc}")
    elif f.kind == "array" and f.shape in ("fixed", "counted"):
        d.update(vconv=f"&{vlist_fn(f.type)}", msg=msgs.add(f"{rn} {f.type}_to_vlist for {acc} failed"),
                 msg_more=msgs.add(f"{rn} gx_do_vlist_new failed"))
        msgs.add(f"{rn} gx_do_vlist_add_array failed")
        msgs.add(f"{t} to_inlist_vlist_all failed for {acc}")
    else:
        d["kind"], member, fn = conversion(f)
        if member:
            d[member] = f"&{fn}"
        d["msg"] = msgs.add(f"{rn} {field_word(f)}_to_vlist for {acc} failed")
    return init(d)


def null_field(r, f, msgs, u):
    """Descriptor of one field in the null form."""
    t = r.name
    d = {"name": c_str(f.name)}
    if f.kind == "nested":
        u.decls[pairs_null_fn(f.type)] = SIG_NULL.format(pairs_null_fn(f.type))
        d.update(kind="Kind::arm" if f.arm else "Kind::nested", prefix=c_str(f.prop_text),
                 nested_null=f"&{pairs_null_fn(f.type)}",
                 msg_null=msgs.add(f"{t} to_nlist_vlist_all: {f.type} failed for {f.name}for {t}"),
                 msg_length=msgs.add(f"{t} to_ nlist_vlist_all rendering error {f.name} %u %u"))
    else:
        word = field_word(f)
        d.update(kind="Kind::leaf",
                 msg_null=msgs.add(f"{t} to_nlist_vlist_all: {word} set null failed for {f.name}for {t}"),
                 msg_null_name=msgs.add(f"{t} to_nlist_vlist_all: {word} add nlist failed for {f.name}"))
    return init(d)


def null_type(u, name, rows, comment):
    """A null rendering z_<name> of the given Field rows and its <name>_to_null_nlist_vlist."""
    u.decls[pairs_null_fn(name)] = SIG_NULL.format(pairs_null_fn(name))
    u.body.append(field_array(f"n_{name}", rows, comment))
    u.body.append(f"constexpr Type z_{name}" + type_core(f"n_{name}", len(rows), name, [], False, "k_no_msg") + ";\n")
    u.shims.append(f'extern "C" int32_t {pairs_null_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, gx_do_nlist* n, '
                   f"gx_do_vlist* v, uint32_t* e) "
                   f"{{ return zan::fe::nlist::render_null(zan::gen::nlist::z_{name}, c, i, n, v, e); }}")


def files(cat):
    records, nulls, groups = plan(cat)
    msgs = Messages()
    units = Units()

    for r in records:
        u = units[r.domain]
        u.decls[pairs_fn(r.name)] = SIG_FULL.format(pairs_fn(r.name))
        m_var = msgs.add(f"{r.name} Received variant %d < base version %d") if not r.base else "k_no_msg"
        u.body.append(field_array(f"f_{r.name}", [full_field(r, f, msgs, u) for f in r.fields], r.name))
        exts = []
        for e in sorted(r.extensions, key=lambda e: e.level):
            erows = [full_field(r, f, msgs, u) for f in e.fields]
            if erows:
                u.body.append(field_array(f"x_{e.name}", erows))
            m1, m2 = msgs.extension(r, e)
            exts.append(extension_core(e.name, erows, m1, m2))
        if exts:
            u.body.append(f"constexpr Extension e_{r.name}[] = {{" + ", ".join(exts) + "};")
        u.body.append(f"constexpr Type r_{r.name}"
                      + type_core(f"f_{r.name}", len(r.fields), r.name, exts, not r.base, m_var) + ";\n")
        u.shims.append(f'extern "C" int32_t {pairs_fn(r.name)}(rsl_ctx_t c, rsl_ctx_id_t i, const void* o, '
                       f"gx_do_nlist* n, gx_do_vlist* v, int32_t s, uint32_t* e) "
                       f"{{ return zan::fe::nlist::render(zan::gen::nlist::r_{r.name}, c, i, o, n, v, s, e); }}")
    for name in nulls:
        r = cat.records[name]
        u = units[r.domain]
        null_type(u, name, [null_field(r, f, msgs, u) for f in r.all_fields], f"{name}, null")
    for g in groups:
        # Each value of the group stands as an attribute of its own name, with no type word.
        rows = [init({"name": c_str(v), "kind": "Kind::leaf",
                      "msg_null": msgs.add(f"{v} to_nlist_vlist_all:  set null failed for {v}for {v}"),
                      "msg_null_name": msgs.add(f"{v} to_nlist_vlist_all:  add nlist failed for {v}")})
                for v in g.values]
        null_type(units["base"], g.name, rows, f"{g.name}, values of obj_type")

    out = {f"fe_nlist_{name}.cpp": u.file(cat, name, "Paired name and value rendering",
                                          '#include "to_nlist_vlist_all.hpp"\n#include "fe_vlist_decls.hpp"', "nlist",
                                          [u.decls[k] for k in sorted(u.decls)],
                                          "// Entry points of this family, here or in the other domains.")
           for name, u in sorted(units.items())}
    out["fe_nlist_messages.cpp"] = msgs.table("to_nlist_vlist_all unit", "to_nlist_vlist_all.hpp", "to_nlist_vlist_all",
                                              "to_nlist_vlist_all")
    return out

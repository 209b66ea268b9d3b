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

from backends.frontend import Messages, c_str, field_word, head, sources, LEAF_CONV

SUFFIX = " to_nlist_vlist_all"
RUN_LETTERS = "abcdefghijklmnop"
CTX = "rsl_ctx_t, rsl_ctx_id_t"
SIG_FULL = f"int32_t {{}}({CTX}, const void*, gx_do_nlist*, gx_do_vlist*, int32_t, uint32_t*)"
SIG_NULL = f"int32_t {{}}({CTX}, gx_do_nlist*, gx_do_vlist*, uint32_t*)"


def full_fn(name):
    return f"{name}_to_nlist_vlist_all"


def null_fn(name):
    return f"{name}_to_null_nlist_vlist"


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


class Unit:
    def __init__(self):
        self.imports, self.decls, self.body, self.shims = {}, {}, [], []


def conversion(f):
    """(kind, conversion member, its function) of a leaf-like field."""
    word = field_word(f)
    if f.kind == "array" and f.shape == "chars":
        return "Kind::chars", None, None
    if f.kind in ("enum", "flags") and word not in LEAF_CONV:
        return "Kind::enumeration", "econv", f"{word}_to_vlist"
    return "Kind::leaf", "conv", f"{word}_to_vlist"


def default_of(f):
    if f.default is None:
        return None
    if f.name == "descriminator":
        return "Default::arm_one"
    if f.default.startswith('"'):
        return {"ip_address": "Default::ip_address", "rsl_vstring": "Default::rsl_vstring"}[f.word]
    return "Default::zero16" if f.word in ("int16", "u_int16") else "Default::zero"


ORDER = (("name", None), ("prefix", "nullptr"), ("kind", None), ("dflt", "Default::none"), ("arm", "0"),
         ("get", "{}"), ("state", "{}"), ("whole_state", "nullptr"), ("next", "nullptr"), ("value", "nullptr"),
         ("conv", "nullptr"), ("econv", "nullptr"), ("nested", "nullptr"), ("nested_null", "nullptr"),
         ("msg", "k_no_msg"), ("msg_null", "k_no_msg"), ("msg_null_name", "k_no_msg"), ("msg_length", "k_no_msg"),
         ("msg_more", "k_no_msg"))


def init(d):
    return "{" + ", ".join(str(d.get(k, v)) for k, v in ORDER) + "}"


def full_field(r, f, msgs, u):
    """Descriptor of one field in the full form."""
    t, acc, rn = r.name, f"{r.name}_{f.name}", run(r.name)
    d = {"name": c_str(f.name)}
    imp = u.imports
    if f.kind == "nested":
        imp[f"{acc}_get"] = f"const void* {acc}_get({CTX}, const void*, uint32_t*);"
        d.update(prefix=c_str(f.prop_text), get=f"{{.one = &{acc}_get}}", nested=f"&{full_fn(f.type)}")
        u.decls[full_fn(f.type)] = SIG_FULL.format(full_fn(f.type))
        if f.arm:
            imp[f"{t}_descriminator_get_value"] = f"uint32_t {t}_descriminator_get_value({CTX}, const void*, uint32_t*);"
            u.decls[null_fn(f.type)] = SIG_NULL.format(null_fn(f.type))
            d.update(kind="Kind::arm", arm=f.arm, value=f"&{t}_descriminator_get_value", nested_null=f"&{null_fn(f.type)}",
                     msg=msgs.add(f"{t} to_ nlist_vlist_all {f.type}_to_vlist for {acc} failed"),
                     msg_null=msgs.add(f"{t} to_nlist_vlist_all: {f.type} failed for {f.name}for {t}"))
        else:
            d.update(kind="Kind::nested", msg=msgs.add(f"{rn} {f.type}_to_vlist for {acc} failed"))
        d["msg_length"] = msgs.add(f"{t} to_ nlist_vlist_all rendering error {f.name} %u %u")
    elif f.kind == "array" and f.shape == "seq":
        imp[f"{acc}_get_first"] = f"const void* {acc}_get_first({CTX}, const void*, uint32_t*);"
        imp[f"{acc}_get_next"] = f"const void* {acc}_get_next({CTX}, const void*, const void*, uint32_t*);"
        imp[f"{acc}_state_flag_get"] = f"uint8_t {acc}_state_flag_get({CTX}, const void*, uint32_t*);"
        u.decls[full_fn(f.type)] = SIG_FULL.format(full_fn(f.type))
        d.update(kind="Kind::sequence", get=f"{{.first = &{acc}_get_first}}", next=f"&{acc}_get_next",
                 state=f"{{.one = &{acc}_state_flag_get}}", nested=f"&{full_fn(f.type)}",
                 msg=msgs.add(f"{t} to_nlist_vlist_all: {f.type}to_nlist_vlist_all failed for {acc}"),
                 msg_length=msgs.add(f"{t} to_ nlist_vlist_all rendering error {f.name} %u %u"),
                 msg_more=msgs.add(f"{t} to_nlist_vlist_all: gx_do_xxx_new failed"))
        msgs.add(f"{t} to_nlist_vlist_all: gx_do_nvlist_new failed")
        msgs.add(f"{t} to_nlist_vlist_all: gx_do_vlist_add_array failed: %d")
        msgs.add(f"{t}_ to_nlist_vlist_all: gx_do_vlist_add_null failed for {acc}")
    elif f.kind == "array" and f.shape in ("fixed", "counted"):
        imp[f"{acc}_get"] = f"const void* {acc}_get({CTX}, const void*, uint32_t, uint32_t*);"
        imp[f"{acc}_state_flag_get"] = f"uint8_t {acc}_state_flag_get({CTX}, const void*, uint32_t, uint32_t*);"
        imp[f"{acc}_state_flag_whole_get"] = f"uint8_t {acc}_state_flag_whole_get({CTX}, const void*, uint32_t*);"
        d.update(kind="Kind::counted_array" if f.shape == "counted" else "Kind::fixed_array",
                 get=f"{{.element = &{acc}_get}}", state=f"{{.element = &{acc}_state_flag_get}}",
                 whole_state=f"&{acc}_state_flag_whole_get", conv=f"&{f.type}_to_vlist",
                 msg=msgs.add(f"{rn} {f.type}_to_vlist for {acc} failed"),
                 msg_more=msgs.add(f"{rn} gx_do_vlist_new failed"))
        msgs.add(f"{rn} gx_do_vlist_add_array failed")
        msgs.add(f"{t} to_inlist_vlist_all failed for {acc}")
        if f.shape == "counted":
            imp[f"{t}_{f.bound}_get_value"] = f"uint32_t {t}_{f.bound}_get_value({CTX}, const void*, uint32_t*);"
            d["value"] = f"&{t}_{f.bound}_get_value"
        else:
            d["arm"] = f"{f.bound} /* bound */"
    else:
        kind, member, fn = conversion(f)
        d["kind"] = kind
        d["state"] = f"{{.one = &{acc}_state_flag_get}}"
        imp[f"{acc}_state_flag_get"] = f"uint8_t {acc}_state_flag_get({CTX}, const void*, uint32_t*);"
        if kind == "Kind::chars":
            imp[f"{acc}_get"] = f"void {acc}_get({CTX}, const void*, char*, uint32_t, uint32_t*);"
            d["get"] = f"{{.chars = &{acc}_get}}"
            if not f.bound.isdigit():
                imp[f"{t}_{f.bound}_get_value"] = f"uint32_t {t}_{f.bound}_get_value({CTX}, const void*, uint32_t*);"
                d["value"] = f"&{t}_{f.bound}_get_value"
        else:
            imp[f"{acc}_get"] = f"const void* {acc}_get({CTX}, const void*, uint32_t*);"
            d["get"] = f"{{.one = &{acc}_get}}"
            d[member] = f"&{fn}"
            dflt = default_of(f)
            if dflt:
                d["dflt"] = dflt
                if not f.default.startswith('"'):
                    imp[f"{acc}_get_value"] = f"uint32_t {acc}_get_value({CTX}, const void*, uint32_t*);"
                    d["value"] = f"&{acc}_get_value"
        d["msg"] = msgs.add(f"{rn} {field_word(f)}_to_vlist for {acc} failed")
    return init(d)


def null_field(r, f, msgs, u):
    """Descriptor of one field in the null form."""
    t = r.name
    d = {"name": c_str(f.name)}
    if f.kind == "nested":
        u.decls[null_fn(f.type)] = SIG_NULL.format(null_fn(f.type))
        d.update(kind="Kind::arm" if f.arm else "Kind::nested", prefix=c_str(f.prop_text),
                 nested_null=f"&{null_fn(f.type)}",
                 msg_null=msgs.add(f"{t} to_nlist_vlist_all: {f.type} failed for {f.name}for {t}"),
                 msg_length=msgs.add(f"{t} to_ nlist_vlist_all rendering error {f.name} %u %u"))
    else:
        word = field_word(f)
        d.update(kind="Kind::leaf", msg_null=msgs.add(f"{t} to_nlist_vlist_all: {word} set null failed for {f.name}for {t}"),
                 msg_null_name=msgs.add(f"{t} to_nlist_vlist_all: {word} add nlist failed for {f.name}"))
    return init(d)


def files(cat):
    records, nulls, groups = plan(cat)
    msgs = Messages()
    units = {}
    
    def unit(name):
        return units.setdefault(name, Unit())

    for r in records:
        u = unit(r.domain)
        u.decls[full_fn(r.name)] = SIG_FULL.format(full_fn(r.name))
        m_var = msgs.add(f"{r.name} Received variant %d < base version %d") if not r.base else "k_no_msg"
        rows = [full_field(r, f, msgs, u) for f in r.fields]
        u.body.append(f"// {r.name}\nconstexpr Field f_{r.name}[] = {{\n    " + ",\n    ".join(rows) + "\n};")
        exts = []
        for e in sorted(r.extensions, key=lambda e: e.level):
            erows = [full_field(r, f, msgs, u) for f in e.fields]
            if erows:
                u.body.append(f"constexpr Field x_{e.name}[] = {{\n    " + ",\n    ".join(erows) + "\n};")
            m1 = msgs.add(f"{r.name} version < {e.level} Rendering extension {e.name} as null..")
            m2 = msgs.add(f"{r.name} error(%d) in rendering extension {e.name}")
            exts.append("{" + (f"x_{e.name}" if erows else "nullptr") + f", {len(erows)}, {m1}, {m2}}}")
        if exts:
            u.body.append(f"constexpr Extension e_{r.name}[] = {{" + ", ".join(exts) + "};")
        u.body.append(f"constexpr Type r_{r.name}{{f_{r.name}, {len(r.fields)}, "
                      + (f"e_{r.name}, {len(exts)}, " if exts else "nullptr, 0, ")
                      + f"{'false' if r.base else 'true'} /* reads the variant */, {m_var}}};\n")
        u.shims.append(f'extern "C" int32_t {full_fn(r.name)}(rsl_ctx_t c, rsl_ctx_id_t i, const void* o, '
                       f"gx_do_nlist* n, gx_do_vlist* v, int32_t s, uint32_t* e) "
                       f"{{ return zan::fe::nlist::render(zan::gen::nlist::r_{r.name}, c, i, o, n, v, s, e); }}")
    for name in nulls:
        r = cat.records[name]
        u = unit(r.domain)
        u.decls[null_fn(name)] = SIG_NULL.format(null_fn(name))
        rows = [null_field(r, f, msgs, u) for f in r.all_fields]
        u.body.append(f"// {name}, null\nconstexpr Field n_{name}[] = {{\n    " + ",\n    ".join(rows) + "\n};")
        u.body.append(f"constexpr Type z_{name}{{n_{name}, {len(rows)}, nullptr, 0, false, k_no_msg}};\n")
        u.shims.append(f'extern "C" int32_t {null_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, gx_do_nlist* n, '
                       f"gx_do_vlist* v, uint32_t* e) "
                       f"{{ return zan::fe::nlist::render_null(zan::gen::nlist::z_{name}, c, i, n, v, e); }}")
    for g in groups:
        # Each value of the group stands as an attribute of its own name, with no type word.
        u = unit("base")
        u.decls[null_fn(g.name)] = SIG_NULL.format(null_fn(g.name))
        rows = [init({"name": c_str(v), "kind": "Kind::leaf",
                      "msg_null": msgs.add(f"{v} to_nlist_vlist_all:  set null failed for {v}for {v}"),
                      "msg_null_name": msgs.add(f"{v} to_nlist_vlist_all:  add nlist failed for {v}")})
                for v in g.values]
        u.body.append(f"// {g.name}, values of obj_type\nconstexpr Field n_{g.name}[] = {{\n    "
                      + ",\n    ".join(rows) + "\n};")
        u.body.append(f"constexpr Type z_{g.name}{{n_{g.name}, {len(rows)}, nullptr, 0, false, k_no_msg}};\n")
        u.shims.append(f'extern "C" int32_t {null_fn(g.name)}(rsl_ctx_t c, rsl_ctx_id_t i, gx_do_nlist* n, '
                       f"gx_do_vlist* v, uint32_t* e) "
                       f"{{ return zan::fe::nlist::render_null(zan::gen::nlist::z_{g.name}, c, i, n, v, e); }}")

    out = {}
    for name, u in sorted(units.items()):
        text = [head(sources(cat, name) or "schema/*.zs", f"Paired name and value rendering of the {name} domain."),
                '#include "to_nlist_vlist_all.hpp"\n#include "fe_vlist_decls.hpp"\n', 'extern "C" {', "// Imported from the database library."]
        text += [u.imports[k] for k in sorted(u.imports)]
        text.append("// Entry points of this family, here or in the other domains.")
        text += [u.decls[k] + ";" for k in sorted(u.decls)]
        text.append("}\n")
        text.append("namespace zan::gen::nlist {\nusing namespace zan::fe::nlist;\n")
        text += u.body
        text.append("\n}  // namespace zan::gen::nlist\n")
        text += u.shims
        out[f"fe_nlist_{name}.cpp"] = "\n".join(text) + "\n"
    msg = [head("schema/*.zs", "Message table of the to_nlist_vlist_all unit, in the order the descriptors use them."),
           '#include "to_nlist_vlist_all.hpp"\n', "namespace zan::gen {",
           f"extern const uint32_t k_to_nlist_vlist_all_format_count = {len(msgs.formats)};",
           f"extern const char* const to_nlist_vlist_all_formats[{len(msgs.formats)}] = {{"]
    msg += [f"    {c_str(m)},  // {i}" for i, m in enumerate(msgs.formats)]
    msg.append("};\n}  // namespace zan::gen\n")
    out["fe_nlist_messages.cpp"] = "\n".join(msg)
    return out

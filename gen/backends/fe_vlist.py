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
from backends.frontend import Messages, c_str, field_word, head, sources

CTX = "rsl_ctx_t, rsl_ctx_id_t"
SIG_ALL = f"int32_t {{}}({CTX}, const void*, gx_do_vlist*, int32_t, uint32_t*)"
SIG_NULL = f"int32_t {{}}({CTX}, gx_do_vlist*, uint32_t*)"
SIG_SEL = f"int32_t {{}}({CTX}, const char*, char**, const void*, gx_do_vlist*, int32_t, uint32_t*)"
SIG_TYPED = f"int32_t {{}}({CTX}, const void*, gx_do_vlist*, int32_t, int32_t, uint32_t*)"
SIG_PAIRS = f"int32_t {{}}({CTX}, const void*, gx_do_nlist*, gx_do_vlist*, int32_t, uint32_t*)"
# Element conversions of the schema library, declared by leaf_conversions.h.
LEAF_VLIST = {"int32", "u_int32", "rsl_vstring", "ip_address", "rsl_mac_addr", "u_int8", "u_int64", "u_int16",
              "rsl_boolean", "int16"}


def all_fn(name):
    return f"{name}_to_vlist_all"


def null_vlist_fn(name):
    return f"{name}_to_null_vlist"


def sel_fn(name):
    return f"{name}_to_vlist"


def pairs_fn(name):
    return f"{name}_to_nlist_vlist_all"


FIELD_ORDER = (("name", None), ("kind", None), ("dflt", "Default::none"), ("arm", "0"), ("get", "{}"),
               ("state", "{}"), ("whole_state", "nullptr"), ("value", "nullptr"), ("next", "nullptr"),
               ("conv", "nullptr"), ("tconv", "nullptr"), ("nested", "nullptr"), ("nested_null", "nullptr"),
               ("select", "nullptr"), ("pairs", "nullptr"), ("msg", "k_no_msg"), ("msg_null", "k_no_msg"),
               ("msg_sel", "k_no_msg"), ("msg_state_null", "k_no_msg"), ("msg_sel_state_null", "k_no_msg"),
               ("msg_fatal", "k_no_msg"), ("msg_sel_fatal", "k_no_msg"))


# Message members of a Type, in declaration order.
TYPE_MSGS = ("msg_variant", "msg_sel_variant", "msg_vlist_new", "msg_add_array", "msg_sel_vlist_new", "msg_xxx_new",
             "msg_nvlist_new", "msg_seq_add_array", "msg_sel_xxx_new", "msg_sel_nvlist_new", "msg_sel_seq_add_array")


def init(d, order=FIELD_ORDER):
    return "{" + ", ".join(str(d.get(k, v)) for k, v in order) + "}"


def check(cat):
    for r in cat.records.values():
        for f in r.all_fields:
            if f.kind == "leaf" and f.word not in LEAF_VLIST:
                raise CatalogueError(f"{r.loc}: record {r.name}, field {f.name}: leaf {f.word} has no value-list form")
            if f.kind == "array" and f.shape in ("fixed", "counted") and f.type not in LEAF_VLIST:
                raise CatalogueError(f"{r.loc}: record {r.name}, field {f.name}: element {f.type} has no value-list form")
            if f.kind == "array" and f.shape == "seq" and f.type not in cat.records:
                raise CatalogueError(f"{r.loc}: record {r.name}, field {f.name}: sequence of unknown {f.type}")
        if any(f.arm for f in r.fields) and not r.is_union:
            raise CatalogueError(f"{r.loc}: record {r.name} has arms but no descriminator")


class Unit:
    """What one generated file collects: imported accessors, descriptors, entry points."""

    def __init__(self):
        self.imports = {}
        self.body = []
        self.shims = []

    def imp(self, name, decl):
        self.imports[name] = decl


def field_row(r, f, msgs, u, with_null):
    """Designated initialiser of one Field, with the messages it names, in code order."""
    t, acc = r.name, f"{r.name}_{f.name}"
    d = {"name": c_str(f.name)}
    word = field_word(f)

    def getter(suffix="_get", decl=f"const void* {{}}({CTX}, const void*, uint32_t*);"):
        u.imp(acc + suffix, decl.format(acc + suffix))
        return f"&{acc}{suffix}"

    def state():
        return {"state": f"{{.one = {getter('_state_flag_get', f'uint8_t {{}}({CTX}, const void*, uint32_t*);')}}}"}

    if f.kind == "nested":
        d.update(kind="Kind::arm" if f.arm else "Kind::nested", get=f"{{.one = {getter()}}}",
                 nested=f"&{all_fn(f.type)}", select=f"&{sel_fn(f.type)}")
        if f.arm:
            d.update(arm=str(f.arm), value=f"&{t}_descriminator_get_value",
                     nested_null=f"&{null_vlist_fn(f.type)}")
            u.imp(f"{t}_descriminator_get_value", f"uint32_t {t}_descriminator_get_value({CTX}, const void*, uint32_t*);")
            d["msg"] = msgs.add(f"{t} to_vlist_all {f.type}_to_vlist {acc} failed")
            d["msg_null"] = msgs.add(f"{t} to_vlist_all: {f.type} set null failed for {f.name}for {t}")
        else:
            d["msg"] = msgs.add(f"{t} to_vlist_all {f.type}_to_vlist for {acc} failed")
            if with_null:
                d["nested_null"] = f"&{null_vlist_fn(f.type)}"
    elif f.kind == "array" and f.shape == "seq":
        d.update(kind="Kind::sequence",
                 get=f"{{.one = {getter('_get_first')}}}",
                 next=getter("_get_next", f"const void* {{}}({CTX}, const void*, const void*, uint32_t*);"),
                 pairs=f"&{pairs_fn(f.type)}", **state())
        d["msg_state_null"] = msgs.add(f"{t} to_vlist_all: gx_do_vlist_add_null failed for {acc}")
        d["msg"] = msgs.add(f"{t} to_vlist_all: {f.type}to_nlist_vlist_all failed for {acc}")
        d["msg_fatal"] = msgs.add(f"{t} to_ nlist_vlist_all rendering error {f.name} %u %u")
    elif f.kind == "array" and f.shape in ("fixed", "counted"):
        counted = f.shape == "counted"
        d.update(kind="Kind::counted_array" if counted else "Kind::fixed_array",
                 get=f"{{.element = {getter('_get', f'const void* {{}}({CTX}, const void*, uint32_t, uint32_t*);')}}}",
                 state=f"{{.element = {getter('_state_flag_get', f'uint8_t {{}}({CTX}, const void*, uint32_t, uint32_t*);')}}}",
                 whole_state=getter("_state_flag_whole_get", f"uint8_t {{}}({CTX}, const void*, uint32_t*);"),
                 conv=f"&{f.type}_to_vlist")
        if counted:
            d["value"] = f"&{t}_{f.bound}_get_value"
            u.imp(f"{t}_{f.bound}_get_value", f"uint32_t {t}_{f.bound}_get_value({CTX}, const void*, uint32_t*);")
        else:
            d["arm"] = f"{f.bound} /* bound */"
        d["msg_state_null"] = msgs.add(f"{t} to_vlist_all failed for {acc}")
        d["msg"] = msgs.add(f"{t} to_vlist_all {f.type}_to_vlist for {acc} failed")
    else:
        if f.kind == "array":   # character array
            d.update(kind="Kind::chars",
                     get=f"{{.chars = {getter('_get', f'void {{}}({CTX}, const void*, char*, uint32_t, uint32_t*);')}}}",
                     **state())
            if not f.bound.isdigit():
                d["value"] = f"&{t}_{f.bound}_get_value"
                u.imp(f"{t}_{f.bound}_get_value", f"uint32_t {t}_{f.bound}_get_value({CTX}, const void*, uint32_t*);")
        else:
            disc = f.name == "descriminator"
            typed = f.kind in ("enum", "flags")
            d.update(kind="Kind::discriminator" if disc else ("Kind::typed" if typed else "Kind::leaf"),
                     get=f"{{.one = {getter()}}}", **state())
            d["tconv" if typed else "conv"] = f"&{sel_fn(word)}"
            if f.default is not None:
                if disc:
                    d["dflt"] = "Default::arm_one"
                elif f.default.startswith('"'):
                    d["dflt"] = {"ip_address": "Default::ip_address", "rsl_vstring": "Default::rsl_vstring"}[f.word]
                else:
                    d["dflt"] = "Default::zero16" if f.word in ("int16", "u_int16") else "Default::zero"
                if disc or not f.default.startswith('"'):
                    d["value"] = f"&{acc}_get_value"
                    u.imp(f"{acc}_get_value", f"uint32_t {acc}_get_value({CTX}, const void*, uint32_t*);")
        d["msg"] = msgs.add(f"{t} to_vlist_all {word}_to_vlist for {acc} failed")
    return d


def record(cat, r, msgs, u, with_null):
    t = r.name
    out = []
    fields = [field_row(r, f, msgs, u, with_null) for f in r.fields]
    xs = []
    for e in sorted(r.extensions, key=lambda e: e.level):
        rows = [field_row(r, f, msgs, u, with_null) for f in e.fields]
        xs.append([e, rows, msgs.add(f"{t} version < {e.level} Rendering extension {e.name} as null.."),
                   msgs.add(f"{t} error(%d) in rendering extension {e.name}")])
    has_arrays = any(f.kind == "array" and f.shape in ("fixed", "counted") for f in r.fields)
    has_seq = any(f.kind == "array" and f.shape == "seq" for f in r.fields)
    m = {"msg_variant": msgs.add(f"{t} Received variant %d < base version %d") if not r.base else "k_no_msg"}
    if has_arrays:
        m["msg_vlist_new"] = msgs.add(f"{t} to_vlist_all gx_do_vlist_new failed")
        m["msg_add_array"] = msgs.add(f"{t} to_vlist_all gx_do_vlist_add_array failed")
    if has_seq:
        m["msg_xxx_new"] = msgs.add(f"{t} to_vlist_all: gx_do_xxx_new failed")
        m["msg_nvlist_new"] = msgs.add(f"{t} to_vlist_all: gx_do_nvlist_new failed")
        m["msg_seq_add_array"] = msgs.add(f"{t} to_vlist_all: gx_do_vlist_add_array failed: %d")

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
        m["msg_sel_xxx_new"] = msgs.add(f"{t} to_vlist: gx_do_xxx_new failed")
        m["msg_sel_nvlist_new"] = msgs.add(f"{t} to_vlist: gx_do_nvlist_new failed")
        m["msg_sel_seq_add_array"] = msgs.add(f"{t} to_vlist: gx_do_vlist_add_array failed: %d")
    ext_rows = []
    for e, rows, m_null, m_err in xs:
        m_sel = msgs.add(f"{t} version < {e.level}, cannot render value for attr in extension {e.name}")
        for f, d in zip(e.fields, rows):
            d["msg_sel"] = msgs.add(f"{t} to_vlist rendering null for this {f.name}")
        if rows:
            out.append(f"constexpr Field x_{e.name}[] = {{\n    " + ",\n    ".join(init(d) for d in rows) + "\n};")
        ext_rows.append(f"{{{'x_' + e.name if rows else 'nullptr'}, {len(rows)}, {m_null}, {m_err}, {m_sel}}}")

    out.insert(0, f"// {t}\nconstexpr Field f_{t}[] = {{\n    " + ",\n    ".join(init(d) for d in fields) + "\n};"
               if fields else f"// {t}")
    if ext_rows:
        out.append(f"constexpr Extension e_{t}[] = {{" + ", ".join(ext_rows) + "};")
    type_order = tuple((k, "k_no_msg") for k in TYPE_MSGS)
    out.append(f"constexpr Type r_{t}{{{'f_' + t if fields else 'nullptr'}, {len(fields)}, "
               + (f"e_{t}, {len(ext_rows)}, " if ext_rows else "nullptr, 0, ")
               + f"{'false' if r.base else 'true'}, " + init(m, type_order)[1:-1] + "};\n")
    return out


def shims(name, with_null, selector=True):
    ns = "zan::gen::vlist"
    out = [f'extern "C" int32_t {all_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, const void* o, gx_do_vlist* l, '
           f"int32_t s, uint32_t* e) {{ return zan::fe::vlist::render_all({ns}::r_{name}, c, i, o, l, s, e); }}"]
    if with_null:
        out.append(f'extern "C" int32_t {null_vlist_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, gx_do_vlist* l, '
                   f"uint32_t* e) {{ return zan::fe::vlist::render_null({ns}::r_{name}, c, i, l, e); }}")
    if selector:
        out.append(f'extern "C" int32_t {sel_fn(name)}(rsl_ctx_t c, rsl_ctx_id_t i, const char* t, char** p, '
                   f"const void* o, gx_do_vlist* l, int32_t s, uint32_t* e) "
                   f"{{ return zan::fe::vlist::select({ns}::r_{name}, c, i, t, p, o, l, s, e); }}")
    return out


def base_unit(cat, u, msgs):
    """Enumerations, flag sets and obj_type's extension groups."""
    ns = "zan::gen::vlist"
    for e in cat.enums.values():
        if e.library:
            continue
        u.body.append(f"constexpr const char* n_{e.name}[] = {{" + ", ".join(c_str(v) for v in e.values) + "};")
        levels = "nullptr"
        if e.extensions:
            level = {}   # a value listed by two groups is known from the lower level on
            for g in e.extensions:
                for v in g.values:
                    level[v] = min(level.get(v, g.level), g.level)
            u.body.append(f"constexpr uint8_t l_{e.name}[] = {{" + ", ".join(str(level.get(v, 0)) for v in e.values)
                          + "};")
            levels = f"l_{e.name}"
        variant = e.name in ("obj_type", "zan_cfg_union")
        mv = msgs.add(f"{e.name} Recieved variant %d < base version 0") if variant else "k_no_msg"
        u.imp(f"{e.name}_get_value", f"uint32_t {e.name}_get_value({CTX}, const void*, uint32_t*);")
        u.body.append(f"constexpr Enum m_{e.name}{{n_{e.name}, {levels}, {len(e.values)}, &{e.name}_get_value, "
                      f"{'true' if variant else 'false'}, {mv}}};")
        u.shims.append(f'extern "C" int32_t {sel_fn(e.name)}(rsl_ctx_t c, rsl_ctx_id_t i, const void* h, '
                       f"gx_do_vlist* l, int32_t d, int32_t p, uint32_t* e) "
                       f"{{ return zan::fe::vlist::render_enum({ns}::m_{e.name}, c, i, h, l, d, p, e); }}")
    for fs in cat.flagsets.values():
        u.body.append(f"constexpr const char* n_{fs.name}[] = {{" + ", ".join(c_str(v) for v in fs.bits) + "};")
        u.imp(f"{fs.name}_get_value", f"uint32_t {fs.name}_get_value({CTX}, const void*, uint32_t, uint32_t*);")
        u.body.append(f"constexpr Flags m_{fs.name}{{n_{fs.name}, {len(fs.bits)}, &{fs.name}_get_value}};")
        u.shims.append(f'extern "C" int32_t {sel_fn(fs.name)}(rsl_ctx_t c, rsl_ctx_id_t i, const void* h, '
                       f"gx_do_vlist* l, int32_t d, int32_t p, uint32_t* e) "
                       f"{{ return zan::fe::vlist::render_flags({ns}::m_{fs.name}, c, i, h, l, d, p, e); }}")
    # Row functions of the type vector: the row's fifth argument is not looked at.
    for n in [e.name for e in cat.enums.values() if not e.library] + list(cat.flagsets):
        u.shims.append(f'extern "C" int32_t {all_fn(n)}(rsl_ctx_t c, rsl_ctx_id_t i, const void* h, gx_do_vlist* l, '
                       f"int32_t, uint32_t* e) {{ return {sel_fn(n)}(c, i, h, l, 0, 1, e); }}")
    # obj_type's extension groups: one null per value, no caller.
    groups = cat.obj_type_groups()
    for g in groups:
        rows = [init({"name": c_str(v), "kind": "Kind::leaf",
                      "msg_null": msgs.add(f"{v} to_vlist_all:  set null failed for {v}for {v}")}) for v in g.values]
        u.body.append(f"constexpr Field f_{g.name}[] = {{\n    " + ",\n    ".join(rows) + "\n};")
        u.body.append(f"constexpr Type r_{g.name}{{f_{g.name}, {len(rows)}, nullptr, 0, false, "
                      + ", ".join(["k_no_msg"] * len(TYPE_MSGS)) + "};")
        u.shims.append(f'extern "C" int32_t {null_vlist_fn(g.name)}(rsl_ctx_t c, rsl_ctx_id_t i, gx_do_vlist* l, '
                       f"uint32_t* e) {{ return zan::fe::vlist::render_null({ns}::r_{g.name}, c, i, l, e); }}")
    return groups


def decls(cat, nulls, groups):
    seq_elements = sorted({f.type for r in cat.records.values() for f in r.fields
                           if f.kind == "array" and f.shape == "seq"})
    out = [head("schema/*.zs", "Entry points of the value-list family, declared once."),
           "#pragma once\n#include \"to_vlist_all.hpp\"\n", 'extern "C" {']
    for r in cat.record_order():
        out.append(SIG_ALL.format(all_fn(r.name)) + ";")
        out.append(SIG_SEL.format(sel_fn(r.name)) + ";")
        if r.name in nulls:
            out.append(SIG_NULL.format(null_vlist_fn(r.name)) + ";")
    for n in [e.name for e in cat.enums.values() if not e.library] + list(cat.flagsets):
        out.append(SIG_TYPED.format(sel_fn(n)) + ";")
        out.append(SIG_ALL.format(all_fn(n)) + ";")
    for g in groups:
        out.append(SIG_NULL.format(null_vlist_fn(g.name)) + ";")
    out.append("// Sequence elements: the paired-name family's.")
    for n in seq_elements:
        out.append(SIG_PAIRS.format(pairs_fn(n)) + ";")
    out.append("}\n")
    return "\n".join(out)


def files(cat):
    check(cat)
    msgs = Messages()
    nulls = cat.arm_types()
    units = {}
    for r in cat.record_order():
        u = units.setdefault(r.domain, Unit())
        with_null = r.name in nulls
        u.body += record(cat, r, msgs, u, with_null)
        u.shims += shims(r.name, with_null)
    groups = base_unit(cat, units.setdefault("base", Unit()), msgs)
    out = {"fe_vlist_decls.hpp": decls(cat, nulls, groups)}
    for name, u in sorted(units.items()):
        text = [head(sources(cat, name) or "schema/*.zs", f"Rendering to value lists of the {name} domain."),
                '#include "fe_vlist_decls.hpp"\n', 'extern "C" {', "// Imported from the database library."]
        text += [u.imports[k] for k in sorted(u.imports)]
        text.append("}\n")
        text.append("namespace zan::gen::vlist {\nusing namespace zan::fe::vlist;\n")
        text += u.body
        text.append("\n}  // namespace zan::gen::vlist\n")
        text += u.shims
        out[f"fe_vlist_{name}.cpp"] = "\n".join(text) + "\n"
    msg = [head("schema/*.zs", "Message table of the to_vlist_all unit (whole-type renderings and selectors), "
                "in the order the descriptors use them."),
           '#include "to_vlist_all.hpp"\n', "namespace zan::gen {",
           f"extern const uint32_t k_to_vlist_format_count = {len(msgs.formats)};",
           f"extern const char* const to_vlist_formats[{len(msgs.formats)}] = {{"]
    msg += [f"    {c_str(m)},  // {i}" for i, m in enumerate(msgs.formats)]
    msg.append("};\n}  // namespace zan::gen\n")
    out["fe_vlist_messages.cpp"] = "\n".join(msg)
    return out, type_rows(cat)


def type_rows(cat):
    """Function of each named type row in the to_vlist_all column."""
    rows = {}
    for s in cat.slots:
        if s.name:
            rows[s.name] = all_fn(s.name)   # records, enumerations and flag sets here; base types imported
    return rows

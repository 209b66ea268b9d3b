"""What the front end's rendering generators share (frontend.py's rendering to properties and
column description, fe_vlist.py, fe_nlist.py): the names of the families' entry points, the
text helpers, a unit's message table, the descriptor initialisers (those of the cores in
render/descriptor.hpp among them), the accessors a field descriptor imports from the
database library, and the writer of one per-domain file.
"""

GENERATOR = "gen/backends/frontend.py"
CTX = "rsl_ctx_t, rsl_ctx_id_t"

# Leaves of the schema library with a conversion of their own in every family; the first
# set's property conversions write a failure trace.
LEAF_TRACED = {"int32", "u_int32", "u_int8", "u_int16", "int16", "u_int64", "rsl_boolean"}
LEAF_CONV = LEAF_TRACED | {"rsl_vstring", "ip_address", "rsl_mac_addr"}


# ---------------------------------------------------------------------- names
def _suffixed(suffix):
    """Name of a family's entry point: the type's name and the family's suffix."""
    def name(type_name):
        return type_name + suffix
    return name


props_fn = _suffixed("_to_properties")
props_null_fn = _suffixed("_to_null_properties")
vlist_fn = _suffixed("_to_vlist")                 # selectors; leaves, enumerations, flag sets
vlist_all_fn = _suffixed("_to_vlist_all")
vlist_null_fn = _suffixed("_to_null_vlist")
pairs_fn = _suffixed("_to_nlist_vlist_all")       # paired names and values
pairs_null_fn = _suffixed("_to_null_nlist_vlist")
ntlist_fn = _suffixed("_to_ntlist")
columns_fn = _suffixed("_table_columns_to_ntlist")


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


class Messages:
    """A unit's message table, in the order the descriptors use the messages."""

    def __init__(self):
        self.formats = []

    def add(self, text):
        self.formats.append(text)
        return len(self.formats) - 1

    def table(self, unit, header, name, unit_name):
        """The unit's table file: k_<name>_format_count, <name>_formats and the trace unit
        k_<name>_unit, constant data from load on."""
        n = len(self.formats)
        out = [head("schema/*.zs", f"Message table of the {unit}, in the order the descriptors use them."),
               f'#include "{header}"\n', "namespace zan::gen {",
               f"extern const uint32_t k_{name}_format_count = {n};",
               f"extern const char* const {name}_formats[{n}] = {{"]
        out += [f"    {c_str(m)},  // {i}" for i, m in enumerate(self.formats)]
        out.append("};")
        out.append(f'extern constinit const lt_unit k_{name}_unit{{"{unit_name}", {n}, {name}_formats}};')
        out.append("}  // namespace zan::gen\n")
        return "\n".join(out)

    def extension(self, r, e):
        """The two debug traces of a record's extension: rendered as null, failed."""
        return (self.add(f"{r.name} version < {e.level} Rendering extension {e.name} as null.."),
                self.add(f"{r.name} error(%d) in rendering extension {e.name}"))


# ---------------------------------------------------------------------- descriptors
def field_word(f):
    """The word a field's conversion and traces are named by."""
    if f.kind in ("enum", "flags"):
        return f.type
    if f.kind == "array":
        return f.type if f.shape != "chars" else "var_string"
    return f.word


def default_of(f):
    """How a leaf's value is compared with its schema default; None: it has none."""
    if f.default is None:
        return None
    if f.name == "descriminator":
        return "Default::arm_one"
    if f.default.startswith('"'):
        return {"ip_address": "Default::ip_address", "rsl_vstring": "Default::rsl_vstring"}[f.word]
    return "Default::zero16" if f.word in ("int16", "u_int16") else "Default::zero"


def initialiser(d, order):
    """Brace initialiser of a descriptor: its members in order, each as given or its default."""
    return "{" + ", ".join(str(d.get(k, v)) for k, v in order) + "}"


# Members of FieldCore (render/descriptor.hpp), the part of a Field every family shares, with
# their defaults.
CORE_ORDER = (("kind", None), ("dflt", "Default::none"), ("arm", "0"), ("get", "{}"), ("state", "{}"),
              ("whole_state", "nullptr"), ("value", "nullptr"), ("next", "nullptr"), ("vconv", "nullptr"),
              ("msg", "k_no_msg"), ("msg_null", "k_no_msg"))


def field_initialiser(d, order):
    """Brace initialiser of a Field: the family's members in order, the core among them."""
    return initialiser({**d, "core": initialiser(d, CORE_ORDER)}, order)


def field_array(name, rows, comment=None):
    """A constant array of Field descriptors, one initialiser a line."""
    return ((f"// {comment}\n" if comment else "") + f"constexpr Field {name}[] = {{\n    "
            + ",\n    ".join(rows) + "\n};")


def typed_names(cat):
    """Names of the enumerations (the schema library's aside) and flag sets, in that order."""
    return [e.name for e in cat.enums.values() if not e.library] + list(cat.flagsets)


def extension_core(name, rows, msg_null, msg_error):
    """Initialiser of an ExtensionCore: the group's Field array x_<name> (none where it has no
    attributes), their count and the group's two traces."""
    return f"{{{'x_' + name if rows else 'nullptr'}, {len(rows)}, {msg_null}, {msg_error}}}"


def type_core(fields, count, name, exts, reads_variant, msg_variant):
    """Initialiser of a TypeCore: the Field array (None: none) and its length, the extensions
    e_<name> and their number, whether the variant is read, and the trace of a bad one."""
    return (f"{{{fields or 'nullptr'}, {count}, " + (f"e_{name}, {len(exts)}, " if exts else "nullptr, 0, ")
            + f"{'true' if reads_variant else 'false'}, {msg_variant}}}")


# Shapes of the database accessors a descriptor imports.
GET = f"const void* {{}}({CTX}, const void*, uint32_t*);"
GET_ELEMENT = f"const void* {{}}({CTX}, const void*, uint32_t, uint32_t*);"
GET_NEXT = f"const void* {{}}({CTX}, const void*, const void*, uint32_t*);"
GET_CHARS = f"void {{}}({CTX}, const void*, char*, uint32_t, uint32_t*);"
STATE = f"uint8_t {{}}({CTX}, const void*, uint32_t*);"
STATE_ELEMENT = f"uint8_t {{}}({CTX}, const void*, uint32_t, uint32_t*);"
VALUE = f"uint32_t {{}}({CTX}, const void*, uint32_t*);"
BIT = f"uint32_t {{}}({CTX}, const void*, uint32_t, uint32_t*);"


class Units(dict):
    """The files of one family, by domain, each made on first use."""

    def __missing__(self, domain):
        u = self[domain] = Unit()
        return u


class Unit:
    """What one generated file of a domain collects: the accessors it imports, the entry points
    it declares, its descriptors and its entry points."""

    def __init__(self):
        self.imports = {}
        self.decls = {}
        self.defined = []
        self.body = []
        self.shims = []

    def imp(self, name, shape):
        """Imports a database accessor; its address as a descriptor holds it."""
        self.imports[name] = shape.format(name)
        return f"&{name}"

    def access(self, r, f):
        """The members of a field descriptor that read the field, the same in every family: kind,
        accessors, state flags, value, bound or arm number, default comparison. The kind is
        Kind::arm, nested, sequence, fixed_array, counted_array, chars, discriminator, typed
        (enumerations and flag sets) or leaf; a family names its own where it differs."""
        t, acc = r.name, f"{r.name}_{f.name}"
        if f.kind == "nested":
            d = {"kind": "Kind::arm" if f.arm else "Kind::nested", "get": f"{{.one = {self.imp(acc + '_get', GET)}}}"}
            if f.arm:
                d.update(arm=str(f.arm), value=self.imp(f"{t}_descriminator_get_value", VALUE))
            return d
        if f.kind == "array" and f.shape == "seq":
            return {"kind": "Kind::sequence", "get": f"{{.one = {self.imp(acc + '_get_first', GET)}}}",
                    "next": self.imp(acc + "_get_next", GET_NEXT),
                    "state": f"{{.one = {self.imp(acc + '_state_flag_get', STATE)}}}"}
        if f.kind == "array" and f.shape in ("fixed", "counted"):
            d = {"kind": f"Kind::{f.shape}_array",
                 "get": f"{{.element = {self.imp(acc + '_get', GET_ELEMENT)}}}",
                 "state": f"{{.element = {self.imp(acc + '_state_flag_get', STATE_ELEMENT)}}}",
                 "whole_state": self.imp(acc + "_state_flag_whole_get", STATE)}
            if f.shape == "counted":
                d["value"] = self.imp(f"{t}_{f.bound}_get_value", VALUE)
                d["arm"] = "0xffffu /* count: low 16 bits */" if f.bound_bits == 16 else "0xffffffffu /* count */"
            else:
                d["arm"] = f"{f.bound} /* bound */"
            return d
        d = {"state": f"{{.one = {self.imp(acc + '_state_flag_get', STATE)}}}"}
        if f.kind == "array":   # character array
            d.update(kind="Kind::chars", get=f"{{.chars = {self.imp(acc + '_get', GET_CHARS)}}}")
            if not f.bound.isdigit():
                d["value"] = self.imp(f"{t}_{f.bound}_get_value", VALUE)
            return d
        disc = f.name == "descriminator"
        typed = f.kind in ("enum", "flags")
        d.update(kind="Kind::discriminator" if disc else ("Kind::typed" if typed else "Kind::leaf"),
                 get=f"{{.one = {self.imp(acc + '_get', GET)}}}")
        if f.default is not None:
            d["dflt"] = default_of(f)
            if not f.default.startswith('"'):
                d["value"] = self.imp(acc + "_get_value", VALUE)
        return d

    def enumeration(self, e, msgs, gated=False):
        """An enumeration's Enum descriptor m_<enum> and its value texts n_<enum>. Where the
        family gates values by extension level, the values' levels l_<enum> (none where all are
        at the base level)."""
        self.body.append(f"constexpr const char* n_{e.name}[] = {{" + ", ".join(c_str(v) for v in e.values) + "};")
        gate = "nullptr, "
        if gated and e.extensions:
            level = {}   # a value listed by two groups is known from the lower level on
            for g in e.extensions:
                for v in g.values:
                    level[v] = min(level.get(v, g.level), g.level)
            self.body.append(f"constexpr uint8_t l_{e.name}[] = {{" + ", ".join(str(level.get(v, 0)) for v in e.values)
                             + "};")
            gate = f"l_{e.name}, "
        variant = e.name in ("obj_type", "zan_cfg_union")
        mv = msgs.add(f"{e.name} Recieved variant %d < base version 0") if variant else "k_no_msg"
        get = self.imp(f"{e.name}_get_value", VALUE)
        self.body.append(f"constexpr Enum m_{e.name}{{n_{e.name}, {gate}{len(e.values)}, {get}, "
                         f"{'true' if variant else 'false'}, {mv}}};")

    def flags(self, fs):
        """A flag set's Flags descriptor m_<flags> and its bit texts n_<flags>."""
        self.body.append(f"constexpr const char* n_{fs.name}[] = {{" + ", ".join(c_str(v) for v in fs.bits) + "};")
        get = self.imp(f"{fs.name}_get_value", BIT)
        self.body.append(f"constexpr Flags m_{fs.name}{{n_{fs.name}, {len(fs.bits)}, {get}}};")

    def typed(self, cat, msgs, shim, gated=False):
        """The descriptors of the enumerations (the schema library's aside) and flag sets, each
        with its entry point shim(template, name): render_enum or render_flags over m_<name>."""
        for e in cat.enums.values():
            if not e.library:
                self.enumeration(e, msgs, gated)
                self.shims.append(shim("render_enum", e.name))
        for fs in cat.flagsets.values():
            self.flags(fs)
            self.shims.append(shim("render_flags", fs.name))

    def file(self, cat, domain, what, include, ns, entry_points=None, comment=None):
        """The domain's file: imports and declarations, descriptors in namespace zan::gen::<ns>,
        entry points into the templates of zan::fe::<ns>."""
        text = [head(sources(cat, domain) or "schema/*.zs", f"{what} of the {domain} domain."),
                include + "\n", 'extern "C" {', "// Imported from the database library."]
        text += [self.imports[k] for k in sorted(self.imports)]
        if entry_points is not None:
            text.append(comment)
            text += [p + ";" for p in entry_points]
        text.append("}\n")
        text.append(f"namespace zan::gen::{ns} {{\nusing namespace zan::fe::{ns};\n")
        text += self.body
        text.append(f"\n}}  // namespace zan::gen::{ns}\n")
        text += self.shims
        return "\n".join(text) + "\n"

#include "harness.hpp"

#include "zan/config.hpp"

#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>

namespace fe_test {

void* library() {
    static void* handle = [] {
        void* h = dlopen(ZAN_FE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (h == nullptr) throw std::runtime_error(std::string("dlopen: ") + dlerror());
        return h;
    }();
    return handle;
}

void* symbol(const char* name) {
    void* p = dlsym(library(), name);
    if (p == nullptr) ADD_FAILURE() << "libzanfe.so has no " << name;
    return p;
}

void* internal(const std::string& name) {
    static const std::map<std::string, uint64_t> functions = [] {
        std::map<std::string, uint64_t> out;
        for (const ElfSymbol& s : read_elf(ZAN_FE_LIBRARY).symtab)
            if (s.type == STT_FUNC && !s.section.empty() && s.value != 0) out.emplace(s.name, s.value);
        return out;
    }();
    static const uintptr_t base = [] {
        Dl_info info{};
        if (dladdr(symbol(ZAN_FE_INIT_SYMBOL), &info) == 0) throw std::runtime_error("dladdr failed");
        return reinterpret_cast<uintptr_t>(info.dli_fbase);
    }();
    auto it = functions.find(name);
    return it == functions.end() ? nullptr : reinterpret_cast<void*>(base + it->second);
}

const zan_gx_table_row& table_row(const std::string& table) {
    init();
    return static_cast<const zan_gx_table_row*>(registered().gx_dispatch)[expect().table(table).row];
}

zan_type_to_properties_fn type_row(const std::string& type) {
    init();
    const auto* rows = static_cast<const zan_gx_type_props_row*>(registered().type_gx_lut);
    for (const TypeRow& t : expect().types)
        if (t.name == type) return rows[t.row].to_properties;
    ADD_FAILURE() << "no type row " << type;
    return nullptr;
}

std::vector<std::string> names_of(gx_do_properties* props) {
    std::vector<std::string> out;
    for (const zan::plat::NamedValue& nv : zan::plat::properties_items(props)) out.push_back(nv.name);
    return out;
}

const std::set<std::string>& arm_types() {
    static const std::set<std::string> types = [] {
        std::set<std::string> out;
        std::function<void(const zan::db::TypeInfo&)> visit = [&](const zan::db::TypeInfo& t) {
            if (!out.insert(std::string(t.name)).second) return;
            for (const zan::db::FieldInfo& f : t.fields)
                if (f.role == zan::db::FieldRole::attribute && f.kind == zan::db::FieldKind::nested) visit(*f.target);
        };
        for (const RecordRow& r : expect().records)
            for (const zan::db::FieldInfo& f : zan::db::type_info(r.name)->fields)
                if (f.arm != 0) visit(*f.target);
        return out;
    }();
    return types;
}

const zan::db::Store& default_store() {
    static const zan::db::Store* s = [] {
        library();
        auto loaded = zan::config::load_default();
        if (!loaded) throw std::runtime_error(loaded.error);
        return loaded.store.release();
    }();
    return *s;
}

int32_t init() {
    zan::plat::registration_reset();
    return fn<zan_fe_init_fn>(ZAN_FE_INIT_SYMBOL)();
}

const zan::plat::Registration& registered() {
    const zan::plat::Registration* r = zan::plat::registration(ZAN_CONTEXT_NAME);
    if (r == nullptr) throw std::runtime_error("the front end registered nothing");
    return *r;
}

namespace {
Expect load_expect() {
    Expect e;
    std::ifstream in(ZAN_FE_EXPECT);
    if (!in) throw std::runtime_error("cannot read " ZAN_FE_EXPECT);
    std::string line;
    auto opt = [](const std::string& s) { return s == "-" ? std::string() : s; };
    while (std::getline(in, line)) {
        std::istringstream ls(line);
        std::string what;
        ls >> what;
        if (what == "export") {
            std::string n;
            ls >> n;
            e.exports.push_back(n);
        } else if (what == "table") {
            TableRow t;
            size_t n;
            ls >> t.row >> t.name >> n;
            t.name = opt(t.name);
            e.tables.push_back(t);
        } else if (what == "column") {
            Column c;
            ls >> c.code >> c.depth >> c.owner >> c.name >> c.attribute;
            e.tables.back().columns.push_back(c);
        } else if (what == "order") {
            ls >> e.tables.back().order;
        } else if (what == "key") {
            TableRow& t = e.tables.back();
            ls >> t.key_record;
            for (KeyEntry k; ls >> k.name >> k.word;) t.key.push_back(k);
        } else if (what == "type") {
            TypeRow t;
            ls >> t.row >> t.name >> t.category >> t.kind_props >> t.kind_vlist;
            t.name = opt(t.name);
            t.category = opt(t.category);
            e.types.push_back(t);
        } else if (what == "group") {
            Group g;
            ls >> g.name;
            for (std::string v; ls >> v;) g.values.push_back(v);
            e.groups.push_back(std::move(g));
        } else if (what == "record") {
            RecordRow r;
            ls >> r.ordinal >> r.name >> r.columns;
            e.records.push_back(r);
        }
    }
    return e;
}
}  // namespace

const Expect& expect() {
    static const Expect e = load_expect();
    return e;
}

const TableRow& Expect::table(const std::string& name) const {
    for (const TableRow& t : tables)
        if (t.name == name) return t;
    throw std::runtime_error("no table " + name);
}

const RecordRow& Expect::record(const std::string& name) const {
    for (const RecordRow& r : records)
        if (r.name == name) return r;
    throw std::runtime_error("no record " + name);
}

std::vector<std::string> texts(const zan::plat::TraceCapture& traces) {
    std::vector<std::string> out;
    for (const auto& r : traces.records()) out.push_back(r.text);
    return out;
}

Failed failing(const char* point, long nth, const std::function<int32_t()>& call) {
    zan::plat::TraceCapture traces;
    zan::plat::fault_fail_nth(point, nth);
    Failed f{call(), texts(traces)};
    if (!traces.records().empty()) f.level = traces.records().back().level;
    zan::plat::fault_clear_all();
    return f;
}

void fatal_traces_to_stderr() {
    zan::plat::trace_set_sink([](const zan::plat::TraceRecord& r) {
        if (r.level == 0) std::fprintf(stderr, "[%s]\n", r.text.c_str());
    });
}

void for_each_discriminator(const std::function<void(zan::db::Record&, uint32_t value)>& check) {
    for (uint32_t value : {0u, 1u, 2u, 3u, 22u}) {
        SCOPED_TRACE(value);
        zan::db::RecordPtr rec = zan::db::make_record("ntp_peer_cp");
        zan::db::set_int(*rec, "descriminator", value);
        check(*rec, value);
    }
}

void for_each_state_flag(const std::function<void(zan::db::Record&, bool present, bool is_default)>& check) {
    struct Case {
        uint8_t flag;
        bool present, is_default;
    };
    for (const Case c : {Case{0, false, false}, Case{1, true, true}, Case{2, true, false}, Case{3, true, true},
                         Case{4, false, false}}) {
        SCOPED_TRACE(int(c.flag));
        zan::db::RecordPtr rec = zan::db::make_record("ntp_maxdistance_cp");
        zan::db::set_int(*rec, "ntp_mdist_value_1", 5);
        zan::db::set_state(*rec, "ntp_mdist_value_1", c.flag);
        check(*rec, c.present, c.is_default);
    }
}

void for_each_default_case(
    const std::function<void(zan::db::Record&, const std::string& leaf, bool is_default)>& check) {
    for (int64_t value : {0, 1}) {
        for (int32_t variant : {0, -1}) {
            SCOPED_TRACE(std::to_string(value) + "/" + std::to_string(variant));
            zan::db::set_default_variant(nullptr, variant);
            zan::db::RecordPtr rec = zan::db::make_record("ntp_peer_cp_0_cp");
            const std::string leaf(zan::db::type_info("ntp_peer_cp_0_cp")->fields.at(0).name);
            zan::db::set_int(*rec, leaf, value);
            check(*rec, leaf, value == 0 && variant >= 0);
        }
    }
}

void PropsTest::TearDown() {
    zan::plat::properties_deref(props);
    zan::plat::fault_clear_all();
    zan::db::clear_default_variants();
    EXPECT_EQ(zan::plat::live_objects().vlist, 0) << "a list was not released";
}

void PropsTest::fresh() {
    zan::plat::properties_deref(props);
    props = zan::plat::properties_new();
}

const zan::plat::Value& PropsTest::at(const std::string& name) {
    if (const zan::plat::Value* v = zan::plat::properties_get(props, name)) return *v;
    ADD_FAILURE() << name << " not set";
    static const zan::plat::Value none;
    return none;
}

int32_t PropsTest::render(const std::string& type, const zan::db::Record& rec, const char* prefix,
                          int32_t with_state) {
    return type_row(type)(nullptr, 0, prefix, props, &rec, with_state, &err);
}

std::string Elf::bytes_at(uint64_t vaddr, uint64_t size) const {
    for (const Section& s : sections)
        if (s.type != SHT_NOBITS && s.addr != 0 && vaddr >= s.addr && vaddr + size <= s.addr + s.size)
            return std::string(reinterpret_cast<const char*>(file.data()) + s.offset + (vaddr - s.addr), size);
    throw std::runtime_error("address outside the file's sections");
}

Elf read_elf(const std::string& path) {
    Elf elf;
    std::ifstream in(path, std::ios::binary);
    elf.file.assign(std::istreambuf_iterator<char>(in), {});
    const auto& f = elf.file;
    if (f.size() < sizeof(Elf64_Ehdr) || std::memcmp(f.data(), ELFMAG, SELFMAG) != 0 || f[EI_CLASS] != ELFCLASS64)
        throw std::runtime_error(path + " is no ELF64 file");
    auto at = [&](uint64_t off, uint64_t size) {
        if (off + size > f.size()) throw std::runtime_error("ELF table beyond the end of " + path);
        return f.data() + off;
    };
    Elf64_Ehdr eh;
    std::memcpy(&eh, f.data(), sizeof eh);
    std::vector<Elf64_Shdr> sh(eh.e_shnum);
    std::memcpy(sh.data(), at(eh.e_shoff, sizeof(Elf64_Shdr) * eh.e_shnum), sizeof(Elf64_Shdr) * eh.e_shnum);
    auto str = [&](const Elf64_Shdr& strtab, uint32_t off) {
        return std::string(reinterpret_cast<const char*>(at(strtab.sh_offset + off, 1)));
    };
    for (const Elf64_Shdr& s : sh)
        elf.sections.push_back({str(sh[eh.e_shstrndx], s.sh_name), s.sh_type, s.sh_addr, s.sh_offset, s.sh_size});
    for (const Elf64_Shdr& s : sh) {
        if (s.sh_type == SHT_DYNSYM || s.sh_type == SHT_SYMTAB) {
            auto& out = s.sh_type == SHT_DYNSYM ? elf.dynsym : elf.symtab;
            const size_t n = s.sh_size / sizeof(Elf64_Sym);
            for (size_t i = 1; i < n; ++i) {
                Elf64_Sym sym;
                std::memcpy(&sym, at(s.sh_offset + i * sizeof sym, sizeof sym), sizeof sym);
                std::string section = sym.st_shndx == SHN_UNDEF              ? ""
                                      : sym.st_shndx < elf.sections.size() ? elf.sections[sym.st_shndx].name
                                                                           : "?";
                out.push_back({str(sh[s.sh_link], sym.st_name), ELF64_ST_BIND(sym.st_info), ELF64_ST_TYPE(sym.st_info),
                               ELF64_ST_VISIBILITY(sym.st_other), section, sym.st_value, sym.st_size});
            }
        } else if (s.sh_type == SHT_DYNAMIC) {
            const size_t n = s.sh_size / sizeof(Elf64_Dyn);
            for (size_t i = 0; i < n; ++i) {
                Elf64_Dyn d;
                std::memcpy(&d, at(s.sh_offset + i * sizeof d, sizeof d), sizeof d);
                if (d.d_tag == DT_NEEDED) elf.needed.push_back(str(sh[s.sh_link], static_cast<uint32_t>(d.d_un.d_val)));
            }
        }
    }
    return elf;
}

}  // namespace fe_test

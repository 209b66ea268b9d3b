// What the front-end tests share: the library loaded the way an engine loads it, the
// expectations written from the catalogue, and a reader for the library's ELF tables.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zan/database.hpp"
#include "zan/platform.hpp"
#include "zan_fe.h"

namespace fe_test {

// libzanfe.so, opened once with RTLD_NOW; its undefined names resolve against the
// platform linked into this program.
void* library();
void* symbol(const char* name);   // from the library; fails the test when missing
template <class T>
T fn(const char* name) {
    return reinterpret_cast<T>(symbol(name));
}

// A function the library keeps inside (no export, no row of the arrays), found through the
// library file's symbol table at its place in the loaded image; nullptr when it has none.
void* internal(const std::string& name);
template <class T>
T internal_fn(const std::string& name) {   // fails the test when missing
    void* p = internal(name);
    if (p == nullptr) ADD_FAILURE() << "libzanfe.so defines no " << name;
    return reinterpret_cast<T>(p);
}

// The record types that can stand in a union's arm, directly or nested deeper: those that
// have null forms.
const std::set<std::string>& arm_types();

// The built-in configuration, loaded once (after the library) and kept.
const zan::db::Store& default_store();

// Resets the platform's registrations and calls the initialiser by name; answers its result.
int32_t init();
const zan::plat::Registration& registered();   // after init()

struct Column {
    uint32_t code;
    int depth;          // nesting level of the record that holds the leaf (1: row type)
    std::string owner;  // that record
    std::string name;
    std::string attribute;   // its name in a rendering to properties
};
struct KeyEntry {
    std::string name, word;
};
struct TableRow {
    int row;
    int order = -1;                 // place in the catalogue's table order
    std::string name;   // empty for an empty row
    std::vector<Column> columns;
    size_t key_record = 0;          // the row record that holds the key
    std::vector<KeyEntry> key;      // the key's entries, in the order they are delivered
};
struct TypeRow {
    int row;
    std::string name;      // empty for an empty row
    std::string category;  // record, library, enum, flags; empty for an empty row
    uint32_t kind_props, kind_vlist;
};
struct RecordRow {
    int ordinal;
    std::string name;
    size_t columns;
};
struct Group {          // an extension group of obj_type and its values
    std::string name;
    std::vector<std::string> values;
};
struct Expect {
    std::vector<std::string> exports;
    std::vector<Group> groups;
    std::vector<TableRow> tables;
    std::vector<TypeRow> types;
    std::vector<RecordRow> records;
    const TableRow& table(const std::string& name) const;
    const RecordRow& record(const std::string& name) const;
};
const Expect& expect();

// Rows of the registered vectors, after init().
const zan_gx_table_row& table_row(const std::string& table);        // zan_config_db_fe_gx_dispatch_vft
zan_type_to_properties_fn type_row(const std::string& type);          // zan_config_db_type_gx_lut
// Attribute names of a properties object, in delivery order.
std::vector<std::string> names_of(gx_do_properties* props);

// A column list filled by one call, freed with the object.
struct Ntlist {
    arbor_ntlist* list = zan::plat::ntlist_new();
    Ntlist() = default;
    Ntlist(const Ntlist&) = delete;
    Ntlist& operator=(const Ntlist&) = delete;
    ~Ntlist() { zan::plat::ntlist_free(list); }
    const std::vector<zan::plat::NtEntry>& entries() const { return zan::plat::ntlist_entries(list); }
};

// Trace levels, null values and trace texts, as the renderings' tests read them.
constexpr uint32_t k_error_level = 0x3000000;
constexpr uint32_t k_debug_level = 0x7000000;
inline bool is_null(const zan::plat::Value& v) { return std::holds_alternative<zan::plat::Null>(v.v); }
std::vector<std::string> texts(const zan::plat::TraceCapture& traces);
// `point` fails at its nth call from now while `call` runs: the call's answer, the traces it
// wrote and the last one's level. The fault is cleared after.
struct Failed {
    int32_t result;
    std::vector<std::string> traces;
    uint32_t level = 0;
};
Failed failing(const char* point, long nth, const std::function<int32_t()>& call);
// In a death test: fatal traces go to standard error as "[text]" before the abort.
void fatal_traces_to_stderr();

// Cases every rendering goes through the same way, each under a SCOPED_TRACE:
// ntp_peer_cp with its discriminator at 0, 1, 2, 3 and 22 (23 has no enumerator);
void for_each_discriminator(const std::function<void(zan::db::Record&, uint32_t value)>& check);
// ntp_maxdistance_cp with ntp_mdist_value_1 at 5 and its state flag at 0 to 4;
void for_each_state_flag(const std::function<void(zan::db::Record&, bool present, bool is_default)>& check);
// the first leaf of ntp_peer_cp_0_cp at 0 and 1 under default variants 0 and -1 (put back by
// zan::db::clear_default_variants()).
void for_each_default_case(
    const std::function<void(zan::db::Record&, const std::string& leaf, bool is_default)>& check);

// One properties object per test, released with it; faults and default variants are put
// back, and no value list may outlive the test.
class PropsTest : public ::testing::Test {
protected:
    gx_do_properties* props = zan::plat::properties_new();
    uint32_t err = 0;
    void TearDown() override;
    void fresh();
    const zan::plat::Value& at(const std::string& name);   // fails the test when not set
    // A record through its type row of zan_config_db_type_gx_lut.
    int32_t render(const std::string& type, const zan::db::Record& rec, const char* prefix = "",
                   int32_t with_state = 0);
};

// Symbols, dynamic entries and section contents of an ELF64 file.
struct ElfSymbol {
    std::string name;
    unsigned bind, type, visibility;
    std::string section;
    uint64_t value, size;
};
struct Elf {
    std::vector<ElfSymbol> dynsym, symtab;
    std::vector<std::string> needed;
    std::string bytes_at(uint64_t vaddr, uint64_t size) const;   // contents of an allocated section
    std::vector<uint8_t> file;
    struct Section {
        std::string name;
        uint32_t type;
        uint64_t addr, offset, size;
    };
    std::vector<Section> sections;
};
Elf read_elf(const std::string& path);

}  // namespace fe_test

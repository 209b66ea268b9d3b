// Reference platform, database side: the in-memory record store behind the database
// names the front end imports (names, identifiers, field vectors, record accessors), and
// the C++ interface through which the engine, the tool and the tests build rows and look
// at tables and types. Nothing in the front-end library includes this header.
//
// Catalogue. Every table position and every named type of the schema has an info record
// (TableInfo, TypeInfo), built once on first use from the generated descriptors and
// constant afterwards. Type rows keep the numbering of
// zan_config_db_type_dispatch_type_mrst_lookup, table rows that of
// zan_config_db_table_mrst_lookup. The empty rows of both numberings are reachable by the
// internal names unused_table_name(row) and unused_type_name(slot), which no table or
// type of this context uses.
//
// Identifiers (16 bytes each). Tables and types have the constants table_tbl_<x>_luid
// and type_<t>_luid. A field's identifier is derived from its type and name. The fields
// that the vectors answer for:
//   type vector zan_<t>_field_vft: the record's attributes (extension fields included) in
//     schema order with ids 1..n, then the count and length fields of its arrays, then
//     the child link fields of a parent row type; ids keep counting in that order.
//   table vector tbl_<x>_table_field_vft: each row type by its name (field id = place
//     among the row types from 1, identifier = type_<row>_luid), and the key field string
//     "key <row>_<key>" (single keys: id and identifier of that field of the row type) or
//     "key <key record>" (compound keys: id and identifier of the key record's row field).
//
// Value handles. `<t>_<f>_get` yields for a nested field the nested Record, and for a leaf,
// enumeration, flag set or array element a Cell; the typed objects of key conversion
// (make_typed, rsl_vstring_destroy, ...) are Cells too. rsl_get_instance_variant reads
// either. Leaf conversions read a handle through cell_of() or value_of().
//
// Variants. A record instance's variant starts at latest_variant(), the highest extension
// level of the catalogue, so every extension is rendered; set_variant changes it. A value
// cell answers its record's variant unless set_value_variant gave it one of its own. The
// variant is kept as a full 32-bit number and answered as it is: the front end uses the
// low 8 bits as a signed number. zan_config_defaults_default_get_variant answers what
// set_default_variant gave the context, 0 for any other.
//
// State flags. Every field (and every array element) has a state flag byte, 2 (set to a
// value of its own) unless set_state gave another.
//
// Stored key form, the bytes a query traversal carries and a row's key is compared by:
//   u_int8, u_int16, int16, u_int32, int32, u_int64: the value little-endian at its width;
//   rsl_vstring: the characters, no terminator;
//   ip_address: the family byte (4 or 6), then 4 or 16 address bytes;
//   rsl_mac_addr: the 6 bytes; rsl_boolean: one byte 0 or 1;
//   compound key record: its leaf fields (all of them key parts) in the record's field
//     order, each as above except that an rsl_vstring is preceded by its length as 4 bytes
//     little-endian.
//   A compound key's form does not depend on the order in which its parts were set.
//
// Key value conversion (arbor_fe_gx_rsltype_get_data, arbor_fe_gx_rsltype_get_rsl_obj):
// the key's value (a text, or a typed number or address) is read by the word of the field
// or library type the identifier names; the value flag changes nothing. The stored form
// comes in memory from the platform allocator (type "BYTE", under the pending call-site
// tag), the typed object from make_typed. A value that does not convert, an identifier of
// no value word, or a missing cell sets EINVAL (22) and yields nothing (data NULL, length
// 0, or NULL); a failed allocation sets ENOMEM (12). An error word already set is kept,
// and nothing is made.
//
// Accessor failures. An accessor given a handle that is not of its type, or an index out of
// range, yields nothing and sets the error word to EINVAL (22) or ERANGE (34); the fault
// point "accessor" makes it yield nothing with EIO (5). "get_field" fails a field lookup
// the same way (identifier left NULL). An error word that is already set is never changed.
//
// Key records of compound keys (<k>_create, <k>_<f>_set, <k>_len, <k>_marshal,
// <k>_destroy): <k>_create takes its memory from the platform allocator under the pending
// call-site tag (so an allocation fault makes it answer NULL). A setter copies a typed
// object of the field's word (EINVAL otherwise, and for NULL); setters and marshal are
// accessors for fault injection; marshal into too small a buffer writes nothing, answers 0
// and sets ENOSPC (28).
//
// Threads. Lookups may run on any thread at any time. Records, rows and stores are built
// and changed by one thread; once built, any number of threads may read them (through
// accessors or this interface) as long as nobody changes them meanwhile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "traversal.h"
#include "zan/db_kinds.hpp"
#include "zan/platform.hpp"

namespace zan::db {

std::string_view word_name(Word w);          // "u_int32", ...; "enum", "flags", "char"
std::optional<Word> word_from_name(std::string_view name);
bool is_integer(Word w);                     // the six integer words

struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// ---------------------------------------------------------------- catalogue
struct TypeInfo;

struct FieldInfo {
    std::string_view name;
    uint32_t id = 0;                     // as the type's field vector answers it
    const uint8_t* luid = nullptr;       // 16 bytes
    FieldRole role = FieldRole::attribute;
    FieldKind kind = FieldKind::leaf;    // bound fields: leaf u_int32; link fields: leaf u_int32
    Word word = Word::none;              // leaf word, array element word
    std::string_view type;               // nested record, enumeration, flag set, sequence element
    const TypeInfo* target = nullptr;    // that type, resolved
    uint8_t arm = 0;                     // union arm number from 1
    uint8_t level = 0;                   // extension level, 0 for a base field
    uint32_t bound = 0;                  // size of a fixed array or fixed character array
    std::string_view bound_field;        // count or length field of the array
    const TypeInfo* owner = nullptr;
};

struct TypeInfo {
    std::string_view name;               // the bare name (type_<t>_name's text)
    int slot = -1;                       // row of the type numbering
    Category category = Category::record;
    int kind = 1;                        // class in zan_config_db_type_gx_lut: 1 to 4
    bool base = false;                   // record owned by the schema library
    std::string_view domain;             // catalogue domain of a record
    const uint8_t* luid = nullptr;       // type_<t>_luid
    const zan_field_vft* vft = nullptr;  // zan_<t>_field_vft
    std::vector<FieldInfo> fields;       // attributes, then bound fields, then link fields
    std::vector<std::string_view> values;   // enumerators from 0, or flag bits from bit 0
    std::vector<uint8_t> value_levels;      // extension level of each enumerator (0: base)

    const FieldInfo* field(std::string_view name) const;   // any role; nullptr if none
    bool is_union() const;
    std::optional<uint32_t> value_of(std::string_view enumerator) const;
};

struct TableInfo {
    std::string_view name;               // position name (a second entrance keeps its _b)
    int row = -1;                        // table row; -1 for a second entrance
    std::string_view segment;
    std::vector<std::string_view> path;  // segments from the root down to this one
    std::string_view domain;
    uint8_t pq[16] = {};                 // path-query identifier of the position
    bool second_entrance = false;
    const TableInfo* table = nullptr;    // the table whose rows, key and identifier it uses
    const TableInfo* parent = nullptr;   // parent position, nullptr at the root
    std::string_view link_field;         // child link field in the parent row type, or empty
    std::vector<const TableInfo*> children;
    // Of the table (for a second entrance: copied from the entered table).
    const uint8_t* luid = nullptr;       // table_tbl_<x>_luid
    const zan_field_vft* vft = nullptr;  // tbl_<x>_table_field_vft
    std::vector<const TypeInfo*> rows;   // row types, the top records of a row
    KeyKind key_kind = KeyKind::singleton;
    std::string_view key_name;           // key field, or the key record of a compound key
    Word key_word = Word::none;          // single and singleton keys
    std::vector<const FieldInfo*> key_parts;   // compound: parts in search order
    std::string key_field;               // the string the key field is looked up by
    uint32_t key_field_id = 0;
    const uint8_t* key_luid = nullptr;
    const TypeInfo* key_type = nullptr;  // record holding the key: row type or key record
};

const TableInfo* table_info(std::string_view position);   // tables and second entrances
const TypeInfo* type_info(std::string_view name);         // every named type
std::span<const TableInfo* const> positions();             // all 331, in traverser order
std::span<const TableInfo* const> tables();                // the 329 tables, in row order
std::span<const TypeInfo* const> types();                  // the 1058 named types, in slot order
int table_row_count();                                     // 331
int type_slot_count();                                     // 1129
const TableInfo* table_at(int row);                        // nullptr for an empty row
const TypeInfo* type_at(int slot);                         // nullptr for an empty slot
std::string unused_table_name(int row);                    // name of an empty table row
std::string unused_type_name(int slot);                    // name of an empty type slot
int32_t latest_variant();

// What a 16-byte identifier names. At most one of table and type is set; field is set for a
// field identifier, together with its owner type.
struct LuidTarget {
    const TableInfo* table = nullptr;
    const TypeInfo* type = nullptr;
    const FieldInfo* field = nullptr;
    explicit operator bool() const { return table || type || field; }
};
LuidTarget find_luid(const uint8_t* luid);
const TableInfo* position_by_pq(const uint8_t* pq);
// Word of the value stored under an identifier: a field's word, or the word a library
// type stands for (type_rsl_vstring_luid: rsl_vstring, ...). Word::none otherwise.
Word word_of_luid(const uint8_t* luid);

// ---------------------------------------------------------------- values
class Record;

// A value: a leaf, an enumeration value, a flag set, an array element or a typed object.
struct Cell {
    static constexpr uint32_t k_magic = 0x7a63656cu;
    uint32_t magic = k_magic;
    Word word = Word::none;
    uint8_t state = 2;                   // state flag byte
    bool own_variant = false;
    int32_t variant = 0;                 // when own_variant
    const Record* owner = nullptr;       // nullptr for a typed object
    union Num {
        uint8_t u8;
        uint16_t u16;
        int16_t i16;
        uint32_t u32;                    // u_int32, enumeration value, flag bits, boolean
        int32_t i32;
        uint64_t u64;
    };
    // The value by its word: a number, an address or a MAC address share the place. A cell
    // of an address is made holding plat::Ip{} (clear_value).
    union {
        Num num;
        plat::Ip ip;
        plat::Mac mac;
    };
    std::string text;                    // rsl_vstring, or the characters of a character array

    Cell() : num{} {}
    // The empty value of word w (every word reads zero or empty; an address 0.0.0.0).
    void clear_value(Word w) {
        if (w == Word::ip_address) ip = plat::Ip{};
        else num = Num{};
    }
};
const Cell* cell_of(const void* handle);    // nullptr if the handle is no value
// The value as the data objects hold it: integers as int64_t or uint64_t (by signedness),
// rsl_vstring as std::string, ip_address as Ip, rsl_mac_addr as Mac, rsl_boolean as bool,
// enumeration values and flag bits as uint64_t. The leaf word is set. nullopt: no value.
std::optional<plat::Value> value_of(const void* handle);
int32_t instance_variant(const void* handle);   // what rsl_get_instance_variant answers

// Typed objects for compound keys, released with rsl_vstring_destroy, ip_address_destroy,
// int32_destroy (or destroy_typed). make_typed parses text by word; nullptr if it does not
// parse or the word has no typed object.
void* make_typed(Word w, std::string_view text);
void* make_typed_vstring(std::string_view text);
void* make_typed_ip(const plat::Ip& ip);
void* make_typed_int32(int32_t v);
void destroy_typed(void* obj);

// Stored key forms.
std::vector<uint8_t> key_bytes(const Cell& value);
std::optional<std::vector<uint8_t>> key_bytes(Word w, std::string_view text);   // nullopt: text does not parse
std::vector<uint8_t> key_bytes(const Record& key_record);   // compound form

// ---------------------------------------------------------------- records
struct RecordDeleter {
    void operator()(Record* r) const;
};
using RecordPtr = std::unique_ptr<Record, RecordDeleter>;

// A new instance of a record type: every value zero or empty, every state flag 2, the
// variant latest_variant(). Its nested records (union arms included) answer the same; they
// take memory only once something is written into them, and a handle to one stays valid as
// long as the record (the non-const `nested` makes one).
RecordPtr make_record(std::string_view type);
const TypeInfo& type_of(const Record& r);

// Paths name fields from the record down: "compound_0.peer_or_server.descriminator". A
// sequence element is "field[i]". The last name may be a count or length field. Every
// function below throws Error naming the path if it does not fit the record.
Record& nested(Record& r, std::string_view path);
const Record& nested(const Record& r, std::string_view path);
const void* handle(const Record& r, std::string_view path);   // what <t>_<f>_get yields

void set_int(Record& r, std::string_view path, int64_t v);     // integers, enum, flags bits, boolean, count, length
void set_u64(Record& r, std::string_view path, uint64_t v);
void set_text(Record& r, std::string_view path, std::string_view text);   // rsl_vstring; chars (sets the length)
void set_ip(Record& r, std::string_view path, const plat::Ip& ip);
void set_ip(Record& r, std::string_view path, std::string_view text);
void set_mac(Record& r, std::string_view path, const plat::Mac& mac);
void set_bool(Record& r, std::string_view path, bool v);
void set_enum(Record& r, std::string_view path, std::string_view enumerator);
void set_flags(Record& r, std::string_view path, const std::vector<std::string_view>& bits);
void set_array(Record& r, std::string_view path, const std::vector<uint64_t>& elements);   // counted: sets the count
Record& append(Record& r, std::string_view path);                // a new element at the end of a sequence
// Sets any leaf (or array, as "[a, b]") from text in the form the tool reads.
void set_from_text(Record& r, std::string_view path, std::string_view text);

int64_t get_int(const Record& r, std::string_view path);
uint64_t get_u64(const Record& r, std::string_view path);
std::string get_text(const Record& r, std::string_view path);
plat::Ip get_ip(const Record& r, std::string_view path);
plat::Mac get_mac(const Record& r, std::string_view path);
std::vector<uint64_t> get_array(const Record& r, std::string_view path);
size_t sequence_size(const Record& r, std::string_view path);

void set_state(Record& r, std::string_view path, uint8_t flag);   // whole array / sequence too
void set_element_state(Record& r, std::string_view path, size_t index, uint8_t flag);
uint8_t get_state(const Record& r, std::string_view path);
void set_variant(Record& r, int32_t variant, bool with_nested = false);
int32_t get_variant(const Record& r);
void set_value_variant(Record& r, std::string_view path, int32_t variant);

// ---------------------------------------------------------------- rows
class Row;
struct RowDeleter {
    void operator()(Row* r) const;
};
using RowPtr = std::unique_ptr<Row, RowDeleter>;

// A row of a table (a second entrance's name gives a row of its table), holding fresh top
// records of the table's row types.
RowPtr make_row(std::string_view table);
const TableInfo& table_of(const Row& row);
Record* row_record(Row& row, size_t index = 0);          // nullptr once dropped
const Record* row_record(const Row& row, size_t index = 0);
void drop_row_record(Row& row, size_t index);            // tbl_<x>_<row>_get_field then yields nothing
void set_parent(Row& row, const Row* parent);
const Row* parent_of(const Row& row);
std::vector<uint8_t> row_key(const Row& row);             // the stored key form of its key

// Rows by table, for the engine.
class Store {
public:
    Store();
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    Row& add(std::string_view table, const Row* parent = nullptr);
    std::span<Row* const> rows(const TableInfo& table) const;
    // The row of the table under the parent (nullptr: any parent) whose key has these bytes.
    const Row* find(const TableInfo& table, const Row* parent, std::span<const uint8_t> key) const;
    // The rows of the table whose parent is `parent` (nullptr: the rows without a parent),
    // in the order they were added.
    std::vector<const Row*> rows_under(const TableInfo& table, const Row* parent) const;
    // The same through the indexes, in the order added: the rows under `parent`, and the
    // rows whose key has these bytes under any parent or under `parent`. A lookup costs the
    // rows it answers, whatever the table's size, once the table's index is built; lookups
    // build it on first use after a change of keys, rows or parents.
    std::vector<const Row*> children(const TableInfo& table, const Row* parent) const;
    std::vector<const Row*> with_key(const TableInfo& table, std::span<const uint8_t> key) const;
    std::vector<const Row*> with_key_under(const TableInfo& table, const Row* parent,
                                           std::span<const uint8_t> key) const;
    // Place of a row among the rows of its table, in the order added.
    static size_t order_of(const Row& row);
    size_t size() const;                // rows
    // Records that stand in no table, by record type (the schema library's own records,
    // such as om_node), for whoever renders a value of a type rather than a row.
    Record& add_record(std::string_view type);   // a fresh record as make_record gives it
    std::span<Record* const> records(std::string_view type) const;   // in the order added
    std::vector<std::string_view> record_types() const;              // types with records, by name
    void clear();                       // rows and records
    void swap(Store& other) noexcept;   // exchanges all rows; rows keep their addresses

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// ---------------------------------------------------------------- contexts and accounting
void set_default_variant(rsl_ctx_t ctx, int32_t variant);
void clear_default_variants();

struct LiveCounts {
    long records = 0;        // record instances, nested ones and key records included
    long rows = 0;
    long typed = 0;          // typed objects not yet destroyed
    long key_records = 0;    // made by <k>_create, not yet destroyed by <k>_destroy
    long bad_handles = 0;    // accessor calls given a handle not of their type (since start)
    long bad_releases = 0;   // destroy calls given an object not of their kind (since start)
    long key_compares = 0;   // stored keys compared by the stores' lookups, or made by row_key (since start)
};
LiveCounts live_counts();

// What the key conversions and the key record setters were given, on this thread, since the
// last clear: the value flag of each arbor_fe_gx_rsltype_get_data and
// arbor_fe_gx_rsltype_get_rsl_obj call, and the call-site tag pending at each <k>_<f>_set
// (which the setter spends, as an allocation would), with the field's name.
struct KeyCalls {
    std::vector<uint32_t> data_flags, obj_flags;
    std::vector<std::pair<std::string, uint32_t>> set_tags;
};
const KeyCalls& key_calls();
void key_calls_clear();

// Counts and lengths of arrays as <type>_<count>_get_value answers them: while a script is
// set on this thread each read answers its next number; once used up, the stored count.
void bound_script(std::vector<uint32_t> answers);

}  // namespace zan::db

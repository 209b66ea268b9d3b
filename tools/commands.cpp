#include "commands.hpp"

#include <cstdio>
#include <cstring>
#include <unordered_set>

#include "places.hpp"

namespace zanfe {

using zan::engine::ColumnResult;
using zan::engine::TableRow;

std::span<const Command> commands() {
    static const std::vector<Command> list{
        {{"tables", "", "list the rows of the table arrays: row, table, path, key", {}}, cmd_tables},
        {{"types", "", "list the rows of the type arrays: row, type", {}}, cmd_types},
        {{"columns", "[TABLE...]", "column names and type codes of the tables (default: all, in row order)",
          {{"--json", "", "one JSON object: {\"tbl_x\": [[\"column\", code], ...], ...}"}}},
         cmd_columns},
        {{"resolve", "PATH", "resolve a path through the registered dispatcher and walk it over the configuration",
          {{"--kind", "N", "request kind handed to the dispatcher (default 0: read, key of the last segment "
                           "optional; 3: read one keyed row)"}}},
         cmd_resolve},
        {{"ls", "PATH", "candidates for the '*' or '[*]' in the last segment, one per line",
          {{"--all", "", "give no pdc_list, so that every table offers its segment"}}},
         cmd_ls},
        {{"get", "PATH", "render the row at PATH (key on the last segment) or every row below it through the "
                         "table's registered to_properties: \"name = value\" in delivery order",
          {{"--json", "", "one JSON object per row (attribute -> value); several rows as an array"},
           {"--with-state", "", "render with state: each attribute's is-default mark and presence"},
           {"--attrs", "NAME[,NAME...]", "through the table's to_vlist instead: the values of these attributes "
                                         "in order, and the result; __uri__ asks for the row's path"},
           {"--values", "", "through the table's to_vlist with no names: the whole row as one positional list, "
                            "labelled by the table's columns"},
           {"--format", "rfc7951", "instance data of the YANG module zan-config (RFC 7951 JSON); rows below "
                                   "the top stand under their ancestors' keys"}}},
         cmd_get},
        {{"key", "PATH", "the key of the row(s) at PATH through the table's to_nvlist: \"name = value\" per entry",
          {{"--json", "", "one JSON object per row (key name -> value); several rows as an array"}}},
         cmd_key},
        {{"type", "TYPE", "a stored instance of the named type, taken from the configuration, rendered through "
                          "the type arrays: to_properties and to_vlist_all",
          {{"--json", "", "one JSON object: where the instance was found, and both renderings"},
           {"--nth", "N", "take the N-th stored instance in configuration order (default 1)"}}},
         cmd_type},
        {{"dump", "", "every row of the configuration, each reached by its own path and rendered",
          {{"--json", "", "one JSON object mapping each row's path to its attributes"},
           {"--format", "rfc7951", "instance data of the YANG module zan-config (RFC 7951 JSON)"}}},
         cmd_dump},
    };
    return list;
}

std::vector<CommandDef> command_defs() {
    std::vector<CommandDef> defs;
    for (const auto& c : commands()) defs.push_back(c.def);
    return defs;
}

namespace {

void no_arguments(const Invocation& inv) {
    if (!inv.args.empty())
        throw ToolError("'" + inv.command + "' takes no arguments (got '" + inv.args.front() + "')", k_exit_usage);
}

// The tables a command names, checked all at once before anything is printed; with no
// names, every named row in row order. A name given twice counts once.
std::vector<TableRow> select_tables(const Session& s, const std::vector<std::string>& names) {
    std::vector<TableRow> out;
    if (names.empty()) {
        for (const auto& row : s.engine.table_rows())
            if (!row.empty()) out.push_back(row);
        return out;
    }
    std::unordered_set<std::string> seen;
    for (const auto& name : names) {
        auto row = s.engine.find_table(name);
        if (!row) throw ToolError("unknown table '" + name + "'");
        if (seen.insert(name).second) out.push_back(*row);
    }
    return out;
}

std::string error_text(uint32_t err) {
    return std::to_string(err) + " (" + std::strerror(static_cast<int>(err)) + ")";
}

}  // namespace

void cmd_tables(Session& s, const Invocation& inv) {
    no_arguments(inv);
    for (const auto& row : s.engine.table_rows()) {
        s.out += std::to_string(row.row);
        if (row.empty()) {
            s.out += "\t-\t-\t-\n";
            continue;
        }
        const TablePlace place = table_place(row.name());
        s.out += '\t';
        s.out += row.name();
        s.out += '\t';
        s.out += place.path.empty() ? "-" : place.path;
        s.out += '\t';
        s.out += place.key.empty() ? "-" : place.key;
        s.out += '\n';
    }
}

void cmd_types(Session& s, const Invocation& inv) {
    no_arguments(inv);
    for (int i = 0; i < s.engine.type_row_count(); ++i) {
        const zan::engine::TypeRow row = s.engine.type_row(i);
        s.out += std::to_string(i) + '\t';
        s.out += row.empty() ? std::string_view{"-"} : row.name();
        s.out += '\n';
    }
}

void cmd_columns(Session& s, const Invocation& inv) {
    const bool json = inv.has("--json");
    const std::vector<TableRow> tables = select_tables(s, inv.args);
    std::vector<ColumnResult> results;
    results.reserve(tables.size());
    for (const auto& t : tables) {
        ColumnResult r = s.engine.columns(t);
        if (!r.ok())
            throw ToolError("column description of " + std::string(t.name()) + " failed: status " +
                            std::to_string(r.status) + ", error " + error_text(r.err));
        results.push_back(std::move(r));
    }

    if (json) {
        s.out += '{';
        for (size_t i = 0; i < tables.size(); ++i) {
            if (i) s.out += ',';
            s.out += "\n";
            append_json_string(s.out, tables[i].name());
            s.out += ": [";
            const auto& cols = results[i].columns;
            for (size_t j = 0; j < cols.size(); ++j) {
                if (j) s.out += ", ";
                s.out += '[';
                append_json_string(s.out, cols[j].name);
                s.out += ", " + std::to_string(cols[j].code) + ']';
            }
            s.out += ']';
        }
        s.out += tables.empty() ? "}\n" : "\n}\n";
        return;
    }
    for (size_t i = 0; i < tables.size(); ++i) {
        s.out += tables[i].name();
        s.out += '\n';
        for (const auto& c : results[i].columns) {
            s.out += "  " + c.name + '\t' + std::to_string(c.code) + ' ';
            const std::string_view word = zan::engine::type_code_word(c.code);
            s.out += word.empty() ? std::string_view{"?"} : word;
            s.out += '\n';
        }
    }
}

}  // namespace zanfe

// The commands of the zanfe tool, one function each. A command writes its answer into
// Session::out, which main prints only once the command has succeeded, so that a failing
// command prints nothing but its error line. `dump`, whose answer grows with the
// configuration, passes it on in blocks as it goes (Session::pass_on): a dump that fails
// part way has printed the blocks before the failure.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "cli.hpp"
#include "zan/engine.hpp"
#include "zan/rfc7951.hpp"

namespace zanfe {

struct Session {
    zan::engine::Engine engine;
    std::string out;
    // Prints what `out` holds and empties it, once it holds a block (64 KiB) or more.
    void pass_on();
    // Prints what `out` holds and empties it.
    void print_out();
    // Rows that requests are walked over: loaded before the command runs when --db is
    // given, otherwise on first use from the built-in configuration.
    std::unique_ptr<zan::db::Store> store;
    std::optional<std::string> db;
    const zan::db::Store& rows();
};

using CommandFn = void (*)(Session&, const Invocation&);

struct Command {
    CommandDef def;
    CommandFn run;
};

std::span<const Command> commands();
std::vector<CommandDef> command_defs();

void cmd_tables(Session& s, const Invocation& inv);
void cmd_types(Session& s, const Invocation& inv);
void cmd_columns(Session& s, const Invocation& inv);
void cmd_resolve(Session& s, const Invocation& inv);
void cmd_ls(Session& s, const Invocation& inv);
void cmd_get(Session& s, const Invocation& inv);
void cmd_dump(Session& s, const Invocation& inv);
void cmd_key(Session& s, const Invocation& inv);
void cmd_type(Session& s, const Invocation& inv);
// get --attrs and get --values: the table's to_vlist.
void get_values(Session& s, const Invocation& inv);

// The rows a path reaches through the registered dispatcher (request kind 3 when the last
// segment carries a key, else 0); *one_row tells which. Fails with one line.
std::vector<const zan::db::Row*> rows_at(Session& s, const std::string& path, bool* one_row);
// The row's own path in tool syntax, every segment keyed.
std::string row_path(const zan::db::Row& row);
// JSON form of a value: null, numbers and booleans as such, the rest as strings or arrays.
void append_json_value(std::string& out, const zan::plat::Value& v);

using zan::engine::append_json_string;

}  // namespace zanfe

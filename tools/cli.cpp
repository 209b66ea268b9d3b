// The command line on CLI11: the global options and one subcommand per CommandDef, built
// from the tables in commands.cpp. CLI11 parses; its failures are turned into the tool's
// own one-line messages here, so that every wrong command line reads and exits the same.
#include "cli.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <map>

namespace zanfe {

namespace {

const OptionDef* find_option(std::span<const OptionDef> defs, std::string_view name) {
    auto it = std::find_if(defs.begin(), defs.end(), [&](const OptionDef& o) { return o.name == name; });
    return it == defs.end() ? nullptr : &*it;
}

FaultArm parse_fault(std::string_view text) {
    FaultArm f;
    const auto colon = text.rfind(':');
    f.point = std::string(text.substr(0, colon));
    if (colon != std::string_view::npos) {
        const std::string_view n = text.substr(colon + 1);
        auto [end, ec] = std::from_chars(n.data(), n.data() + n.size(), f.nth);
        if (ec != std::errc{} || end != n.data() + n.size() || f.nth < 1)
            throw ToolError("bad call number in --fail '" + std::string(text) + "' (want POINT or POINT:N, N >= 1)",
                            k_exit_usage);
    }
    if (f.point.empty()) throw ToolError("--fail needs a fault point name", k_exit_usage);
    return f;
}

// One CLI11 option for an OptionDef: a flag when it takes no value. Every option may be
// given again (the last value counts), and a flag given a value is refused.
CLI::Option* add(CLI::App& app, const OptionDef& def) {
    const std::string name = def.name == "--help" ? "-h,--help" : std::string(def.name);
    CLI::Option* o = def.value_name.empty()
                         ? app.add_flag(name)
                         : app.add_option(name)->type_name(std::string(def.value_name));
    return o->description(std::string(def.help))->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

// The option a CLI11 argument-count failure is about: its message starts with the name.
std::string option_in(const std::string& message) {
    return message.substr(0, message.find_first_of(": "));
}

}  // namespace

bool Invocation::has(std::string_view option) const {
    return std::any_of(options.begin(), options.end(), [&](const auto& o) { return o.first == option; });
}

const std::vector<OptionDef>& global_options() {
    static const std::vector<OptionDef> defs{
        {"--help", "", "show this help and exit"},
        {"--version", "", "show the version of zanfe and exit"},
        {"--trace", "", "print every trace line of the front end on standard error"},
        {"--lib", "PATH", "front-end library to load (default: $ZANFE_LIBRARY, then libzanfe.so beside zanfe, "
                          "then the one of this installation or build)"},
        {"--db", "FILE", "configuration to walk (default: the one built into the platform)"},
        {"--fail", "POINT[:N]", "make the N-th call (default: every call) at a platform fault point fail, "
                                "e.g. arbor_fe_ntlist_add:3; may be repeated"},
    };
    return defs;
}

Invocation parse_command_line(std::span<const std::string_view> argv, std::span<const CommandDef> commands) {
    Invocation inv;
    CLI::App app{"Loads the front-end library as the data-access engine does and asks it through what it "
                 "registered.",
                 "zanfe"};
    app.set_help_flag();   // -h and --help are ordinary flags: the tool prints its help itself
    app.allow_extras();
    app.require_subcommand(0, 1);
    std::map<std::string, CLI::Option*> global;
    for (const auto& def : global_options())
        global[std::string(def.name)] = add(app, def);

    std::vector<std::pair<const CommandDef*, CLI::App*>> subs;
    std::vector<std::vector<std::string>> words(commands.size());
    for (size_t i = 0; i < commands.size(); ++i) {
        const CommandDef& c = commands[i];
        CLI::App* sub = app.add_subcommand(std::string(c.name), std::string(c.summary));
        sub->set_help_flag();
        sub->fallthrough();
        sub->allow_extras();
        for (const auto& def : c.options) add(*sub, def);
        // Every command takes words, also one that wants none, so that it can say so.
        sub->add_option("arguments", words[i])->expected(0, -1);
        subs.emplace_back(&c, sub);
    }

    // CLI11 lets a flag take a value ("--trace=no"); this tool's switches take none.
    for (const std::string_view a : argv) {
        if (a == "--") break;
        const auto eq = a.find('=');
        if (!a.starts_with("--") || eq == std::string_view::npos) continue;
        const std::string name(a.substr(0, eq));
        bool flag = false;
        for (const auto& [def, sub] : subs)
            if (const CLI::Option* o = sub->get_option_no_throw(name)) flag = flag || o->get_expected_max() == 0;
        if (const CLI::Option* o = app.get_option_no_throw(name)) flag = flag || o->get_expected_max() == 0;
        if (flag) throw ToolError("option '" + name + "' takes no value", k_exit_usage);
    }

    // "--" ends the options: CLI11 sees what stands before it, the words after it are the
    // command's (CLI11 would hand them to the top level, not to the command).
    const auto end_of_options = std::find(argv.begin(), argv.end(), std::string_view{"--"});
    const std::vector<std::string> after(end_of_options == argv.end() ? end_of_options : end_of_options + 1,
                                         argv.end());
    std::vector<std::string> args(std::make_reverse_iterator(end_of_options), argv.rend());   // CLI11 wants them reversed
    try {
        app.parse(args);
    } catch (const CLI::ArgumentMismatch& e) {
        // Only an option that takes a value fails on its count: the value is missing.
        throw ToolError("option '" + option_in(e.what()) + "' needs a value", k_exit_usage);
    } catch (const CLI::ParseError& e) {
        throw ToolError(e.what(), k_exit_usage);
    }

    // The command, and what nobody took: a word before it, or an option that is no one's.
    const CommandDef* cmd = nullptr;
    CLI::App* sub = nullptr;
    for (size_t i = 0; i < subs.size(); ++i)
        if (subs[i].second->parsed()) {
            cmd = subs[i].first;
            sub = subs[i].second;
            inv.command = std::string(cmd->name);
            inv.args = words[i];
        }
    // What CLI11 left over. Before the command: a word, which names no command, or one of
    // the command's own options (CLI11 takes those only after it), with its value. Anywhere:
    // an option that is no one's here.
    std::vector<std::pair<std::string, std::string>> early;
    auto leftovers = [&](const std::vector<std::string>& extras, bool before_command) {
        for (size_t i = 0; i < extras.size(); ++i) {
            const std::string& extra = extras[i];
            if (extra.size() < 2 || extra[0] != '-') {
                if (before_command || !cmd) throw ToolError("unknown command '" + extra + "'", k_exit_usage);
                inv.args.push_back(extra);
                continue;
            }
            const auto eq = extra.find('=');
            const std::string name = extra.substr(0, eq);
            if (const OptionDef* def = cmd && before_command ? find_option(cmd->options, name) : nullptr) {
                if (def->value_name.empty())
                    early.emplace_back(name, "");
                else if (eq != std::string::npos)
                    early.emplace_back(name, extra.substr(eq + 1));
                else if (i + 1 < extras.size())
                    early.emplace_back(name, extras[++i]);
                else
                    throw ToolError("option '" + name + "' needs a value", k_exit_usage);
                continue;
            }
            const bool elsewhere = std::any_of(commands.begin(), commands.end(),
                                               [&](const CommandDef& c) { return find_option(c.options, name); });
            if (elsewhere && cmd)
                throw ToolError("option '" + name + "' does not apply to '" + inv.command + "'", k_exit_usage);
            throw ToolError("unknown option '" + name + "'", k_exit_usage);
        }
    };
    leftovers(app.remaining(false), true);
    if (sub) leftovers(sub->remaining(false), false);
    inv.options = std::move(early);
    for (const std::string& word : after) {
        if (!cmd) throw ToolError("unknown command '" + word + "'", k_exit_usage);
        inv.args.push_back(word);
    }

    // The command's own options in the order given, each with its value ("" for a flag).
    if (sub) {
        std::map<const CLI::Option*, size_t> seen;
        for (const CLI::Option* o : sub->parse_order()) {
            if (o->get_name() == "arguments") continue;
            const size_t n = seen[o]++;
            const auto& results = o->results();
            const bool flag = o->get_expected_max() == 0;
            inv.options.emplace_back(o->get_name(), flag || n >= results.size() ? std::string{} : results[n]);
        }
    }
    inv.help = global["--help"]->count() > 0;
    inv.version = global["--version"]->count() > 0;
    inv.trace = global["--trace"]->count() > 0;
    if (const auto& lib = global["--lib"]->results(); !lib.empty()) inv.lib = lib.back();
    if (const auto& db = global["--db"]->results(); !db.empty()) inv.db = db.back();
    for (const std::string& f : global["--fail"]->results()) inv.faults.push_back(parse_fault(f));
    if (!cmd && !inv.help && !inv.version) throw ToolError("no command given (see 'zanfe --help')", k_exit_usage);
    return inv;
}

std::string usage_text(std::span<const CommandDef> commands) {
    std::string out = "usage: zanfe [options] COMMAND [arguments]\n\n"
                      "Loads the front-end library as the data-access engine does and asks it through\n"
                      "what it registered.\n\ncommands:\n";
    auto option_line = [&](const OptionDef& o, std::string_view indent) {
        std::string left = std::string(indent) + std::string(o.name);
        if (!o.value_name.empty()) left += " " + std::string(o.value_name);
        if (left.size() < 26) left.resize(26, ' ');
        else left += "\n" + std::string(26, ' ');
        out += left + std::string(o.help) + "\n";
    };
    for (const auto& c : commands) {
        std::string left = "  " + std::string(c.name);
        if (!c.synopsis.empty()) left += " " + std::string(c.synopsis);
        if (left.size() < 26) left.resize(26, ' ');
        else left += "\n" + std::string(26, ' ');
        out += left + std::string(c.summary) + "\n";
        for (const auto& o : c.options) option_line(o, "      ");
    }
    out += "\noptions:\n";
    for (const auto& o : global_options()) option_line(o, "  ");
    return out;
}

}  // namespace zanfe

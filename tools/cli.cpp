#include "cli.hpp"

#include <algorithm>
#include <charconv>

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

}  // namespace

bool Invocation::has(std::string_view option) const {
    return std::any_of(options.begin(), options.end(), [&](const auto& o) { return o.first == option; });
}

const std::vector<OptionDef>& global_options() {
    static const std::vector<OptionDef> defs{
        {"--help", "", "show this help and exit"},
        {"--trace", "", "print every trace line of the front end on standard error"},
        {"--lib", "PATH", "front-end library to load (default: $ZANFE_LIBRARY, then libzanfe.so beside zanfe, "
                          "then the one of this build)"},
        {"--db", "FILE", "configuration to walk (default: the one built into the platform)"},
        {"--fail", "POINT[:N]", "make the N-th call (default: every call) at a platform fault point fail, "
                                "e.g. arbor_fe_ntlist_add:3; may be repeated"},
    };
    return defs;
}

Invocation parse_command_line(std::span<const std::string_view> argv, std::span<const CommandDef> commands) {
    Invocation inv;
    // Options are matched once the command is known, so collect them first.
    std::vector<std::pair<std::string_view, std::optional<std::string_view>>> raw;
    std::vector<std::string_view> words;
    bool options_done = false;
    for (size_t i = 0; i < argv.size(); ++i) {
        const std::string_view a = argv[i];
        if (options_done || a.size() < 2 || a[0] != '-') {
            words.push_back(a);
            continue;
        }
        if (a == "--") {
            options_done = true;
            continue;
        }
        if (a == "-h") {
            raw.emplace_back("--help", std::nullopt);
            continue;
        }
        if (a.substr(0, 2) != "--") throw ToolError("unknown option '" + std::string(a) + "'", k_exit_usage);
        const auto eq = a.find('=');
        if (eq != std::string_view::npos)
            raw.emplace_back(a.substr(0, eq), a.substr(eq + 1));
        else
            raw.emplace_back(a, std::nullopt);
        // A value may also be the next word; which options take one is known below, so
        // mark the position and let the matching step take it.
        if (eq == std::string_view::npos) {
            const OptionDef* g = find_option(global_options(), a);
            bool takes = g && !g->value_name.empty();
            for (const auto& c : commands)
                if (const OptionDef* o = find_option(c.options, a); o && !o->value_name.empty()) takes = true;
            if (takes) {
                if (i + 1 >= argv.size()) throw ToolError("option '" + std::string(a) + "' needs a value", k_exit_usage);
                raw.back().second = argv[++i];
            }
        }
    }

    const CommandDef* cmd = nullptr;
    if (!words.empty()) {
        auto it = std::find_if(commands.begin(), commands.end(), [&](const CommandDef& c) { return c.name == words[0]; });
        if (it == commands.end()) throw ToolError("unknown command '" + std::string(words[0]) + "'", k_exit_usage);
        cmd = &*it;
        inv.command = std::string(cmd->name);
        for (size_t i = 1; i < words.size(); ++i) inv.args.emplace_back(words[i]);
    }

    for (const auto& [name, value] : raw) {
        const OptionDef* def = find_option(global_options(), name);
        const bool global = def != nullptr;
        if (!def && cmd) def = find_option(cmd->options, name);
        if (!def) {
            const bool elsewhere = std::any_of(commands.begin(), commands.end(),
                                               [&](const CommandDef& c) { return find_option(c.options, name); });
            if (elsewhere && cmd)
                throw ToolError("option '" + std::string(name) + "' does not apply to '" + inv.command + "'",
                                k_exit_usage);
            throw ToolError("unknown option '" + std::string(name) + "'", k_exit_usage);
        }
        if (def->value_name.empty() && value)
            throw ToolError("option '" + std::string(name) + "' takes no value", k_exit_usage);
        if (!global) {
            inv.options.emplace_back(std::string(name), value ? std::string(*value) : std::string{});
        } else if (name == "--help") {
            inv.help = true;
        } else if (name == "--trace") {
            inv.trace = true;
        } else if (name == "--lib") {
            inv.lib = std::string(*value);
        } else if (name == "--db") {
            inv.db = std::string(*value);
        } else if (name == "--fail") {
            inv.faults.push_back(parse_fault(*value));
        }
    }
    if (!cmd && !inv.help) throw ToolError("no command given (see 'zanfe --help')", k_exit_usage);
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

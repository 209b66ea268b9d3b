// Command line of the zanfe tool: global options, one command, its options and arguments.
#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zanfe {

// A failure the tool reports as one line on standard error, with its exit status.
struct ToolError : std::runtime_error {
    int status;
    explicit ToolError(const std::string& what, int status_ = 1) : std::runtime_error(what), status(status_) {}
};
constexpr int k_exit_failure = 1;   // the request could not be carried out
constexpr int k_exit_usage = 2;     // the command line is wrong

struct OptionDef {
    std::string_view name;        // with its dashes: "--json"
    std::string_view value_name;  // empty for a switch
    std::string_view help;
};

struct CommandDef {
    std::string_view name;
    std::string_view synopsis;    // arguments after the name
    std::string_view summary;
    std::vector<OptionDef> options;   // the command's own options
};

// A fault to arm before the library is loaded: the n-th call at a platform fault point
// fails, or every call when n is 0.
struct FaultArm {
    std::string point;
    long nth = 0;
};

struct Invocation {
    bool help = false;
    bool version = false;
    bool trace = false;
    std::optional<std::string> lib;
    std::optional<std::string> db;                // --db: configuration file to load
    std::vector<FaultArm> faults;
    std::string command;                          // empty with --help alone
    std::vector<std::string> args;
    std::vector<std::pair<std::string, std::string>> options;   // the command's own, in order

    bool has(std::string_view option) const;
};

const std::vector<OptionDef>& global_options();

// Parses argv (without the program name) with CLI11. Global options may stand before or
// after the command, the command's own after it; "--" ends the options. Throws ToolError
// with k_exit_usage for anything it does not know.
Invocation parse_command_line(std::span<const std::string_view> argv, std::span<const CommandDef> commands);

std::string usage_text(std::span<const CommandDef> commands);

}  // namespace zanfe

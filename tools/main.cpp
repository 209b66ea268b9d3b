// zanfe: loads the front-end library through the reference engine and answers questions
// about what it registered. Errors are one line on standard error and a non-zero status.
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "cli.hpp"
#include "commands.hpp"
#include "zan/platform.hpp"

namespace {

void print_trace(const zan::plat::TraceRecord& r) {
    std::fprintf(stderr, "trace 0x%x %s: %s\n", r.level, r.unit.c_str(), r.text.c_str());
}

int run(int argc, char** argv) {
    using namespace zanfe;
    const std::vector<CommandDef> defs = command_defs();
    const std::vector<std::string_view> args(argv + 1, argv + argc);
    const Invocation inv = parse_command_line(args, defs);
    if (inv.help) {
        std::fputs(usage_text(defs).c_str(), stdout);
        return 0;
    }

    if (inv.trace) zan::plat::trace_set_sink(print_trace);
    for (const auto& f : inv.faults) {
        if (f.nth == 0)
            zan::plat::fault_fail_always(f.point, true);
        else
            zan::plat::fault_fail_nth(f.point, f.nth);
    }

    Session session;
    const std::string path = inv.lib ? *inv.lib : zan::engine::Engine::default_library_path();
    if (auto err = session.engine.load(path)) throw ToolError(*err);
    // A configuration named on the command line is loaded whatever the command, so that a
    // broken file is reported as such.
    session.db = inv.db;
    if (inv.db) session.rows();

    for (const auto& c : commands())
        if (c.def.name == inv.command) c.run(session, inv);

    if (std::fwrite(session.out.data(), 1, session.out.size(), stdout) != session.out.size() ||
        std::fflush(stdout) != 0)
        throw ToolError("cannot write the output");
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const zanfe::ToolError& e) {
        std::fprintf(stderr, "zanfe: %s\n", e.what());
        return e.status;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zanfe: %s\n", e.what());
        return zanfe::k_exit_failure;
    }
}

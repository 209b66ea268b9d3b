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

namespace zanfe {

void Session::pass_on() {
    if (out.size() >= 64 * 1024) print_out();
}

void Session::print_out() {
    if (std::fwrite(out.data(), 1, out.size(), stdout) != out.size()) throw ToolError("cannot write the output");
    out.clear();
}

}  // namespace zanfe

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
    if (inv.version) {
        std::fputs("zanfe " ZANFE_VERSION "\n", stdout);
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

    session.print_out();
    if (std::fflush(stdout) != 0) throw ToolError("cannot write the output");
    return 0;
}

// Length of the well-formed UTF-8 sequence at the start of s, 0 if there is none.
size_t utf8_sequence(std::string_view s) {
    const auto b = [&](size_t i) { return static_cast<unsigned char>(s[i]); };
    const unsigned char c = b(0);
    size_t n = c >= 0xf0 && c <= 0xf4 ? 4 : c >= 0xe0 ? 3 : c >= 0xc2 && c <= 0xdf ? 2 : 0;
    if (n == 0 || s.size() < n) return 0;
    for (size_t i = 1; i < n; ++i)
        if ((b(i) & 0xc0) != 0x80) return 0;
    if ((c == 0xe0 && b(1) < 0xa0) || (c == 0xed && b(1) > 0x9f) || (c == 0xf0 && b(1) < 0x90) ||
        (c == 0xf4 && b(1) > 0x8f))
        return 0;   // overlong forms, surrogates, beyond U+10FFFF
    return n;
}

// An error message as one readable line: control characters and bytes that are no UTF-8
// escaped as \xHH, and a message made overlong by what the user typed (a 10 kB key, say)
// cut in the middle, so that its start and its reason at the end stay.
std::string one_line(std::string_view message) {
    constexpr size_t k_head = 200, k_tail = 200;
    std::string out;
    for (size_t i = 0; i < message.size();) {
        const unsigned char c = static_cast<unsigned char>(message[i]);
        if (c >= 0x20 && c < 0x7f) {
            out += char(c);
            ++i;
        } else if (const size_t n = c >= 0x80 ? utf8_sequence(message.substr(i)) : 0; n != 0) {
            out += message.substr(i, n);
            i += n;
        } else {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02x", c);
            out += hex;
            ++i;
        }
    }
    if (out.size() > k_head + k_tail + 64)
        out = out.substr(0, k_head) + " [... " + std::to_string(out.size() - k_head - k_tail) + " characters ...] " +
              out.substr(out.size() - k_tail);
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const zanfe::ToolError& e) {
        std::fprintf(stderr, "zanfe: %s\n", one_line(e.what()).c_str());
        return e.status;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zanfe: %s\n", one_line(e.what()).c_str());
        return zanfe::k_exit_failure;
    }
}

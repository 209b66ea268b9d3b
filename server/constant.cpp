// The load test's baseline: the same HTTP library, thread pool, listen backlog and connection
// settings as zanfe-restconf, answering every GET with a constant body read from a file (none: "{}").
//   restconf-constant [--threads N] [BODY-FILE]
// Prints "listening on http://127.0.0.1:PORT" once it listens on a free loopback port.
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include <httplib.h>

#include "backlog.hpp"

int main(int argc, char** argv) {
    size_t threads = 8;
    std::string body = "{}\n";
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--threads" && i + 1 < argc) {
            threads = std::stoul(argv[++i]);
        } else {
            std::ifstream in(a, std::ios::binary);
            if (!in) {
                std::fprintf(stderr, "restconf-constant: cannot read %s\n", a.c_str());
                return 1;
            }
            body.assign(std::istreambuf_iterator<char>(in), {});
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
    httplib::Server server;
    server.new_task_queue = [threads] { return new httplib::ThreadPool(threads); };
    server.set_keep_alive_max_count(1000000);
    server.set_tcp_nodelay(true);
    server.Get(".*", [&](const httplib::Request&, httplib::Response& res) {
        res.set_content(body, "application/yang-data+json");
    });
    const int port = server.bind_to_any_port("127.0.0.1");
    if (port < 0) return 1;
    zan::restconf::widen_backlog(port);
    std::printf("listening on http://127.0.0.1:%d\n", port);
    std::fflush(stdout);
    return server.listen_after_bind() ? 0 : 1;
}

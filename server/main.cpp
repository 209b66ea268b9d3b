// zanfe-restconf: RESTCONF (read side) over the reference engine. It loads the front-end
// library as zanfe does, serves the configuration as RFC 7951 through the registered
// dispatcher and renderings, and reloads the configuration on SIGHUP, whole or not at all.
//
// A program of its own beside zanfe rather than a zanfe command: it has a server's life
// (signals, threads, a log), and keeps out of the tool's command line.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <csignal>
#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <malloc.h>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include <httplib.h>

#include "access.hpp"
#include "backlog.hpp"
#include "answer.hpp"
#include "uri.hpp"
#include "zan/config.hpp"
#include "zan/platform.hpp"

#ifndef ZAN_YANG_DEFAULT_PATH
#define ZAN_YANG_DEFAULT_PATH ""
#endif

namespace {

using namespace zan::restconf;

struct Options {
    std::optional<std::string> lib, db, users, cert, key;
    std::string yang = ZAN_YANG_DEFAULT_PATH;
    std::string listen = "127.0.0.1";
    int port = 8080;
    bool trace = false;
    int threads = 16;
    std::optional<int> max_connections;   // default: --threads
    int wait = 5000;             // milliseconds an answer of many rows may wait for its turn
    int concurrent = 0;          // answers of many rows made at once (0: two a processor)
    double rate = 2000;          // requests a second one connection may make (0: no limit)
    std::string log = "-";
    size_t max_body = 64 * 1024;
    int timeout = 10;            // seconds a read or a write of a request may take
    size_t keep_alive = 100;     // requests on one connection before it is closed
};

const char* k_usage =
    "usage: zanfe-restconf [options]\n"
    "  --lib PATH        front-end library (default: $ZANFE_LIBRARY, then libzanfe.so beside the program,\n"
    "                    then the library of this build)\n"
    "  --db FILE         configuration to serve (default: the one built into the platform); SIGHUP reloads it\n"
    "  --trace           print every trace line of the front end on standard error\n"
    "  --yang FILE       the YANG module zan-config (default: the module of this build)\n"
    "  --listen ADDR     address to listen on (default 127.0.0.1); any but a loopback address needs\n"
    "                    --cert, --key and --users\n"
    "  --port N          port (default 8080; 0: any free port); the port taken is printed on standard output\n"
    "  --cert FILE --key FILE   serve HTTPS with this certificate and private key (PEM)\n"
    "  --users FILE      HTTP Basic authentication: lines 'name:crypt-hash:role', role reader or admin\n"
    "  --threads N       worker threads (default 16); a connection holds one for its whole life\n"
    "  --max-connections N  connections served at once (default: --threads); one more is answered\n"
    "                    503 with Retry-After and closed\n"
    "  --concurrent N    answers of more than 16 rows made at once, the others waiting their turn\n"
    "                    in order (default: two a processor): what a burst of them holds in memory\n"
    "  --wait MS         milliseconds such an answer may wait for its turn (default 5000); beyond\n"
    "                    it 503 with Retry-After\n"
    "  --rate N          requests a second one connection may make, a second's worth at once\n"
    "                    (default 2000; 0: no limit); beyond it 429 with Retry-After\n"
    "  --access-log FILE one line per request (default -: standard error)\n"
    "  --max-body N      largest request body in bytes (default 65536)\n"
    "  --timeout S       seconds a read or write may take (default 10)\n"
    "  --keep-alive N    requests one connection may make before it is closed (default 100)\n";

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

long number(const std::string& opt, const std::string& v, long lo, long hi) {
    try {
        size_t end = 0;
        const long n = std::stol(v, &end);
        if (end == v.size() && n >= lo && n <= hi) return n;
    } catch (const std::exception&) {
    }
    throw UsageError(opt + " wants a number from " + std::to_string(lo) + " to " + std::to_string(hi) + ", not '" + v +
                     "'");
}

Options parse(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= argc) throw UsageError(a + " wants a value");
            return argv[++i];
        };
        if (a == "--help" || a == "-h") {
            std::fputs(k_usage, stdout);
            std::exit(0);
        } else if (a == "--lib") o.lib = value();
        else if (a == "--db") o.db = value();
        else if (a == "--trace") o.trace = true;
        else if (a == "--yang") o.yang = value();
        else if (a == "--listen") o.listen = value();
        else if (a == "--port") o.port = int(number(a, value(), 0, 65535));
        else if (a == "--cert") o.cert = value();
        else if (a == "--key") o.key = value();
        else if (a == "--users") o.users = value();
        else if (a == "--threads") o.threads = int(number(a, value(), 1, 1024));
        else if (a == "--max-connections") o.max_connections = int(number(a, value(), 1, 1000000));
        else if (a == "--concurrent") o.concurrent = int(number(a, value(), 1, 1024));
        else if (a == "--wait") o.wait = int(number(a, value(), 0, 3600000));
        else if (a == "--rate") o.rate = double(number(a, value(), 0, 1000000000));
        else if (a == "--access-log") o.log = value();
        else if (a == "--max-body") o.max_body = size_t(number(a, value(), 0, 1L << 30));
        else if (a == "--timeout") o.timeout = int(number(a, value(), 1, 3600));
        else if (a == "--keep-alive") o.keep_alive = size_t(number(a, value(), 1, 1000000));
        else throw UsageError("unknown option '" + a + "' (--help lists them)");
    }
    if (o.cert.has_value() != o.key.has_value()) throw UsageError("--cert and --key go together");
    const bool loopback = o.listen == "127.0.0.1" || o.listen == "::1" || o.listen == "localhost" ||
                          o.listen.starts_with("127.");
    if (!loopback && (!o.cert || !o.users))
        throw UsageError("listening on " + o.listen + " (not a loopback address) needs --cert, --key and --users");
    if (o.yang.empty()) throw UsageError("--yang: no module known to this build; name the file");
    return o;
}

// The served configuration: replaced whole on reload, each request holding the one it began with.
class Served {
public:
    explicit Served(std::optional<std::string> file) : file_(std::move(file)) {}

    // Loads the file (or the built-in configuration); on failure the served data stays.
    std::optional<std::string> load() {
        std::string bytes;
        if (file_) {
            std::ifstream in(*file_, std::ios::binary);
            if (!in) return "cannot read " + *file_ + ": " + std::strerror(errno);
            bytes.assign(std::istreambuf_iterator<char>(in), {});
        }
        auto loaded = file_ ? zan::config::load_file(*file_) : zan::config::load_default();
        if (!loaded) return loaded.error;
        auto d = std::make_shared<Datastore>();
        d->store = std::move(loaded.store);
        d->modified = std::chrono::system_clock::now();
        std::lock_guard lock(mu_);
        ++generation_;
        char tag[64];
        std::snprintf(tag, sizeof tag, "\"%016zx-%u\"", std::hash<std::string>{}(bytes), generation_);
        d->etag = tag;
        if (loaded.default_variant)
            zan::db::set_default_variant(zan::engine::Engine::context(), *loaded.default_variant);
        std::lock_guard hold(current_mu_);
        current_ = std::move(d);
        return std::nullopt;
    }
    std::shared_ptr<const Datastore> now() const {
        // A mutex, not std::atomic<std::shared_ptr>: libstdc++'s spins, and with many more
        // threads than processors a spinner holds the processor its holder waits for.
        std::lock_guard hold(current_mu_);
        return current_;
    }
    size_t rows() const { return now()->store->size(); }

private:
    std::optional<std::string> file_;
    std::mutex mu_;   // loads, one at a time
    mutable std::mutex current_mu_;
    std::shared_ptr<const Datastore> current_;
    unsigned generation_ = 0;
};

// One write(2) a line, with no lock: a line goes out whole (an O_APPEND file, or a pipe
// for a line shorter than PIPE_BUF), and no request waits for another's to be written.
class Log {
public:
    explicit Log(const std::string& file) {
        if (file == "-") {
            fd_ = STDERR_FILENO;
        } else {
            fd_ = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
            if (fd_ < 0) throw UsageError("cannot open the access log " + file + ": " + std::strerror(errno));
        }
    }
    ~Log() {
        if (fd_ != STDERR_FILENO) ::close(fd_);
    }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    void line(std::string text) {
        text += '\n';
        for (size_t done = 0; done < text.size();) {
            const ssize_t n = ::write(fd_, text.data() + done, text.size() - done);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return;   // a log that cannot be written does not stop the answers
            done += size_t(n);
        }
    }

private:
    int fd_ = -1;
};

// Whether the Accept header takes the type (no header takes everything).
bool accepts(const httplib::Request& req, const std::string& type) {
    if (!req.has_header("Accept")) return true;
    const std::string accept = req.get_header_value("Accept");
    const std::string major = type.substr(0, type.find('/'));
    size_t from = 0;
    while (from <= accept.size()) {
        size_t comma = accept.find(',', from);
        if (comma == std::string::npos) comma = accept.size();
        std::string range = accept.substr(from, comma - from);
        range = range.substr(0, range.find(';'));
        range.erase(0, range.find_first_not_of(" \t"));
        range.erase(range.find_last_not_of(" \t") + 1);
        if (range == "*/*" || range == type || range == major + "/*" ||
            (type == "application/yang-data+json" && range == "application/json"))
            return true;
        from = comma + 1;
    }
    return false;
}

bool json_type(const std::string& content_type) {
    const std::string t = content_type.substr(0, content_type.find(';'));
    return t == "application/yang-data+json" || t == "application/json";
}

void send(httplib::Response& res, const Answer& a) {
    res.status = a.status;
    for (const auto& [k, v] : a.headers) res.set_header(k, v);
    if (a.status == 304) return;
    res.set_content(a.body, a.content_type.empty() ? "text/plain" : a.content_type);
}

// The answers of many rows made at once. The threads hold connections, mostly idle or
// waiting on the network; rendering many rows takes a processor and memory, so that on a few
// processors more of them at once would only share those and hold the memory of each.
// Taken in the order asked (a semaphore lets a newcomer pass the ones waiting, for as long
// as newcomers keep coming); each release wakes the one waiter next in line.
class Gate : public Turns {
public:
    Gate(int slots, std::chrono::milliseconds wait) : free_(slots), wait_(wait) {}

    bool take() override { return acquire(wait_); }
    void give() override { release(); }

    // Whether the turn came within `wait`; if not, the place in line is given up.
    bool acquire(std::chrono::milliseconds wait) {
        std::unique_lock lock(mu_);
        if (free_ > 0 && line_.empty()) {
            --free_;
            return true;
        }
        Waiter me;
        line_.push_back(&me);
        if (me.turn.wait_for(lock, wait, [&] { return me.granted; })) return true;
        line_.erase(std::find(line_.begin(), line_.end(), &me));
        return false;
    }
    void release() {
        std::lock_guard lock(mu_);
        if (line_.empty()) {
            ++free_;
            return;
        }
        Waiter* next = line_.front();
        line_.pop_front();
        next->granted = true;   // the slot passes to it as it is
        next->turn.notify_one();
    }

private:
    struct Waiter {
        std::condition_variable turn;
        bool granted = false;
    };
    std::mutex mu_;
    int free_;
    const std::chrono::milliseconds wait_;
    std::deque<Waiter*> line_;
};

// One request: translation, authentication, media types, the answer, and 304.
Answer serve(const httplib::Request& req, const Served& served, const zan::engine::Engine& engine,
             const Module& module, const Users* users, bool tls, std::string* user, Gate& gate) {
    const size_t q = req.target.find('?');
    const std::string path = req.target.substr(0, q);
    const std::string query = q == std::string::npos ? "" : req.target.substr(q + 1);
    Role role = Role::admin;
    if (users) {
        const Login login = users->check(req.get_header_value("Authorization"));
        if (!login.role) {
            Answer a = error_answer(401, "protocol", "access-denied", "", login.why);
            a.headers.emplace_back("WWW-Authenticate", "Basic realm=\"zanfe-restconf\"");
            return a;
        }
        *user = login.name;
        role = *login.role;
    }
    const Translation t = translate(req.method, path, query);
    if (const auto* e = std::get_if<UriError>(&t)) return error_answer(e->status, "protocol", e->tag, "", e->message);
    const Request& r = std::get<Request>(t);
    if (!req.body.empty()) {
        const std::string type = req.get_header_value("Content-Type");
        if (!json_type(type))
            return error_answer(415, "protocol", "invalid-value", "",
                                "a request body of type '" + type + "': application/yang-data+json only");
        if (r.method != Method::write)
            return error_answer(400, "protocol", "malformed-message", "", req.method + " takes no body");
    }
    const std::shared_ptr<const Datastore> data = served.now();
    const Hidden hidden = role == Role::admin ? Hidden{} : Hidden{secret_attribute};
    const Context ctx{engine, *data, module, hidden,
                      std::string(tls ? "https://" : "http://") + req.get_header_value("Host"), &gate};
    Answer a = answer(ctx, r);
    if (a.status == 200 && !a.content_type.empty() && !accepts(req, a.content_type))
        return error_answer(406, "protocol", "invalid-value", "",
                            "the answer is " + a.content_type + ", which Accept '" + req.get_header_value("Accept") +
                                "' does not take");
    if (a.status == 200 && r.target == Target::data && req.has_header("If-None-Match")) {
        const std::string want = req.get_header_value("If-None-Match");
        if (want == "*" || want.find(data->etag) != std::string::npos) {
            a.status = 304;
            a.body.clear();
        }
    }
    return a;
}

std::string log_line(const httplib::Request& req, const httplib::Response& res, const std::string& user) {
    char when[64];
    const std::time_t now = std::time(nullptr);
    std::tm tm{};
    gmtime_r(&now, &tm);
    std::strftime(when, sizeof when, "%d/%b/%Y:%H:%M:%S +0000", &tm);
    std::string target;
    for (const char c : req.target) target += (static_cast<unsigned char>(c) < 0x20 || c == '"') ? '?' : c;
    return req.remote_addr + " - " + (user.empty() ? "-" : user) + " [" + when + "] \"" + req.method + " " + target +
           " " + req.version + "\" " + std::to_string(res.status) + " " + std::to_string(res.body.size());
}

// Who the request this thread serves authenticated as, for its log line.
thread_local std::string user;

// The connection this thread serves: cpp-httplib runs a connection on one worker from accept
// to close, keep-alive requests included, so what is per connection lives in the thread.
struct Connection {
    bool refused = false;   // beyond the connection cap: every request is answered 503
    double tokens = -1;     // the rate's bucket; -1: full, no request made yet
    std::chrono::steady_clock::time_point last;

    // Whether one more request fits the rate (requests a second, a second's worth at once).
    bool take(double rate) {
        if (rate <= 0) return true;
        const auto now = std::chrono::steady_clock::now();
        tokens = tokens < 0 ? rate : std::min(rate, tokens + rate * std::chrono::duration<double>(now - last).count());
        last = now;
        if (tokens < 1) return false;
        tokens -= 1;
        return true;
    }
};
thread_local Connection connection;

// The socket a request came on, found by its client's address and port (-1: none). cpp-httplib
// does not hand it to a handler, and a "Connection: close" the handler sets does not close it.
int socket_of(const httplib::Request& req) {
    DIR* dir = ::opendir("/proc/self/fd");
    if (!dir) return -1;
    int found = -1;
    while (const dirent* e = ::readdir(dir)) {
        const int fd = std::atoi(e->d_name);
        if (fd <= STDERR_FILENO) continue;
        sockaddr_storage peer{};
        socklen_t len = sizeof peer;
        if (::getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &len) != 0) continue;
        char host[INET6_ADDRSTRLEN] = "";
        int port = -1;
        if (peer.ss_family == AF_INET) {
            const auto* in = reinterpret_cast<const sockaddr_in*>(&peer);
            ::inet_ntop(AF_INET, &in->sin_addr, host, sizeof host);
            port = ntohs(in->sin_port);
        } else if (peer.ss_family == AF_INET6) {
            const auto* in = reinterpret_cast<const sockaddr_in6*>(&peer);
            ::inet_ntop(AF_INET6, &in->sin6_addr, host, sizeof host);
            port = ntohs(in->sin6_port);
        }
        if (port == req.remote_port && req.remote_addr == host) {
            found = fd;
            break;
        }
    }
    ::closedir(dir);
    return found;
}

// The workers, and the cap on connections. A connection beyond the cap is not queued behind
// the ones served (it would wait for one of them to close, however long that takes): it goes
// to a lane of its own, which answers its request 503 and closes it.
class Workers : public httplib::TaskQueue {
public:
    Workers(size_t threads, size_t cap) : pool_(threads), refusals_(2), cap_(cap) {}

    // Called by the one thread that accepts connections.
    void enqueue(std::function<void()> fn) override {
        if (live_.load() >= cap_) {
            refusals_.enqueue([fn = std::move(fn)] {
                connection = Connection{};
                connection.refused = true;
                fn();
            });
            return;
        }
        ++live_;
        pool_.enqueue([this, fn = std::move(fn)] {
            connection = Connection{};
            fn();
            --live_;
        });
    }
    void shutdown() override {
        pool_.shutdown();
        refusals_.shutdown();
    }

private:
    httplib::ThreadPool pool_;
    httplib::ThreadPool refusals_;
    const size_t cap_;
    std::atomic<size_t> live_{0};
};

void print_trace(const zan::plat::TraceRecord& r) {
    std::fprintf(stderr, "trace 0x%x %s: %s\n", r.level, r.unit.c_str(), r.text.c_str());
}

int run(int argc, char** argv) {
    const Options o = parse(argc, argv);
    if (o.trace) zan::plat::trace_set_sink(print_trace);

    // Signals are taken by one thread of their own; every other thread keeps them blocked.
    sigset_t signals;
    sigemptyset(&signals);
    for (const int s : {SIGHUP, SIGTERM, SIGINT}) sigaddset(&signals, s);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    zan::engine::Engine engine;
    if (auto err = engine.load(o.lib ? *o.lib : zan::engine::Engine::default_library_path()))
        throw std::runtime_error(*err);
    const Module module = read_module(o.yang);
    std::unique_ptr<Users> users;
    if (o.users) users = std::make_unique<Users>(load_users(*o.users));
    Served served(o.db);
    if (auto err = served.load()) throw std::runtime_error(*err);
    Log log(o.log);

    std::unique_ptr<httplib::Server> server;
    const bool tls = o.cert.has_value();
    if (tls) {
        server = std::make_unique<httplib::SSLServer>(o.cert->c_str(), o.key->c_str());
        if (!server->is_valid()) throw std::runtime_error("cannot use the certificate " + *o.cert + " and key " + *o.key);
    } else {
        server = std::make_unique<httplib::Server>();
    }
    const int concurrent = o.concurrent ? o.concurrent : std::max(2, 2 * int(std::thread::hardware_concurrency()));
    Gate gate(concurrent, std::chrono::milliseconds(o.wait));
    // As many allocator arenas as answers made at once: each answer's memory comes back to
    // an arena the next answer takes it from, rather than each of the many threads leaving
    // its own arena at the largest answer it made.
    mallopt(M_ARENA_MAX, concurrent);
    const size_t threads = size_t(o.threads);
    const size_t cap = size_t(o.max_connections.value_or(o.threads));
    server->new_task_queue = [threads, cap] { return new Workers(threads, cap); };
    server->set_payload_max_length(o.max_body);
    server->set_read_timeout(o.timeout, 0);
    server->set_write_timeout(o.timeout, 0);
    server->set_keep_alive_max_count(o.keep_alive);
    server->set_keep_alive_timeout(o.timeout);
    server->set_tcp_nodelay(true);   // answers go out whole; no wait for the client's ACK

    // One handler for every method and path: the URL translation decides, not the router.
    // (Bodies are read, and held to --max-body, only for the methods that carry one.)
    const httplib::Server::Handler handle = [&](const httplib::Request& req, httplib::Response& res) {
        user.clear();
        if (connection.refused) {
            Answer a = error_answer(503, "transport", "resource-denied", "",
                                    "too many connections: " + std::to_string(cap) + " at most; try again later");
            a.headers.emplace_back("Retry-After", "1");
            a.headers.emplace_back("Connection", "close");
            send(res, a);
            return;
        }
        if (!connection.take(o.rate)) {
            Answer a = error_answer(429, "transport", "resource-denied", "",
                                    "too many requests on this connection: " + std::to_string(long(o.rate)) +
                                        " a second at most");
            a.headers.emplace_back("Retry-After", "1");
            send(res, a);
            return;
        }
        try {
            send(res, serve(req, served, engine, module, users.get(), tls, &user, gate));
        } catch (const std::exception& e) {
            send(res, error_answer(500, "application", "operation-failed", "", e.what()));
        }
    };
    server->Get(".*", handle).Post(".*", handle).Put(".*", handle);
    server->Patch(".*", handle).Delete(".*", handle).Options(".*", handle);
    // What the HTTP library refuses itself (a request line too long, a body too large)
    // still gets an errors document.
    server->set_error_handler(httplib::Server::HandlerWithResponse([](const httplib::Request&, httplib::Response& res) {
        if (!res.body.empty() || res.status == 304) return httplib::Server::HandlerResponse::Unhandled;
        const std::string tag = res.status == 413 ? "too-big" : "malformed-message";
        res.set_content(errors_document("protocol", tag, "", "the request was refused: HTTP " +
                                                               std::to_string(res.status)),
                        "application/yang-data+json");
        return httplib::Server::HandlerResponse::Handled;
    }));
    server->set_logger([&](const httplib::Request& req, const httplib::Response& res) {
        log.line(log_line(req, res, user));
        // A refused connection is closed once answered (the logger runs after the answer is
        // written): the next request on it reads as the end of the stream.
        if (connection.refused)
            if (const int fd = socket_of(req); fd >= 0) ::shutdown(fd, SHUT_RD);
    });

    const int port = o.port == 0 ? server->bind_to_any_port(o.listen) : (server->bind_to_port(o.listen, o.port) ? o.port : -1);
    if (port < 0) throw std::runtime_error("cannot listen on " + o.listen + " port " + std::to_string(o.port));
    widen_backlog(port);
    std::printf("listening on %s://%s:%d\n", tls ? "https" : "http", o.listen.c_str(), port);
    std::fflush(stdout);

    std::thread waiter([&] {
        for (;;) {
            int sig = 0;
            if (sigwait(&signals, &sig) != 0) continue;
            if (sig == SIGHUP) {
                if (auto err = served.load())
                    log.line("reload failed, still serving the data loaded before: " + *err);
                else
                    log.line("reloaded: " + std::to_string(served.rows()) + " rows");
                continue;
            }
            log.line("stopping: finishing the requests in flight");
            server->stop();
            return;
        }
    });
    const bool listened = server->listen_after_bind();
    if (waiter.joinable()) {
        if (listened) {
            waiter.join();
        } else {
            pthread_kill(waiter.native_handle(), SIGTERM);
            waiter.join();
        }
    }
    log.line("stopped");
    return listened ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const UsageError& e) {
        std::fprintf(stderr, "zanfe-restconf: %s\n", e.what());
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zanfe-restconf: %s\n", e.what());
        return 1;
    }
}

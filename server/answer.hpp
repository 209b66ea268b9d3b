// A translated RESTCONF request -> the engine -> an answer: an RFC 7951 document printed by
// the same printer as `zanfe get --format rfc7951`, or ietf-restconf:errors. The answer unit
// knows nothing of HTTP connections; the http unit hands it a request and a datastore
// snapshot and sends back what it gets.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "uri.hpp"
#include "zan/database.hpp"
#include "zan/engine.hpp"

namespace zan::restconf {

// One loaded configuration, never changed once served: a reload makes a new one, and a
// request keeps the one it started with.
struct Datastore {
    std::unique_ptr<db::Store> store;
    std::string etag;                                    // quoted entity tag
    std::chrono::system_clock::time_point modified;      // when this content was loaded
};

// The YANG module the server carries.
struct Module {
    std::string name;
    std::string revision;
    std::string ns;
    std::string text;
};
// Reads name, namespace and the first revision out of the module's text; one-line error.
Module read_module(const std::string& file);

// Whether an attribute of a table is kept from the asker (a secret for a reader).
using Hidden = std::function<bool(const db::TableInfo& table, std::string_view attribute)>;

struct Answer {
    int status = 200;
    std::string content_type;
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;
};

// The errors document: one error with its type, tag, path (omitted when empty) and message.
std::string errors_document(std::string_view type, std::string_view tag, std::string_view path,
                            std::string_view message);
Answer error_answer(int status, std::string_view type, std::string_view tag, std::string_view path,
                    std::string_view message);

// The turns of answers that render many rows: a few of them are made at once, the others
// wait (their memory is what a burst of them holds). An answer of a few rows takes none.
class Turns {
public:
    virtual ~Turns() = default;
    virtual bool take() = 0;   // false: no turn in the time a request may wait
    virtual void give() = 0;
};
inline constexpr size_t k_rows_without_turn = 16;

struct Context {
    const engine::Engine& engine;
    const Datastore& data;
    const Module& module;
    const Hidden& hidden;
    std::string base;                       // "http://host:port" the client reached, for schema URLs
    Turns* turns = nullptr;                 // nullptr: every answer at once
};

Answer answer(const Context& ctx, const Request& req);

// RFC 7231 date of a time point ("Tue, 24 Nov 2026 00:00:00 GMT").
std::string http_date(std::chrono::system_clock::time_point t);

}  // namespace zan::restconf

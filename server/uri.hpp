// RESTCONF request line -> typed request. A pure function of the method, the path and the
// query string: no catalogue, no engine, no store, so that it is tested by tables and fuzzed
// on its own. Which list a segment names, and which keys it has, is for the answer unit and
// the dispatcher to say; here a segment is its name and its key values in the order given.
//
//   /.well-known/host-meta
//   /restconf                              the API root
//   /restconf/yang-library-version
//   /restconf/data                         the whole datastore
//   /restconf/data/<module>:<list>[=<key>[,<key>]...]/<list>[=...]...
//   /restconf/data/ietf-yang-library:modules-state
//   /restconf/modules/<module>             the YANG text of a module the server carries
//
// Query: depth=1..65535|unbounded, fields=<expr>, content=config|nonconfig|all, each once.
// fields: names separated by ';', '/' for a step into a container, 'a(b;c)' for several
// names below a; the result is the attribute names, the container steps joined by '.'.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace zan::restconf {

enum class Method { get, head, options, write };
enum class Target { host_meta, api_root, library_version, data, yang_library, module };
enum class Content { all, config, nonconfig };

struct Segment {
    std::string module;                              // empty: the module of the segment before
    std::string name;
    std::optional<std::vector<std::string>> keys;    // nullopt: no '=' (every entry of the list)
    std::string text;                                // the segment as written, for messages
    bool operator==(const Segment&) const = default;
};

struct Query {
    std::optional<uint32_t> depth;                   // nullopt: unbounded
    std::optional<std::vector<std::string>> fields;  // attribute names, dotted
    Content content = Content::all;
    bool operator==(const Query&) const = default;
};

struct Request {
    Method method = Method::get;
    Target target = Target::api_root;
    std::vector<Segment> path;      // data: the segments below /restconf/data
    std::string module;             // module: its name
    Query query;
};

// An answer that the request line alone decides: status, RFC 8040 error-tag, message.
struct UriError {
    int status = 400;
    std::string tag;
    std::string message;
    bool operator==(const UriError&) const = default;
};

using Translation = std::variant<Request, UriError>;

Translation translate(std::string_view method, std::string_view path, std::string_view query);

// %XX decoding; nullopt for a '%' not followed by two hex digits, a decoded NUL or a raw
// control byte.
std::optional<std::string> percent_decode(std::string_view s);

}  // namespace zan::restconf

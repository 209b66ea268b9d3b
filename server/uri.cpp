#include "uri.hpp"

#include <charconv>

namespace zan::restconf {
namespace {

constexpr size_t k_max_segments = 32;

UriError bad(std::string message, std::string tag = "invalid-value") {
    return UriError{400, std::move(tag), std::move(message)};
}
UriError missing(std::string message) { return UriError{404, "invalid-value", std::move(message)}; }

int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::vector<std::string_view> split(std::string_view s, char sep) {
    std::vector<std::string_view> out;
    size_t from = 0;
    for (;;) {
        const size_t at = s.find(sep, from);
        out.push_back(s.substr(from, at == std::string_view::npos ? std::string_view::npos : at - from));
        if (at == std::string_view::npos) return out;
        from = at + 1;
    }
}

// A YANG identifier: a letter or '_', then letters, digits, '_', '-' and '.'.
bool identifier(std::string_view s) {
    if (s.empty()) return false;
    const auto alpha = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    if (!alpha(s.front())) return false;
    for (const char c : s)
        if (!alpha(c) && !(c >= '0' && c <= '9') && c != '-' && c != '.') return false;
    return true;
}

// "[module:]name[=k1,k2...]", the name and module not encoded, the keys percent-encoded.
std::variant<Segment, UriError> segment(std::string_view raw, size_t index) {
    Segment s;
    const std::string where = "segment " + std::to_string(index) + " '" + std::string(raw) + "'";
    const auto decoded = percent_decode(raw);
    s.text = decoded ? *decoded : std::string(raw);
    const size_t eq = raw.find('=');
    std::string_view head = raw.substr(0, eq);
    const auto name = percent_decode(head);
    if (!name) return bad(where + ": bad percent-encoding");
    std::string_view n = *name;
    if (const size_t colon = n.find(':'); colon != std::string_view::npos) {
        s.module = std::string(n.substr(0, colon));
        n = n.substr(colon + 1);
        if (!identifier(s.module)) return bad(where + ": '" + s.module + "' is no module name");
    }
    if (!identifier(n)) return bad(where + ": '" + std::string(n) + "' is no node name");
    s.name = std::string(n);
    if (eq == std::string_view::npos) return s;
    s.keys.emplace();
    for (const std::string_view k : split(raw.substr(eq + 1), ',')) {
        auto v = percent_decode(k);
        if (!v) return bad(where + ": bad percent-encoding in a key");
        s.keys->push_back(std::move(*v));
    }
    return s;
}

// fields: expr := term (';' term)* ; term := path ['(' expr ')'] ; path := name ('/' name)*
class Fields {
public:
    explicit Fields(std::string_view text) : t_(text) {}
    std::optional<std::string> parse(std::vector<std::string>* out) {
        if (auto e = expr("", out)) return e;
        if (i_ != t_.size()) return "unexpected '" + std::string(1, t_[i_]) + "' at " + std::to_string(i_ + 1);
        return std::nullopt;
    }

private:
    std::string_view t_;
    size_t i_ = 0;
    int level_ = 0;

    std::optional<std::string> expr(const std::string& prefix, std::vector<std::string>* out) {
        for (;;) {
            if (auto e = term(prefix, out)) return e;
            if (i_ < t_.size() && t_[i_] == ';') {
                ++i_;
                continue;
            }
            return std::nullopt;
        }
    }
    std::optional<std::string> term(const std::string& prefix, std::vector<std::string>* out) {
        std::string path = prefix;
        for (;;) {
            const size_t from = i_;
            while (i_ < t_.size() && t_[i_] != ';' && t_[i_] != '/' && t_[i_] != '(' && t_[i_] != ')') ++i_;
            std::string_view name = t_.substr(from, i_ - from);
            if (const size_t colon = name.find(':'); colon != std::string_view::npos) {
                if (!identifier(name.substr(0, colon))) return "'" + std::string(name) + "' has no module name";
                name = name.substr(colon + 1);
            }
            if (!identifier(name)) return "'" + std::string(name) + "' is no node name at " + std::to_string(from + 1);
            path += (path.empty() ? "" : ".") + std::string(name);
            if (i_ < t_.size() && t_[i_] == '/') {
                ++i_;
                continue;
            }
            break;
        }
        if (i_ < t_.size() && t_[i_] == '(') {
            if (++level_ > 16) return "more than 16 levels of '('";
            ++i_;
            if (auto e = expr(path, out)) return e;
            if (i_ >= t_.size() || t_[i_] != ')') return "'(' without ')'";
            ++i_;
            --level_;
            return std::nullopt;
        }
        // A prefix is repeated for every name inside its parentheses: the names are bounded,
        // so that a short query cannot ask for a large list.
        total_ += path.size();
        if (out->size() >= k_max_names || total_ > k_max_chars)
            return "more than " + std::to_string(k_max_names) + " names or " + std::to_string(k_max_chars) +
                   " characters of names";
        out->push_back(std::move(path));
        return std::nullopt;
    }

    static constexpr size_t k_max_names = 256;
    static constexpr size_t k_max_chars = 16384;
    size_t total_ = 0;
};

std::optional<UriError> query(std::string_view text, Query* q) {
    if (text.empty()) return std::nullopt;
    bool seen_depth = false, seen_fields = false, seen_content = false;
    for (const std::string_view item : split(text, '&')) {
        const size_t eq = item.find('=');
        const auto name = percent_decode(item.substr(0, eq));
        if (!name) return bad("query: bad percent-encoding");
        if (eq == std::string_view::npos) return bad("query parameter '" + *name + "' has no value");
        const auto value = percent_decode(item.substr(eq + 1));
        if (!value) return bad("query parameter '" + *name + "': bad percent-encoding");
        const std::string& v = *value;
        auto once = [&](bool* seen) -> std::optional<UriError> {
            if (*seen) return bad("query parameter '" + *name + "' given twice");
            *seen = true;
            return std::nullopt;
        };
        if (*name == "depth") {
            if (auto e = once(&seen_depth)) return e;
            if (v == "unbounded") continue;
            uint32_t d = 0;
            const auto [end, ec] = std::from_chars(v.data(), v.data() + v.size(), d);
            if (v.empty() || ec != std::errc{} || end != v.data() + v.size() || d < 1 || d > 65535)
                return bad("depth '" + v + "': 1 to 65535 or unbounded");
            q->depth = d;
        } else if (*name == "fields") {
            if (auto e = once(&seen_fields)) return e;
            std::vector<std::string> names;
            if (auto e = Fields(v).parse(&names)) return bad("fields '" + v + "': " + *e);
            q->fields = std::move(names);
        } else if (*name == "content") {
            if (auto e = once(&seen_content)) return e;
            if (v == "all") q->content = Content::all;
            else if (v == "config") q->content = Content::config;
            else if (v == "nonconfig") q->content = Content::nonconfig;
            else return bad("content '" + v + "': config, nonconfig or all");
        } else {
            return bad("unknown query parameter '" + *name + "'", "invalid-value");
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> percent_decode(std::string_view s) {
    std::string out;
    out.reserve(s.size());
    for (size_t i = 0; i < s.size(); ++i) {
        const auto raw = static_cast<unsigned char>(s[i]);
        if (raw < 0x20 || raw == 0x7f) return std::nullopt;   // no control byte stands in a URL as it is
        if (s[i] != '%') {
            out += s[i];
            continue;
        }
        if (i + 2 >= s.size()) return std::nullopt;
        const int hi = hex_digit(s[i + 1]), lo = hex_digit(s[i + 2]);
        if (hi < 0 || lo < 0) return std::nullopt;
        const char c = static_cast<char>(hi * 16 + lo);
        if (c == '\0') return std::nullopt;
        out += c;
        i += 2;
    }
    return out;
}

Translation translate(std::string_view method, std::string_view path, std::string_view query_text) {
    Request r;
    if (method == "GET") r.method = Method::get;
    else if (method == "HEAD") r.method = Method::head;
    else if (method == "OPTIONS") r.method = Method::options;
    else r.method = Method::write;

    if (path == "/.well-known/host-meta") {
        r.target = Target::host_meta;
    } else if (path == "/restconf" || path == "/restconf/") {
        r.target = Target::api_root;
    } else if (path == "/restconf/yang-library-version") {
        r.target = Target::library_version;
    } else if (path.starts_with("/restconf/modules/")) {
        r.target = Target::module;
        const auto name = percent_decode(path.substr(18));
        if (!name || !identifier(*name)) return bad("module name '" + std::string(path.substr(18)) + "' is malformed");
        r.module = *name;
    } else if (path == "/restconf/data" || path == "/restconf/data/") {
        r.target = Target::data;
    } else if (path.starts_with("/restconf/data/")) {
        r.target = Target::data;
        std::string_view rest = path.substr(15);
        if (rest.ends_with('/')) rest.remove_suffix(1);
        size_t index = 0;
        for (const std::string_view raw : split(rest, '/')) {
            // The catalogue nests a few levels deep; a longer path is no request of ours.
            if (++index > k_max_segments)
                return bad("more than " + std::to_string(k_max_segments) + " segments");
            if (raw.empty()) return bad("segment " + std::to_string(index) + " is empty");
            auto s = segment(raw, index);
            if (auto* e = std::get_if<UriError>(&s)) return *e;
            r.path.push_back(std::move(std::get<Segment>(s)));
        }
        if (r.path.front().module.empty())
            return bad("segment 1 '" + r.path.front().text + "': the first segment names its module (module:name)");
        if (r.path.front().module == "ietf-yang-library") {
            if (r.path.size() != 1 || r.path.front().name != "modules-state" || r.path.front().keys)
                return missing("segment 1 '" + r.path.front().text + "': ietf-yang-library serves modules-state only");
            r.target = Target::yang_library;
            r.path.clear();
        }
    } else {
        return missing("no resource at '" + std::string(path) + "'");
    }
    if (auto e = query(query_text, &r.query)) return *e;
    return r;
}

}  // namespace zan::restconf

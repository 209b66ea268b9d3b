// The RESTCONF URL translation on arbitrary request targets ("path?query", the method taken
// from the first byte): it answers either an error with a status of 400, 404 and a message,
// or a request whose data path, written back with every key percent-encoded, translates to
// the same segments.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "uri.hpp"

namespace {

std::string encode(std::string_view s) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    for (const char ch : s) {
        const auto c = static_cast<unsigned char>(ch);
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
            c == '.') {
            out += ch;
        } else {
            out += '%';
            out += digits[c >> 4];
            out += digits[c & 15];
        }
    }
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    static constexpr const char* methods[] = {"GET", "HEAD", "OPTIONS", "PUT", "POST", "DELETE", "PATCH", "TRACE"};
    const char* method = methods[data[0] % 8];
    const std::string_view target(reinterpret_cast<const char*>(data) + 1, size - 1);
    const size_t q = target.find('?');
    const std::string_view path = target.substr(0, q);
    const std::string_view query = q == std::string_view::npos ? std::string_view{} : target.substr(q + 1);
    const auto t = zan::restconf::translate(method, path, query);
    if (const auto* e = std::get_if<zan::restconf::UriError>(&t)) {
        if (e->message.empty() || e->tag.empty() || (e->status != 400 && e->status != 404)) std::abort();
        return 0;
    }
    const auto& r = std::get<zan::restconf::Request>(t);
    if (r.target != zan::restconf::Target::data || r.path.empty()) return 0;
    std::string again = "/restconf/data";
    for (const auto& s : r.path) {
        again += '/';
        if (!s.module.empty()) again += s.module + ':';
        again += s.name;
        if (!s.keys) continue;
        again += '=';
        for (size_t i = 0; i < s.keys->size(); ++i) again += (i ? "," : "") + encode((*s.keys)[i]);
    }
    const auto t2 = zan::restconf::translate(method, again, "");
    const auto* r2 = std::get_if<zan::restconf::Request>(&t2);
    if (!r2 || r2->path.size() != r.path.size()) std::abort();
    for (size_t i = 0; i < r.path.size(); ++i)
        if (r2->path[i].module != r.path[i].module || r2->path[i].name != r.path[i].name ||
            r2->path[i].keys != r.path[i].keys)
            std::abort();
    return 0;
}

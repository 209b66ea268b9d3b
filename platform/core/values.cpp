// Readable forms of values and the address parsers.
#include <arpa/inet.h>

#include <charconv>
#include <cstdio>

#include "zan/platform.hpp"

namespace zan::plat {
namespace {

void append_quoted(std::string& out, std::string_view s) {
    out += '"';
    for (char c : s) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\x%02x", unsigned(static_cast<unsigned char>(c)));
            out += buf;
        } else {
            out += c;
        }
    }
    out += '"';
}

template <class Int>
void append_int(std::string& out, Int v) {
    char buf[24];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    out.append(buf, r.ptr);
}

void append_value(std::string& out, const Value& value) {
    struct Visit {
        std::string& out;
        void operator()(const Null&) { out += "null"; }
        void operator()(int64_t v) { append_int(out, v); }
        void operator()(uint64_t v) { append_int(out, v); }
        void operator()(bool v) { out += v ? "true" : "false"; }
        void operator()(const std::string& v) { append_quoted(out, v); }
        void operator()(const Ip& v) { out += format_ip(v); }
        void operator()(const Mac& v) { out += format_mac(v); }
        void operator()(const EnumText& v) { out += v.text; }
        void operator()(const ValueList& v) {
            out += '[';
            for (size_t i = 0; i < v.size(); ++i) {
                if (i) out += ", ";
                append_value(out, v[i]);
            }
            out += ']';
        }
        void operator()(const NameValueList& v) {
            out += '{';
            for (size_t i = 0; i < v.size(); ++i) {
                if (i) out += ", ";
                out += v[i].name;
                out += ": ";
                append_value(out, v[i].value);
            }
            out += '}';
        }
        void operator()(const Uri& v) {
            out += "uri ";
            out += v.text;
        }
    };
    std::visit(Visit{out}, value.v);
}

int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

std::string to_text(const Value& v) {
    std::string out;
    append_value(out, v);
    return out;
}

std::optional<Ip> parse_ip(std::string_view text) {
    char buf[INET6_ADDRSTRLEN + 1];
    if (text.empty() || text.size() >= sizeof buf) return std::nullopt;
    text.copy(buf, text.size());
    buf[text.size()] = '\0';
    Ip ip;
    if (inet_pton(AF_INET, buf, ip.bytes) == 1) {
        ip.family = 4;
        return ip;
    }
    if (inet_pton(AF_INET6, buf, ip.bytes) == 1) {
        ip.family = 6;
        return ip;
    }
    return std::nullopt;
}

std::string format_ip(const Ip& ip) {
    char buf[INET6_ADDRSTRLEN];
    if (!inet_ntop(ip.family == 6 ? AF_INET6 : AF_INET, ip.bytes, buf, sizeof buf)) return "?";
    return buf;
}

// Six hex pairs separated by ':' or '-', or three groups of four digits separated by '.'.
std::optional<Mac> parse_mac(std::string_view text) {
    Mac mac;
    if (text.size() == 17) {
        char sep = text[2];
        if (sep != ':' && sep != '-') return std::nullopt;
        for (int i = 0; i < 6; ++i) {
            int hi = hex_digit(text[size_t(i * 3)]), lo = hex_digit(text[size_t(i * 3 + 1)]);
            if (hi < 0 || lo < 0 || (i < 5 && text[size_t(i * 3 + 2)] != sep)) return std::nullopt;
            mac.bytes[i] = uint8_t(hi << 4 | lo);
        }
        return mac;
    }
    if (text.size() == 14 && text[4] == '.' && text[9] == '.') {
        int b = 0;
        for (size_t i = 0; i < 14; i += 2) {
            if (i == 4 || i == 9) ++i;
            int hi = hex_digit(text[i]), lo = hex_digit(text[i + 1]);
            if (hi < 0 || lo < 0) return std::nullopt;
            mac.bytes[b++] = uint8_t(hi << 4 | lo);
        }
        return b == 6 ? std::optional<Mac>(mac) : std::nullopt;
    }
    return std::nullopt;
}

std::string format_mac(const Mac& mac) {
    char buf[18];
    std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", mac.bytes[0], mac.bytes[1], mac.bytes[2],
                  mac.bytes[3], mac.bytes[4], mac.bytes[5]);
    return buf;
}

}  // namespace zan::plat

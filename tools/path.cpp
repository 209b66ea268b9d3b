#include "path.hpp"

namespace zanfe {

namespace {

constexpr std::string_view k_not_bare = "/[]=' \t";

[[noreturn]] void fail(size_t number, std::string_view segment, const std::string& why) {
    throw PathError("segment " + std::to_string(number) + " '" + std::string(segment) + "': " + why);
}

std::string quoted_char(char c) {
    if (c == ' ') return "blank";
    if (c == '\t') return "tab";
    return std::string("'") + c + "'";
}
std::string holds(char c) { return c == ' ' || c == '\t' ? "a " + quoted_char(c) : quoted_char(c); }

// Splits at the '/' that stand outside brackets and quotes. A quote that is not closed
// keeps the rest of the text in its segment, where the segment pass reports it.
std::vector<std::string_view> split(std::string_view text) {
    std::vector<std::string_view> parts;
    size_t start = 0, depth = 0;
    bool quote = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote) {
            if (c == '\'') quote = false;   // "''" reopens at once: still inside
            continue;
        }
        if (c == '\'' && depth > 0) quote = true;
        else if (c == '[') ++depth;
        else if (c == ']' && depth > 0) --depth;
        else if (c == '/' && depth == 0) {
            parts.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(text.substr(start));
    return parts;
}

PathSegment parse_segment(size_t number, std::string_view s) {
    if (s.empty()) throw PathError("segment " + std::to_string(number) + " is empty");
    PathSegment seg;
    seg.text = std::string(s);
    size_t i = s.find('[');
    const std::string_view name = s.substr(0, i);
    if (name.empty()) fail(number, s, "no segment name before '['");
    if (const size_t bad = name.find_first_of(k_not_bare); bad != std::string_view::npos)
        fail(number, s, name[bad] == ']' ? "']' without '['" : "unexpected " + quoted_char(name[bad]) + " in the name");
    seg.name = std::string(name);

    while (i < s.size()) {
        if (s[i] != '[') fail(number, s, "unexpected " + quoted_char(s[i]) + " after ']'");
        ++i;
        if (!seg.keys) seg.keys.emplace();
        if (s.substr(i, 2) == "*]") {
            if (!seg.keys->empty()) fail(number, s, "'[*]' may only stand as the first key");
            seg.keys->emplace_back("*", "");
            i += 2;
            continue;
        }
        const size_t stop = s.find_first_of("=]", i);
        if (stop == std::string_view::npos) fail(number, s, "'[' without ']'");
        const std::string_view key = s.substr(i, stop - i);
        if (key.empty()) fail(number, s, "empty key name");
        // "*" stands for the key's name alone ("[*]"); no key is called so.
        if (key == "*") fail(number, s, "'*' is no key name: write '[*]' alone to ask for the key");
        if (const size_t bad = key.find_first_of(k_not_bare); bad != std::string_view::npos)
            fail(number, s, "unexpected " + quoted_char(key[bad]) + " in the key name '" + std::string(key) + "'");
        if (s[stop] == ']') fail(number, s, "key '" + std::string(key) + "' has no value (want [name=value])");
        i = stop + 1;
        std::string value;
        if (i < s.size() && s[i] == '\'') {
            ++i;
            for (;;) {
                const size_t q = s.find('\'', i);
                if (q == std::string_view::npos) fail(number, s, "unterminated quote in the value of '" + std::string(key) + "'");
                value.append(s.substr(i, q - i));
                i = q + 1;
                if (i < s.size() && s[i] == '\'') {   // '' stands for one quote
                    value.push_back('\'');
                    ++i;
                    continue;
                }
                break;
            }
            if (i >= s.size()) fail(number, s, "'[' without ']'");
            if (s[i] != ']') fail(number, s, "expected ']' after the quoted value of '" + std::string(key) + "'");
        } else {
            const size_t end = s.find(']', i);
            if (end == std::string_view::npos) fail(number, s, "'[' without ']'");
            const std::string_view bare = s.substr(i, end - i);
            if (const size_t bad = bare.find_first_of(k_not_bare); bad != std::string_view::npos)
                fail(number, s, "value '" + std::string(bare) + "' of '" + std::string(key) +
                                    "' must be quoted (it holds " + holds(bare[bad]) + ")");
            value = std::string(bare);
            i = end;
        }
        ++i;   // the ']'
        seg.keys->emplace_back(std::string(key), std::move(value));
    }
    if (seg.name == "*" && seg.keys) fail(number, s, "'*' takes no keys");
    return seg;
}

}  // namespace

std::vector<PathSegment> parse_path(std::string_view text) {
    if (text.empty()) throw PathError("empty path");
    if (text.front() == '/') text.remove_prefix(1);   // a leading '/' is allowed
    if (text.empty()) throw PathError("empty path");
    std::vector<PathSegment> out;
    const auto parts = split(text);
    out.reserve(parts.size());
    for (size_t n = 0; n < parts.size(); ++n) out.push_back(parse_segment(n + 1, parts[n]));
    return out;
}

std::string format_segment(const PathSegment& s) {
    std::string out = s.name;
    if (!s.keys) return out;
    for (const auto& [k, v] : *s.keys) {
        out += '[';
        out += k;
        if (k == "*" && v.empty()) {
            out += ']';
            continue;
        }
        out += '=';
        if (v.find_first_of(k_not_bare) == std::string::npos) {
            out += v;
        } else {
            out += '\'';
            for (const char c : v) {
                if (c == '\'') out += '\'';
                out += c;
            }
            out += '\'';
        }
        out += ']';
    }
    return out;
}

}  // namespace zanfe

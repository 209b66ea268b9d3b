#include "access.hpp"

#include <crypt.h>

#include <cstring>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace zan::restconf {

std::optional<std::string> base64_decode(std::string_view text) {
    auto value = [](char c) -> int {
        if (c >= 'A' && c <= 'Z') return c - 'A';
        if (c >= 'a' && c <= 'z') return c - 'a' + 26;
        if (c >= '0' && c <= '9') return c - '0' + 52;
        if (c == '+') return 62;
        if (c == '/') return 63;
        return -1;
    };
    while (!text.empty() && text.back() == '=') text.remove_suffix(1);
    if (text.size() % 4 == 1) return std::nullopt;
    std::string out;
    uint32_t bits = 0;
    int have = 0;
    for (const char c : text) {
        const int v = value(c);
        if (v < 0) return std::nullopt;
        bits = (bits << 6) | uint32_t(v);
        have += 6;
        if (have >= 8) {
            have -= 8;
            out += char((bits >> have) & 0xff);
        }
    }
    return out;
}

void Users::add(std::string name, std::string hash, Role role) { users_[std::move(name)] = Entry{std::move(hash), role}; }

Login Users::check(std::string_view authorization) const {
    Login out;
    if (authorization.empty()) {
        out.why = "authentication required (HTTP Basic)";
        return out;
    }
    if (!authorization.starts_with("Basic ")) {
        out.why = "only HTTP Basic authentication is taken";
        return out;
    }
    const auto decoded = base64_decode(authorization.substr(6));
    const size_t colon = decoded ? decoded->find(':') : std::string::npos;
    if (colon == std::string::npos) {
        out.why = "malformed Basic credentials";
        return out;
    }
    out.name = decoded->substr(0, colon);
    const std::string password = decoded->substr(colon + 1);
    const auto it = users_.find(out.name);
    // An unknown user costs a hash as a known one does.
    static const std::string k_dummy = "$6$saltsaltsaltsal$" + std::string(86, 'x');
    const std::string& hash = it == users_.end() ? k_dummy : it->second.hash;
    crypt_data data{};
    const char* got = crypt_r(password.c_str(), hash.c_str(), &data);
    bool same = got != nullptr && got[0] != '*' && std::strlen(got) == hash.size();
    if (same) {
        unsigned diff = 0;
        for (size_t i = 0; i < hash.size(); ++i) diff |= unsigned(got[i] ^ hash[i]);
        same = diff == 0;
    }
    if (it == users_.end() || !same) {
        out.why = "wrong user name or password";
        return out;
    }
    out.role = it->second.role;
    return out;
}

Users load_users(const std::string& file) {
    std::ifstream in(file);
    if (!in) throw std::runtime_error("cannot read the users file " + file + ": " + std::strerror(errno));
    Users users;
    std::string line;
    int n = 0;
    while (std::getline(in, line)) {
        ++n;
        if (line.empty() || line[0] == '#') continue;
        const size_t a = line.find(':');
        const size_t b = line.rfind(':');
        const auto where = [&] { return file + " line " + std::to_string(n) + ": "; };
        if (a == std::string::npos || a == b || a == 0)
            throw std::runtime_error(where() + "want 'name:hash:role'");
        const std::string hash = line.substr(a + 1, b - a - 1);
        const std::string role = line.substr(b + 1);
        if (hash.empty() || hash[0] != '$') throw std::runtime_error(where() + "the hash is no crypt(3) hash");
        if (role != "reader" && role != "admin") throw std::runtime_error(where() + "role '" + role + "': reader or admin");
        users.add(line.substr(0, a), hash, role == "admin" ? Role::admin : Role::reader);
    }
    if (users.size() == 0) throw std::runtime_error("the users file " + file + " names no user");
    return users;
}

bool secret_name(std::string_view name) {
    if (name.find("key_string") != std::string_view::npos || name.find("private_key") != std::string_view::npos)
        return true;
    size_t from = 0;
    std::string_view before;
    while (from <= name.size()) {
        size_t end = name.find_first_of("_.", from);
        if (end == std::string_view::npos) end = name.size();
        const std::string_view word = name.substr(from, end - from);
        if (word.starts_with("passw") || word.starts_with("secret") || word == "psk" ||
            (word.starts_with("communit") && before != "extended"))
            return true;
        before = word;
        from = end + 1;
    }
    return false;
}

bool secret_attribute(const db::TableInfo&, std::string_view attribute) { return secret_name(attribute); }

}  // namespace zan::restconf

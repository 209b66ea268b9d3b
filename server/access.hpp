// Who may read what: HTTP Basic authentication against a users file of crypt(3) hashes, the
// two roles, and the rule that marks an attribute secret.
//
// Users file: one user a line, "name:hash:role"; blank lines and lines starting with '#'
// are skipped. The hash is what crypt(3) makes (libxcrypt: "$y$..." yescrypt or "$6$..."
// SHA-512, e.g. from `mkpasswd -m yescrypt`); the role is "reader" or "admin".
//
// Secret attributes: the catalogue's one rule (gen/catalogue.py secret_name), which also puts
// nacm:default-deny-all into the YANG module: an attribute is secret when a word of its name
// (the name split at '_' and '.') begins with "passw", "secret" or "communit" (but for
// "extended_community", a route target), or is "psk", or when the name holds "key_string"
// or "private_key". Readers get every other attribute; an admin gets all.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "zan/database.hpp"

namespace zan::restconf {

enum class Role { reader, admin };

struct Login {
    std::string name;
    std::optional<Role> role;   // nullopt: refused
    std::string why;            // why it was refused
};

class Users {
public:
    // The value of an Authorization header (empty: none given).
    Login check(std::string_view authorization) const;
    void add(std::string name, std::string hash, Role role);
    size_t size() const { return users_.size(); }

private:
    struct Entry {
        std::string hash;
        Role role;
    };
    std::unordered_map<std::string, Entry> users_;
};

// Reads a users file; throws std::runtime_error with one line naming the file and line.
Users load_users(const std::string& file);

bool secret_name(std::string_view attribute);
bool secret_attribute(const db::TableInfo& table, std::string_view attribute);

std::optional<std::string> base64_decode(std::string_view text);

}  // namespace zan::restconf

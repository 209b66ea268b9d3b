// Configuration files: JSON text that fills a record store (zan::db::Store) with the
// rows of the catalogue's tables, and the configuration built into the library.
//
// A file is one JSON object mapping table names to arrays of rows. A row is an object of
// attributes by their dotted names ("peer_server_key", "compound_0.peer_or_server.
// descriminator"), keys included; child rows stand under the member "children" of their
// parent row, by table name. README.md ("Configuration files") describes the format.
//
// Loading is all or nothing: the rows go into a fresh store, and a broken file yields one
// line naming the file, the place in it and the fault, for example
//   site.json: tbl_ci_vrf_eol[1].children.tbl_ci_vrf_afi_mode_eol[0]."vrf_af_afi": expected an integer, got string
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "zan/database.hpp"

namespace zan::config {

struct LoadResult {
    std::unique_ptr<db::Store> store;   // set on success
    std::string error;                  // one line, set on failure
    // The top-level member "@default_variant": the default variant the file asks for. The
    // loader applies it to no context; whoever serves the rows does (db::set_default_variant).
    std::optional<int32_t> default_variant;
    explicit operator bool() const { return store != nullptr; }
};

// `origin` names the text in messages (a file name, "<default>", ...).
LoadResult load_text(std::string_view text, std::string_view origin);
LoadResult load_file(const std::string& path);
LoadResult load_default();

// Loads into an existing store, replacing its rows only when the whole text loads.
// Answers the empty string on success, else the error line (and the store is untouched).
// On success *default_variant (when given) receives the file's "@default_variant".
std::string load_into(db::Store& store, std::string_view text, std::string_view origin,
                      std::optional<int32_t>* default_variant = nullptr);

// The configuration built into the library (config/default.json at build time).
std::string_view default_text();

}  // namespace zan::config

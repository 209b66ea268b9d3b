// Configuration written as RFC 7951 instance data of the YANG module zan-config (see
// engine/include/zan/rfc7951.hpp for the mapping), read by turning it into the loader's own
// document, which the loader then loads by its rules. Places in messages are given in the
// instance data's terms: zan-config:cfg_vlan_eol[0]/cfg_vlan_name_eol[0]/vlan_name.
#pragma once

#include <span>
#include <string>
#include <variant>

#include <nlohmann/json.hpp>

namespace zan::config::rfc7951 {

using json = nlohmann::ordered_json;
using Step = std::variant<std::string, size_t>;

// True when the top-level members are module-qualified names ("zan-config:..."), which
// the loader's own format never has.
bool is_instance_data(const json& doc);

// A fault of the instance data: the place, written out, and what is wrong.
struct Fault {
    std::string place;
    std::string what;
};

// The loader's document for the instance data: lists become arrays of rows under their
// table names (child tables under "children"), containers dotted attribute names, values
// the loader's forms. Throws Fault.
json to_tables(const json& doc);

// A place of the loader's document made from to_tables' result, written as the place of the
// instance data it came from.
std::string place_text(std::span<const Step> place);

}  // namespace zan::config::rfc7951

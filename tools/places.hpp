// Where a table stands in the tree and how its rows are keyed. The front end does not
// expose either, so both come from the database side's table information.
#pragma once

#include <string>
#include <string_view>

namespace zanfe {

struct TablePlace {
    std::string path;   // segments from the root joined by '/': "vrf/vrf_afi/vrf_rt"
    std::string key;    // key field names joined by ',': "singleton_id", "vrf_name,dhcp_server"
};

// Empty fields for a table the database does not know.
TablePlace table_place(std::string_view table);

}  // namespace zanfe

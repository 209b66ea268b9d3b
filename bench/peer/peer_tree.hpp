// The libyang tree the comparison measures, built once per process (peer_tree.cpp).
#pragma once

#include <libyang/libyang.h>

#include <cstddef>
#include <string>

#include "zan/database.hpp"

struct Peer {
    ly_ctx* ctx = nullptr;
    const lys_module* module = nullptr;
    lyd_node* vrfs = nullptr;        // first of the top-level vrf entries
    lyd_node* mac_ace = nullptr;     // the entry with the attributes that have a value
    lyd_node* mac_full = nullptr;    // the entry with all 395 leaves (in its own tree)
    size_t mac_leaves = 0;
    size_t mac_full_leaves = 0;
    std::string grandchild;          // vrf / vrf_afi / vrf_afi_rt path of a configured entry
};

// The context and tree, made on first use; a failure ends the process with one line.
const Peer& peer();

// The tool's path syntax: what a path parses into, and the one-line error for each way a
// path can be malformed.
#include <gtest/gtest.h>

#include "path.hpp"

namespace {

using zanfe::parse_path;
using zanfe::PathError;
using zanfe::PathSegment;
using Keys = std::vector<std::pair<std::string, std::string>>;

PathSegment seg(std::string name, std::string text, std::optional<Keys> keys = std::nullopt) {
    return PathSegment{std::move(name), std::move(keys), std::move(text)};
}

struct Good {
    const char* input;
    std::vector<PathSegment> want;
};

TEST(PathSyntax, ParsesSegmentsAndKeys) {
    const std::vector<Good> cases = {
        {"ntp_source", {seg("ntp_source", "ntp_source")}},
        {"/ntp_source", {seg("ntp_source", "ntp_source")}},
        {"*", {seg("*", "*")}},
        {"ntp_peer_server[peer_server_key=10.0.0.1]",
         {seg("ntp_peer_server", "ntp_peer_server[peer_server_key=10.0.0.1]", Keys{{"peer_server_key", "10.0.0.1"}})}},
        {"ntp_peer_server[*]", {seg("ntp_peer_server", "ntp_peer_server[*]", Keys{{"*", ""}})}},
        {"ip_dhcp_svr[vrf_name=red][dhcp_server=1.2.3.4]",
         {seg("ip_dhcp_svr", "ip_dhcp_svr[vrf_name=red][dhcp_server=1.2.3.4]",
              Keys{{"vrf_name", "red"}, {"dhcp_server", "1.2.3.4"}})}},
        {"vrf[vrf_key_vrf_name=red]/vrf_afi[vrf_af_afi=1]/vrf_afi_rt[vrf_mode_rt_key=65000:1]",
         {seg("vrf", "vrf[vrf_key_vrf_name=red]", Keys{{"vrf_key_vrf_name", "red"}}),
          seg("vrf_afi", "vrf_afi[vrf_af_afi=1]", Keys{{"vrf_af_afi", "1"}}),
          seg("vrf_afi_rt", "vrf_afi_rt[vrf_mode_rt_key=65000:1]", Keys{{"vrf_mode_rt_key", "65000:1"}})}},
        {"vrf[vrf_key_vrf_name=red]/*", {seg("vrf", "vrf[vrf_key_vrf_name=red]", Keys{{"vrf_key_vrf_name", "red"}}),
                                         seg("*", "*")}},
        // Quoted values keep '/', ']', '[' and blanks; '' is one quote; empty values stay empty.
        {"a[k='x/y]z w']/b", {seg("a", "a[k='x/y]z w']", Keys{{"k", "x/y]z w"}}), seg("b", "b")}},
        {"a[k='it''s']", {seg("a", "a[k='it''s']", Keys{{"k", "it's"}})}},
        {"a[k='']", {seg("a", "a[k='']", Keys{{"k", ""}})}},
        {"a[k=]", {seg("a", "a[k=]", Keys{{"k", ""}})}},
        // Only the first pair is the key the dispatcher compares; repeats are passed on as given.
        {"a[k=1][k=2]", {seg("a", "a[k=1][k=2]", Keys{{"k", "1"}, {"k", "2"}})}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input);
        try {
            EXPECT_EQ(parse_path(c.input), c.want);
        } catch (const PathError& e) {
            ADD_FAILURE() << "unexpected error: " << e.what();
        }
    }
}

struct Bad {
    const char* input;
    const char* error;
};

TEST(PathSyntax, RejectsMalformedPathsNamingTheSegment) {
    const std::vector<Bad> cases = {
        {"", "empty path"},
        {"/", "empty path"},
        {"a//b", "segment 2 is empty"},
        {"a/", "segment 2 is empty"},
        {"a/b/", "segment 3 is empty"},
        {"vrf[vrf_key_vrf_name=red", "segment 1 'vrf[vrf_key_vrf_name=red': '[' without ']'"},
        {"a/vrf_afi[vrf_af_afi", "segment 2 'vrf_afi[vrf_af_afi': '[' without ']'"},
        {"a]", "segment 1 'a]': ']' without '['"},
        {"a[k=1]]", "segment 1 'a[k=1]]': unexpected ']' after ']'"},
        {"a[k=1]x", "segment 1 'a[k=1]x': unexpected 'x' after ']'"},
        {"[k=1]", "segment 1 '[k=1]': no segment name before '['"},
        {"a[=1]", "segment 1 'a[=1]': empty key name"},
        {"a[k]", "segment 1 'a[k]': key 'k' has no value (want [name=value])"},
        {"a[k='x]", "segment 1 'a[k='x]': unterminated quote in the value of 'k'"},
        {"a[k='x'y]", "segment 1 'a[k='x'y]': expected ']' after the quoted value of 'k'"},
        {"a[k='x'", "segment 1 'a[k='x'': '[' without ']'"},
        {"a[k=x y]", "segment 1 'a[k=x y]': value 'x y' of 'k' must be quoted (it holds a blank)"},
        {"a[k=x'y]", "segment 1 'a[k=x'y]': value 'x'y' of 'k' must be quoted (it holds ''')"},
        {"a[k=x/y]", "segment 1 'a[k=x/y]': value 'x/y' of 'k' must be quoted (it holds '/')"},
        {"a[k=1][*]", "segment 1 'a[k=1][*]': '[*]' may only stand as the first key"},
        // found by fuzzing: "[*=]" read as the wildcard written back as "[*]"
        {"a[*=]", "segment 1 'a[*=]': '*' is no key name: write '[*]' alone to ask for the key"},
        {"a[k=1][*=2]", "segment 1 'a[k=1][*=2]': '*' is no key name: write '[*]' alone to ask for the key"},
        {"*[k=1]", "segment 1 '*[k=1]': '*' takes no keys"},
        {"a b", "segment 1 'a b': unexpected blank in the name"},
        {"a[k k=1]", "segment 1 'a[k k=1]': unexpected blank in the key name 'k k'"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input);
        try {
            const auto got = parse_path(c.input);
            ADD_FAILURE() << "parsed into " << got.size() << " segments";
        } catch (const PathError& e) {
            EXPECT_EQ(std::string(e.what()), c.error);
        }
    }
}

TEST(PathSyntax, FormattedSegmentsParseBackToThemselves) {
    for (const char* input : {"a[k='x/y]z w']", "a[k='it''s']", "a[*]", "a[k=1][j=2]", "a[k='']"}) {
        SCOPED_TRACE(input);
        const auto first = parse_path(input);
        const auto again = parse_path(zanfe::format_segment(first.at(0)));
        EXPECT_EQ(again.at(0).name, first.at(0).name);
        EXPECT_EQ(again.at(0).keys, first.at(0).keys);
    }
}

}  // namespace

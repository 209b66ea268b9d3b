// Hostile and broken input at the tool: every case is answered with one readable line on
// standard error, a non-zero exit and nothing on standard output; a broken file loads nothing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tool_run.hpp"

namespace {

// One readable line: no control characters, no bytes that are no UTF-8, of bounded size.
void expect_readable_failure(const ToolRun& r, const std::string& must_contain) {
    EXPECT_GT(r.status, 0) << "the tool must exit non-zero, not crash";
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.err_lines().size(), 1u) << r.err;
    const std::string line = r.err_lines()[0];
    EXPECT_TRUE(line.starts_with("zanfe: ")) << line;
    EXPECT_LT(line.size(), 700u) << "an overlong input is cut in the message";
    for (unsigned char c : line) EXPECT_TRUE(c >= 0x20 && c < 0x7f) << "byte " << int(c) << " in: " << line;
    EXPECT_NE(line.find(must_contain), std::string::npos) << line;
}

}  // namespace

TEST(ToolBadInput, MalformedPaths) {
    const std::string long_name(10240, 'a');
    const std::string long_key(10240, 'k');
    struct Case {
        std::string path;
        std::string reason;   // part of the message
    };
    const std::vector<Case> cases = {
        // Each syntax fault and its message: PathSyntax.RejectsMalformedPathsNamingTheSegment.
        {"", "empty path"},
        {"vrf[vrf_key_vrf_name=red", "'[' without ']'"},
        {"vr*f", "no table takes this segment here"},
        {"*/vrf", "no table takes this segment here"},
        {"vrf[*][a=1]", "does not know this key"},
        {long_name, "no table takes this segment here"},
        {"vrf\n[x=1]", "vrf\\x0a"},
        {"vrf\xff\xfe", "\\xff\\xfe"},
        {"U_tbl_cfg_ip_dhcp_snooping_eol[singleton_id=abc]", "does not convert"},
        {"U_tbl_cfg_ip_dhcp_snooping_eol[singleton_id=99999999999]", "does not convert"},
        {"U_tbl_cfg_ip_dhcp_snooping_eol[singleton_id=" + long_key + "]", "does not convert"},
    };
    for (const Case& c : cases)
        for (const char* command : {"resolve", "get"}) {
            SCOPED_TRACE(std::string(command) + " " + c.path.substr(0, 80));
            expect_readable_failure(zanfe({command, c.path}), c.reason);
        }
    // A key of 10 kB that converts is a path like any other: the row is just not there.
    expect_readable_failure(zanfe({"get", "vrf[vrf_key_vrf_name=" + long_key + "]"}), "no such row");
}

TEST(ToolBadInput, UnknownTablesAndCommands) {
    expect_readable_failure(zanfe({"columns", "tbl_nope"}), "tbl_nope");
    expect_readable_failure(zanfe({"columns", std::string(10240, 't')}), "characters");
    expect_readable_failure(zanfe({"frobnicate"}), "frobnicate");
}

// A broken file is reported with its place and loads nothing: no row of it is printed,
// whatever the command.
TEST(ToolBadInput, BrokenConfigurationFiles) {
    struct Case {
        std::string text;
        std::string reason;
    };
    const std::vector<Case> cases = {
        {R"({"tbl_cfg_ip_dhcp_snooping_eol": [{"singleton_id": 1})", "bad JSON"},
        {"", "bad JSON"},
        {"\xff\xfe{}", "bad JSON"},
        {R"([1, 2])", "object"},
        {R"({"tbl_cfg_ip_dhcp_snooping_eol": [{"singleton_id": "x"}]})", "expected an integer"},
        {R"({"tbl_cfg_ip_dhcp_snooping_eol": [{"singleton_id": -1}]})", "singleton_id"},
        {R"({"tbl_cfg_ip_dhcp_snooping_eol": {"singleton_id": 1}})", "tbl_cfg_ip_dhcp_snooping_eol"},
        {R"({"tbl_cfg_ip_dhcp_snooping_eol": [{"singleton_id": 1}, {"singleton_id": 1}]})", "duplicate key"},
        {R"({"tbl_cfg_ip_dhcp_snooping_eol": [{"singleton_id": 1, "singleton_id": 2}]})", "repeated"},
        {R"({"tbl_cfg_ip_dhcp_snooping_eol": [{"singleton_id": 1, "nope": 2}]})", "unknown attribute"},
        {R"({"tbl_nope": []})", "unknown table"},
        // a child table at the top, and a table under itself: parents cannot go round
        {R"({"tbl_ci_vrf_afi_mode_eol": [{"vrf_af_afi": 1}]})", "no top-level table"},
        {R"({"tbl_ci_vrf_eol": [{"vrf_key_vrf_name": "red", "children": {"tbl_ci_vrf_eol": [{"vrf_key_vrf_name": "red"}]}}]})",
         "no child of tbl_ci_vrf_eol"},
        {R"({"tbl_ci_vrf_eol": [{"vrf_key_vrf_name": "red", "children": {"tbl_ci_vrf_afi_mode_eol": [{"vrf_af_afi": 1, "children": {"tbl_ci_vrf_eol": [{"vrf_key_vrf_name": "blue"}]}}]}}]})",
         "no child of tbl_ci_vrf_afi_mode_eol"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 100));
        const TempFile file(c.text);
        for (const char* command : {"dump", "tables"}) {
            const ToolRun r = zanfe({"--db", file.path, command});
            expect_readable_failure(r, c.reason);
            EXPECT_NE(r.err.find(file.path), std::string::npos) << "the message names the file";
        }
    }
}

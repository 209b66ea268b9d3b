// The zanfe command as a user runs it: a separate process, its output, its error lines
// and its exit status.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "tool_run.hpp"

namespace {

nlohmann::ordered_json parse_json(const std::string& text) {
    auto j = nlohmann::ordered_json::parse(text, nullptr, /*allow_exceptions=*/false);
    EXPECT_FALSE(j.is_discarded()) << "not JSON: " << text.substr(0, 200);
    return j;
}

// A run that must succeed: its standard output (the error text says why it failed).
std::string out_of(const std::vector<std::string>& args) {
    const ToolRun r = zanfe(args);
    EXPECT_EQ(r.status, 0) << r.err;
    return r.out;
}

TEST(ToolTables, ListsEveryRowWithPathAndKey) {
    const ToolRun r = zanfe({"tables"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    const auto lines = split_lines(r.out);
    EXPECT_EQ(lines.size(), 331u);
    EXPECT_EQ(lines, split_lines(slurp(TOOL_EXPECT_DIR "/tables.tsv")));
}

TEST(ToolColumns, JsonIsEveryTableInRowOrder) {
    const ToolRun r = zanfe({"columns", "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    const auto got = parse_json(r.out);
    ASSERT_TRUE(got.is_object());
    EXPECT_EQ(got.size(), 329u);
    size_t total = 0;
    for (const auto& [table, cols] : got.items()) {
        ASSERT_TRUE(cols.is_array()) << table;
        for (const auto& c : cols) {
            ASSERT_TRUE(c.is_array() && c.size() == 2 && c[0].is_string() && c[1].is_number_unsigned()) << c;
        }
        total += cols.size();
    }
    EXPECT_EQ(total, 2291u);
    // Same tables, same order, same columns as the catalogue says.
    const auto want = nlohmann::ordered_json::parse(slurp(TOOL_EXPECT_DIR "/columns.json"));
    EXPECT_TRUE(got == want);
    if (got != want) {
        auto w = want.items().begin();
        for (const auto& [table, cols] : got.items()) {
            if (w == want.items().end()) break;
            if (table != w.key() || cols != w.value()) {
                ADD_FAILURE() << "first difference at " << table << " (expected " << w.key() << ")";
                break;
            }
            ++w;
        }
    }
}

TEST(ToolColumns, TextListsColumnsWithCodeAndWord) {
    EXPECT_EQ(out_of({"columns", "tbl_ntp_source_eol", "tbl_ntp_maxdist_eol"}),
              "tbl_ntp_source_eol\n"
              "  singleton_id\t4 u_int32\n"
              "  compound_0.ntp_source_ifhandle\t4 u_int32\n"
              "tbl_ntp_maxdist_eol\n"
              "  singleton_id\t4 u_int32\n"
              "  compound_0.ntp_mdist_value_1\t5 int32\n");

    // Every table: one heading line each, one indented line per column, and the text says
    // what the JSON form says.
    using Entry = std::tuple<std::string, std::string, unsigned>;
    std::vector<Entry> from_text, from_json;
    size_t headings = 0;
    std::string table;
    for (const auto& line : split_lines(out_of({"columns"}))) {
        if (!line.starts_with("  ")) {
            table = line;
            ++headings;
            continue;
        }
        const auto tab = line.find('\t'), space = line.find(' ', tab);
        ASSERT_NE(space, std::string::npos) << line;
        from_text.emplace_back(table, line.substr(2, tab - 2), std::stoul(line.substr(tab + 1, space - tab - 1)));
        EXPECT_NE(line.substr(space + 1), "?") << line;
    }
    const auto json = parse_json(zanfe({"columns", "--json"}).out);
    for (const auto& [t, cols] : json.items())
        for (const auto& c : cols) from_json.emplace_back(t, c[0].get<std::string>(), c[1].get<unsigned>());
    EXPECT_EQ(headings, 329u);
    EXPECT_EQ(from_text.size(), 2291u);
    EXPECT_TRUE(from_text == from_json);
}

TEST(ToolColumns, NamedTablesKeepTheirOrderAndCountOnce) {
    const auto got = parse_json(out_of({"columns", "--json", "tbl_ntp_peer_eol", "tbl_ip_dhcp_svr", "tbl_ntp_peer_eol"}));
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got.begin().key(), "tbl_ntp_peer_eol");
    EXPECT_EQ(got["tbl_ntp_peer_eol"].size(), 37u);
    EXPECT_EQ(got["tbl_ntp_peer_eol"][0], nlohmann::ordered_json::array({"peer_server_key", 8}));
    EXPECT_EQ(got["tbl_ip_dhcp_svr"].size(), 2u);
}

TEST(ToolErrors, BadTablesAreRejectedBeforeAnythingIsPrinted) {
    expect_one_line_failure(zanfe({"columns", "tbl_ntp_peer_eol", "tbl_nope"}), "zanfe: unknown table 'tbl_nope'");
    expect_one_line_failure(zanfe({"columns", "--json", "tbl_nope", "tbl_ntp_peer_eol"}),
                            "zanfe: unknown table 'tbl_nope'");
    // A second entrance is a path, not a table of its own.
    expect_one_line_failure(zanfe({"columns", "tbl_ci_vrf_mode_rt_eol_b"}),
                            "zanfe: unknown table 'tbl_ci_vrf_mode_rt_eol_b'");
}

TEST(ToolErrors, BadCommandLines) {
    expect_one_line_failure(zanfe({"frobnicate"}), "zanfe: unknown command 'frobnicate'");
    expect_one_line_failure(zanfe({}), "zanfe: no command given (see 'zanfe --help')");
    expect_one_line_failure(zanfe({"tables", "--jsno"}), "zanfe: unknown option '--jsno'");
    expect_one_line_failure(zanfe({"-x", "tables"}), "zanfe: unknown option '-x'");
    expect_one_line_failure(zanfe({"tables", "--json"}), "zanfe: option '--json' does not apply to 'tables'");
    expect_one_line_failure(zanfe({"tables", "tbl_ntp_peer_eol"}),
                            "zanfe: 'tables' takes no arguments (got 'tbl_ntp_peer_eol')");
    expect_one_line_failure(zanfe({"columns", "--lib"}), "zanfe: option '--lib' needs a value");
    expect_one_line_failure(zanfe({"columns", "--trace=yes"}), "zanfe: option '--trace' takes no value");
    expect_one_line_failure(zanfe({"columns", "--fail", "arbor_fe_ntlist_add:0"}),
                            "zanfe: bad call number in --fail 'arbor_fe_ntlist_add:0' (want POINT or POINT:N, N >= 1)");
    // Usage faults and run-time faults exit differently.
    EXPECT_EQ(zanfe({"frobnicate"}).status, 2);
    EXPECT_EQ(zanfe({"columns", "tbl_nope"}).status, 1);
}

TEST(ToolErrors, LibraryThatCannotBeUsed) {
    ToolRun r = zanfe({"tables"}, {"ZANFE_LIBRARY=/nonexistent/libzanfe.so"});
    ASSERT_EQ(r.err_lines().size(), 1u) << r.err;
    expect_one_line_failure(r, r.err_lines()[0]);
    EXPECT_TRUE(r.err.starts_with("zanfe: cannot load /nonexistent/libzanfe.so: ")) << r.err;

    // --lib wins over the environment.
    r = zanfe({"--lib", "/nowhere/libzanfe.so", "tables"}, {"ZANFE_LIBRARY=/nonexistent/libzanfe.so"});
    EXPECT_TRUE(r.err.starts_with("zanfe: cannot load /nowhere/libzanfe.so: ")) << r.err;

    // A library that loads but is no front end.
    expect_one_line_failure(zanfe({"tables", "--lib=" ZAN_PLATFORM_LIBRARY}),
                            "zanfe: " ZAN_PLATFORM_LIBRARY " has no zan_config_db_data_model_fe_init");
}

TEST(ToolTrace, TraceLinesGoToStandardErrorOnlyWhenAsked) {
    // The third column fails to be added: the walk traces its way back up.
    const ToolRun traced = zanfe({"--trace", "columns", "tbl_ntp_peer_eol", "--fail", "arbor_fe_ntlist_add:3"});
    EXPECT_EQ(traced.status, 1);
    EXPECT_EQ(traced.out, "");
    const auto lines = traced.err_lines();
    ASSERT_GE(lines.size(), 2u) << traced.err;
    for (size_t i = 0; i + 1 < lines.size(); ++i)
        EXPECT_TRUE(lines[i].starts_with("trace 0x3000000 ")) << lines[i];
    EXPECT_NE(traced.err.find("ntp_peer_eol to_ntlist failed (Input/output error)"), std::string::npos)
        << traced.err;
    EXPECT_EQ(lines.back(),
              "zanfe: column description of tbl_ntp_peer_eol failed: status -1, error 5 (Input/output error)");

    const ToolRun quiet = zanfe({"columns", "tbl_ntp_peer_eol", "--fail", "arbor_fe_ntlist_add:3"});
    expect_one_line_failure(quiet, lines.back());

    // A clean run has nothing to trace and prints the same as without the option.
    const ToolRun clean = zanfe({"columns", "--trace", "tbl_ntp_peer_eol"});
    EXPECT_EQ(clean.status, 0);
    EXPECT_EQ(clean.err, "");
    EXPECT_EQ(clean.out, zanfe({"columns", "tbl_ntp_peer_eol"}).out);
}

TEST(ToolTrace, FailedRegistrationStopsTheTool) {
    const ToolRun r = zanfe({"tables", "--fail", "arbor_register_fe_gx_vectors"});
    ASSERT_EQ(r.err_lines().size(), 1u) << r.err;
    expect_one_line_failure(r, r.err_lines()[0]);
    EXPECT_TRUE(r.err.starts_with("zanfe: zan_config_db_data_model_fe_init of /")) << r.err;
    EXPECT_TRUE(r.err.ends_with(" answered -1\n")) << r.err;
}

TEST(ToolHelp, HelpListsCommandsAndOptions) {
    for (const char* h : {"--help", "-h"}) {
        const ToolRun r = zanfe({h});
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.err, "");
        for (const char* word : {"tables", "columns", "--json", "--trace", "--lib", "--fail", "resolve", "--kind", "ls",
                                 "--all", "--db"})
            EXPECT_NE(r.out.find(word), std::string::npos) << word;
    }
}

// ---------------------------------------------------------------- resolve, ls, --db

std::vector<std::string> expected_lines(const char* file) {
    return split_lines(slurp(std::string(TOOL_EXPECT_DIR "/") + file));
}

std::vector<std::string> split(const std::string& text, char sep) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string part; std::getline(in, part, sep);) out.push_back(part);
    return out;
}

TEST(ToolLs, RootListingIsTheRootChainInOrder) {
    const ToolRun r = zanfe({"ls", "*"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    const auto lines = split_lines(r.out);
    EXPECT_EQ(lines.size(), 107u);
    EXPECT_EQ(lines, expected_lines("root_segments.txt"));
    EXPECT_EQ(zanfe({"ls", "/*"}).out, r.out);
}

TEST(ToolLs, WithoutMarkersEveryTableOffersItsSegment) {
    const auto lines = split_lines(out_of({"ls", "--all", "*"}));
    EXPECT_EQ(lines.size(), 331u);
    EXPECT_EQ(lines, expected_lines("all_segments.txt"));
}

// The children of each of the 22 parents in chain order are the dispatchers' listing
// (Resolve.StarBelowATableListsExactlyItsChildren), which ls prints as the engine hands it
// over; the one that matters most to users, spelled out.
TEST(ToolLs, ChildrenOfAParentInChainOrder) {
    EXPECT_EQ(zanfe({"ls", "vrf[vrf_key_vrf_name=red]/*"}).out,
              "vrf_rd\nvrf_ipv4_mt\nvrf_descr\nvrf_afi\nvrf_vpnid\nvrf_rt\nvrf_ipv6_mt\n");
}

TEST(ToolLs, KeyNamesAndEmptyListings) {
    EXPECT_EQ(zanfe({"ls", "ntp_peer_server[*]"}).out, "peer_server_key\n");
    EXPECT_EQ(zanfe({"ls", "vrf[vrf_key_vrf_name=red]/vrf_afi[*]"}).out, "vrf_af_afi\n");
    // A table without children lists nothing, and that is an answer.
    ToolRun r = zanfe({"ls", "ntp_peer_server[peer_server_key=10.0.0.1]/*"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "");
    // Compound keys offer no key name.
    r = zanfe({"ls", "ip_dhcp_svr[*]"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "");
}

TEST(ToolLs, PathsThatDoNotGetToTheWildcard) {
    expect_one_line_failure(zanfe({"ls", "nope/*"}),
                            "zanfe: path 'nope/*' does not resolve: code 3 at segment 1 'nope': "
                            "no table takes this segment here");
    expect_one_line_failure(zanfe({"ls", "vrf[bad=1]/*"}),
                            "zanfe: path 'vrf[bad=1]/*' does not resolve: code 3 at segment 1 'vrf[bad=1]': "
                            "its table does not know this key");
    expect_one_line_failure(zanfe({"ls", "vrf/*"}),
                            "zanfe: path 'vrf/*' does not resolve: code 0 at segment 1 'vrf': "
                            "its key is missing or cannot be used, or its query step could not be made");
    expect_one_line_failure(zanfe({"ls", "vrf"}), "zanfe: path 'vrf': ls wants '*' or '[*]' in the last segment");
    expect_one_line_failure(zanfe({"ls", "*/vrf"}), "zanfe: path '*/vrf': '*' may only stand in the last segment");
    EXPECT_EQ(zanfe({"ls", "vrf"}).status, 2);
}

TEST(ToolResolve, PrintsTraversalsSlotListsAndRows) {
    const std::string out = out_of({"resolve", "vrf[vrf_key_vrf_name=red]/vrf_afi[vrf_af_afi=1]/vrf_afi_rt[vrf_mode_rt_key=x]"});
    const auto lines = split_lines(out);
    ASSERT_GE(lines.size(), 11u) << out;
    EXPECT_EQ(lines[0], "code 1");
    // Path and query steps alternate; the grandchild's path step names the second entrance
    // by its path-query identifier and the table it enters by deref_table.
    for (int i = 1; i <= 6; ++i)
        EXPECT_TRUE(lines[size_t(i)].starts_with("traversal " + std::to_string(i) + ": pq=" + (i % 2 ? "0" : "1")))
            << lines[size_t(i)];
    EXPECT_NE(lines[1].find("(tbl_ci_vrf_eol) deref_table="), std::string::npos) << lines[1];
    EXPECT_EQ(lines[1].find("arbor_id_vec"), std::string::npos) << lines[1];
    EXPECT_NE(lines[2].find("key_data=726564"), std::string::npos) << lines[2];   // "red"
    EXPECT_NE(lines[2].find("(ci_vrf_eol.vrf_key_vrf_name) key_field_id="), std::string::npos) << lines[2];
    EXPECT_NE(lines[4].find("key_data=01000000"), std::string::npos) << lines[4];   // u_int32 1
    EXPECT_NE(lines[5].find("(tbl_ci_vrf_mode_rt_eol_b) deref_table="), std::string::npos) << lines[5];
    EXPECT_NE(lines[5].find("(tbl_ci_vrf_mode_rt_eol) arbor_id_vec[0]="), std::string::npos) << lines[5];
    EXPECT_NE(lines[5].find("(tbl_ci_vrf_afi_mode_eol) arbor_id_vec[1]="), std::string::npos) << lines[5];
    EXPECT_EQ(lines[7], "slot tbl_ci_vrf_mode_rt_eol");
    EXPECT_EQ(lines[8], "pd_list empty");
    EXPECT_EQ(lines[9], "pdc_list inst_tbl_ci_vrf_mode_rt_eol");
    EXPECT_TRUE(lines[10].starts_with("rows ")) << lines[10];
}

TEST(ToolResolve, KindDecidesWhetherTheLastKeyIsNeeded) {
    // Kind 0 reads without a key: a path step alone.
    ToolRun r = zanfe({"resolve", "ntp_peer_server"});
    ASSERT_EQ(r.status, 0) << r.err;
    auto lines = split_lines(r.out);
    ASSERT_GE(lines.size(), 3u);
    EXPECT_TRUE(lines[1].starts_with("traversal 1: pq=0")) << lines[1];
    EXPECT_TRUE(lines[2].starts_with("slot ")) << lines[2];
    // Kind 3 wants the key.
    expect_one_line_failure(zanfe({"resolve", "--kind", "3", "ntp_peer_server"}),
                            "zanfe: path 'ntp_peer_server' does not resolve: code 0 at segment 1 'ntp_peer_server': "
                            "its key is missing or cannot be used, or its query step could not be made");
    // Kind 6 makes no query on the last segment, not even for a wrong key.
    r = zanfe({"resolve", "--kind=6", "ntp_peer_server[nope=1]"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(split_lines(r.out).at(2), "slot tbl_ntp_peer_eol");
    expect_one_line_failure(zanfe({"resolve", "--kind", "x", "ntp_peer_server"}),
                            "zanfe: --kind wants a number, not 'x'");
}

TEST(ToolResolve, FailuresNameTheSegment) {
    expect_one_line_failure(zanfe({"resolve", "vrf[vrf_key_vrf_name=red]/nope"}),
                            "zanfe: path 'vrf[vrf_key_vrf_name=red]/nope' does not resolve: code 3 at segment 2 "
                            "'nope': no table takes this segment here");
    // A child before its parent has no from-table.
    expect_one_line_failure(zanfe({"resolve", "vrf_afi[vrf_af_afi=1]"}),
                            "zanfe: path 'vrf_afi[vrf_af_afi=1]' does not resolve: code 5 at segment 1 "
                            "'vrf_afi[vrf_af_afi=1]': its traversal could not be built (parent missing, or out of "
                            "memory)");
    // A key value that does not convert: the query step stays in params without key or pq,
    // and the stop is at its own segment, not the next.
    expect_one_line_failure(zanfe({"resolve", "vrf[vrf_key_vrf_name=red]/vrf_afi[vrf_af_afi=abc]/vrf_afi_rt"}),
                            "zanfe: path 'vrf[vrf_key_vrf_name=red]/vrf_afi[vrf_af_afi=abc]/vrf_afi_rt' does not "
                            "resolve: code 5 at segment 2 'vrf_afi[vrf_af_afi=abc]': its key value does not convert "
                            "to the key's stored form");
    expect_one_line_failure(zanfe({"resolve", "ip_dhcp_svr[vrf_name=red][dhcp_server=abc]"}),
                            "zanfe: path 'ip_dhcp_svr[vrf_name=red][dhcp_server=abc]' does not resolve: code 0 at "
                            "segment 1 'ip_dhcp_svr[vrf_name=red][dhcp_server=abc]': its key value cannot be used");
    // Traversals that cannot be made: the fifth is the third segment's path step, the fourth
    // the second segment's query step.
    const std::string three = "vrf[vrf_key_vrf_name=red]/vrf_afi[vrf_af_afi=1]/vrf_afi_rt[vrf_mode_rt_key=1]";
    expect_one_line_failure(zanfe({"resolve", three, "--fail", "arbor_traverse_create:5"}),
                            "zanfe: path '" + three + "' does not resolve: code 5 at segment 3 "
                            "'vrf_afi_rt[vrf_mode_rt_key=1]': its traversal could not be built (parent missing, or "
                            "out of memory)");
    expect_one_line_failure(zanfe({"resolve", three, "--fail", "arbor_traverse_create:4"}),
                            "zanfe: path '" + three + "' does not resolve: code 0 at segment 2 "
                            "'vrf_afi[vrf_af_afi=1]': its key is missing or cannot be used, or its query step could "
                            "not be made");
    // Syntax comes first: nothing is resolved.
    expect_one_line_failure(zanfe({"resolve", "vrf[vrf_key_vrf_name=red"}),
                            "zanfe: path 'vrf[vrf_key_vrf_name=red': segment 1 'vrf[vrf_key_vrf_name=red': '[' "
                            "without ']'");
    expect_one_line_failure(zanfe({"resolve"}), "zanfe: 'resolve' takes one PATH (got 0)");
    // A quote in a name opens no quoted value: the path still splits at every '/'.
    expect_one_line_failure(zanfe({"resolve", "ntp_peer_server/a'b/c"}),
                            "zanfe: path 'ntp_peer_server/a'b/c': segment 2 'a'b': unexpected ''' in the name");
}

TEST(ToolDb, BrokenOrMissingFileIsOneLineAndNothingElse) {
    const TempFile broken("{\"tables\": [\n");
    for (const std::string& file : {broken.path, std::string("/nonexistent/zanfe.json")}) {
        for (const char* cmd : {"ls", "resolve"}) {
            const ToolRun r = zanfe({"--db", file, cmd, "*"});
            EXPECT_EQ(r.status, 1) << r.err;
            EXPECT_EQ(r.out, "");
            ASSERT_EQ(r.err_lines().size(), 1u) << r.err;
            EXPECT_TRUE(r.err.starts_with("zanfe: ")) << r.err;
            EXPECT_NE(r.err.find(file), std::string::npos) << r.err;
        }
    }
}

std::vector<std::string> row_lines(const ToolRun& r) {
    std::vector<std::string> rows;
    for (const auto& line : split_lines(r.out))
        if (line.starts_with("row")) rows.push_back(line);
    return rows;
}

TEST(ToolDb, RowsOfAFileAreFoundByTheirKeysUnderTheirParents) {
    const TempFile site(R"({"tbl_ci_vrf_eol": [
  {"vrf_key_vrf_name": "red", "children": {"tbl_ci_vrf_afi_mode_eol": [{"vrf_af_afi": 1}, {"vrf_af_afi": 2}]}},
  {"vrf_key_vrf_name": "blue", "children": {"tbl_ci_vrf_afi_mode_eol": [{"vrf_af_afi": 1}]}}],
 "tbl_ip_dhcp_svr": [{"vrf_name": "red", "dhcp_server": "10.0.0.1"}, {"vrf_name": "red", "dhcp_server": "10.0.0.2"}]})");
    auto resolve = [&](const std::string& path) { return zanfe({"--db", site.path, "resolve", path}); };
    const ToolRun probe = resolve("vrf");
    ASSERT_EQ(probe.status, 0) << probe.err;
    EXPECT_EQ(row_lines(probe), (std::vector<std::string>{"rows 2", "row tbl_ci_vrf_eol[vrf_key_vrf_name=red]",
                                                          "row tbl_ci_vrf_eol[vrf_key_vrf_name=blue]"}));
    // Without the last key: every row under the parent, and only those.
    EXPECT_EQ(row_lines(resolve("vrf[vrf_key_vrf_name=red]/vrf_afi")),
              (std::vector<std::string>{"rows 2",
                                        "row tbl_ci_vrf_afi_mode_eol[vrf_af_afi=1] under tbl_ci_vrf_eol[vrf_key_vrf_name=red]",
                                        "row tbl_ci_vrf_afi_mode_eol[vrf_af_afi=2] under tbl_ci_vrf_eol[vrf_key_vrf_name=red]"}));
    // The same child key under another parent is another row.
    EXPECT_EQ(row_lines(resolve("vrf[vrf_key_vrf_name=blue]/vrf_afi[vrf_af_afi=1]")),
              (std::vector<std::string>{"rows 1",
                                        "row tbl_ci_vrf_afi_mode_eol[vrf_af_afi=1] under tbl_ci_vrf_eol[vrf_key_vrf_name=blue]"}));
    EXPECT_EQ(row_lines(resolve("vrf[vrf_key_vrf_name=blue]/vrf_afi[vrf_af_afi=2]")),
              std::vector<std::string>{"rows 0"});
    // Compound keys in either order.
    const std::vector<std::string> svr{"rows 1", "row tbl_ip_dhcp_svr[vrf_name=red][dhcp_server=10.0.0.2]"};
    EXPECT_EQ(row_lines(resolve("ip_dhcp_svr[dhcp_server=10.0.0.2][vrf_name=red]")), svr);
    EXPECT_EQ(row_lines(resolve("ip_dhcp_svr[vrf_name=red][dhcp_server=10.0.0.2]")), svr);
    // Without --db the built-in configuration is walked: it has peers, and not this file's vrf.
    EXPECT_EQ(row_lines(zanfe({"resolve", "vrf[vrf_key_vrf_name='only in the test file']"})),
              std::vector<std::string>{"rows 0"});
    EXPECT_EQ(row_lines(resolve("vrf[vrf_key_vrf_name='only in the test file']")), std::vector<std::string>{"rows 0"});
    const auto peers = row_lines(zanfe({"resolve", "ntp_peer_server"}));
    ASSERT_GE(peers.size(), 2u);
    EXPECT_NE(peers[0], "rows 0");
    for (size_t i = 1; i < peers.size(); ++i)
        EXPECT_TRUE(peers[i].starts_with("row tbl_ntp_peer_eol[peer_server_key=")) << peers[i];
}

}  // namespace

// ---------------------------------------------------------------- get and dump
namespace {


const char* const k_vrfs = R"({
  "tbl_ci_vrf_eol": [
    { "vrf_key_vrf_name": "red",
      "children": { "tbl_ci_vrf_afi_mode_eol": [ { "vrf_af_afi": 1 }, { "vrf_af_afi": 2 } ] } },
    { "vrf_key_vrf_name": "a b" } ],
  "tbl_cfg_http_client_proxy_eol": [ { "singleton_id": 1, "http_proxy_name": "0.0.0.0", "http_proxy_port": 8080 } ]
})";

}  // namespace

TEST(ToolGet, KeyedRowIsItsAttributesInDeliveryOrder) {
    const std::string out = out_of({"get", "ntp_peer_server[peer_server_key=10.0.0.1]"});
    const auto lines = split_lines(out);
    // every attribute of the row type, the unselected union arms as null
    ASSERT_EQ(lines.size(), 37u) << out;
    EXPECT_EQ(lines.front(), "peer_server_key = \"10.0.0.1\"");
    EXPECT_EQ(lines.back(), "compound_0.compound_12.compound_18.ntp_peer_maxpoll_num = 10");
    EXPECT_NE(std::find(lines.begin(), lines.end(), "compound_0.compound_2.compound_59.ntp_peer_v4addr = 10.0.0.1"),
              lines.end());
    EXPECT_NE(std::find(lines.begin(), lines.end(), "compound_0.compound_2.compound_58.ntp_peer_v6addr = null"),
              lines.end());

    // --json: the same attributes in the same order
    const auto j = parse_json(zanfe({"get", "--json", "ntp_peer_server[peer_server_key=10.0.0.1]"}).out);
    ASSERT_TRUE(j.is_object());
    ASSERT_EQ(j.size(), lines.size());
    size_t i = 0;
    for (const auto& [name, value] : j.items()) EXPECT_TRUE(lines[i++].starts_with(name + " = ")) << name;
    EXPECT_EQ(j["peer_server_key"], "10.0.0.1");
    EXPECT_TRUE(j["compound_0.compound_2.compound_58.ntp_peer_v6addr"].is_null());
    EXPECT_EQ(j["compound_0.compound_12.compound_18.ntp_peer_maxpoll_num"], 10);
}

TEST(ToolGet, WithoutKeyEveryRowBelowThePath) {
    TempFile cfg(k_vrfs);
    ToolRun r = zanfe({"--db", cfg.path, "get", "--json", "vrf[vrf_key_vrf_name=red]/vrf_afi"});
    ASSERT_EQ(r.status, 0) << r.err;
    auto j = parse_json(r.out);
    ASSERT_TRUE(j.is_array());
    ASSERT_EQ(j.size(), 2u);
    EXPECT_EQ(j[0]["vrf_af_afi"], 1);
    EXPECT_EQ(j[1]["vrf_af_afi"], 2);
    // text: a path line heads each row
    r = zanfe({"--db", cfg.path, "get", "vrf"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto lines = split_lines(r.out);
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines[0], "# /vrf[vrf_key_vrf_name=red]");
    EXPECT_EQ(lines[1], "vrf_key_vrf_name = \"red\"");
    EXPECT_NE(std::find(lines.begin(), lines.end(), "# /vrf[vrf_key_vrf_name='a b']"), lines.end()) << r.out;
}

// The state marks come from the rendering; the default comparison follows the file's
// default variant (a negative one turns it off).
TEST(ToolGet, WithStateShowsMarksAndFollowsTheDefaultVariant) {
    const std::string path = "cfg_http_client_proxy_eol[singleton_id=1]";
    TempFile on(std::string(k_vrfs).replace(1, 0, "\"@default_variant\": 0,"));
    ToolRun r = zanfe({"--db", on.path, "get", "--with-state", path});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(split_lines(r.out), (std::vector<std::string>{"singleton_id = 1\t[default 0, present 1]",
                                                            "http_proxy_name = \"0.0.0.0\"\t[default 1, present 1]",
                                                            "http_proxy_port = 8080\t[default 0, present 1]"}));
    TempFile off(std::string(k_vrfs).replace(1, 0, "\"@default_variant\": -1,"));
    r = zanfe({"--db", off.path, "get", "--with-state", "--json", path});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto j = parse_json(r.out);
    EXPECT_EQ(j["http_proxy_name"], nlohmann::ordered_json::parse(
                                        R"({"value": "0.0.0.0", "is_default": false, "present": true})"));
}

TEST(ToolGet, PathsThatGiveNoRow) {
    TempFile cfg(k_vrfs);
    expect_one_line_failure(zanfe({"--db", cfg.path, "get", "vrf[vrf_key_vrf_name=blue]"}),
                            "zanfe: path 'vrf[vrf_key_vrf_name=blue]': no such row in the configuration");
    const ToolRun r = zanfe({"get", "nonesuch[x=1]"});
    EXPECT_NE(r.status, 0);
    ASSERT_EQ(r.err_lines().size(), 1u) << r.err;
    EXPECT_TRUE(r.err_lines()[0].starts_with("zanfe: path 'nonesuch[x=1]' does not resolve")) << r.err;
    expect_one_line_failure(zanfe({"get"}), "zanfe: 'get' takes one PATH (got 0)");
}

// dump reaches every row by its own path: each path it prints gives the same row to get.
TEST(ToolDump, EveryRowByItsOwnPath) {
    TempFile cfg(k_vrfs);
    const auto j = parse_json(out_of({"--db", cfg.path, "dump", "--json"}));
    ASSERT_TRUE(j.is_object());
    std::vector<std::string> paths;
    for (const auto& [path, row] : j.items()) paths.push_back(path);
    std::sort(paths.begin(), paths.end());
    EXPECT_EQ(paths, (std::vector<std::string>{"/cfg_http_client_proxy_eol[singleton_id=1]", "/vrf[vrf_key_vrf_name='a b']",
                                               "/vrf[vrf_key_vrf_name=red]",
                                               "/vrf[vrf_key_vrf_name=red]/vrf_afi[vrf_af_afi=1]",
                                               "/vrf[vrf_key_vrf_name=red]/vrf_afi[vrf_af_afi=2]"}));
    for (const auto& path : paths) {
        const ToolRun g = zanfe({"--db", cfg.path, "get", "--json", path});
        ASSERT_EQ(g.status, 0) << path << ": " << g.err;
        EXPECT_EQ(parse_json(g.out), j[path]) << path;
    }
}

// A dump many times the size of the blocks it is printed in: every row once, in the same
// order in the text and JSON forms, and the RFC 7951 form one document with every entry
// under its parent.
// "v<i>", the VRF name of entry i.
static std::string vrf_name(size_t i) { return std::string("v").append(std::to_string(i)); }

TEST(ToolDump, ALargeConfigurationPrintsEveryRowOnceInEveryForm) {
    constexpr size_t k_vrf_rows = 2000;
    nlohmann::json vrfs = nlohmann::json::array();
    for (size_t i = 0; i < k_vrf_rows; ++i)
        vrfs.push_back({{"vrf_key_vrf_name", vrf_name(i)},
                        {"children", {{"tbl_ci_vrf_afi_mode_eol", {{{"vrf_af_afi", 1 + i % 2}}}}}}});
    TempFile cfg(nlohmann::json{{"tbl_ci_vrf_eol", vrfs}}.dump());

    const auto j = parse_json(out_of({"--db", cfg.path, "dump", "--json"}));
    ASSERT_TRUE(j.is_object());
    EXPECT_EQ(j.size(), 2 * k_vrf_rows);
    std::vector<std::string> json_paths;
    size_t next_vrf = 0;
    for (const auto& [path, row] : j.items()) {
        json_paths.push_back(path);
        if (path.find("/vrf_afi[") != std::string::npos) continue;
        EXPECT_EQ(row["vrf_key_vrf_name"], vrf_name(next_vrf)) << path;
        ++next_vrf;
    }
    EXPECT_EQ(next_vrf, k_vrf_rows);

    std::vector<std::string> text_paths;
    for (const auto& line : split_lines(out_of({"--db", cfg.path, "dump"})))
        if (line.starts_with("# ")) text_paths.push_back(line.substr(2));
    EXPECT_EQ(text_paths, json_paths);

    const auto doc = parse_json(out_of({"--db", cfg.path, "dump", "--format", "rfc7951"}));
    ASSERT_TRUE(doc.contains("zan-config:vrf"));
    const auto& entries = doc["zan-config:vrf"];
    ASSERT_EQ(entries.size(), k_vrf_rows);
    for (size_t i = 0; i < k_vrf_rows; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(entries[i]["vrf_key_vrf_name"], vrf_name(i));
        ASSERT_EQ(entries[i]["vrf_afi"].size(), 1u);
        EXPECT_EQ(entries[i]["vrf_afi"][0]["vrf_af_afi"], 1 + i % 2);
    }
}

// The built-in configuration: every row renders, and the text form has one header per row.
// A tool path without its keys and its leading '/' ("/a[k='x/]']/b" gives "a/b").
std::string without_keys(const std::string& path) {
    std::string out;
    bool in_key = false, in_quote = false;
    for (size_t i = path.empty() || path[0] != '/' ? 0 : 1; i < path.size(); ++i) {
        const char c = path[i];
        if (in_quote) {
            if (c == '\'' && (i + 1 >= path.size() || path[i + 1] != '\'')) in_quote = false;
            else if (c == '\'') ++i;   // '' is one quote
        } else if (in_key) {
            if (c == '\'') in_quote = true;
            else if (c == ']') in_key = false;
        } else if (c == '[') {
            in_key = true;
        } else {
            out += c;
        }
    }
    return out;
}

// Rows of a configuration file, children included.
size_t rows_in(const nlohmann::ordered_json& tables) {
    size_t n = 0;
    for (const auto& [table, rows] : tables.items()) {
        if (table.starts_with("@") || !rows.is_array()) continue;
        n += rows.size();
        for (const auto& row : rows)
            if (row.contains("children")) n += rows_in(row["children"]);
    }
    return n;
}

// Every row of the built-in configuration, each with exactly the attribute names of its
// table, in delivery order.
TEST(ToolDump, TheBuiltInConfigurationRendersCompletely) {
    const auto j = parse_json(out_of({"dump", "--json"}));
    ASSERT_TRUE(j.is_object());
    // the file has comment lines in front of its JSON
    std::string text = slurp(ZAN_DEFAULT_CONFIG);
    text.erase(0, text.find('{'));
    EXPECT_EQ(j.size(), rows_in(nlohmann::ordered_json::parse(text)));
    const auto attributes = nlohmann::json::parse(slurp(std::string(TOOL_EXPECT_DIR) + "/attributes.json"));
    for (const auto& [path, row] : j.items()) {
        SCOPED_TRACE(path);
        const std::string segments = without_keys(path);
        ASSERT_TRUE(attributes.contains(segments));
        std::vector<std::string> names;
        for (const auto& [name, value] : row.items()) names.push_back(name);
        EXPECT_EQ(names, attributes[segments].get<std::vector<std::string>>());
    }
    const std::string out = out_of({"dump"});
    size_t headers = 0;
    for (const auto& line : split_lines(out)) headers += line.starts_with("# /");
    EXPECT_EQ(headers, j.size());
}

// A rendering that fails reports the row with both channels, status and error word, and
// prints nothing of the row.
TEST(ToolGet, FailedRenderingNamesTheRowStatusAndErrorWord) {
    const std::string path = "ntp_peer_server[peer_server_key=10.0.0.1]";
    expect_one_line_failure(zanfe({"--fail", "accessor:1", "get", path}),
                            "zanfe: rendering /" + path + " failed: status 0, error 5 (Input/output error)");
    expect_one_line_failure(zanfe({"--fail", "gx_do_properties_set_value:3", "get", path}),
                            "zanfe: rendering /" + path + " failed: status -1, error 0");
}

// ---------------------------------------------------------------- key, type, get --attrs/--values

namespace {

struct TableRows {
    std::string table;
    std::vector<std::string> row_types, key;
};


std::vector<TableRows> table_rows() {
    std::vector<TableRows> out;
    for (const auto& line : split_lines(slurp(TOOL_EXPECT_DIR "/rows.tsv"))) {
        const auto cols = split(line, '\t');
        out.push_back({cols.at(0), split(cols.at(1), ','), split(cols.at(2), ',')});
    }
    return out;
}

// The path of one row of every table in the built-in configuration, by table: the first
// path of `dump` whose segments, keys left out, are the table's path.
std::map<std::string, std::string> one_row_per_table() {
    std::map<std::string, std::string> segments_of;   // "seg/seg" -> table
    for (const auto& line : split_lines(slurp(TOOL_EXPECT_DIR "/tables.tsv"))) {
        const auto cols = split(line, '\t');
        if (cols.at(1) != "-") segments_of[cols.at(2)] = cols.at(1);
    }
    std::map<std::string, std::string> out;
    const auto dump = parse_json(zanfe({"dump", "--json"}).out);
    for (const auto& [path, row] : dump.items()) {
        const auto t = segments_of.find(without_keys(path));
        if (t != segments_of.end()) out.emplace(t->second, path);
    }
    return out;
}

// The key=value pairs of the last segment of a tool path.
std::vector<std::pair<std::string, std::string>> last_keys(const std::string& path) {
    std::vector<std::pair<std::string, std::string>> out;
    size_t slash = 0;   // the last '/' outside keys and quotes
    bool in_key = false, quoted = false;
    for (size_t i = 0; i < path.size(); ++i) {
        const char c = path[i];
        if (c == '\'') quoted = !quoted;
        else if (!quoted && c == '[') in_key = true;
        else if (!quoted && c == ']') in_key = false;
        else if (!quoted && !in_key && c == '/') slash = i;
    }
    size_t at = path.find('[', slash);
    while (at != std::string::npos) {
        const size_t eq = path.find('=', at), end = path.find(']', eq);
        std::string value = path.substr(eq + 1, end - eq - 1);
        if (value.size() >= 2 && value.front() == '\'') value = value.substr(1, value.size() - 2);
        out.emplace_back(path.substr(at + 1, eq - at - 1), value);
        at = path.find('[', end);
    }
    return out;
}

std::string json_text(const nlohmann::ordered_json& v) { return v.is_string() ? v.get<std::string>() : v.dump(); }

}  // namespace

TEST(ToolKey, EveryTableKeyOfTheBuiltInConfiguration) {
    const auto paths = one_row_per_table();
    const auto tables = table_rows();
    ASSERT_EQ(tables.size(), 329u);
    size_t numbered_by_query_key = 0;
    for (const auto& t : tables) {
        SCOPED_TRACE(t.table);
        ASSERT_TRUE(paths.count(t.table)) << "no row of it in the built-in configuration";
        const std::string& path = paths.at(t.table);
        const auto key = parse_json(out_of({"key", "--json", path}));
        std::vector<std::string> names;
        for (const auto& [name, value] : key.items()) names.push_back(name);
        EXPECT_EQ(names, t.key);
        // Where the row's path names the same key, the values agree with it.
        const auto in_path = last_keys(path);
        if (in_path.size() == names.size() && in_path[0].first == names[0]) {
            for (const auto& [name, value] : in_path) EXPECT_EQ(json_text(key[name]), value) << name;
        } else {
            ++numbered_by_query_key;
            EXPECT_EQ(names, std::vector<std::string>{"singleton_id"});
        }
    }
    EXPECT_EQ(numbered_by_query_key, 2u);   // tbl_mdns_sp_sl_in and tbl_mdns_sp_sl_out
}

TEST(ToolKey, TextAndSeveralRows) {
    EXPECT_EQ(out_of({"key", "ntp_peer_server[peer_server_key=10.0.0.1]"}), "peer_server_key = \"10.0.0.1\"\n");
    // Without the last key: every row, each headed by its path, compound keys part by part.
    const auto lines = split_lines(out_of({"key", "ip_dhcp_svr"}));
    ASSERT_GE(lines.size(), 3u);
    EXPECT_TRUE(lines[0].starts_with("# /ip_dhcp_svr[vrf_name=")) << lines[0];
    EXPECT_TRUE(lines[1].starts_with("vrf_name = \"")) << lines[1];
    EXPECT_TRUE(lines[2].starts_with("dhcp_server = ")) << lines[2];
}

TEST(ToolKey, FailuresAreOneLine) {
    const std::string path = "ip_dhcp_svr[vrf_name=red][dhcp_server=10.0.0.5]";
    expect_one_line_failure(zanfe({"--fail", "gx_do_nvlist_add_value:2", "key", path}),
                            "zanfe: to_nvlist of /" + path + " failed: result -1, error 0, 1 entry delivered");
    expect_one_line_failure(zanfe({"key", "nope"}),
                            "zanfe: path 'nope' does not resolve: code 3 at segment 1 'nope': no table takes this "
                            "segment here");
    const ToolRun usage = zanfe({"key"});
    EXPECT_EQ(usage.status, 2);
    EXPECT_EQ(usage.err_lines(), std::vector<std::string>{"zanfe: 'key' takes one PATH (got 0)"});
}

// A table's row record taken as a stored instance of its type renders through the type
// arrays exactly as the table's own to_properties renders the row.
TEST(ToolType, RowRecordsRenderAsTheirTablesRenderThem) {
    size_t compared = 0;
    for (const auto& t : table_rows()) {
        if (t.row_types.size() != 1) continue;
        SCOPED_TRACE(t.table);
        const auto j = parse_json(out_of({"type", "--json", t.row_types[0]}));
        EXPECT_EQ(j["type"], t.row_types[0]);
        if (j["at"] != "") continue;   // first met nested in another table's row
        const ToolRun g = zanfe({"get", "--json", j["row"].get<std::string>()});
        ASSERT_EQ(g.status, 0) << g.err;
        EXPECT_EQ(j["to_properties"]["result"], 0);
        EXPECT_EQ(j["to_properties"]["properties"], parse_json(g.out));
        ++compared;
    }
    EXPECT_GT(compared, 300u);
}

TEST(ToolType, NestedInstancesAndRefusals) {
    const auto lines = split_lines(out_of({"type", "ntp_peer_cp"}));
    ASSERT_GE(lines.size(), 2u);
    EXPECT_TRUE(lines[0].starts_with("# ntp_peer_cp in /ntp_peer_server[peer_server_key=")) << lines[0];
    EXPECT_TRUE(lines[0].ends_with(" at compound_0.peer_or_server.")) << lines[0];
    EXPECT_EQ(lines[1], "to_properties 0");
    expect_one_line_failure(zanfe({"type", "nope"}), "zanfe: unknown type 'nope'");
    const ToolRun many = zanfe({"type", "ntp_peer_cp", "--nth", "100000"});
    EXPECT_EQ(many.status, 1);
    ASSERT_EQ(many.err_lines().size(), 1u);
    EXPECT_TRUE(many.err_lines()[0].starts_with("zanfe: the configuration holds ")) << many.err;
    EXPECT_TRUE(many.err_lines()[0].ends_with(" stored instance(s) of type 'ntp_peer_cp', not 100000")) << many.err;
    EXPECT_EQ(zanfe({"type", "ntp_peer_cp", "--nth", "0"}).status, 2);
}

// Records that no table reaches are taken from those the configuration keeps outside tables.
TEST(ToolType, RecordsOutsideTables) {
    for (const char* type : {"om_node", "layer_head", "ack_timer_head", "ack_node"}) {
        SCOPED_TRACE(type);
        const auto j = parse_json(out_of({"type", "--json", type}));
        EXPECT_TRUE(j["row"].get<std::string>().starts_with("@records.")) << j["row"];
        // a stored record of the type itself comes before one nested in another record
        if (std::string(type) != "ack_node") {
            EXPECT_EQ(j["row"].get<std::string>(), "@records." + std::string(type) + "[0]");
        }
        EXPECT_EQ(j["to_properties"]["result"], 0);
        EXPECT_GE(j["to_vlist_all"]["result"].get<int>(), 0);
        // One value per attribute, in both renderings.
        EXPECT_EQ(j["to_vlist_all"]["values"].size(), j["to_properties"]["properties"].size());
    }
}

// The whole row through to_vlist, labelled by the table's columns: one value per column of
// `columns`, for every table of the built-in configuration.
TEST(ToolGetValues, EveryTableLinesUpWithItsColumns) {
    const auto columns = parse_json(slurp(TOOL_EXPECT_DIR "/columns.json"));
    const auto paths = one_row_per_table();
    ASSERT_EQ(paths.size(), 329u);
    for (const auto& [table, path] : paths) {
        SCOPED_TRACE(table);
        const auto j = parse_json(out_of({"get", "--values", "--json", path}));
        EXPECT_EQ(j["path"], path);
        EXPECT_GT(j["result"].get<int>(), 0);
        const auto& want = columns[table];
        ASSERT_EQ(j["values"].size(), want.size());
        for (size_t i = 0; i < want.size(); ++i) EXPECT_EQ(j["values"][i][0], want[i][0]) << i;
    }
}

TEST(ToolGetValues, NamedAttributesInOrderWithTheRowsPath) {
    const std::string path = "ntp_peer_server[peer_server_key=10.0.0.1]";
    const auto lines = split_lines(out_of({"get", path, "--attrs", "compound_0.peer_or_server.descriminator,__uri__,peer_server_key"}));
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_TRUE(lines[0].starts_with("compound_0.peer_or_server.descriminator = ZAN_CFG_")) << lines[0];
    EXPECT_EQ(lines[1], "__uri__ = uri /" + path);
    EXPECT_EQ(lines[2], "peer_server_key = \"10.0.0.1\"");
    EXPECT_EQ(lines[3], "result 3");
    // The same values as the whole row delivers at those columns.
    const auto whole = parse_json(zanfe({"get", "--values", "--json", path}).out);
    const auto some = parse_json(zanfe({"get", "--attrs", "peer_server_key,compound_0.peer_or_server.descriminator",
                                        "--json", path})
                                     .out);
    EXPECT_EQ(some["values"][0], whole["values"][0]);
    EXPECT_EQ(some["values"][1], whole["values"][1]);
}

TEST(ToolGetValues, NamesThatGiveNoValueAndBadCombinations) {
    const std::string path = "ntp_peer_server[peer_server_key=10.0.0.1]";
    expect_one_line_failure(zanfe({"get", path, "--attrs", "peer_server_key,nonsense"}),
                            "zanfe: to_vlist of /" + path + " failed: result -1, error 0, 1 value(s) delivered");
    expect_one_line_failure(zanfe({"get", path, "--attrs", "nonsense,peer_server_key"}),
                            "zanfe: to_vlist of /" + path + " delivered 1 value(s) for 2 attribute name(s): a name "
                            "the row does not have gives no value");
    expect_one_line_failure(zanfe({"--fail", "gx_do_vlist_add_mr_uri", "get", path, "--attrs", "__uri__"}),
                            "zanfe: to_vlist of /" + path + " failed: result -1, error 0, 0 value(s) delivered");
    EXPECT_EQ(zanfe({"get", path, "--attrs", "a", "--values"}).status, 2);
    EXPECT_EQ(zanfe({"get", path, "--values", "--with-state"}).status, 2);
}

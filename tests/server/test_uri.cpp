// The RESTCONF request line -> typed request, by tables: what each accepted form gives, and
// the status, tag and message of each refusal.
#include <gtest/gtest.h>

#include "uri.hpp"

namespace zan::restconf {
namespace {

struct Accepted {
    const char* method;
    const char* path;
    const char* query;
    Method want_method;
    Target target;
    std::vector<Segment> segments;
    Query q;
};

Segment seg(std::string module, std::string name, std::optional<std::vector<std::string>> keys, std::string text) {
    return Segment{std::move(module), std::move(name), std::move(keys), std::move(text)};
}

TEST(Uri, AcceptedForms) {
    using K = std::vector<std::string>;
    const std::vector<Accepted> cases{
        {"GET", "/.well-known/host-meta", "", Method::get, Target::host_meta, {}, {}},
        {"GET", "/restconf", "", Method::get, Target::api_root, {}, {}},
        {"HEAD", "/restconf/", "", Method::head, Target::api_root, {}, {}},
        {"GET", "/restconf/yang-library-version", "", Method::get, Target::library_version, {}, {}},
        {"GET", "/restconf/data", "", Method::get, Target::data, {}, {}},
        {"GET", "/restconf/data/", "depth=1", Method::get, Target::data, {}, {1, std::nullopt, Content::all}},
        {"GET", "/restconf/data/zan-config:vrf", "", Method::get, Target::data,
         {seg("zan-config", "vrf", std::nullopt, "zan-config:vrf")}, {}},
        {"GET", "/restconf/data/zan-config:vrf=red/vrf_afi=1", "", Method::get, Target::data,
         {seg("zan-config", "vrf", K{"red"}, "zan-config:vrf=red"), seg("", "vrf_afi", K{"1"}, "vrf_afi=1")}, {}},
        // Keys in order, percent-encoded: a comma, a slash, a blank and an empty key.
        {"GET", "/restconf/data/zan-config:a=x%2Cy,%2F%20z,", "", Method::get, Target::data,
         {seg("zan-config", "a", K{"x,y", "/ z", ""}, "zan-config:a=x,y,/ z,")}, {}},
        {"GET", "/restconf/data/zan-config:a=b/zan-config:c/", "", Method::get, Target::data,
         {seg("zan-config", "a", K{"b"}, "zan-config:a=b"), seg("zan-config", "c", std::nullopt, "zan-config:c")}, {}},
        {"GET", "/restconf/data/ietf-yang-library:modules-state", "", Method::get, Target::yang_library, {}, {}},
        {"GET", "/restconf/data", "depth=unbounded&content=config", Method::get, Target::data, {},
         {std::nullopt, std::nullopt, Content::config}},
        {"GET", "/restconf/data", "depth=65535&content=nonconfig", Method::get, Target::data, {},
         {65535, std::nullopt, Content::nonconfig}},
        {"GET", "/restconf/data", "fields=a;b/c;d(e;f/g(h));zan-config:i", Method::get, Target::data, {},
         {std::nullopt, std::vector<std::string>{"a", "b.c", "d.e", "d.f.g.h", "i"}, Content::all}},
        {"GET", "/restconf/data", "fields=a%3Bb", Method::get, Target::data, {},
         {std::nullopt, std::vector<std::string>{"a", "b"}, Content::all}},
        {"OPTIONS", "/restconf/data", "", Method::options, Target::data, {}, {}},
        {"PUT", "/restconf/data/zan-config:vrf=red", "", Method::write, Target::data,
         {seg("zan-config", "vrf", K{"red"}, "zan-config:vrf=red")}, {}},
        {"DELETE", "/restconf", "", Method::write, Target::api_root, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.method) + " " + c.path + "?" + c.query);
        const Translation t = translate(c.method, c.path, c.query);
        ASSERT_TRUE(std::holds_alternative<Request>(t)) << std::get<UriError>(t).message;
        const Request& r = std::get<Request>(t);
        EXPECT_EQ(r.method, c.want_method);
        EXPECT_EQ(r.target, c.target);
        EXPECT_EQ(r.path, c.segments);
        EXPECT_EQ(r.query, c.q);
    }
    const auto m = std::get<Request>(translate("GET", "/restconf/modules/zan-config", ""));
    EXPECT_EQ(m.target, Target::module);
    EXPECT_EQ(m.module, "zan-config");
}

TEST(Uri, Refusals) {
    struct Case {
        const char* path;
        const char* query;
        UriError want;
    };
    const std::vector<Case> cases{
        {"/", "", {404, "invalid-value", "no resource at '/'"}},
        {"/restconfx", "", {404, "invalid-value", "no resource at '/restconfx'"}},
        {"/restconf/data/vrf", "",
         {400, "invalid-value", "segment 1 'vrf': the first segment names its module (module:name)"}},
        {"/restconf/data/zan-config:vrf//x", "", {400, "invalid-value", "segment 2 is empty"}},
        {"/restconf/data/zan-config:vrf=a%2", "", {400, "invalid-value", "segment 1 'zan-config:vrf=a%2': bad percent-encoding in a key"}},
        {"/restconf/data/zan-config:vrf=a%00", "", {400, "invalid-value", "segment 1 'zan-config:vrf=a%00': bad percent-encoding in a key"}},
        {"/restconf/data/zan-config:9vrf", "", {400, "invalid-value", "segment 1 'zan-config:9vrf': '9vrf' is no node name"}},
        {"/restconf/data/:vrf", "", {400, "invalid-value", "segment 1 ':vrf': '' is no module name"}},
        {"/restconf/data/zan-config:", "", {400, "invalid-value", "segment 1 'zan-config:': '' is no node name"}},
        {"/restconf/data/ietf-yang-library:modules", "",
         {404, "invalid-value", "segment 1 'ietf-yang-library:modules': ietf-yang-library serves modules-state only"}},
        {"/restconf/modules/", "", {400, "invalid-value", "module name '' is malformed"}},
        {"/restconf/data", "depth=0", {400, "invalid-value", "depth '0': 1 to 65535 or unbounded"}},
        {"/restconf/data", "depth=65536", {400, "invalid-value", "depth '65536': 1 to 65535 or unbounded"}},
        {"/restconf/data", "depth=1x", {400, "invalid-value", "depth '1x': 1 to 65535 or unbounded"}},
        {"/restconf/data", "depth=", {400, "invalid-value", "depth '': 1 to 65535 or unbounded"}},
        {"/restconf/data", "depth=1&depth=2", {400, "invalid-value", "query parameter 'depth' given twice"}},
        {"/restconf/data", "depth", {400, "invalid-value", "query parameter 'depth' has no value"}},
        {"/restconf/data", "content=state", {400, "invalid-value", "content 'state': config, nonconfig or all"}},
        {"/restconf/data", "with-defaults=trim", {400, "invalid-value", "unknown query parameter 'with-defaults'"}},
        {"/restconf/data", "fields=a(b", {400, "invalid-value", "fields 'a(b': '(' without ')'"}},
        {"/restconf/data", "fields=a)", {400, "invalid-value", "fields 'a)': unexpected ')' at 2"}},
        {"/restconf/data", "fields=a;;b", {400, "invalid-value", "fields 'a;;b': '' is no node name at 3"}},
        {"/restconf/data", "fields=", {400, "invalid-value", "fields '': '' is no node name at 1"}},
        {"/restconf/data", "fields=a%ZZ", {400, "invalid-value", "query parameter 'fields': bad percent-encoding"}},
        {"/restconf/data", "fields=((((((((((((((((((a))))))))))))))))))",
         {400, "invalid-value", "fields '((((((((((((((((((a))))))))))))))))))': '' is no node name at 1"}},
        {"/restconf/data", "fields=a(b(c(d(e(f(g(h(i(j(k(l(m(n(o(p(q(r)))))))))))))))))",
         {400, "invalid-value",
          "fields 'a(b(c(d(e(f(g(h(i(j(k(l(m(n(o(p(q(r)))))))))))))))))': more than 16 levels of '('"}},
    };
    // A long prefix over many names: bounded whatever the names.
    const std::string many = "fields=" + std::string(100, 'p') + "(" + [] {
        std::string names = "n0";
        for (int i = 1; i < 257; ++i) names += ";n" + std::to_string(i);
        return names;
    }() + ")";
    const std::string wide = "fields=" + std::string(2000, 'p') + "(a;b;c;d;e;f;g;h;i)";
    for (const std::string& q : {many, wide}) {
        const Translation t = translate("GET", "/restconf/data", q);
        ASSERT_TRUE(std::holds_alternative<UriError>(t)) << q.substr(0, 40);
        EXPECT_TRUE(std::get<UriError>(t).message.ends_with("more than 256 names or 16384 characters of names"));
    }
    std::string deep = "/restconf/data/zan-config:a";
    for (int i = 0; i < 31; ++i) deep += "/b=1";
    EXPECT_TRUE(std::holds_alternative<Request>(translate("GET", deep, "")));
    EXPECT_EQ(std::get<UriError>(translate("GET", deep + "/c", "")), (UriError{400, "invalid-value", "more than 32 segments"}));
    const Translation fits = translate("GET", "/restconf/data", "fields=" + std::string(100, 'p') + "(a;b)");
    ASSERT_TRUE(std::holds_alternative<Request>(fits));
    EXPECT_EQ(std::get<Request>(fits).query.fields->size(), 2u);
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.path) + "?" + c.query);
        const Translation t = translate("GET", c.path, c.query);
        ASSERT_TRUE(std::holds_alternative<UriError>(t));
        EXPECT_EQ(std::get<UriError>(t), c.want);
    }
}

TEST(Uri, PercentDecode) {
    const std::vector<std::pair<const char*, std::optional<std::string>>> cases{
        {"", ""}, {"abc", "abc"}, {"%41%62", "Ab"}, {"a%2fb", "a/b"}, {"%", std::nullopt},
        {"%4", std::nullopt}, {"%4g", std::nullopt}, {"%00", std::nullopt}, {"+", "+"}, {"%25", "%"},
        {"a\tb", std::nullopt}, {"a\x7f", std::nullopt}, {"%09", "\t"}, {"\xc3\xa9", "\xc3\xa9"},
    };
    for (const auto& [in, want] : cases) EXPECT_EQ(percent_decode(in), want) << in;
}

}  // namespace
}  // namespace zan::restconf

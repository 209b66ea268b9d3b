// Data objects as the front end relies on them.
#include <cstring>
#include <string>

#include "leak_check.hpp"

using namespace zan::plat;

namespace {

std::string name_at(gx_do_nlist* l, int32_t i) {
    gx_do_name* n = gx_do_nlist_get_name(l, i);
    return n ? gx_do_name_get_strname(n) : "<null>";
}

template <class T>
Value val(T x) {
    Value v;
    v.v = std::move(x);
    return v;
}

Value text(std::string s) { return val(std::move(s)); }

}  // namespace

class Objects : public LeakChecked {};

TEST_F(Objects, NlistIndexingRemovalAndRepeats) {
    gx_do_nlist* l = gx_do_nlist_new();
    ASSERT_NE(l, nullptr);
    char buf[8] = "alpha";
    EXPECT_NE(gx_do_nlist_add_string(l, buf), 0);
    std::strcpy(buf, "beta");   // the list keeps its own copy
    EXPECT_NE(gx_do_nlist_add_string(l, buf), 0);
    EXPECT_NE(gx_do_nlist_add_string(l, "gamma"), 0);
    EXPECT_NE(gx_do_nlist_add_string(l, "gamma"), 0);
    EXPECT_EQ(gx_do_nlist_get_len(l), 4);
    EXPECT_EQ(name_at(l, 0), "alpha");
    EXPECT_EQ(name_at(l, 3), "gamma");
    EXPECT_EQ(gx_do_nlist_get_name(l, 4), nullptr);    // scans stop on NULL
    EXPECT_EQ(gx_do_nlist_get_name(l, -1), nullptr);

    gx_do_nlist_remove(l, 0);   // later entries move down
    EXPECT_EQ(nlist_names(l), (std::vector<std::string>{"beta", "gamma", "gamma"}));
    EXPECT_EQ(name_at(l, 0), "beta");
    EXPECT_LT(gx_do_nlist_remove(l, 3), 0);

    gx_do_nlist_clear(l);
    EXPECT_EQ(gx_do_nlist_get_len(l), 0);
    EXPECT_EQ(gx_do_nlist_get_name(l, 0), nullptr);
    gx_do_nlist_deref(l);
}

TEST_F(Objects, IteratorsWalkFromThePreparedRecord) {
    gx_do_nlist* l = gx_do_nlist_new();
    gx_do_iter it;
    gx_do_iter_prepare(&it);
    gx_do_nlist_iter(l, &it);
    EXPECT_EQ(gx_do_nlist_has_next(&it), 0);   // empty: done at once
    EXPECT_EQ(gx_do_nlist_get_next(&it), nullptr);

    gx_do_nlist_add_string(l, "a");
    gx_do_nlist_add_string(l, "b");
    gx_do_iter_prepare(&it);
    gx_do_nlist_iter(l, &it);
    std::string seen;
    while (gx_do_nlist_has_next(&it)) seen += gx_do_name_get_strname(gx_do_nlist_get_next(&it));
    EXPECT_EQ(seen, "ab");
    EXPECT_EQ(it.first, 1);    // the state fits in the record's tail
    EXPECT_EQ(it.second, -1);

    gx_do_iter raw = {};       // never prepared: refused, and the walk is empty
    EXPECT_LT(gx_do_nlist_iter(l, &raw), 0);
    EXPECT_EQ(gx_do_nlist_has_next(&raw), 0);
    // Only the fixed initial content starts a walk: any of bytes 8 to 31 set (a record
    // left over from an earlier walk) is refused as well.
    for (size_t byte = 0; byte < sizeof it.state; ++byte) {
        gx_do_iter_prepare(&it);
        it.state[byte] = 1;
        EXPECT_LT(gx_do_nlist_iter(l, &it), 0) << "byte " << byte + 8;
        EXPECT_EQ(gx_do_nlist_has_next(&it), 0);
    }

    gx_do_nvlist* nv = gx_do_nvlist_new();
    gx_do_nvlist_add_null(nv, "k1");
    nvlist_add(nv, "k2", text("v2"));
    gx_do_iter_prepare(&it);
    gx_do_nvlist_iter(nv, &it);
    EXPECT_EQ(gx_do_nlist_has_next(&it), 0) << "an nvlist walk is not an nlist walk";
    EXPECT_EQ(gx_do_nlist_get_next(&it), nullptr);   // and does not step it
    ASSERT_NE(gx_do_nvlist_has_next(&it), 0);
    gx_do_nvlist_item* first = gx_do_nvlist_get_next(&it);
    EXPECT_STREQ(gx_do_nvlist_item_get_name(first), "k1");
    EXPECT_EQ(*value_get(gx_do_nvlist_item_get_value(first)), Value{});
    gx_do_nvlist_item* second = gx_do_nvlist_get_next(&it);
    EXPECT_EQ(*value_get(gx_do_nvlist_item_get_value(second)), text("v2"));
    EXPECT_EQ(gx_do_nvlist_has_next(&it), 0);
    EXPECT_EQ(gx_do_nvlist_get_len(nv), 2);
    gx_do_nvlist_deref(nv);
    gx_do_nlist_deref(l);
}

// "n<i>", the i-th of many generated names.
static std::string n_name(int i) { return std::string("n").append(std::to_string(i)); }

TEST_F(Objects, PropertiesKeepOrderCopyNamesAndReplaceInPlace) {
    gx_do_properties* p = properties_new();
    char name[16] = "first";
    EXPECT_EQ(gx_do_properties_set_null(p, name), 0);
    std::strcpy(name, "second");   // the caller's buffer changes right after
    EXPECT_EQ(properties_set(p, name, text("x")), 0);
    EXPECT_EQ(gx_do_properties_set_null(p, "third"), 0);
    EXPECT_EQ(properties_set(p, "first", text("now set")), 0);   // replaced, not moved to the end

    auto items = properties_items(p);
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].name, "first");
    EXPECT_EQ(items[0].value, text("now set"));
    EXPECT_EQ(items[1].name, "second");
    EXPECT_EQ(items[2].value, Value{});
    EXPECT_EQ(properties_get(p, "nope"), nullptr);

    // Past the point where lookups go through the hash index, replacement still finds
    // every earlier name and the order is still that of first insertion.
    for (int i = 0; i < 300; ++i) gx_do_properties_set_null(p, n_name(i).c_str());
    for (int i = 0; i < 300; i += 7) properties_set(p, n_name(i), text(std::to_string(i)));
    properties_set(p, "second", text("y"));
    items = properties_items(p);
    ASSERT_EQ(items.size(), 303u);
    for (int i = 0; i < 300; ++i) {
        ASSERT_EQ(items[size_t(i) + 3].name, n_name(i));
        ASSERT_EQ(items[size_t(i) + 3].value, i % 7 ? Value{} : text(std::to_string(i)));
    }
    EXPECT_EQ(*properties_get(p, "second"), text("y"));
    properties_deref(p);
}

TEST_F(Objects, ListsHandedOverStayAliveAfterTheCallerReleasesThem) {
    gx_do_properties* p = properties_new();
    gx_do_vlist* arr = gx_do_vlist_new();
    vlist_add(arr, text("a"));
    gx_do_vlist_add_null(arr);
    EXPECT_EQ(gx_do_properties_set_array(p, "arr", arr), 0);
    gx_do_vlist_clear(arr);   // reused or released by the caller right after
    gx_do_vlist_deref(arr);

    gx_do_vlist* outer = gx_do_vlist_new();
    gx_do_vlist* inner = gx_do_vlist_new();
    gx_do_nvlist* seq = gx_do_nvlist_new();
    vlist_add(inner, text("i"));
    gx_do_nvlist_add_null(seq, "s");
    EXPECT_GT(gx_do_vlist_add_array(outer, inner), 0);
    EXPECT_GT(gx_do_vlist_add_sequence(outer, seq), 0);
    gx_do_vlist_deref(inner);
    gx_do_nvlist_deref(seq);
    EXPECT_EQ(gx_do_vlist_get_len(outer), 2);   // top level only

    Value want_arr;
    want_arr.v = ValueList{text("a"), Value{}};
    EXPECT_EQ(properties_items(p)[0].value, want_arr);
    ValueList got = vlist_values(outer);
    EXPECT_EQ(got[0], val(ValueList{text("i")}));
    EXPECT_EQ(got[1], val(NameValueList{NamedValue{"s", Value{}}}));
    gx_do_vlist_deref(outer);
    properties_deref(p);
}

TEST_F(Objects, VlistAddersAnswerPositiveAndAddAllIsFlat) {
    gx_do_vlist* a = gx_do_vlist_new();
    EXPECT_EQ(gx_do_vlist_add_null(a), 1);
    EXPECT_EQ(vlist_add(a, text("x")), 2);
    EXPECT_EQ(gx_do_vlist_add_all(a, a), 4);   // a list added to itself doubles once
    EXPECT_EQ(vlist_values(a), (ValueList{Value{}, text("x"), Value{}, text("x")}));

    gx_do_uri* uri = uri_new({{"ntp_peer_server", std::vector<std::pair<std::string, std::string>>{{"k", "v"}}}});
    EXPECT_EQ(gx_do_vlist_add_mr_uri(a, uri), 5);
    EXPECT_EQ(std::get<Uri>(vlist_values(a)[4].v).text, "/ntp_peer_server[k=v]");
    EXPECT_LT(gx_do_vlist_add_array(a, nullptr), 0);
    uri_deref(uri);
    gx_do_vlist_deref(a);
}

TEST_F(Objects, UriSegmentsCountSegmentZeroAndTellMissingKeysFromEmpty) {
    using Keys = std::vector<std::pair<std::string, std::string>>;
    gx_do_uri* uri = uri_new({{"a", std::nullopt}, {"b", Keys{}}, {"c", Keys{{"k1", "v1"}, {"k2", "v2"}}}});
    EXPECT_EQ(gx_do_uri_get_segment_count(uri), 4);
    EXPECT_EQ(gx_do_uri_get_segment(uri, 4), nullptr);
    EXPECT_STREQ(gx_do_uri_segment_get_name(gx_do_uri_get_segment(uri, 1)), "a");
    EXPECT_EQ(gx_do_uri_segment_get_keys(gx_do_uri_get_segment(uri, 1)), nullptr);
    gx_do_nvlist* empty = gx_do_uri_segment_get_keys(gx_do_uri_get_segment(uri, 2));
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(gx_do_nvlist_get_len(empty), 0);
    gx_do_nvlist* keys = gx_do_uri_segment_get_keys(gx_do_uri_get_segment(uri, 3));
    EXPECT_EQ(nvlist_items(keys), (NameValueList{{"k1", text("v1")}, {"k2", text("v2")}}));
    uri_deref(uri);
}

TEST_F(Objects, ReferenceCountsAndLiveTallies) {
    ObjectCounts before = live_objects();
    gx_do_nlist* n = gx_do_nlist_new();
    gx_do_vlist* v = gx_do_vlist_new();
    gx_do_nvlist* nv = gx_do_nvlist_new();
    gx_do_strbuf* s = gx_do_strbuf_new();
    gx_do_properties* p = properties_new();
    ObjectCounts during = live_objects();
    EXPECT_EQ(during.nlist - before.nlist, 1);
    EXPECT_EQ(during.vlist - before.vlist, 1);
    EXPECT_EQ(during.nvlist - before.nvlist, 1);
    EXPECT_EQ(during.strbuf - before.strbuf, 1);
    EXPECT_EQ(during.properties - before.properties, 1);
    gx_do_nlist_deref(n);
    gx_do_vlist_deref(v);
    gx_do_nvlist_deref(nv);
    gx_do_strbuf_deref(s);
    properties_deref(p);
    gx_do_nlist_deref(nullptr);
    EXPECT_EQ(live_objects().total(), before.total());
}

TEST_F(Objects, StrbufAndPairingIntoNvlist) {
    gx_do_strbuf* b = gx_do_strbuf_new();
    gx_do_strbuf_add_string(b, "compound_0.");
    gx_do_strbuf_add_string(b, "peer");
    EXPECT_STREQ(gx_do_strbuf_to_string(b), "compound_0.peer");

    gx_do_nlist* names = gx_do_nlist_new();
    gx_do_vlist* values = gx_do_vlist_new();
    gx_do_nlist_add_string(names, gx_do_strbuf_to_string(b));
    gx_do_strbuf_clear(b);   // the name list copied the text
    EXPECT_STREQ(gx_do_strbuf_to_string(b), "");
    gx_do_nlist_add_string(names, "n2");
    gx_do_nlist_add_string(names, "surplus");
    vlist_add(values, text("v1"));
    gx_do_vlist_add_null(values);
    gx_do_nvlist* nv = gx_do_nvlist_new();
    arbor_nvlist_from_nlist_vlist(nv, names, values);
    EXPECT_EQ(nvlist_items(nv), (NameValueList{{"compound_0.peer", text("v1")}, {"n2", Value{}}}));
    gx_do_nvlist_deref(nv);
    gx_do_nlist_deref(names);
    gx_do_vlist_deref(values);
    gx_do_strbuf_deref(b);
}

// Objects are made and released by the hundred in a rendering, and the platform may keep a
// released one for the next of its kind: whatever was in it must not show again, and texts
// handed out must stay where they are while their list or buffer grows.
TEST_F(Objects, ObjectsMadeAgainStartEmptyAndTextsStayWhileTheyGrow) {
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        gx_do_nlist* names = gx_do_nlist_new();
        gx_do_vlist* values = gx_do_vlist_new();
        gx_do_nvlist* pairs = gx_do_nvlist_new();
        gx_do_strbuf* buf = gx_do_strbuf_new();
        EXPECT_EQ(gx_do_nlist_get_len(names), 0);
        EXPECT_EQ(gx_do_vlist_get_len(values), 0);
        EXPECT_EQ(gx_do_nvlist_get_len(pairs), 0);
        EXPECT_STREQ(gx_do_strbuf_to_string(buf), "");

        // Names of every length around the first block's size, the first one's text held.
        std::vector<std::string> want;
        for (size_t len : {1u, 55u, 56u, 200u, 511u, 512u, 513u, 3000u, 70u, 0u})
            want.push_back(std::string(len, char('a' + want.size() + round)));
        for (const std::string& w : want) ASSERT_NE(gx_do_nlist_add_string(names, w.c_str()), 0);
        const char* first = gx_do_name_get_strname(gx_do_nlist_get_name(names, 0));
        for (int i = 0; i < 40; ++i) gx_do_nlist_add_string(names, std::string(90, 'z').c_str());
        EXPECT_EQ(first, gx_do_name_get_strname(gx_do_nlist_get_name(names, 0)));
        EXPECT_STREQ(first, want[0].c_str());
        const std::vector<std::string> got = nlist_names(names);
        EXPECT_EQ(std::vector<std::string>(got.begin(), got.begin() + long(want.size())), want);

        // The last name removed and another added in its place; removed down to empty and refilled.
        gx_do_nlist_remove(names, gx_do_nlist_get_len(names) - 1);
        gx_do_nlist_add_string(names, "tail");
        EXPECT_EQ(nlist_names(names).back(), "tail");
        EXPECT_STREQ(first, want[0].c_str());
        while (gx_do_nlist_get_len(names) > 0) gx_do_nlist_remove(names, 0);
        gx_do_nlist_add_string(names, "again");
        EXPECT_EQ(nlist_names(names), std::vector<std::string>{"again"});

        // A buffer grown past its first storage, and added to itself.
        const std::string part(100 + 50 * round, 'p');
        for (int i = 0; i < 3; ++i) gx_do_strbuf_add_string(buf, part.c_str());
        gx_do_strbuf_add_string(buf, gx_do_strbuf_to_string(buf));
        EXPECT_EQ(std::string(gx_do_strbuf_to_string(buf)), std::string(6 * part.size(), 'p'));

        vlist_add(values, text("kept?"));
        gx_do_vlist_add_null(values);
        nvlist_set_len(pairs, 7);
        nvlist_add(pairs, "n", text("v"));
        gx_do_nlist_deref(names);
        gx_do_vlist_deref(values);
        gx_do_nvlist_deref(pairs);
        gx_do_strbuf_deref(buf);
    }
}

TEST(Values, TextFormsAndAddressParsing) {
    Value list;
    list.v = ValueList{text("a\"b"), val(int64_t(-3)), val(uint64_t(7)), val(true), val(EnumText{"ZAN_CFG_0"})};
    EXPECT_EQ(to_text(list), R"(["a\"b", -3, 7, true, ZAN_CFG_0])");
    auto v4 = parse_ip("10.1.2.3");
    ASSERT_TRUE(v4);
    EXPECT_EQ(v4->family, 4);
    EXPECT_EQ(format_ip(*v4), "10.1.2.3");
    auto v6 = parse_ip("2001:db8::1");
    ASSERT_TRUE(v6);
    EXPECT_EQ(v6->family, 6);
    EXPECT_EQ(format_ip(*v6), "2001:db8::1");
    EXPECT_FALSE(parse_ip("10.1.2"));
    EXPECT_FALSE(parse_ip(""));
    auto mac = parse_mac("00:1A:2b:3c:4d:5e");
    ASSERT_TRUE(mac);
    EXPECT_EQ(format_mac(*mac), "00:1a:2b:3c:4d:5e");
    EXPECT_EQ(parse_mac("001a.2b3c.4d5e"), mac);
    EXPECT_FALSE(parse_mac("00:1a:2b:3c:4d"));
    EXPECT_FALSE(parse_mac("00:1a-2b:3c:4d:5e"));
}

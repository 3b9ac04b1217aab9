#include "connection/plain_json.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "connection/json_parsing.h"
#include "tests/support/json_event_log.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using vtdirect_test::JsonEventLog;

// The events of a plain text; "not plain" for any other.
std::string EventsOf(std::string_view text) {
  JsonEventLog log;
  return PlainJson<JsonEventLog>(text, log).Read() ? log.text() : "not plain";
}

std::string Nested(std::size_t levels) {
  return std::string(levels, '[') + std::string(levels, ']');
}

TEST(PlainJson, MakesTheEventsOfATextInItsOrder) {
  EXPECT_EQ(EventsOf(R"({"id":"D1","list":[true,false,null,7],"o":{},"l":[]})"),
            "{ k2:id s2:D1 k4:list [ true false null u7 ]4 k1:o { }0 k1:l [ ]0 }4");
  EXPECT_EQ(EventsOf(R"([[1,{"a":[2]}],""])"), "[ [ u1 { k1:a [ u2 ]1 }1 ]2 s0: ]2");
}

TEST(PlainJson, PassesOverBlanksBetweenAllParts) {
  EXPECT_EQ(EventsOf(" \t\r\n{ \"a\" : [ 1 , \"b\" ] , \"c\" :\n{ } }\n "),
            "{ k1:a [ u1 s1:b ]2 k1:c { }0 }2");
}

TEST(PlainJson, TakesTextsOfAnyLengthAndBytes) {
  for (const std::size_t length : {1, 15, 16, 17, 31, 32, 33, 1000}) {
    const std::string text(length, 'a');
    EXPECT_EQ(EventsOf("[\"" + text + "\"]"), "[ s" + std::to_string(length) + ":" + text + " ]1");
  }
  EXPECT_EQ(EventsOf("[\"\xC3\xA4\xFF\x7F\"]"), "[ s4:\xC3\xA4\xFF\x7F ]1");
}

TEST(PlainJson, TakesWholeNumbersOf64Bits) {
  EXPECT_EQ(EventsOf("[0,4294967295,4294967296,9999999999999999999]"),
            "[ u0 u4294967295 U4294967296 U9999999999999999999 ]4");
}

TEST(PlainJson, LeavesWhatNeedsMoreToJsonReader) {
  for (const char* text : {R"(["\n"])", R"({"\u0061":1})", "[-1]", "[-0]", "[1.5]", "[1e2]", "7", "\"text\"",
                           "true", "[18446744073709551615]"}) {
    EXPECT_EQ(EventsOf(text), "not plain") << text;
    JsonEventLog log;
    EXPECT_TRUE(ReadJson(std::string_view(text), log)) << text;
  }
  EXPECT_NE(EventsOf(Nested(16)), "not plain");
  EXPECT_EQ(EventsOf(Nested(17)), "not plain");
}

TEST(PlainJson, RefusesWhatIsNoJson) {
  for (const char* text : {"",
                           " ",
                           "]",
                           "}",
                           "[",
                           "{",
                           "[}",
                           "{]",
                           "[1",
                           "[1,]",
                           "[,]",
                           "[,1]",
                           "[1 2]",
                           "[01]",
                           "[00]",
                           "{\"a\"}",
                           "{\"a\":}",
                           "{\"a\":1,}",
                           "{,}",
                           "{1:2}",
                           "{a:1}",
                           "{\"a\" 1}",
                           "{\"a\":1 \"b\":2}",
                           "[\"a]",
                           "[\"a\nb\"]",
                           "[\"a\x01\"]",
                           "[tru]",
                           "[truex]",
                           "[True]",
                           "[nul]",
                           "[falsetrue]",
                           "[] []",
                           "[]]",
                           "{}}",
                           "[1]x]",
                           "[\"a\"\"b\"]",
                           "[\v]",
                           "[1,,2]",
                           "[+1]",
                           "[.5]"}) {
    EXPECT_EQ(EventsOf(text), "not plain") << text;
    JsonEventLog log;
    EXPECT_FALSE(ReadJson(std::string_view(text), log)) << text;
  }
  EXPECT_EQ(EventsOf(std::string_view("[1\0]", 4)), "not plain");
}

TEST(PlainJson, ReadsNoByteBeyondItsEnd) {
  const std::string text = R"({"a":["b",true,12]})";
  for (std::size_t length = 0; length < text.size(); ++length) {
    const std::string cut = text.substr(0, length);
    EXPECT_EQ(EventsOf(std::string_view(cut.data(), cut.size())), "not plain") << cut;
  }
}

TEST(PlainJson, EndsWhenTheHandlerDoes) {
  const std::string_view text = R"({"a":[1,true,null,"b",{}]})";
  JsonEventLog whole;
  ASSERT_TRUE(PlainJson<JsonEventLog>(text, whole).Read());
  constexpr std::size_t events = 11;
  for (std::size_t limit = 0; limit < events; ++limit) {
    JsonEventLog log(limit);
    EXPECT_FALSE(PlainJson<JsonEventLog>(text, log).Read()) << limit;
    EXPECT_TRUE(whole.text().starts_with(log.text())) << limit;
  }
  JsonEventLog all(events);
  EXPECT_TRUE(PlainJson<JsonEventLog>(text, all).Read());
}

}  // namespace

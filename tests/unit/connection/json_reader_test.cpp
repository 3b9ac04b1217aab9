// The grammar of RFC 8259, production by production, with what each violation gives: the events before the
// error are delivered, and RapidJSON's own reader says the same of every row.
#include "connection/json_reader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/json_event_log.h"
#include "tests/support/rapidjson_reading.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using namespace std::string_literals;
using vtdirect_test::JsonEventLog;

struct Row {
  std::string text;
  bool isRead = false;
  std::string events;
};

std::string Real(double value) {
  char text[64];
  std::snprintf(text, sizeof(text), "d%a", value);
  return text;
}

Row Accepted(std::string text, std::string events) {
  return {std::move(text), true, std::move(events)};
}

Row Refused(std::string text, std::string events = "") {
  return {std::move(text), false, std::move(events)};
}

Row Read(std::string_view text, std::size_t pieceSize) {
  JsonEventLog log;
  JsonReader<JsonEventLog> reader(log);
  bool goesOn = true;
  for (std::size_t at = 0; goesOn && at < text.size(); at += pieceSize) {
    goesOn = reader.Read(std::string(text.substr(at, pieceSize)));
  }
  const bool isRead = goesOn && reader.Finish();
  return {std::string(text), isRead, log.text()};
}

void Check(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text.substr(0, 200));
    JsonEventLog log;
    EXPECT_EQ(vtdirect_test::ReadByRapidJson(row.text, log, maximumJsonDepth), row.isRead) << "RapidJSON";
    EXPECT_EQ(log.text(), row.events) << "RapidJSON";
    for (const std::size_t pieceSize :
         {row.text.size() + 1, std::size_t{1}, std::size_t{2}, std::size_t{5}}) {
      const Row read = Read(row.text, pieceSize);
      EXPECT_EQ(read.isRead, row.isRead) << "in pieces of " << pieceSize;
      EXPECT_EQ(read.events, row.events) << "in pieces of " << pieceSize;
    }
  }
}

TEST(JsonGrammar, TextIsOneValueWithWhiteSpaceAround) {
  Check({Accepted("null", "null"), Accepted(" \t\r\n null \t\r\n ", "null"), Refused(""), Refused(" \t\r\n "),
         Refused("null null", "null"), Refused("null,", "null"), Refused("null]", "null"),
         Refused("null}", "null"), Refused("{}{}", "{ }0"), Refused("[]x", "[ ]0"),
         Refused("\"a\"\"b\"", "s1:a"), Refused("1 2", "u1"), Refused(",null"), Refused("/* */null"),
         Refused("null//", "null")});
}

TEST(JsonGrammar, WhiteSpaceIsBlankTabLineFeedAndCarriageReturnAlone) {
  Check({Accepted("[\n1\r,\t2 ]", "[ u1 u2 ]2"), Refused("\v1"), Refused("\f1"), Refused("[1\v]", "[ u1"),
         Refused("[\xC2\xA0]", "["), Refused("1\x0B", "u1"), Refused("\xE2\x80\xA8null")});
}

TEST(JsonGrammar, AZeroByteIsNoEnd) {
  Check({Refused("\0"s), Refused("\0null"s), Refused("null\0"s, "null"), Refused("{}\0junk"s, "{ }0"),
         Refused("1\0"s, "u1"), Refused("[1\0]"s, "[ u1"), Refused("\"a\0b\""s), Refused("[1,\0"s, "[ u1"),
         Refused("nu\0l"s), Refused("{\"a\"\0:1}"s, "{ k1:a"), Accepted("\"\\u0000\"", "s1:\0"s)});
}

TEST(JsonGrammar, AByteOrderMarkIsAnError) {
  Check({Refused("\xEF\xBB\xBF{}"), Refused("\xFF\xFE{\0}\0"s), Refused("\xFE\xFF\0{\0}"s),
         Refused("\xEF\xBB"), Refused("{}\xEF\xBB\xBF", "{ }0"),
         Accepted("\"\xEF\xBB\xBF\"", "s3:\xEF\xBB\xBF")});
}

TEST(JsonGrammar, LiteralsAreLowerCaseAndWhole) {
  Check({Accepted("true", "true"), Accepted("false", "false"),
         Accepted("[null,true,false]", "[ null true false ]3"), Refused("True"), Refused("NULL"),
         Refused("nul"), Refused("tru"), Refused("fals"), Refused("n"), Refused("nulL"),
         Refused("trues", "true"), Refused("falsey", "false"), Refused("nullnull", "null"),
         Refused("[truefalse]", "[ true"), Refused("NaN"), Refused("Infinity"), Refused("-Infinity"),
         Refused("undefined"), Refused("tr ue")});
}

TEST(JsonGrammar, ArraysAreValuesBetweenCommas) {
  Check({Accepted("[]", "[ ]0"), Accepted("[ ]", "[ ]0"), Accepted("[1]", "[ u1 ]1"),
         Accepted("[[],[[]],{}]", "[ [ ]0 [ [ ]0 ]1 { }0 ]3"), Refused("[", "["), Refused("[1", "[ u1"),
         Refused("[1,", "[ u1"), Refused("[1,]", "[ u1"), Refused("[,1]", "["), Refused("[1,,2]", "[ u1"),
         Refused("[1 2]", "[ u1"), Refused("[1}", "[ u1"), Refused("[1:2]", "[ u1"), Refused("]"),
         Refused("[]]", "[ ]0"), Refused("[[]", "[ [ ]0"), Refused("[\"a\"", "[ s1:a"),
         Refused("[[", "[ [")});
}

TEST(JsonGrammar, ObjectsAreMembersBetweenCommas) {
  Check({Accepted("{}", "{ }0"),
         Accepted("{ }", "{ }0"),
         Accepted("{\"a\":1}", "{ k1:a u1 }1"),
         Accepted("{ \"a\" : 1 , \"\" : {} }", "{ k1:a u1 k0: { }0 }2"),
         Refused("{", "{"),
         Refused("}"),
         Refused("{\"a\"", "{ k1:a"),
         Refused("{\"a\":", "{ k1:a"),
         Refused("{\"a\":1", "{ k1:a u1"),
         Refused("{\"a\":1,", "{ k1:a u1"),
         Refused("{\"a\":1,}", "{ k1:a u1"),
         Refused("{,}", "{"),
         Refused("{\"a\" 1}", "{ k1:a"),
         Refused("{\"a\"::1}", "{ k1:a"),
         Refused("{\"a\",1}", "{ k1:a"),
         Refused("{\"a\":}", "{ k1:a"),
         Refused("{\"a\":1 \"b\":2}", "{ k1:a u1"),
         Refused("{a:1}", "{"),
         Refused("{'a':1}", "{"),
         Refused("{1:2}", "{"),
         Refused("{null:2}", "{"),
         Refused("{[]:2}", "{"),
         Refused("{\"a\":1]", "{ k1:a u1"),
         Refused("{}}", "{ }0"),
         Refused("{\"a\":1:2}", "{ k1:a u1")});
}

TEST(JsonGrammar, MembersOfOneNameAreAllDelivered) {
  Check({Accepted("{\"a\":1,\"a\":2}", "{ k1:a u1 k1:a u2 }2"),
         Accepted("[{\"a\":[]},{\"a\":{}}]", "[ { k1:a [ ]0 }1 { k1:a { }0 }1 ]2")});
}

TEST(JsonGrammar, IntegersHaveNoPlusAndNoLeadingZero) {
  Check({Accepted("0", "u0"), Accepted("-0", "i0"), Accepted("7", "u7"), Accepted("-7", "i-7"),
         Accepted("10", "u10"), Refused("+1"), Refused("-"), Refused("--1"), Refused("-a"),
         Refused("01", "u0"), Refused("-01", "i0"), Refused("00", "u0"), Refused("0x10", "u0"),
         Refused("1a", "u1"), Refused("- 1"), Refused("1 000", "u1"), Refused("[-]", "["),
         Refused("1-1", "u1"), Refused("\xEF\xBC\x91")});
}

TEST(JsonGrammar, FractionsHaveDigits) {
  Check({Accepted("0.5", Real(0.5)), Accepted("-0.0", Real(-0.0)), Accepted("1.50", Real(1.5)), Refused("1."),
         Refused(".5"), Refused("-.5"), Refused("[1.]", "["), Refused("1.a"), Refused("1.5.5", Real(1.5)),
         Refused("1,5", "u1"), Refused("[1.e5]", "["), Refused("1.-5")});
}

TEST(JsonGrammar, ExponentsHaveDigits) {
  Check({Accepted("1e2", Real(100)), Accepted("1E2", Real(100)), Accepted("1e+2", Real(100)),
         Accepted("100e-2", Real(1)), Accepted("1.5e1", Real(15)), Accepted("0e0", Real(0)),
         Accepted("1e0002", Real(100)), Accepted("-0e5", Real(-0.0)), Refused("1e"), Refused("1e+"),
         Refused("1e-"), Refused("1ea"), Refused("e5"), Refused("[1e]", "["), Refused("1e++2"),
         Refused("1e2.5", Real(100)), Refused("1e2e2", Real(100)), Refused("1e 2")});
}

TEST(JsonGrammar, TheRangeOfAnIntegerMakesItsEvent) {
  Check({Accepted("2147483647", "u2147483647"), Accepted("4294967295", "u4294967295"),
         Accepted("4294967296", "U4294967296"), Accepted("4294967300", "U4294967300"),
         Accepted("18446744073709551615", "U18446744073709551615"),
         Accepted("18446744073709551616", Real(0x1p+64)), Accepted("-2147483648", "i-2147483648"),
         Accepted("-2147483649", "I-2147483649"), Accepted("-9223372036854775808", "I-9223372036854775808"),
         Accepted("-9223372036854775809", Real(-0x1p+63)), Accepted("100000000000000000000", Real(1e20))});
}

TEST(JsonGrammar, NumbersBeyondTheLargestDoubleAreErrorsAndThoseBelowTheSmallestZero) {
  const std::string digits308(308, '1');
  // Beyond 64 bits each digit is a multiplication, with its rounding.
  double digitByDigit = 1e19;
  for (int digit = 20; digit <= 308; ++digit) digitByDigit *= 10;
  Check({Accepted("1e308", Real(1e308)), Refused("1e309"), Refused("1e400"), Refused("-1e309"),
         Refused("0e309"), Accepted("9e308", Real(1e308 * 10)), Refused("10e308x", Real(1e308 * 10)),
         Refused("[1,1e309]", "[ u1"), Accepted("1" + std::string(308, '0'), Real(digitByDigit)),
         Refused("1" + std::string(309, '0')), Accepted("1e-307", Real(1 / 1e307)),
         Accepted("1e-400", Real(0)), Accepted("-1e-400", Real(-0.0)), Accepted("0.1e309", Real(1e308)),
         Refused("0.1e310"), Refused("1e999999999999999999999999"),
         Accepted("0." + std::string(400, '0') + "1e401", Real(1)), Refused(digits308 + "11")});
}

TEST(JsonGrammar, ExponentsBeyondAnyIntAreReadAsTheyAreFoundWherever) {
  Check({Accepted("1e-2147483648", Real(0)), Accepted("-1e-99999999999999999999", Real(-0.0)),
         Accepted("[1,1e-99999999999,2]", "[ u1 " + Real(0) + " u2 ]3"),
         Accepted("{\"a\":1e-99999999999 ,\"b\":[1e-99999999999],\"c\":{\"d\":-1E-99999999999}}",
                  "{ k1:a " + Real(0) + " k1:b [ " + Real(0) + " ]1 k1:c { k1:d " + Real(-0.0) + " }1 }3"),
         Accepted("[[1e-99999999999],[[1e-99999999999]]]",
                  "[ [ " + Real(0) + " ]1 [ [ " + Real(0) + " ]1 ]1 ]2"),
         Refused("[1e-99999999999", "[ " + Real(0)), Refused("[1e-99999999999.5]", "[ " + Real(0)),
         Refused("1e-99999999999 x", Real(0)), Refused("[1e-99999999999 2]", "[ " + Real(0)),
         Refused("{\"a\":1e-99999999999]", "{ k1:a " + Real(0)), Refused("[1,1e99999999999]", "[ u1"),
         Accepted("\"1e-99999999999\"", "s14:1e-99999999999"),
         Accepted("1e-00000000000000000002", Real(0.01))});
}

// These killed a program once: the exponent and the digits of the fraction overflowed together.
TEST(JsonGrammar, NumbersWhoseExponentOverflowsWithTheirFractionAreZero) {
  Check({Accepted("1.11111111111111111111e-2147483639", Real(0)),
         Accepted("{\"n\":-1.11111111111111111111e-2147483639}", "{ k1:n " + Real(-0.0) + " }1"),
         Accepted("0.00000000000000000001e-2147483647", Real(0))});
}

TEST(JsonGrammar, TextsEndWithAQuote) {
  Check({Accepted("\"\"", "s0:"), Accepted("\"a b\"", "s3:a b"), Refused("\""), Refused("\"a"),
         Refused("'a'"), Refused("\"a\"b", "s1:a"), Refused("[\"a", "["), Refused("{\"a", "{"),
         Accepted("\"/\"", "s1:/"), Accepted("\"\x7F\"", "s1:\x7F")});
}

TEST(JsonGrammar, ControlBytesInTextsAreErrors) {
  for (char control = 0; control < 0x20; ++control) {
    Check({Refused("\"a" + std::string(1, control) + "\""),
           Refused("{\"" + std::string(1, control) + "\":1}", "{")});
  }
}

TEST(JsonGrammar, BytesThatAreNoUtf8PassThrough) {
  for (const std::string bytes : {"\x80", "\xBF\xBF", "\xC0\x80", "\xE2\x82", "\xED\xA0\x80",
                                  "\xF5\x80\x80\x80", "\xFE\xFF", "\xC3\xA4", "\xF0\x9F\x98\x80", "\xE2"}) {
    Check({Accepted("\"" + bytes + "\"", "s" + std::to_string(bytes.size()) + ":" + bytes),
           Accepted("{\"" + bytes + "\":\"\\n" + bytes + "\"}",
                    "{ k" + std::to_string(bytes.size()) + ":" + bytes + " s" +
                        std::to_string(bytes.size() + 1) + ":\n" + bytes + " }1")});
  }
}

TEST(JsonGrammar, EscapesAreNine) {
  Check({Accepted(R"("\"\\\/\b\f\n\r\t")", "s8:\"\\/\b\f\n\r\t"), Accepted(R"("a\nb\tc")", "s5:a\nb\tc"),
         Accepted(R"({"\n":"\\"})", "{ k1:\n s1:\\ }1"), Refused(R"("\a")"), Refused(R"("\N")"),
         Refused(R"("\0")"), Refused(R"("\x41")"), Refused(R"("\)"), Refused("\"\\\n\""), Refused("\"\\"),
         Refused("\\"), Refused("[1\\", "[ u1"), Refused("[1\\n]", "[ u1"), Refused("\"\\\x80\""),
         Refused("\"\\\0\""s)});
}

TEST(JsonGrammar, UnicodeEscapesHaveFourDigitsAndBecomeUtf8) {
  Check({Accepted(R"("\u0041\u00e4\u20AC")", "s6:A\xC3\xA4\xE2\x82\xAC"),
         Accepted(R"("\uFFFF")", "s3:\xEF\xBF\xBF"),
         Accepted(R"("\u007f\u0080\u07ff\u0800")", "s8:\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80"), Refused(R"("\u")"),
         Refused(R"("\u1")"), Refused(R"("\u12")"), Refused(R"("\u123")"), Refused(R"("\u123g")"),
         Refused(R"("\U0041")"), Refused(R"("\u 041")"), Refused(R"("\u-041")"), Refused("\"\\u00"),
         Accepted(R"("\u00411")", "s2:A1"), Refused(R"(\u0041)"), Refused(R"("\ud7f)"),
         Refused(R"("\ug000")"), Accepted(R"("\uD7FF\uE000")", "s6:\xED\x9F\xBF\xEE\x80\x80")});
}

TEST(JsonGrammar, SurrogatesMakeOneCharacterAndAHighOneAloneIsAnError) {
  Check({Accepted(R"("\uD83D\uDE00")", "s4:\xF0\x9F\x98\x80"),
         Accepted(R"("\ud800\udc00")", "s4:\xF0\x90\x80\x80"),
         Accepted(R"("\uDBFF\uDFFF")", "s4:\xF4\x8F\xBF\xBF"), Refused(R"("\uD800")"),
         Refused(R"("\uD800a")"), Refused(R"("\uD800\n")"), Refused(R"("\uD800\u0041")"),
         Refused(R"("\uD800\uD800")"), Refused(R"("\uD800\uD800\uDC00")"), Refused(R"("\uD800\uDC0")"),
         Refused(R"("\uD800\uDG00")"), Refused(R"("\uD80\uDC00")"), Refused("\"\\uD800"),
         Refused("\"\\uD800\\uDC00"), Refused(R"("\uDBFF\")")});
}

TEST(JsonGrammar, ALowSurrogateAloneBecomesItsThreeBytes) {
  Check({Accepted(R"("\uDC00")", "s3:\xED\xB0\x80"), Accepted(R"("\udfff")", "s3:\xED\xBF\xBF"),
         Accepted(R"("a\uDEadb\uDc00")",
                  "s8:a\xED\xBA\xAD"
                  "b\xED\xB0\x80"),
         Accepted(R"("\uD83D\uDE00\uDE00")", "s7:\xF0\x9F\x98\x80\xED\xB8\x80"),
         Accepted(R"({"\uDC00":"\n\uDC00\n"})", "{ k3:\xED\xB0\x80 s5:\n\xED\xB0\x80\n }1"),
         Accepted(R"("\\uDC00")", "s6:\\uDC00"), Accepted(R"("\\\uDC00")", "s4:\\\xED\xB0\x80"),
         Refused(R"("\uDC0")"), Refused(R"("\uDC0g")"), Refused(R"("\uDCg0")"), Refused("\"\\uDC00"),
         Refused(R"([1,\uDC00])", "[ u1"), Refused(R"(\uDC00)"), Refused(R"([1\uDC00])", "[ u1")});
}

TEST(JsonGrammar, NestingIsRefusedBelow512Levels) {
  std::string arrays;
  std::string events;
  for (int level = 0; level < 512; ++level) {
    arrays += '[';
    events += level == 0 ? "[" : " [";
  }
  std::string ends = " ]0";
  for (int level = 1; level < 512; ++level) ends += " ]1";
  Check({Accepted(arrays + std::string(512, ']'), events + ends), Refused(arrays + "[", events),
         Refused(arrays + "{", events), Refused(std::string(100000, '['), events),
         Refused(arrays + "[" + std::string(513, ']'), events)});
}

// The parser is begun again at some depth and brought back after it, where commas and counts must still be
// right.
TEST(JsonGrammar, WhatFollowsDeepNestingIsReadAsAnywhere) {
  for (const int levels : {31, 32, 33, 34, 64, 65, 100}) {
    std::string text = "[7,";
    std::string events = "[ u7";
    for (int level = 0; level < levels; ++level) {
      text += level % 2 == 0 ? "{\"a\":1,\"b\":" : "[2,";
      events += level % 2 == 0 ? " { k1:a u1 k1:b" : " [ u2";
    }
    text += "null";
    events += " null";
    Check({Refused(text, events), Refused(text + ";", events)});
    for (int level = levels - 1; level >= 0; --level) {
      text += level % 2 == 0 ? ",\"c\":3}" : ",4]";
      events += level % 2 == 0 ? " k1:c u3 }3" : " u4 ]3";
      Check({Refused(text, events), Refused(text + (level % 2 == 0 ? "}" : "]"), events)});
    }
    Check({Accepted(text + ",8 ] ", events + " u8 ]3"), Refused(text + ",8] x", events + " u8 ]3")});
  }
}

TEST(JsonReader, EndsWhenItsHandlerDoes) {
  const std::string text = R"([null,true,1,-1,5000000000,-5000000000,1.5,"a\n",{"k":"v"},[]])";
  JsonEventLog whole;
  ASSERT_TRUE(vtdirect_test::ReadByRapidJson(text, whole, maximumJsonDepth));
  for (std::size_t events = 0; events < 16; ++events) {
    JsonEventLog expected(events);
    JsonEventLog log(events);
    EXPECT_FALSE(vtdirect_test::ReadByRapidJson(text, expected, maximumJsonDepth)) << events;
    JsonReader<JsonEventLog> reader(log);
    EXPECT_FALSE(reader.Read(text)) << events;
    EXPECT_EQ(log.text(), expected.text());
    EXPECT_FALSE(reader.Read("]")) << events;
    EXPECT_FALSE(reader.Finish()) << events;
    EXPECT_EQ(log.text(), expected.text());
  }
}

TEST(JsonReader, HandsATextOnWhereItIsInThePiece) {
  struct Places {
    bool Null() { return true; }
    bool Bool(bool) { return true; }
    bool Int(int) { return true; }
    bool Uint(unsigned) { return true; }
    bool Int64(std::int64_t) { return true; }
    bool Uint64(std::uint64_t) { return true; }
    bool Double(double) { return true; }
    bool String(const char* text, unsigned, bool) {
      texts.push_back(text);
      return true;
    }
    bool Key(const char* text, unsigned length, bool copy) { return String(text, length, copy); }
    bool StartObject() { return true; }
    bool EndObject(unsigned) { return true; }
    bool StartArray() { return true; }
    bool EndArray(unsigned) { return true; }
    std::vector<const char*> texts;
  } places;
  const std::string text = R"({"key":"value"})";
  JsonReader<Places> reader(places);
  ASSERT_TRUE(reader.Read(text) && reader.Finish());
  EXPECT_EQ(places.texts, (std::vector<const char*>{text.data() + 2, text.data() + 8}));
}

// Nothing of a number is kept but what it is made of, and nothing of white space.
TEST(JsonReader, ANumberOfManyMegabytesTakesNoMemory) {
  JsonEventLog log;
  JsonReader<JsonEventLog> reader(log);
  const std::string zeros(1 << 16, '0');
  ASSERT_TRUE(reader.Read("[0."));
  for (int piece = 0; piece < 100; ++piece) ASSERT_TRUE(reader.Read(zeros));
  ASSERT_TRUE(reader.Read("1e6553601]") && reader.Finish());
  EXPECT_EQ(log.text(), "[ " + Real(1) + " ]1");
}

}  // namespace

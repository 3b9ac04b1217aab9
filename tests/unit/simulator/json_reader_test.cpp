#include "simulator/wire/json_reader.h"

#include <gtest/gtest.h>

#include <string>

namespace vantry_sim {
namespace {

std::string Reason(std::string_view text) {
  JsonProblem problem;
  return ReadJson(text, &problem) ? "" : problem.reason;
}

struct NumberCase {
  const char* text;
  bool isJson;
  std::optional<std::int64_t> integer;
};

/// RFC 8259: an optional minus, digits without a leading zero, then a fraction and an exponent of any length.
constexpr NumberCase numbers[] = {
    {"0", true, 0},
    {"-0", true, 0},
    {"7", true, 7},
    {"-12", true, -12},
    {"9223372036854775807", true, INT64_MAX},
    {"-9223372036854775808", true, INT64_MIN},
    {"9223372036854775808", true, std::nullopt},
    {"-9223372036854775809", true, std::nullopt},
    {"123456789012345678901234567890", true, std::nullopt},
    {"1.5", true, std::nullopt},
    {"1.0", true, std::nullopt},
    {"1e2", true, std::nullopt},
    {"1E+2", true, std::nullopt},
    {"1e-2", true, std::nullopt},
    {"1e400", true, std::nullopt},
    {"1e99999999999999999999", true, std::nullopt},
    {"1e-99999999999999999999", true, std::nullopt},
    {"1.11111111111111111111e-2147483639", true, std::nullopt},
    {"1.11111111111111111111e-2147483648", true, std::nullopt},
    {"1e2147483647", true, std::nullopt},
    {"0.0000000000000000000000000000000000000000e-2147483647", true, std::nullopt},
    {"01", false, std::nullopt},
    {"-", false, std::nullopt},
    {"+1", false, std::nullopt},
    {".5", false, std::nullopt},
    {"1.", false, std::nullopt},
    {"1e", false, std::nullopt},
    {"1e+", false, std::nullopt},
    {"1e1.5", false, std::nullopt},
    {"0x10", false, std::nullopt},
    {"1_000", false, std::nullopt},
    {"NaN", false, std::nullopt},
    {"Infinity", false, std::nullopt},
    {"--1", false, std::nullopt},
};

TEST(JsonReader, NumbersAreKeptAsTheyWereWritten) {
  for (const NumberCase& c : numbers) {
    const std::string text = std::string("{\"n\":") + c.text + "}";
    const auto document = ReadJson(text);
    EXPECT_EQ(document.has_value(), c.isJson) << c.text;
    if (!document) continue;
    const JsonValue number = document->Root().Find("n");
    EXPECT_TRUE(number.IsNumber()) << c.text;
    EXPECT_EQ(number.NumberText(), c.text);
    EXPECT_EQ(number.Integer(), c.integer) << c.text;
  }
}

TEST(JsonReader, NumberMayStandAlone) {
  EXPECT_EQ(ReadJson(" -17\n")->Root().Integer(), -17);
}

TEST(JsonReader, MembersAreFoundByNameAndTheFirstOfTwoCounts) {
  const auto document = ReadJson(R"({"a":"x","b":[1,"two",null,{"c":true}],"a":"y","":false})");
  ASSERT_TRUE(document);
  const JsonValue root = document->Root();
  EXPECT_EQ(root.Size(), 4U);
  EXPECT_EQ(root.Find("a").Text(), "x");
  EXPECT_TRUE(root.Find("").IsBoolean());
  EXPECT_FALSE(root.Find("").Boolean());
  EXPECT_TRUE(root.Find("missing").IsMissing());
  const JsonValue list = root.Find("b");
  ASSERT_EQ(list.Size(), 4U);
  auto item = list.begin();
  EXPECT_EQ((*item).Integer(), 1);
  ++item;
  EXPECT_EQ((*item).Text(), "two");
  ++item;
  EXPECT_TRUE((*item).IsNull());
  ++item;
  EXPECT_TRUE((*item).Find("c").Boolean());
  ++item;
  EXPECT_FALSE(item != list.end());
}

TEST(JsonReader, AMissingValueAnswersEveryQuestionWithNothing) {
  const JsonValue missing;
  EXPECT_TRUE(missing.Find("a").IsMissing());
  EXPECT_EQ(missing.Size(), 0U);
  EXPECT_EQ(missing.Text(), "");
  EXPECT_EQ(missing.Integer(), std::nullopt);
  for ([[maybe_unused]] const JsonValue child : missing) ADD_FAILURE();
}

TEST(JsonReader, TextsAreDecoded) {
  const auto document =
      ReadJson("[\"a\\\"\\\\\\/\\b\\f\\n\\r\\t\", \"\\u00e9\\u20AC\\ud83D\\uDE00\", \"\\u0000\"]");
  ASSERT_TRUE(document);
  auto item = document->Root().begin();
  EXPECT_EQ((*item).Text(), "a\"\\/\b\f\n\r\t");
  ++item;
  EXPECT_EQ((*item).Text(), "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  ++item;
  EXPECT_EQ((*item).Text(), std::string_view("\0", 1));
}

TEST(JsonReader, WhatIsNoJsonHasAReason) {
  for (const char* text : {"",
                           " ",
                           "{",
                           "[",
                           "{]",
                           "[}",
                           "[1,]",
                           "{\"a\":1,}",
                           "{\"a\"}",
                           "{\"a\":}",
                           "{a:1}",
                           "[1 2]",
                           "\"a",
                           "\"a\nb\"",
                           "\"\\x\"",
                           "\"\\u12\"",
                           "\"\\ud800\"",
                           "\"\\ud800\\u0041\"",
                           "\"\\udc00\"",
                           "\"\\",
                           "tru",
                           "truex",
                           "nul",
                           "{} {}",
                           "// a\n1",
                           "'a'",
                           "\"\xFF\"",
                           "\"\xC0\x80\"",
                           "\"\xED\xA0\x80\"",
                           "[1}",
                           "\xEF\xBB\xBF{}"}) {
    EXPECT_NE(Reason(text), "") << text;
  }
}

TEST(JsonReader, ProblemsAndValuesKnowTheirLine) {
  JsonProblem problem;
  EXPECT_FALSE(ReadJson("{\n\"a\": 1,\n\"b\": x}", &problem));
  EXPECT_EQ(problem.line, 3U);
  const auto document = ReadJson("{\n\"a\": 1,\n\n\"b\": [\n2]}");
  EXPECT_EQ(document->Root().Find("a").Line(), 2U);
  EXPECT_EQ(document->Root().Find("b").Line(), 4U);
  EXPECT_EQ((*document->Root().Find("b").begin()).Line(), 5U);
}

TEST(JsonReader, DepthCostsNoStack) {
  constexpr std::size_t depth = 1'500'000;
  EXPECT_TRUE(ReadJson(std::string(depth, '[') + std::string(depth, ']')));
  EXPECT_NE(Reason(std::string(depth, '[')), "");
}

TEST(JsonReader, TooManyValuesAreRefused) {
  std::string text = "[0";
  for (std::size_t i = 0; i < mostJsonValues; ++i) text += ",0";
  EXPECT_EQ(Reason(text + "]"), "it has too many values");
}

}  // namespace
}  // namespace vantry_sim

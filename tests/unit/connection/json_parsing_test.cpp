#include "connection/json_parsing.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "connection/json_members.h"

namespace {

using namespace lxservices::cms_interface::vantry;

bool Parses(const std::string& text) {
  rapidjson::Document document;
  return ParseJson(text, document);
}

// Parses in pieces of a few bytes, as a long answer comes from its file.
bool ParsesInPieces(std::string_view text, rapidjson::Document& document) {
  constexpr std::size_t pieceSize = 16;
  const JsonPieces next = [&text] {
    const std::string_view piece = text.substr(0, pieceSize);
    text.remove_prefix(piece.size());
    return piece;
  };
  return ParseJson(next, document);
}

std::string Arrays(std::size_t levels) {
  return std::string(levels, '[') + std::string(levels, ']');
}

std::string Objects(std::size_t levels) {
  std::string text;
  for (std::size_t level = 1; level < levels; ++level) text += "{\"a\":";
  return text + "{}" + std::string(levels - 1, '}');
}

TEST(JsonParsing, ReadsNestingUpTo512Levels) {
  EXPECT_TRUE(Parses(Arrays(511)));
  EXPECT_TRUE(Parses(Arrays(512)));
  EXPECT_FALSE(Parses(Arrays(513)));
}

TEST(JsonParsing, CountsObjectsAndArraysTogether) {
  EXPECT_TRUE(Parses(Objects(512)));
  EXPECT_FALSE(Parses(Objects(513)));
  EXPECT_TRUE(Parses("{\"a\":" + Arrays(511) + "}"));
  EXPECT_FALSE(Parses("{\"a\":" + Arrays(512) + "}"));
}

TEST(JsonParsing, CountsDepthAndNotTheNumberOfContainers) {
  std::string text = "[";
  for (int element = 0; element < 5000; ++element) text += "[{}],";
  EXPECT_TRUE(Parses(text + "0]"));
}

TEST(JsonParsing, EndsAtAHundredThousandLevelsWithoutHarm) {
  EXPECT_FALSE(Parses(Arrays(100000)));
  EXPECT_FALSE(Parses(std::string(100000, '[')));
  EXPECT_FALSE(Parses(Objects(100000)));
}

TEST(JsonParsing, BoundsTheNestingOfPiecesToo) {
  rapidjson::Document document;
  EXPECT_TRUE(ParsesInPieces(Arrays(512), document));
  EXPECT_FALSE(ParsesInPieces(Arrays(513), document));
  EXPECT_FALSE(ParsesInPieces(std::string(100000, '['), document));
}

TEST(JsonParsing, LeavesTheDocumentNullBehindAFailure) {
  rapidjson::Document document;
  ASSERT_TRUE(ParseJson("{\"a\":1}", document));
  EXPECT_FALSE(ParseJson("{\"a\":1,", document));
  EXPECT_TRUE(document.IsNull());
}

TEST(JsonParsing, AParsedDocumentCanBeReplaced) {
  rapidjson::Document document;
  ASSERT_TRUE(ParseJson("[1,2]", document));
  ASSERT_TRUE(ParseJson("{\"a\":\"b\"}", document));
  ASSERT_NE(FindString(document, "a"), nullptr);
  EXPECT_EQ(TextView(*FindString(document, "a")), "b");
}

TEST(JsonParsing, RefusesAnAnswerCutAnywhere) {
  const std::string text = R"({"items":[{"id":"csrf","attributes":{"n":-1.5e3,"t":true,"u":null}}]})";
  ASSERT_TRUE(Parses(text));
  for (std::size_t length = 0; length < text.size(); ++length) {
    rapidjson::Document document;
    EXPECT_FALSE(ParseJson(text.substr(0, length), document)) << length;
    EXPECT_TRUE(document.IsNull()) << length;
    EXPECT_FALSE(ParsesInPieces(text.substr(0, length), document)) << length;
  }
}

TEST(JsonParsing, RefusesWhatIsAfterTheValue) {
  EXPECT_FALSE(Parses("{} {}"));
  EXPECT_FALSE(Parses("[]x"));
  EXPECT_TRUE(Parses(" {} \r\n\t"));
}

TEST(JsonParsing, RefusesANulByteInsideATextOrAValue) {
  EXPECT_FALSE(Parses(std::string("{\"a\":\"b\0c\"}", 11)));
  EXPECT_FALSE(Parses(std::string("{\0}", 3)));
  EXPECT_FALSE(Parses(std::string("\0", 1)));
}

TEST(JsonParsing, ReadsAnEscapedNulByteWhole) {
  rapidjson::Document document;
  ASSERT_TRUE(ParseJson("{\"a\":\"b\\u0000c\"}", document));
  const auto* value = FindString(document, "a");
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(TextView(*value), std::string_view("b\0c", 3));
}

TEST(JsonParsing, ReadsTextsOfAMegabyteWholeAndInPieces) {
  const std::string text = "[\"" + std::string(1 << 20, 'x') + "\"]";
  rapidjson::Document document;
  ASSERT_TRUE(ParseJson(text, document));
  EXPECT_EQ(document[0].GetStringLength(), 1U << 20);
  ASSERT_TRUE(ParsesInPieces(text, document));
  EXPECT_EQ(document[0].GetStringLength(), 1U << 20);
}

TEST(JsonParsing, RefusesANumberTooLargeForItsType) {
  EXPECT_FALSE(Parses("[1e999]"));
  EXPECT_TRUE(Parses("[18446744073709551616]"));
}

TEST(JsonMembers, AMemberOfAnotherTypeCountsAsAbsent) {
  rapidjson::Document document;
  ASSERT_TRUE(ParseJson(R"({"text":"t","list":[],"number":1})", document));
  EXPECT_NE(FindMember(document, "number"), nullptr);
  EXPECT_EQ(FindString(document, "number"), nullptr);
  EXPECT_EQ(FindArray(document, "text"), nullptr);
  EXPECT_NE(FindArray(document, "list"), nullptr);
  EXPECT_EQ(FindMember(document, "absent"), nullptr);
}

TEST(JsonMembers, WhatIsNoObjectHasNoMembers) {
  for (const char* text : {"[]", "null", "\"a\"", "1", "true"}) {
    rapidjson::Document document;
    ASSERT_TRUE(ParseJson(text, document));
    EXPECT_EQ(FindMember(document, "a"), nullptr) << text;
    EXPECT_EQ(FindString(document, "a"), nullptr) << text;
    EXPECT_EQ(FindArray(document, "a"), nullptr) << text;
  }
}

TEST(JsonMembers, CopyingLeavesTheTextAloneForAnotherType) {
  rapidjson::Document document;
  ASSERT_TRUE(ParseJson(R"(["x\u0000y",1])", document));
  std::string text = "before";
  CopyString(document[1], text);
  EXPECT_EQ(text, "before");
  CopyString(document[0], text);
  EXPECT_EQ(text, std::string("x\0y", 3));
}

}  // namespace

// How much JSON is taken.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/settings.h"
#include "connection/json_parsing.h"
#include "tests/support/measurement.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using vtdirect_test::mebibyte;

/// A text that is made while it is read: a beginning, a piece many times, an end.
struct LongText {
  std::string begin;
  std::string piece;
  std::size_t times = 0;
  std::string end;

  [[nodiscard]] std::size_t size() const { return begin.size() + piece.size() * times + end.size(); }
  [[nodiscard]] JsonPieces Pieces() const {
    return [this, at = std::size_t{0}]() mutable -> std::string_view {
      const std::size_t now = at++;
      if (now == 0) return begin;
      if (now <= times) return piece;
      return now == times + 1 ? std::string_view(end) : std::string_view();
    };
  }
};

std::string Repeated(std::string_view text, std::size_t size) {
  std::string all;
  while (all.size() < size) all += text;
  return all;
}

/// An array of `item`, which ends in a comma, of about this size.
LongText ArrayOf(std::string_view item, std::size_t size) {
  const std::string piece = Repeated(item, 64 * 1024);
  return {"[", piece, size / piece.size(), "0]"};
}

class JsonBounds : public testing::Test {
 protected:
  ~JsonBounds() override {
    SetLargestJson("");
    SetLongestJsonText("");
  }
  static bool Parses(const LongText& text) {
    rapidjson::Document document;
    const bool parsed = ParseJson(text.Pieces(), document);
    EXPECT_EQ(document.IsNull(), !parsed);
    return parsed;
  }
  static bool Parses(const std::string& text) {
    rapidjson::Document document;
    return ParseJson(text, document);
  }
};

TEST_F(JsonBounds, OfADocumentIsASetting) {
  SetLargestJson("5");
  EXPECT_TRUE(Parses(std::string("[1,2]")));
  EXPECT_FALSE(Parses(std::string("[1,2] ")));
  EXPECT_TRUE(Parses(LongText{"[", "1,", 1, "2]"}));
  EXPECT_FALSE(Parses(LongText{"[", "1,", 2, "]"})) << "broken anyway";
  EXPECT_FALSE(Parses(LongText{"[", "1,", 1, "22]"}));
  EXPECT_FALSE(Parses(LongText{"[1", " ", 3, "] "}));
  for (const char* none : {"", "0", "-1", "5 ", "five", "99999999999999999999"}) {
    SetLargestJson(none);
    EXPECT_TRUE(Parses(std::string("[1,2,3,4]"))) << none;
  }
}

TEST_F(JsonBounds, OfADocumentAre64MiBWithoutASetting) {
  const std::string piece(1024, ' ');
  EXPECT_TRUE(Parses(LongText{"[", piece, 64 * 1024 - 1, Repeated(" ", 1022) + "]"}));
  EXPECT_FALSE(Parses(LongText{"[", piece, 64 * 1024 - 1, Repeated(" ", 1023) + "]"}));
}

TEST_F(JsonBounds, OfADocumentKeepMemoryBounded) {
  const vtdirect_test::Measurement measurement;
  EXPECT_FALSE(
      Parses(ArrayOf(R"({"id":"D1001","name":"fork.lxz","versions":["A.1","B.1"]},)", 300 * mebibyte)));
  EXPECT_FALSE(Parses(ArrayOf("0,", 300 * mebibyte)));
  // Sixteen times 64 MiB, and half as much while what there is of it moves.
  EXPECT_LT(measurement.Record(), 1600 * mebibyte);
}

/// A handler that takes everything and keeps nothing.
struct Nobody {
  bool Null() { return true; }
  bool Bool(bool) { return true; }
  bool Int(int) { return true; }
  bool Uint(unsigned) { return true; }
  bool Int64(std::int64_t) { return true; }
  bool Uint64(std::uint64_t) { return true; }
  bool Double(double) { return true; }
  bool String(const char*, rapidjson::SizeType length, bool) {
    longest = std::max<std::size_t>(longest, length);
    return true;
  }
  bool Key(const char*, rapidjson::SizeType, bool) { return true; }
  bool StartObject() { return true; }
  bool StartArray() { return true; }
  bool EndObject(rapidjson::SizeType) { return true; }
  bool EndArray(rapidjson::SizeType) { return true; }
  std::size_t longest = 0;
};

TEST_F(JsonBounds, OfATextAreASetting) {
  SetLongestJsonText("4");
  for (const char* fits : {R"(["abcd"])", R"({"abcd":1})", R"(["ab\u00e4"])", R"(["\n\n\n\n"])"}) {
    EXPECT_TRUE(Parses(std::string(fits))) << fits;
  }
  for (const char* tooLong : {R"(["abcde"])", R"({"abcde":1})", R"(["abc\u00e4"])", R"(["\n\n\n\n\n"])"}) {
    EXPECT_FALSE(Parses(std::string(tooLong))) << tooLong;
  }
  Nobody handler;
  EXPECT_FALSE(ReadJson(LongText{"[\"", "a", 5, "\"]"}.Pieces(), handler));
  EXPECT_TRUE(ReadJson(LongText{"[\"", "a", 4, "\"]"}.Pieces(), handler));
  EXPECT_FALSE(ReadJson(LongText{"{\"", "a", 5, "\":1}"}.Pieces(), handler));
}

TEST_F(JsonBounds, OfATextAre16MiBWithoutASettingAndKeepMemoryBounded) {
  const std::string piece(1024, 'a');
  Nobody handler;
  const vtdirect_test::Measurement measurement;
  EXPECT_TRUE(ReadJson(LongText{"[\"", piece, 16 * 1024, "\"]"}.Pieces(), handler));
  EXPECT_EQ(handler.longest, 16 * mebibyte);
  EXPECT_FALSE(ReadJson(LongText{"[\"", piece, 1024 * 1024, "\"]"}.Pieces(), handler));
  EXPECT_FALSE(ReadJson(LongText{"{\"", piece, 1024 * 1024, "\":1}"}.Pieces(), handler));
  EXPECT_LT(measurement.Record(), 64 * mebibyte);
}

TEST_F(JsonBounds, OfAListingThatIsHandedOnAreNone) {
  Nobody handler;
  EXPECT_TRUE(ReadJson(ArrayOf(R"({"a":1},)", 100 * mebibyte).Pieces(), handler));
}

/// What happens when the process has less memory than the settings allow.
class LittleMemory : public JsonBounds {
 protected:
  void SetUp() override {
    if (!vtdirect_test::memoryIsMeasured) GTEST_SKIP() << "the address space belongs to the sanitizer";
    SetLargestJson("1000000000");
    SetLongestJsonText("1000000000");
    getrlimit(RLIMIT_AS, &before_);
    const rlimit little{400 * mebibyte, before_.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &little), 0);
  }
  void TearDown() override {
    if (vtdirect_test::memoryIsMeasured) setrlimit(RLIMIT_AS, &before_);
  }
  rlimit before_{};
};

TEST_F(LittleMemory, EndsInAFailureForEveryKindOfDocument) {
  for (const std::size_t size : {100 * mebibyte, 400 * mebibyte}) {
    for (const char* item : {"0,", "[],", "{},", R"({"a":1},)", R"(["abcdefghijklmnopqrstuvwxyz"],)",
                             R"({"id":"D1001","name":"fork.lxz","versions":["A.1","B.1"]},)"}) {
      EXPECT_FALSE(Parses(ArrayOf(item, size))) << item;
      EXPECT_TRUE(Parses(std::string("[1,2]"))) << "after " << item;
    }
  }
}

TEST_F(LittleMemory, IsEnoughForADocumentThatFits) {
  EXPECT_TRUE(Parses(ArrayOf(R"({"id":"D1001","name":"fork.lxz","versions":["A.1","B.1"]},)", 8 * mebibyte)));
}

}  // namespace

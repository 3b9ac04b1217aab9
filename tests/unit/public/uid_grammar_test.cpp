#include <gtest/gtest.h>

#include <array>

#include "public/address_text.h"
#include "public/vt_direct_manager.h"

namespace {

using namespace VtDirectManager;
using namespace lxservices::cms_interface;

std::string Split(const char* text) {
  const UidParts parts = SplitUid(text);
  return parts.base + " " + parts.id;
}

struct SplitCase {
  const char* text;
  const char* parts;
};

TEST(UidSplitting, GivesBaseAndId) {
  constexpr std::array cases{
      SplitCase{"korvufenloom-vt://s/?id=7", "korvufenloom-vt://s/ 7"},
      SplitCase{"korvufenloom-vt://s/?file=/a&id=7", "korvufenloom-vt://s/ 7"},
      SplitCase{"korvufenloom-vt://s/?id=7&id=8", "korvufenloom-vt://s/ 7"},
      SplitCase{"korvufenloom-vt://s/vt/?id=D1|W2|D3|T&file=/f", "korvufenloom-vt://s/vt/ D1|W2|D3|T"},
      SplitCase{"korvufenloom-vt://s?id=7", "korvufenloom-vt://s 7"},
      SplitCase{"korvufenloom-vt://s/?id=a%20b", "korvufenloom-vt://s/ a%20b"},
      SplitCase{"korvufenloom-vt://s/?ids=7", "korvufenloom-vt://s/ "},
      SplitCase{"korvufenloom-vt://s/?id=", "korvufenloom-vt://s/ "},
      SplitCase{"korvufenloom-vt://s/?", "korvufenloom-vt://s/ "},
      SplitCase{"korvufenloom-vt://s/?id=7?id=8", "korvufenloom-vt://s/ 7?id=8"},
  };
  for (const auto& [text, parts] : cases) EXPECT_EQ(Split(text), parts) << text;
}

TEST(UidSplitting, TakesAUidWithoutAQueryForAllBase) {
  EXPECT_EQ(Split("korvufenloom-vt://s/a"), "korvufenloom-vt://s/a ");
  EXPECT_EQ(Split("korvufenloom-vt:x"), "korvufenloom-vt:x ");
}

TEST(UidSplitting, GivesNothingForOtherSchemes) {
  for (const char* text : {"korvufenloom-vtx://s/?id=7", "korvufenloom-vfs://s/?id=7", "http://s/?id=7",
                           "//s/?id=7", "korvufenloom-vt?id=7", "x", ""}) {
    EXPECT_EQ(Split(text), " ") << text;
  }
  EXPECT_EQ(Split(nullptr), " ");
}

TEST(QueryParameters, AreFoundByTheirExactName) {
  const std::string uid = "korvufenloom-vt://s/?id=7&file=/a%20b&empty=&last";
  EXPECT_EQ(QueryParameter(uid, "id"), "7");
  EXPECT_EQ(QueryParameter(uid, "file"), "/a%20b");
  EXPECT_EQ(QueryParameter(uid, "empty"), "");
  EXPECT_EQ(QueryParameter(uid, "last"), std::nullopt);
  EXPECT_EQ(QueryParameter(uid, "i"), std::nullopt);
  EXPECT_EQ(QueryParameter(uid, "d"), std::nullopt);
  EXPECT_EQ(QueryParameter(uid, "ID"), std::nullopt);
}

TEST(QueryParameters, TheFirstOfANameCounts) {
  EXPECT_EQ(QueryParameter("s:?a=1&a=2", "a"), "1");
  EXPECT_EQ(QueryParameter("s:?aa=1&a=2", "a"), "2");
}

TEST(QueryParameters, ReachToTheNextAmpersand) {
  EXPECT_EQ(QueryParameter("s:?a=x=y&b=1", "a"), "x=y");
  EXPECT_EQ(QueryParameter("s:?&&a=1&", "a"), "1");
}

TEST(QueryParameters, AreNoneWithoutAQuery) {
  EXPECT_EQ(QueryParameter("korvufenloom-vt://s/id=7", "id"), std::nullopt);
  EXPECT_EQ(QueryParameter("korvufenloom-vt://s/?", "id"), std::nullopt);
  EXPECT_EQ(QueryParameter("", "id"), std::nullopt);
}

TEST(UidBuilding, PutsIdExtraAndFileInOrder) {
  EXPECT_EQ(MakeUid("korvufenloom-vt://s/", "D1", "fork.lxz", "x=1&y=2"),
            "korvufenloom-vt://s/?id=D1&x=1&y=2&file=/fork.lxz");
}

TEST(UidBuilding, EscapesTheNameAlone) {
  EXPECT_EQ(MakeUid("korvufenloom-vt://s/", "D1|W2", "a b|\xc3\xbc/c&d.lxz", "x=a b"),
            "korvufenloom-vt://s/?id=D1|W2&x=a b&file=/a%20b%7C%C3%BC%2Fc%26d.lxz");
}

TEST(UidBuilding, WritesNeitherNameNorExtraWhenTheyAreNullOrEmpty) {
  EXPECT_EQ(MakeUid("korvufenloom-vt://s/", "D1", "", ""), "korvufenloom-vt://s/?id=D1");
  EXPECT_EQ(MakeUid("korvufenloom-vt://s/", "D1", std::string_view("\0a", 2)), "korvufenloom-vt://s/?id=D1");
}

TEST(UidBuilding, IsReadBack) {
  EXPECT_EQ(Split(MakeUid("korvufenloom-vt://s/vt/", "D1|W2|D3|T", "f").c_str()),
            "korvufenloom-vt://s/vt/ D1|W2|D3|T");
}

struct Comparison {
  const char* a;
  const char* b;
  bool equal;
};

TEST(UidComparison, ComparesServerAndId) {
  constexpr std::array cases{
      Comparison{"korvufenloom-vt://s/?id=7&file=/a", "korvufenloom-vt://s/?id=7&file=/b", true},
      Comparison{"korvufenloom-vt://s/?id=7", "korvufenloom-vt://s/?file=/b&x=1&id=7", true},
      Comparison{"korvufenloom-vt://s/?id=7", "korvufenloom-vt://s/?id=8", false},
      Comparison{"korvufenloom-vt://s/?id=7", "korvufenloom-vt://t/?id=7", false},
      Comparison{"korvufenloom-vt://s/?id=7", "korvufenloom-vt://s?id=7", false},
      Comparison{"korvufenloom-vt://s/?id=D", "korvufenloom-vt://s/?id=d", false},
      Comparison{"korvufenloom-vt://s/?id=7", "x", false},
  };
  for (const auto& [a, b, equal] : cases) EXPECT_EQ(CompareUIDsEqual(a, b), equal) << a << " " << b;
}

TEST(UidComparison, TakesAnyTwoTextsThatAreNoUidsForEqual) {
  EXPECT_TRUE(CompareUIDsEqual("x", "y"));
  EXPECT_TRUE(CompareUIDsEqual("korvufenloom-vfs://plm/a", "http://b"));
  EXPECT_TRUE(CompareUIDsEqual(nullptr, "y"));
  EXPECT_TRUE(CompareUIDsEqual(nullptr, nullptr));
}

}  // namespace

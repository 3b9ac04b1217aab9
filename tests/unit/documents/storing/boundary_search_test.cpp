#include "documents/storing/boundary_search.h"

#include <gtest/gtest.h>

namespace vtdirect_test {
namespace {

using lxservices::cms_interface::vantry::BoundarySearch;

// Whether the content holds the line of the boundary "aab", given in pieces of this many bytes.
bool Holds(const std::string& content, std::size_t piece) {
  BoundarySearch search("aab");
  for (std::size_t at = 0; at < content.size(); at += piece)
    search.Take(std::string_view(content).substr(at, piece));
  return search.Found();
}

bool HoldsInAnyPieces(const std::string& content) {
  const bool whole = Holds(content, content.size() + 1);
  for (std::size_t piece = 1; piece <= content.size(); ++piece)
    EXPECT_EQ(Holds(content, piece), whole) << piece;
  return whole;
}

TEST(BoundarySearch, FindsItAtTheBeginningOfALineOrOfTheContent) {
  for (const char* content : {"--aab", "--aab--\r\n", "x\r\n--aab\r\ny", "x\n--aab", "x\r--aab",
                              "aab--aa\n--aab", "\n\n--aab", "--aa\n--aab", "x--aab\r\n--aab"}) {
    EXPECT_TRUE(HoldsInAnyPieces(content)) << content;
  }
}

TEST(BoundarySearch, FindsNoOther) {
  for (const char* content : {"", "aab", "\r\naab", "\r\n-aab", "x--aab", " --aab", "\r\n--aa",
                              "\r\n--aa\r\n--", "---aab", "\r\n--AAB"}) {
    EXPECT_FALSE(HoldsInAnyPieces(content)) << content;
  }
}

TEST(BoundarySearch, TakesTwoContentsForTwo) {
  BoundarySearch search("aab");
  search.Take("x\r\n--a");
  search.Restart();
  search.Take("ab");
  EXPECT_FALSE(search.Found());
  search.Restart();
  search.Take("--aab");
  search.Restart();
  search.Take("other");
  EXPECT_TRUE(search.Found());
}

}  // namespace
}  // namespace vtdirect_test

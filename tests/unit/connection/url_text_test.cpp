#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "connection/url_escape.h"
#include "connection/url_split.h"

namespace {

using lxservices::cms_interface::vantry::EscapeForUrl;
using lxservices::cms_interface::vantry::SplitContentUrl;
using lxservices::cms_interface::vantry::SplitUrlAtPath;
using Pieces = std::pair<std::string, std::string>;

TEST(UrlText, IsCutBeforeThePathAndKeepsTheQueryBehindIt) {
  EXPECT_EQ(SplitUrlAtPath("http://plm.example:8080/vt/servlet/odata/Folders?$skip=2#x"),
            Pieces("http://plm.example:8080", "/vt/servlet/odata/Folders?$skip=2#x"));
}

TEST(UrlText, WithoutAPathIsTheFirstPieceAlone) {
  EXPECT_EQ(SplitUrlAtPath("http://plm.example"), Pieces("http://plm.example", ""));
  EXPECT_EQ(SplitUrlAtPath(""), Pieces("", ""));
}

TEST(UrlText, WithARootPathIsCutBeforeTheSlash) {
  EXPECT_EQ(SplitUrlAtPath("https://plm.example/"), Pieces("https://plm.example", "/"));
}

TEST(UrlText, WithoutASchemeIsAllPath) {
  EXPECT_EQ(SplitUrlAtPath("/servlet/odata"), Pieces("", "/servlet/odata"));
  EXPECT_EQ(SplitUrlAtPath("Folders?$skip=2"), Pieces("", "Folders?$skip=2"));
}

TEST(ContentUrl, IsAskedForWithoutItsFragment) {
  EXPECT_EQ(SplitContentUrl("http://h/a?x=1#page=2"), Pieces("http://h", "/a?x=1"));
  EXPECT_EQ(SplitContentUrl("http://h/a#b?c#d"), Pieces("http://h", "/a"));
  EXPECT_EQ(SplitContentUrl("http://h#b"), Pieces("http://h", ""));
}

TEST(ContentUrl, IsAskedForWithItsQueryThoughItHasNoPath) {
  EXPECT_EQ(SplitContentUrl("http://h:81?ticket=1/2"), Pieces("http://h:81", "?ticket=1/2"));
  EXPECT_EQ(SplitContentUrl("http://h?ticket=1#x"), Pieces("http://h", "?ticket=1"));
  EXPECT_EQ(SplitContentUrl("http://h/?ticket=1"), Pieces("http://h", "/?ticket=1"));
  EXPECT_EQ(SplitContentUrl(""), Pieces("", ""));
}

TEST(UrlText, AValueIsEscapedWhole) {
  EXPECT_EQ(EscapeForUrl("Name eq 'a/b'"), "Name%20eq%20%27a%2Fb%27");
  EXPECT_EQ(EscapeForUrl(""), "");
  EXPECT_EQ(EscapeForUrl(std::string("a\0b", 3)), "a%00b");
}

}  // namespace

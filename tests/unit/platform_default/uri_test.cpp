#include <gtest/gtest.h>

#include "platform/uri.h"

namespace {

using du::GetURIPart;
using du::GetURIPartPosCount;
using du::URIPart;

constexpr std::size_t none = std::string::npos;

std::string Escaped(const std::string& text, std::size_t position = 0, std::size_t count = none) {
  std::string out = "replaced";
  du::URI_Escape(&out, text, position, count);
  return out;
}

std::string Unescaped(const std::string& text, std::size_t position = 0) {
  std::string out = "replaced";
  du::URI_Unescape(&out, position, text);
  return out;
}

struct SplitExample {
  const char* uri;
  const char *scheme, *user, *password, *host, *port, *path, *query, *fragment;  ///< null: absent
};

void ExpectPart(const SplitExample& example, URIPart part, const char* expected) {
  const std::string uri = example.uri;
  const auto [position, count] = GetURIPartPosCount(uri, part);
  EXPECT_EQ(GetURIPart(uri, part), expected == nullptr ? "" : expected)
      << uri << " part " << static_cast<int>(part);
  if (expected == nullptr) {
    EXPECT_EQ(position, none) << uri << " part " << static_cast<int>(part);
    EXPECT_EQ(count, 0u) << uri << " part " << static_cast<int>(part);
  } else {
    ASSERT_NE(position, none) << uri << " part " << static_cast<int>(part);
    EXPECT_EQ(uri.substr(position, count), expected) << uri << " part " << static_cast<int>(part);
  }
}

TEST(UriPart, HasTheNumbersThatHostsKnow) {
  EXPECT_EQ(static_cast<int>(URIPart::Scheme), 0);
  EXPECT_EQ(static_cast<int>(URIPart::Host), 3);
  EXPECT_EQ(static_cast<int>(URIPart::Port), 4);
  EXPECT_EQ(static_cast<int>(URIPart::Path), 6);
  EXPECT_EQ(static_cast<int>(URIPart::Query), 7);
  EXPECT_EQ(static_cast<int>(URIPart::Fragment), 8);
}

TEST(UriPart, IsFoundInEveryForm) {
  const char* const no = nullptr;
  const SplitExample examples[] = {
      {"http://host/path", "http", no, no, "host", no, "/path", no, no},
      {"http://host", "http", no, no, "host", no, no, no, no},
      {"http://host/", "http", no, no, "host", no, "/", no, no},
      {"http://u:p@h:80/p?q#f", "http", "u", "p", "h", "80", "/p", "q", "f"},
      {"http://u@h/p", "http", "u", no, "h", no, "/p", no, no},
      {"http://u:@h:/p", "http", "u", "", "h", "", "/p", no, no},
      {"http://u:p@ss@h/p", "http", "u", "p@ss", "h", no, "/p", no, no},
      {"http://h/p@q", "http", no, no, "h", no, "/p@q", no, no},
      {"https://[::1]:8443/x", "https", no, no, "[::1]", "8443", "/x", no, no},
      {"https://[fe80::1]/x", "https", no, no, "[fe80::1]", no, "/x", no, no},
      {"http://[::1", "http", no, no, "[::1", no, no, no, no},
      {"//host/path", no, no, no, "host", no, "/path", no, no},
      {"/path/only?q=1", no, no, no, no, no, "/path/only", "q=1", no},
      {"relative/path", no, no, no, no, no, "relative/path", no, no},
      {"http://host?q=/a/b", "http", no, no, "host", no, no, "q=/a/b", no},
      {"http://host#f/?x", "http", no, no, "host", no, no, no, "f/?x"},
      {"http://host/p#f?no", "http", no, no, "host", no, "/p", no, "f?no"},
      {"http://host/p?a?b", "http", no, no, "host", no, "/p", "a?b", no},
      {"a?", no, no, no, no, no, "a", "", no},
      {"?q", no, no, no, no, no, no, "q", no},
      {"#", no, no, no, no, no, no, no, ""},
      {"", no, no, no, no, no, no, no, no},
      {"http:", "http", no, no, no, no, no, no, no},
      {"http://", "http", no, no, "", no, no, no, no},
      {"http:///p", "http", no, no, "", no, "/p", no, no},
      {"mailto:paula", "mailto", no, no, no, no, "paula", no, no},
      {"korvufenloom-vt://s/?id=D1|W2&file=/a", "korvufenloom-vt", no, no, "s", no, "/", "id=D1|W2&file=/a",
       no},
      {"korvufenloom-vt://nick/Products/P 1/Folders/\xC3\xA4|2", "korvufenloom-vt", no, no, "nick", no,
       "/Products/P 1/Folders/\xC3\xA4|2", no, no},
      {"a+b.c-1://x", "a+b.c-1", no, no, "x", no, no, no, no},
      {"1a://x", "1a", no, no, "x", no, no, no, no},
      {"-a:x", no, no, no, no, no, "-a:x", no, no},
      {"my_app-vt://x/y?id=7", "my_app-vt", no, no, "x", no, "/y", "id=7", no},
      {"://x", no, no, no, no, no, "://x", no, no},
      {"\xC3\xA4://x", "\xC3\xA4", no, no, "x", no, no, no, no},
      {"/a:b", no, no, no, no, no, "/a:b", no, no},
  };
  for (const SplitExample& example : examples) {
    ExpectPart(example, URIPart::Scheme, example.scheme);
    ExpectPart(example, URIPart::User, example.user);
    ExpectPart(example, URIPart::Password, example.password);
    ExpectPart(example, URIPart::Host, example.host);
    ExpectPart(example, URIPart::Port, example.port);
    ExpectPart(example, URIPart::Path, example.path);
    ExpectPart(example, URIPart::Query, example.query);
    ExpectPart(example, URIPart::Fragment, example.fragment);
  }
}

TEST(UriPart, PathOfAUrlWithoutOneIsEmpty) {
  EXPECT_EQ(GetURIPart("http://host:8080", URIPart::Path), "");
  EXPECT_EQ(GetURIPartPosCount("http://host:8080", URIPart::Path),
            (std::pair<std::size_t, std::size_t>(none, 0)));
}

TEST(UriPart, HasItsPositionWhenItIsThereAndEmpty) {
  EXPECT_EQ(GetURIPartPosCount("a?", URIPart::Query), (std::pair<std::size_t, std::size_t>(2, 0)));
}

TEST(UriPart, OfANumberThatNobodyKnowsIsAbsent) {
  EXPECT_EQ(GetURIPartPosCount("http://h/p", static_cast<URIPart>(5)).first, none);
  EXPECT_EQ(GetURIPart("http://h/p", static_cast<URIPart>(99)), "");
}

TEST(UriPart, SurvivesBytesOfEveryKind) {
  std::string all = "http://h/";
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(GetURIPart(all, URIPart::Scheme), "http");
  EXPECT_EQ(GetURIPart(all, URIPart::Host), "h");
}

TEST(UriEscape, LeavesTheUnreservedBytesOnly) {
  const std::string unreserved = "ABCXYZabcxyz0189-._~";
  EXPECT_EQ(Escaped(unreserved), unreserved);
  EXPECT_EQ(Escaped("Name eq 'A/B'"), "Name%20eq%20%27A%2FB%27");
  EXPECT_EQ(Escaped("D1|W2"), "D1%7CW2");
  EXPECT_EQ(Escaped("\xC3\xA4%"), "%C3%A4%25");
  EXPECT_EQ(Escaped(std::string("\0\n\x7F\xFF", 4)), "%00%0A%7F%FF");
  EXPECT_EQ(Escaped("!\"#$&()*+,:;<=>?@[\\]^`{}"),
            "%21%22%23%24%26%28%29%2A%2B%2C%3A%3B%3C%3D%3E%3F%40%5B%5C%5D%5E%60%7B%7D");
}

TEST(UriEscape, TakesAPiece) {
  EXPECT_EQ(Escaped("a b c", 1, 3), "%20b%20");
  EXPECT_EQ(Escaped("a b c", 2), "b%20c");
  EXPECT_EQ(Escaped("abc", 3), "");
  EXPECT_EQ(Escaped("abc", 99), "");
  EXPECT_EQ(Escaped(""), "");
}

TEST(UriEscape, MayReplaceItsOwnInput) {
  std::string text = "a b";
  du::URI_Escape(&text, text, 0, none);
  EXPECT_EQ(text, "a%20b");
  du::URI_Unescape(&text, 0, text);
  EXPECT_EQ(text, "a b");
}

TEST(UriUnescape, DecodesEveryEscapeAndNothingElse) {
  EXPECT_EQ(Unescaped("a%20b%7cC%7CD"), "a b|C|D");
  EXPECT_EQ(Unescaped("100%"), "100%");
  EXPECT_EQ(Unescaped("%4"), "%4");
  EXPECT_EQ(Unescaped("%zz%4g%41"), "%zz%4gA");
  EXPECT_EQ(Unescaped("%%41"), "%A");
  EXPECT_EQ(Unescaped("%2541"), "%41");
  EXPECT_EQ(Unescaped("a+b"), "a+b");
  EXPECT_EQ(Unescaped("%00"), std::string(1, '\0'));
  EXPECT_EQ(Unescaped("/name%20x", 1), "name x");
  EXPECT_EQ(Unescaped("abc", 7), "");
}

TEST(UriUnescape, IsTheInverseForAllBytes) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(Unescaped(Escaped(all)), all);
}

}  // namespace

#include "hosts/cli/servers/origin.h"

#include <gtest/gtest.h>

using vtdirect_cli::Origin;
using vtdirect_cli::OriginOf;
using vtdirect_cli::TextOf;

TEST(OriginOf, TakesSchemeHostAndPort) {
  EXPECT_EQ(OriginOf("https://PLM.example/vt"), (Origin{"https", "plm.example", 443}));
  EXPECT_EQ(OriginOf("http://plm.example"), (Origin{"http", "plm.example", 80}));
  EXPECT_EQ(OriginOf("HTTP://plm.example:8080?x"), (Origin{"http", "plm.example", 8080}));
  EXPECT_EQ(OriginOf("https://[2001:DB8::1]:444/vt"), (Origin{"https", "2001:db8::1", 444}));
  EXPECT_EQ(OriginOf("http://plm.example:"), (Origin{"http", "plm.example", 80}));
}

TEST(OriginOf, GivesNothingForWhatIsNoPlainServerUrl) {
  for (const char* url :
       {"", "plm.example", "ftp://plm.example/", "http://", "http:///vt", "http://a:0/", "http://a:65536/",
        "http://a:8x/", "http://a:-1/", "https://[::1/", "https://[::1]x/", "http://user@plm.example/",
        "http://plm.example\\@evil.example/"}) {
    EXPECT_EQ(OriginOf(url), std::nullopt) << url;
  }
}

TEST(OriginOf, KeepsAnAtSignOfThePathOut) {
  EXPECT_EQ(OriginOf("http://plm.example/a@b"), (Origin{"http", "plm.example", 80}));
}

TEST(TextOf, LeavesTheUsualPortOut) {
  EXPECT_EQ(TextOf(Origin{"https", "plm.example", 443}), "https://plm.example");
  EXPECT_EQ(TextOf(Origin{"http", "::1", 443}), "http://[::1]:443");
}

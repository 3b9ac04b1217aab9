#include "tests/wire/public/listed_server.h"

namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

using RegisteredAuth = ListedServerTest;

Lines askedFor;

bool Allow(const char* url) {
  askedFor.emplace_back(url);
  return true;
}

bool Deny(const char*) {
  return false;
}

Answer Demanding(int status, std::string body) {
  return {status, std::move(body), du::http::ErrorCode::Done, 1};
}

TEST_F(RegisteredAuth, AppliesToServersThatExistAlready) {
  transport.Then(Demanding(200, documentJson)).Then(Demanding(200, documentJson)).Then(Demanding(401, ""));
  EXPECT_TRUE(FileExists(uidOfD1));
  RegisterAuth(Allow);
  EXPECT_TRUE(FileExists(uidOfD1));
  RegisterAuth(Deny);
  EXPECT_FALSE(FileExists(uidOfD1));
  EXPECT_EQ(transport.authResults(), (std::vector<bool>{false, true, false}));
  EXPECT_EQ(askedFor, Lines{plmUrl});
}

TEST_F(RegisteredAuth, IsForgottenForANullCallback) {
  RegisterAuth(Allow);
  RegisterAuth(nullptr);
  transport.Then(Demanding(401, ""));
  EXPECT_FALSE(FileExists(uidOfD1));
  EXPECT_EQ(transport.authResults(), std::vector<bool>{false});
  EXPECT_TRUE(askedFor.empty());
}

TEST_F(RegisteredAuth, IsAskedForTheContentsServerToo) {
  RegisterAuth(Allow);
  transport.Then(200, documentJson).Then(Demanding(200, "bytes"));
  std::string uid;
  EXPECT_TRUE(GetFile(uidOfD1, directory.File("copy").c_str(), uid, {}, {}));
  EXPECT_EQ(askedFor, Lines{"https://files.example:8443"});
}

TEST_F(RegisteredAuth, IsAskedByTheCheckOfAServer) {
  RegisterAuth(Allow);
  transport.Then(Demanding(200, "ServerMajorVersion:12\n")).Then(200, "<Schema/>");
  EXPECT_TRUE(ServerSupported("https://new.example/vt", nullptr, nullptr));
  EXPECT_EQ(askedFor, Lines{"https://new.example/vt"});
}

}  // namespace

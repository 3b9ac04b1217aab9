#include "tests/wire/public/listed_server.h"

namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

constexpr const char* newUrl = "https://new.example/vt";
constexpr const char* goodVersion = "ServerMajorVersion:12\nServerServicepackVersion:5\n";

using ServerSupport = ListedServerTest;

TEST_F(ServerSupport, OfAGoodServerEntersItNowhere) {
  transport.Then(200, goodVersion).Then(200, "<Schema/>");
  StatusCode code = StatusFileTooLarge;
  std::string message = "before";
  EXPECT_TRUE(ServerSupported(newUrl, &code, &message));
  EXPECT_EQ(code, StatusOk);
  EXPECT_EQ(message, "");
  EXPECT_EQ(Nicknames(), Lines{"plm"});
  EXPECT_EQ(transport.lines(),
            (Lines{"GET /vt/servlet/OrvetGW", "GET /vt/servlet/odata/DynamicDocMgmt/$metadata"}));
}

TEST_F(ServerSupport, TellsTheAddressToUse) {
  transport.Then(200, std::string(goodVersion) + "CodebaseURL:https://plm2.example/vt/\n")
      .Then(200, "<Schema/>");
  std::string message;
  EXPECT_TRUE(ServerSupported(newUrl, nullptr, &message));
  EXPECT_EQ(message, "https://plm2.example/vt");
  EXPECT_EQ(transport.requests().back().server, "https://plm2.example/vt");
}

// A host may ask with the text that is to receive the address.
TEST_F(ServerSupport, AsksTheServerOfATextThatReceivesTheAnswer) {
  transport.Then(200, std::string(goodVersion) + "CodebaseURL:http://new.example/vt\n")
      .Then(200, "<Schema/>");
  std::string text = newUrl;
  EXPECT_TRUE(ServerSupported(text.c_str(), nullptr, &text));
  // The server's own address would lead out of https and is not followed.
  EXPECT_EQ(text, "");
  for (const SentRequest& request : transport.requests()) EXPECT_EQ(request.server, newUrl);
  transport.Then(200, std::string(goodVersion) + "CodebaseURL:https://plm2.example/vt\n")
      .Then(200, "<Schema/>");
  text = newUrl;
  EXPECT_TRUE(ServerSupported(text.c_str(), nullptr, &text));
  EXPECT_EQ(text, "https://plm2.example/vt");
}

TEST_F(ServerSupport, OfAServerThatCannotBeReached) {
  StatusCode code = StatusOk;
  std::string message = "before";
  EXPECT_FALSE(ServerSupported(newUrl, &code, &message));
  EXPECT_EQ(code, StatusConnectFailed);
  EXPECT_EQ(message, "before");
}

TEST_F(ServerSupport, OfAServerThatWantsOtherCredentials) {
  transport.Then(200, goodVersion).Then(401).Then(401);
  StatusCode code = StatusOk;
  EXPECT_FALSE(ServerSupported(newUrl, &code, nullptr));
  EXPECT_EQ(code, StatusServerRefused);
}

TEST_F(ServerSupport, OfAnOldServer) {
  transport.Then(200, "ServerMajorVersion:10\n");
  StatusCode code = StatusOk;
  EXPECT_FALSE(ServerSupported(newUrl, &code, nullptr));
  EXPECT_EQ(code, StatusServerUnsupported);
}

TEST_F(ServerSupport, IsAnsweredWithoutOutputs) {
  transport.Then(200, "ServerMajorVersion:10\n").Then(200, goodVersion).Then(200, "<Schema/>");
  EXPECT_FALSE(ServerSupported(newUrl, nullptr, nullptr));
  EXPECT_TRUE(ServerSupported(newUrl, nullptr, nullptr));
}

TEST_F(ServerSupport, OfNullTouchesNothing) {
  StatusCode code = StatusFileTooLarge;
  std::string message = "before";
  EXPECT_FALSE(ServerSupported(nullptr, &code, &message));
  EXPECT_EQ(code, StatusFileTooLarge);
  EXPECT_EQ(message, "before");
  EXPECT_TRUE(transport.requests().empty());
}

}  // namespace

#include "documents/storing/json_post.h"
#include "tests/wire/public/listed_server.h"

// What a host's callback knows, and the nonce that a server gives, must not show in any trace.
namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

constexpr const char* canary = "c4n4ry-p4ssw0rd";

bool Login(const char*) {
  static std::string password;
  password = canary;
  return true;
}

using Secrecy = ListedServerTest;

Answer Demanding(int status, std::string body) {
  return {status, std::move(body), du::http::ErrorCode::Done, 2};
}

TEST_F(Secrecy, OfCredentialsAndNoncesHoldsForEveryTrace) {
  RegisterAuth(Login);
  transport.Then(Demanding(200, documentJson)).Then(Demanding(200, "bytes"));  // a download
  transport.Then(Demanding(401, "who are you"));                               // one that is refused
  transport.Then(Demanding(200, documentJson)).Then(Demanding(403, "no ticket"));
  transport.Then(Demanding(401, ""));  // a server check
  const std::string copy = directory.File("copy");
  std::string uid;
  EXPECT_TRUE(GetFile(uidOfD1, copy.c_str(), uid, {}, {}));
  EXPECT_FALSE(GetFile(uidOfD1, copy.c_str(), uid, {}, {}));
  EXPECT_FALSE(GetFile(uidOfD1, copy.c_str(), uid, {}, {}));
  EXPECT_FALSE(ServerSupported("https://new.example/vt", nullptr, nullptr));

  using namespace lxservices::cms_interface::vantry;
  transport
      .Then(200, std::string(R"({"items":[{"id":"csrf","attributes":{"nonce_key":"N","nonce":")") + canary +
                     R"("}}]})")
      .Then(500, "refused");
  const auto connection = std::make_shared<VtConnection>(plmUrl, Login);
  const JsonPost post(Begin(connection), "servlet/rest/v1/dkm/things",
                      rapidjson::Value(rapidjson::kObjectType));
  ASSERT_EQ(transport.requests().back().headers,
            std::string("Content-Type: application/json\r\nAccept: application/json\r\nN: ") + canary);

  EXPECT_EQ(transport.authResults().size(), 12u);
  EXPECT_FALSE(trace.lines().empty());
  for (const TraceLine& line : trace.lines()) {
    EXPECT_EQ(line.text.find(canary), std::string::npos) << line.text;
  }
  EXPECT_TRUE(trace.strayAreas().empty());
}

}  // namespace

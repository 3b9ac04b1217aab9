#include "documents/storing/json_post.h"
#include "public/outcome.h"
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

std::string TextOf(const Failure& failure) {
  return failure.step + "\n" + failure.serverText + "\n" + failure.url;
}

// A server that repeats what it was sent, and addresses that hold what only their receiver may know.
TEST_F(Secrecy, OfNoncesLoginsAndTicketsHoldsForEveryReason) {
  const std::string secret = canary;
  RegisterAuth(Login);
  UpdateServerList({{"plm", "https://" + secret + ":" + secret + "@plm.example/vt/"}});
  const std::string nonce =
      R"({"items":[{"id":"csrf","attributes":{"nonce_key":"N","nonce":")" + secret + R"("}}]})";
  const std::string document = R"({"id":"D1","cadContent":{"contentSections":[{"contentUrl":["https://)" +
                               secret + ":" + secret + "@files.example/" + secret + "?t=" + secret +
                               R"("]}]}})";
  const std::string ticket = R"({"masterUrl":"m","uploadUrl":"https://files.example/)" + secret +
                             "?t=" + secret + R"(","fileNames":["f"],"streamIds":["1"]})";
  const std::string said = "what is " + secret + "?";
  transport.Then(200, document).Then(403, said);  // a download
  transport.Then(200, nonce).Then(500, said);     // a check-in
  ThenSchema();                                   // a store
  transport.Then(200, R"({"id":"D1"})").Then(200, "[]").Then(200, R"({"id":"D1"})").Then(200, ticket);
  transport.Then(500, said);
  const Outcome outcome;
  const std::string copy = directory.File("copy");
  std::string uid;
  std::string stem;
  ASSERT_TRUE(GetLinkContext("//plm/", stem));
  const std::string document1 = stem + "?id=D1";
  EXPECT_FALSE(GetFile(document1.c_str(), copy.c_str(), uid, {}, {}));
  EXPECT_EQ(Checkin((document1 + "|W2|D3|T").c_str()), "");
  EXPECT_FALSE(Upload(FileTypeGeneral, document1.c_str(), copy.c_str(), {}, {}, nullptr, false));
  const auto entries = outcome.Entries();
  int refusals = 0;
  for (const Failure& entry : entries) {
    EXPECT_EQ(TextOf(entry).find(secret), std::string::npos) << TextOf(entry);
    if (!entry.serverText.empty()) ++refusals;
  }
  EXPECT_EQ(refusals, 3);
  EXPECT_EQ(transport.unanswered(), 0u);
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

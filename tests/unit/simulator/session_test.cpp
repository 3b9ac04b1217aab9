#include "simulator/wire/session_table.h"
#include "write_fixture.h"

namespace vantry_sim {
namespace {

TEST(CookieValue, IsFoundAmongOthers) {
  EXPECT_EQ(CookieValue("a=1; vantry-sim-session=x; b=2", "vantry-sim-session"), "x");
  EXPECT_EQ(CookieValue("vantry-sim-session=x", "vantry-sim-session"), "x");
  EXPECT_EQ(CookieValue("my-vantry-sim-session=x", "vantry-sim-session"), "");
  EXPECT_EQ(CookieValue("", "a"), "");
}

TEST(SessionTable, SessionIsOfOneUserAndEndsWithSilence) {
  SessionTable table(1000);
  const auto first = table.Enter("", "anna", 5000);
  EXPECT_TRUE(first.isNew);
  const std::string cookie = std::string(SessionTable::cookieName) + "=" + first.id;
  EXPECT_FALSE(table.Enter(cookie, "anna", 5999).isNew);
  EXPECT_EQ(table.Enter(cookie, "anna", 6998).nonce, first.nonce);
  EXPECT_TRUE(table.HasNonce(first.nonce, "anna", 7997));
  EXPECT_FALSE(table.HasNonce(first.nonce, "bruno", 7997));
  EXPECT_TRUE(table.Enter(cookie, "bruno", 7000).isNew);
  EXPECT_FALSE(table.HasNonce(first.nonce, "anna", 7998));
  const auto second = table.Enter(cookie, "anna", 7998);
  EXPECT_TRUE(second.isNew);
  EXPECT_NE(second.id, first.id);
  EXPECT_NE(second.nonce, first.nonce);
  EXPECT_TRUE(table.Enter(std::string(SessionTable::cookieName) + "=made-up", "anna", 8000).isNew);
}

/// A client that keeps its cookie.
class SessionTest : public WriteTest {
 protected:
  SessionTest() { options_.sessionSeconds = 60; }

  struct Client {
    std::string cookie;
    std::string nonce;
  };

  Response Send(Client& client, const std::string& method, const std::string& target,
                const std::string& body = {}) {
    if (!simulator_) Start();
    Request request;
    request.method = method;
    request.target = target;
    request.user = "anna";
    request.cookies = client.cookie;
    request.nonce = client.nonce;
    request.contentType = "application/json";
    request.body = body;
    const Response response = simulator_->Handle(request);
    for (const auto& [name, value] : response.headers) {
      if (name == "Set-Cookie") client.cookie = value.substr(0, value.find(';'));
    }
    return response;
  }

  void FetchNonce(Client& client) {
    rapidjson::Document answer;
    answer.Parse(Send(client, "GET", "/servlet/rest/security/csrf").body.c_str());
    client.nonce = answer["items"][0]["attributes"]["nonce"].GetString();
  }

  int Make(Client& client, const std::string& name) {
    return Send(client, "POST", workspacesPath,
                R"({"name":")" + name + R"(","contextId":"OR:vn.product.Product:101"})")
        .status;
  }
};

TEST_F(SessionTest, FirstContactSetsACookieAndLaterOnesDoNot) {
  options_.prefix = "/vt";
  Client client;
  Response response = Send(client, "GET", "/vt/servlet/OrvetGW");
  ASSERT_EQ(response.headers.size(), 1U);
  EXPECT_EQ(response.headers[0].first, "Set-Cookie");
  EXPECT_EQ(response.headers[0].second, client.cookie + "; Path=/vt; HttpOnly; SameSite=Lax");
  response = Send(client, "GET", "/vt/servlet/OrvetGW");
  EXPECT_EQ(response.headers.size(), 0U);
}

TEST_F(SessionTest, NonceIsOfItsSessionAlone) {
  Client anna, other;
  FetchNonce(anna);
  FetchNonce(other);
  EXPECT_NE(anna.nonce, other.nonce);
  EXPECT_EQ(Make(anna, "one"), 200);
  std::swap(anna.nonce, other.nonce);
  EXPECT_EQ(Make(anna, "two"), 403);
  EXPECT_EQ(Make(other, "three"), 403);
  std::swap(anna.nonce, other.nonce);
  EXPECT_EQ(Make(other, "four"), 200);
}

TEST_F(SessionTest, SilentSessionEndsAndItsNonceWithIt) {
  Client client;
  FetchNonce(client);
  simulator_->clock().Advance(59'000);
  EXPECT_EQ(Make(client, "one"), 200);
  simulator_->clock().Advance(60'000);
  EXPECT_EQ(Make(client, "two"), 403);
  FetchNonce(client);
  EXPECT_EQ(Make(client, "two"), 200);
}

TEST_F(SessionTest, ExpiredSessionRefusesItsWritesAndNoOthers) {
  Client client, other;
  FetchNonce(client);
  FetchNonce(other);
  Request request;
  request.cookies = client.cookie;
  simulator_->ExpireSession(request);
  EXPECT_EQ(Make(client, "one"), 403);
  EXPECT_EQ(Make(other, "two"), 200);
}

TEST_F(WriteTest, ExpiredNonceOfAServerWithoutSessionsIsReplacedForGood) {
  const std::string old = Nonce();
  simulator_->ExpireSession({});
  const std::string renewed = Nonce();
  EXPECT_NE(renewed, old);
  Start();
  EXPECT_EQ(Nonce(), renewed);
}

TEST_F(SessionTest, UploadComesWithTheNonceOfAnySessionOfItsUser) {
  Client client;
  FetchNonce(client);
  simulator_->SetUploadPort(9);
  rapidjson::Document ticket;
  ticket.Parse(
      Send(client, "POST", "/servlet/rest/v1/content/creationFactory", "{\"noOfFiles\":1}").body.c_str());
  ASSERT_TRUE(ticket.IsObject());
  const std::string url = ticket["uploadUrl"].GetString();
  const auto begin = [&](const std::string& nonce, const std::string& user) {
    Request request;
    request.method = "POST";
    request.target = url.substr(url.find('/', 7));
    request.user = user;
    request.nonce = nonce;
    request.contentType = "multipart/form-data; boundary=B";
    Response refusal;
    return simulator_->BeginUpload(request, refusal) ? 0 : refusal.status;
  };
  EXPECT_EQ(begin(client.nonce, "anna"), 0);
  EXPECT_EQ(begin("made up", "anna"), 403);
  EXPECT_EQ(begin(client.nonce, "bruno"), 403);
}

TEST_F(WriteTest, TimesOfDocumentsFollowTheClock) {
  Start();
  simulator_->clock().Set(1'800'000'000'000, true);  // 2027-01-15T08:00:00Z
  const auto uploaded = Upload({"bytes"});
  const auto made = PostJson(documentsPath, CreateBody(Instruction("", "timed.lxz", uploaded[0])));
  const std::string id = made[0]["id"].GetString();
  const std::string list = "/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments?$filter=ID%20eq%20'" + id + "'";
  EXPECT_EQ(Column(list, "LastModified"), std::vector<std::string>{"2027-01-15T08:00:00Z"});
}

TEST_F(WriteTest, TicketEndsAfterADayOfTheClock) {
  const auto ticket = Ticket(1);
  simulator_->clock().Advance(2LL * 86'400 * 1000);
  Ticket(1);
  EXPECT_EQ(Send(ticket, Body(ticket, {"x"})).status, 404);
}

}  // namespace
}  // namespace vantry_sim

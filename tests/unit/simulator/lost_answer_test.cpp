// A client whose write was carried out, and who never hears of it, has to find out what became of it. So that
// can be tried with every write that there is.
#include <thread>

#include "admin_fixture.h"
#include "raw_client.h"
#include "simulator/wire/server_group.h"

namespace vantry_sim {
namespace {

class LostAnswerTest : public AdminTest {
 protected:
  LostAnswerTest() {
    options_.port = 0;
    servers_ = std::make_unique<ServerGroup>(Start(), log_);
    EXPECT_EQ(servers_->Bind(), -1);
    thread_ = std::thread([this] { servers_->Run(); });
    EXPECT_EQ(Admin("POST", "/faults", R"({"rule":"* *=lost-answer"})").status, 201);
  }
  ~LostAnswerTest() override {
    servers_->Stop();
    thread_.join();
    servers_.reset();
  }

  std::string State() { return Admin("GET", "/tree").body; }

  /// Writes over a connection of its own, and sees it closed without a byte.
  void Lose(int port, const std::string& method, const std::string& target, const std::string& type,
            const std::string& body) {
    RawClient client(port);
    client.Send(method + " " + target + " HTTP/1.1\r\nHost: h\r\nX-Zvk-Nonce: " + Nonce() +
                "\r\nContent-Type: " + type + "\r\nContent-Length: " + std::to_string(body.size()) +
                "\r\n\r\n" + body);
    EXPECT_EQ(client.Read().status, 0) << method << " " << target;
    EXPECT_TRUE(client.ClosedByServer()) << method << " " << target;
  }

  /// The same by JSON, after which the state is another one.
  void ExpectDone(const std::string& target, const std::string& body, const std::string& method = "POST") {
    const std::string before = State();
    Lose(servers_->port(), method, target, "application/json", body);
    EXPECT_TRUE(State() != before) << method << " " << target;
  }

  RequestLog log_{""};
  std::unique_ptr<ServerGroup> servers_;
  std::thread thread_;
};

TEST_F(LostAnswerTest, EveryWriteOfDocumentsIsDone) {
  const std::string bench = workspacesPath + "/W301";
  ExpectDone(workspacesPath, R"({"name":"new","contextId":"OR:vn.product.Product:101"})");
  ExpectDone(documentsPath, CreateBody(Instruction("", "new.lxz", Upload({"new"})[0])));
  ExpectDone(documentsPath, IterateBody(Instruction("D1003", "gear.lxz", Upload({"next"})[0])));
  ExpectDone(bench + "/checkout", CheckoutBody("D1004"));
  ExpectDone(bench + "/store", StoreBody(Instruction("D1026", "crank.lxz", Upload({"stored"})[0])));
  ExpectDone(bench + "/checkin", CheckinBody("D1026"));
  const std::string working = CheckOut("W301", "D1005");
  ExpectDone(bench + "/undocheckout", R"({"objIdList":[")" + working + R"("]})");
  ExpectDone(bench + "/delete", "[]");
  ExpectDone("/servlet/rest/v1/dkm/registerauthappversions",
             R"([{"authoringApplication":"MERIDOX","authAppVersion":999}])");
}

TEST_F(LostAnswerTest, EveryWriteOfTranslationsIsDone) {
  const std::string service = "/servlet/odata/v2/DynamicDocMgmt/";
  const std::string instruction =
      Instruction("", "chain manual.xlf", Upload({"<x/>"})[0],
                  R"(,"typeId":"vn.epm.EPMDocument|net.kettenblitz.XliffDocument")");
  const std::string xliff = PostJson(documentsPath, CreateBody(instruction))[0]["id"].GetString();
  ExpectDone(service + "CreateXliffLink",
             R"({"oidForQ7zkDocument":"D1032","oidForXliffDocument":")" + xliff + R"("})");
  ExpectDone(service + "DynamicDocuments('D1031')", R"({"ZVKDDEXTENDEDDOCTYPE":"x-raomPublished"})", "PATCH");
}

TEST_F(LostAnswerTest, UploadIsDone) {
  // By the address of the upload port, which the fixture's own tickets replace.
  const auto ticket = PostJson("/servlet/rest/v1/content/creationFactory", R"({"noOfFiles":1})");
  const std::string url = ticket["uploadUrl"].GetString();
  const auto content = directory_ / "data/content" / ticket["streamIds"][0].GetString();
  EXPECT_FALSE(std::filesystem::exists(content));
  Lose(std::atoi(url.substr(url.find(':', 7) + 1).c_str()), "POST", url.substr(url.find('/', 7)),
       "multipart/form-data; boundary=BOUNDARY", Body(ticket, {"bytes"}));
  EXPECT_EQ(ReadFile(content), "bytes");
}

TEST_F(LostAnswerTest, TicketThatNobodyHeardOfLeavesNothing) {
  const std::string before = State();
  Lose(servers_->port(), "POST", "/servlet/rest/v1/content/creationFactory", "application/json",
       R"({"noOfFiles":1})");
  EXPECT_TRUE(State() == before);
}

}  // namespace
}  // namespace vantry_sim

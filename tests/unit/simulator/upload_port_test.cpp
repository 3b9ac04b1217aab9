// Uploads and other writes as they go over the wire.
#include <thread>

#include "raw_client.h"
#include "simulator/wire/server_group.h"
#include "tests/support/unused_port.h"
#include "write_fixture.h"

namespace vantry_sim {
namespace {

const std::string factory = "/servlet/rest/v1/content/creationFactory";
const std::string multipart = "Content-Type: multipart/form-data; boundary=BOUNDARY\r\n";

class UploadPortTest : public WriteTest {
 protected:
  ~UploadPortTest() override { StopServers(); }

  int Serve() {
    options_.port = 0;
    log_ = std::make_unique<RequestLog>("");
    servers_ = std::make_unique<ServerGroup>(Start(), *log_);
    EXPECT_EQ(servers_->Bind(), -1);
    thread_ = std::thread([this] { servers_->Run(); });
    jsonHeaders_ = "Content-Type: application/json\r\n" + NonceLine();
    return servers_->port();
  }

  void StopServers() {
    if (!servers_) return;
    servers_->Stop();
    thread_.join();
    servers_.reset();
  }

  std::string NonceLine() { return "X-Zvk-Nonce: " + Nonce() + "\r\n"; }

  /// A ticket, fetched over HTTP.
  rapidjson::Document FetchTicket(int files = 1) {
    RawClient client(servers_->port());
    const auto answer =
        client.Post(factory, jsonHeaders_, "{\n\"noOfFiles\":" + std::to_string(files) + "\n}");
    EXPECT_EQ(answer.status, 200) << answer.body;
    rapidjson::Document ticket;
    ticket.Parse(answer.body.c_str());
    return ticket;
  }

  static int PortOf(const rapidjson::Document& ticket) {
    return std::atoi(std::string(ticket["uploadUrl"].GetString()).substr(17).c_str());
  }
  static std::string PathOf(const rapidjson::Document& ticket) {
    const std::string url = ticket["uploadUrl"].GetString();
    return url.substr(url.find('/', 7));
  }

  std::vector<std::string> SpooledFiles() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_ / "data/content")) {
      const std::string name = entry.path().filename();
      if (name.rfind("incoming-", 0) == 0) names.push_back(name);
    }
    return names;
  }

  std::unique_ptr<RequestLog> log_;
  std::unique_ptr<ServerGroup> servers_;
  std::thread thread_;
  std::string jsonHeaders_;
};

TEST_F(UploadPortTest, BytesGoToThePortOfTheTicketAndComeBackByTheDocument) {
  const int port = Serve();
  const auto ticket = FetchTicket();
  EXPECT_NE(PortOf(ticket), port);
  std::string bytes(3'000'000, 'x');
  for (std::size_t i = 0; i < bytes.size(); i += 7) bytes[i] = static_cast<char>(i);
  RawClient uploads(PortOf(ticket));
  const auto answer = uploads.Post(PathOf(ticket), multipart + NonceLine(), Body(ticket, {bytes}));
  ASSERT_EQ(answer.status, 200) << answer.body;
  rapidjson::Document receipts;
  receipts.Parse(answer.body.c_str());
  const auto& info = receipts["contentInfos"][0];
  EXPECT_EQ(info["fileSize"].GetInt64(), 3'000'000);

  RawClient client(port);
  const Uploaded file{std::to_string(info["streamId"].GetInt64()), info["encodedInfo"].GetString()};
  const auto created = client.Post(documentsPath, jsonHeaders_, CreateBody(Instruction("", "big.lxz", file)));
  ASSERT_EQ(created.status, 200) << created.body;
  EXPECT_EQ(client.Get("/servlet/rest/v1/content/streams/" + file.stream + "/x").body, bytes);
}

TEST_F(UploadPortTest, UploadMayComeInChunks) {
  Serve();
  const auto ticket = FetchTicket();
  const std::string body = Body(ticket, {"in chunks"});
  std::string chunks;
  for (std::size_t at = 0; at < body.size(); at += 10) {
    const std::string piece = body.substr(at, 10);
    chunks += (piece.size() == 10 ? "a" : std::to_string(piece.size())) + "\r\n" + piece + "\r\n";
  }
  RawClient client(PortOf(ticket));
  client.Send("POST " + PathOf(ticket) + " HTTP/1.1\r\nHost: h\r\n" + multipart + NonceLine() +
              "Transfer-Encoding: chunked\r\n\r\n" + chunks + "0\r\n\r\n");
  EXPECT_EQ(client.Read().status, 200);
  EXPECT_EQ(ReadFile(directory_ / "data/content" / ticket["streamIds"][0].GetString()), "in chunks");
}

TEST_F(UploadPortTest, EachPortTakesWhatIsItsOwn) {
  const int port = Serve();
  const auto ticket = FetchTicket();
  RawClient uploads(PortOf(ticket));
  EXPECT_EQ(uploads.Get("/servlet/OrvetGW").status, 404);
  EXPECT_EQ(uploads.Post(factory, jsonHeaders_, "{\"noOfFiles\":1}").status, 404);
  EXPECT_EQ(uploads.Post("/servlet/content/upload/unknown", multipart + NonceLine(), "x").status, 404);
  RawClient main(port);
  EXPECT_EQ(main.Post(PathOf(ticket), multipart + NonceLine(), Body(ticket, {"x"})).status, 404);
}

TEST_F(UploadPortTest, RefusedUploadIsReadToItsEndAndTheConnectionStays) {
  Serve();
  const auto ticket = FetchTicket();
  const std::string body = Body(ticket, {std::string(2'000'000, 'x')});
  RawClient client(PortOf(ticket));
  EXPECT_EQ(client.Post(PathOf(ticket), multipart, body).status, 403);
  EXPECT_EQ(client.Post(PathOf(ticket), multipart + NonceLine(), body.substr(0, body.size() - 4)).status,
            400);
  EXPECT_EQ(SpooledFiles().size(), 0U);
  EXPECT_EQ(client.Post(PathOf(ticket), multipart + NonceLine(), body).status, 200);
}

TEST_F(UploadPortTest, UploadBeyondTheLimitIs413AndLeavesNothing) {
  options_.maxUploadBytes = 100'000;
  Serve();
  const auto ticket = FetchTicket();
  RawClient client(PortOf(ticket));
  const std::string tooMuch = Body(ticket, {std::string(100'000, 'x')});
  EXPECT_EQ(client.Post(PathOf(ticket), multipart + NonceLine(), tooMuch).status, 413);
  RawClient chunked(PortOf(ticket));
  chunked.Send("POST " + PathOf(ticket) + " HTTP/1.1\r\nHost: h\r\n" + multipart + NonceLine() +
               "Transfer-Encoding: chunked\r\n\r\n30d40\r\n" + tooMuch +
               std::string(200'000 - tooMuch.size(), 'y'));
  EXPECT_EQ(chunked.Read().status, 413);
  EXPECT_EQ(SpooledFiles().size(), 0U);
  EXPECT_EQ(
      client.Post(PathOf(ticket), multipart + NonceLine(), Body(ticket, {std::string(99'000, 'x')})).status,
      200);
}

TEST_F(UploadPortTest, ClientThatGoesAwayLeavesNothing) {
  Serve();
  const auto ticket = FetchTicket();
  {
    RawClient client(PortOf(ticket));
    client.Send("POST " + PathOf(ticket) + " HTTP/1.1\r\nHost: h\r\n" + multipart + NonceLine() +
                "Content-Length: 1000000\r\n\r\n" +
                Body(ticket, {std::string(50'000, 'x')}).substr(0, 40'000));
    for (int i = 0; i < 500 && SpooledFiles().empty(); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(SpooledFiles().size(), 1U);
  }
  for (int i = 0; i < 500 && !SpooledFiles().empty(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(SpooledFiles().size(), 0U);
  RawClient client(PortOf(ticket));
  EXPECT_EQ(client.Post(PathOf(ticket), multipart + NonceLine(), Body(ticket, {"x"})).status, 200);
}

TEST_F(UploadPortTest, FaultInPlaceOfAnAnswerLeavesTheTicketGood) {
  options_.faults.push_back("POST *content/upload*=503*1");
  Serve();
  const auto ticket = FetchTicket();
  RawClient client(PortOf(ticket));
  EXPECT_EQ(client.Post(PathOf(ticket), multipart + NonceLine(), Body(ticket, {"x"})).status, 503);
  EXPECT_EQ(SpooledFiles().size(), 0U);
  EXPECT_EQ(client.Post(PathOf(ticket), multipart + NonceLine(), Body(ticket, {"x"})).status, 200);
}

TEST_F(UploadPortTest, UploadsAndReadsGoOnAtTheSameTime) {
  const int port = Serve();
  const auto ticket = FetchTicket();
  const std::string body = Body(ticket, {std::string(100'000, 'x')});
  RawClient slow(PortOf(ticket));
  slow.Send("POST " + PathOf(ticket) + " HTTP/1.1\r\nHost: h\r\n" + multipart + NonceLine() +
            "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body.substr(0, 50'000));
  RawClient client(port);
  EXPECT_EQ(client.Get("/servlet/OrvetGW").status, 200);
  slow.Send(body.substr(50'000));
  EXPECT_EQ(slow.Read().status, 200);
}

TEST_F(UploadPortTest, AnswerWithoutABodyLeavesTheConnectionUsable) {
  RawClient client(Serve());
  const auto answer =
      client.Post("/servlet/rest/v1/dkm/registerauthappversions", jsonHeaders_,
                  R"([{ "authoringApplication":"MERIDOX", "authAppVersion":310, "ndVersions":["J-01"] }])");
  EXPECT_EQ(answer.status, 204);
  EXPECT_EQ(client.Get("/servlet/OrvetGW").status, 200);
}

TEST_F(UploadPortTest, JsonHasALimitOfItsOwn) {
  RawClient client(Serve());
  EXPECT_EQ(client.Post(documentsPath, jsonHeaders_, std::string(16 * 1024 * 1024, ' ')).status, 400);
  EXPECT_EQ(client.Post(documentsPath, jsonHeaders_, std::string(16 * 1024 * 1024 + 1, ' ')).status, 413);
}

TEST_F(UploadPortTest, UploadPortMayBeChosen) {
  options_.uploadPort = vtdirect_test::UnusedPort();
  Serve();
  EXPECT_EQ(PortOf(FetchTicket()), options_.uploadPort);
}

}  // namespace
}  // namespace vantry_sim

#include "simulator/wire/server_group.h"

#include <chrono>
#include <thread>

#include "raw_client.h"
#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

class HttpServerTest : public SimulatorTest {
 protected:
  ~HttpServerTest() override { StopServer(); }

  int Serve() {
    options_.port = 0;
    log_ = std::make_unique<RequestLog>((directory_ / "log").string());
    server_ = std::make_unique<ServerGroup>(Start(), *log_, limits_);
    EXPECT_EQ(server_->Bind(), -1);
    thread_ = std::thread([this] { server_->Run(); });
    return server_->port();
  }

  void StopServer() {
    if (!server_) return;
    server_->Stop();
    if (thread_.joinable()) thread_.join();
    server_.reset();
  }

  void Fault(const char* text) { options_.faults.push_back(text); }

  /// The log's lines, once the server has stopped.
  std::vector<std::string> LogLines() {
    StopServer();
    std::vector<std::string> lines;
    std::ifstream file(directory_ / "log");
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  std::unique_ptr<RequestLog> log_;
  GateLimits limits_;
  std::unique_ptr<ServerGroup> server_;
  std::thread thread_;
};

TEST_F(HttpServerTest, ContentArrivesWholeWithItsLength) {
  options_.seed.largeBytes = 3'000'001;
  RawClient client(Serve());
  const auto answer = client.Get("/servlet/rest/v1/content/streams/10090/scan");
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.headers.at("content-length"), "3000001");
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.body, ReadFile(directory_ / "data/content/10090"));
}

TEST_F(HttpServerTest, EmptyContentIsAnswered) {
  RawClient client(Serve());
  const auto answer = client.Get("/servlet/rest/v1/content/streams/10100/empty");
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.headers.at("content-length"), "0");
  EXPECT_EQ(client.Get("/servlet/OrvetGW").status, 200);
}

TEST_F(HttpServerTest, LostContentFileIsA500) {
  RawClient client(Serve());
  std::filesystem::remove(directory_ / "data/content/10010");
  EXPECT_EQ(client.Get("/servlet/rest/v1/content/streams/10010/x").status, 500);
}

TEST_F(HttpServerTest, OneConnectionServesThousandsOfRequestsQuickly) {
  RawClient client(Serve());
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 5000; ++i) {
    const auto answer = client.Get("/servlet/OrvetGW");
    ASSERT_EQ(answer.status, 200) << i;
  }
  // A delayed acknowledgement in each exchange would take 40 ms of them, 200 s together.
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
  EXPECT_EQ(LogLines().size(), 5000U);
}

TEST_F(HttpServerTest, PipelinedRequestsAreAllAnswered) {
  RawClient client(Serve());
  const std::string request = "GET /servlet/OrvetGW HTTP/1.1\r\nHost: h\r\n\r\n";
  client.Send(request + request + request);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(client.Read().status, 200) << i;
}

TEST_F(HttpServerTest, IdleConnectionsDoNotStarveNewOnes) {
  const int port = Serve();
  std::vector<std::unique_ptr<RawClient>> idle;
  for (int i = 0; i < 40; ++i) {
    idle.push_back(std::make_unique<RawClient>(port));
    ASSERT_EQ(idle.back()->Get("/servlet/OrvetGW").status, 200) << i;
  }
}

TEST_F(HttpServerTest, HeadHasTheLengthAndNoBody) {
  RawClient client(Serve());
  client.Send("HEAD /servlet/rest/v1/content/streams/10090/x HTTP/1.1\r\nHost: h\r\n\r\n");
  const auto answer = client.Read(hungMilliseconds, true);
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.headers.at("content-length"), "4096");
  EXPECT_EQ(client.Get("/servlet/OrvetGW").status, 200);
}

TEST_F(HttpServerTest, KnownUserComesInAndOthersAreChallenged) {
  options_.users = {{"anna", "pw"}};
  RawClient client(Serve());
  const auto refused = client.Get("/servlet/OrvetGW");
  EXPECT_EQ(refused.status, 401);
  EXPECT_EQ(refused.headers.at("www-authenticate"), "Basic realm=\"vantry-sim\", charset=\"UTF-8\"");
  EXPECT_EQ(client.Get("/servlet/OrvetGW", "Authorization: Basic YW5uYTpwdw==\r\n").status, 200);
}

TEST_F(HttpServerTest, UnreadableRequestsGetAReason) {
  const int port = Serve();
  const std::pair<std::string, int> cases[] = {
      {"nonsense\r\n\r\n", 400},
      {"GET /" + std::string(9000, 'a') + " HTTP/1.1\r\n\r\n", 414},
      {"GET / HTTP/9.9\r\n\r\n", 400},
      {std::string(300'000, 'a'), 431},
  };
  for (const auto& [bytes, status] : cases) {
    RawClient client(port);
    client.Send(bytes);
    const auto answer = client.Read();
    EXPECT_EQ(answer.status, status) << bytes.substr(0, 40);
    rapidjson::Document reason;
    reason.Parse(answer.body.c_str());
    ASSERT_TRUE(reason.IsObject()) << answer.body;
    EXPECT_TRUE(reason["error"]["message"].IsString());
    EXPECT_EQ(answer.headers.at("connection"), "close");
    EXPECT_TRUE(client.ClosedByServer());
  }
}

TEST_F(HttpServerTest, PatchIsAnsweredWithoutABody) {
  RawClient client(Serve());
  const std::string body = "{ \"ZVKDDEXTENDEDDOCTYPE\":\"x-raomPublished\" }";
  client.Send(
      "PATCH /servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D1031') HTTP/1.1\r\nHost: h\r\n"
      "Content-Type: application/json\r\nX-Zvk-Nonce: " +
      Nonce() + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  const auto answer = client.Read();
  EXPECT_EQ(answer.status, 204);
  EXPECT_EQ(answer.body, "");
  // The connection goes on after an answer that has no body.
  const auto document = client.Get("/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D1031')");
  EXPECT_EQ(document.status, 200);
  EXPECT_NE(document.body.find("\"ZVKDDEXTENDEDDOCTYPE\":\"x-raomPublished\""), std::string::npos);
}

TEST_F(HttpServerTest, BodyOfAGetIsRefusedAndNotTakenForTheNextRequest) {
  RawClient client(Serve());
  client.Send(
      "GET /servlet/OrvetGW HTTP/1.1\r\nHost: h\r\nContent-Length: 33\r\n\r\nGET /servlet/smuggled "
      "HTTP/1.1\r\n\r\n");
  EXPECT_EQ(client.Read().status, 400);
  EXPECT_TRUE(client.ClosedByServer());
  EXPECT_EQ(LogLines().size(), 1U);
}

TEST_F(HttpServerTest, OtherMethodsAreRefusedAndTheConnectionStays) {
  RawClient client(Serve());
  client.Send("POST /servlet/OrvetGW HTTP/1.1\r\nHost: h\r\nContent-Length: 5\r\n\r\nhello");
  auto answer = client.Read();
  EXPECT_EQ(answer.status, 405);
  EXPECT_EQ(answer.headers.at("allow"), "GET");
  client.Send("POST /servlet/OrvetGW HTTP/1.1\r\nHost: h\r\n\r\n");
  EXPECT_EQ(client.Read().status, 405);
  client.Send(
      "POST /x HTTP/1.1\r\nHost: h\r\nContent-Type: multipart/form-data; boundary=b\r\nContent-Length: "
      "7\r\n\r\n--b\r\n\r\n");
  EXPECT_EQ(client.Read().status, 404);
  EXPECT_EQ(client.Get("/servlet/OrvetGW").status, 200);
}

TEST_F(HttpServerTest, BodyBeyondTheLimitIs413WhetherAnnouncedOrChunked) {
  options_.maxUploadBytes = 10;
  const int port = Serve();
  RawClient announced(port);
  announced.Send("POST /servlet/OrvetGW HTTP/1.1\r\nHost: h\r\nContent-Length: 11\r\n\r\nhello world");
  EXPECT_EQ(announced.Read().status, 413);
  EXPECT_EQ(announced.Get("/servlet/OrvetGW").status, 200);
  announced.Send("POST /servlet/OrvetGW HTTP/1.1\r\nHost: h\r\nContent-Length: 10\r\n\r\nhelloworld");
  EXPECT_EQ(announced.Read().status, 405);

  RawClient chunked(port);
  chunked.Send(
      "POST /servlet/OrvetGW HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\nb\r\nhello "
      "world\r\n0\r\n\r\n");
  EXPECT_EQ(chunked.Read().status, 413);
}

TEST_F(HttpServerTest, CutAnswerAnnouncesItsWholeLengthAndEndsEarly) {
  Fault("GET *streams/10090*=cut:1000");
  Fault("GET *OrvetGW=cut:0");
  const int port = Serve();
  RawClient content(port);
  auto answer = content.Get("/servlet/rest/v1/content/streams/10090/x");
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.headers.at("content-length"), "4096");
  EXPECT_EQ(answer.body.size(), 1000U);
  EXPECT_FALSE(answer.complete);
  EXPECT_TRUE(content.ClosedByServer());

  RawClient information(port);
  answer = information.Get("/servlet/OrvetGW");
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body.size(), 0U);
  EXPECT_FALSE(answer.complete);
}

TEST_F(HttpServerTest, ChunkedAnswerBreaksOff) {
  Fault("GET *streams/10090*=chunked-cut:1000");
  RawClient client(Serve());
  const auto answer = client.Get("/servlet/rest/v1/content/streams/10090/x");
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.headers.at("transfer-encoding"), "chunked");
  EXPECT_EQ(answer.body, ReadFile(directory_ / "data/content/10090").substr(0, 1000));
  EXPECT_FALSE(answer.complete);
  EXPECT_TRUE(client.ClosedByServer());
}

TEST_F(HttpServerTest, StallingServerStaysConnectedAndSilent) {
  Fault("GET *OrvetGW=stall");
  Fault("GET *streams/10090*=stall:100");
  const int port = Serve();
  RawClient silent(port);
  silent.Send("GET /servlet/OrvetGW HTTP/1.1\r\nHost: h\r\n\r\n");
  EXPECT_EQ(silent.Read(300).status, 0);
  EXPECT_FALSE(silent.ClosedByServer(0));

  RawClient halfway(port);
  halfway.Send("GET /servlet/rest/v1/content/streams/10090/x HTTP/1.1\r\nHost: h\r\n\r\n");
  const auto answer = halfway.Read(300);
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body.size(), 100U);
  EXPECT_FALSE(halfway.ClosedByServer(0));
}

TEST_F(HttpServerTest, DroppedConnectionCarriesNoByte) {
  Fault("GET *OrvetGW=drop*1");
  const int port = Serve();
  RawClient dropped(port);
  EXPECT_EQ(dropped.Get("/servlet/OrvetGW").status, 0);
  EXPECT_TRUE(dropped.ClosedByServer());
  EXPECT_EQ(RawClient(port).Get("/servlet/OrvetGW").status, 200);
}

TEST_F(HttpServerTest, StatusFaultEndsWithItsCount) {
  Fault("GET *contexts?type=Product=503*1");
  RawClient client(Serve());
  EXPECT_EQ(client.Get("/servlet/rest/v1/contexts").status, 200);
  EXPECT_EQ(client.Get("/servlet/rest/v1/contexts?type=Product").status, 503);
  EXPECT_EQ(client.Get("/servlet/rest/v1/contexts?type=Product").status, 200);
}

TEST_F(HttpServerTest, LostAnswerIsCarriedOutAndThenTheConnectionCloses) {
  Fault("POST *workspaces=lost-answer*1");
  const int port = Serve();
  const std::string headers = "Content-Type: application/json\r\nX-Zvk-Nonce: " + Nonce() + "\r\n";
  const std::string body = R"({"name":"new","contextId":"OR:vn.product.Product:101"})";
  RawClient client(port);
  EXPECT_EQ(client.Post("/servlet/rest/v1/dkm/workspaces", headers, body).status, 0);
  EXPECT_TRUE(client.ClosedByServer());
  // It was made, and its name is taken.
  EXPECT_EQ(RawClient(port).Post("/servlet/rest/v1/dkm/workspaces", headers, body).status, 409);
}

TEST_F(HttpServerTest, DroppedWriteIsNotCarriedOut) {
  Fault("POST *workspaces=drop*1");
  const int port = Serve();
  const std::string headers = "Content-Type: application/json\r\nX-Zvk-Nonce: " + Nonce() + "\r\n";
  const std::string body = R"({"name":"new","contextId":"OR:vn.product.Product:101"})";
  EXPECT_EQ(RawClient(port).Post("/servlet/rest/v1/dkm/workspaces", headers, body).status, 0);
  EXPECT_EQ(RawClient(port).Post("/servlet/rest/v1/dkm/workspaces", headers, body).status, 200);
}

TEST_F(HttpServerTest, StatusFaultCarriesTheBodyItWasGiven) {
  Fault("GET *OrvetGW=status:200:ServerName:other\nEnd");
  Fault("GET *contexts=status:404:{\"a=b\":1}*1");
  RawClient client(Serve());
  auto answer = client.Get("/servlet/OrvetGW");
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body, "ServerName:other\nEnd");
  EXPECT_EQ(answer.headers.at("content-type"), "text/plain;charset=UTF-8");
  answer = client.Get("/servlet/rest/v1/contexts");
  EXPECT_EQ(answer.status, 404);
  EXPECT_EQ(answer.body, "{\"a=b\":1}");
  EXPECT_EQ(answer.headers.at("content-type"), "application/json;charset=UTF-8");
  EXPECT_EQ(client.Get("/servlet/rest/v1/contexts").status, 200);
}

TEST_F(HttpServerTest, CorruptedContentDiffersInTheLowestBitOfItsMiddleByteAlone) {
  Fault("GET *=corrupt");
  RawClient client(Serve());
  std::string expected = ReadFile(directory_ / "data/content/10090");
  ASSERT_EQ(expected.size(), 4096U);
  expected[2048] = static_cast<char>(expected[2048] ^ 1);
  const auto answer = client.Get("/servlet/rest/v1/content/streams/10090/x");
  EXPECT_EQ(answer.status, 200);
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.body, expected);
  // A body of no bytes has nothing to turn over.
  EXPECT_EQ(client.Get("/servlet/rest/v1/content/streams/10100/x").body, "");
  EXPECT_NE(client.Get("/servlet/OrvetGW").body.find("ServerName"), std::string::npos);
}

TEST_F(HttpServerTest, RedirectSendsElsewhere) {
  Fault("GET *OrvetGW=redirect:http://127.0.0.1:9/?a=b");
  RawClient client(Serve());
  const auto answer = client.Get("/servlet/OrvetGW");
  EXPECT_EQ(answer.status, 302);
  EXPECT_EQ(answer.headers.at("location"), "http://127.0.0.1:9/?a=b");
}

TEST_F(HttpServerTest, ABusyOneAsksForAPause) {
  Fault("GET *OrvetGW=busy:7*1");
  RawClient client(Serve());
  const auto answer = client.Get("/servlet/OrvetGW");
  EXPECT_EQ(answer.status, 503);
  EXPECT_EQ(answer.headers.at("retry-after"), "7");
  EXPECT_EQ(client.Get("/servlet/OrvetGW").status, 200);
}

TEST_F(HttpServerTest, SlowBodyTakesItsTimeAndArrivesWhole) {
  Fault("GET *streams/10090*=slow:20000");
  RawClient client(Serve());
  const auto begin = std::chrono::steady_clock::now();
  const auto answer = client.Get("/servlet/rest/v1/content/streams/10090/x");
  // 4096 bytes in pieces of a tenth of a second's worth: two of 2000 bytes, and the rest.
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(204));
  EXPECT_EQ(answer.body, ReadFile(directory_ / "data/content/10090"));
}

TEST_F(HttpServerTest, DelayComesBeforeAnAnswerThatIsAsEver) {
  Fault("GET *OrvetGW=delay:120");
  RawClient client(Serve());
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(client.Get("/servlet/OrvetGW").status, 200);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(120));
}

TEST_F(HttpServerTest, PartOfAContentIs206AndEverythingElseIsWhole) {
  RawClient client(Serve());
  const std::string content = "/servlet/rest/v1/content/streams/10090/x";
  const std::string bytes = ReadFile(directory_ / "data/content/10090");
  auto answer = client.Get(content, "Range: bytes=100-199\r\n");
  EXPECT_EQ(answer.status, 206);
  EXPECT_EQ(answer.headers.at("content-range"), "bytes 100-199/4096");
  EXPECT_EQ(answer.body, bytes.substr(100, 100));
  answer = client.Get(content, "range: bytes=-96\r\n");
  EXPECT_EQ(answer.status, 206);
  EXPECT_EQ(answer.headers.at("content-range"), "bytes 4000-4095/4096");
  EXPECT_EQ(answer.body, bytes.substr(4000));
  answer = client.Get(content, "Range: bytes=4096-\r\n");
  EXPECT_EQ(answer.status, 416);
  EXPECT_EQ(answer.headers.at("content-range"), "bytes */4096");
  for (const char* whole : {"Range: bytes=0-1,5-6\r\n", "Range: nonsense\r\n", "Range: bytes=9-5\r\n",
                            "Range: bytes=0-9\r\nIf-Range: \"x\"\r\n"}) {
    answer = client.Get(content, whole);
    EXPECT_EQ(answer.status, 200) << whole;
    EXPECT_EQ(answer.body, bytes) << whole;
  }
  // Lists and documents have no parts.
  answer = client.Get("/servlet/OrvetGW", "Range: bytes=0-9\r\n");
  EXPECT_EQ(answer.status, 200);
  EXPECT_GT(answer.body.size(), 10U);
}

TEST_F(HttpServerTest, FaultOnAPartOfAContentCutsThePart) {
  Fault("GET *=cut:10");
  RawClient client(Serve());
  const auto answer = client.Get("/servlet/rest/v1/content/streams/10090/x", "Range: bytes=100-199\r\n");
  EXPECT_EQ(answer.status, 206);
  EXPECT_EQ(answer.headers.at("content-length"), "100");
  EXPECT_EQ(answer.body, ReadFile(directory_ / "data/content/10090").substr(100, 10));
}

TEST_F(HttpServerTest, HistoryRemembersRequestsWithoutTheirSecrets) {
  Fault("GET *contexts=503");
  const int port = Serve();
  RawClient client(port);
  client.Get(
      "/servlet/rest/v1/contexts?token=canary1&type=Product",
      "Authorization: Basic Y2FuYXJ5Mjpwdw==\r\nCookie: canary3\r\nX-Unknown: canary4\r\nPrefer: a\r\n");
  client.Get("/servlet/rest/v1/contexts");
  client.Post("/servlet/rest/v1/dkm/workspaces", "Content-Type: application/json\r\nX-Zvk-Nonce: canary5\r\n",
              R"({"name":"bench","password":"canary6","deep":[{"key":"canary7","id":"D1"}],"n":1e5})");
  StopServer();
  const auto all = simulator_->history().Find({});
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0].target, "/servlet/rest/v1/contexts?token=(hidden)&type=Product");
  EXPECT_EQ(all[0].status, 200);
  EXPECT_EQ(all[0].fault, 0U);
  EXPECT_EQ(all[0].door, "main");
  const std::vector<std::pair<std::string, std::string>> headers{{"Host", "sim.example"},
                                                                 {"Authorization", "(hidden)"},
                                                                 {"Cookie", "(hidden)"},
                                                                 {"X-Unknown", "(hidden)"},
                                                                 {"Prefer", "a"}};
  EXPECT_EQ(all[0].headers, headers);
  EXPECT_EQ(all[1].status, 503);
  EXPECT_EQ(all[1].fault, 1U);
  EXPECT_EQ(all[1].connection, all[0].connection);
  EXPECT_EQ(all[2].method, "POST");
  EXPECT_EQ(
      all[2].body,
      R"x({"name":"bench","password":"(hidden)","deep":[{"key":"(hidden)","id":"D1"}],"n":"(hidden)"})x");
  for (const auto& request : all) {
    std::string everything = request.target + request.body;
    for (const auto& [name, value] : request.headers) everything += name + value;
    EXPECT_EQ(everything.find("canary"), std::string::npos) << everything;
  }
}

TEST_F(HttpServerTest, AdminPortGivesNothingToPagesOfOtherServers) {
  options_.adminPort = 0;
  Serve();
  const auto status = [&](const std::string& lines) {
    RawClient client(server_->adminPort());
    client.Send("GET /status HTTP/1.1\r\nHost: 127.0.0.1\r\n" + lines + "\r\n");
    return client.Read().status;
  };
  EXPECT_EQ(status(""), 200);
  EXPECT_EQ(status("Sec-Fetch-Site: none\r\nSec-Fetch-Mode: navigate\r\n"), 200);
  EXPECT_EQ(status("Sec-Fetch-Site: same-origin\r\nSec-Fetch-Mode: cors\r\n"), 200);
  EXPECT_EQ(status("Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: navigate\r\n"), 200);
  EXPECT_EQ(status("Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: no-cors\r\n"), 403);
  // A page of another port of this machine.
  EXPECT_EQ(status("Sec-Fetch-Site: same-site\r\nSec-Fetch-Mode: no-cors\r\n"), 403);
  EXPECT_EQ(status("Origin: http://evil.example\r\n"), 403);
}

TEST_F(HttpServerTest, OnePortOfAClientMaySpeakToSeveralAddressesAtATime) {
  options_.bindAddress = "0.0.0.0";
  const int port = Serve();
  RawClient first(port);
  first.Send("POST /servlet/rest/v1/dkm/documents HTTP/1.1\r\nHost: h\r\nContent-Length: 2\r\n\r\n{");
  // The server is at work on it once it is remembered.
  for (int tries = 0; tries < 200 && simulator_->history().Mark() == 0; ++tries)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  RawClient second(port, "127.0.0.1", "127.0.0.2", first.OwnPort());
  EXPECT_EQ(second.Get("/servlet/OrvetGW").status, 200);
  first.Send("}");
  // A write without a nonce.
  EXPECT_EQ(first.Read().status, 403);
}

TEST_F(HttpServerTest, StatusWithoutABodyLeavesTheConnectionInOrder) {
  for (const char* rule : {"GET /a=204", "GET /b=205", "GET /c=304", "GET /d=status:304:x"}) Fault(rule);
  RawClient client(Serve());
  for (const char* target : {"/a", "/b", "/c", "/d"}) {
    client.Send(std::string("GET ") + target + " HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_GT(client.Read(hungMilliseconds, true).status, 200) << target;
    EXPECT_EQ(client.Get("/servlet/OrvetGW").status, 200) << target;
  }
}

TEST_F(HttpServerTest, LogTellsWhatWentOverTheWire) {
  Fault("GET *streams/10090*=cut:1000");
  const int port = Serve();
  RawClient(port).Get("/servlet/rest/v1/content/streams/10090/x?type=%20&key=k1",
                      "Authorization: Basic YnJ1bm86cDp3\r\n");
  const auto lines = LogLines();
  ASSERT_EQ(lines.size(), 1U);
  rapidjson::Document line;
  line.Parse(lines[0].c_str());
  EXPECT_STREQ(line["method"].GetString(), "GET");
  EXPECT_STREQ(line["path"].GetString(), "/servlet/rest/v1/content/streams/10090/x?type=%20&key=(hidden)");
  EXPECT_EQ(line["status"].GetInt(), 200);
  EXPECT_EQ(line["bytes"].GetInt(), 1000);
  EXPECT_STREQ(line["user"].GetString(), "bruno");
  EXPECT_GT(line["port"].GetInt(), 0);
}

TEST_F(HttpServerTest, LatencyDelaysEachAnswer) {
  options_.latencyMilliseconds = 120;
  RawClient client(Serve());
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(client.Get("/servlet/OrvetGW").status, 200);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(120));
}

TEST_F(HttpServerTest, StopEndsIdleAndStalledConnectionsInBoundedTime) {
  Fault("GET *OrvetGW=stall");
  const int port = Serve();
  RawClient idle(port);
  EXPECT_EQ(idle.Get("/servlet/rest/v1/contexts").status, 200);
  RawClient stalled(port);
  stalled.Send("GET /servlet/OrvetGW HTTP/1.1\r\nHost: h\r\n\r\n");
  EXPECT_EQ(stalled.Read(200).status, 0);
  const auto begin = std::chrono::steady_clock::now();
  StopServer();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  EXPECT_TRUE(idle.ClosedByServer());
  EXPECT_TRUE(stalled.ClosedByServer());
}

TEST_F(HttpServerTest, StopBeforeRunIsNotForgotten) {
  options_.port = 0;
  log_ = std::make_unique<RequestLog>("");
  ServerGroup server(Start(), *log_);
  ASSERT_EQ(server.Bind(), -1);
  server.Stop();
  server.Run();
}

}  // namespace
}  // namespace vantry_sim

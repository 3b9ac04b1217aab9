#include <set>
#include <thread>

#include "admin_fixture.h"
#include "simulator/wire/timestamp.h"

namespace vantry_sim {
namespace {

const std::string documentPath = "/servlet/rest/v1/dkm/documents/";

std::string Code(const rapidjson::Document& document) {
  return document["error"]["code"].GetString();
}

TEST_F(AdminTest, ResetMakesEverythingAsItWasAtTheStart) {
  options_.faults = {"GET /a=500"};
  options_.users = {{"anna", "pw"}};
  const std::string before = Get(documentPath + "D1001").body;
  const std::string nonce = Nonce();
  PostJson(documentsPath, CreateBody(Instruction("", "new.lxz", Upload({"x"})[0])));
  EXPECT_EQ(Admin("DELETE", "/documents/D1001").status, 204);
  EXPECT_EQ(Admin("POST", "/faults", R"({"rule":"GET /b=404"})").status, 201);
  EXPECT_EQ(Admin("PUT", "/users/zoe", R"({"password":"z"})").status, 200);
  EXPECT_EQ(Admin("PUT", "/clock", R"({"time":"2040-01-01T00:00:00Z"})").status, 200);
  EXPECT_EQ(Admin("PUT", "/generation", R"({"generation":"gateway"})").status, 200);
  EXPECT_EQ(Get(documentPath + "D1001").status, 404);

  EXPECT_EQ(Admin("POST", "/reset").status, 200);
  EXPECT_EQ(Get(documentPath + "D1001").body, before);
  EXPECT_EQ(
      Get("/servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter=CADName%20eq%20'new.lxz'")
          .body,
      "[]");
  const auto faults = simulator_->faults().List();
  ASSERT_EQ(faults.size(), 1U);
  EXPECT_EQ(faults[0].text, "GET /a=500");
  EXPECT_EQ(simulator_->users().List().size(), 1U);
  EXPECT_LT(simulator_->clock().Now(), *ReadTimestamp("2040-01-01T00:00:00Z"));
  EXPECT_EQ(Get("/servlet/odata/").status, 200);
  // Clients that fetched the nonce go on with it.
  EXPECT_EQ(Nonce(), nonce);
}

TEST_F(AdminTest, IdsOfNewThingsAreTheSameAfterEachReset) {
  const auto make = [&] {
    return std::string(
        PostJson(documentsPath, CreateBody(Instruction("", "new.lxz", Upload({"x"})[0])))[0]["id"]
            .GetString());
  };
  const std::string id = make();
  Admin("POST", "/reset");
  EXPECT_EQ(make(), id);
}

TEST_F(AdminTest, ResetWorksBehindARestart) {
  Start();
  Admin("DELETE", "/documents/D1001");
  options_.seed.kind = Seed::Kind::Empty;
  Start();
  EXPECT_EQ(Get(documentPath + "D1001").status, 404);
  EXPECT_EQ(Admin("POST", "/reset").status, 200);
  EXPECT_EQ(Get(documentPath + "D1001").status, 200);
}

TEST_F(AdminTest, ResetWorksWhereAServerWasKilledBeforeItHadCopiedItsSeed) {
  Start();
  simulator_.reset();
  // As it is between the two steps.
  std::filesystem::remove(directory_ / "data/seed.db");
  Database((directory_ / "data/vantry-sim.db").string())
      .Execute("INSERT INTO facts(key, value) VALUES('seed-to-be-kept', '')");
  Start();
  Admin("DELETE", "/documents/D1001");
  EXPECT_EQ(Admin("POST", "/reset").status, 200);
  EXPECT_EQ(Get(documentPath + "D1001").status, 200);
}

TEST_F(AdminTest, StateOfLaterIsNeverKeptAsTheSeed) {
  Start();
  Admin("POST", "/reset");
  Admin("DELETE", "/documents/D1001");
  Start();
  EXPECT_EQ(Admin("POST", "/reset").status, 200);
  EXPECT_EQ(Get(documentPath + "D1001").status, 200);
}

TEST_F(AdminTest, DirectoryWithoutACopyOfItsSeedSaysSo) {
  Start();
  std::filesystem::remove(directory_ / "data/seed.db");
  EXPECT_EQ(AdminOutcome("POST", "/reset"), "409 no-seed");
}

TEST_F(AdminTest, SnapshotBringsTheStateBackAndItsContents) {
  Start();
  const auto first =
      PostJson(documentsPath, CreateBody(Instruction("", "first.lxz", Upload({"first bytes"})[0])));
  const std::string firstId = first[0]["id"].GetString();
  EXPECT_EQ(Admin("PUT", "/snapshots/one").status, 200);
  Admin("POST", "/reset");
  // The same ids again, with other bytes: the stream of the first is not written over.
  const auto second =
      PostJson(documentsPath, CreateBody(Instruction("", "second.lxz", Upload({"second bytes"})[0])));
  EXPECT_EQ(second[0]["id"].GetString(), firstId);
  EXPECT_EQ(Admin("PUT", "/snapshots/two").status, 200);
  EXPECT_EQ(Admin("POST", "/snapshots/one").status, 200);
  auto document = GetJson(documentPath + firstId);
  EXPECT_STREQ(document["epmMaster"]["cadName"].GetString(), "first.lxz");
  EXPECT_EQ(ContentOf(document["cadContent"]["contentSections"][0]), "first bytes");
  EXPECT_EQ(Admin("POST", "/snapshots/two").status, 200);
  document = GetJson(documentPath + firstId);
  EXPECT_EQ(ContentOf(document["cadContent"]["contentSections"][0]), "second bytes");
  const auto list = AdminJson("GET", "/snapshots");
  EXPECT_EQ(list["snapshots"].Size(), 2U);
  EXPECT_STREQ(list["snapshots"][0]["name"].GetString(), "one");
  EXPECT_EQ(Admin("DELETE", "/snapshots/one").status, 204);
  EXPECT_EQ(AdminOutcome("POST", "/snapshots/one"), "404 no-such-snapshot");
  EXPECT_EQ(AdminOutcome("DELETE", "/snapshots/one"), "404 no-such-snapshot");
}

TEST_F(AdminTest, UploadsUnderWayAreNoPartOfASnapshot) {
  Start();
  const auto ticket = Ticket(1);
  const auto uploaded = Upload({"taken by nobody"});
  EXPECT_EQ(Admin("PUT", "/snapshots/one").status, 200);
  EXPECT_EQ(Admin("POST", "/snapshots/one").status, 200);
  EXPECT_EQ(Send(ticket, Body(ticket, {"x"})).status, 404);
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "new.lxz", uploaded[0]))),
            "409 unknown-receipt");
}

TEST_F(AdminTest, SnapshotOfAnOlderFormIsTakenOver) {
  Start();
  Admin("PUT", "/snapshots/old");
  {
    Database old((directory_ / "data/snapshots/old.db").string());
    old.Execute(
        "ALTER TABLE streams DROP COLUMN generator; PRAGMA user_version = 5; PRAGMA journal_mode = DELETE;");
  }
  EXPECT_EQ(Admin("POST", "/snapshots/old").status, 200);
  EXPECT_EQ(Get(documentPath + "D1001").status, 200);
  EXPECT_EQ(Admin("GET", "/tree").status, 200);
}

TEST_F(AdminTest, NoNameOfASnapshotLeadsOutOfItsDirectory) {
  Start();
  const auto entries = [&] {
    std::set<std::string> all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory_))
      all.insert(entry.path());
    return all;
  };
  const auto before = entries();
  for (const char* name :
       {"..%2F..%2Fescaped", "%2Ftmp%2Fescaped", "..", ".hidden", "a%20b", "a%5Cb", "%C3%A4", "a%0Ab",
        "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"}) {
    for (const char* method : {"PUT", "POST", "DELETE"})
      EXPECT_EQ(AdminOutcome(method, std::string("/snapshots/") + name), "400 bad-name") << name;
  }
  EXPECT_EQ(AdminOutcome("PUT", "/snapshots/a%00b"), "400 bad-escape");
  EXPECT_EQ(AdminOutcome("PUT", "/snapshots/a/b"), "404 no-such-route");
  EXPECT_EQ(entries(), before);
}

TEST_F(AdminTest, FaultsComeAndGoWithTheirCounts) {
  const auto fault = AdminJson("POST", "/faults", R"({"rule":"GET /a*=503*2"})");
  EXPECT_EQ(fault["id"].GetInt(), 1);
  EXPECT_EQ(fault["left"].GetInt(), 2);
  simulator_->faults().Take("GET", "/abc");
  const auto list = AdminJson("GET", "/faults");
  EXPECT_EQ(list["faults"][0]["matches"].GetInt(), 1);
  EXPECT_EQ(list["faults"][0]["met"].GetInt(), 1);
  EXPECT_EQ(list["faults"][0]["left"].GetInt(), 1);
  EXPECT_TRUE(AdminJson("POST", "/faults", R"({"rule":"* /b=drop"})")["left"].IsNull());
  EXPECT_EQ(AdminOutcome("POST", "/faults", R"({"rule":"GET /a=nonsense"})"), "400 bad-rule");
  EXPECT_EQ(AdminOutcome("POST", "/faults", R"({"rules":"GET /a=503"})"), "400 bad-body");
  EXPECT_EQ(AdminOutcome("POST", "/faults", "{"), "400 broken-json");
  EXPECT_EQ(AdminOutcome("DELETE", "/faults/1"), "204");
  EXPECT_EQ(AdminOutcome("GET", "/faults/1"), "404 no-such-fault");
  EXPECT_EQ(AdminOutcome("DELETE", "/faults/x"), "404 no-such-fault");
  EXPECT_EQ(AdminOutcome("DELETE", "/faults"), "204");
  EXPECT_EQ(AdminJson("GET", "/faults")["faults"].Size(), 0U);
}

TEST_F(AdminTest, RequestsAreFoundAndWaitedFor) {
  Start();
  const auto ask = [&](const std::string& target, int status) {
    RememberedRequest request;
    request.method = "GET";
    request.target = target;
    Exchange exchange;
    exchange.status = status;
    simulator_->history().Finish(simulator_->history().Begin(std::move(request)), exchange, 0);
  };
  ask("/a", 200);
  ask("/b?x", 404);
  auto found = AdminJson("GET", "/requests?path=/b*&status=404");
  ASSERT_EQ(found["requests"].Size(), 1U);
  EXPECT_STREQ(found["requests"][0]["path"].GetString(), "/b?x");
  EXPECT_EQ(found["mark"].GetInt(), 2);
  std::thread client([&] {
    for (int i = 0; i < 3; ++i) ask("/late", 200);
  });
  found = AdminJson("GET", "/requests?path=/late&since=2&count=3&wait=60000");
  client.join();
  EXPECT_EQ(found["requests"].Size(), 3U);
  const Response late = Admin("GET", "/requests?path=/never&wait=1");
  EXPECT_EQ(late.status, 504);
  rapidjson::Document document;
  document.Parse(late.body.c_str());
  EXPECT_EQ(Code(document), "timeout");
  EXPECT_EQ(document["requests"].Size(), 0U);
  EXPECT_EQ(AdminOutcome("GET", "/requests?colour=red"), "400 bad-parameter");
  EXPECT_EQ(AdminOutcome("GET", "/requests?wait=60001"), "400 bad-parameter");
  EXPECT_EQ(AdminOutcome("GET", "/requests?state=x"), "400 bad-parameter");
  EXPECT_EQ(AdminOutcome("DELETE", "/requests"), "204");
  EXPECT_EQ(AdminJson("GET", "/requests")["requests"].Size(), 0U);
}

TEST_F(AdminTest, UsersAreToldWithoutTheirSecrets) {
  EXPECT_TRUE(AdminJson("GET", "/users")["open"].GetBool());
  EXPECT_EQ(Admin("PUT", "/users/zoe", R"({"password":"canary1","token":"canary2"})").status, 200);
  const std::string list = Admin("GET", "/users").body;
  EXPECT_EQ(list, R"({"open":false,"users":[{"name":"zoe","password":true,"tokens":1}]})");
  EXPECT_EQ(simulator_->UserOf({"GET", "/", "Bearer canary2"}), "zoe");
  EXPECT_EQ(simulator_->UserOf({"GET", "/", ""}), "");
  EXPECT_EQ(AdminOutcome("PUT", "/users/zoe", "{}"), "400 bad-body");
  EXPECT_EQ(AdminOutcome("PUT", "/users/a%3Ab", R"({"password":"x"})"), "400 bad-body");
  EXPECT_EQ(AdminOutcome("DELETE", "/users/zoe"), "204");
  EXPECT_EQ(AdminOutcome("DELETE", "/users/zoe"), "404 no-such-user");
}

TEST_F(AdminTest, SessionsAreToldWithoutTheirCookiesAndEnded) {
  EXPECT_EQ(AdminOutcome("GET", "/sessions"), "409 no-sessions");
  const std::string nonce = Nonce();
  EXPECT_EQ(AdminOutcome("DELETE", "/sessions"), "204");
  EXPECT_NE(Nonce(), nonce);

  options_.sessionSeconds = 60;
  Start();
  Get("/servlet/OrvetGW");
  Get("/servlet/OrvetGW", "bruno");
  const auto list = AdminJson("GET", "/sessions");
  ASSERT_EQ(list["sessions"].Size(), 2U);
  EXPECT_EQ(list["sessions"][0].MemberCount(), 4U);
  EXPECT_STREQ(list["sessions"][1]["user"].GetString(), "bruno");
  EXPECT_EQ(AdminOutcome("DELETE", "/sessions/1x"), "404 no-such-session");
  EXPECT_EQ(AdminOutcome("DELETE", "/sessions/1"), "204");
  EXPECT_EQ(AdminOutcome("DELETE", "/sessions/1"), "404 no-such-session");
  EXPECT_EQ(AdminOutcome("DELETE", "/sessions"), "204");
  EXPECT_EQ(AdminJson("GET", "/sessions")["sessions"].Size(), 0U);
}

TEST_F(AdminTest, ClockIsSetFrozenAndPutForward) {
  auto clock = AdminJson("PUT", "/clock", R"({"time":"2027-01-15T08:00:00.500Z","frozen":true})");
  EXPECT_STREQ(clock["time"].GetString(), "2027-01-15T08:00:00.500Z");
  clock = AdminJson("POST", "/clock/advance", R"({"milliseconds":1500})");
  EXPECT_STREQ(clock["time"].GetString(), "2027-01-15T08:00:02.000Z");
  EXPECT_FALSE(AdminJson("PUT", "/clock", R"({"frozen":false})")["frozen"].GetBool());
  EXPECT_EQ(AdminOutcome("PUT", "/clock", R"({"time":"tomorrow"})"), "400 bad-body");
  EXPECT_EQ(AdminOutcome("POST", "/clock/advance", "{}"), "400 bad-body");
  EXPECT_EQ(AdminOutcome("POST", "/clock/advance", R"({"milliseconds":99999999999999})"), "400 bad-body");
  const std::string now = AdminJson("DELETE", "/clock")["time"].GetString();
  EXPECT_LT(*ReadTimestamp(now), *ReadTimestamp("2027-01-15T00:00:00Z") + 100LL * 366 * 86'400'000);
  EXPECT_FALSE(AdminJson("GET", "/clock")["frozen"].GetBool());
}

TEST_F(AdminTest, GenerationChangesWhatIsOffered) {
  EXPECT_EQ(Get("/servlet/odata/").status, 200);
  EXPECT_EQ(Admin("PUT", "/generation", R"({"generation":"gateway"})").status, 200);
  EXPECT_EQ(Get("/servlet/odata/").status, 404);
  EXPECT_STREQ(AdminJson("GET", "/generation")["generation"].GetString(), "gateway");
  EXPECT_EQ(Admin("PUT", "/generation", R"({"generation":"schema1"})").status, 200);
  EXPECT_EQ(Get("/servlet/odata/").status, 200);
  EXPECT_EQ(AdminOutcome("PUT", "/generation", R"({"generation":"schema9"})"), "400 bad-body");
}

TEST_F(AdminTest, TreeIsTakenOutAndPutBack) {
  Start();
  const std::string tree = Admin("GET", "/tree").body;
  const std::string before = Get(documentPath + "D1001").body;
  EXPECT_EQ(Admin("PUT", "/tree", R"({"contexts":[{"name":"Bike"}],"documents":[{"cadName":"a.lxz","id":"D1",
      "folder":"Bike/Default","content":"bytes"}]})")
                .status,
            200);
  EXPECT_EQ(Get(documentPath + "D1001").status, 404);
  EXPECT_EQ(ContentOf(GetJson(documentPath + "D1")["cadContent"]["contentSections"][0]), "bytes");
  EXPECT_EQ(Admin("PUT", "/tree", tree).status, 200);
  EXPECT_EQ(Get(documentPath + "D1001").body, before);
  EXPECT_EQ(Admin("GET", "/tree").body, tree);
  const std::string yaml = Admin("GET", "/tree?format=yaml&contents=inline").body;
  EXPECT_EQ(Admin("PUT", "/tree", yaml, "application/yaml").status, 200);
  EXPECT_EQ(Get(documentPath + "D1001").body, before);
  EXPECT_EQ(Admin("GET", "/tree").body, tree);
}

TEST_F(AdminTest, TreeWithSomethingWrongChangesNothing) {
  Start();
  const std::string tree = Admin("GET", "/tree").body;
  for (const char* wrong :
       {"", "[]", "{", R"({"bikes":[]})", R"({"contexts":[{"name":"a"}],"documents":[{"cadName":"x",
      "folder":"a/Default","content":"@/etc/passwd"}]})",
        R"({"contexts":[{"name":"a"}],"documents":[{"cadName":"x","folder":"a/Default",
      "content":{"stream":99}}]})"}) {
    EXPECT_EQ(AdminOutcome("PUT", "/tree", wrong), "400 bad-state") << wrong;
  }
  EXPECT_EQ(Admin("GET", "/tree").body, tree);
}

TEST_F(AdminTest, SomebodyElseWorksBehindTheBacksOfClients) {
  const auto iterated =
      AdminJson("POST", "/documents/D1002/iterate",
                R"({"user":"bruno","content":"behind your back","attributes":{"A":"b"},"comment":"c"})");
  const auto& latest = iterated["versions"][iterated["versions"].Size() - 1];
  EXPECT_STREQ(latest["version"].GetString(), "A.4");
  EXPECT_STREQ(latest["comment"].GetString(), "c");
  EXPECT_STREQ(latest["attributes"]["A"].GetString(), "b");
  const auto document = GetJson(documentPath + std::string(latest["id"].GetString()));
  EXPECT_EQ(ContentOf(document["cadContent"]["contentSections"][0]), "behind your back");
  EXPECT_EQ(Outcome(workspacesPath + "/W301/checkout", CheckoutBody("D1002")), "409 not-latest");
  // Without other bytes, those of the version before.
  const auto again = AdminJson("POST", "/documents/" + std::string(latest["id"].GetString()) + "/iterate");
  EXPECT_EQ(again["versions"][4]["content"]["stream"].GetInt(), latest["content"]["stream"].GetInt());

  const auto taken = AdminJson("POST", "/documents/D1003/checkout", R"({"user":"zoe"})");
  EXPECT_STREQ(taken["checkout"]["workspace"].GetString(), "Made by the admin port");
  EXPECT_EQ(Outcome(workspacesPath + "/W301/checkout", CheckoutBody("D1003")), "409 checked-out");
  EXPECT_EQ(AdminOutcome("POST", "/documents/D1003/checkout", R"({"user":"bruno"})"), "409 checked-out");
  const auto returned = AdminJson("POST", "/documents/D1003/checkin", R"({"comment":"done"})");
  EXPECT_FALSE(returned.HasMember("checkout"));
  EXPECT_STREQ(returned["versions"][4]["version"].GetString(), "B.3");
  EXPECT_EQ(AdminOutcome("POST", "/documents/D1003/checkin"), "409 not-checked-out");
  EXPECT_FALSE(AdminJson("POST", "/documents/D1015/undo").HasMember("checkout"));
  EXPECT_EQ(Get(documentPath + "D1025", "bruno").status, 404);
}

TEST_F(AdminTest, AttributesAreChangedInTheirPlace) {
  const auto document =
      AdminJson("POST", "/documents/D1001/attributes", R"({"attributes":{"ZVK_DD_PAINT":"Rot","NEW":"n"}})");
  EXPECT_EQ(document["versions"].Size(), 3U);
  const auto read = GetJson(documentPath + "D1001");
  EXPECT_STREQ(read["fileBasedAttributes"][1]["parameterValue"]["value"].GetString(), "Rot");
  EXPECT_STREQ(read["fileBasedAttributes"][2]["parameterDefinition"]["parameterName"].GetString(), "NEW");
  EXPECT_EQ(AdminOutcome("POST", "/documents/D1001/attributes", R"({"attributes":{"A":1}})"), "400 bad-body");
}

TEST_F(AdminTest, DeletedVersionIsAsIfItHadNeverBeen) {
  EXPECT_EQ(AdminOutcome("DELETE", "/documents/D1002?what=version"), "204");
  EXPECT_EQ(Get(documentPath + "D1002").status, 404);
  EXPECT_TRUE(GetJson(documentPath + "D1202")["pdmIterationState"]["isLatest"].GetBool());
  // A checkout ends with the version that it was taken from.
  EXPECT_EQ(AdminOutcome("DELETE", "/documents/D1015?what=version"), "204");
  EXPECT_EQ(Get(documentPath + "D1025", "bruno").status, 404);
  EXPECT_EQ(AdminOutcome("DELETE", "/documents/D1001?what=all"), "400 bad-parameter");
}

TEST_F(AdminTest, EveryDocumentOfTheDemoCanBeDeletedAndLeavesNothing) {
  Start();
  const auto list = AdminJson("GET", "/documents");
  EXPECT_GT(list["documents"].Size(), 25U);
  for (const auto& entry : list["documents"].GetArray())
    EXPECT_EQ(AdminOutcome("DELETE", "/documents/" + std::string(entry["id"].GetString())), "204");
  simulator_.reset();
  Database database((directory_ / "data/vantry-sim.db").string());
  for (const char* table : {"masters", "iterations", "contents", "attributes", "dependencies", "checkouts",
                            "workspace_documents", "xliff_links", "translations"}) {
    auto count = database.Prepare(std::string("SELECT count(*) FROM ") + table);
    ASSERT_TRUE(count.Step());
    EXPECT_EQ(count.Integer(0), 0) << table;
  }
}

TEST_F(AdminTest, DocumentsAreListedByNameAndNumber) {
  EXPECT_EQ(AdminJson("GET", "/documents?cadName=gear.lxz")["documents"].Size(), 2U);
  const auto one = AdminJson("GET", "/documents?number=0000100015");
  ASSERT_EQ(one["documents"].Size(), 1U);
  EXPECT_STREQ(one["documents"][0]["checkedOutBy"].GetString(), "bruno");
  EXPECT_EQ(AdminOutcome("GET", "/documents/D9"), "404 no-such-document");
}

TEST_F(AdminTest, PagesOfOtherServersAreTurnedAway) {
  Start();
  AdminApi admin(*simulator_);
  const auto status = [&](const std::string& host, const std::string& origin) {
    Request request;
    request.method = "GET";
    request.target = "/status";
    request.host = host;
    request.origin = origin;
    return admin.Handle(request).status;
  };
  EXPECT_EQ(status("127.0.0.1:80", ""), 200);
  EXPECT_EQ(status("localhost:80", "http://localhost:80"), 200);
  EXPECT_EQ(status("[::1]:80", ""), 200);
  EXPECT_EQ(status("127.0.0.1:80", "http://evil.example"), 403);
  EXPECT_EQ(status("127.0.0.1:80", "http://127.0.0.1:81"), 403);
  EXPECT_EQ(status("127.0.0.1:80", "null"), 403);
  EXPECT_EQ(status("evil.example:80", ""), 403);
  EXPECT_EQ(status("127.0.0.1.evil.example", ""), 403);
  EXPECT_EQ(status("", ""), 403);
}

}  // namespace
}  // namespace vantry_sim

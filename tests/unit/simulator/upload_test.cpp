#include "write_fixture.h"

namespace vantry_sim {
namespace {

class UploadTest : public WriteTest {
 protected:
  /// Names of the files in the content store that no seed made.
  std::vector<std::string> NewFiles() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_ / "data/content")) {
      const std::string name = entry.path().filename();
      if (name.size() >= 8) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  std::string SendOutcome(const rapidjson::Document& ticket, const std::string& body,
                          const std::string& user = "anna") {
    const Response response = Send(ticket, body, user);
    if (response.status == 200) return "200";
    rapidjson::Document reason;
    reason.Parse(response.body.c_str());
    return std::to_string(response.status) + " " + reason["error"]["code"].GetString();
  }
};

TEST_F(UploadTest, TicketNamesAsManyStreamsAsAskedAndAnAddressOfItsOwn) {
  const auto ticket = Ticket(2);
  EXPECT_EQ(ticket["fileNames"].Size(), 2U);
  ASSERT_EQ(ticket["streamIds"].Size(), 2U);
  EXPECT_TRUE(ticket["streamIds"][0].IsString());
  EXPECT_STRNE(ticket["streamIds"][0].GetString(), ticket["streamIds"][1].GetString());
  EXPECT_EQ(std::string(ticket["masterUrl"].GetString()).rfind("http://sim.example:8080/", 0), 0U);
  EXPECT_EQ(
      std::string(ticket["uploadUrl"].GetString()).rfind("http://sim.example:9/servlet/content/upload/", 0),
      0U);
}

TEST_F(UploadTest, CreationFactoryAnswersAtBothAddressesUnlessItIsAnOldOne) {
  const std::string now = "/servlet/rest/v1/content/creationFactory";
  const std::string before = "/servlet/rest/content/creationFactory";
  Start();
  simulator_->SetUploadPort(9);
  EXPECT_EQ(Outcome(now, "{\"noOfFiles\":1}"), "200");
  EXPECT_EQ(Outcome(before, "{\"noOfFiles\":1}"), "200");
  simulator_.reset();
  options_.oldCreationFactory = true;
  Start();
  simulator_->SetUploadPort(9);
  EXPECT_EQ(Outcome(now, "{\"noOfFiles\":1}"), "404 no-such-route");
  EXPECT_EQ(Outcome(before, "{\"noOfFiles\":1}"), "200");
}

TEST_F(UploadTest, TicketIsForAReasonableNumberOfFiles) {
  Ticket(1);
  for (const char* body : {"{\"noOfFiles\":0}", "{\"noOfFiles\":101}", "{\"noOfFiles\":-1}",
                           "{\"noOfFiles\":\"1\"}", "{}", "[]"}) {
    EXPECT_EQ(Outcome("/servlet/rest/v1/content/creationFactory", body), "400 bad-body") << body;
  }
}

TEST_F(UploadTest, FilesLieInTheContentStoreByteForByte) {
  constexpr char oddBytes[] = "\r\n--BOUNDAR\0\xFF\r\n--";
  const std::string odd(oddBytes, sizeof oddBytes - 1);
  const auto uploaded = Upload({"first", odd, ""});
  ASSERT_EQ(uploaded.size(), 3U);
  EXPECT_EQ(ReadFile(directory_ / "data/content" / uploaded[0].stream), "first");
  EXPECT_EQ(ReadFile(directory_ / "data/content" / uploaded[1].stream), odd);
  EXPECT_EQ(ReadFile(directory_ / "data/content" / uploaded[2].stream), "");
  EXPECT_NE(uploaded[0].receipt, uploaded[1].receipt);
  EXPECT_EQ(NewFiles(),
            (std::vector<std::string>{uploaded[0].stream, uploaded[1].stream, uploaded[2].stream}));
}

TEST_F(UploadTest, TicketIsForOneUpload) {
  const auto ticket = Ticket(1);
  EXPECT_EQ(SendOutcome(ticket, Body(ticket, {"x"})), "200");
  EXPECT_EQ(SendOutcome(ticket, Body(ticket, {"y"})), "404 no-such-ticket");
  EXPECT_EQ(ReadFile(directory_ / "data/content" / ticket["streamIds"][0].GetString()), "x");
}

TEST_F(UploadTest, TicketIsForWhoAskedForIt) {
  const auto ticket = Ticket(1);
  EXPECT_EQ(SendOutcome(ticket, Body(ticket, {"x"}), "bruno"), "404 no-such-ticket");
  EXPECT_EQ(SendOutcome(ticket, Body(ticket, {"x"})), "200");
}

TEST_F(UploadTest, TwoUploadsOnOneTicketAreTakenOnce) {
  const auto ticket = Ticket(1);
  Request request;
  request.method = "POST";
  request.target = std::string(ticket["uploadUrl"].GetString()).substr(20);
  request.user = "anna";
  request.nonce = Nonce();
  request.contentType = "multipart/form-data; boundary=BOUNDARY";
  Response refusal;
  const auto first = simulator_->BeginUpload(request, refusal);
  const auto second = simulator_->BeginUpload(request, refusal);
  ASSERT_TRUE(first);
  ASSERT_TRUE(second);
  first->Receive(Body(ticket, {"first"}));
  second->Receive(Body(ticket, {"second"}));
  EXPECT_EQ(simulator_->FinishUpload(*second, request).status, 200);
  EXPECT_EQ(simulator_->FinishUpload(*first, request).status, 409);
  EXPECT_EQ(ReadFile(directory_ / "data/content" / ticket["streamIds"][0].GetString()), "second");
}

TEST_F(UploadTest, MissingFileGetsNoReceiptAndTheOthersDo) {
  const auto ticket = Ticket(2);
  std::string body = Body(ticket, {"first", "second"});
  const std::string second = std::string("name=\"") + ticket["fileNames"][1].GetString();
  const auto begin = body.rfind("\r\n--BOUNDARY\r\n", body.find(second));
  body.erase(begin, body.rfind("\r\n--BOUNDARY--") - begin);
  const Response response = Send(ticket, body);
  ASSERT_EQ(response.status, 200) << response.body;
  rapidjson::Document answer;
  answer.Parse(response.body.c_str());
  ASSERT_EQ(answer["contentInfos"].Size(), 1U);
  EXPECT_EQ(std::to_string(answer["contentInfos"][0]["streamId"].GetInt64()),
            ticket["streamIds"][0].GetString());
}

TEST_F(UploadTest, BodyCutAnywhereLeavesNothingAndTheTicketGood) {
  const auto ticket = Ticket(1);
  const std::string body = Body(ticket, {"some bytes"});
  for (std::size_t length = 0; length < body.size(); ++length) {
    ASSERT_EQ(SendOutcome(ticket, body.substr(0, length)), "400 broken-multipart") << length;
  }
  EXPECT_EQ(NewFiles(), std::vector<std::string>{});
  EXPECT_EQ(SendOutcome(ticket, body), "200");
}

TEST_F(UploadTest, PartsThatTheTicketDoesNotNameAreRefused) {
  const auto ticket = Ticket(1);
  const std::string good = Body(ticket, {"x"});
  const std::string stream = ticket["streamIds"][0].GetString();
  const std::string name = ticket["fileNames"][0].GetString();
  const auto replaced = [&](const std::string& old, const std::string& with) {
    std::string body = good;
    body.replace(body.find(old), old.size(), with);
    return body;
  };
  EXPECT_EQ(SendOutcome(ticket, replaced("http://sim", "http://sam")), "400 bad-upload");
  EXPECT_EQ(SendOutcome(ticket, replaced(stream + ":" + name, "1:" + name)), "400 bad-upload");
  EXPECT_EQ(SendOutcome(ticket, replaced(name + ":" + stream + ";", name + ":" + stream)), "400 bad-upload");
  EXPECT_EQ(SendOutcome(ticket, replaced(name + ":" + stream + ";", name + ":1;")), "400 bad-upload");
  EXPECT_EQ(SendOutcome(ticket, replaced(stream + ":" + name + ":" + stream + ";", "")), "400 unknown-part");
  EXPECT_EQ(SendOutcome(ticket, replaced("name=\"" + name, "name=\"other")), "400 unknown-part");
  EXPECT_EQ(SendOutcome(ticket, replaced("name=\"Master_URL\"", "name=\"unknown\"")), "400 unknown-part");
  EXPECT_EQ(SendOutcome(ticket, replaced("http://sim", std::string(70'000, 'x'))), "400 bad-upload");
  std::string twice = good;
  const auto part = good.rfind("\r\n--BOUNDARY\r\n");
  twice.insert(part, good.substr(part, good.rfind("\r\n--BOUNDARY--") - part));
  EXPECT_EQ(SendOutcome(ticket, twice), "400 unknown-part");
  EXPECT_EQ(NewFiles(), std::vector<std::string>{});
}

TEST_F(UploadTest, UploadNeedsTheNonceABoundaryAndAUser) {
  const auto ticket = Ticket(1);
  Request request;
  request.method = "POST";
  request.target = std::string(ticket["uploadUrl"].GetString()).substr(20);
  request.user = "anna";
  request.contentType = "multipart/form-data; boundary=BOUNDARY";
  Response refusal;
  EXPECT_FALSE(simulator_->BeginUpload(request, refusal));
  EXPECT_EQ(refusal.status, 403);
  request.nonce = Nonce();
  request.contentType = "application/octet-stream";
  EXPECT_FALSE(simulator_->BeginUpload(request, refusal));
  EXPECT_EQ(refusal.status, 415);
  request.user.clear();
  EXPECT_FALSE(simulator_->BeginUpload(request, refusal));
  EXPECT_EQ(refusal.status, 401);
  request.user = "anna";
  request.target = "/elsewhere";
  EXPECT_FALSE(simulator_->BeginUpload(request, refusal));
  EXPECT_EQ(refusal.status, 404);
}

TEST_F(UploadTest, WhatAKilledServerLeftHalfReceivedIsRemovedAtTheNextStart) {
  Start();
  { std::ofstream(directory_ / "data/content/incoming-abcdef") << "half"; }
  Start();
  EXPECT_FALSE(std::filesystem::exists(directory_ / "data/content/incoming-abcdef"));
  EXPECT_TRUE(std::filesystem::exists(directory_ / "data/content/10010"));
}

TEST_F(WriteTest, DatabaseWithAnOpenTicketIsSound) {
  Ticket(3);
  simulator_.reset();
  Database database((directory_ / "data/vantry-sim.db").string());
  auto check = database.Prepare("PRAGMA integrity_check");
  ASSERT_TRUE(check.Step());
  EXPECT_EQ(check.Text(0), "ok");
}

TEST_F(WriteTest, TicketFromBeforeTheReorderedTableIsStillTaken) {
  const auto ticket = Ticket(1);
  simulator_.reset();
  {
    Database database((directory_ / "data/vantry-sim.db").string());
    database.Execute(
        "CREATE TABLE old(ticket INTEGER NOT NULL, stream INTEGER NOT NULL UNIQUE, file_name TEXT NOT NULL,"
        " PRIMARY KEY(ticket, file_name)) WITHOUT ROWID;"
        "INSERT INTO old SELECT ticket, stream, file_name FROM ticket_streams;"
        "DROP TABLE ticket_streams; ALTER TABLE old RENAME TO ticket_streams;"
        "ALTER TABLE streams DROP COLUMN generator;"
        "PRAGMA user_version = 4;");
  }
  Start();
  EXPECT_EQ(Send(ticket, Body(ticket, {"bytes"})).status, 200);
}

}  // namespace
}  // namespace vantry_sim

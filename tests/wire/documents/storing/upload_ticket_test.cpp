#include "documents/storing/upload_ticket.h"

#include <stdlib.h>

#include "base/result.h"
#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {
namespace {

using lxservices::cms_interface::HandOver;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string olderFactoryPath = "servlet/rest/content/creationFactory";

class UploadTicketing : public FlowTest {
 protected:
  bool Request(std::size_t count) { return HandOver(RequestUploadTicket(Begin(connection), count), ticket); }
  UploadTicket ticket;
};

TEST_F(UploadTicketing, AsksForSoManyFilesByteForByte) {
  ThenNonce();
  transport.Then(200, Ticket(2));
  EXPECT_TRUE(Request(2));
  EXPECT_EQ(transport.requests(), (Requests{ReadNonce(), Write(factoryPath, "{\n\"noOfFiles\":2\n}")}));
  EXPECT_EQ(ticket.masterUrl, "https://plm.example/m");
  EXPECT_EQ(ticket.uploadUrl, "https://files.example:8443/up/load?k=1");
  EXPECT_THAT(ticket.fileNames, ElementsAre("f1", "f2"));
  EXPECT_THAT(ticket.streamIds, ElementsAre("901", "902"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(UploadTicketing, GoesToTheOlderAddressWithTheSameBodyOnlyAfter404) {
  ThenNonce();
  transport.Then(404, "no such servlet").Then(200, Ticket(12));
  EXPECT_TRUE(Request(12));
  EXPECT_EQ(transport.requests(), (Requests{ReadNonce(), Write(factoryPath, "{\n\"noOfFiles\":12\n}"),
                                            Write(olderFactoryPath, "{\n\"noOfFiles\":12\n}")}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(UploadTicketing, TracesTheSecondRefusalAlone) {
  ThenNonce();
  transport.Then(404, "first").Then(404, "second");
  EXPECT_FALSE(Request(1));
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath), Post(olderFactoryPath)}));
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to update document with error 404 : second\n")});
}

TEST_F(UploadTicketing, EndsAtAnyOtherRefusalOfTheFirstAddress) {
  ThenNonce();
  Lines lines{Get(noncePath)};
  for (const int status : {500, 403, 400, 410, 405, 301}) {
    trace.Clear();
    transport.Then(status, "boom");
    EXPECT_FALSE(Request(1));
    lines.push_back(Post(factoryPath));
    EXPECT_EQ(trace.lines(),
              Traces{Error("Failed to update document with error " + std::to_string(status) + " : boom\n")});
  }
  EXPECT_EQ(transport.lines(), lines);
}

TEST_F(UploadTicketing, TracesAServerThatGivesNoAnswer) {
  ThenNonce();
  transport.ThenFail(du::http::ErrorCode::ProtocolFailure);
  EXPECT_FALSE(Request(1));
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to update document with error -1 : \n")});
}

TEST_F(UploadTicketing, TracesABodyThatIsNoJson) {
  ThenNonce();
  for (const char* body : {"", "<html>", R"({"masterUrl":"m","uploadUrl")", "{}}"}) {
    trace.Clear();
    transport.Then(200, body);
    EXPECT_FALSE(Request(1));
    EXPECT_EQ(trace.lines(), Traces{Error("Failed to update document with error 200 : \n")}) << body;
  }
}

TEST_F(UploadTicketing, TakesNoIncompleteTicketAndTracesNothing) {
  ThenNonce();
  for (const char* body :
       {"{}", "[]", "7", "null", R"({"masterUrl":"","uploadUrl":"u","fileNames":["f"],"streamIds":["1"]})",
        R"({"masterUrl":"m","uploadUrl":"","fileNames":["f"],"streamIds":["1"]})",
        R"({"masterUrl":"m","uploadUrl":"u","fileNames":[],"streamIds":["1"]})",
        R"({"masterUrl":"m","uploadUrl":"u","fileNames":["f"],"streamIds":[]})",
        R"({"masterUrl":7,"uploadUrl":"u","fileNames":["f"],"streamIds":["1"]})",
        R"({"masterUrl":"m","uploadUrl":null,"fileNames":["f"],"streamIds":["1"]})",
        R"({"masterUrl":"m","uploadUrl":"u","fileNames":"f","streamIds":["1"]})",
        R"({"masterUrl":"m","uploadUrl":"u","fileNames":["f"],"streamIds":{"1":1}})",
        R"({"MasterUrl":"m","uploadUrl":"u","fileNames":["f"],"streamIds":["1"]})"}) {
    ticket = {};
    transport.Then(200, body);
    EXPECT_FALSE(Request(1)) << body;
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(UploadTicketing, PassesOverElementsThatAreNoTexts) {
  ThenNonce();
  transport.Then(201, R"({"streamIds":[1,"901",null],"fileNames":["f1",{}],"more":1,"uploadUrl":"u",
                          "masterUrl":"m"})");
  EXPECT_TRUE(Request(1));
  EXPECT_THAT(ticket.fileNames, ElementsAre("f1"));
  EXPECT_THAT(ticket.streamIds, ElementsAre("901"));
}

TEST_F(UploadTicketing, TakesTheLaterOfTwoTextsAndAllOfTwoLists) {
  ThenNonce();
  transport.Then(200, R"({"masterUrl":"m1","fileNames":["f1"],"uploadUrl":"u1","streamIds":["1"],
                          "masterUrl":"m2","fileNames":["f2"],"uploadUrl":"u2","streamIds":["2","3"]})");
  EXPECT_TRUE(Request(1));
  EXPECT_EQ(ticket.masterUrl, "m2");
  EXPECT_EQ(ticket.uploadUrl, "u2");
  EXPECT_THAT(ticket.fileNames, ElementsAre("f1", "f2"));
  EXPECT_THAT(ticket.streamIds, ElementsAre("1", "2", "3"));
}

TEST_F(UploadTicketing, HoldsItsBodyInAFileMeanwhileAndNotLonger) {
  ThenNonce();
  Lines during;
  transport.Then({.status = 200, .body = Ticket(1), .afterwards = [&] { during = Leftovers(); }});
  EXPECT_TRUE(Request(1));
  ASSERT_EQ(during.size(), 1u);
  EXPECT_TRUE(during.front().starts_with("upload") && during.front().ends_with(".json")) << during.front();
  EXPECT_THAT(Leftovers(), IsEmpty());
}

TEST_F(UploadTicketing, AsksForTheNonceAgainBeforeTheOlderAddress) {
  transport.Then(500).Then(404);
  ThenNonce();
  transport.Then(200, Ticket(1));
  EXPECT_TRUE(Request(1));
  EXPECT_EQ(transport.requests(),
            (Requests{ReadNonce(),
                      {serverUrl, Post(factoryPath),
                       "Content-Type: application/json\r\nAccept: application/json", "{\n\"noOfFiles\":1\n}"},
                      ReadNonce(),
                      Write(olderFactoryPath, "{\n\"noOfFiles\":1\n}")}));
}

TEST_F(UploadTicketing, SendsNothingWithoutAFileForItsBody) {
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  EXPECT_FALSE(Request(1));
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test

#include "documents/storing/content_upload.h"

#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>

#include "base/result.h"
#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;

class ContentUpload : public FlowTest {
 protected:
  Status Upload(const std::vector<std::string>& paths) {
    return HandOver(UploadContents(Begin(connection), paths, {}), contents);
  }
  // What was uploaded, as "stream receipt".
  [[nodiscard]] Lines Uploaded() const {
    Lines lines;
    for (const auto& content : contents) {
      lines.push_back(std::to_string(content.streamId) + " " + content.encodedInfo);
    }
    return lines;
  }
  [[nodiscard]] std::string SentBody() const { return transport.requests().back().body.value_or("no body"); }

  std::vector<UploadedContent> contents;
};

TEST_F(ContentUpload, PostsOneFileToTheTicketsAddressByteForByte) {
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, R"({"contentInfos":[{"streamId":901,"encodedInfo":"aGVsbG8"}]})");
  EXPECT_EQ(Upload({MakeLocal("a.lxz", "ABC")}), Ok);
  EXPECT_EQ(transport.requests(),
            (Requests{ReadNonce(),
                      Write(factoryPath, "{\n\"noOfFiles\":1\n}"),
                      {uploadServer, uploadLine, uploadHeaders,
                       "\r\n--xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary\r\n"
                       "Content-Disposition: form-data; name=\"Master_URL\"\r\n\r\nhttps://plm.example/m"
                       "\r\n--xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary\r\n"
                       "Content-Disposition: form-data; name=\"CacheDescriptor_array\"\r\n\r\n901:f1:901;"
                       "\r\n--xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary\r\n"
                       "Content-Type: application/octet-stream\r\n"
                       "Content-Disposition: form-data; name=\"f1\"; filename=\"a.lxz\"\r\n\r\nABC"
                       "\r\n--xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary--"}}));
  EXPECT_THAT(Uploaded(), ElementsAre("901 aGVsbG8"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ContentUpload, NamesAnotherBoundaryForAFileThatHoldsTheUsualOne) {
  const std::string usual = "xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary";
  const std::string bytes = "ABC\r\n--" + usual + "--\r\nDEF";
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1));
  EXPECT_EQ(Upload({MakeLocal("a", bytes)}), Ok);
  const std::string before = "Content-Type: multipart/form-data; boundary=";
  const std::string headers = transport.requests().back().headers;
  ASSERT_TRUE(headers.starts_with(before)) << headers;
  const std::string boundary = headers.substr(before.size(), headers.find("\r\n") - before.size());
  EXPECT_NE(boundary, usual);
  EXPECT_TRUE(SentBody().ends_with("filename=\"a\"\r\n\r\n" + bytes + "\r\n--" + boundary + "--"))
      << SentBody();
  EXPECT_TRUE(SentBody().starts_with("\r\n--" + boundary + "\r\n")) << SentBody();
}

TEST_F(ContentUpload, SendsSeveralFilesInTheOrderOfThePaths) {
  ThenNonce();
  transport.Then(200, Ticket(3)).Then(200, Receipts(3));
  EXPECT_EQ(Upload({MakeLocal("b", "bb"), MakeLocal("a", ""), MakeLocal("c", "c\r\n")}), Ok);
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;902:f2:902;903:f3:903;",
                                  {{"f1", "b", "bb"}, {"f2", "a", ""}, {"f3", "c", "c\r\n"}}));
  EXPECT_THAT(Uploaded(), ElementsAre("901 r1", "902 r2", "903 r3"));
}

TEST_F(ContentUpload, CarriesTheNonceAndTheMarkToAnotherHostAndAsksForCredentialsThere) {
  ThenNonce();
  transport.Then(200, Ticket(1)).Then({.status = 200, .body = Receipts(1), .demands = 1});
  EXPECT_EQ(Upload({MakeLocal("a", "A")}), Ok);
  EXPECT_EQ(transport.requests().back().headers, uploadHeaders);
  EXPECT_EQ(transport.clientMarks().back(), "X-Zvk-Connected: 1");
  EXPECT_EQ(askedFor, Lines{uploadServer});
}

TEST_F(ContentUpload, MakesAConnectionOfItsOwnEvenToTheSameServer) {
  ThenNonce();
  transport
      .Then(200, R"({"masterUrl":"m","uploadUrl":"https://plm.example/vt/up","fileNames":["f"],
                     "streamIds":["1"]})")
      .Then(200, "{}");
  EXPECT_EQ(Upload({MakeLocal("a", "A")}), Ok);
  EXPECT_EQ(transport.connections(), (Lines{serverUrl, "https://plm.example"}));
  EXPECT_EQ(transport.requests().back().line, "POST /vt/up");
}

TEST_F(ContentUpload, GoesToAnAddressWithoutAPath) {
  ThenNonce();
  transport
      .Then(200, R"({"masterUrl":"m","uploadUrl":"https://files.example","fileNames":["f"],
                     "streamIds":["1"]})")
      .Then(200, "{}");
  EXPECT_EQ(Upload({MakeLocal("a", "A")}), Ok);
  EXPECT_EQ(transport.requests().back().server, "https://files.example");
  EXPECT_EQ(transport.requests().back().line, "POST ");
}

TEST_F(ContentUpload, TracesAnAddressWithoutAServer) {
  ThenNonce();
  transport.Then(200, R"({"masterUrl":"m","uploadUrl":"/up","fileNames":["f"],"streamIds":["1"]})");
  EXPECT_EQ(Upload({MakeLocal("a", "A")}), Refused);
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath)}));
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to upload document with error -1 : \n")});
}

TEST_F(ContentUpload, TakesTheFirstOfTooManyPlacesInTheTicket) {
  ThenNonce();
  transport.Then(200, Ticket(3)).Then(200, Receipts(3));
  EXPECT_EQ(Upload({MakeLocal("a", "A")}), Ok);
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;", {{"f1", "a", "A"}}));
  EXPECT_THAT(Uploaded(), ElementsAre("901 r1"));
}

TEST_F(ContentUpload, IsRefusedBeforeTheUploadByATicketWithTooFewPlaces) {
  ThenNonce();
  transport.Then(200, Ticket(1))
      .Then(200, R"({"masterUrl":"m","uploadUrl":"https://f/u","fileNames":["f","g"],"streamIds":["1"]})")
      .Then(200, R"({"masterUrl":"m","uploadUrl":"https://f/u","fileNames":["f"],"streamIds":["1","2"]})");
  const std::vector<std::string> paths{MakeLocal("a", "A"), MakeLocal("b", "B")};
  for (int times = 0; times < 3; ++times) EXPECT_EQ(Upload(paths), Refused);
  EXPECT_EQ(transport.lines(),
            (Lines{Get(noncePath), Post(factoryPath), Post(factoryPath), Post(factoryPath)}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ContentUpload, LeavesOutTheFileThatCannotBeReadButNotItsPlace) {
  ThenNonce();
  transport.Then(200, Ticket(2)).Then(200, Receipts(1));
  EXPECT_EQ(Upload({MakeLocal("a", "A"), Local("missing")}), Ok);
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;902:f2:902;", {{"f1", "a", "A"}}));
  EXPECT_THAT(Uploaded(), ElementsAre("901 r1", "0 "));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ContentUpload, PutsReceiptsIntoTheOrderOfThePaths) {
  ThenNonce();
  transport.Then(200, Ticket(3))
      .Then(200, R"({"contentInfos":[{"streamId":903,"encodedInfo":"c"},{"streamId":901,"encodedInfo":"a"},
                     {"streamId":777,"encodedInfo":"nobody's"},{"streamId":902,"encodedInfo":"b"}]})");
  EXPECT_EQ(Upload({MakeLocal("a", ""), MakeLocal("b", ""), MakeLocal("c", "")}), Ok);
  EXPECT_THAT(Uploaded(), ElementsAre("901 a", "902 b", "903 c"));
}

TEST_F(ContentUpload, HasAnEntryForEachPathWhateverTheReceipts) {
  ThenNonce();
  const std::string path = MakeLocal("a", "A");
  for (const char* answer :
       {R"({"contentInfos":[]})", "{}", "[]", "null", R"({"contentInfos":{}})",
        R"({"contentInfos":[7,null]})", R"({"contentInfos":[{"streamId":"901","encodedInfo":"x"}]})",
        R"({"contentInfos":[{"streamId":-901,"encodedInfo":"x"}]})",
        R"({"contentInfos":[{"streamId":901.0,"encodedInfo":"x"}]})",
        R"({"contentInfos":[{"streamId":901,"encodedInfo":7}]})", R"({"contentInfos":[{"streamId":901}]})"}) {
    contents.assign(3, {5, "before"});
    transport.Then(200, Ticket(2)).Then(200, answer);
    EXPECT_EQ(Upload({path, path}), Ok);
    EXPECT_THAT(Uploaded(), ElementsAre("0 ", "0 ")) << answer;
  }
}

TEST_F(ContentUpload, GivesAStreamThatStandsTwiceToTheLaterFile) {
  ThenNonce();
  transport
      .Then(200, R"({"masterUrl":"https://plm.example/m","uploadUrl":"https://f/u","fileNames":["f","g"],
                     "streamIds":["7"," 7"]})")
      .Then(200, R"({"contentInfos":[{"streamId":7,"encodedInfo":"x"}]})");
  EXPECT_EQ(Upload({MakeLocal("a", "A"), MakeLocal("b", "B")}), Ok);
  EXPECT_EQ(SentBody(), Multipart("7:f:7; 7:g: 7;", {{"f", "a", "A"}, {"g", "b", "B"}}));
  EXPECT_THAT(Uploaded(), ElementsAre("0 ", "7 x"));
}

TEST_F(ContentUpload, ReadsStreamNumbersUpTo64Bits) {
  ThenNonce();
  transport
      .Then(200, R"({"masterUrl":"m","uploadUrl":"https://f/u","fileNames":["f"],
                     "streamIds":["18446744073709551615"]})")
      .Then(200, R"({"contentInfos":[{"streamId":18446744073709551615,"encodedInfo":"x"}]})");
  EXPECT_EQ(Upload({MakeLocal("a", "A")}), Ok);
  EXPECT_THAT(Uploaded(), ElementsAre("18446744073709551615 x"));
}

TEST_F(ContentUpload, ReadsStreamNumbersAsFarAsTheyAreSome) {
  ThenNonce();
  transport
      .Then(200,
            R"({"masterUrl":"m","uploadUrl":"https://f/u","fileNames":["f","g"],"streamIds":["901x","-1"]})")
      .Then(200, R"({"contentInfos":[{"streamId":18446744073709551615,"encodedInfo":"y"},
                     {"streamId":901,"encodedInfo":"x"}]})");
  EXPECT_EQ(Upload({MakeLocal("a", "A"), MakeLocal("b", "B")}), Ok);
  EXPECT_THAT(Uploaded(), ElementsAre("901 x", "18446744073709551615 y"));
}

TEST_F(ContentUpload, KeepsTheLaterOfTwoReceiptsForOneStream) {
  ThenNonce();
  transport.Then(200, Ticket(1))
      .Then(200,
            R"({"contentInfos":[{"streamId":901,"encodedInfo":"x"},{"streamId":901,"encodedInfo":"y"}]})");
  EXPECT_EQ(Upload({MakeLocal("a", "A")}), Ok);
  EXPECT_THAT(Uploaded(), ElementsAre("901 y"));
}

// Nothing between here and the host takes these up: a server that gives out no numbers cannot be served.
TEST_F(ContentUpload, RaisesForStreamsThatAreNoNumbersAndLeavesNothingBehind) {
  ThenNonce();
  transport.Then(200, R"({"masterUrl":"m","uploadUrl":"https://f/u","fileNames":["f"],"streamIds":["x1"]})")
      .Then(200, R"({"masterUrl":"m","uploadUrl":"https://f/u","fileNames":["f"],
                     "streamIds":["18446744073709551616"]})");
  const std::string path = MakeLocal("a", "A");
  try {
    (void)Upload({path});
    ADD_FAILURE() << "nothing was raised";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "invalid stoull argument");
  }
  try {
    (void)Upload({path});
    ADD_FAILURE() << "nothing was raised";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "stoull argument out of range");
  }
  EXPECT_THAT(Leftovers(), IsEmpty());
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath), Post(factoryPath)}));
}

TEST_F(ContentUpload, TellsOfAServersLimitApartFromAnyOtherRefusal) {
  ThenNonce();
  transport.Then(200, Ticket(1))
      .Then({.status = 413, .body = "", .error = du::http::ErrorCode::TooLarge})
      .Then(200, Ticket(1))
      .Then(413, "too large");
  const std::string path = MakeLocal("a", "A");
  EXPECT_EQ(Upload({path}), TooLarge);
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to update document: maximum file size exceeded\n")});
  trace.Clear();
  EXPECT_EQ(Upload({path}), Refused);
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to upload document with error 413 : too large\n")});
}

// A ticket says nothing of the files' sizes.
TEST_F(ContentUpload, TakesALimitOnTheTicketsRequestForARefusal) {
  ThenNonce();
  transport.Then({.status = 413, .body = "", .error = du::http::ErrorCode::TooLarge});
  EXPECT_EQ(Upload({MakeLocal("a", "A")}), Refused);
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to update document with error -1 : \n")});
}

TEST_F(ContentUpload, TracesARefusalAndABodyThatIsNoJson) {
  ThenNonce();
  const std::string path = MakeLocal("a", "A");
  contents.assign(1, {5, "before"});
  transport.Then(200, Ticket(1)).Then(500, "boom");
  EXPECT_EQ(Upload({path}), Refused);
  transport.Then(200, Ticket(1)).ThenFail(du::http::ErrorCode::TimedOut);
  EXPECT_EQ(Upload({path}), Refused);
  transport.Then(200, Ticket(1)).Then(200, "<html>");
  EXPECT_EQ(Upload({path}), Refused);
  transport.Then(200, Ticket(1)).Then(204);
  EXPECT_EQ(Upload({path}), Refused);
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to upload document with error 500 : boom\n"),
                                   Error("Failed to upload document with error -1 : \n"),
                                   Error("Failed to upload document with error 200 : \n"),
                                   Error("Failed to upload document with error 204 : \n")}));
  EXPECT_THAT(Uploaded(), ElementsAre("5 before"));
}

TEST_F(ContentUpload, IsRefusedWithoutATicket) {
  ThenNonce();
  transport.Then(500, "boom");
  EXPECT_EQ(Upload({MakeLocal("a", "A")}), Refused);
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath)}));
}

TEST_F(ContentUpload, IsRefusedSilentlyWithoutAFileForTheTicketsBody) {
  const std::string path = MakeLocal("a", "A");
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  EXPECT_EQ(Upload({path}), Refused);
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ContentUpload, FailsOfItselfWithoutAFileForTheBody) {
  ThenNonce();
  const std::string path = MakeLocal("a", "A");
  const std::string gone = directory.File("local/gone");
  std::filesystem::create_directory(gone);
  setenv("TMPDIR", gone.c_str(), 1);
  // The directory goes while the ticket is on its way.
  transport.Then({.status = 200, .body = Ticket(1), .afterwards = [&] {
                    std::filesystem::rename(gone, directory.File("local/elsewhere"));
                  }});
  EXPECT_EQ(Upload({path}), ServerError);
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath)}));
}

TEST_F(ContentUpload, TellsTheProgressOfTheBodyAlone) {
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1));
  std::vector<std::size_t> told;
  std::size_t total = 0;
  EXPECT_EQ(HandOver(UploadContents(Begin(connection), {MakeLocal("a", std::string(100'000, 'x'))},
                                    [&](std::size_t done, std::size_t all) {
                                      told.push_back(done);
                                      total = all;
                                      return true;
                                    }),
                     contents),
            Ok);
  ASSERT_THAT(told, testing::Not(IsEmpty()));
  EXPECT_EQ(told.back(), SentBody().size());
  EXPECT_EQ(total, SentBody().size());
}

TEST_F(ContentUpload, HoldsOneStagingFileAndNoneBehind) {
  ThenNonce();
  Lines during;
  transport.Then(200, Ticket(1)).Then({.status = 200, .body = Receipts(1), .afterwards = [&] {
                                         during = Leftovers();
                                       }});
  EXPECT_EQ(Upload({MakeLocal("a", "A")}), Ok);
  ASSERT_EQ(during.size(), 1u);
  EXPECT_TRUE(during.front().starts_with("upload") && during.front().ends_with(".multipart"))
      << during.front();
}

TEST_F(ContentUpload, SendsOddFileNamesAsTheyStand) {
  ThenNonce();
  const std::string longName(255, 'n');
  const std::vector<std::string> names{"?%*:|\"<> \\", longName, "Größe 図.lxz"};
  std::vector<std::string> paths;
  std::vector<Part> parts;
  for (std::size_t index = 0; index < names.size(); ++index) {
    paths.push_back(MakeLocal(names[index], names[index]));
    parts.push_back({"f" + std::to_string(index + 1), names[index], names[index]});
  }
  transport.Then(200, Ticket(3)).Then(200, Receipts(3));
  EXPECT_EQ(Upload(paths), Ok);
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;902:f2:902;903:f3:903;", parts));
}

class OptionalPaths : public ContentUpload {};

TEST_F(OptionalPaths, LeaveOutTheOnesThatAreNotThere) {
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1));
  const std::string path = MakeLocal("a", "A");
  EXPECT_EQ(HandOver(UploadPaths(Begin(connection), {path.c_str(), "", ""}, {}), contents), Ok);
  EXPECT_EQ(transport.requests()[1].body, "{\n\"noOfFiles\":1\n}");
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;", {{"f1", "a", "A"}}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(OptionalPaths, WarnOfAnOnlyPathBehindAGap) {
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1));
  const std::string path = MakeLocal("b", "B");
  EXPECT_EQ(HandOver(UploadPaths(Begin(connection), {"", path.c_str()}, {}), contents), Ok);
  EXPECT_EQ(transport.requests()[1].body, "{\n\"noOfFiles\":1\n}");
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;", {{"f1", "b", "B"}}));
  EXPECT_EQ(trace.lines(), Traces{Warning("Unexpected file path\n")});
}

TEST_F(OptionalPaths, WarnOnceOfAPathBehindAGap) {
  ThenNonce();
  transport.Then(200, Ticket(2)).Then(200, Receipts(2));
  const std::string first = MakeLocal("a", "A");
  const std::string second = MakeLocal("b", "B");
  EXPECT_EQ(HandOver(UploadPaths(Begin(connection), {"", first.c_str(), "", second.c_str()}, {}), contents),
            Ok);
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;902:f2:902;", {{"f1", "a", "A"}, {"f2", "b", "B"}}));
  EXPECT_EQ(trace.lines(), Traces{Warning("Unexpected file path\n")});
}

TEST_F(OptionalPaths, OfWhichNoneIsThereAskForNoFiles) {
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, "{}");
  EXPECT_EQ(HandOver(UploadPaths(Begin(connection), {"", ""}, {}), contents), Ok);
  EXPECT_EQ(transport.requests()[1].body, "{\n\"noOfFiles\":0\n}");
  EXPECT_EQ(SentBody(), Multipart("", {}));
  EXPECT_THAT(contents, IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test

#include "documents/reading/document_download.h"

#include <stdlib.h>
#include <sys/stat.h>

#include <utility>

#include "base/result.h"
#include "tests/wire/documents/connected_test.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using namespace vtdirect_test;

constexpr const char* contentUrl = "https://files.example:8443/store/f%201?ticket=7&x=1";

std::string DocumentWith(const std::string& contentSections) {
  return R"({"id":"D1","revision":"B","iteration":"3","epmMaster":{"cadName":"fork.lxz"},
             "cadContent":{"contentSections":[)" +
         contentSections + "]}}";
}

std::string DocumentAt(const std::string& url) {
  return DocumentWith(R"({"fileSize":5,"contentUrl":[")" + url + R"("]})");
}

// The files that the library has opened by the platform.
Lines& OpenedFiles() {
  static Lines files;
  return files;
}

class Download : public ConnectedTest {
 protected:
  bool Run(const char* id, du::http::ProgressFunction progress = {}) {
    return HandOver(
        DownloadDocument(Begin(connection), ParseCheckoutId(id), file.c_str(), std::move(progress)), info);
  }
  void ExpectFailure(const std::string& answer) {
    EXPECT_FALSE(Run("D1"));
    EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to download file D1 with error: " + answer}}));
    EXPECT_EQ(info.cadName, "");
  }

  std::string file = directory.File("copy");
  FileInfo info;
};

TEST_F(Download, ReadsTheDocumentAndFetchesItsContentOverAConnectionOfItsOwn) {
  transport.Then(200, DocumentAt(contentUrl)).Then(200, "bytes");
  EXPECT_TRUE(Run("D1"));
  EXPECT_EQ(transport.requests(),
            (Requests{Read("servlet/rest/v1/dkm/documents/D1"),
                      {"https://files.example:8443", "GET /store/f%201?ticket=7&x=1", "", {}}}));
  EXPECT_EQ(transport.connections(), (Lines{serverUrl, "https://files.example:8443"}));
  EXPECT_EQ(transport.clientMarks(), (Lines{"X-Zvk-Connected: 1", "X-Zvk-Connected: 1"}));
  EXPECT_EQ(ReadFile(file), "bytes");
  EXPECT_EQ(directory.Entries(), Lines{"copy"});
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(Download, TellsTheDocumentsSummaryUnderTheIdThatCameIn) {
  transport.Then(200, DocumentAt(contentUrl)).Then(200, "bytes");
  EXPECT_TRUE(Run("D1|W2"));
  EXPECT_EQ(info.id, "D1|W2");
  EXPECT_EQ(info.version, "B.3");
  EXPECT_EQ(info.cadName, "fork.lxz");
  EXPECT_EQ(info.size, 5u);
}

TEST_F(Download, OfATemporaryCheckoutReadsTheDocumentAsItWasBefore) {
  transport.Then(200, DocumentAt(contentUrl)).Then(200, "bytes");
  EXPECT_TRUE(Run("D1|W2|D3|T"));
  EXPECT_EQ(transport.lines().front(), "GET /vt/servlet/rest/v1/dkm/documents/D1");
  EXPECT_EQ(info.id, "D1|W2|D3|T");
}

TEST_F(Download, ReplacesWhatWasInTheFile) {
  WriteFile(file, "something much longer than what comes");
  transport.Then(200, DocumentAt(contentUrl)).Then(200, "bytes");
  EXPECT_TRUE(Run("D1"));
  EXPECT_EQ(ReadFile(file), "bytes");
}

TEST_F(Download, TakesAnEmptyContent) {
  transport.Then(200, DocumentAt(contentUrl)).Then(200, "");
  EXPECT_TRUE(Run("D1"));
  EXPECT_EQ(ReadFile(file), "");
}

TEST_F(Download, OfAUrlWithoutAPathAsksForNothingBehindTheServer) {
  transport.Then(200, DocumentAt("https://files.example")).Then(200, "bytes");
  EXPECT_TRUE(Run("D1"));
  EXPECT_EQ(transport.requests().back(), (SentRequest{"https://files.example", "GET ", "", {}}));
}

TEST_F(Download, AsksForCredentialsWithTheContentsServer) {
  transport.Then(200, DocumentAt(contentUrl)).Then(Answer{200, "bytes", du::http::ErrorCode::Done, 1});
  EXPECT_TRUE(Run("D1"));
  EXPECT_EQ(askedFor, Lines{"https://files.example:8443"});
}

TEST_F(Download, TracesADocumentThatIsNotFoundUnderTheWholeId) {
  transport.Then(404, "gone");
  EXPECT_FALSE(Run("D1|W2|D3|T"));
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to locate document D1|W2|D3|T on server\n"}}));
  EXPECT_EQ(transport.requests().size(), 1u);
  EXPECT_TRUE(directory.Entries().empty());
}

TEST_F(Download, TracesADocumentThatCannotBeAskedFor) {
  transport.ThenFail(du::http::ErrorCode::NoConnection);
  EXPECT_FALSE(Run("D1"));
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to locate document D1 on server\n"}}));
}

TEST_F(Download, FailsForADocumentWithoutSections) {
  transport.Then(200, DocumentWith(""));
  ExpectFailure("");
  EXPECT_EQ(transport.requests().size(), 1u);
  EXPECT_TRUE(directory.Entries().empty());
}

TEST_F(Download, FailsForAFirstSectionWithoutAUrl) {
  transport.Then(200, DocumentWith(R"({"id":"S1"},{"contentUrl":["https://files.example/2"]})"));
  ExpectFailure("");
  EXPECT_EQ(transport.requests().size(), 1u);
}

TEST_F(Download, FailsForAFirstSectionThatIsNoObject) {
  transport.Then(200, DocumentWith(R"(7,{"contentUrl":["https://files.example/2"]})"));
  ExpectFailure("");
  EXPECT_EQ(transport.requests().size(), 1u);
}

TEST_F(Download, NeverFetchesSecondaryContents) {
  transport.Then(200, R"({"secondaryContents":[{"contentUrl":["https://files.example/2"]}]})");
  ExpectFailure("");
  EXPECT_EQ(transport.requests().size(), 1u);
}

TEST_F(Download, WithoutAUrlTracesWhatIsInTheFile) {
  WriteFile(file, "left from before");
  transport.Then(200, DocumentWith(""));
  ExpectFailure("left from before");
  EXPECT_EQ(ReadFile(file), "left from before");
}

TEST_F(Download, FailsForAUrlWithoutAServer) {
  transport.Then(200, DocumentAt("/store/f1")).Then(200, DocumentAt(""));
  EXPECT_FALSE(Run("D1"));
  EXPECT_FALSE(Run("D1"));
  EXPECT_EQ(transport.requests().size(), 2u);
  EXPECT_EQ(transport.connections(), Lines{serverUrl});
}

TEST_F(Download, TriesNoSecondUrl) {
  transport
      .Then(200, DocumentWith(R"({"contentUrl":["https://files.example/1","https://files.example/2"]},
                                 {"contentUrl":["https://files.example/3"]})"))
      .Then(404, "gone")
      .Then(200, "bytes");
  ExpectFailure("gone");
  EXPECT_EQ(transport.lines(), (Lines{"GET /vt/servlet/rest/v1/dkm/documents/D1", "GET /1"}));
}

TEST_F(Download, TracesTheWholeOfARefusalAndLeavesItInTheFile) {
  const std::string answer = "<html>\n" + std::string(5'000, 'e') + "</html>\n";
  transport.Then(200, DocumentAt(contentUrl)).Then(403, answer);
  ExpectFailure(answer);
  EXPECT_EQ(ReadFile(file), answer);
}

TEST_F(Download, TracesAnAnswerUpToItsFirstZeroByte) {
  const std::string head(7'000, 'x');
  transport.Then(200, DocumentAt(contentUrl))
      .Then(403, head + std::string(1, '\0') + std::string(70'000, 'y'));
  ExpectFailure(head);
}

// A content whose transfer broke off is as large as it got, and a trace is for reading.
TEST_F(Download, TracesTheBeginningOfALongAnswerAlone) {
  const std::string answer = "<html>\n" + std::string(1 << 20, 'e');
  transport.Then(200, DocumentAt(contentUrl)).Then(Answer{0, answer, du::http::ErrorCode::ProtocolFailure});
  ExpectFailure(answer.substr(0, 8192));
  EXPECT_TRUE(ReadFile(file) == answer);
}

TEST_F(Download, ReadsNothingOfAnAnswerThatNobodyWillSee) {
  transport.Then(200, DocumentAt(contentUrl))
      .Then(403, "no")
      .Then(200, DocumentAt(contentUrl))
      .Then(403, "no");
  OpenedFiles().clear();
  EXPECT_FALSE(Run("D1"));
  EXPECT_EQ(OpenedFiles(), Lines{file});
  unsetenv("FENLOOM_TRACE");
  dp::SetTraceHandler({});
  OpenedFiles().clear();
  EXPECT_FALSE(Run("D1"));
  EXPECT_TRUE(OpenedFiles().empty());
}

TEST_F(Download, TakesNoOtherSuccessThan200) {
  for (const int status : {201, 204, 206, 299}) {
    trace.Clear();
    transport.Then(200, DocumentAt(contentUrl)).Then(status, "part");
    ExpectFailure("part");
  }
}

TEST_F(Download, FailsWhenTheContentsServerCannotBeReached) {
  transport.Then(200, DocumentAt(contentUrl)).ThenFail(du::http::ErrorCode::NoConnection);
  EXPECT_FALSE(Run("D1"));
  ASSERT_EQ(trace.lines().size(), 1u);
  EXPECT_EQ(trace.lines().front().text, "Failed to download file D1 with error: ");
}

TEST_F(Download, FailsForAnAnswerThatIsNoDocument) {
  transport.Then(200, "<html>");
  ExpectFailure("");
}

TEST_F(Download, FailsForATargetThatCannotBeWritten) {
  file = directory.File("missing/copy");
  transport.Then(200, DocumentAt(contentUrl)).Then(200, "bytes");
  ExpectFailure("");
}

TEST_F(Download, FailsForATargetThatIsADirectory) {
  file = directory.path();
  transport.Then(200, DocumentAt(contentUrl)).Then(200, "bytes");
  ExpectFailure("");
}

TEST_F(Download, FailsForATargetThatIsAPipeAndWaitsForNobody) {
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  transport.Then(200, DocumentAt(contentUrl)).Then(200, "bytes");
  ExpectFailure("");
  transport.Then(200, DocumentWith(""));
  trace.Clear();
  ExpectFailure("");
}

TEST_F(Download, ShowsAPercentSignOfAnAnswerAsItStands) {
  transport.Then(200, DocumentAt(contentUrl)).Then(500, "100%s %n");
  ExpectFailure("100%s %n");
}

TEST_F(Download, TellsProgressToTheEnd) {
  transport.Then(200, DocumentAt(contentUrl)).Then(200, std::string(10'000, 'x'));
  std::vector<std::pair<std::size_t, std::size_t>> reports;
  EXPECT_TRUE(Run("D1", [&reports](std::size_t done, std::size_t total) {
    reports.emplace_back(done, total);
    return true;
  }));
  ASSERT_FALSE(reports.empty());
  EXPECT_EQ(reports.back(), (std::pair<std::size_t, std::size_t>(10'000, 10'000)));
}

TEST_F(Download, EndsWhenProgressCancels) {
  transport.Then(200, DocumentAt(contentUrl)).Then(200, std::string(10'000, 'x'));
  EXPECT_FALSE(Run("D1", [](std::size_t, std::size_t) { return false; }));
  ASSERT_EQ(trace.lines().size(), 1u);
  EXPECT_EQ(trace.lines().front().type, 3);
}

class ContentDownload : public ConnectedTest {
 protected:
  std::uint16_t Run(std::vector<std::string> urls) {
    DocumentRecord record;
    record.contentSections.resize(1);
    record.contentSections.front().contentUrl = std::move(urls);
    return DownloadPrimaryContent(Begin(connection), record, directory.File("copy").c_str(), {});
  }
};

TEST_F(ContentDownload, GivesTheStatus) {
  transport.Then(200).Then(206).Then(404);
  EXPECT_EQ(Run({"http://f/1"}), 200);
  EXPECT_EQ(Run({"http://f/1"}), 206);
  EXPECT_EQ(Run({"http://f/1"}), 404);
}

TEST_F(ContentDownload, Gives65535ForAFailedExchange) {
  transport.ThenFail(du::http::ErrorCode::TimedOut);
  EXPECT_EQ(Run({"http://f/1"}), 65535);
}

TEST_F(ContentDownload, GivesZeroWhenThereIsNothingToFetch) {
  EXPECT_EQ(Run({}), 0);
  EXPECT_EQ(DownloadPrimaryContent(Begin(connection), DocumentRecord{}, directory.File("copy").c_str(), {}),
            0);
  EXPECT_TRUE(transport.requests().empty());
  EXPECT_TRUE(trace.lines().empty());
}

void NoteOpenedFile(const char* path) {
  OpenedFiles().emplace_back(path != nullptr ? path : "(null)");
}

}  // namespace

// The linker sends the platform's lxfopen through here (see CMakeLists.txt).
extern "C" {
std::FILE* __real__ZN2du10FileSystem7lxfopenEPKcS2_(const char*, const char*);
std::FILE* __wrap__ZN2du10FileSystem7lxfopenEPKcS2_(const char* path, const char* mode) {
  NoteOpenedFile(path);
  return __real__ZN2du10FileSystem7lxfopenEPKcS2_(path, mode);
}
}

#include "tests/wire/documents/failing_steps.h"
#include "tests/wire/translation/xliff_upload_fixture.h"

// Every request of both ways of a source XLIFF to the server fails in every way.
namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

const Answer nonce{200, nonceAnswer};
const Answer stored{200, storedXliff};
const Answer linked{200, linkedAnswer};
const Ending nothing{"0 before", {}};

class XliffUploadFailures : public XliffUploadTest {
 protected:
  static Ending Failed(const std::string& text) { return {"0 before", {Error(text)}}; }

  /// What both ways have after what they read.
  static std::vector<Step> StoringSteps() {
    const Ending withoutNonce{
        "1 X2",
        {},
        {{200, Ticket(1)}, nonce, {200, Receipts(1)}, stored, linked},
        {Post(factoryPath), Get(noncePath), uploadLine, Post(documentsPath), Post(linkPath)}};
    const Ending noTicket = Failed("Failed to update document with error {error}\n");
    const Ending noUpload = Failed("Failed to upload document with error {error}\n");
    const Ending notStored = Failed("Failed to update document with error {error}\n");
    // The status alone decides; a document of which nothing is known is linked by an empty id.
    const Ending untold{
        "1 ", {Error("Failed to update document with error {error}\n")}, {linked}, {Post(linkPath)}};
    const Ending unlinked{"1 X2", {XliffError("Failed to link documents with error {error}\n")}};
    return {{Get(noncePath), nonce, withoutNonce, withoutNonce},
            {Post(factoryPath), {200, Ticket(1)}, noTicket, noTicket},
            {uploadLine, {200, Receipts(1)}, noUpload, noUpload},
            {Post(documentsPath), stored, notStored, untold},
            {Post(linkPath), linked, unlinked, unlinked}};
  }
  /// A success by these steps.
  static Ending GoesOnWith(const std::vector<Step>& steps) {
    Ending ending{"1 X2", {}};
    for (const Step& step : steps) {
      ending.answers.push_back(step.answer);
      ending.lines.push_back(step.line);
    }
    return ending;
  }
  static std::vector<Step> Before(std::vector<Step> first, const std::vector<Step>& rest) {
    first.insert(first.end(), rest.begin(), rest.end());
    return first;
  }
  void Walk(const std::vector<Step>& steps, const std::function<bool(NrxXliffServer&, FileInfo&)>& flow) {
    WalkFailures(
        transport, trace, steps, [this] { return Leftovers(); },
        [&] {
          FileInfo result;
          result.id = "before";
          NrxXliffServer fresh(NewConnection());
          const bool success = flow(fresh, result);
          return std::string(success ? "1 " : "0 ") + result.id;
        });
  }
  void WalkUpload(const std::vector<Step>& steps) {
    Walk(steps, [this](NrxXliffServer& fresh, FileInfo& result) {
      return fresh.UploadSource("D1", xliffPath.c_str(), "en", result, {});
    });
  }
};

TEST_F(XliffUploadFailures, OfAnUploadByCabinet) {
  WalkUpload(
      Before({{Get(PreferencesPath("D1", "en")), {200, Preferences(CabinetPreferences())}, nothing, nothing},
              {Get(cabinetsPath), {200, cabinetAnswer}, nothing, nothing}},
             StoringSteps()));
}

TEST_F(XliffUploadFailures, OfAnUploadByPath) {
  const Ending withoutFolder = GoesOnWith(StoringSteps());
  // A list that is no JSON is an empty one, and the folder is looked for all the same.
  const Ending withoutContext{"0 before", {}, {{200, folderAnswer}}, {Get(FolderPath(2))}};
  WalkUpload(
      Before({{Get(PreferencesPath("D1", "en")), {200, Preferences(PathPreferences())}, nothing, nothing},
              {Get(contextsPath), {200, contextsAnswer}, nothing, withoutContext},
              {Get(FolderPath(2)), {200, folderAnswer}, withoutFolder, withoutFolder}},
             StoringSteps()));
}

TEST_F(XliffUploadFailures, OfAnUpdate) {
  // A document that is no JSON says nothing of itself and is iterated all the same.
  const Ending ofNothing = GoesOnWith(StoringSteps());
  Walk(Before({{Get(SourcePath("D1")), {200, Rows({Reference("X1", "en")})}, nothing, nothing},
               {Get(documentsPath + "/X1"), {200, R"({"id":"X1"})"}, nothing, ofNothing}},
              StoringSteps()),
       [this](NrxXliffServer& fresh, FileInfo& result) {
         return fresh.UpdateSource("D1", xliffPath.c_str(), result, {}, "en");
       });
}

TEST_F(XliffUploadFailures, OfEveryQuestionForANonceLeaveTheRequestsWithoutOne) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer)
      .Then(500)
      .Then(200, Ticket(1))
      .Then(500)
      .Then(200, Receipts(1))
      .Then(500)
      .Then(200, storedXliff)
      .Then(500)
      .Then(200, linkedAnswer);
  EXPECT_TRUE(Upload());
  EXPECT_EQ(LinesFrom(2), (Lines{Get(noncePath), Post(factoryPath), Get(noncePath), uploadLine,
                                 Get(noncePath), Post(documentsPath), Get(tokenPath), Post(linkPath)}));
  EXPECT_TRUE(transport.requests().back().headers.ends_with("Prefer: odata.maxpagesize=10000\r\n"));
}

// Only the link asks by the other road, and what that gives serves the next upload.
TEST_F(XliffUploadFailures, OfTheNonceEndWithTheLinksToken) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer)
      .Then(500)
      .Then(200, Ticket(1))
      .Then(500)
      .Then(200, Receipts(1))
      .Then(500)
      .Then(200, storedXliff);
  ThenToken();
  transport.Then(200, linkedAnswer);
  EXPECT_TRUE(Upload());
  EXPECT_EQ(transport.requests().back(), ODataWrite(Post(linkPath), LinkBody("D1", "X2")));
  transport.ClearRequests();
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer).Then(500);
  EXPECT_FALSE(Upload());
  EXPECT_EQ(transport.requests().back(), Write(factoryPath, "{\n\"noOfFiles\":1\n}"));
}

TEST_F(XliffUploadFailures, OfATicketThatIsIncompleteAreNotTraced) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenNonce();
  transport.Then(200, "{}");
  EXPECT_FALSE(Upload());
  EXPECT_EQ(info.id, "before");
  EXPECT_THAT(trace.lines(), testing::IsEmpty());
}

TEST_F(XliffUploadFailures, OfAFileThatIsTooLarge) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenNonce();
  transport.Then(200, Ticket(1)).Then({413, "", du::http::ErrorCode::TooLarge});
  EXPECT_FALSE(Upload());
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to update document: maximum file size exceeded\n")});
}

// A file that cannot be read leaves a gap in the body, and what becomes of it is the server's matter.
TEST_F(XliffUploadFailures, OfALocalFileThatIsMissingAreTheServersMatter) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenStored();
  EXPECT_TRUE(server.UploadSource("D1", Local("missing.xlf").c_str(), "en", info, {}));
  EXPECT_EQ(transport.requests().at(4).body, Multipart("901:f1:901;", {}));
}

TEST_F(XliffUploadFailures, OfNoLocalFileAreTheServersMatterToo) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenStored();
  EXPECT_TRUE(server.UploadSource("D1", nullptr, "en", info, {}));
  EXPECT_NE(transport.requests().at(5).body.value_or("").find(R"("cadName":"",)"), std::string::npos);
}

}  // namespace
}  // namespace vtdirect_test

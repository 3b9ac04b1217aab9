#include <algorithm>

#include "tests/wire/translation/xliff_upload_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const Lines cabinetLines{Get(PreferencesPath("D1", "en")), Get(cabinetsPath)};
const Lines pathLines{Get(PreferencesPath("D1", "en")), Get(contextsPath), Get(FolderPath(2))};

class SourceUpload : public XliffUploadTest {
 protected:
  // The body of the request that names the uploaded file.
  std::string StoringBody() {
    return transport.requests().at(transport.requests().size() - 2).body.value_or("");
  }
  // Uploads with these preferences and nothing else answered: what was asked after the preferences.
  Lines FailingLines(const std::map<std::string, std::string>& preferences) {
    transport.ClearRequests();
    ThenPreferences(preferences);
    EXPECT_FALSE(Upload());
    EXPECT_EQ(transport.lines().front(), Get(PreferencesPath("D1", "en")));
    return LinesFrom(1);
  }
};

TEST_F(SourceUpload, GoesToTheCabinetsContextAndIsLinked) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenStored();
  EXPECT_TRUE(Upload());
  EXPECT_EQ(transport.requests(), (Requests{ReadPage(PreferencesPath("D1", "en")),
                                            ReadPage(cabinetsPath),
                                            ReadNonce(),
                                            Write(factoryPath, "{\n\"noOfFiles\":1\n}"),
                                            {uploadServer, uploadLine, uploadHeaders, MultipartOfFile()},
                                            Write(documentsPath, CreationBody()),
                                            // The nonce serves both kinds of writes.
                                            ODataWrite(Post(linkPath), LinkBody("D1", "X2"))}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceUpload, GoesToThePathsContextAndFolderAndIsLinked) {
  ThenPreferences(PathPreferences());
  transport.Then(200, contextsAnswer).Then(200, folderAnswer);
  ThenStored();
  EXPECT_TRUE(Upload());
  EXPECT_EQ(transport.requests(), (Requests{ReadPage(PreferencesPath("D1", "en")),
                                            Read(contextsPath),
                                            ReadPage(FolderPath(2)),
                                            ReadNonce(),
                                            Write(factoryPath, "{\n\"noOfFiles\":1\n}"),
                                            {uploadServer, uploadLine, uploadHeaders, MultipartOfFile()},
                                            Write(documentsPath, CreationBody()),
                                            ODataWrite(Post(linkPath), LinkBody("D1", "X2"))}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceUpload, TellsOfTheNewDocument) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenStored();
  EXPECT_TRUE(Upload());
  EXPECT_EQ(info.id, "X2");
  EXPECT_EQ(info.version, "A.2");
  EXPECT_EQ(info.cadName, "main.xlf");
  EXPECT_EQ(info.size, 12U);
  EXPECT_THAT(info.dependencies, ElementsAre(Pair("bolt", "D7")));
}

TEST_F(SourceUpload, IsOfTheDocumentPartOfAnId) {
  for (const char* id : {"D1|W2", "D1|W2|D3|T", "D1"}) {
    transport.ClearRequests();
    ThenPreferences(CabinetPreferences());
    transport.Then(200, cabinetAnswer);
    ThenStored();
    NrxXliffServer fresh(NewConnection());
    EXPECT_TRUE(fresh.UploadSource(id, xliffPath.c_str(), "en", info, {})) << id;
    EXPECT_EQ(transport.lines().front(), Get(PreferencesPath("D1", "en"))) << id;
    EXPECT_EQ(transport.requests().back().body, LinkBody("D1", "X2")) << id;
  }
}

// In addresses the id is escaped, in the body of the link it is not.
TEST_F(SourceUpload, EscapesTheIdAndTheLanguageWhereTheyStandInAddresses) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenStored();
  EXPECT_TRUE(Upload("VR:d 1", "en/x"));
  EXPECT_EQ(transport.lines().front(), Get(PreferencesPath("VR%3Ad%201", "en%2Fx")));
  EXPECT_EQ(transport.requests().back().body, LinkBody("VR:d 1", "X2"));
}

TEST_F(SourceUpload, TakesNoLanguageForAnEmptyOne) {
  transport.Then(200, "{}");
  EXPECT_FALSE(Upload("D1", nullptr));
  EXPECT_EQ(transport.lines(), Lines{Get(PreferencesPath("D1", ""))});
}

TEST_F(SourceUpload, FailsWithoutPreferences) {
  EXPECT_THAT(FailingLines({}), IsEmpty());
  EXPECT_EQ(info.id, "before");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceUpload, FailsWithoutAnyOneOfSixPreferencesAndAsksForNothingElse) {
  for (const auto& all : {CabinetPreferences(), PathPreferences()}) {
    for (const char* name : {"DB_CONTEXT_TYPE", "ZVK_DD_TRANSLATE", "ZVK_DD_LANGUAGE", "DB_CONTEXT_NAME",
                             "ZVK_DD_EXTENDED_DOC_TYPE", "UPLOAD_SOFT_TYPE"}) {
      auto preferences = all;
      preferences.erase(name);
      EXPECT_THAT(FailingLines(preferences), IsEmpty()) << name;
      preferences[name] = "";
      EXPECT_THAT(FailingLines(preferences), IsEmpty()) << name;
    }
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceUpload, FailsWithoutAPlace) {
  auto preferences = PathPreferences();
  preferences["SUB_FOLDER_PATH"] = "";
  EXPECT_THAT(FailingLines(preferences), IsEmpty());
  preferences.erase("SUB_FOLDER_PATH");
  EXPECT_THAT(FailingLines(preferences), IsEmpty());
  // A folder without its cabinet is no place.
  preferences["SUB_FOLDER_OID"] = "F9";
  preferences["CABINET_OID"] = "";
  EXPECT_THAT(FailingLines(preferences), IsEmpty());
}

TEST_F(SourceUpload, GoesByTheCabinetWhereAPathIsGivenToo) {
  auto preferences = CabinetPreferences();
  preferences["SUB_FOLDER_PATH"] = "/Trans/Sub";
  ThenPreferences(preferences);
  transport.Then(200, cabinetAnswer);
  ThenStored();
  EXPECT_TRUE(Upload());
  EXPECT_EQ(transport.lines(), Join(cabinetLines, StoringLines()));
  EXPECT_EQ(StoringBody(), CreationBody());
}

TEST_F(SourceUpload, GoesByThePathWhereTheCabinetIsEmpty) {
  auto preferences = PathPreferences();
  preferences["CABINET_OID"] = "";
  preferences["SUB_FOLDER_OID"] = "F1";
  ThenPreferences(preferences);
  transport.Then(200, contextsAnswer).Then(200, folderAnswer);
  ThenStored();
  EXPECT_TRUE(Upload());
  EXPECT_EQ(transport.lines(), Join(pathLines, StoringLines()));
  EXPECT_EQ(StoringBody(), CreationBody());
}

TEST_F(SourceUpload, GoesToNoFolderWhereTheCabinetHasNone) {
  auto empty = CabinetPreferences();
  empty["SUB_FOLDER_OID"] = "";
  auto absent = CabinetPreferences();
  absent.erase("SUB_FOLDER_OID");
  for (const auto& preferences : {empty, absent}) {
    ThenPreferences(preferences);
    transport.Then(200, cabinetAnswer);
    ThenStored();
    NrxXliffServer fresh(NewConnection());
    EXPECT_TRUE(fresh.UploadSource("D1", xliffPath.c_str(), "en", info, {}));
    EXPECT_EQ(StoringBody(), CreationBody(""));
  }
}

TEST_F(SourceUpload, GoesToNoFolderForAPathWithoutAnInnerSlash) {
  auto preferences = PathPreferences();
  preferences["SUB_FOLDER_PATH"] = "/Trans";
  ThenPreferences(preferences);
  transport.Then(200, contextsAnswer);
  ThenStored();
  EXPECT_TRUE(Upload());
  EXPECT_EQ(transport.lines(), Join({Get(PreferencesPath("D1", "en")), Get(contextsPath)}, StoringLines()));
  EXPECT_EQ(StoringBody(), CreationBody(""));
}

TEST_F(SourceUpload, GoesToNoFolderWhereThePathIsNotFound) {
  ThenPreferences(PathPreferences());
  transport.Then(200, contextsAnswer).Then(200, Rows({}));
  ThenStored();
  EXPECT_TRUE(Upload());
  EXPECT_EQ(transport.lines(), Join(pathLines, StoringLines()));
  EXPECT_EQ(StoringBody(), CreationBody(""));
}

TEST_F(SourceUpload, FailsWithoutTheCabinetsContext) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, Rows({}));
  EXPECT_FALSE(Upload());
  EXPECT_EQ(transport.lines(), cabinetLines);
  EXPECT_EQ(info.id, "before");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

// The folder is looked for although it will be of no use.
TEST_F(SourceUpload, FailsWithoutThePathsContextBehindTheFolder) {
  ThenPreferences(PathPreferences());
  transport.Then(200, R"({"items":[]})").Then(200, folderAnswer);
  EXPECT_FALSE(Upload());
  EXPECT_EQ(transport.lines(), pathLines);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceUpload, FailsWithoutAListOfContextsBeforeTheFolder) {
  ThenPreferences(PathPreferences());
  transport.Then(500, contextsAnswer);
  EXPECT_FALSE(Upload());
  EXPECT_EQ(transport.lines(), (Lines{Get(PreferencesPath("D1", "en")), Get(contextsPath)}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceUpload, SucceedsWithoutTheLinkAndTracesIt) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedXliff).Then(500, "boom");
  EXPECT_TRUE(Upload());
  EXPECT_EQ(info.id, "X2");
  EXPECT_EQ(trace.lines(), Traces{XliffError("Failed to link documents with error 500 : boom\n")});
}

TEST_F(SourceUpload, SucceedsWithALinkThatTheServerDeclines) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedXliff).Then(200, "{}");
  EXPECT_TRUE(Upload());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceUpload, IsNamedLikeItsFile) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenStored();
  const std::string path = MakeLocal("a \"b\".en.xlf", "MAIN");
  EXPECT_TRUE(server.UploadSource("D1", path.c_str(), "en", info, {}));
  EXPECT_NE(StoringBody().find(R"("cadName":"a \"b\".en.xlf",)"), std::string::npos) << StoringBody();
}

TEST_F(SourceUpload, TellsProgressOfTheFileAlone) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenStored();
  std::size_t furthest = 0;
  std::size_t total = 0;
  EXPECT_TRUE(
      server.UploadSource("D1", xliffPath.c_str(), "en", info, [&](std::size_t done, std::size_t all) {
        furthest = std::max(furthest, done);
        total = std::max(total, all);
        return true;
      }));
  EXPECT_EQ(furthest, MultipartOfFile().size());
  EXPECT_EQ(total, MultipartOfFile().size());
}

TEST_F(SourceUpload, FailsWithoutATemporaryFile) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  LoseTemporaryDirectory();
  EXPECT_FALSE(Upload());
  EXPECT_EQ(transport.lines(), cabinetLines);
  EXPECT_EQ(info.id, "before");
}

class SourceUpdate : public XliffUploadTest {
 protected:
  SourceUpdate() {
    transport.Then(200, Rows({Reference("VR:x 1", "en")}));
    transport.Then(200, R"({"id":"X1","context":{"id":"C7"},"authAppVersion":"77","ndVersion":"K-01",
        "epmMaster":{"category":"cat","subCategory":"sub","cadName":"old.xlf","authoringApplication":"ELSE"},
        "cadContent":{"contentSections":[{"category":"OWN","fileName":"own.xlf","streamId":5}]},
        "fileBasedAttributes":[
          {"parameterDefinition":{"parameterName":"ZVK_DD_LANGUAGE","valueType":"String"},
           "parameterValue":{"value":"fr"}},
          {"parameterDefinition":{"parameterName":"A","valueType":"Integer"},"parameterValue":{"value":"1"}}]})");
    ThenStored();
  }
  const Lines readingLines{Get(SourcePath("D1")), Get(documentsPath + "/VR%3Ax%201")};
  const std::string plainAttribute =
      R"({"parameterDefinition":{"parameterName":"A","valueType":"Integer"},"parameterValue":{"value":"1"}})";

  static std::string Body(const std::string& attributes) {
    return R"({"iterateInstructions":[{"epmDocument":{"id":"X1","epmMaster":{"category":"cat",)"
           R"("cadName":"old.xlf","authoringApplication":"ELSE"},)"
           R"("cadContent":{"contentSections":[{"category":"OWN","fileName":"own.xlf","streamId":901,)"
           R"("uploadInfo":{"encodedCCD":"r1"}}]},"authAppVersion":"77","ndVersion":"K-01",)"
           R"("fileBasedAttributes":[)" +
           attributes + R"(]}}],"contextId":"C7"})";
  }
};

TEST_F(SourceUpdate, IteratesTheSourceXliffAndLinksTheIteration) {
  EXPECT_TRUE(Update("D1|W2", "en"));
  EXPECT_EQ(transport.requests(),
            (Requests{ReadPage(SourcePath("D1")),
                      Read(documentsPath + "/VR%3Ax%201"),
                      ReadNonce(),
                      Write(factoryPath, "{\n\"noOfFiles\":1\n}"),
                      {uploadServer, uploadLine, uploadHeaders, MultipartOfFile()},
                      Write(documentsPath, Body(plainAttribute + "," + Attribute("ZVK_DD_LANGUAGE", "en"))),
                      ODataWrite(Post(linkPath), LinkBody("D1", "X2"))}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceUpdate, TellsOfTheNewIteration) {
  EXPECT_TRUE(Update());
  EXPECT_EQ(info.id, "X2");
  EXPECT_EQ(info.version, "A.2");
  EXPECT_EQ(info.cadName, "main.xlf");
  EXPECT_EQ(info.size, 12U);
  EXPECT_THAT(info.dependencies, ElementsAre(Pair("bolt", "D7")));
}

TEST_F(SourceUpdate, LeavesTheLanguageAloneWithoutANewOne) {
  EXPECT_TRUE(Update("D1", nullptr));
  EXPECT_EQ(transport.requests().at(5).body,
            Body(R"({"parameterDefinition":{"parameterName":"ZVK_DD_LANGUAGE","valueType":"String"},)"
                 R"("parameterValue":{"value":"fr"}},)" +
                 plainAttribute));
}

TEST_F(SourceUpdate, AsksForNoPreferences) {
  EXPECT_TRUE(Update());
  EXPECT_EQ(transport.lines(), Join(readingLines, StoringLines()));
}

class SourceUpdateOfNothing : public XliffUploadTest {};

TEST_F(SourceUpdateOfNothing, FailsWithoutASourceXliff) {
  transport.Then(200, Rows({}));
  EXPECT_FALSE(Update());
  EXPECT_EQ(transport.lines(), Lines{Get(SourcePath("D1"))});
  EXPECT_EQ(info.id, "before");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceUpload, LetsAStreamIdThatIsNoNumberOutAsAnException) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenNonce();
  transport.Then(200, R"({"masterUrl":"m","uploadUrl":"https://files.example/u","fileNames":["f1"],)"
                      R"("streamIds":["none"]})");
  EXPECT_THROW((void)Upload(), std::invalid_argument);
  EXPECT_EQ(transport.lines().back(), Post(factoryPath));
}

}  // namespace
}  // namespace vtdirect_test

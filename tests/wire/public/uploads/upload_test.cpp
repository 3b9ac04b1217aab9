#include "tests/wire/public/uploads/upload_front_fixture.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::IsEmpty;

class Uploading : public UploadFrontTest {
 protected:
  bool UploadFenlet(const std::string& path, bool checkIn = false) {
    return Upload(path.c_str(), mainPath.c_str(), "", noLinks, Status(), {}, nullptr, checkIn);
  }
  bool UploadPlain(const std::string& path, FileType kind = FileTypeFenlet, bool checkIn = false) {
    return Upload(kind, path.c_str(), mainPath.c_str(), Status(), {}, nullptr, checkIn);
  }
};

TEST_F(Uploading, ToAPlainDocumentMakesAnIterationAndNeverChecksIn) {
  for (const bool checkIn : {false, true}) {
    UpdateServerList({});
    UpdateServerList({{"plm", plmUrl}});
    (void)ShouldInvalidateCache(true);
    transport.ClearRequests();
    trace.Clear();
    statuses.clear();
    ThenPlainDocument();
    ThenIterate();
    EXPECT_TRUE(UploadFenlet(uidOfD1, checkIn));
    EXPECT_EQ(transport.lines(), Join({probeLine, DocumentLine("D1"), versionsLine}, iterationLines));
    EXPECT_EQ(statuses, Lines{"0 " + storedUid});
    EXPECT_EQ(trace.lines(), (Traces{Storing(), uploaded}));
    EXPECT_TRUE(ShouldInvalidateCache(false));
  }
}

TEST_F(Uploading, ToATemporaryCheckoutChecksInByItself) {
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(200, storedDocument).Then(200);
  EXPECT_TRUE(UploadFenlet(temporaryUid));
  EXPECT_EQ(transport.lines(),
            (Lines{probeLine, DocumentLine("D1001"), DocumentLine("D1002"), Get(noncePath), Post(factoryPath),
                   uploadLine, Post(workspacesPath + "/W77/store"), Post(workspacesPath + "/W77/checkin"),
                   Post(workspacesPath + "/W77/delete")}));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
  EXPECT_EQ(
      trace.lines(),
      (Traces{Storing(), Miss("Checked-in document id D1002 on workspace W77 giving id D9\n"), uploaded}));
}

TEST_F(Uploading, OfAnyKindToATemporaryCheckoutChecksInOnlyWhenAsked) {
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(200, R"({"id":"D1001","revision":"A","iteration":"1","epmMaster":{"cadName":"pump.fnl"}})");
  EXPECT_TRUE(UploadPlain(temporaryUid));
  EXPECT_EQ(transport.lines().back(), DocumentLine("D1001"));
  EXPECT_EQ(statuses, Lines{"0 " + temporaryUid + "&file=/pump.fnl"});
  EXPECT_EQ(trace.lines().back(), Information("Uploaded document id D1001|W77|D1002|T (A.1)\n"));
  ThenTemporaryCheckout();
  transport.Then(200, R"({"id":"D1002"})");
  ThenUpload();
  transport.Then(200, "[]").Then(200, storedDocument).Then(200);
  EXPECT_TRUE(UploadPlain(temporaryUid, FileTypeFenlet, true));
  EXPECT_EQ(transport.lines().back(), Post(workspacesPath + "/W77/delete"));
}

TEST_F(Uploading, ToACopyInTheUsersWorkspaceLeavesItCheckedOutUnlessAsked) {
  ThenSchema();
  transport.Then(200, copyOfD1).Then(200, originalOfCopy);
  ThenStore(copyOfD1);
  transport.Then(200, copyOfD1);
  EXPECT_TRUE(UploadFenlet(uidStem + "D2|W12"));
  EXPECT_EQ(transport.lines(),
            (Lines{probeLine, DocumentLine("D2"), Get(documentsPath + "/search?number=0042&scope=C5"),
                   DocumentLine("D2"), Get(noncePath), Post(factoryPath), uploadLine,
                   Post(workspacesPath + "/W12/store"), DocumentLine("D2")}));
  EXPECT_EQ(statuses, Lines{"0 " + uidStem + "D2|W12&file=/pump.fnl"});
  ThenSchema();
  transport.Then(200, copyOfD1).Then(200, originalOfCopy).Then(200, copyOfD1);
  ThenUpload();
  transport.Then(200, "[]").Then(200, storedDocument);
  EXPECT_TRUE(UploadFenlet(uidStem + "D2|W12", true));
  EXPECT_EQ(transport.lines().back(), Post(workspacesPath + "/W12/checkin"));
  EXPECT_EQ(statuses.back(), "0 " + uidStem + "D9|W12&file=/pump.fnl");
}

TEST_F(Uploading, StandsEvenWhenTheStoredDocumentCannotBeRead) {
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(500);
  EXPECT_TRUE(UploadPlain(temporaryUid));
  EXPECT_EQ(statuses, Lines{"0 " + uidStem});
  EXPECT_EQ(trace.lines(),
            (Traces{Storing(), Error("Failed to locate document D1001|W77|D1002|T on server\n"),
                    Information("Uploaded document id  ()\n")}));
  EXPECT_TRUE(ShouldInvalidateCache(false));
}

TEST_F(Uploading, ThatCannotBeCheckedInFailsLikeTheStore) {
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(409, "stale");
  EXPECT_FALSE(UploadFenlet(temporaryUid));
  EXPECT_EQ(statuses, Lines{"9 (null)"});
  EXPECT_FALSE(ShouldInvalidateCache(false));
}

TEST_F(Uploading, TellsWhatItFailedAt) {
  ThenPlainDocument();
  transport.Then(404);
  EXPECT_FALSE(UploadFenlet(uidOfD1));
  ThenTemporaryCheckout();
  transport.Then(404);
  EXPECT_FALSE(UploadFenlet(temporaryUid));
  ThenNewName();
  transport.Then(200, R"({"items":[]})");
  EXPECT_FALSE(UploadFenlet("//plm/Products/Gadget/Folders/a.fnl"));
  EXPECT_EQ(statuses, (Lines{"8 (null)", "9 (null)", "7 (null)"}));
  EXPECT_FALSE(ShouldInvalidateCache(false));
}

TEST_F(Uploading, AboveTheServersLimitTellsSoWhateverItWas) {
  const Answer tooLarge{413, "", du::http::ErrorCode::TooLarge};
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(tooLarge);
  EXPECT_FALSE(UploadFenlet(uidOfD1));
  ThenTemporaryCheckout();
  transport.Then(200, R"({"id":"D1002"})").Then(200, Ticket(1)).Then(tooLarge);
  EXPECT_FALSE(UploadFenlet(temporaryUid));
  ThenNewName();
  transport.Then(200, R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})")
      .Then(200, Ticket(1))
      .Then(tooLarge);
  EXPECT_FALSE(UploadFenlet("//plm/Products/Gadget/Folders/a.fnl"));
  EXPECT_EQ(statuses, (Lines{"11 (null)", "11 (null)", "11 (null)"}));
}

TEST_F(Uploading, ToANewPathCreatesADocument) {
  ThenNewName();
  transport.Then(200, R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})")
      .Then(200, R"({"items":[{"id":"F1","attributes":{"name":"Sub"}}]})");
  ThenNonce();
  ThenUpload();
  transport.Then(201, storedDocument);
  EXPECT_TRUE(UploadFenlet("//plm/Products/Gadget/Folders/Sub/pump.fnl", true));
  const std::string objectsLine =
      Get("servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter=CADName eq 'pump.fnl'");
  EXPECT_EQ(transport.lines(), (Lines{probeLine, Get("servlet/odata/DataAdmin/$metadata"), probeLine,
                                      Get("servlet/odata/CADDocumentMgmt/$metadata"), objectsLine,
                                      objectsLine, Get("servlet/rest/v1/contexts?type=Product"),
                                      Get("servlet/rest/v1/contexts/OR%3Avn.Product%3A5/folders"),
                                      Get(noncePath), Post(factoryPath), uploadLine, Post(documentsPath)}));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
  const Traces lines = Traced();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[lines.size() - 2], Storing("Products/Gadget/Folders/Sub/pump.fnl"));
  EXPECT_EQ(lines.back(), uploaded);
}

// The search finds the document of the name in another folder, and that has no such version. The new one is
// named without it.
TEST_F(Uploading, ToAPathWithAVersionThatNoDocumentHasCreatesADocumentBesideItsNamesake) {
  ThenSchema();
  transport.Then(404).Then(404).Then(404);
  transport.Then(200, R"([{"id":"D1","attributes":{"number":"0042"}}])")
      .Then(200, R"({"id":"D1"})")
      .Then(200, R"({"id":"D1"})")
      .Then(200, R"([{"id":"D1","revision":"A","iteration":"1"}])");
  transport.Then(200, R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})")
      .Then(200, R"({"items":[{"id":"F1","attributes":{"name":"Sub"}}]})");
  ThenNonce();
  ThenUpload();
  transport.Then(201, storedDocument);
  EXPECT_TRUE(UploadFenlet("//plm/Products/Gadget/Folders/Sub/pump.fnl|-.0"));
  const std::string objectsLine =
      Get("servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter=CADName eq 'pump.fnl'");
  EXPECT_EQ(transport.lines(),
            (Lines{probeLine, Get("servlet/odata/DataAdmin/$metadata"), probeLine,
                   Get("servlet/odata/CADDocumentMgmt/$metadata"), objectsLine, DocumentLine("D1"),
                   DocumentLine("D1"), versionsLine, Get("servlet/rest/v1/contexts?type=Product"),
                   Get("servlet/rest/v1/contexts/OR%3Avn.Product%3A5/folders"), Get(noncePath),
                   Post(factoryPath), uploadLine, Post(documentsPath)}));
  EXPECT_THAT(transport.requests().back().body.value_or(""), testing::HasSubstr(R"("cadName":"pump.fnl")"));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
}

TEST_F(Uploading, OfAKindStoresWhatThatKindHas) {
  ThenPlainDocument();
  ThenIterate();
  EXPECT_TRUE(UploadPlain(uidOfD1, FileTypeUgc));
  EXPECT_NE(transport.requests().back().body->find(R"("category":"DOVA_UGC")"), std::string::npos);
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})");
  ThenUpload();
  transport.Then(200, storedDocument);
  EXPECT_TRUE(UploadPlain(uidOfD1, FileTypeGeneral));
  EXPECT_NE(transport.requests().back().body->find(R"("category":"GENERAL")"), std::string::npos);
}

TEST_F(Uploading, OfAnUnknownKindStoresAFenlet) {
  for (const int kind : {3, -1, 1000}) {
    UpdateServerList({});
    UpdateServerList({{"plm", plmUrl}});
    ThenPlainDocument();
    ThenIterate();
    EXPECT_TRUE(UploadPlain(uidOfD1, static_cast<FileType>(kind)));
    EXPECT_NE(transport.requests().back().body->find(R"("category":"FENLET")"), std::string::npos);
  }
}

TEST_F(Uploading, NeedsNoCallbacks) {
  ThenPlainDocument();
  ThenIterate();
  EXPECT_TRUE(Upload(uidOfD1, mainPath.c_str(), "", noLinks, {}, {}, nullptr, false));
  transport.Then(404).Then(500);
  EXPECT_FALSE(Upload(uidOfD1, mainPath.c_str(), "", noLinks, {}, {}, nullptr, false));
}

TEST_F(Uploading, TellsItsProgressAndTakesALanguage) {
  ThenPlainDocument();
  ThenIterate();
  std::size_t told = 0;
  const auto progress = [&](std::size_t done, std::size_t) {
    told = done;
    return true;
  };
  EXPECT_TRUE(Upload(uidOfD1, mainPath.c_str(), "", noLinks, Status(), progress, "de", false));
  EXPECT_EQ(told, transport.requests()[6].body->size());
  EXPECT_NE(transport.requests().back().body->find(R"("parameterValue":{"value":"de"})"), std::string::npos);
}

// Each form that takes one, in the order of the header.
TEST_F(Uploading, TellsItsProgressInEachForm) {
  std::size_t told = 0;
  const auto note = [&](std::size_t done, std::size_t) {
    told = done;
    return true;
  };
  const char* file = mainPath.c_str();
  const std::vector<std::function<bool()>> forms{
      [&] { return Upload(FileTypeGeneral, uidOfD1, file, Status(), note, nullptr, false); },
      [&] { return Upload(FileTypeUgc, uidOfD1, file, Status(), note, nullptr, false); },
      [&] { return UploadAsync(uidOfD1, file, "", noLinks, Status(), note, nullptr, false); },
      [&] { return UploadAsync(FileTypeFenlet, uidOfD1, file, Status(), note, "de", false); },
      [&] {
        return UploadFenletAsync(uidOfD1, file, {"", nullptr, nullptr, nullptr}, Status(), note, false);
      },
  };
  for (std::size_t form = 0; form < forms.size(); ++form) {
    UpdateServerList({});
    UpdateServerList({{"plm", plmUrl}});
    transport.ClearRequests();
    told = 0;
    ThenPlainDocument();
    ThenIterate();
    EXPECT_TRUE(forms[form]()) << form;
    ASSERT_EQ(transport.requests().size(), 8u) << form;
    EXPECT_EQ(told, transport.requests()[6].body->size()) << form;
    const bool isGerman = transport.requests().back().body->find(R"("value":"de")") != std::string::npos;
    EXPECT_EQ(isGerman, form == 3) << form;
  }
}

// A host may ask for the flag and look at its log as soon as it is told.
TEST_F(Uploading, IsTracedAndOutdatesWhatIsKnownBeforeItIsTold) {
  ThenPlainDocument();
  ThenIterate();
  bool wasOutdated = false;
  Traces traced;
  const auto status = [&](StatusCode, const char*) {
    wasOutdated = ShouldInvalidateCache(false);
    traced = trace.lines();
  };
  EXPECT_TRUE(Upload(uidOfD1, mainPath.c_str(), "", noLinks, status, {}, nullptr, false));
  EXPECT_TRUE(wasOutdated);
  EXPECT_EQ(traced, (Traces{Storing(), uploaded}));
}

TEST_F(Uploading, OfAFileThatIsNotThereIsTheServersToRefuse) {
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(400, "no parts");
  EXPECT_FALSE(Upload(uidOfD1, "/nowhere/x", "", noLinks, Status(), {}, nullptr, false));
  EXPECT_EQ(transport.requests().back().body, Multipart("901:f1:901;", {}));
  EXPECT_EQ(statuses, Lines{"8 (null)"});
}

}  // namespace
}  // namespace vtdirect_test

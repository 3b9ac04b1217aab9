#pragma once

#include <filesystem>
#include <string>

#include "tests/wire/documents/flow_fixture.h"
#include "tests/wire/public/listed_server.h"

namespace vtdirect_test {

inline const std::string uidStem = "korvufenloom-vt://plm.example/vt/?id=";
inline const std::string probeLine = Get("servlet/odata/DynamicDocMgmt/$metadata");

/// What the server tells of a document that was stored.
inline constexpr const char* storedDocument =
    R"([{"id":"D9","revision":"A","iteration":"2","epmMaster":{"cadName":"pump.fnl"}}])";
inline const std::string storedUid = uidStem + "D9&file=/pump.fnl";

inline const std::string temporaryUid = uidStem + "D1001|W77|D1002|T";
inline const std::string versionsLine = DocumentLine("D1") + "/versions?contextId=";
inline const Lines iterationLines = {DocumentLine("D1"), Get(noncePath), Post(factoryPath), uploadLine,
                                     Post(documentsPath)};
inline const TraceLine uploaded = Information("Uploaded document id D9 (A.2)\n");

/// A working copy in a workspace of the user's own, and the search that finds what it was taken from.
inline constexpr const char* copyOfD1 =
    R"({"id":"D2","revision":"A","iteration":"1","context":{"id":"C5"},
        "epmMaster":{"number":"0042","cadName":"pump.fnl"},"pdmIterationState":{"isCheckoutByYou":true}})";
inline constexpr const char* originalOfCopy = R"([{"id":"D1","revision":"A","iteration":"1"}])";

/// A test of the exported functions with local files to store, that leaves nothing behind.
class UploadFrontTest : public ListedServerTest {
 protected:
  UploadFrontTest() {
    setenv("FENLOOM_LANGUAGE", "en", 1);
    std::filesystem::create_directory(directory.File("local"));
    WriteFile(mainPath, "MAIN");
    (void)VtDirectManager::ShouldInvalidateCache(true);
  }
  ~UploadFrontTest() override {
    VtDirectManager::RegisterTaskRunner(nullptr);
    EXPECT_EQ(transport.unanswered(), 0u) << "answers that nobody asked for";
    EXPECT_EQ(directory.Entries(), Lines{"local"}) << "files left behind";
  }

  /// What was traced, without the lines on services that the server does not have.
  [[nodiscard]] Traces Traced() const {
    Traces lines;
    for (const TraceLine& line : trace.lines()) {
      if (line.name != "CmsInterface") lines.push_back(line);
    }
    return lines;
  }
  /// The server answers, and tells of no checkout of the document.
  void ThenPlainDocument() {
    ThenSchema();
    transport.Then(200, R"({"id":"D1"})").Then(200, "[]");
  }
  void ThenUpload() { transport.Then(200, Ticket(1)).Then(200, Receipts(1)); }
  void ThenNonce() { transport.Then(200, nonceAnswer); }
  /// The server answers, and has neither newer services nor a document of any name.
  void ThenNewName() {
    ThenSchema();
    transport.Then(404).Then(404).Then(404).Then(200, "[]").Then(200, "[]");
  }
  /// What a new iteration of "D1" takes after its preparation.
  void ThenIterate() {
    transport.Then(200, R"({"id":"D1"})");
    ThenNonce();
    ThenUpload();
    transport.Then(200, storedDocument);
  }
  /// The server answers, and has the temporary checkout.
  void ThenTemporaryCheckout() {
    ThenSchema();
    transport.Then(200, R"({"id":"D1001"})");
  }
  /// What a store takes after its preparation.
  void ThenStore(const char* working = R"({"id":"D1002"})") {
    transport.Then(200, working);
    ThenNonce();
    ThenUpload();
    transport.Then(200, "[]");
  }
  [[nodiscard]] TraceLine Storing(const std::string& relativePath = {}) const {
    return Information("Storing document (" + mainPath + " ) to (<> - <" + relativePath + ">)\n");
  }

  std::string mainPath = directory.File("local/main.fnl");
  std::map<std::string, std::string> noLinks;
};

}  // namespace vtdirect_test

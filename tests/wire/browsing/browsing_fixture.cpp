#include "tests/wire/browsing/browsing_fixture.h"

#include <cstdlib>

#include "server/create_file_server.h"

namespace vtdirect_test {
namespace {

using lxservices::cms_interface::DirEntryCallback;
using lxservices::cms_interface::DirEntryInfoExt;

constexpr const char* odataHeaders =
    "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000\r\nAccept: "
    "application/json";

std::string Schema(int version, bool folderContents) {
  return std::string("<Edmx><Schema><EntityType Name=\"Folder\">") +
         (folderContents ? "<NavigationProperty Name=\"FolderContents\"/>" : "") +
         "</EntityType><Annotation Term=\"Core.SchemaVersion\"><String>" + std::to_string(version) +
         "</String></Annotation></Schema></Edmx>";
}

}  // namespace

std::string EntryText(const DirEntryInfoExt& entry) {
  std::string text = std::string(entry.isDirectory ? "dir " : "file ") + entry.name;
  if (entry.id != nullptr) text.append(" id=").append(entry.id);
  if (entry.details != nullptr) {
    text.append(" (").append(entry.details->number).append(",").append(entry.details->name).append(")");
  }
  if (entry.versions == nullptr) return text;
  text += " versions=";
  for (std::size_t index = 0; entry.versions[index] != nullptr; ++index) {
    text.append(index > 0 ? "," : "").append(entry.versions[index]);
    text.append(":").append(entry.versionIds[index]);
  }
  return text;
}

BrowsingTest::BrowsingTest() {
  setenv("FENLOOM_LANGUAGE", "en", 1);
  SetUpServer();
}

void BrowsingTest::SetUpServer() {
  server = lxservices::cms_interface::CreateFileServer(serverUrl, [](const char*) { return false; });
}

void BrowsingTest::TearDown() {
  EXPECT_EQ(transport.unanswered(), 0U);
  EXPECT_THAT(directory.Entries(), IsEmpty());
  for (const std::string& mark : transport.clientMarks()) EXPECT_EQ(mark, "X-Zvk-Connected: 1");
  // A service that is not there is traced by the question for it, and nothing else is.
  for (const TraceLine& line : trace.lines()) {
    EXPECT_THAT(line.text, testing::StartsWith("Failed to get schema info "));
  }
}

void BrowsingTest::ScriptServices(Generation generation) {
  switch (generation) {
    case Generation::Rest:
      transport.Then(404);
      break;
    case Generation::Schema3:
      transport.Then(200, Schema(3, true));
      break;
    case Generation::Schema4:
      transport.Then(200, Schema(4, true));
      break;
    case Generation::Schema5:
      transport.Then(200, Schema(5, false));
      break;
  }
  transport.Then(404).Then(404);
}

std::vector<SentRequest> BrowsingTest::ServiceRequests() {
  const auto schema = [](const std::string& service) {
    return SentRequest{serverUrl, "GET /vt/servlet/odata/" + service + "/$metadata", "", {}};
  };
  return {schema("DataAdmin"), schema("DynamicDocMgmt"), schema("CADDocumentMgmt")};
}

SentRequest BrowsingTest::Rest(const std::string& path) {
  return {serverUrl, "GET /vt/" + path, "Accept: application/json", {}};
}

SentRequest BrowsingTest::OData(const std::string& path) {
  return {serverUrl, "GET /vt/" + path, odataHeaders, {}};
}

SentRequest BrowsingTest::NextPage(const std::string& server, const std::string& path) {
  return {server, "GET " + path, odataHeaders, {}};
}

DirEntryCallback BrowsingTest::Collect() {
  return [this](const DirEntryInfoExt& entry) { entries.push_back(EntryText(entry)); };
}

Requests Joined(std::initializer_list<Requests> parts) {
  Requests joined;
  for (const Requests& part : parts) joined.insert(joined.end(), part.begin(), part.end());
  return joined;
}

}  // namespace vtdirect_test

#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "public/manager_state.h"
#include "server/file_server.h"
#include "tests/support/server_table_access.h"
#include "tests/support/trace_recorder.h"
#include "tests/unit/public/fake_services.h"

namespace vtdirect_test {

using lxservices::cms_interface::FileInfo;
using lxservices::cms_interface::FileServer;
using lxservices::cms_interface::Status;

/// What a fake server answers, and what it was asked.
struct FakeAnswers {
  bool reachable = true;
  std::map<std::string, std::string> idsByPath;  ///< answers of ResolvePath; empty for any other path
  std::string vfsPath;                           ///< answer of GetVFSPath
  std::map<std::string, FileInfo> infos;         ///< answers of GetFileInfo by id; Refused for any other id
  Status detailsStatus = lxservices::cms_interface::Ok;
  std::vector<lxservices::cms_interface::SourceEntry> contents;
  bool downloads = true;
  FileInfo downloaded;
  std::string text;                ///< answer of BrowserInfo, EditAttributesURL and the two look-ups
  bool yes = true;                 ///< answer of the capability queries
  bool lists = true;               ///< answer of ReadDir and ReadDirExt
  std::vector<std::string> calls;  ///< every operation but GetServerKey and GetServerURL, with its arguments
  lxservices::cms_interface::ProgressFunction progress;  ///< what GetFile was given
};

/// A server without a wire. `Base` is FileServer or VantryFileServer.
template <typename Base>
class FakeServer : public Base {
 public:
  FakeServer(std::string key, std::string url, FakeAnswers& answers)
      : key_(std::move(key)), url_(std::move(url)), answers_(answers) {}

  bool TestConnection() override { return Called("TestConnection"), answers_.reachable; }
  std::string ResolvePath(const char* path) override {
    Called("ResolvePath", path);
    const auto entry = answers_.idsByPath.find(path);
    return entry != answers_.idsByPath.end() ? entry->second : std::string();
  }
  std::string GetVFSPath(const char* id, bool folderOnly, bool latestForm) override {
    const std::string form = std::string(folderOnly ? " folder" : "") + (latestForm ? " latest" : "");
    return Called("GetVFSPath", id + form), answers_.vfsPath;
  }
  bool GetFile(const char* id, const char* localPath, FileInfo& info,
               lxservices::cms_interface::ProgressFunction progress) override {
    Called("GetFile", std::string(id) + " " + localPath);
    answers_.progress = std::move(progress);
    if (answers_.downloads) info = answers_.downloaded;
    return answers_.downloads;
  }
  Status ReadDetails(const char* id, lxservices::cms_interface::DocumentQuery& query) override {
    const auto asked = [](const void* member, const char* name) { return member != nullptr ? name : ""; };
    Called("ReadDetails", std::string(id) + asked(query.current, " current") +
                              asked(query.latest, " latest") + asked(query.versions, " versions") +
                              asked(query.attributes, " attributes") + asked(query.contents, " contents"));
    if (query.contents != nullptr) *query.contents = answers_.contents;
    return answers_.detailsStatus;
  }
  Status GetFileInfo(const char* id, FileInfo& info) override {
    Called("GetFileInfo", id);
    const auto entry = answers_.infos.find(id);
    if (entry == answers_.infos.end()) return lxservices::cms_interface::Refused;
    info = entry->second;
    return lxservices::cms_interface::Ok;
  }
  bool AlwaysTrue() override { return true; }
  Status UploadNew(const char*, const lxservices::cms_interface::DocumentUploadParams&, FileInfo&,
                   lxservices::cms_interface::ProgressFunction) override {
    return Called("UploadNew"), lxservices::cms_interface::Refused;
  }
  Status UploadIteration(const char*, const lxservices::cms_interface::DocumentUploadParams&, FileInfo&,
                         lxservices::cms_interface::ProgressFunction) override {
    return Called("UploadIteration"), lxservices::cms_interface::Refused;
  }
  bool ReadDir(const char* path, std::function<void(const char*, const char*, bool)>) override {
    return Called("ReadDir", path), answers_.lists;
  }
  bool ReadDirExt(const char* path, lxservices::cms_interface::DirEntryCallback,
                  FileServer::ReadDirFlags) override {
    return Called("ReadDirExt", path), answers_.lists;
  }
  lxservices::cms_interface::DirLister OpenDir(const char* path) override {
    return Called("OpenDir", path), lxservices::cms_interface::DirLister();
  }
  bool IsPathWritable(const char* path) override { return Called("IsPathWritable", path), answers_.yes; }
  bool CanPathShowVersions(const char* path) override {
    return Called("CanPathShowVersions", path), answers_.yes;
  }
  bool CanPathShowDetails(const char* path) override {
    return Called("CanPathShowDetails", path), answers_.yes;
  }
  std::string GetServerURL() override { return url_; }
  std::string GetServerKey() override { return key_; }
  std::string BrowserInfo(const char* id) override { return Called("BrowserInfo", id), answers_.text; }
  lxservices::cms_interface::XliffServer* GetXliffServer() override {
    Called("GetXliffServer");
    return answers_.yes ? &xliffServer_ : nullptr;
  }
  lxservices::cms_interface::CheckoutServer* GetCheckoutServer() override {
    Called("GetCheckoutServer");
    return answers_.yes ? &checkoutServer_ : nullptr;
  }
  std::string EditAttributesURL(const char* id) override {
    return Called("EditAttributesURL", id), answers_.text;
  }
  std::string UIDFromVantryParams(const char* documentId, const char* workspaceId) override {
    Called("UIDFromVantryParams", Text(documentId) + " " + Text(workspaceId));
    return answers_.text;
  }
  std::string UIDFromVantryCadName(const char* cadName) override {
    return Called("UIDFromVantryCadName", Text(cadName)), answers_.text;
  }
  bool SupportsSeparatedSources() override { return Called("SupportsSeparatedSources"), answers_.yes; }
  bool SupportsVCSMetadata() override { return Called("SupportsVCSMetadata"), answers_.yes; }

 private:
  static std::string Text(const char* text) { return text != nullptr ? text : "(null)"; }
  void Called(const std::string& operation) { answers_.calls.push_back(operation); }
  void Called(const std::string& operation, const std::string& arguments) {
    answers_.calls.push_back(operation + "(" + arguments + ")");
  }

  std::string key_;
  std::string url_;
  FakeAnswers& answers_;
  FakeXliffServer xliffServer_;
  FakeCheckoutServer checkoutServer_;
};

using FakeVantry = FakeServer<lxservices::cms_interface::vantry::VantryFileServer>;
using FakeOther = FakeServer<FileServer>;

constexpr const char* plmUrl = "https://plm.example/vt";
constexpr const char* plmKey = "korvufenloom-vt://plm.example/vt/";

using Lines = std::vector<std::string>;
using Traces = std::vector<TraceLine>;

/// A test with the server "plm" in the table, which answers as the test says and has no wire.
class FakeServerTest : public testing::Test {
 protected:
  FakeServerTest() { Put<FakeVantry>("plm", plmKey, plmUrl); }

  template <typename Server>
  void Put(const std::string& nickname, const std::string& key, const std::string& url) {
    PutServer(key, std::make_shared<Server>(key, url, answers), nickname);
  }

  FakeAnswers answers;
  TraceRecorder trace;
};

}  // namespace vtdirect_test

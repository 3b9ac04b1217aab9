#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "connection/service_flags.h"
#include "connection/vt_connection.h"
#include "server/file_server.h"
#include "tests/support/operation.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"
#include "tests/support/wire_words.h"

namespace vtdirect_test {

inline constexpr const char* serverUrl = "https://plm.example/vt";

/// A document as the document service tells of it. Members that are not set here stand for a document that is
/// checked in and lies in the folder "Sub" of the product "Gadget".
struct Doc {
  std::string id = "D1";
  std::string revision = "A";
  std::string iteration = "1";
  bool isCheckout = false;
  bool isCheckoutByYou = false;
  bool isLatest = false;
  std::string checkoutByUser = "";
  std::string masterId = "M1";
  std::string number = "0042";
  std::string name = "Gear";
  std::string cadName = "gear.lxz";
  std::string contextId = "C5";
  std::string contextName = "Gadget";
  std::string contextType = "Product";
  std::string folderId = "OR:vn.folder.SubFolder:9";
  std::string folderPath = "/Gadget/Sub";
};

/// The JSON of a document; its texts must need no escaping.
std::string Json(const Doc& doc);

/// A JSON list of documents.
std::string Docs(const std::vector<Doc>& docs);

/// A row of an OData search.
struct Candidate {
  std::string id;
  std::string version;
  std::string checkOutStatus;
};

/// An OData answer with these rows.
std::string Candidates(const std::vector<Candidate>& candidates);

/// A workspace's JSON in the list of a context.
std::string Workspace(const std::string& id, const std::string& name);

/// A "$metadata" document of a schema version.
std::string Schema(int version);

/// The lines that a server object sends on its first use, to learn which services there are.
std::vector<std::string> SchemaLines();

/// Everything that a test of one function of the library needs: a wire, a record of the trace, a connection.
class LocationTest : public testing::Test {
 protected:
  LocationTest();
  ~LocationTest() override;

  /// Adds the answers to the three questions for services: a version each, 0 for a service that is missing.
  void AnswerSchemas(int dataAdmin, int dynamicDoc, int cadDoc);

  /// What was traced, without the lines on services that the server does not have.
  [[nodiscard]] std::vector<TraceLine> Traced() const;

  void ExpectQuiet() const;

  TemporaryDirectory directory;
  ScriptedTransport wire;
  TraceRecorder traces;
  std::shared_ptr<lxservices::cms_interface::vantry::VtConnection> connection;
  lxservices::cms_interface::vantry::ServiceFlags services;
  /// A server object on the same wire.
  std::shared_ptr<lxservices::cms_interface::FileServer> server;
};

// Paths of requests, without their base.
std::string DocumentPath(const std::string& id);
std::string VersionsPath(const std::string& id, const std::string& contextId = "C5");
std::string NumberPath(const std::string& number, const std::string& scope = {});
/// Search for objects by a CAD name that needs no escaping.
std::string ObjectsPath(const std::string& escapedName);
std::string DynamicV2Path(const std::string& escapedName);
std::string DynamicV1Path(const std::string& escapedName);
std::string CadPath(const std::string& escapedName);
std::string ContextsPath(const std::string& word);
std::string WorkspacesPath(const std::string& contextId = "C5");
std::string WorkspaceDocumentsPath(const std::string& workspaceId);
/// The tree of the product "Gadget" with a number of levels.
std::string TreePath(int levels);
/// The search in the folder F2 below the root folder F1 of the container C5.
std::string FolderSearchPath(const std::string& escapedName);

/// The answer to TreePath: root folder F1 with the folder F2 named "Sub" below it.
std::string Tree();
/// The answer to ContextsPath with one context of this id and name.
std::string Context(const std::string& id, const std::string& name);
/// The answer to ObjectsPath with one row for each pair of id and number.
std::string Objects(const std::vector<std::pair<std::string, std::string>>& rows);

}  // namespace vtdirect_test

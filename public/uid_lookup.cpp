#include "base/failure_trace.h"
#include "base/text.h"
#include "connection/server_check.h"
#include "public/host_callbacks.h"
#include "public/object_address.h"
#include "public/server_list.h"
#include "public/server_table.h"
#include "public/vt_direct_manager.h"
#include "server/create_file_server.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

bool IsSupported(const char* url) {
  return vantry::CheckServer(url, ForwardAuth, nullptr) == Ok;
}

bool IsVantry(const std::shared_ptr<FileServer>& server) {
  return dynamic_cast<vantry::VantryFileServer*>(server.get()) != nullptr;
}

// What becomes of a server that is not in the table: one that stays out of it lives for one call alone.
enum class NewServer { EntersTable, StaysOut };

std::shared_ptr<FileServer> FindOrMakeServer(const char* url, NewServer made) {
  auto server = FindServerByUrl(url);
  if (server != nullptr || url == nullptr || !IsSupported(url)) return server;
  return made == NewServer::EntersTable ? AddServerWithDerivedNickname(url)
                                        : CreateFileServer(url, ForwardAuth);
}

std::string LookUpCadName(const char* url, const char* cadName) {
  const FailureStep step("find a document by its name");
  const FailureMark mark;
  const auto server = FindOrMakeServer(url, NewServer::EntersTable);
  if (!IsVantry(server)) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(
        dp::TraceType::Error, "Failed to establish connection to server  at  URL %s\n", TextOrEmpty(url));
    return {};
  }
  const std::string id = server->UIDFromVantryCadName(cadName);
  if (!id.empty()) return UidOfId(*server, id);
  TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Error,
                                                    "Failed to find a CAD name %s at server URL %s\n",
                                                    TextOrEmpty(cadName), TextOrEmpty(url));
  return {};
}

}  // namespace

std::string UIDFromVantryCadName(const char* url, const char* cadName) {
  const FailureStep step("find a document by its name");
  std::string uid = LookUpCadName(url, cadName);
  if (uid.empty()) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to inquire uid for CAD Name %s, at server URL %s\n",
                         TextOrEmpty(cadName), TextOrEmpty(url));
  }
  return uid;
}

std::string UIDFromVantryParams(const char* url, const char* documentId, const char* workspace,
                                bool remember) {
  const FailureStep step("find a document by its id");
  const FailureMark mark;
  const auto server = FindOrMakeServer(url, remember ? NewServer::EntersTable : NewServer::StaysOut);
  if (!IsVantry(server)) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Error,
                                                      "Failed to connect to server: %s\n", TextOrEmpty(url));
    return {};
  }
  const std::string id = server->UIDFromVantryParams(documentId, workspace);
  if (id.empty()) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Error,
                                                      "Failed to find a sensible object: %s %s\n",
                                                      TextOrEmpty(documentId), TextOrEmpty(workspace));
    return {};
  }
  std::string uid = UidOfId(*server, id);
  if (uid.empty()) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to retrieve object: %s %s\n", TextOrEmpty(documentId),
                         id.c_str());
  }
  return uid;
}

}  // namespace VtDirectManager

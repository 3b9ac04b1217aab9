#include <map>
#include <memory>
#include <string>

#include "base/failure_step.h"
#include "public/object_address.h"
#include "public/path_resolution.h"
#include "public/sessions.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

// Whether a failure says that the server is of no use now, and not that the object is not there.
bool WritesServerOff(Status status) {
  return status == ConnectionFailed || status == Unauthorized || status == Unsupported;
}

Status ReadCurrentAndLatest(FileServer& server, const std::string& id, FileInfo& current,
                            LatestInfo& latest) {
  DocumentQuery query;
  query.current = &current;
  query.latest = &latest;
  return server.ReadDetails(id.c_str(), query);
}

// Fills a key that the host has put in the map; an attribute that is absent gives the empty text.
void FillDetail(std::map<VtDetails, std::string>& details, VtDetails key,
                std::map<std::string, std::string>& attributes, const char* name) {
  const auto detail = details.find(key);
  if (detail != details.end()) detail->second = attributes[name];
}

}  // namespace

bool GetLatest(const char* path, std::string& version, std::string& uid) {
  const FailureStep step("ask for the newest version");
  const FileTarget target = ResolveFileTarget(path, {}, 0);
  if (target.server == nullptr) return false;
  LatestInfo latest;
  DocumentQuery query;
  query.latest = &latest;
  if (target.server->ReadDetails(target.id.c_str(), query) != Ok) return false;
  version = latest.version;
  uid = UidOfId(*target.server, latest.id);
  return true;
}

std::string GetLatestUPath(const char* path) {
  const FailureStep step("ask for the newest version");
  const FileTarget target = ResolveFileTarget(path, {}, 0);
  if (target.server == nullptr) return {};
  FileInfo current;
  LatestInfo latest;
  if (ReadCurrentAndLatest(*target.server, target.id, current, latest) != Ok) return {};
  if (current.id == latest.id) return path;
  return UidOfId(*target.server, latest.id);
}

int GetStatus(const char* path, std::string& currentVersion, std::string& latestVersion,
              std::string* latestUid) {
  const FailureStep step("ask for the newest version");
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  if (target.server == nullptr) return -1;
  FileInfo current;
  LatestInfo latest;
  const Status status = ReadCurrentAndLatest(*target.server, target.id, current, latest);
  int result = -1;
  if (status == Ok) {
    currentVersion = current.version;
    latestVersion = latest.version;
    // Not the outputs, which may be one text.
    result = current.version == latest.version ? 0 : 1;
  } else if (WritesServerOff(status)) {
    BlockServerInSessions(target.server);
  }
  // After a failure too, with the empty id, for which no server has an object: every status query that wants
  // the UID ends in this request, and the text is then empty. It must not be saved.
  const auto aside = result < 0 ? std::make_unique<FailureAside>() : nullptr;
  if (latestUid != nullptr) *latestUid = UidOfId(*target.server, latest.id);
  return result;
}

bool GetLinkContext(const char* path, std::string& context) {
  const PathTarget target = ResolveTarget(path, {}, ResolveQuiet);
  if (target.server == nullptr) return false;
  context = target.server->GetServerKey();
  return true;
}

bool ReadDetails(const char* path, std::map<VtDetails, std::string>& details) {
  const FailureStep step("read the details");
  const FileTarget target = ResolveFileTarget(path, {}, ResolveQuiet);
  if (target.server == nullptr) return false;
  FileInfo current;
  std::map<std::string, std::string> attributes;
  DocumentQuery query;
  query.current = &current;
  query.attributes = &attributes;
  // The server is asked even for an empty map: the answer tells whether the object is there.
  if (target.server->ReadDetails(target.id.c_str(), query) != Ok) return false;
  FillDetail(details, DetailName, attributes, "name");
  FillDetail(details, DetailNumber, attributes, "number");
  return true;
}

}  // namespace VtDirectManager

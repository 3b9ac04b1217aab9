#include "public/source_links.h"

#include "base/failure_trace.h"
#include "base/file_name.h"
#include "public/object_address.h"
#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"

namespace lxservices::cms_interface {
namespace {

// The object that a link leads to; empty, traced, when there is none on this server.
std::string IdOfLink(const PathTarget& document, const std::string& name, const std::string& address) {
  const FailureMark mark;
  const PathTarget target = ResolveTarget(address.c_str(), document.table);
  if (target.server != document.server) {
    TracerFor({FailureKind::NotFound})(
        dp::TraceType::Warning, "Links to different servers are unsupported: link to %s will be broken\n",
        name.c_str());
    return {};
  }
  std::string id = IdOfTarget(target);
  if (id.empty()) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Warning,
                                                      "Failed to resolve %s : link to %s will be broken\n",
                                                      address.c_str(), name.c_str());
  }
  return id;
}

void ResolveSourceLink(const PathTarget& document, std::map<std::string, std::string>& result,
                       const std::string& name, const std::string& address) {
  const FailureStep step("find a source link");
  const FailureAside aside;  // the document is stored without the link
  if (name.empty()) {
    TracerFor({FailureKind::NotFound})(dp::TraceType::Error,
                                       "Not specifying a sensible source name is an error!");
    return;
  }
  std::string id;
  if (!address.empty()) id = IdOfLink(document, name, address);
  if (id.empty()) {
    result.erase(name);
  } else {
    result[name] = id;
  }
}

}  // namespace

std::map<std::string, std::string> ResolveSourceLinks(const PathTarget& document,
                                                      const std::map<std::string, std::string>& links) {
  std::map<std::string, std::string> result;
  for (const auto& [escapedName, address] : links) {
    ResolveSourceLink(document, result, UnescapeFileName(escapedName), address);
  }
  return result;
}

}  // namespace lxservices::cms_interface

namespace VtDirectManager {

using namespace lxservices::cms_interface;

void GetSourceLinks(const char* path, std::map<std::string, std::string>& links) {
  const FailureStep step("read the source links");
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  if (target.server == nullptr) return;
  FileInfo info;
  if (target.server->GetFileInfo(target.id.c_str(), info) != Ok) return;
  for (const auto& [name, id] : info.dependencies) links[EscapeFileName(name)] = UidOfId(*target.server, id);
}

bool ShouldCreate(const char* path) {
  const FailureStep step("ask whether the document has content");
  const FileTarget target = ResolveFileTarget(path, {}, 0);
  if (target.server == nullptr) return false;
  FileInfo info;
  if (target.server->GetFileInfo(target.id.c_str(), info) != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to find file %s", path);
    return false;
  }
  return info.size == 0;
}

}  // namespace VtDirectManager

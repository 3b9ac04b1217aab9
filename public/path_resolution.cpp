#include "public/path_resolution.h"

#include <string_view>
#include <utility>

#include "base/failure_trace.h"
#include "base/server_key.h"
#include "public/address_text.h"
#include "public/server_table.h"
#include "public/sessions.h"

namespace lxservices::cms_interface {
namespace {

dp::TraceType FailureLevel(unsigned flags) {
  return (flags & ResolveQuiet) != 0 ? dp::TraceType::Miss : dp::TraceType::Error;
}

void Report(const VtDirectManager::StatusCallback& status, VtDirectManager::StatusCode code) {
  if (status) status(code, nullptr);
}

PathTarget SplitAddress(const char* path, std::shared_ptr<const ServerTable> table) {
  PathTarget target;
  target.table = std::move(table);
  target.nickname = SplitVfsPath(path, target.relativePath);
  if (!target.nickname.empty()) {
    target.server = FindServerByNickname(*target.table, target.nickname);
    return target;
  }
  UidParts uid = SplitUid(path);
  target.base = std::move(uid.base);
  target.id = std::move(uid.id);
  target.server = FindServerByKey(*target.table, target.base);
  return target;
}

// A server that a session has written off is in the list; another one is not.
FailureKind KindOfNoServer(const PathTarget& target) {
  if (target.server != nullptr) return FailureKind::Unreachable;
  std::string key = WithTrailingSlash(target.base);
  const auto entry = target.table->nicknames.find(target.nickname);
  if (entry != target.table->nicknames.end()) key = entry->second;
  return IsKeyBlocked(key) ? FailureKind::Unreachable : FailureKind::NotFound;
}

PathTarget Resolve(const char* path, std::shared_ptr<const ServerTable> table,
                   const VtDirectManager::StatusCallback& status, unsigned flags) {
  const FailureStep step("find the server");
  const FailureMark mark;
  if (path == nullptr) {
    ReportReason({FailureKind::NotFound});
    return {};
  }
  PathTarget target = SplitAddress(path, std::move(table));
  const bool mustAnswer = (flags & ResolveProbe) != 0;
  if (target.server != nullptr && (!mustAnswer || target.server->TestConnection())) return target;
  TracerFor(FollowsOr(mark, KindOfNoServer(target)))(FailureLevel(flags),
                                                     "Failed to connect to server path %s\n", path);
  Report(status, VtDirectManager::StatusConnectFailed);
  return {};
}

}  // namespace

PathTarget ResolveTarget(const char* path, const VtDirectManager::StatusCallback& status, unsigned flags) {
  return Resolve(path, TheManagerState().table(), status, flags);
}

PathTarget ResolveTarget(const char* path, std::shared_ptr<const ServerTable> table) {
  return Resolve(path, std::move(table), {}, 0);
}

FileTarget ResolveFileTarget(const char* path, const VtDirectManager::StatusCallback& status,
                             unsigned flags) {
  const FailureMark mark;
  const PathTarget target = ResolveTarget(path, status, flags);
  if (target.server == nullptr) return {};
  const FailureStep step("find the file");
  if ((flags & ResolveNeedId) != 0 && target.id.empty()) {
    ReportReason({FailureKind::NotFound});
    return {};
  }
  std::string id = IdOfTarget(target);
  if (!id.empty()) return {target.server, std::move(id)};
  TracerFor(FollowsOr(mark, FailureKind::NotFound))(FailureLevel(flags), "Failed to find file %s", path);
  Report(status, VtDirectManager::StatusFileNotFound);
  return {};
}

std::string IdOfTarget(const PathTarget& target) {
  constexpr std::string_view byId = "?id=";
  if (!target.id.empty()) return target.id;
  const std::string_view relativePath = target.relativePath;
  if (relativePath.starts_with(byId)) {
    const std::string_view rest = relativePath.substr(byId.size());
    return std::string(rest.substr(0, rest.find('&')));
  }
  return target.server->ResolvePath(target.relativePath.c_str());
}

}  // namespace lxservices::cms_interface

#include "base/failure_step.h"
#include "base/file_name.h"
#include "browsing/document_to_path.h"
#include "public/address_text.h"
#include "public/object_address.h"
#include "public/path_resolution.h"
#include "public/server_table.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;
using vantry::DocumentPathForm;

namespace {

// Cuts a version off: everything from the last "|" on, if that "|" is in the last segment.
std::string WithoutVersion(const std::string& relativePath) {
  const auto bar = relativePath.rfind('|');
  if (bar == std::string::npos) return relativePath;
  const auto slash = relativePath.rfind('/');
  return slash != std::string::npos && bar < slash ? relativePath : relativePath.substr(0, bar);
}

std::string VfsPathOfId(const PathTarget& target, DocumentPathForm form) {
  const FailureStep step("find the path");
  const FailureMark mark;
  const std::string text = target.server->GetVFSPath(target.id.c_str(), form == DocumentPathForm::Folder,
                                                     form == DocumentPathForm::LatestVersion);
  if (text.empty()) ReportReason(FollowsOr(mark, FailureKind::NotFound));
  return text.empty() ? std::string() : VfsPathOf(target.server, *target.table, text);
}

std::string ResolvedVfsPath(const char* path, DocumentPathForm form) {
  PathTarget target = ResolveTarget(path, {}, 0);
  if (target.server == nullptr) return {};
  const FailureStep step("find the file");
  const FailureMark mark;
  if (target.id.empty()) target.id = target.server->ResolvePath(target.relativePath.c_str());
  if (target.id.empty()) {
    ReportReason(FollowsOr(mark, FailureKind::NotFound));
    return {};
  }
  return VfsPathOfId(target, form);
}

}  // namespace

std::string GetUID(const char* path) {
  if (IsUID(path)) {
    const UidParts uid = SplitUid(path);
    if (!uid.base.empty() && !uid.id.empty()) {
      return MakeUid(uid.base, uid.id, UnescapeFileName(GetFileName(path)));
    }
  }
  const FileTarget target = ResolveFileTarget(path, {}, ResolveQuiet);
  return target.server != nullptr ? UidOfId(*target.server, target.id) : std::string();
}

std::string GetVFSPathLatest(const char* path) {
  const PathTarget target = ResolveTarget(path, {}, 0);
  if (target.server == nullptr) return {};
  if (!target.id.empty()) return VfsPathOfId(target, DocumentPathForm::LatestVersion);
  return VfsPathOf(target.server, *target.table, WithoutVersion(target.relativePath));
}

std::string GetVFSPathVersioned(const char* path) {
  return ResolvedVfsPath(path, DocumentPathForm::ThisVersion);
}

std::string GetVFSFolderPath(const char* path) {
  return ResolvedVfsPath(path, DocumentPathForm::Folder);
}

std::string GetServerURL(const char* path) {
  const PathTarget target = ResolveTarget(path, {}, ResolveQuiet);
  return target.server != nullptr ? target.server->GetServerURL() : std::string();
}

std::string GetServerNickname(const char* path) {
  const PathTarget target = ResolveTarget(path, {}, ResolveQuiet);
  if (target.server == nullptr) return {};
  return !target.nickname.empty() ? target.nickname : FindNicknameOf(*target.table, target.server);
}

}  // namespace VtDirectManager

#include <optional>
#include <string>

#include "base/failure_trace.h"
#include "base/file_name.h"
#include "platform/uri.h"
#include "public/address_text.h"
#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

// The name in a UID's file parameter, escaped as in a path; nothing when the parameter is absent or empty.
std::optional<std::string> NameInUid(const char* uid) {
  const auto plain = PlainNameInUid(uid);
  return plain ? std::optional(EscapeFileName(*plain)) : std::nullopt;
}

// The last segment of a VFS path without its version; nothing for a path without "/".
std::optional<std::string> NameInVfsPath(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return std::nullopt;
  const std::string name = path.substr(slash + 1);
  return name.substr(0, name.find('|'));
}

std::string NameFromServer(const char* path) {
  const FileTarget target = ResolveFileTarget(path, {}, 0);
  if (target.server == nullptr) return {};
  FileInfo info;
  if (target.server->GetFileInfo(target.id.c_str(), info) != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to find file %s", path);
    return {};
  }
  return EscapeFileName(info.cadName);
}

}  // namespace

bool FileExists(const char* path) {
  const FileTarget target = ResolveFileTarget(path, {}, ResolveQuiet);
  FileInfo info;
  return target.server != nullptr && target.server->GetFileInfo(target.id.c_str(), info) == Ok;
}

std::string GetFileName(const char* path) {
  if (path == nullptr || *path == '\0') return {};
  std::optional<std::string> name;
  if (IsUID(path)) {
    name = NameInUid(path);
  } else if (IsVFSPath(path)) {
    name = NameInVfsPath(path);
  }
  return name ? *name : NameFromServer(path);
}

}  // namespace VtDirectManager

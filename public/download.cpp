#include <optional>
#include <utility>

#include "base/failure_trace.h"
#include "base/step_words.h"
#include "base/text.h"
#include "base/tracers.h"
#include "connection/url_escape.h"
#include "public/host_callbacks.h"
#include "public/object_address.h"
#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;
using vantry::EscapeForUrl;

namespace {

std::optional<FileInfo> DownloadTarget(const PathTarget& target, const std::string& localPath,
                                       const DownloadOptions& options) {
  if (target.server == nullptr) return std::nullopt;
  const std::string id = IdOfTarget(target);
  FileInfo info;
  if (id.empty()) return std::nullopt;
  FileServer& server = *target.server;
  const bool done = options.compareSize
                        ? server.GetWholeFile(id.c_str(), localPath.c_str(), info, options.progress)
                        : server.GetFile(id.c_str(), localPath.c_str(), info, options.progress);
  if (!done) return std::nullopt;
  return info;
}

// Opaque to hosts; never parsed here.
std::string CacheKeyOf(FileServer& server, const SourceEntry& source) {
  return "_lxvdccache:" + EscapeForUrl(server.GetServerKey()) + "://" + EscapeForUrl(source.key) + "&file=/" +
         EscapeForUrl(source.fileName);
}

}  // namespace

bool GetFile(const char* path, const char* localPath, std::string& uid, StatusCallback status,
             ProgressCallback progress) {
  return GetFile(path, localPath, uid, DownloadOptions{std::move(status), std::move(progress), false});
}

bool GetFile(const char* path, const char* localPath, std::string& uid, const DownloadOptions& options) {
  const FailureStep step(stepDownload);
  const FailureMark mark;
  const StatusCallback& status = options.status;
  if (path != nullptr) VtDirectTracer()(dp::TraceType::Information, "Downloading %s\n", path);
  const PathTarget target = ResolveTarget(path, status, 0);
  if (const auto info = DownloadTarget(target, TextOrEmpty(localPath), options)) {
    std::string result = UidOfInfo(*target.server, *info);
    VtDirectTracer()(dp::TraceType::Information, "Downloading %s succeeded\n", path);
    uid = std::move(result);  // the path is not looked at any more: a host may have handed in this very text
    if (status) status(StatusOk, uid.c_str());
    return true;
  }
  // After a failed resolution this is the second call, on purpose: the first tells why, this one that the
  // operation is over.
  if (path != nullptr)
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Error, "Failed to download %s\n", path);
  if (status) status(StatusDownloadFailed, nullptr);
  return false;
}

bool GetFileAsync(const char* path, const char* localPath, StatusCallback status, ProgressCallback progress) {
  return GetFileAsync(path, localPath, DownloadOptions{std::move(status), std::move(progress), false});
}

bool GetFileAsync(const char* path, const char* localPath, const DownloadOptions& options) {
  // The target is dropped: the task resolves the path afresh, since the server may be gone by then.
  if (ResolveTarget(path, options.status, ResolveProbe).server == nullptr) return false;
  return RunTask([path = std::string(path), localPath = std::string(TextOrEmpty(localPath)), options] {
    std::string uid;
    (void)GetFile(path.c_str(), localPath.c_str(), uid, options);
  });
}

bool GetFileDownloadURL(const char* path, std::string& url, std::string* cacheKey) {
  const FileTarget target = ResolveFileTarget(path, {}, 0);
  if (target.server == nullptr) return false;
  std::vector<SourceEntry> contents;
  DocumentQuery query;
  query.contents = &contents;
  if (target.server->ReadDetails(target.id.c_str(), query) != Ok) return false;
  if (contents.empty()) {
    url.clear();
    return true;
  }
  url = contents.front().url;
  if (cacheKey != nullptr) *cacheKey = CacheKeyOf(*target.server, contents.front());
  return true;
}

std::optional<std::uint64_t> GetContentSize(const char* path) {
  const FailureStep step("ask for the size");
  const FileTarget target = ResolveFileTarget(path, {}, 0);
  FileInfo info;
  if (target.server == nullptr || target.server->GetFileInfo(target.id.c_str(), info) != Ok) return {};
  return info.downloadSize;
}

}  // namespace VtDirectManager

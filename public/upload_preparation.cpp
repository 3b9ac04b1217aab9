#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/text.h"
#include "public/source_links.h"
#include "public/upload_job.h"

namespace lxservices::cms_interface {
namespace {

DocumentKind KindOf(VtDirectManager::FileType type) {
  switch (type) {
    case VtDirectManager::FileTypeGeneral:
      return DocumentKind::General;
    case VtDirectManager::FileTypeUgc:
      return DocumentKind::Ugc;
    default:
      return DocumentKind::Fenlet;
  }
}

// The server half: whatever the address names on it.
std::optional<UploadJob> PrepareUploadJob(const PathTarget& target, const UploadRequest& request,
                                          const VtDirectManager::StatusCallback& status) {
  const FailureStep step("find the server");
  const FailureMark mark;
  if (!target.server->TestConnection()) {
    TracerFor(FollowsOr(mark, FailureKind::Unreachable))(
        dp::TraceType::Error, "Failed to connect to server path %s\n", target.server->GetServerURL().c_str());
    if (status) status(VtDirectManager::StatusConnectFailed, nullptr);
    return std::nullopt;
  }
  UploadJob job;
  job.server = target.server;
  job.kind = KindOf(request.kind);
  if (request.sourceLinks != nullptr) job.dependencies = ResolveSourceLinks(target, *request.sourceLinks);
  job.mainPath = request.mainPath;
  job.viewablePath = TextOrEmpty(request.viewablePath);
  if (request.language != nullptr) job.language = request.language;
  return job;
}

// An object with a working copy gets a store, and one that is in a temporary workspace a check-in after
// it.
void PrepareIteration(const std::string& id, const UploadRequest& request, UploadJob& job) {
  job.id = id;
  job.checkIn = request.checkIn;
  job.checkedOut = false;
  CheckoutServer* checkout = job.server->GetCheckoutServer();
  VtCheckoutState state;
  if (checkout == nullptr || !checkout->GetCheckoutState(id.c_str(), state)) return;
  if (!job.checkIn && request.autoCheckIn) job.checkIn = state.inWorkspace && !state.inUserWorkspace;
  job.checkedOut = state.inWorkspace;
}

// That nothing is there is what a new document needs, and a look that fails counts as that.
bool IsThere(FileServer& server, const std::string& relativePath) {
  const FailureAside aside;
  const std::string id = server.ResolvePath(relativePath.c_str());
  FileInfo info;
  return !id.empty() && server.GetFileInfo(id.c_str(), info) == Ok;
}

// A VFS path never overwrites: a new iteration needs a UID.
bool PrepareCreation(const PathTarget& target, const char* path, UploadJob& job) {
  if (IsThere(*job.server, target.relativePath)) {
    TracerFor({FailureKind::Conflict})(dp::TraceType::Error, "File %s already exists\n", path);
    return false;
  }
  job.relativePath = target.relativePath;
  return true;
}

// What storing nothing would have been: the server is not asked, so an id in a workspace counts as checked
// out.
VtDirectManager::StatusCode CodeOfAddress(const PathTarget& target) {
  if (target.id.empty()) return VtDirectManager::StatusCreateFailed;
  const bool inWorkspace = !vantry::ParseCheckoutId(target.id).workspace.empty();
  return inWorkspace ? VtDirectManager::StatusCheckedOutUpdateFailed : VtDirectManager::StatusUpdateFailed;
}

// A host that has no content to store has made a mistake, and is told so without a request.
void ReportNoContent(const PathTarget& target, const char* path,
                     const VtDirectManager::StatusCallback& status) {
  TracerFor({FailureKind::LocalFile})(dp::TraceType::Error, "No local file to store at %s\n", path);
  if (status) status(CodeOfAddress(target), nullptr);
}

}  // namespace

std::optional<UploadJob> PrepareUpload(const UploadRequest& request,
                                       const VtDirectManager::StatusCallback& status) {
  const FailureStep step("prepare the upload");
  const PathTarget target = ResolveTarget(request.path, {}, 0);
  if (target.server == nullptr) return std::nullopt;
  if (request.mainPath == nullptr) {
    ReportNoContent(target, request.path, status);
    return std::nullopt;
  }
  auto job = PrepareUploadJob(target, request, status);
  if (!job) return std::nullopt;
  if (!target.id.empty()) {
    PrepareIteration(target.id, request, *job);
  } else if (!PrepareCreation(target, request.path, *job)) {
    return std::nullopt;
  }
  return job;
}

}  // namespace lxservices::cms_interface

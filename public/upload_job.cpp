#include "public/upload_job.h"

#include "base/failure_step.h"
#include "base/tracers.h"
#include "public/host_callbacks.h"
#include "public/manager_state.h"
#include "public/object_address.h"

namespace lxservices::cms_interface {
namespace {

using VtDirectManager::StatusCode;

DocumentUploadParams ParamsOf(const UploadJob& job) {
  return {job.kind,
          job.mainPath.c_str(),
          job.viewablePath.c_str(),
          job.vcsPath.c_str(),
          job.language.c_str(),
          &job.dependencies};
}

StatusCode CodeOf(Status status, StatusCode otherwise) {
  return status == TooLarge ? VtDirectManager::StatusFileTooLarge : otherwise;
}

// Stores into a checkout and checks it in if that is wanted.
bool StoreCheckedOut(const UploadJob& job, const DocumentUploadParams& params, FileInfo& info,
                     const VtDirectManager::ProgressCallback& progress, StatusCode& code) {
  code = VtDirectManager::StatusCheckedOutUpdateFailed;
  CheckoutServer* checkout = job.server->GetCheckoutServer();
  if (checkout == nullptr) return false;
  const Status status = checkout->Store(job.id.c_str(), params, progress);
  code = CodeOf(status, code);
  if (status != Ok) return false;
  if (job.checkIn) return checkout->Checkin(job.id.c_str(), info);
  // The store is done, whether or not its document can be read now.
  const FailureAside aside;
  (void)job.server->GetFileInfo(job.id.c_str(), info);
  return true;
}

bool Transfer(const UploadJob& job, FileInfo& info, const VtDirectManager::ProgressCallback& progress,
              StatusCode& code) {
  const DocumentUploadParams params = ParamsOf(job);
  if (!job.id.empty() && job.checkedOut) return StoreCheckedOut(job, params, info, progress, code);
  const bool isNew = job.id.empty();
  const Status status = isNew ? job.server->UploadNew(job.relativePath.c_str(), params, info, progress)
                              : job.server->UploadIteration(job.id.c_str(), params, info, progress);
  code = CodeOf(status, isNew ? VtDirectManager::StatusCreateFailed : VtDirectManager::StatusUpdateFailed);
  return status == Ok;
}

}  // namespace

bool RunUploadJob(const UploadJob& job, const VtDirectManager::StatusCallback& status,
                  const VtDirectManager::ProgressCallback& progress) {
  const FailureStep step("store");
  const FailureMark mark;
  VtDirectTracer()(dp::TraceType::Information, "Storing document (%s %s) to (<%s> - <%s>)\n",
                   job.mainPath.c_str(), job.viewablePath.c_str(), job.vcsPath.c_str(),
                   job.relativePath.c_str());
  FileInfo info;
  StatusCode code = VtDirectManager::StatusOk;
  if (!Transfer(job, info, progress, code)) {
    ReportReason(FollowsOr(mark, FailureKind::Refused));
    if (status) status(code, nullptr);
    return false;
  }
  VtDirectTracer()(dp::TraceType::Information, "Uploaded document id %s (%s)\n", info.id.c_str(),
                   info.version.c_str());
  TheManagerState().invalidateCache = true;
  if (status) status(VtDirectManager::StatusOk, UidOfInfo(*job.server, info, nullptr).c_str());
  return true;
}

bool PostUploadJob(const UploadJob& job, const VtDirectManager::StatusCallback& status,
                   const VtDirectManager::ProgressCallback& progress) {
  return RunTask([job, status, progress] { (void)RunUploadJob(job, status, progress); });
}

}  // namespace lxservices::cms_interface

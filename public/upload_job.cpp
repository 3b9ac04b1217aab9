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
  return {job.kind, job.mainPath, job.viewablePath, job.vcsPath, job.language, &job.dependencies};
}

StatusCode CodeOf(Status status, StatusCode otherwise) {
  return status == TooLarge ? VtDirectManager::StatusFileTooLarge : otherwise;
}

// What a transfer came to, in the words of the host's callback.
struct Transferred {
  StatusCode code = VtDirectManager::StatusOk;
  FileInfo info;  ///< as far as StatusOk
};

// Stores into a checkout and checks it in if that is wanted.
Transferred StoreCheckedOut(const UploadJob& job, const DocumentUploadParams& params,
                            const VtDirectManager::ProgressCallback& progress) {
  const Transferred failed{VtDirectManager::StatusCheckedOutUpdateFailed, {}};
  CheckoutServer* checkout = job.server->GetCheckoutServer();
  if (checkout == nullptr) return failed;
  const Status status = checkout->Store(job.id.c_str(), params, progress);
  if (status != Ok) return {CodeOf(status, failed.code), {}};
  Transferred stored;
  if (job.checkIn) return checkout->Checkin(job.id.c_str(), stored.info) ? stored : failed;
  // The store is done, whether or not its document can be read now.
  const FailureAside aside;
  (void)job.server->GetFileInfo(job.id.c_str(), stored.info);
  return stored;
}

Transferred Transfer(const UploadJob& job, const VtDirectManager::ProgressCallback& progress) {
  const DocumentUploadParams params = ParamsOf(job);
  if (!job.id.empty() && job.checkedOut) return StoreCheckedOut(job, params, progress);
  const bool isNew = job.id.empty();
  Transferred done;
  const Status status = isNew ? job.server->UploadNew(job.relativePath.c_str(), params, done.info, progress)
                              : job.server->UploadIteration(job.id.c_str(), params, done.info, progress);
  if (status == Ok) return done;
  done.code =
      CodeOf(status, isNew ? VtDirectManager::StatusCreateFailed : VtDirectManager::StatusUpdateFailed);
  return done;
}

}  // namespace

bool RunUploadJob(const UploadJob& job, const VtDirectManager::StatusCallback& status,
                  const VtDirectManager::ProgressCallback& progress) {
  const FailureStep step("store");
  const FailureMark mark;
  VtDirectTracer()(dp::TraceType::Information, "Storing document (%s %s) to (<%s> - <%s>)\n",
                   job.mainPath.c_str(), job.viewablePath.c_str(), job.vcsPath.c_str(),
                   job.relativePath.c_str());
  const auto [code, info] = Transfer(job, progress);
  if (code != VtDirectManager::StatusOk) {
    ReportReason(FollowsOr(mark, FailureKind::Refused));
    if (status) status(code, nullptr);
    return false;
  }
  VtDirectTracer()(dp::TraceType::Information, "Uploaded document id %s (%s)\n", info.id.c_str(),
                   info.version.c_str());
  TheManagerState().invalidateCache = true;
  if (status) status(VtDirectManager::StatusOk, UidOfInfo(*job.server, info).c_str());
  return true;
}

bool PostUploadJob(const UploadJob& job, const VtDirectManager::StatusCallback& status,
                   const VtDirectManager::ProgressCallback& progress) {
  return RunTask([job, status, progress] { (void)RunUploadJob(job, status, progress); });
}

}  // namespace lxservices::cms_interface

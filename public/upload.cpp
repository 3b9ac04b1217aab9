#include <utility>

#include "public/upload_job.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

UploadRequest FenletRequest(const char* path, const char* mainPath, const char* viewablePath,
                            const std::map<std::string, std::string>* sourceLinks, const char* language,
                            bool checkIn) {
  return {FileTypeFenlet, path, mainPath, viewablePath, language, sourceLinks, checkIn, true};
}

UploadRequest PlainRequest(FileType kind, const char* path, const char* mainPath, const char* language,
                           bool checkIn) {
  return {kind, path, mainPath, "", language, nullptr, checkIn, false};
}

// A plain document is checked in only when asked to, and a Fenlet document in a temporary workspace always.
UploadRequest StoreRequest(const char* path, const char* mainPath, const StoreOptions& options) {
  const bool isFenlet = options.kind != FileTypeGeneral && options.kind != FileTypeUgc;
  UploadRequest request =
      PlainRequest(options.kind, path, mainPath, options.language, options.checkIn == CheckInWish::CheckIn);
  request.autoCheckIn = isFenlet && options.checkIn == CheckInWish::ByAddress;
  if (isFenlet) request.viewablePath = options.viewablePath;
  if (isFenlet) request.sourceLinks = options.sourceLinks;
  return request;
}

bool PrepareStore(const char* path, const char* mainPath, const StoreOptions& options, UploadJob& job) {
  if (!PrepareUpload(StoreRequest(path, mainPath, options), options.status, job)) return false;
  if (job.kind == DocumentKind::Fenlet && options.vcsPath != nullptr) job.vcsPath = options.vcsPath;
  return true;
}

bool UploadNow(const UploadRequest& request, const StatusCallback& status, const ProgressCallback& progress) {
  UploadJob job;
  return PrepareUpload(request, status, job) && RunUploadJob(job, status, progress);
}

bool UploadLater(const UploadRequest& request, const StatusCallback& status,
                 const ProgressCallback& progress) {
  UploadJob job;
  return PrepareUpload(request, status, job) && PostUploadJob(job, status, progress);
}

}  // namespace

bool Upload(const char* path, const char* mainPath, const char* viewablePath,
            const std::map<std::string, std::string>& sourceLinks, StatusCallback status,
            ProgressCallback progress, const char* language, bool checkIn) {
  return UploadNow(FenletRequest(path, mainPath, viewablePath, &sourceLinks, language, checkIn), status,
                   progress);
}

bool Upload(FileType kind, const char* path, const char* mainPath, StatusCallback status,
            ProgressCallback progress, const char* language, bool checkIn) {
  return UploadNow(PlainRequest(kind, path, mainPath, language, checkIn), status, progress);
}

bool UploadAsync(const char* path, const char* mainPath, const char* viewablePath,
                 const std::map<std::string, std::string>& sourceLinks, StatusCallback status,
                 ProgressCallback progress, const char* language, bool checkIn) {
  return UploadLater(FenletRequest(path, mainPath, viewablePath, &sourceLinks, language, checkIn), status,
                     progress);
}

bool UploadAsync(FileType kind, const char* path, const char* mainPath, StatusCallback status,
                 ProgressCallback progress, const char* language, bool checkIn) {
  return UploadLater(PlainRequest(kind, path, mainPath, language, checkIn), status, progress);
}

bool UploadFenletAsync(const char* path, const char* mainPath, const UploadFenletParams& params,
                       StatusCallback status, ProgressCallback progress, bool checkIn) {
  UploadJob job;
  const UploadRequest request =
      FenletRequest(path, mainPath, params.viewablePath, params.sourceLinks, params.language, checkIn);
  if (!PrepareUpload(request, status, job)) return false;
  if (params.vcsPath != nullptr) job.vcsPath = params.vcsPath;
  return PostUploadJob(job, status, progress);
}

bool Store(const char* path, const char* mainPath, const StoreOptions& options) {
  UploadJob job;
  return PrepareStore(path, mainPath, options, job) && RunUploadJob(job, options.status, options.progress);
}

bool StoreAsync(const char* path, const char* mainPath, const StoreOptions& options) {
  UploadJob job;
  return PrepareStore(path, mainPath, options, job) && PostUploadJob(job, options.status, options.progress);
}

}  // namespace VtDirectManager

#include <optional>
#include <utility>

#include "base/text.h"
#include "public/upload_job.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

UploadRequest PlainRequest(FileType kind, const char* path, const char* mainPath, const char* language,
                           bool checkIn) {
  return {.kind = kind,
          .path = path,
          .mainPath = mainPath,
          .viewablePath = "",
          .language = language,
          .checkIn = checkIn};
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

std::optional<UploadJob> PrepareStore(const char* path, const char* mainPath, const StoreOptions& options) {
  auto job = PrepareUpload(StoreRequest(path, mainPath, options), options.status);
  if (job && job->kind == DocumentKind::Fenlet) job->vcsPath = TextOrEmpty(options.vcsPath);
  return job;
}

bool UploadNow(const UploadRequest& request, const StatusCallback& status, const ProgressCallback& progress) {
  const auto job = PrepareUpload(request, status);
  return job && RunUploadJob(*job, status, progress);
}

bool UploadLater(const UploadRequest& request, const StatusCallback& status,
                 const ProgressCallback& progress) {
  const auto job = PrepareUpload(request, status);
  return job && PostUploadJob(*job, status, progress);
}

}  // namespace

bool Upload(const char* path, const char* mainPath, const char* viewablePath,
            const std::map<std::string, std::string>& sourceLinks, StatusCallback status,
            ProgressCallback progress, const char* language, bool checkIn) {
  const UploadRequest request{.path = path,
                              .mainPath = mainPath,
                              .viewablePath = viewablePath,
                              .language = language,
                              .sourceLinks = &sourceLinks,
                              .checkIn = checkIn,
                              .autoCheckIn = true};
  return UploadNow(request, status, progress);
}

bool Upload(FileType kind, const char* path, const char* mainPath, StatusCallback status,
            ProgressCallback progress, const char* language, bool checkIn) {
  return UploadNow(PlainRequest(kind, path, mainPath, language, checkIn), status, progress);
}

bool UploadAsync(const char* path, const char* mainPath, const char* viewablePath,
                 const std::map<std::string, std::string>& sourceLinks, StatusCallback status,
                 ProgressCallback progress, const char* language, bool checkIn) {
  const UploadRequest request{.path = path,
                              .mainPath = mainPath,
                              .viewablePath = viewablePath,
                              .language = language,
                              .sourceLinks = &sourceLinks,
                              .checkIn = checkIn,
                              .autoCheckIn = true};
  return UploadLater(request, status, progress);
}

bool UploadAsync(FileType kind, const char* path, const char* mainPath, StatusCallback status,
                 ProgressCallback progress, const char* language, bool checkIn) {
  return UploadLater(PlainRequest(kind, path, mainPath, language, checkIn), status, progress);
}

bool UploadFenletAsync(const char* path, const char* mainPath, const UploadFenletParams& params,
                       StatusCallback status, ProgressCallback progress, bool checkIn) {
  const UploadRequest request{.path = path,
                              .mainPath = mainPath,
                              .viewablePath = params.viewablePath,
                              .language = params.language,
                              .sourceLinks = params.sourceLinks,
                              .checkIn = checkIn,
                              .autoCheckIn = true};
  auto job = PrepareUpload(request, status);
  if (!job) return false;
  job->vcsPath = TextOrEmpty(params.vcsPath);
  return PostUploadJob(*job, status, progress);
}

bool Store(const char* path, const char* mainPath, const StoreOptions& options) {
  const auto job = PrepareStore(path, mainPath, options);
  return job && RunUploadJob(*job, options.status, options.progress);
}

bool StoreAsync(const char* path, const char* mainPath, const StoreOptions& options) {
  const auto job = PrepareStore(path, mainPath, options);
  return job && PostUploadJob(*job, options.status, options.progress);
}

}  // namespace VtDirectManager

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

}  // namespace VtDirectManager

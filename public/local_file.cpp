#include "base/failure_step.h"
#include "base/step_words.h"
#include "base/tracers.h"
#include "connection/scoped_temp_path.h"
#include "platform/files.h"
#include "public/vt_direct_manager.h"
#include "public/vt_direct_utils.h"

namespace VtDirectUtils {

LocalFileHolder::LocalFileHolder(const std::string& localPath, const std::string& tempPath,
                                 bool tempIsDirectory)
    : localPath_(localPath), tempPath_(tempPath), tempIsDirectory_(tempIsDirectory) {}

LocalFileHolder::~LocalFileHolder() {
  using namespace lxservices::cms_interface;
  vantry::RemoveTempPath(tempPath_, tempIsDirectory_, VtDirectUtilsTracer());
}

std::string LocalFileHolder::GetLocalPath() {
  return localPath_;
}

bool LocalFileHolder::IsTemporary() {
  return !tempPath_.empty();
}

std::unique_ptr<LocalFileHolder> GetLocalFile(const char* path) {
  using namespace lxservices::cms_interface;
  const FailureStep step(stepDownload);
  const std::string directory = du::FileSystem::MkTempDir("fenloom");
  if (directory.empty()) {
    ReportReason({FailureKind::LocalFile});
    return nullptr;
  }
  // Without a name there is no holder yet that would remove the directory, and it stays
  // behind, empty; docs/known-behaviour.md tells hosts so.
  const std::string name = VtDirectManager::GetFileName(path);
  if (name.empty()) return nullptr;
  du::FileSpec file;
  file.SetLocation(directory);
  file.SetFile(name);
  std::string localPath;
  file.GetFileSpec(&localPath);
  auto holder = std::make_unique<LocalFileHolder>(localPath, directory, true);
  std::string uid;
  if (!VtDirectManager::GetFile(path, localPath.c_str(), uid, {}, {})) return nullptr;
  return holder;
}

}  // namespace VtDirectUtils

#include "connection/scoped_temp_path.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "base/failure_trace.h"
#include "base/tracers.h"
#include "platform/files.h"

namespace lxservices::cms_interface::vantry {

ScopedTempPath::ScopedTempPath(std::string path, bool isDirectory)
    : path_(std::move(path)), isDirectory_(isDirectory) {}

ScopedTempPath::~ScopedTempPath() {
  RemoveTempPath(path_, isDirectory_, VtDirectTracer());
}

void RemoveTempPath(const std::string& path, bool isDirectory, const dp::LXTracer& tracer) {
  if (path.empty()) return;
  const FailureStep step("remove a temporary file");
  const FailureAside aside;
  if (isDirectory) {
    if (!du::FileSystem::DeletePath(path, false)) {
      TracerFor({FailureKind::LocalFile}, tracer)(dp::TraceType::Error, "Failed to delete path %s",
                                                  path.c_str());
    }
  } else if (du::FileSystem::Unlink(path.c_str(), false) == -1) {
    // Not strerror, whose text another thread may write over.
    const std::string reason = std::generic_category().message(errno);
    TracerFor({FailureKind::LocalFile}, tracer)(dp::TraceType::Error, "Failed to unlink file %s: %s",
                                                path.c_str(), reason.c_str());
  }
}

std::string MakeTempFile(const char* stem, const char* extension) {
  return du::FileSystem::MkTempFile(du::FileSystem::GetTempDir(true).c_str(), stem, extension);
}

}  // namespace lxservices::cms_interface::vantry

#include "documents/storing/text_file.h"

#include "base/failure_step.h"

#include <cstdio>

#include "platform/files.h"

namespace lxservices::cms_interface::vantry {

std::string WriteTextFile(const std::string& path, std::string_view text) {
  std::FILE* file = du::FileSystem::lxfopen(path.c_str(), "wb");
  if (file != nullptr) {
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (std::fclose(file) == 0 && written) return path;
  }
  ReportReason({FailureKind::LocalFile});
  if (!path.empty()) du::FileSystem::Unlink(path.c_str(), false);
  return {};
}

}  // namespace lxservices::cms_interface::vantry

#pragma once

#include <memory>
#include <string>

#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {

/// A private directory for everything temporary, the library's files included: TMPDIR points at it while it
/// lives. However the process ends, one removal takes all of it away.
class WorkDirectory {
 public:
  /// Creates it below TMPDIR, or /tmp.
  [[nodiscard]] static Result<std::unique_ptr<WorkDirectory>> Create();

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  explicit WorkDirectory(const std::string& path);
  std::string path_;
  CleanUp removal_;
};

}  // namespace vtdirect_cli

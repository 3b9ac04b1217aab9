#pragma once

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

#include "hosts/cli/failures/result.h"
#include "hosts/cli/http_log/http_log.h"
#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {

/// Where a log is to be written, and what was there when it was looked at.
struct HarPlace {
  std::string path;
  std::optional<struct stat> before;  ///< an older log or an empty file; nothing for no file
};

/// Writes the exchanges of a run into a file, for this user alone, when the run ends, however that is.
class HarFile {
 public:
  /// @return why the file can't be taken: another one is there that is no such log, or it can't be read
  [[nodiscard]] static Result<HarPlace> PlaceFor(const std::string& path);

  HarFile(HarPlace place, std::shared_ptr<const HttpLog> log);
  HarFile(const HarFile&) = delete;
  HarFile& operator=(const HarFile&) = delete;

  /// A file that has come to be since the place was looked at, or was written to, is left as it is.
  /// @return why it could not be written, or an empty text
  [[nodiscard]] std::string Write();

 private:
  [[nodiscard]] std::string Put() const;

  HarPlace place_;
  std::shared_ptr<const HttpLog> log_;
  CleanUp atTheEnd_;  // after what it writes
};

}  // namespace vtdirect_cli

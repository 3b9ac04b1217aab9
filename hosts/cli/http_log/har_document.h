#pragma once

#include <memory>
#include <optional>
#include <string>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/http_log/http_log.h"
#include "hosts/cli/http_log/redaction.h"
#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {

/// The exchanges in the form HAR 1.2, which the developer tools of browsers read, without secrets. Bodies are
/// shown if they are JSON or tell of a service ($metadata), up to the bound of the log; of all others the length.
/// @param known  secrets that may turn up anywhere; those of the exchanges are added
[[nodiscard]] std::string HarDocument(const SeenExchanges& seen, KnownSecrets known);

/// Every secret that the program was given by the environment.
[[nodiscard]] KnownSecrets SecretsOfEnvironment();

/// Writes the exchanges of a run into a file, for this user alone, when the run ends, however that is.
class HarFile {
 public:
  /// @return why the file can't be taken: another one is there that is no such log
  [[nodiscard]] static std::optional<Failure> Refusal(const std::string& path);

  HarFile(std::string path, std::shared_ptr<const HttpLog> log);
  HarFile(const HarFile&) = delete;
  HarFile& operator=(const HarFile&) = delete;

  /// @return why it could not be written, or an empty text
  [[nodiscard]] std::string Write();

 private:
  [[nodiscard]] std::string Put() const;

  std::string path_;
  std::shared_ptr<const HttpLog> log_;
  CleanUp atTheEnd_;  // after what it writes
};

}  // namespace vtdirect_cli

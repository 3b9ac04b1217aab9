#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// A file of a bundle.
struct ReportFile {
  std::string name;
  std::string text;
};

/// What this program and this machine are, for whoever helps: version and system.
[[nodiscard]] ReportFile VersionReport();

/// The servers with what is set for them, and the variables of the environment that play a part. Of what may hold a
/// secret, only that it is set.
[[nodiscard]] ReportFile ConfigurationReport(const Host& host);

/// Packs the files into an archive that "tar -xzf" opens, for this user alone. Nothing is replaced.
/// @param path  of the archive; no file may be there
/// @param directory  an empty one to work in
/// @return a failure, with `path` as it was
[[nodiscard]] std::optional<Failure> PackReport(const std::vector<ReportFile>& files,
                                                const std::string& directory, const std::string& path);

}  // namespace vtdirect_cli

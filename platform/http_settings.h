#pragma once

#include <string>

#include "export.h"

/// Limits and trust of the default platform's transport, process-wide.
namespace du::http {

/// What every exchange keeps to.
struct TransportSettings {
  /// Longest time to set up a connection, in milliseconds. Zero or less means the default.
  long connectTimeoutMilliseconds = 30'000;
  /// An exchange that moves no byte for this long is ended, at most a second later. Zero or less means the
  /// default.
  long stallTimeoutSeconds = 60;
  /// File of trusted certificates in PEM form, in place of the system's; empty means the system's.
  std::string certificateAuthorityFile;
  /// Answers with a demand for authentication that one request will follow up with a further try; zero means
  /// none.
  int authenticationTries = 3;
  /// Redirects that one GET follows; zero means none.
  int redirects = 10;
};

/// Replaces the settings. Counts for exchanges that begin afterwards. May be called from any thread.
VTDIRECT_API void SetTransportSettings(const TransportSettings& settings);

/// A copy of the settings in force.
[[nodiscard]] VTDIRECT_API TransportSettings GetTransportSettings();

}  // namespace du::http

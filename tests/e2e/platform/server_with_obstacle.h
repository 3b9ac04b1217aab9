#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "platform/failure_detail.h"

namespace vtdirect_test {

/// What lies between a host and a server, and has words of its own wherever somebody reads of it.
enum class Obstacle {
  ExpiredCertificate,
  CertificateOfAnotherHost,
  SelfSignedCertificate,
  UnknownAuthority,
  EmptyAuthorityFile,
  BrokenAuthorityFile,
  OldTls,
  HttpsAskedByHttp,
  HttpAskedByHttps,
  CertificateDemanded,
  ProxyThatRefuses,
  ProxyThatCannot,
  UnknownName,
  RefusedPort,
  DeadRoute,
};

/// A server that can't be used, and what is to be said of it. It is there as long as this record.
struct ServerWithObstacle {
  std::string url;
  std::string authorityFile;  ///< to be trusted; empty: none is needed
  std::string proxy;          ///< to go through; empty: none
  du::http::FailureDetail detail = du::http::FailureDetail::Unknown;
  std::string sentence;  ///< without its full stop
  std::vector<std::shared_ptr<void>> parts = {};
};

/// Makes one that has the obstacle, with its files in the directory. What has to do with certificates needs the
/// openssl program.
[[nodiscard]] ServerWithObstacle MakeServerWith(Obstacle obstacle, const std::string& directory);

/// Those above, and how a test calls them.
struct NamedObstacle {
  const char* name;
  Obstacle obstacle;
  friend void PrintTo(const NamedObstacle& named, std::ostream* out) { *out << named.name; }
};
[[nodiscard]] const std::vector<NamedObstacle>& AllObstacles();

}  // namespace vtdirect_test

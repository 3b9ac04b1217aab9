#pragma once

#include <optional>
#include <string>

#include "tests/e2e/servers/server_program.h"

namespace vtdirect_test {

/// A Kerberos realm of the test's own, VTDIRECT.TEST, with a KDC on 127.0.0.1. It knows the user "anna" and
/// the service HTTP on localhost. This process and what it starts use it, and no realm of the machine.
class KerberosRealm {
 public:
  /// The programs that are missing, as a text for people; empty when all are there.
  [[nodiscard]] static std::string Missing();

  /// @param directory  for all its files
  explicit KerberosRealm(const std::string& directory);

  /// The file with the service's key.
  [[nodiscard]] std::string keytab() const { return directory_ + "/http.keytab"; }
  /// Gets anna a ticket, as a user does with her password.
  void LogIn() const;

 private:
  void Configure() const;
  void Run(const std::vector<std::string>& words, const std::string& input = "") const;
  const std::string directory_;
  const int port_;
  std::optional<ServerProgram> kdc_;
};

}  // namespace vtdirect_test

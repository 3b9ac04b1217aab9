#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/cli/process.h"
#include "tests/support/temporary_directory.h"

namespace vtdirect_test {

/// A running vantry-sim with the demo repository, on a port of its own that stays free, with its data in
/// `directory`. The option "--port" gives it another one, so that it can be started again where it was.
class Simulator {
 public:
  Simulator(const std::string& directory, const std::vector<std::string>& options);
  ~Simulator();
  Simulator(const Simulator&) = delete;
  Simulator& operator=(const Simulator&) = delete;

  /// The server's URL, with a closing "/".
  [[nodiscard]] const std::string& url() const { return url_; }
  /// Its host and port.
  [[nodiscard]] std::string authority() const;
  /// The UID of a document, without a file name.
  [[nodiscard]] std::string Uid(const std::string& id) const;
  /// The body that the server answers to a GET, read by nothing of the product.
  [[nodiscard]] std::string Get(const std::string& target) const;
  /// Asks the port that "--admin-port" has opened. Throws when it doesn't do what it was asked.
  void Control(const std::string& method, const std::string& target) const;
  /// The targets that were asked for, in order, one a line, as its log has them.
  [[nodiscard]] std::string Log() const;

 private:
  std::string log_;
  int adminPort_ = 0;
  std::string url_;
  std::unique_ptr<Process> process_;
};

}  // namespace vtdirect_test

#pragma once

#include <functional>
#include <string>

#include "tests/e2e/platform/scripted_server.h"

namespace vtdirect_test {

/// A proxy between the program and the simulator, both of its ports included, that lets requests pass, loses
/// their answers, or does what else a test wants. To be named by "http_proxy" in the program's environment.
class Meddler {
 public:
  /// Lets the request pass, once, and gives the server's whole answer as it came.
  using Forward = std::function<std::string()>;
  /// What happens to a request, on a thread of its connection. An answer of `Forward` closes the connection.
  using Meddle = std::function<void(Peer& peer, const WireRequest& request, const Forward& forward)>;

  explicit Meddler(Meddle meddle);

  [[nodiscard]] std::string Url() const { return server_.Url(); }

 private:
  Meddle meddle_;
  ScriptedServer server_;
};

}  // namespace vtdirect_test

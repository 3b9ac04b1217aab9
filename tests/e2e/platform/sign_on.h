#pragma once

#include <atomic>
#include <string>

#include "tests/e2e/platform/scripted_server.h"

namespace vtdirect_test {

/// The address of a server under a name of one domain. Such names are this machine, and nobody is asked for
/// them.
inline std::string Named(const std::string& name, const ScriptedServer& server) {
  return "http://" + name + ".vantry.localhost:" + std::to_string(server.port());
}

/// A server, plm, that lets in who has the cookie of its domain, and the domain's login, which gives it.
class SignOnOfADomain {
 public:
  [[nodiscard]] std::string Url() const { return Named("plm", server_); }
  [[nodiscard]] std::string LoginUrl() const { return Named("login", login_); }
  [[nodiscard]] int logins() const { return logins_; }

 private:
  std::atomic<int> logins_{0};
  ScriptedServer server_{[this](Peer& peer, WireRequest& request) {
    if (request.Header("Cookie") == "user=paula") return peer.Answer(200, "in");
    peer.Answer(302, "", "Location: " + LoginUrl() + "/\r\n");
  }};
  ScriptedServer login_{[this](Peer& peer, WireRequest&) {
    ++logins_;
    peer.Answer(302, "",
                "Set-Cookie: user=paula; Domain=vantry.localhost; Path=/\r\nLocation: " + Url() + "/\r\n");
  }};
};

}  // namespace vtdirect_test

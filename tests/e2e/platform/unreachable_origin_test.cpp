#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/unused_port.h"

namespace {

using du::http::ErrorCode;
using vtdirect_test::FetchFrom;

/// A port where the system takes connections and nobody ever says a word.
class SilentPort {
 public:
  SilentPort() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
      throw std::runtime_error("no port on 127.0.0.1");
    }
    port_ = ntohs(address.sin_port);
  }
  ~SilentPort() { close(listener_); }
  SilentPort(const SilentPort&) = delete;
  SilentPort& operator=(const SilentPort&) = delete;

  /// Until then connections are refused.
  void Listen() const { EXPECT_EQ(listen(listener_, 16), 0); }
  [[nodiscard]] std::string Url() const { return "https://127.0.0.1:" + std::to_string(port_); }
  /// Connections since the last time.
  [[nodiscard]] int Connections() const {
    int count = 0;
    for (int one = 0; (one = accept(listener_, nullptr, nullptr)) >= 0; ++count) close(one);
    return count;
  }

 private:
  int listener_;
  int port_ = 0;
};

class UnreachableOrigin : public testing::Test {
 protected:
  UnreachableOrigin() {
    vtdirect_test::UseShortLimits();
    SetConnectLimit(100);
  }
  static void SetConnectLimit(long milliseconds) {
    du::http::TransportSettings settings = du::http::GetTransportSettings();
    settings.connectTimeoutMilliseconds = milliseconds;
    du::http::SetTransportSettings(settings);
  }
};

TEST_F(UnreachableOrigin, IsTriedOnceByAllThatAskWithinSeconds) {
  const SilentPort port;
  port.Listen();
  const auto connection = vtdirect_test::Connect(port.Url());
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(vtdirect_test::Fetch(*connection).code, ErrorCode::TimedOut);
    EXPECT_EQ(FetchFrom(port.Url()).code, ErrorCode::TimedOut);
  }
  EXPECT_EQ(port.Connections(), 1);
}

TEST_F(UnreachableOrigin, IsTriedAgainWithAnotherLimitOrOtherCredentials) {
  const SilentPort port;
  port.Listen();
  EXPECT_EQ(FetchFrom(port.Url()).code, ErrorCode::TimedOut);
  SetConnectLimit(110);
  EXPECT_EQ(FetchFrom(port.Url()).code, ErrorCode::TimedOut);
  EXPECT_EQ(port.Connections(), 2);
  du::http::SetBearerToken(port.Url(), "token");
  EXPECT_EQ(FetchFrom(port.Url()).code, ErrorCode::TimedOut);
  EXPECT_EQ(port.Connections(), 1);
}

TEST_F(UnreachableOrigin, IsNotOneThatRefuses) {
  const SilentPort port;
  EXPECT_EQ(FetchFrom(port.Url()).code, ErrorCode::NoConnection);
  port.Listen();
  EXPECT_EQ(FetchFrom(port.Url()).code, ErrorCode::TimedOut);
  EXPECT_EQ(port.Connections(), 1);
}

TEST_F(UnreachableOrigin, IsNotOneWhoseHandshakeFails) {
  if (!vtdirect_test::HaveOpenSsl())
    GTEST_SKIP() << "the openssl program, which makes certificates, is missing";
  SetConnectLimit(5000);
  const vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::MakeCertificate(directory.path(), "server", "IP:127.0.0.1");
  const vtdirect_test::TlsFront front(directory.path(), "server", vtdirect_test::UnusedPort());
  EXPECT_EQ(FetchFrom(front.Url()).code, ErrorCode::TlsFailure);
  EXPECT_EQ(FetchFrom(front.Url()).code, ErrorCode::TlsFailure);
  EXPECT_EQ(front.connections(), 2);
}

}  // namespace

#pragma once

#include <openssl/ssl.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vtdirect_test {

/// What a TlsFront wants of its clients.
struct TlsDemand {
  std::string clientCertificate;  ///< PEM file; nobody gets in without this certificate. Empty: anybody does
  int highestVersion = 0;         ///< TLS1_2_VERSION for instance; 0: the newest
  bool cuts = false;              ///< ends its connections without the close of TLS, as a cut line does
  int uncut = 0;                  ///< so many of them, the first ones, end with the close of TLS all the same
};

/// Speaks TLS on 127.0.0.1 and passes all bytes on to a plain server there, for any number of connections at
/// a time. Certificates: see MakeCertificate.
class TlsFront {
 public:
  /// @param directory  holds "<name>.pem" and "<name>.key"
  /// @param port       of the plain server
  TlsFront(const std::string& directory, const std::string& name, int port, const TlsDemand& demand = {});
  ~TlsFront();
  TlsFront(const TlsFront&) = delete;
  TlsFront& operator=(const TlsFront&) = delete;

  [[nodiscard]] std::string Url() const { return "https://127.0.0.1:" + std::to_string(port_); }
  /// TCP connections that were accepted.
  [[nodiscard]] int connections() const { return connections_; }
  /// Of these, the ones that it has ended.
  [[nodiscard]] int ended() const { return ended_; }
  /// Bytes of the plain server's that were sent on to clients.
  [[nodiscard]] std::size_t passed() const { return passed_; }
  /// Handshakes that succeeded, and those of them that took up an earlier TLS session.
  [[nodiscard]] int handshakes() const { return handshakes_; }
  [[nodiscard]] int resumed() const { return resumed_; }

 private:
  struct ContextFreer {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  };
  void Demand(const TlsDemand& demand);
  void Accept();
  void Serve(int socket, bool cuts);
  void Pump(SSL* tls, int socket, int plain);

  std::unique_ptr<SSL_CTX, ContextFreer> context_;
  const int plainPort_;
  const bool cuts_;
  const int uncut_;
  int port_ = 0;
  int listener_ = -1;
  std::atomic<bool> stopping_{false};
  std::atomic<int> connections_{0};
  std::atomic<int> ended_{0};
  std::atomic<std::size_t> passed_{0};
  std::atomic<int> handshakes_{0};
  std::atomic<int> resumed_{0};
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

}  // namespace vtdirect_test

#include "simulator/wire/tls.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <climits>
#include <stdexcept>

namespace vantry_sim {
namespace {

std::string LastProblem() {
  const unsigned long code = ERR_get_error();
  ERR_clear_error();
  const char* reason = code == 0 ? nullptr : ERR_reason_error_string(code);
  return reason == nullptr ? "unknown reason" : reason;
}

class TlsTransport final : public Transport {
 public:
  TlsTransport(SSL* tls, int socket) : tls_(tls), socket_(socket) {}
  TlsTransport(const TlsTransport&) = delete;
  TlsTransport& operator=(const TlsTransport&) = delete;
  ~TlsTransport() override {
    SSL_free(tls_);
    close(socket_);
  }

  Moved Prepare() override {
    ERR_clear_error();
    const int result = SSL_accept(tls_);
    return result == 1 ? Moved::Done : After(result);
  }

  Moved Receive(char* data, std::size_t size, std::size_t& count) override {
    ERR_clear_error();
    const int result = SSL_read_ex(tls_, data, size, &count);
    return result == 1 ? Moved::Done : After(result);
  }

  Moved Send(const char* data, std::size_t size, std::size_t& count) override {
    ERR_clear_error();
    const int result = SSL_write_ex(tls_, data, size, &count);
    return result == 1 ? Moved::Done : After(result);
  }

  [[nodiscard]] bool HasBuffered() const override { return SSL_has_pending(tls_) == 1; }

  void EndSending() override {
    ERR_clear_error();
    if (SSL_is_init_finished(tls_) == 1) static_cast<void>(SSL_shutdown(tls_));
    shutdown(socket_, SHUT_WR);
  }

  [[nodiscard]] int socket() const override { return socket_; }

 private:
  Moved After(int result) {
    switch (SSL_get_error(tls_, result)) {
      case SSL_ERROR_WANT_READ:
        return Moved::WaitReadable;
      case SSL_ERROR_WANT_WRITE:
        return Moved::WaitWritable;
      default:
        ERR_clear_error();
        return Moved::End;
    }
  }

  SSL* tls_;
  int socket_;
};

}  // namespace

TlsIdentity::TlsIdentity(const std::string& certificate, const std::string& key)
    : context_(SSL_CTX_new(TLS_server_method())) {
  if (context_ == nullptr) throw std::runtime_error("cannot set up TLS: " + LastProblem());
  SSL_CTX_set_min_proto_version(context_, TLS1_2_VERSION);
  // A write that is tried again may come with other bytes in front, and sends what it can.
  SSL_CTX_set_mode(context_, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER |
                                 SSL_MODE_RELEASE_BUFFERS);
  SSL_CTX_set_options(context_, SSL_OP_NO_RENEGOTIATION | SSL_OP_IGNORE_UNEXPECTED_EOF);
  std::string problem;
  if (SSL_CTX_use_certificate_chain_file(context_, certificate.c_str()) != 1) {
    problem = "cannot use the certificate " + certificate + ": " + LastProblem();
  } else if (SSL_CTX_use_PrivateKey_file(context_, key.c_str(), SSL_FILETYPE_PEM) != 1) {
    problem = "cannot use the key " + key + " of " + certificate + ": " + LastProblem();
  }
  if (problem.empty()) return;
  SSL_CTX_free(context_);
  throw std::runtime_error(problem);
}

TlsIdentity::~TlsIdentity() {
  SSL_CTX_free(context_);
}

std::unique_ptr<Transport> TlsIdentity::Carry(int socket) const {
  SSL* const tls = SSL_new(context_);
  if (tls == nullptr || SSL_set_fd(tls, socket) != 1) {
    SSL_free(tls);
    return MakePlainTransport(socket);
  }
  return std::make_unique<TlsTransport>(tls, socket);
}

}  // namespace vantry_sim

#include "tests/e2e/platform/tls_front.h"

#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "tests/e2e/platform/loopback.h"

namespace vtdirect_test {
namespace {

int ConnectTo(int port) {
  const int plain = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = Loopback(port);
  if (connect(plain, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    close(plain);
    return -1;
  }
  return plain;
}

void Hurry(int socket) {
  const int one = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
}

/// Drops what a client still sends until it closes, a second at most.
void WaitForEnd(int socket) {
  const timeval second{1, 0};
  setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &second, sizeof second);
  std::array<char, 4096> piece;
  while (recv(socket, piece.data(), piece.size(), 0) > 0) {
  }
}

}  // namespace

TlsFront::TlsFront(const std::string& directory, const std::string& name, int port, const TlsDemand& demand)
    : context_(SSL_CTX_new(TLS_server_method())), plainPort_(port), cuts_(demand.cuts), uncut_(demand.uncut) {
  signal(SIGPIPE, SIG_IGN);  // a client may go while it is written to
  const std::string base = directory + "/" + name;
  if (SSL_CTX_use_certificate_file(context_.get(), (base + ".pem").c_str(), SSL_FILETYPE_PEM) != 1 ||
      SSL_CTX_use_PrivateKey_file(context_.get(), (base + ".key").c_str(), SSL_FILETYPE_PEM) != 1) {
    throw std::runtime_error("no certificate " + base);
  }
  Demand(demand);
  const LoopbackListener listening = ListenOnLoopback(64);
  listener_ = listening.socket;
  port_ = listening.port;
  acceptor_ = std::thread([this] { Accept(); });
}

void TlsFront::Demand(const TlsDemand& demand) {
  SSL_CTX_set_max_proto_version(context_.get(), demand.highestVersion);
  if (demand.highestVersion != 0 && demand.highestVersion < TLS1_2_VERSION) {
    SSL_CTX_set_min_proto_version(context_.get(), TLS1_VERSION);
    SSL_CTX_set_security_level(context_.get(), 0);  // at any other, OpenSSL speaks nothing as old
  }
  if (demand.clientCertificate.empty()) return;
  if (SSL_CTX_load_verify_file(context_.get(), demand.clientCertificate.c_str()) != 1) {
    throw std::runtime_error("no certificate " + demand.clientCertificate);
  }
  SSL_CTX_set_verify(context_.get(), SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
  const std::string context = "front";
  SSL_CTX_set_session_id_context(context_.get(), reinterpret_cast<const unsigned char*>(context.data()),
                                 static_cast<unsigned>(context.size()));
}

TlsFront::~TlsFront() {
  stopping_ = true;
  acceptor_.join();
  for (std::thread& thread : threads_) thread.join();
  close(listener_);
}

void TlsFront::Accept() {
  while (!stopping_) {
    pollfd waiting{listener_, POLLIN, 0};
    if (poll(&waiting, 1, 20) <= 0) continue;
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) continue;
    Hurry(socket);
    const bool cuts = ++connections_ > uncut_ && cuts_;
    threads_.emplace_back([this, socket, cuts] { Serve(socket, cuts); });
  }
}

void TlsFront::Serve(int socket, bool cuts) {
  SSL* tls = SSL_new(context_.get());
  SSL_set_fd(tls, socket);
  if (SSL_accept(tls) == 1) {
    ++handshakes_;
    if (SSL_session_reused(tls) == 1) ++resumed_;
    const int plain = ConnectTo(plainPort_);
    if (plain >= 0) {
      Hurry(plain);
      Pump(tls, socket, plain);
      close(plain);
    }
    if (!cuts) SSL_shutdown(tls);
  } else {
    // A request that is on its way already would turn the end of the connection into a reset, and the reset
    // could overtake the alert.
    shutdown(socket, SHUT_WR);
    WaitForEnd(socket);
  }
  SSL_free(tls);
  close(socket);
  ++ended_;
}

void TlsFront::Pump(SSL* tls, int socket, int plain) {
  std::array<char, 16384> piece;
  while (!stopping_) {
    std::array<pollfd, 2> waiting{{{socket, POLLIN, 0}, {plain, POLLIN, 0}}};
    if (poll(waiting.data(), waiting.size(), 20) <= 0) continue;
    if (waiting[0].revents != 0) {
      do {
        const int count = SSL_read(tls, piece.data(), static_cast<int>(piece.size()));
        if (count <= 0 || send(plain, piece.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL) != count)
          return;
      } while (SSL_pending(tls) > 0);
    }
    if (waiting[1].revents != 0) {
      const ssize_t count = recv(plain, piece.data(), piece.size(), 0);
      if (count <= 0 || SSL_write(tls, piece.data(), static_cast<int>(count)) <= 0) return;
      passed_ += static_cast<std::size_t>(count);
    }
  }
}

}  // namespace vtdirect_test

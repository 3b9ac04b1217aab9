#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "simulator/wire/transport.h"

namespace vantry_sim {
namespace {

class PlainTransport final : public Transport {
 public:
  explicit PlainTransport(int socket) : socket_(socket) {}
  PlainTransport(const PlainTransport&) = delete;
  PlainTransport& operator=(const PlainTransport&) = delete;
  ~PlainTransport() override { close(socket_); }

  Moved Prepare() override { return Moved::Done; }

  Moved Receive(char* data, std::size_t size, std::size_t& count) override {
    for (;;) {
      const ssize_t received = recv(socket_, data, size, MSG_DONTWAIT);
      if (received > 0) {
        count = static_cast<std::size_t>(received);
        return Moved::Done;
      }
      if (received < 0 && errno == EINTR) continue;
      const bool nothingYet = received < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
      return nothingYet ? Moved::WaitReadable : Moved::End;
    }
  }

  Moved Send(const char* data, std::size_t size, std::size_t& count) override {
    for (;;) {
      const ssize_t sent = send(socket_, data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
      if (sent > 0) {
        count = static_cast<std::size_t>(sent);
        return Moved::Done;
      }
      if (sent < 0 && errno == EINTR) continue;
      const bool noRoom = sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
      return noRoom ? Moved::WaitWritable : Moved::End;
    }
  }

  [[nodiscard]] bool HasBuffered() const override { return false; }
  void EndSending() override { shutdown(socket_, SHUT_WR); }
  [[nodiscard]] int socket() const override { return socket_; }

 private:
  int socket_;
};

}  // namespace

std::unique_ptr<Transport> MakePlainTransport(int socket) {
  return std::make_unique<PlainTransport>(socket);
}

}  // namespace vantry_sim

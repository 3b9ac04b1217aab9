#include "simulator/wire/server_group.h"

#include "simulator/wire/listening_socket.h"

namespace vantry_sim {
namespace {

/// What the bodies that come to the admin port take of memory together: three of the longest from one client.
constexpr std::uint64_t kMostAdminBodies = 64ULL * 1024 * 1024;

}  // namespace

ServerGroup::ServerGroup(Simulator& simulator, RequestLog& log, GateLimits limits)
    : simulator_(simulator), log_(log), admin_bodies_(kMostAdminBodies), admin_(simulator), gate_(limits) {}

int ServerGroup::Bind() {
  const Options& options = simulator_.options();
  if (SpeaksTls(options)) {
    const TlsFiles files = options.tls_self_signed.empty()
                               ? TlsFiles{options.tls_certificate, options.tls_key}
                               : SelfSignedFiles(options.tls_self_signed, options.bind_address);
    tls_ = std::make_unique<TlsIdentity>(files.certificate, files.key);
  }
  port_ = Open(Door::kMain, options.bind_address, options.port);
  if (port_ < 0) return options.port;
  simulator_.SetOwnAddress(options.bind_address + ":" + std::to_string(port_));
  const int upload_port = Open(Door::kUploads, options.bind_address, options.upload_port);
  if (upload_port < 0) return options.upload_port;
  simulator_.SetUploadPort(upload_port);
  if (options.admin_port) {
    // Whoever reaches this port can do everything, so nobody on another machine does.
    admin_port_ = Open(Door::kAdmin, "127.0.0.1", *options.admin_port);
    if (admin_port_ < 0) return *options.admin_port;
  }
  if (!options.page_port) return -1;
  const int page_port = Open(Door::kPages, options.bind_address, *options.page_port);
  if (page_port < 0) return *options.page_port;
  simulator_.SetPagePort(page_port);
  return -1;
}

/// @return the port that was taken, or -1
int ServerGroup::Open(Door door, const std::string& address, int port) {
  const ListeningSocket listening = ListenOn(address, port);
  if (listening.socket < 0) return -1;
  BodyMemory& bodies = door == Door::kAdmin ? admin_bodies_ : bodies_;
  servers_.push_back(
      std::make_unique<HttpServer>(ServerParts{simulator_, log_, stop_, bodies, tls_.get(), &admin_}, door));
  gate_.Listen(listening.socket, *servers_.back());
  return listening.port;
}

void ServerGroup::Run() {
  gate_.Run();
}

void ServerGroup::Stop() {
  stop_.Raise();
  simulator_.history().EndWaits();
  gate_.Stop();
}

}  // namespace vantry_sim

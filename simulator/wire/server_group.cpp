#include "simulator/wire/server_group.h"

#include "simulator/wire/listening_socket.h"

namespace vantry_sim {
namespace {

/// What the bodies that come to the admin port take of memory together: three of the longest from one client.
constexpr std::uint64_t mostAdminBodies = 64ULL * 1024 * 1024;

}  // namespace

ServerGroup::ServerGroup(Simulator& simulator, RequestLog& log, GateLimits limits)
    : simulator_(simulator), log_(log), adminBodies_(mostAdminBodies), admin_(simulator), gate_(limits) {}

int ServerGroup::Bind() {
  const Options& options = simulator_.options();
  if (SpeaksTls(options)) {
    const TlsFiles files = options.tlsSelfSigned.empty()
                               ? TlsFiles{options.tlsCertificate, options.tlsKey}
                               : SelfSignedFiles(options.tlsSelfSigned, options.bindAddress);
    tls_ = std::make_unique<TlsIdentity>(files.certificate, files.key);
  }
  port_ = Open(Door::Main, options.bindAddress, options.port);
  if (port_ < 0) return options.port;
  simulator_.SetOwnAddress(options.bindAddress + ":" + std::to_string(port_));
  const int uploadPort = Open(Door::Uploads, options.bindAddress, options.uploadPort);
  if (uploadPort < 0) return options.uploadPort;
  simulator_.SetUploadPort(uploadPort);
  if (options.adminPort) {
    // Whoever reaches this port can do everything, so nobody on another machine does.
    adminPort_ = Open(Door::Admin, "127.0.0.1", *options.adminPort);
    if (adminPort_ < 0) return *options.adminPort;
  }
  if (!options.pagePort) return -1;
  const int pagePort = Open(Door::Pages, options.bindAddress, *options.pagePort);
  if (pagePort < 0) return *options.pagePort;
  simulator_.SetPagePort(pagePort);
  return -1;
}

/// @return the port that was taken, or -1
int ServerGroup::Open(Door door, const std::string& address, int port) {
  const ListeningSocket listening = ListenOn(address, port);
  if (listening.socket < 0) return -1;
  BodyMemory& bodies = door == Door::Admin ? adminBodies_ : bodies_;
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

#include "simulator/wire/server_group.h"

#include <thread>

namespace vantry_sim {

ServerGroup::ServerGroup(Simulator& simulator, RequestLog& log) : simulator_(simulator), log_(log) {}

int ServerGroup::Bind() {
  const Options& options = simulator_.options();
  const auto bind = [this](Door door) {
    servers_.push_back(std::make_unique<HttpServer>(simulator_, log_, door));
    return servers_.back()->Bind();
  };
  if (!bind(Door::kMain)) return options.port;
  if (!bind(Door::kUploads)) return options.upload_port;
  if (options.page_port && !bind(Door::kPages)) return *options.page_port;
  return -1;
}

void ServerGroup::Run() {
  std::vector<std::thread> threads;
  for (auto& server : servers_) {
    threads.emplace_back([this, &server] {
      server->Run();
      Stop();
    });
  }
  for (std::thread& thread : threads) thread.join();
}

void ServerGroup::Stop() {
  for (auto& server : servers_) server->Stop();
}

}  // namespace vantry_sim

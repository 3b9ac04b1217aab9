#include "simulator/wire/body_memory.h"

namespace vantry_sim {

BodyMemory::Share::~Share() {
  if (memory_ == nullptr || taken_ == 0) return;
  const std::lock_guard lock(memory_->mutex_);
  memory_->taken_ -= taken_;
  const auto client = memory_->ofClients_.find(client_);
  client->second -= taken_;
  if (client->second == 0) memory_->ofClients_.erase(client);
}

bool BodyMemory::Share::Grow(std::uint64_t bytes) {
  if (memory_ == nullptr) return true;
  const std::lock_guard lock(memory_->mutex_);
  const auto client = memory_->ofClients_.find(client_);
  const std::uint64_t ofClient = client == memory_->ofClients_.end() ? 0 : client->second;
  if (memory_->taken_ + bytes > memory_->most_ || ofClient + bytes > memory_->most_ / 4 * 3) return false;
  memory_->taken_ += bytes;
  memory_->ofClients_[client_] += bytes;
  taken_ += bytes;
  return true;
}

}  // namespace vantry_sim

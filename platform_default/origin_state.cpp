#include "platform_default/origin_state.h"

#include <utility>

namespace vtdirect::platform {
namespace {

/// In whole seconds: a host may set any number of them, and many are more than nanoseconds can count.
bool HasExpired(OriginState::Time since, const du::http::TransportSettings& settings) {
  const auto idle = std::chrono::steady_clock::now() - since;
  return std::chrono::duration_cast<std::chrono::seconds>(idle).count() >= settings.idleSeconds;
}

}  // namespace

std::shared_ptr<OriginSession> OriginState::Session() {
  const std::lock_guard lock(mutex_);
  // The settings are read under the lock: whoever changes the way sets it first and ends the sessions then,
  // so that no session of the old way can begin in between and stay.
  if (session_ == nullptr) session_ = std::make_shared<OriginSession>(ConnectionWayTo(home_, origin_));
  return session_;
}

OriginState::Handles OriginState::EndSession() {
  Handles handles;
  const std::lock_guard lock(mutex_);
  for (Idle& idle : idle_) handles.push_back(std::move(idle.handle));
  idle_.clear();
  if (session_ != nullptr) session_->firstExchange.Open();
  session_.reset();
  return handles;
}

std::unique_ptr<CurlHandle> OriginState::TakeHandle(const OriginSession& session,
                                                    const du::http::TransportSettings& settings) {
  const std::lock_guard lock(mutex_);
  if (idle_.empty() || idle_.back().handle->session().get() != &session) return nullptr;
  if (HasExpired(idle_.back().since, settings)) return nullptr;
  std::unique_ptr<CurlHandle> handle = std::move(idle_.back().handle);
  idle_.pop_back();
  return handle;
}

void OriginState::GiveBack(std::unique_ptr<CurlHandle> handle, const du::http::TransportSettings& settings) {
  std::unique_ptr<CurlHandle> oldest;  // closed after the lock is gone, as is the handle that isn't kept
  const std::lock_guard lock(mutex_);
  if (handle->IsWorn() || handle->session() != session_ || settings.idleConnections == 0) return;
  if (idle_.size() >= static_cast<std::size_t>(settings.idleConnections)) {
    oldest = std::move(idle_.front().handle);
    idle_.erase(idle_.begin());
  }
  idle_.push_back({std::move(handle), std::chrono::steady_clock::now()});
}

OriginState::Handles OriginState::TakeExpired(const du::http::TransportSettings& settings) {
  Handles handles;
  const std::lock_guard lock(mutex_);
  while (!idle_.empty() && HasExpired(idle_.front().since, settings)) {
    handles.push_back(std::move(idle_.front().handle));
    idle_.erase(idle_.begin());
  }
  return handles;
}

}  // namespace vtdirect::platform

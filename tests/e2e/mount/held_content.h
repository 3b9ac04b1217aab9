#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>

#include "tests/e2e/cli/meddler.h"

namespace vtdirect_test {

/// A proxy that keeps the second half of the first content that is asked for back until it is let go.
class HeldContent {
 public:
  [[nodiscard]] std::string Url() const { return proxy_.Url(); }
  /// Waits until the first half is sent.
  [[nodiscard]] bool AwaitFirstHalf() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [this] { return isHalfSent_; });
  }
  void LetGo() {
    const std::lock_guard lock(mutex_);
    isLetGo_ = true;
    changed_.notify_all();
  }

 private:
  static constexpr std::chrono::seconds patience{20};

  void Pass(Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const std::string answer = forward();
    const bool isContent = request.target.find("content/streams") != std::string::npos;
    std::unique_lock lock(mutex_);
    const bool isHeld = isContent && !std::exchange(hasHeld_, true);
    lock.unlock();
    if (!isHeld) {
      peer.Send(answer);
      return;
    }
    peer.Send(answer.substr(0, answer.size() / 2));
    lock.lock();
    isHalfSent_ = true;
    changed_.notify_all();
    changed_.wait_for(lock, patience, [this] { return isLetGo_; });
    lock.unlock();
    peer.Send(answer.substr(answer.size() / 2));
  }

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  bool hasHeld_ = false;
  bool isHalfSent_ = false;
  bool isLetGo_ = false;
  const Meddler proxy_{[this](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    Pass(peer, request, forward);
  }};
};

}  // namespace vtdirect_test

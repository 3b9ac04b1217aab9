#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace vtdirect_mount {

/// Has something tried again after a while, or when it is asked for. Any thread.
class Retries {
 public:
  /// @param begin  begins a try without waiting for its end, and has NoteEnd called at it
  explicit Retries(std::function<void()> begin) : begin_(std::move(begin)), thread_([this] { Run(); }) {}
  /// No try begins after it.
  ~Retries();
  Retries(const Retries&) = delete;
  Retries& operator=(const Retries&) = delete;

  /// Has the next try begin at once, or right after the one that is under way.
  void Now();
  /// A try has ended.
  void NoteEnd();

 private:
  void Run();

  const std::function<void()> begin_;
  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  bool isEnding_ = false;
  bool isWoken_ = false;
  bool isTrying_ = false;
  std::thread thread_;
};

}  // namespace vtdirect_mount

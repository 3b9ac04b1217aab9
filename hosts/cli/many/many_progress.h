#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {

/// How far the transfer of several files has come.
struct ManyState {
  std::size_t ended = 0;  ///< files
  std::size_t all = 0;
  std::uint64_t bytes = 0;  ///< that have arrived, of all files
  std::chrono::milliseconds elapsed{0};
  std::vector<std::string> underWay = {};  ///< names of files
};

/// One line that tells of it, at most so many bytes long: "12 of 1000 files  48.0 KiB  96.0 KiB/s  41 s left
/// fork.lxz, frame.lxz". The time that is left is told by the files that have ended, since nobody knows how long
/// the others are.
[[nodiscard]] std::string ManyText(const ManyState& state, std::size_t width);

/// That line on a terminal, rewritten at most ten times a second, by whatever thread has news. It is gone at the
/// end.
class ManyProgress {
 public:
  using Clock = std::chrono::steady_clock;

  /// @param terminal  where to write; null shows nothing
  /// @param all       how many files there are
  ManyProgress(std::ostream* terminal, std::size_t width, std::size_t all);
  ~ManyProgress();
  ManyProgress(const ManyProgress&) = delete;
  ManyProgress& operator=(const ManyProgress&) = delete;

  // Each on any thread. A file is named by its number.
  void Begin(std::size_t number, const std::string& name);
  /// @param received  bytes of this file so far
  void Advance(std::size_t number, std::uint64_t received);
  void End(std::size_t number);

  /// Takes the line away, so that something else can be written; it comes back with the next news.
  void Clear();

  /// Writes something else in its place, on any thread: no line comes meanwhile.
  void MakeRoomFor(const std::function<void()>& write);

 private:
  struct File {
    std::string name;
    std::uint64_t received = 0;
  };
  void Show();
  void Wipe();

  std::ostream* terminal_;
  std::size_t width_;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point next_ = {};
  std::mutex mutex_;
  ManyState state_;
  std::map<std::size_t, File> underWay_;
  std::set<std::size_t> ended_;  ///< one that was begun again may end twice
  std::atomic<bool> shown_{false};
  std::unique_ptr<CleanUp> wipe_;
};

}  // namespace vtdirect_cli

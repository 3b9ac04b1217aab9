#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>

namespace vtdirect_mount {

/// Whose bytes the kernel keeps of each file. It keeps them by the file's number, and a file goes on to have that
/// number when it has other bytes: an open file is what it was when it was opened, and what a program reads by it
/// comes to be kept. Bytes have a key of their own, and other bytes another one. Any thread.
class KernelPages {
 public:
  /// What the kernel is to do with what it keeps of a file that is being opened.
  enum class Use {
    Keep,    ///< it holds these very bytes
    Renew,   ///< it may hold others, which it has to let go
    Bypass,  ///< a program that has others open may bring those in at any time
  };

  /// Notes that a file is opened, until it is closed.
  [[nodiscard]] Use NoteOpened(std::uint64_t file, const std::string& key);
  void NoteClosed(std::uint64_t file, const std::string& key);

  /// Forgets what the kernel keeps of a file; not what is open.
  void Forget(std::uint64_t file);
  void ForgetAll();

 private:
  std::mutex mutex_;  // guards what follows
  std::map<std::uint64_t, std::string> kept_;
  std::map<std::uint64_t, std::multiset<std::string>> open_;
};

}  // namespace vtdirect_mount

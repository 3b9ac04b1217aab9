#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "hosts/mount/writing/local_file.h"

namespace vtdirect_mount {

/// The files that lie over the server's tree, by their addresses, and the documents that a program has put
/// aside. Nothing here changes the server. Any thread.
class Overlay {
 public:
  using Clock = std::chrono::steady_clock;
  /// A document that was renamed to a backup comes back after this time, if nothing took its name.
  static constexpr std::chrono::seconds asideSeconds{60};

  [[nodiscard]] std::shared_ptr<LocalFile> Find(const std::string& address) const;
  /// Lays a file over an address. A document put aside is aside no more.
  /// @return the file that lay there, or nothing
  std::shared_ptr<LocalFile> Lay(const std::string& address, std::shared_ptr<LocalFile> file);
  /// The file that lies there, with one more that writes to it; nothing when none does.
  [[nodiscard]] std::shared_ptr<LocalFile> FindToWrite(const std::string& address) const;
  /// Lays a file over an address, unless one lies there already.
  /// @return the file that lies there now, with one more that writes to it
  [[nodiscard]] std::shared_ptr<LocalFile> LayToWrite(const std::string& address,
                                                      const std::shared_ptr<LocalFile>& file);
  /// Takes a file away, if it is that one.
  void Take(const std::string& address, const std::shared_ptr<LocalFile>& file);
  /// The same, if nobody writes to it and the server has all that it holds. A scratch file stays.
  void TakeIfIdle(const std::string& address, const std::shared_ptr<LocalFile>& file);

  /// Puts a document aside: its name is free.
  /// @param base  what a file is written for that takes the name
  void PutAside(const std::string& address, const std::string& base, Clock::time_point now);
  /// What a file that takes the name of a document put aside is written for; empty when none was put aside.
  [[nodiscard]] std::string BaseOfAside(const std::string& address) const;
  [[nodiscard]] bool IsAside(const std::string& address, Clock::time_point now) const;
  /// Brings back all documents that were put aside.
  void BringBack();

  /// The names in paths of the files in a folder.
  /// @param folder  with its closing "/"
  [[nodiscard]] std::vector<std::string> NamesIn(const std::string& folder) const;

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::shared_ptr<LocalFile>> files_;
  struct Aside {
    Clock::time_point since;
    std::string base;
  };
  std::map<std::string, Aside> aside_;
};

}  // namespace vtdirect_mount

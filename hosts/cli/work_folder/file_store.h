#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/work_folder/sql_file.h"

namespace vtdirect_cli {

/// What is known of a file of a work folder: which bytes of which iteration it was.
struct FolderFile {
  std::string path;     ///< below the work folder, with "/" between its steps
  std::string address;  ///< the document's path on the server
  std::string uid;      ///< of the iteration that the file came from
  std::string version;  ///< empty when the server did not tell it
  std::uint64_t size = 0;
  std::int64_t time = 0;  ///< of its last change, in nanoseconds since 1970
  std::string sha256;
};

/// What a work folder keeps of its files: `.vtdirect/files.db`.
///
/// A file is first announced and then, when it is in its place, kept. What was announced counts only as far
/// as the bytes in its place agree, so that a kill between the two is no lie. Safe against other processes,
/// and its functions may be called by several threads. None makes a request. A returned text tells why
/// something could not be done; it is empty when it was.
class FileStore {
 public:
  struct Opening {
    std::unique_ptr<FileStore> store;  ///< null on failure
    std::string fault;
  };

  /// Makes the database, or completes one whose making was cut off.
  /// @param address  path of the folder on the server, with its closing "/"
  /// @param server   key of that server (see GetLinkContext)
  [[nodiscard]] static Opening Create(const std::string& file, const std::string& address,
                                      const std::string& server);
  /// Opens a database that Create has made. A file of another form, or one that is not complete, is a fault.
  [[nodiscard]] static Opening Open(const std::string& file);

  [[nodiscard]] const std::string& address() const { return address_; }
  [[nodiscard]] const std::string& server() const { return server_; }

  /// All files by their paths; nothing when they can't be read.
  [[nodiscard]] std::optional<std::map<std::string, FolderFile>> Files();

  /// Announces what is about to take its place.
  [[nodiscard]] std::string Announce(const FolderFile& file);
  /// What was announced and never kept.
  [[nodiscard]] std::vector<FolderFile> Announced();
  /// Takes an announcement back.
  [[nodiscard]] std::string Withdraw(const std::string& path);

  /// Keeps what is in its place now, and takes its announcement away.
  [[nodiscard]] std::string Keep(const FolderFile& file);
  /// Forgets a file, which is neither here nor on the server any more.
  [[nodiscard]] std::string Forget(const std::string& path);
  /// Keeps a new time of a file whose bytes are those that are kept.
  [[nodiscard]] std::string KeepTime(const FolderFile& file, std::int64_t time);

 private:
  explicit FileStore(const std::string& file) : sql_(file) {}
  [[nodiscard]] std::string ReadFolder();
  [[nodiscard]] std::string Change(const std::vector<std::pair<std::string, SqlRow>>& statements);
  [[nodiscard]] std::optional<std::vector<FolderFile>> Rows(const std::string& table);

  std::mutex mutex_;
  SqlFile sql_;
  std::string address_;
  std::string server_;
};

}  // namespace vtdirect_cli

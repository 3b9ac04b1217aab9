#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "public/session_list.h"
#include "server/file_server.h"

/// The process-wide state behind VtDirectManager. Any thread may read and write it at any time.
namespace lxservices::cms_interface {

/// The one place that knows which servers exist and under which nicknames. Never changed: whoever changes
/// the list puts another table in the place of this one.
struct ServerTable {
  std::map<std::string, std::string> nicknames;                ///< nickname to server key
  std::map<std::string, std::shared_ptr<FileServer>> servers;  ///< server key to server; no empty key
  /// Nickname to server, for nicknames with the empty key: their URLs are of a form that gives no key, so
  /// they have nothing in common and no UID finds them.
  std::map<std::string, std::shared_ptr<FileServer>> keylessServers;
};

/// All that the host has set up, beside the settings of SetAppConfig.
class ManagerState {
 public:
  /// The table of now, as a whole.
  [[nodiscard]] std::shared_ptr<const ServerTable> table() const;

  /// Puts `next` in the place of the table that `next` was made from. False, and nothing happens, when
  /// another thread has replaced that one meanwhile.
  [[nodiscard]] bool ReplaceTable(const std::shared_ptr<const ServerTable>& seen, ServerTable next);

  std::atomic<bool (*)(const char*)> authCallback = nullptr;
  std::atomic<bool (*)(std::function<void()>)> taskRunner = nullptr;
  std::atomic<bool> invalidateCache = true;

 private:
  mutable std::mutex tableMutex_;
  std::shared_ptr<const ServerTable> table_ = std::make_shared<const ServerTable>();

 public:
  SessionList sessions;  ///< the last member, since sessions go before servers do
};

/// The one state, made on first use and gone with the process.
[[nodiscard]] ManagerState& TheManagerState();

}  // namespace lxservices::cms_interface

#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform_default/origin_state.h"

namespace vtdirect::platform {

/// The states of all origins that this process speaks to. There is one registry; any thread.
///
/// The library starts no thread of its own, so handles that were idle for too long are closed by whoever
/// comes next.
class OriginRegistry {
 public:
  static OriginRegistry& Instance();

  /// The state of an origin for the direct way, which is made if it is not there.
  [[nodiscard]] std::shared_ptr<OriginState> StateOf(const Origin& origin);
  /// The same for the way that a redirect of another origin leads.
  /// @param home  where the redirects begin, as this registry has given it
  [[nodiscard]] std::shared_ptr<OriginState> StateFrom(const std::shared_ptr<OriginState>& home,
                                                       const Origin& origin);

  /// Ends the session of an origin, with what its redirects have led to. For an http origin the sessions of
  /// https on the same host end too: its login may have been used for them.
  void EndSession(const Origin& origin);
  /// Ends the sessions of all origins.
  void EndAllSessions();
  /// Closes what was idle for longer than the settings allow. Cheap when it was done a moment ago.
  void CloseExpired();

 private:
  struct Entry {
    std::shared_ptr<OriginState> state;
    std::uint64_t lastUse = 0;
  };

  OriginRegistry() = default;
  [[nodiscard]] std::vector<std::shared_ptr<OriginState>> AllStates() const;
  [[nodiscard]] std::shared_ptr<OriginState> Find(const std::shared_ptr<OriginState>& home,
                                                  const Origin& origin);
  [[nodiscard]] std::shared_ptr<OriginState> ForgetOne();

  mutable std::mutex mutex_;
  std::map<std::pair<std::string, std::string>, Entry> entries_;  ///< by the texts of home and origin
  std::uint64_t uses_ = 0;
  std::atomic<std::int64_t> lastClosed_{0};  ///< whole seconds of the steady clock
};

}  // namespace vtdirect::platform

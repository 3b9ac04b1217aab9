#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vantry_sim {

/// The session of a request.
struct SessionTicket {
  std::string id;     ///< value of the cookie
  std::string nonce;  ///< that writes of this session must bring
  bool isNew = false;
};

/// The sessions of a server that has them: each of one user, with a nonce of its own, until nothing was asked
/// in it for a while. They are forgotten with the process. Not for several threads at once.
class SessionTable {
 public:
  static constexpr const char* cookieName = "vantry-sim-session";

  /// @param lifetime milliseconds without a request after which a session ends
  explicit SessionTable(std::int64_t lifetime) : lifetime_(lifetime) {}

  /// The session that a request belongs to: the one that its cookie names, if that is the same user's and has
  /// not ended, or else a new one. @param cookies the Cookie header. @param now milliseconds since 1970
  SessionTicket Enter(std::string_view cookies, std::string_view user, std::int64_t now);

  /// Whether some session of the user that has not ended has this nonce.
  [[nodiscard]] bool HasNonce(std::string_view nonce, std::string_view user, std::int64_t now) const;

  /// Ends the session that a cookie names, if there is one.
  void End(std::string_view cookies);
  void EndAll() { sessions_.clear(); }
  /// @return false for an unknown number
  bool End(std::uint64_t number);

  /// A session without what is secret of it.
  struct Listed {
    std::uint64_t number = 0;
    std::string user;
    std::int64_t began = 0;
    std::int64_t lastUsed = 0;
  };
  [[nodiscard]] std::vector<Listed> List(std::int64_t now) const;

 private:
  struct Session {
    Listed listed;
    std::string nonce;
  };
  [[nodiscard]] bool Lives(const Session& session, std::int64_t now) const;

  std::int64_t lifetime_;
  std::uint64_t lastNumber_ = 0;
  std::map<std::string, Session, std::less<>> sessions_;  ///< by the cookie's value
};

/// The value of a cookie in a Cookie header; empty without it.
std::string_view CookieValue(std::string_view cookies, std::string_view name);

}  // namespace vantry_sim

#pragma once

#include <optional>
#include <string>

#include "simulator/store/database.h"
#include "simulator/store/server_clock.h"
#include "simulator/wire/messages.h"
#include "simulator/wire/session_table.h"

namespace vantry_sim {

/// The nonces against cross-site request forgery: one for the life of the data directory or, on a server with
/// sessions, one for each session. Not for several threads at once.
class Nonces {
 public:
  /// @param database keeps the one nonce. @param sessionSeconds nothing: there are no sessions
  Nonces(Database& database, const ServerClock& clock, std::optional<std::uint32_t> sessionSeconds);

  /// Puts a request into its session, where there are sessions. @return the Set-Cookie value for a new one
  std::optional<std::string> Enter(Request& request, const std::string& path, bool secure);

  /// The nonce that a request is told.
  [[nodiscard]] const std::string& For(const Request& request) const;

  /// Whether a request that writes brought the right one.
  [[nodiscard]] bool Accepts(const Request& request) const;

  /// Whether an upload did. Its port is another server to a client that guards its cookies, so the nonce of
  /// any session of its user will do.
  [[nodiscard]] bool AcceptsUpload(const Request& request) const;

  /// Ends the session of a request; without sessions, gives the directory another nonce.
  void Expire(const Request& request);
  void ExpireAll();

  /// Writes the nonce that clients hold into a database that was put in the place of another.
  void WriteBack();

  /// Null on a server without sessions.
  [[nodiscard]] SessionTable* sessions() { return sessions_ ? &*sessions_ : nullptr; }

 private:
  Database& database_;
  const ServerClock& clock_;
  std::optional<SessionTable> sessions_;
  std::string nonce_;
};

}  // namespace vantry_sim

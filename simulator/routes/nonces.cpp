#include "simulator/routes/nonces.h"

#include "simulator/wire/random_text.h"

namespace vantry_sim {
namespace {

/// The nonce of the data directory. It outlives the process, since clients fetch it once and for all.
std::string KeptNonce(Database& database) {
  database.Prepare("INSERT OR IGNORE INTO facts(key, value) VALUES('nonce', ?1)")
      .Bind(RandomHexadecimal())
      .Run();
  auto statement = database.Prepare("SELECT value FROM facts WHERE key = 'nonce'");
  return statement.Step() ? statement.Text(0) : RandomHexadecimal();
}

}  // namespace

Nonces::Nonces(Database& database, const ServerClock& clock, std::optional<std::uint32_t> sessionSeconds)
    : database_(database), clock_(clock), nonce_(KeptNonce(database)) {
  if (sessionSeconds) sessions_.emplace(std::int64_t{*sessionSeconds} * 1000);
}

std::optional<std::string> Nonces::Enter(Request& request, const std::string& path, bool secure) {
  if (!sessions_) return std::nullopt;
  const SessionTicket ticket = sessions_->Enter(request.cookies, request.user, clock_.Now());
  request.sessionNonce = ticket.nonce;
  if (!ticket.isNew) return std::nullopt;
  return std::string(SessionTable::cookieName) + "=" + ticket.id + "; Path=" + (path.empty() ? "/" : path) +
         "; HttpOnly; SameSite=Lax" + (secure ? "; Secure" : "");
}

const std::string& Nonces::For(const Request& request) const {
  return sessions_ ? request.sessionNonce : nonce_;
}

bool Nonces::Accepts(const Request& request) const {
  return !request.nonce.empty() && request.nonce == For(request);
}

bool Nonces::AcceptsUpload(const Request& request) const {
  if (!sessions_) return Accepts(request);
  return sessions_->HasNonce(request.nonce, request.user, clock_.Now());
}

void Nonces::Expire(const Request& request) {
  if (sessions_) return sessions_->End(request.cookies);
  nonce_ = RandomHexadecimal();
  WriteBack();
}

void Nonces::ExpireAll() {
  if (sessions_) return sessions_->EndAll();
  nonce_ = RandomHexadecimal();
  WriteBack();
}

void Nonces::WriteBack() {
  database_
      .Prepare("INSERT INTO facts(key, value) VALUES('nonce', ?1) ON CONFLICT(key) DO UPDATE SET value = ?1")
      .Bind(nonce_)
      .Run();
}

}  // namespace vantry_sim

#include "simulator/wire/session_table.h"

#include <algorithm>

#include "simulator/wire/random_text.h"

namespace vantry_sim {
namespace {

/// A client that never sends its cookie back makes a session with each request.
constexpr std::size_t mostSessions = 10'000;

}  // namespace

SessionTicket SessionTable::Enter(std::string_view cookies, std::string_view user, std::int64_t now) {
  std::string id(CookieValue(cookies, cookieName));
  const auto found = sessions_.find(id);
  if (found != sessions_.end() && found->second.listed.user == user && Lives(found->second, now)) {
    found->second.listed.lastUsed = now;
    return {std::move(id), found->second.nonce, false};
  }
  if (sessions_.size() >= mostSessions) {
    const auto oldest = std::min_element(
        sessions_.begin(), sessions_.end(),
        [](const auto& a, const auto& b) { return a.second.listed.lastUsed < b.second.listed.lastUsed; });
    sessions_.erase(oldest);
  }
  id = RandomHexadecimal();
  Session session{{++lastNumber_, std::string(user), now, now}, RandomHexadecimal()};
  const std::string nonce = session.nonce;
  sessions_[id] = std::move(session);
  return {std::move(id), nonce, true};
}

bool SessionTable::HasNonce(std::string_view nonce, std::string_view user, std::int64_t now) const {
  return std::any_of(sessions_.begin(), sessions_.end(), [&](const auto& entry) {
    const Session& session = entry.second;
    return session.nonce == nonce && session.listed.user == user && Lives(session, now);
  });
}

void SessionTable::End(std::string_view cookies) {
  const auto found = sessions_.find(CookieValue(cookies, cookieName));
  if (found != sessions_.end()) sessions_.erase(found);
}

bool SessionTable::End(std::uint64_t number) {
  return std::erase_if(sessions_, [&](const auto& entry) { return entry.second.listed.number == number; }) >
         0;
}

std::vector<SessionTable::Listed> SessionTable::List(std::int64_t now) const {
  std::vector<Listed> list;
  for (const auto& [id, session] : sessions_) {
    if (Lives(session, now)) list.push_back(session.listed);
  }
  std::sort(list.begin(), list.end(), [](const Listed& a, const Listed& b) { return a.number < b.number; });
  return list;
}

bool SessionTable::Lives(const Session& session, std::int64_t now) const {
  return now - session.listed.lastUsed < lifetime_;
}

std::string_view CookieValue(std::string_view cookies, std::string_view name) {
  while (!cookies.empty()) {
    const auto end = cookies.find(';');
    std::string_view cookie = cookies.substr(0, end);
    cookies.remove_prefix(end == std::string_view::npos ? cookies.size() : end + 1);
    while (cookie.starts_with(' ')) cookie.remove_prefix(1);
    if (cookie.starts_with(name) && cookie.substr(name.size()).starts_with('='))
      return cookie.substr(name.size() + 1);
  }
  return {};
}

}  // namespace vantry_sim

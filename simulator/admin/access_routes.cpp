#include <charconv>

#include "simulator/admin/admin_api.h"
#include "simulator/store/user_store.h"
#include "simulator/wire/json_members.h"
#include "simulator/wire/timestamp.h"

namespace vantry_sim {
namespace {

/// Neither passwords nor tokens are ever told.
void WriteUser(JsonText& json, const UserDirectory::Listed& user) {
  json.StartObject().Member("name", user.name).Member("password", user.hasPassword);
  json.Member("tokens", static_cast<std::int64_t>(user.tokens)).EndObject();
}

Response ListUsers(Simulator& simulator) {
  return AdminAnswer([&](JsonText& json) {
    json.StartObject().Member("open", simulator.users().open()).Key("users").StartArray();
    for (const UserDirectory::Listed& user : simulator.users().List()) WriteUser(json, user);
    json.EndArray().EndObject();
  });
}

Response PutUser(Simulator& simulator, const Request& request) {
  auto body = ReadAdminBody(request, {"password", "token"});
  if (!body) return body.TakeRefusal();
  std::string problem, password, token;
  JsonMembers members(body->Root(), problem);
  members.Text("password", password).Text("token", token);
  if (problem.empty() && !members.Has("password") && token.empty()) problem = "password or token is missing";
  const std::string& name = request.Path("name");
  if (problem.empty() && name.find(':') != std::string::npos) problem = "a name holds no colon";
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  return simulator.Exclusively([&](const ServiceContext& context) {
    static_cast<void>(UserKey(context.database, name));
    if (members.Has("password")) simulator.users().SetPassword(name, password);
    if (!token.empty()) simulator.users().AddToken(name, token);
    for (const UserDirectory::Listed& user : simulator.users().List()) {
      if (user.name == name) return AdminAnswer([&](JsonText& json) { WriteUser(json, user); });
    }
    return ErrorResponse(500, "internal", "the user is gone");
  });
}

Response RemoveUser(Simulator& simulator, const Request& request) {
  if (simulator.users().Remove(request.Path("name"))) return AdminDone();
  return ErrorResponse(404, "no-such-user", "nobody of this name may come in");
}

Response NoSessions() {
  return ErrorResponse(409, "no-sessions", "this server was started without --sessions");
}

Response ListSessions(Simulator& simulator) {
  return simulator.Exclusively([&](const ServiceContext&) {
    const SessionTable* sessions = simulator.nonces().sessions();
    if (sessions == nullptr) return NoSessions();
    return AdminAnswer([&](JsonText& json) {
      json.StartObject().Key("sessions").StartArray();
      for (const SessionTable::Listed& session : sessions->List(simulator.clock().Now())) {
        json.StartObject()
            .Member("number", static_cast<std::int64_t>(session.number))
            .Member("user", session.user);
        json.Member("began", Timestamp(session.began))
            .Member("lastUsed", Timestamp(session.lastUsed))
            .EndObject();
      }
      json.EndArray().EndObject();
    });
  });
}

Response EndSession(Simulator& simulator, const Request& request) {
  const std::string& text = request.Path("number");
  std::uint64_t number = 0;
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
  // No session has this one.
  if (code != std::errc() || end != text.data() + text.size()) number = 0;
  return simulator.Exclusively([&](const ServiceContext&) {
    SessionTable* sessions = simulator.nonces().sessions();
    if (sessions == nullptr) return NoSessions();
    if (sessions->End(number)) return AdminDone();
    return ErrorResponse(404, "no-such-session", "no session has this number");
  });
}

Response EndAll(Simulator& simulator) {
  return simulator.Exclusively([&](const ServiceContext&) {
    simulator.nonces().ExpireAll();
    return AdminDone();
  });
}

}  // namespace

void AddAccessRoutes(Router& router, Simulator& simulator) {
  router.Add(
      "GET", "users", [&simulator](const Request&) { return ListUsers(simulator); }, "who may come in");
  router.Add(
      "PUT", "users/{name}", [&simulator](const Request& request) { return PutUser(simulator, request); },
      "let somebody in, by a password or a token");
  router.Add(
      "DELETE", "users/{name}",
      [&simulator](const Request& request) { return RemoveUser(simulator, request); },
      "let somebody in no longer");
  router.Add(
      "GET", "sessions", [&simulator](const Request&) { return ListSessions(simulator); },
      "the sessions that have not ended");
  router.Add(
      "DELETE", "sessions", [&simulator](const Request&) { return EndAll(simulator); },
      "end all sessions, or renew the nonce of a server without them");
  router.Add(
      "DELETE", "sessions/{number}",
      [&simulator](const Request& request) { return EndSession(simulator, request); }, "end one session");
}

}  // namespace vantry_sim

#include <charconv>

#include "simulator/admin/admin_api.h"
#include "simulator/wire/json_members.h"
#include "simulator/wire/timestamp.h"

namespace vantry_sim {
namespace {

/// The longest that a request may wait for others.
constexpr std::uint64_t longestWait = 60'000;

void WriteFault(JsonText& json, const FaultEntry& fault) {
  json.StartObject().Member("id", static_cast<std::int64_t>(fault.id)).Member("rule", fault.text);
  json.Member("matches", static_cast<std::int64_t>(fault.matches));
  json.Member("met", static_cast<std::int64_t>(fault.met)).Key("left");
  if (fault.left) {
    json.Number(static_cast<std::int64_t>(*fault.left));
  } else {
    json.Null();
  }
  json.EndObject();
}

Response ListFaults(Simulator& simulator) {
  return AdminAnswer([&](JsonText& json) {
    json.StartObject().Key("faults").StartArray();
    for (const FaultEntry& fault : simulator.faults().List()) WriteFault(json, fault);
    json.EndArray().EndObject();
  });
}

Response NoSuchFault() {
  return ErrorResponse(404, "no-such-fault", "no fault has this id");
}

std::uint64_t IdOf(const Request& request) {
  const std::string& text = request.Path("id");
  std::uint64_t id = 0;
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), id);
  return code == std::errc() && end == text.data() + text.size() ? id : 0;
}

Response OneFault(Simulator& simulator, std::uint64_t id, int status) {
  const auto fault = simulator.faults().Find(id);
  if (!fault) return NoSuchFault();
  return AdminAnswer([&](JsonText& json) { WriteFault(json, *fault); }, status);
}

Response AddFault(Simulator& simulator, const Request& request) {
  auto body = ReadAdminBody(request, {"rule"});
  if (!body) return body.TakeRefusal();
  std::string problem, rule;
  JsonMembers(body->Root(), problem).Text("rule", rule, Presence::Required);
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  const auto id = simulator.faults().Add(rule, &problem);
  return id ? OneFault(simulator, *id, 201) : ErrorResponse(400, "bad-rule", problem);
}

void WriteRequest(JsonText& json, const RememberedRequest& request) {
  const auto start = std::chrono::duration_cast<std::chrono::milliseconds>(request.start.time_since_epoch());
  json.StartObject().Member("id", static_cast<std::int64_t>(request.id)).Member("door", request.door);
  json.Member("connection", static_cast<std::int64_t>(request.connection)).Member("client", request.client);
  json.Member("time", Timestamp(start.count()))
      .Member("method", request.method)
      .Member("path", request.target);
  json.Key("headers").StartArray();
  for (const auto& [name, value] : request.headers)
    json.StartObject().Member("name", name).Member("value", value).EndObject();
  json.EndArray().Key("body");
  if (request.body.empty()) {
    json.Null();
  } else {
    json.Raw(request.body);
  }
  json.Member("bodyBytes", static_cast<std::int64_t>(request.bodySize)).Member("done", request.done);
  json.Member("user", request.user).Member("status", static_cast<std::int64_t>(request.status));
  json.Member("answerBytes", static_cast<std::int64_t>(request.answerBytes));
  json.Member("microseconds", static_cast<std::int64_t>(request.duration.count())).Key("fault");
  if (request.fault != 0) {
    json.Number(static_cast<std::int64_t>(request.fault));
  } else {
    json.Null();
  }
  json.EndObject();
}

void WriteRequests(JsonText& json, std::uint64_t mark, const std::vector<RememberedRequest>& requests) {
  json.Member("mark", static_cast<std::int64_t>(mark)).Key("requests").StartArray();
  for (const RememberedRequest& request : requests) WriteRequest(json, request);
  json.EndArray();
}

/// A number among the query parameters. @param[out] problem set for one that is none, or too much
std::uint64_t NumberOf(const Request& request, std::string_view name, std::uint64_t otherwise,
                       std::uint64_t most, std::string& problem) {
  const auto text = request.Query(name);
  if (!text) return otherwise;
  std::uint64_t number = 0;
  const auto [end, code] = std::from_chars(text->data(), text->data() + text->size(), number);
  if (text->empty() || code != std::errc() || end != text->data() + text->size() || number > most)
    problem = std::string(name) + " is a whole number up to " + std::to_string(most);
  return number;
}

std::optional<RequestFilter> FilterOf(const Request& request, std::string& problem) {
  RequestFilter filter;
  filter.method = request.Query("method").value_or("*");
  filter.pattern = request.Query("path").value_or("*");
  if (!filter.pattern.starts_with('/') && !filter.pattern.starts_with('*')) filter.pattern.insert(0, "/");
  filter.since = NumberOf(request, "since", 0, INT64_MAX, problem);
  if (request.Query("status")) filter.status = static_cast<int>(NumberOf(request, "status", 0, 599, problem));
  const std::string state = request.Query("state").value_or("done");
  if (state != "done" && state != "arrived") problem = "state is done or arrived";
  filter.arrived = state == "arrived";
  return problem.empty() ? std::optional(filter) : std::nullopt;
}

Response ListRequests(Simulator& simulator, const Request& request) {
  for (const auto& [name, value] : request.query) {
    constexpr std::string_view names[] = {"method", "path", "since", "status", "state", "count", "wait"};
    if (std::find(std::begin(names), std::end(names), name) == std::end(names))
      return ErrorResponse(400, "bad-parameter", "nothing is known of the parameter " + name);
  }
  std::string problem;
  const auto filter = FilterOf(request, problem);
  const std::uint64_t count = NumberOf(request, "count", 1, 10'000, problem);
  const std::uint64_t wait = NumberOf(request, "wait", 0, longestWait, problem);
  if (!filter || !problem.empty()) return ErrorResponse(400, "bad-parameter", problem);
  std::uint64_t mark = 0;
  const auto requests = simulator.history().Wait(*filter, request.Query("wait") ? count : 0,
                                                 std::chrono::milliseconds(wait), &mark);
  const bool inTime = !request.Query("wait") || requests.size() >= count;
  return AdminAnswer(
      [&](JsonText& json) {
        json.StartObject();
        if (!inTime) {
          json.Key("error").StartObject().Member("code", "timeout");
          json.Member("message", "only " + std::to_string(requests.size()) + " requests came in time")
              .EndObject();
        }
        WriteRequests(json, mark, requests);
        json.EndObject();
      },
      inTime ? 200 : 504);
}

}  // namespace

void AddTrafficRoutes(Router& router, Simulator& simulator) {
  router.Add(
      "GET", "faults", [&simulator](const Request&) { return ListFaults(simulator); },
      "the faults in force, with the requests that they met");
  router.Add(
      "POST", "faults", [&simulator](const Request& request) { return AddFault(simulator, request); },
      "one more fault");
  router.Add(
      "DELETE", "faults",
      [&simulator](const Request&) {
        simulator.faults().Clear();
        return AdminDone();
      },
      "no faults any longer");
  router.Add(
      "GET", "faults/{id}",
      [&simulator](const Request& request) { return OneFault(simulator, IdOf(request), 200); }, "one fault");
  router.Add(
      "DELETE", "faults/{id}",
      [&simulator](const Request& request) {
        return simulator.faults().Remove(IdOf(request)) ? AdminDone() : NoSuchFault();
      },
      "one fault less");
  router.Add(
      "GET", "requests", [&simulator](const Request& request) { return ListRequests(simulator, request); },
      "what was asked, and waiting for it");
  router.Add(
      "DELETE", "requests",
      [&simulator](const Request&) {
        simulator.history().Clear();
        return AdminDone();
      },
      "forget what was asked");
}

}  // namespace vantry_sim

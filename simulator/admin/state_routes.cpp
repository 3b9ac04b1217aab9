#include <chrono>
#include <set>

#include "simulator/admin/admin_api.h"
#include "simulator/seed/fixture_export.h"
#include "simulator/seed/fixture_loader.h"
#include "simulator/seed/fixture_reader.h"
#include "simulator/seed/fixture_writer.h"
#include "simulator/seed/seeds.h"
#include "simulator/wire/json_members.h"
#include "simulator/wire/timestamp.h"

namespace vantry_sim {
namespace {

constexpr std::int64_t longestStep = 100LL * 366 * 86'400 * 1000;

/// Runs something and answers with the time that it took. @return what `run` refuses
Response Timed(const std::function<Refusal()>& run) {
  const auto begin = std::chrono::steady_clock::now();
  if (auto refusal = run()) return std::move(*refusal);
  const auto passed = std::chrono::steady_clock::now() - begin;
  return AdminAnswer([&](JsonText& json) {
    json.StartObject();
    json.Member("milliseconds", static_cast<std::int64_t>(
                                    std::chrono::duration_cast<std::chrono::milliseconds>(passed).count()));
    json.EndObject();
  });
}

Response Status(const ServiceContext& context) {
  const auto scheme = SpeaksTls(context.options) ? "https://" : "http://";
  return AdminAnswer([&](JsonText& json) {
    json.StartObject().Member("program", "vantry-sim").Member("version", VANTRY_SIM_VERSION);
    json.Member("url", scheme + context.ownAddress + context.options.prefix + "/");
    json.Member("generation", WordOf(context.options.generation));
    json.Member("dataDirectory", context.options.dataDirectory).EndObject();
  });
}

Response ResetAll(Simulator& simulator) {
  return simulator.Exclusively([&](const ServiceContext&) {
    return Timed([&]() -> Refusal {
      if (simulator.Reset()) return std::nullopt;
      return ErrorResponse(
          409, "no-seed",
          "this directory was filled by a server that kept no copy of its seed; begin with another one");
    });
  });
}

Response NoSuchSnapshot() {
  return ErrorResponse(404, "no-such-snapshot", "no snapshot has this name");
}

Response ListSnapshots(Simulator& simulator) {
  return simulator.Exclusively([&](const ServiceContext&) {
    return AdminAnswer([&](JsonText& json) {
      json.StartObject().Key("snapshots").StartArray();
      for (const Snapshots::Listed& snapshot : simulator.snapshots().List()) {
        json.StartObject().Member("name", snapshot.name).Member("taken", Timestamp(snapshot.taken));
        json.Member("bytes", static_cast<std::int64_t>(snapshot.size)).EndObject();
      }
      json.EndArray().EndObject();
    });
  });
}

/// A name of a snapshot never becomes a path before it was looked at.
Response WithSnapshot(Simulator& simulator, const Request& request,
                      const std::function<Response(const ServiceContext&, const std::string&)>& answer) {
  const std::string& name = request.Path("name");
  if (!Snapshots::IsName(name)) {
    return ErrorResponse(
        400, "bad-name",
        "a name has up to 64 letters, digits, \"-\", \"_\" and \".\", the last not in front");
  }
  return simulator.Exclusively([&](const ServiceContext& context) { return answer(context, name); });
}

Response TakeSnapshot(Simulator& simulator, const Request& request) {
  return WithSnapshot(simulator, request, [&](const ServiceContext& context, const std::string& name) {
    return Timed([&]() -> Refusal {
      simulator.snapshots().Take(context.database, name);
      return std::nullopt;
    });
  });
}

Response RestoreSnapshot(Simulator& simulator, const Request& request) {
  return WithSnapshot(simulator, request, [&](const ServiceContext& context, const std::string& name) {
    return Timed([&]() -> Refusal {
      if (!simulator.snapshots().Restore(context.database, name)) return NoSuchSnapshot();
      simulator.TakeUpState();
      return std::nullopt;
    });
  });
}

Response RemoveSnapshot(Simulator& simulator, const Request& request) {
  return WithSnapshot(simulator, request, [&](const ServiceContext&, const std::string& name) {
    return simulator.snapshots().Remove(name) ? AdminDone() : NoSuchSnapshot();
  });
}

Response GetTree(Simulator& simulator, const Request& request) {
  const std::string contents = request.Query("contents").value_or("references");
  const std::string format = request.Query("format").value_or("json");
  if ((contents != "references" && contents != "inline") || (format != "json" && format != "yaml"))
    return ErrorResponse(400, "bad-parameter",
                         "contents is references or inline, and format is json or yaml");
  return simulator.Exclusively([&](const ServiceContext& context) {
    const Fixture fixture = ExportFixture(context.database, context.contents);
    const auto out = format == "json" ? MakeJsonOutput() : MakeYamlOutput();
    WriteFixture(
        *out, fixture,
        {contents == "inline" ? FixtureBytesForm::Kind::Inline : FixtureBytesForm::Kind::References});
    Response response;
    if (format == "yaml") response.contentType = "application/yaml;charset=UTF-8";
    response.body = out->Take();
    return response;
  });
}

/// The state of a body, JSON or YAML by its type.
std::optional<JsonDocument> ReadTree(const Request& request, FixtureProblem& problem) {
  if (request.contentType.find("yaml") != std::string::npos) return ReadYaml(request.body, problem);
  JsonProblem json;
  auto document = ReadJson(request.body, &json, 100);
  if (!document) problem = {json.line, json.reason};
  return document;
}

std::set<std::int64_t> KnownStreams(Database& database) {
  std::set<std::int64_t> streams;
  auto statement = database.Prepare("SELECT id FROM streams");
  while (statement.Step()) streams.insert(statement.Integer(0));
  return streams;
}

Response PutTree(Simulator& simulator, const Request& request) {
  FixtureProblem broken;
  const auto tree = ReadTree(request, broken);
  if (!tree) return ErrorResponse(400, "bad-state", TextOf(broken));
  return simulator.Exclusively([&](const ServiceContext& context) {
    std::vector<FixtureProblem> problems;
    const auto fixture = ReadFixture(tree->Root(), {{}, false, KnownStreams(context.database)}, problems);
    if (!fixture) {
      std::string reasons;
      for (const FixtureProblem& problem : problems)
        reasons += (reasons.empty() ? "" : "; ") + TextOf(problem);
      return ErrorResponse(400, "bad-state", reasons);
    }
    return Timed([&]() -> Refusal {
      Transaction transaction(context.database);
      ForgetState(context.database);
      LoadFixture(context.database, context.contents, *fixture);
      transaction.Commit();
      simulator.TakeUpState();
      return std::nullopt;
    });
  });
}

Response TellGeneration(const ServiceContext& context) {
  return AdminAnswer([&](JsonText& json) {
    json.StartObject().Member("generation", WordOf(context.options.generation)).EndObject();
  });
}

Response PutGeneration(Simulator& simulator, const Request& request) {
  auto body = ReadAdminBody(request, {"generation"});
  if (!body) return body.TakeRefusal();
  const auto generation = GenerationOf(body->Root().Find("generation").Text());
  if (!generation)
    return ErrorResponse(400, "bad-body", "generation is gateway, schema1, schema4 or schema5");
  return simulator.Exclusively([&](const ServiceContext& context) {
    simulator.SetGeneration(*generation);
    return TellGeneration(context);
  });
}

Response TellClock(const Simulator& simulator) {
  return AdminAnswer([&](JsonText& json) {
    json.StartObject().Member("time", Timestamp(simulator.clock().Now()));
    json.Member("frozen", simulator.clock().frozen()).EndObject();
  });
}

Response PutClock(Simulator& simulator, const Request& request) {
  auto body = ReadAdminBody(request, {"time", "frozen"});
  if (!body) return body.TakeRefusal();
  std::string problem, text;
  bool frozen = simulator.clock().frozen();
  JsonMembers(body->Root(), problem).Text("time", text).Flag("frozen", frozen);
  const auto time = text.empty() ? std::optional(simulator.clock().Now()) : ReadTimestamp(text);
  if (problem.empty() && !time) problem = "time is UTC, such as 2026-01-31T09:00:00Z";
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  simulator.clock().Set(*time, frozen);
  return TellClock(simulator);
}

Response AdvanceClock(Simulator& simulator, const Request& request) {
  auto body = ReadAdminBody(request, {"milliseconds"});
  if (!body) return body.TakeRefusal();
  std::string problem;
  std::int64_t step = 0;
  JsonMembers(body->Root(), problem).Number("milliseconds", step, Presence::Required);
  if (problem.empty() && (step > longestStep || step < -longestStep))
    problem = "milliseconds is a century at most";
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  simulator.clock().Advance(step);
  return TellClock(simulator);
}

}  // namespace

void AddStateRoutes(Router& router, Simulator& simulator) {
  router.Add(
      "GET", "status", [&simulator](const Request&) { return simulator.Exclusively(Status); },
      "what runs, and where");
  router.Add(
      "POST", "reset", [&simulator](const Request&) { return ResetAll(simulator); },
      "everything as it was at the start");
  router.Add(
      "GET", "snapshots", [&simulator](const Request&) { return ListSnapshots(simulator); },
      "the states that were kept");
  router.Add(
      "PUT", "snapshots/{name}",
      [&simulator](const Request& request) { return TakeSnapshot(simulator, request); }, "keep the state");
  router.Add(
      "POST", "snapshots/{name}",
      [&simulator](const Request& request) { return RestoreSnapshot(simulator, request); },
      "go back to a state that was kept");
  router.Add(
      "DELETE", "snapshots/{name}",
      [&simulator](const Request& request) { return RemoveSnapshot(simulator, request); },
      "forget a state that was kept");
  router.Add(
      "GET", "tree", [&simulator](const Request& request) { return GetTree(simulator, request); },
      "the state as a state file");
  router.Add(
      "PUT", "tree", [&simulator](const Request& request) { return PutTree(simulator, request); },
      "another state in its place");
  router.Add(
      "GET", "generation", [&simulator](const Request&) { return simulator.Exclusively(TellGeneration); },
      "the generation of servers that is played");
  router.Add(
      "PUT", "generation", [&simulator](const Request& request) { return PutGeneration(simulator, request); },
      "play another generation");
  router.Add(
      "GET", "clock", [&simulator](const Request&) { return TellClock(simulator); },
      "the time that the server believes in");
  router.Add(
      "PUT", "clock", [&simulator](const Request& request) { return PutClock(simulator, request); },
      "set it, or freeze it");
  router.Add(
      "POST", "clock/advance",
      [&simulator](const Request& request) { return AdvanceClock(simulator, request); },
      "put it forward or back");
  router.Add(
      "DELETE", "clock",
      [&simulator](const Request&) {
        simulator.clock().Reset();
        return TellClock(simulator);
      },
      "go by the machine's time again");
}

}  // namespace vantry_sim

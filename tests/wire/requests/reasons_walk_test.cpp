#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>

#include "public/outcome.h"
#include "public/vt_direct_manager.h"
#include "tests/support/trace_recorder.h"
#include "tests/wire/requests/counted_calls.h"
#include "tests/wire/requests/sample_server.h"

// Every request of every exported function fails in every way; the host reads why.
namespace vtdirect_test {
namespace {

using du::http::ErrorCode;
using VtDirectManager::Failure;
using VtDirectManager::FailureKind;
using VtDirectManager::FailureKindText;
using VtDirectManager::Outcome;

constexpr std::string_view said = "said by the server";
constexpr const char* anotherKind = "7";

/// A way to fail, and what it says of a request.
struct Way {
  const char* name;
  Answer answer;
  FailureKind kind;
  int httpStatus;
  bool mayHaveHappened;  ///< of a request that changes something
  bool isWalkedAlways = false;
};

std::vector<Way> WaysToFail() {
  const std::string text(said);
  return {
      {"credentials wanted", {401, text}, FailureKind::CredentialsWanted, 401, false},
      {"forbidden", {403, text}, FailureKind::Refused, 403, false, true},
      {"not found", {404, text}, FailureKind::NotFound, 404, false},
      {"conflict", {409, text}, FailureKind::Conflict, 409, false},
      {"precondition", {412, text}, FailureKind::Conflict, 412, false},
      {"too large", {413, text, ErrorCode::TooLarge}, FailureKind::TooLarge, 413, false},
      {"server error", {500, text}, FailureKind::Refused, 500, true},
      {"unreachable", {0, {}, ErrorCode::NoConnection}, FailureKind::Unreachable, 0, false},
      {"no TLS session", {0, {}, ErrorCode::TlsFailure}, FailureKind::Unreachable, 0, false},
      {"lost answer", {0, {}, ErrorCode::ProtocolFailure}, FailureKind::AnswerBroken, 0, true, true},
      {"stall", {0, {}, ErrorCode::TimedOut}, FailureKind::TimedOut, 0, true},
      {"cut", {200, "[", ErrorCode::ProtocolFailure}, FailureKind::AnswerBroken, 0, true},
      {"cancelled", {0, {}, ErrorCode::Cancelled}, FailureKind::Cancelled, 0, true},
      {"JSON of another kind", {200, anotherKind}, FailureKind::AnswerBroken, 200, true, true},
      {"broken JSON", {200, "<html>"}, FailureKind::AnswerBroken, 200, true, true},
  };
}

/// What a request is for, by what its line holds. The first that fits counts.
struct StepOfLine {
  std::string_view inside;
  std::vector<std::string> steps;
};

const std::vector<StepOfLine>& StepsOfLines() {
  static const std::vector<StepOfLine> steps{
      {"/OrvetGW", {"ask the server for its version"}},
      {"$metadata", {"look for a service"}},
      {"/security/csrf", {"fetch the nonce"}},
      {"/GetCSRFToken()", {"fetch the nonce"}},
      {"/IsAssemblyInstalled", {"ask which services there are"}},
      {"/snx_gw/", {"list the folder"}},
      {"/rest/objects?", {"search by name"}},
      {"/documents/search?", {"search by number"}},
      {"/versions?", {"list the versions"}},
      {"GET /vt/servlet/rest/v1/dkm/documents/", {"read the document"}},
      {"POST /vt/servlet/rest/v1/dkm/documents", {"write the document", "write the XLIFF document"}},
      {"GET /vt/servlet/rest/v1/dkm/workspaces?", {"list the workspaces"}},
      {"GET /vt/servlet/rest/v1/dkm/workspaces/", {"list a workspace"}},
      {"/checkout", {"check out"}},
      {"/checkin", {"check in"}},
      {"/undocheckout", {"undo the checkout"}},
      {"/store", {"store into the workspace"}},
      {"/delete", {"delete a workspace"}},
      {"POST /vt/servlet/rest/v1/dkm/workspaces", {"create a workspace"}},
      {"/creationFactory", {"ask for a place to upload to"}},
      {"POST /upload/1", {"upload the contents"}},
      {"GET /content/1", {"download the content"}},
      {"/v1/contexts/", {"find the folder"}},
      {"/v1/contexts?", {"list the contexts"}},
      // The list of all contexts also shows that a server answers, and that a context has a name.
      {"/v1/contexts", {"ask whether the server answers", "list the contexts", "find the context"}},
      {"/GetHVDFeatures()", {"ask for the features"}},
      {"/XliffPreferences(", {"read the translation preferences"}},
      {"/Xliff", {"find the source XLIFF"}},
      {"?$expand=Translations", {"list the translations"}},
      {"/CreateXliffLink", {"link the XLIFF document"}},
      {"PATCH ", {"mark the document as published"}},
      {"/DynamicDocuments?", {"find the newest version"}},
      {"/CADDocuments?", {"find the newest version"}},
      {"$filter=CADName%20eq", {"search by name"}},
      {"/FolderContents/", {"list the folder", "search by name"}},
      {"/Folders?$select=Name", {"list the folder"}},
      {"/Folders?$select=ID,Name&", {"list the folder"}},
      {"ID,Name)&$select=ID", {"find the folder"}},
      {"/Containers?$expand=Folders", {"find the context", "find the folder"}},
      {"?$select=ID&$filter=", {"find the context"}},
      {"?$select=ID,Name", {"list the contexts"}},
      {"GET /vt/servlet/odata/", {"ask which services there are"}},
  };
  return steps;
}

std::vector<std::string> StepsOf(const std::string& line) {
  for (const StepOfLine& step : StepsOfLines()) {
    if (line.find(step.inside) != std::string::npos) return step.steps;
  }
  return {"a line without a step"};
}

// Answers that are no JSON, or whose body nobody reads.
bool IsJsonRead(const std::string& call, const std::string& line) {
  // Opening keeps the listing as it came, for whoever reads the handle.
  const bool opens =
      call.starts_with("OpenDir") || call.starts_with("OpenWalk") || call.starts_with("FileOrFolderExists");
  if (opens && line.find("/snx_gw/") != std::string::npos) return false;
  for (const char* other : {"/OrvetGW", "$metadata", "GET /content/", "/delete"}) {
    if (line.find(other) != std::string::npos) return false;
  }
  return true;
}

// Addresses that the server gave show their origin alone. The sample's are all of one host.
std::string UrlOf(const std::string& line) {
  if (line == "POST /upload/1" || line == "GET /content/1") return "https://plm.example/***";
  return "https://plm.example" + line.substr(line.find(' ') + 1);
}

// A platform tells 413 of a body as an error of its own, and of a GET as any other answer.
Answer AnswerOf(const Way& way, const std::string& line) {
  Answer answer = way.answer;
  if (line.starts_with("GET ") && answer.error == ErrorCode::TooLarge) answer.error = ErrorCode::Done;
  return answer;
}

bool IsOf(const Failure& entry, const std::string& line, const Way& way) {
  const bool isWrite = !line.starts_with("GET ");
  const auto steps = StepsOf(line);
  const bool hasText = way.answer.body == said;
  const int error = static_cast<int>(AnswerOf(way, line).error);
  return entry.kind == way.kind && std::find(steps.begin(), steps.end(), entry.step) != steps.end() &&
         entry.httpStatus == way.httpStatus && entry.platformError == error && entry.url == UrlOf(line) &&
         entry.mayHaveHappened == (isWrite && way.mayHaveHappened) &&
         (entry.serverText == (hasText ? said : "") || line.starts_with("GET /content/")) && !entry.follows;
}

std::string Told(const std::vector<Failure>& entries) {
  std::string text;
  for (const Failure& entry : entries) {
    text += "\n  " + std::string(FailureKindText(entry.kind)) + " | " + entry.step + " | " +
            std::to_string(entry.httpStatus) + " " + std::to_string(entry.platformError) + " | " + entry.url +
            " | " + entry.serverText + (entry.mayHaveHappened ? " | may" : "") +
            (entry.follows ? " | follows" : "") + (entry.aside ? " | aside" : "");
  }
  return text;
}

class ReasonWalk {
 public:
  ReasonWalk(Generation generation, bool everyWay) : server_(generation), everyWay_(everyWay) {
    setenv("FENLOOM_LANGUAGE", "en", 1);
    VtDirectManager::SetAppConfig(VtDirectManager::ConfigBrowseCadDocuments, "");
    transport_.AnswerBy([this](const SentRequest& request) { return AnswerTo(request); });
  }

  void Walk(const std::string& name, const CountedCall& call) {
    const std::size_t requests = RequestsOf(call);
    for (const Way& way : WaysToFail()) {
      if (!everyWay_ && !way.isWalkedAlways) continue;
      for (std::size_t failing = 0; failing < requests; ++failing) Fail(name, call, way, failing);
    }
  }

 private:
  Answer AnswerTo(const SentRequest& request) {
    if (way_ == nullptr || sent_++ != failing_) return server_.AnswerTo(request.line);
    line_ = request.line;
    return AnswerOf(*way_, line_);
  }

  void Prepare(const CountedCall& call) {
    way_ = nullptr;
    ListSampleServer(call.isListed);
    call.prepare();
    transport_.ClearRequests();
  }

  std::size_t RequestsOf(const CountedCall& call) {
    Prepare(call);
    call.run();
    return transport_.lines().size();
  }

  void Fail(const std::string& name, const CountedCall& call, const Way& way, std::size_t failing) {
    Prepare(call);
    trace_.Clear();
    way_ = &way;
    failing_ = failing;
    sent_ = 0;
    line_.clear();
    const Outcome outcome;
    const bool done = call.run();
    const auto entries = outcome.Entries();
    const std::string where = name + ", " + line_ + ": " + way.name + Told(entries);
    if (IsEmptyPage(way)) return;
    ExpectReason(name, entries, way, where);
    if (done) return;
    const auto cause = outcome.Cause();
    ASSERT_TRUE(cause.has_value()) << where;
    EXPECT_FALSE(cause->follows || cause->aside) << where;
  }

  // Pages of documents are read as they come, and any JSON without a row is an empty page.
  [[nodiscard]] bool IsEmptyPage(const Way& way) const {
    return line_.find("/FolderContents/ZVK.") != std::string::npos && way.answer.body == anotherKind;
  }

  void ExpectReason(const std::string& name, const std::vector<Failure>& entries, const Way& way,
                    const std::string& where) {
    ASSERT_FALSE(line_.empty()) << where;
    const bool isBroken = way.answer.error != ErrorCode::Done || way.httpStatus != 200;
    if (!isBroken && !IsJsonRead(name, line_)) return;
    const bool told = std::any_of(entries.begin(), entries.end(),
                                  [&](const Failure& entry) { return IsOf(entry, line_, way); });
    EXPECT_TRUE(told) << where;
  }

  TraceRecorder trace_;
  SampleServer server_;
  const bool everyWay_;
  ScriptedTransport transport_;
  const Way* way_ = nullptr;
  std::size_t failing_ = 0;
  std::size_t sent_ = 0;
  std::string line_;
};

// Every way on the oldest and on the newest servers, whose roads have no request in common where they differ;
// a refusal, a lost answer and a broken one on those between.
void WalkGeneration(Generation generation, bool everyWay) {
  ReasonWalk walk(generation, everyWay);
  for (const auto& [name, call] : CountedCalls()) {
    walk.Walk(name.first + " of " + name.second, call);
    if (testing::Test::HasFailure()) return;
  }
}

TEST(ReasonOfEachFailure, IsToldOnAServerWithTheGatewayAlone) {
  WalkGeneration(Generation::Gateway, true);
}

TEST(ReasonOfEachFailure, IsToldOnAServerWithTheFirstSchema) {
  WalkGeneration(Generation::Schema1, false);
}

TEST(ReasonOfEachFailure, IsToldOnAServerWithTheFourthSchema) {
  WalkGeneration(Generation::Schema4, false);
}

TEST(ReasonOfEachFailure, IsToldOnAServerWithTheFifthSchema) {
  WalkGeneration(Generation::Schema5, true);
}

}  // namespace
}  // namespace vtdirect_test

#include "tests/wire/documents/failing_steps.h"

namespace vtdirect_test {
namespace {

struct Failure {
  const char* name;
  Answer answer;
  std::string error;  ///< status and text, as traces name them
  bool isRefusal;
};

const std::vector<Failure>& AllFailures() {
  using du::http::ErrorCode;
  static const std::vector<Failure> failures{
      {"a refusal", {500, "boom"}, "500 : boom", true},
      {"a demand for other credentials", {403, ""}, "403 : ", true},
      {"no connection", {0, "", ErrorCode::NoConnection}, "-1 : ", true},
      {"an answer without a body that broke off", {200, "", ErrorCode::ProtocolFailure}, "-1 : ", true},
      {"a body that broke off", {200, R"([{"id":"D1)", ErrorCode::ProtocolFailure}, "-1 : ", true},
      // So long that what came of it is in a temporary file.
      {"a long body that broke off",
       {200, "[" + std::string(600'000, ' '), ErrorCode::ProtocolFailure},
       "-1 : ",
       true},
      {"a cut body", {200, R"([{"id":"D1)"}, "200 : ", false},
      {"a body that is no JSON", {200, "<html>"}, "200 : ", false},
      {"no body", {200, ""}, "200 : ", false},
  };
  return failures;
}

void Fill(std::string& text, const std::string& placeholder, const std::string& value) {
  const auto position = text.find(placeholder);
  if (position != std::string::npos) text.replace(position, placeholder.size(), value);
}

Traces WithError(Traces traces, const std::string& error) {
  for (TraceLine& line : traces) {
    Fill(line.text, "{error}", error);
    Fill(line.text, "{text}", error.substr(error.find(" : ") + 3));
  }
  return traces;
}

}  // namespace

void WalkFailures(ScriptedTransport& transport, TraceRecorder& trace, const std::vector<Step>& steps,
                  const std::function<Lines()>& leftovers, const std::function<std::string()>& run) {
  WalkFailuresFrom({0, steps}, transport, trace, leftovers, run);
}

void WalkFailuresFrom(const StepsFrom& flow, ScriptedTransport& transport, TraceRecorder& trace,
                      const std::function<Lines()>& leftovers, const std::function<std::string()>& run) {
  const auto& [first, steps] = flow;
  for (std::size_t failing = first; failing < steps.size(); ++failing) {
    for (const Failure& failure : AllFailures()) {
      SCOPED_TRACE(steps[failing].line + " fails by " + failure.name);
      const Ending& ending = failure.isRefusal ? steps[failing].refused : steps[failing].unreadable;
      transport.ClearRequests();
      trace.Clear();
      Lines lines;
      for (std::size_t index = 0; index < failing; ++index) {
        transport.Then(steps[index].answer);
        lines.push_back(steps[index].line);
      }
      transport.Then(failure.answer);
      lines.push_back(steps[failing].line);
      for (const Answer& answer : ending.answers) transport.Then(answer);
      lines.insert(lines.end(), ending.lines.begin(), ending.lines.end());
      EXPECT_EQ(run(), ending.result);
      EXPECT_EQ(transport.lines(), lines);
      EXPECT_EQ(trace.lines(), WithError(ending.traces, failure.error));
      EXPECT_EQ(transport.unanswered(), 0u);
      EXPECT_THAT(leftovers(), testing::IsEmpty());
      // What a wrong flow left would mislead all that follow.
      if (testing::Test::HasFailure()) return;
    }
  }
}

}  // namespace vtdirect_test

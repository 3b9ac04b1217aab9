#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {

/// What a flow does after a request that failed.
struct Ending {
  std::string result;
  Traces traces;  ///< all of the flow; "{error}" stands for status and text of the failure, "{text}" for its
                  ///< text
  std::vector<Answer> answers = {};  ///< to the requests that still follow
  Lines lines = {};                  ///< those requests
};

/// One request of a flow.
struct Step {
  std::string line;
  Answer answer;      ///< with which the flow goes on
  Ending refused;     ///< after a refusal, and after an exchange that failed
  Ending unreadable;  ///< after a success whose body is cut or is no JSON
};

/// Walks a flow as often as it has steps and ways to fail: each time all steps before one are answered well,
/// and that one fails. Checks the requests, the result, the trace, and that no temporary file is left.
/// @param run  runs the flow from its beginning with nothing remembered, and gives its result as a text
void WalkFailures(ScriptedTransport& transport, TraceRecorder& trace, const std::vector<Step>& steps,
                  const std::function<Lines()>& leftovers, const std::function<std::string()>& run);

/// The steps of a flow, of which those before `first` are walked elsewhere.
struct StepsFrom {
  std::size_t first = 0;
  const std::vector<Step>& steps;
};

/// WalkFailures for the last steps of a flow.
void WalkFailuresFrom(const StepsFrom& flow, ScriptedTransport& transport, TraceRecorder& trace,
                      const std::function<Lines()>& leftovers, const std::function<std::string()>& run);

}  // namespace vtdirect_test

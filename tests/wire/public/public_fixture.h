#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "public/vt_direct_manager.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace vtdirect_test {

using testing::ElementsAre;
using testing::IsEmpty;

/// A host with one server, "plm".
class PublicTest : public testing::Test {
 protected:
  PublicTest() {
    setenv("FENLOOM_LANGUAGE", "en", 1);
    VtDirectManager::UpdateServerList({{"plm", "https://plm.example/vt"}});
  }
  void TearDown() override { EXPECT_EQ(transport.unanswered(), 0U); }

  /// The server has no OData service.
  void ScriptRestServer() { transport.Then(404).Then(404).Then(404); }
  /// What the server was asked from a request on.
  std::vector<std::string> LinesFrom(std::size_t first) const {
    const auto lines = transport.lines();
    return {lines.begin() + static_cast<std::ptrdiff_t>(first), lines.end()};
  }
  /// The traced lines but those of services that are not there.
  std::vector<TraceLine> Traces() const {
    std::vector<TraceLine> traces;
    for (const TraceLine& line : trace.lines()) {
      if (line.text.rfind("Failed to get schema info ", 0) != 0) traces.push_back(line);
    }
    return traces;
  }

  TemporaryDirectory directory;
  TraceRecorder trace;
  ScriptedTransport transport;
};

}  // namespace vtdirect_test

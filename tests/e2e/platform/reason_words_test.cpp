// The library with its own transport: what lies between a host and a server has one sentence, in the trace and in the
// reason that the host reads.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/http_settings.h"
#include "public/outcome.h"
#include "public/vt_direct_manager.h"
#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/server_with_obstacle.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using testing::Contains;
using vtdirect_test::NamedObstacle;

class ReasonWords : public testing::TestWithParam<NamedObstacle> {};

INSTANTIATE_TEST_SUITE_P(Of, ReasonWords, testing::ValuesIn(vtdirect_test::AllObstacles()),
                         [](const auto& row) { return row.param.name; });

TEST_P(ReasonWords, AreThoseOfTheTrace) {
  vtdirect_test::UseShortLimits();
  const vtdirect_test::TemporaryDirectory directory;
  const auto server = vtdirect_test::MakeServerWith(GetParam().obstacle, directory.path());
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.certificateAuthorityFile = server.authorityFile;
  if (!server.proxy.empty()) settings.proxy = server.proxy;
  du::http::SetTransportSettings(settings);
  VtDirectManager::UpdateServerList({{"plm", server.url}});

  vtdirect_test::TraceRecorder trace;
  const VtDirectManager::Outcome outcome;
  std::string uid;
  const std::string address = "korvufenloom-vt" + server.url.substr(server.url.find("://")) + "/?id=D1001";
  EXPECT_FALSE(VtDirectManager::GetFile(address.c_str(), directory.File("copy").c_str(), uid, {}, {}));
  const auto cause = outcome.Cause();
  ASSERT_TRUE(cause.has_value());
  EXPECT_EQ(cause->platformText, server.sentence);
  EXPECT_EQ(cause->platformDetail, static_cast<int>(server.detail));
  const vtdirect_test::TraceLine line{3, "Transport", server.url + ": " + server.sentence + ".\n"};
  EXPECT_THAT(trace.lines(), Contains(line));
}

}  // namespace

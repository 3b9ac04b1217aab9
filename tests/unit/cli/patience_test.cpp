#include "hosts/cli/servers/patience.h"

#include <gtest/gtest.h>

using du::http::ErrorCode;
using du::http::GetTransportSettings;
using du::http::TransportSettings;
using vtdirect_cli::Patience;

namespace {

/// The transport waits for a server as long as the command has patience.
class PatienceTest : public testing::Test {
 protected:
  void TearDown() override { du::http::SetTransportSettings(before_); }

  void End(ErrorCode result) {
    du::http::ObservedExchange exchange;
    exchange.result = result;
    patience_.Note(exchange);
  }

  void ExpectLimits(long connect, long question, long change) {
    const TransportSettings settings = GetTransportSettings();
    EXPECT_EQ(settings.connectTimeoutMilliseconds, connect * 1000);
    EXPECT_EQ(settings.stallTimeoutSeconds, question);
    EXPECT_EQ(settings.firstByteTimeoutSeconds, question);
    EXPECT_EQ(settings.firstByteAfterBodyTimeoutSeconds, change);
  }

  Patience patience_;

 private:
  const TransportSettings before_ = GetTransportSettings();
};

TEST_F(PatienceTest, IsAMinuteForAQuestionAndTwoForAChange) {
  patience_.Begin(std::nullopt, 30);
  ExpectLimits(30, 60, 120);
}

TEST_F(PatienceTest, GrowsWithAFileAndNotForEver) {
  patience_.Begin(std::nullopt, 30);
  {
    const Patience::WhileSending sending(patience_, 999'999);
    ExpectLimits(30, 60, 120);
  }
  {
    const Patience::WhileSending sending(patience_, 300'000'000);
    ExpectLimits(30, 60, 420);
  }
  {
    const Patience::WhileSending sending(patience_, ~std::uint64_t{0});
    ExpectLimits(30, 60, 900);
  }
  ExpectLimits(30, 60, 120);
}

TEST_F(PatienceTest, IsFiveSecondsWithASilentServerUntilItAnswers) {
  patience_.Begin(std::nullopt, 30);
  End(ErrorCode::TimedOut);
  ExpectLimits(5, 5, 5);
  for (const ErrorCode result : {ErrorCode::NoConnection, ErrorCode::Cancelled, ErrorCode::ProtocolFailure}) {
    End(result);
    ExpectLimits(5, 5, 5);
  }
  End(ErrorCode::Done);
  ExpectLimits(30, 60, 120);
}

TEST_F(PatienceTest, IsWhatTheUserHasNamed) {
  patience_.Begin(7200, 90);
  const Patience::WhileSending sending(patience_, 1);
  ExpectLimits(90, 7200, 7200);
  End(ErrorCode::TimedOut);
  ExpectLimits(5, 5, 5);
  patience_.Begin(2, 1);
  ExpectLimits(1, 2, 2);
}

TEST_F(PatienceTest, LeavesTheOtherSettingsAlone) {
  TransportSettings settings = GetTransportSettings();
  settings.redirects = 3;
  du::http::SetTransportSettings(settings);
  patience_.Begin(std::nullopt, 30);
  End(ErrorCode::TimedOut);
  EXPECT_EQ(GetTransportSettings().redirects, 3);
}

}  // namespace

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <thread>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"

namespace {

using du::http::ErrorCode;
using du::http::Method;
using du::http::neverTimesOut;
using du::http::TransportSettings;
using vtdirect_test::Asking;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

class TimeLimit : public testing::Test {
 protected:
  TimeLimit() { vtdirect_test::UseShortLimits(); }
  static void SetLimits(long stall, long firstByte, long firstByteAfterBody) {
    TransportSettings settings = du::http::GetTransportSettings();
    settings.stallTimeoutSeconds = stall;
    settings.firstByteTimeoutSeconds = firstByte;
    settings.firstByteAfterBodyTimeoutSeconds = firstByteAfterBody;
    du::http::SetTransportSettings(settings);
  }
  static Asking Post(const std::string& body) {
    Asking asking;
    asking.method = Method::Post;
    asking.body = &body;
    return asking;
  }
};

/// Thinks for longer than a limit of one second takes to be noticed.
void AnswerAfterThinking(Peer& peer, WireRequest& request) {
  peer.ReadBody(&request);
  std::this_thread::sleep_for(std::chrono::milliseconds(2200));
  peer.Answer(200, "thought over");
}

TEST_F(TimeLimit, OfAStallIsNotForAServerThatThinks) {
  ScriptedServer server(AnswerAfterThinking);
  SetLimits(1, 100, 1);
  EXPECT_EQ(FetchFrom(server.Url()).body, "thought over");
}

TEST_F(TimeLimit, OfTheFirstByteIsAnotherOnceABodyIsOut) {
  ScriptedServer server(AnswerAfterThinking);
  SetLimits(1, 1, 100);
  EXPECT_EQ(FetchFrom(server.Url(), Post("a file")).body, "thought over");
}

TEST_F(TimeLimit, OfTheFirstByteEndsAnExchangeThatIsNotAnswered) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.StaySilent();
  });
  SetLimits(100, 1, 100);
  EXPECT_EQ(FetchFrom(server.Url()).code, ErrorCode::TimedOut);
  SetLimits(100, 100, 1);
  EXPECT_EQ(FetchFrom(server.Url(), Post("a file")).code, ErrorCode::TimedOut);
}

TEST_F(TimeLimit, MayBeAnyNumber) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.Answer(200, "fine");
  });
  // The second is the first number of seconds that nanoseconds in 64 bits can't count.
  for (const long number : {neverTimesOut, 9'223'372'037L, std::numeric_limits<long>::max() / 1000}) {
    TransportSettings settings;
    settings.connectTimeoutMilliseconds = number;
    du::http::SetTransportSettings(settings);
    SetLimits(number, number, number);
    EXPECT_EQ(FetchFrom(server.Url()).body, "fine") << number;
    EXPECT_EQ(FetchFrom(server.Url(), Post("a file")).body, "fine") << number;
  }
}

}  // namespace

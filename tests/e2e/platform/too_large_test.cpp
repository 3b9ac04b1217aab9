#include <gtest/gtest.h>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"

namespace {

using du::http::ErrorCode;
using du::http::Method;
using vtdirect_test::Asking;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

constexpr const char* refusal =
    "HTTP/1.1 413 Too Large\r\nContent-Length: 9\r\nConnection: close\r\n\r\ntoo large";

class TooLarge : public testing::Test {
 protected:
  TooLarge() { vtdirect_test::UseShortLimits(); }
  static Fetched Post(const std::string& url, std::size_t size) {
    const std::string body(size, 'b');
    Asking asking;
    asking.method = Method::Post;
    asking.body = &body;
    return FetchFrom(url, asking);
  }
  static void Expect413(const Fetched& fetched) {
    EXPECT_EQ(fetched.code, ErrorCode::TooLarge);
    EXPECT_EQ(fetched.status, 413);
  }
};

TEST_F(TooLarge, WhenTheServerReadTheWholeBody) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.Send(refusal);
    peer.Close();
  });
  const Fetched fetched = Post(server.Url(), 100'000);
  Expect413(fetched);
  EXPECT_EQ(fetched.body, "too large");
  EXPECT_EQ(fetched.finished, 1);
}

TEST_F(TooLarge, WhenTheServerRefusesByTheHeaderAndReadsOn) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.Send(refusal);
    peer.ReadBody(&request);
  });
  Expect413(Post(server.Url(), 30'000'000));
}

TEST_F(TooLarge, WhenTheServerClosesInTheMiddleOfTheBody) {
  // The reset overtakes whatever the client sends, so both orders of events come about over some tries.
  for (int i = 0; i < 40; ++i) {
    ScriptedServer server([](Peer& peer, WireRequest&) {
      peer.ReadBytes(1'000'000);
      peer.Send(refusal);
      peer.Close();
    });
    Expect413(Post(server.Url(), 30'000'000));
  }
}

TEST_F(TooLarge, WhenTheServerClosesAtOnce) {
  for (int i = 0; i < 40; ++i) {
    ScriptedServer server([](Peer& peer, WireRequest&) {
      peer.Send(refusal);
      peer.Close();
    });
    Expect413(Post(server.Url(), 3'000'000));
  }
}

TEST_F(TooLarge, WhenTheRestOfTheRefusalIsLost) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send("HTTP/1.1 413 Too Large\r\nContent-Length: 900\r\n\r\ntoo la");
    peer.Close();
  });
  Expect413(Post(server.Url(), 3'000'000));
}

TEST_F(TooLarge, IsAnOrdinaryAnswerToARequestWithoutABody) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send(refusal);
    peer.Close();
  });
  const Fetched fetched = FetchFrom(server.Url());
  EXPECT_EQ(fetched.code, ErrorCode::Done);
  EXPECT_EQ(fetched.status, 413);
  EXPECT_EQ(fetched.body, "too large");
}

TEST_F(TooLarge, IsNotWhatAnotherEarlyRefusalIs) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.Send("HTTP/1.1 403 Forbidden\r\nContent-Length: 2\r\nConnection: close\r\n\r\nno");
    peer.ReadBody(&request);
  });
  const Fetched fetched = Post(server.Url(), 3'000'000);
  EXPECT_EQ(fetched.code, ErrorCode::Done);
  EXPECT_EQ(fetched.status, 403);
  EXPECT_EQ(fetched.body, "no");
}

TEST_F(TooLarge, IsNotWhatAServerMeansThatOnlyCloses) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Reset(); });
  const Fetched fetched = Post(server.Url(), 3'000'000);
  EXPECT_EQ(fetched.code, ErrorCode::ProtocolFailure);
  EXPECT_EQ(fetched.status, -77);
}

}  // namespace

// What a server can send with an answer that is no success.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/support/measurement.h"
#include "tests/support/temporary_directory.h"

namespace {

using du::http::ErrorCode;
using testing::IsEmpty;
using vtdirect_test::Asking;
using vtdirect_test::Fetch;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::mebibyte;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

constexpr std::size_t kept = 64 * 1024;

class Refusal : public testing::Test {
 protected:
  Refusal() { vtdirect_test::UseShortLimits(); }

  static std::string HeadOf(int status, std::uint64_t length, const std::string& lines = "") {
    return "HTTP/1.1 " + std::to_string(status) + " No\r\n" + lines +
           "Content-Length: " + std::to_string(length) + "\r\n\r\n";
  }
  /// Sends pieces until the client has had enough or the whole length is out.
  static void SendMuch(Peer& peer, std::uint64_t length) {
    const std::string piece(256 * 1024, 'x');
    for (std::uint64_t sent = 0; sent < length && !peer.closed(); sent += piece.size()) peer.Send(piece);
  }
  vtdirect_test::TemporaryDirectory directory_;
};

TEST_F(Refusal, IsKeptToItsFirst64KiB) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    const std::size_t size = request.target == "/more" ? kept + 1 : kept;
    peer.Answer(404, std::string(size - 1, 'x') + "y");
  });
  const auto connection = vtdirect_test::Connect(server.Url());
  const Fetched whole = Fetch(*connection);
  EXPECT_EQ(whole.status, 404);
  EXPECT_EQ(whole.body.size(), kept);
  EXPECT_EQ(whole.body.back(), 'y');
  Asking asking;
  asking.uri = "/more";
  const Fetched cut = Fetch(*connection, asking);
  EXPECT_EQ(cut.status, 404);
  EXPECT_EQ(cut.body, std::string(kept, 'x'));
  EXPECT_EQ(cut.finished, 1);
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(Refusal, IsReadOnForAMebibyteSoThatTheConnectionStays) {
  ScriptedServer server(
      [](Peer& peer, WireRequest&) { peer.Answer(500, std::string(kept + mebibyte, 'x')); });
  const auto connection = vtdirect_test::Connect(server.Url());
  EXPECT_EQ(Fetch(*connection).status, 500);
  EXPECT_EQ(Fetch(*connection).body.size(), kept);
  EXPECT_EQ(server.connections(), 1);
}

class EndlessRefusal : public Refusal, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Of, EndlessRefusal, testing::Values(302, 401, 404, 500));

TEST_P(EndlessRefusal, TakesNeitherMemoryNorTheDisk) {
  constexpr std::uint64_t gibibyte = 1024 * mebibyte;
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send(HeadOf(GetParam(), gibibyte));
    SendMuch(peer, gibibyte);
    peer.Close();
  });
  const auto connection = vtdirect_test::Connect(server.Url());
  const vtdirect_test::Measurement measurement;
  for (int count = 0; count < 3; ++count) {
    const Fetched fetched = Fetch(*connection);
    EXPECT_EQ(fetched.code, ErrorCode::Done);
    EXPECT_EQ(fetched.status, GetParam());
    EXPECT_EQ(fetched.body.size(), kept);
  }
  EXPECT_LT(measurement.Record(), 16 * mebibyte);
  EXPECT_EQ(server.connections(), 3);
  EXPECT_THAT(directory_.Entries(), IsEmpty());
}

TEST_F(Refusal, ThatRedirectsIsFollowedHoweverLongItIs) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    if (request.target == "/a/there?x=1") return peer.Answer(200, "found");
    peer.Send(HeadOf(302, 100 * mebibyte, "Location: there?x=1\r\n"));
    SendMuch(peer, 100 * mebibyte);
    peer.Close();
  });
  Asking asking;
  asking.uri = "/a/b";
  EXPECT_EQ(FetchFrom(server.Url(), asking).body, "found");
}

TEST_F(Refusal, ThatDemandsALoginIsAnsweredHoweverLongItIs) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    if (request.Header("Authorization") == "Bearer token") return peer.Answer(200, "in");
    peer.Send(HeadOf(401, 100 * mebibyte));
    SendMuch(peer, 100 * mebibyte);
    peer.Close();
  });
  Asking asking;
  asking.reauthenticate = [&server] {
    du::http::SetBearerToken(server.Url(), "token");
    return true;
  };
  EXPECT_EQ(FetchFrom(server.Url(), asking).body, "in");
}

TEST_F(Refusal, WhoseLoginIsUnderWayIsAFailureWhenItHasNoEnd) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send(HeadOf(401, 1024 * mebibyte, "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\"\r\n"));
    SendMuch(peer, 1024 * mebibyte);
    peer.Close();
  });
  du::http::SetPasswordCredentials(server.Url(), "paula", "s3cret");
  const vtdirect_test::Measurement measurement;
  EXPECT_EQ(FetchFrom(server.Url()).code, ErrorCode::ProtocolFailure);
  EXPECT_LT(measurement.Record(), 16 * mebibyte);
}

/// A server to which every login is stale.
ScriptedServer::Script CallingLoginsStale(std::atomic<int>& asked) {
  return [&asked](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.Answer(
        401, "no",
        "WWW-Authenticate: Digest realm=\"r\", nonce=\"n" + std::to_string(++asked) + "\", stale=true\r\n");
  };
}

TEST_F(Refusal, ThatCallsEachLoginStaleIsFollowedUpABoundedNumberOfTimes) {
  std::atomic<int> asked{0};
  ScriptedServer server(CallingLoginsStale(asked));
  du::http::SetPasswordCredentials(server.Url(), "paula", "s3cret");
  const Fetched fetched = FetchFrom(server.Url());
  EXPECT_EQ(fetched.code, ErrorCode::Done);
  EXPECT_EQ(fetched.status, 401);
  // One without a login, one with it, and as many more as there may be further tries: three, and the one that
  // shows that it goes on.
  EXPECT_LE(asked, 6);
  EXPECT_GE(asked, 3);
}

TEST_F(Refusal, ThatCallsEachLoginStaleLeavesNoTriesForTheHost) {
  std::atomic<int> asked{0};
  std::atomic<int> hostAsked{0};
  ScriptedServer server(CallingLoginsStale(asked));
  du::http::SetPasswordCredentials(server.Url(), "paula", "s3cret");
  Asking asking;
  asking.reauthenticate = [&hostAsked] {
    ++hostAsked;
    return true;
  };
  EXPECT_EQ(FetchFrom(server.Url(), asking).status, 401);
  EXPECT_EQ(hostAsked, 0);
}

}  // namespace

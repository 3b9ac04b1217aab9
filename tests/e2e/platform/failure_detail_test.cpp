#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/raw_server.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/support/trace_recorder.h"
#include "tests/support/unused_port.h"

namespace {

using du::http::ErrorCode;
using du::http::FailureDetail;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::Asking;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::FullPort;
using vtdirect_test::Peer;
using vtdirect_test::RawServer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

/// What the platform explains a failure by: to its caller and, once, in the trace.
class FailureDetails : public testing::Test {
 protected:
  FailureDetails() { vtdirect_test::UseShortLimits(); }

  static void SetConnectLimit(long milliseconds) {
    du::http::TransportSettings settings = du::http::GetTransportSettings();
    settings.connectTimeoutMilliseconds = milliseconds;
    du::http::SetTransportSettings(settings);
  }
  void Expect(const Fetched& fetched, const std::string& origin, FailureDetail detail,
              const std::string& sentence) {
    EXPECT_EQ(fetched.found.detail, detail) << fetched.found.text;
    EXPECT_EQ(fetched.found.text, sentence);
    EXPECT_EQ(fetched.explanations, 1);
    const vtdirect_test::TraceLine line{3, "Transport", origin + ": " + sentence + ".\n"};
    EXPECT_THAT(traces_.lines(), ElementsAre(line));
    traces_.Clear();
  }
  /// Of one exchange with `url`, by an error code.
  void ExpectFailure(const std::string& url, ErrorCode code, FailureDetail detail,
                     const std::string& sentence) {
    const Fetched fetched = FetchFrom(url);
    EXPECT_EQ(fetched.code, code);
    Expect(fetched, url, detail, sentence);
  }
  /// Of a server that answers with these bytes.
  void ExpectOf(const std::string& bytes, ErrorCode code, FailureDetail detail, const std::string& sentence) {
    const RawServer server(bytes);
    ExpectFailure("http://" + server.Authority(), code, detail, sentence);
  }

  vtdirect_test::TraceRecorder traces_;
};

TEST_F(FailureDetails, TellThatANameIsNotKnown) {
  // Longer than a part of a name may be, so that no name server is asked.
  const std::string name(70, 'n');
  ExpectFailure("http://" + name, ErrorCode::NoConnection, FailureDetail::NameUnknown,
                "The name " + name + " is not known");
}

TEST_F(FailureDetails, TellThatAPortIsRefused) {
  const std::string port = std::to_string(vtdirect_test::UnusedPort());
  ExpectFailure("http://127.0.0.1:" + port, ErrorCode::NoConnection, FailureDetail::PortRefused,
                "The machine 127.0.0.1 refuses connections on port " + port);
  ExpectFailure("https://127.0.0.1:" + port, ErrorCode::NoConnection, FailureDetail::PortRefused,
                "The machine 127.0.0.1 refuses connections on port " + port);
}

TEST_F(FailureDetails, TellThatNoWayLeadsThere) {
  // The address of all of this machine: nobody can connect to all, and nothing leaves.
  ExpectFailure("http://127.255.255.255", ErrorCode::NoConnection, FailureDetail::RouteDead,
                "No way leads to 127.255.255.255: Network is unreachable");
}

TEST_F(FailureDetails, TellThatAConnectionIsNotTakenAndNotTriedAgain) {
  const FullPort port;
  SetConnectLimit(150);
  const std::string url = "http://127.0.0.1:" + std::to_string(port.port());
  ExpectFailure(url, ErrorCode::TimedOut, FailureDetail::ConnectUnanswered,
                "The machine 127.0.0.1 did not take the connection on port " + std::to_string(port.port()) +
                    " within 150 ms");
  ExpectFailure(url, ErrorCode::TimedOut, FailureDetail::WrittenOff,
                "The machine 127.0.0.1 did not answer a moment ago, and is not tried again for some seconds");
}

TEST_F(FailureDetails, TellThatAServerIsSilentOnceItIsConnected) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.StaySilent(); });
  ExpectFailure(server.Url(), ErrorCode::TimedOut, FailureDetail::AnswerUnanswered,
                "The server took the request and did not begin to answer within 1 s");
}

TEST_F(FailureDetails, TellThatAnAnswerStops) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf");
    peer.StaySilent();
  });
  ExpectFailure(server.Url(), ErrorCode::TimedOut, FailureDetail::AnswerStalled,
                "The server stopped in the middle of its answer, for 1 s");
}

TEST_F(FailureDetails, TellThatABodyIsNotTaken) {
  const FullPort deaf(4);
  const std::string url = "http://127.0.0.1:" + std::to_string(deaf.port());
  // More than the buffers of both sides hold.
  const std::string body(64'000'000, 'b');
  Asking post;
  post.method = du::http::Method::Post;
  post.body = &body;
  const Fetched fetched = FetchFrom(url, post);
  EXPECT_EQ(fetched.code, ErrorCode::TimedOut);
  Expect(fetched, url, FailureDetail::BodyStalled, "The server stopped taking what was sent, for 1 s");
}

TEST_F(FailureDetails, TellThatAConnectionEndsTooEarly) {
  ExpectOf("", ErrorCode::ProtocolFailure, FailureDetail::ClosedUnanswered,
           "The server closed the connection without an answer");
  ExpectOf("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf", ErrorCode::ProtocolFailure,
           FailureDetail::AnswerCut, "The connection ended before the end of the answer");
  ExpectOf("HTTP/1.1 200 OK\r\nContent-Len", ErrorCode::ProtocolFailure, FailureDetail::AnswerCut,
           "The connection ended before the end of the answer");
}

TEST_F(FailureDetails, TellThatWhatAnswersSpeaksNoHttp) {
  for (const char* bytes : {"SSH-2.0-OpenSSH_9.2\r\n", "220 mail.example ESMTP\r\n", "x"}) {
    const RawServer server(bytes);
    ExpectFailure(
        "http://" + server.Authority(), ErrorCode::ProtocolFailure, FailureDetail::NoHttp,
        "What answers on port " + std::to_string(server.port()) + " of 127.0.0.1 does not speak HTTP");
  }
}

TEST_F(FailureDetails, TellThatAServerWantsAnotherVersionOfHttp) {
  const std::string sentence = "The server wants another protocol than HTTP/1.1";
  ExpectOf("HTTP/1.1 505 No\r\nContent-Length: 0\r\n\r\n", ErrorCode::Done, FailureDetail::HttpVersionUnknown,
           sentence);
  ExpectOf("HTTP/1.1 426 No\r\nContent-Length: 0\r\nUpgrade: h2c\r\n\r\n", ErrorCode::Done,
           FailureDetail::HttpVersionUnknown, sentence);
}

TEST_F(FailureDetails, TellThatAServerWantsHttps) {
  // The alert "unexpected message" of TLS, and the words of nginx, Apache, Tomcat and Go.
  const std::string alert("\x15\x03\x01\x00\x02\x02\x0a", 7);
  for (const std::string& said :
       {std::string("The plain HTTP request was sent to HTTPS port"),
        std::string("Reason: You're speaking plain HTTP to an SSL-enabled server port.<br />"),
        std::string("Bad Request\nThis combination of host and port requires TLS.\n"),
        std::string("Client sent an HTTP request to an HTTPS server.\n"), alert}) {
    const std::string head =
        "HTTP/1.1 400 Bad Request\r\nContent-Length: " + std::to_string(said.size()) + "\r\n\r\n";
    const RawServer server(said == alert ? alert : head + said);
    ExpectFailure(
        "http://" + server.Authority(), said == alert ? ErrorCode::ProtocolFailure : ErrorCode::Done,
        FailureDetail::WantsHttps,
        "The server speaks https on port " + std::to_string(server.port()) + ", and was asked by http");
  }
}

TEST_F(FailureDetails, TellThatAServerOffersNoKnownWayToLogIn) {
  ExpectOf(
      "HTTP/1.1 401 No\r\nWWW-Authenticate: NTLM\r\nWWW-Authenticate: Hawk realm=\"canary\"\r\n"
      "Content-Length: 0\r\n\r\n",
      ErrorCode::Done, FailureDetail::LoginUnknown,
      "The server offers only ways to log in that are not supported here: NTLM, Hawk");
}

TEST_F(FailureDetails, TellByWhatAnAnswerIsPacked) {
  ExpectOf("HTTP/1.1 200 OK\r\nContent-Encoding: BR\r\nContent-Length: 4\r\n\r\nbrbr",
           ErrorCode::ProtocolFailure, FailureDetail::CodingUnknown,
           "The server packs its answer by br, which is not supported here");
  ExpectOf("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 4\r\n\r\ngzip",
           ErrorCode::ProtocolFailure, FailureDetail::ContentCoded,
           "The server packs a content that was asked for as it is");
}

TEST_F(FailureDetails, TellOfAnAnswerWhoseEndNobodyCanTell) {
  for (const char* lines : {"Content-Length: 4\r\nContent-Length: 5\r\n", "Transfer-Encoding: gzip\r\n"}) {
    ExpectOf("HTTP/1.1 200 OK\r\n" + std::string(lines) + "\r\nfour", ErrorCode::ProtocolFailure,
             FailureDetail::AnswerUnclear, "The server's answer does not tell clearly where it ends");
  }
  // It ended, and not where a chunk could.
  ExpectOf("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nfour\r\nno chunk",
           ErrorCode::ProtocolFailure, FailureDetail::AnswerUnclear,
           "The server's answer does not tell clearly where it ends");
}

TEST_F(FailureDetails, TellOfAGatewayThatCannotReachTheServer) {
  ExpectOf("HTTP/1.1 502 No\r\nContent-Length: 0\r\n\r\n", ErrorCode::Done, FailureDetail::GatewayFailed,
           "The proxy or gateway in front of the server can't reach it (HTTP 502)");
  ExpectOf("HTTP/1.1 504 No\r\nContent-Length: 0\r\n\r\n", ErrorCode::Done, FailureDetail::GatewayFailed,
           "The proxy or gateway in front of the server can't reach it (HTTP 504)");
}

TEST_F(FailureDetails, AreNotToldOfAnAnswerThatIsTheServersOwn) {
  for (const char* status : {"200", "206", "304", "400", "401", "403", "404", "409", "500", "503"}) {
    const RawServer server("HTTP/1.1 " + std::string(status) +
                           " It\r\nWWW-Authenticate: Basic realm=\"vault\"\r\nContent-Length: 4\r\n"
                           "Content-Encoding: utf-8\r\n\r\nsaid");
    EXPECT_EQ(FetchFrom("http://" + server.Authority()).explanations, 0) << status;
  }
  EXPECT_THAT(traces_.lines(), IsEmpty());
}

TEST_F(FailureDetails, AreNotNeededByACallerWhoAsksForNone) {
  const RawServer server("");
  du::http::BufferFileSource headers(nullptr, 0);
  std::string said;
  du::http::StringFileSink sink(said, 100);
  const du::http::Request request{du::http::Method::Get, "/", &headers, nullptr, nullptr, &sink};
  const auto connection = vtdirect_test::Connect("http://" + server.Authority());
  int status = 0;
  EXPECT_EQ(du::http::DoRequestWithCommonAuth(*connection, {nullptr, [] { return false; }}, request, &status),
            ErrorCode::ProtocolFailure);
  EXPECT_EQ(traces_.lines().size(), 1u);
}

}  // namespace

// An answer is whole, or it is a failure.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/support/temporary_directory.h"

namespace {

using du::http::ErrorCode;
using vtdirect_test::Asking;
using vtdirect_test::Fetch;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

class WholeAnswer : public testing::Test {
 protected:
  WholeAnswer() { vtdirect_test::UseShortLimits(); }

  /// The answer with these header lines and five bytes, after which the connection closes.
  static Fetched FetchWith(const std::string& lines, const std::string& body = "bytes") {
    ScriptedServer server([&](Peer& peer, WireRequest&) {
      peer.Send("HTTP/1.1 200 OK\r\n" + lines + "\r\n" + body);
      peer.Close();
    });
    return FetchFrom(server.Url());
  }
};

TEST_F(WholeAnswer, HasOneLength) {
  EXPECT_EQ(FetchWith("Content-Length: 5\r\n").code, ErrorCode::Done);
  EXPECT_EQ(FetchWith("Content-Length: 5\r\ncontent-length:5 \r\n").code, ErrorCode::Done);
  for (const char* lines :
       {"Content-Length: 5\r\nContent-Length: 6\r\n", "Content-Length: 3\r\nContent-Length: 5\r\n",
        "Content-Length: 5, 5\r\n", "Content-Length: 5,6\r\n"}) {
    const Fetched fetched = FetchWith(lines);
    EXPECT_EQ(fetched.code, ErrorCode::ProtocolFailure) << lines;
    EXPECT_EQ(fetched.begun, 0) << lines;
  }
}

TEST_F(WholeAnswer, HasALengthThatIsADecimalNumber) {
  for (const char* length : {"five", "0x5", "+5", "-5", "5.0", "5 5", "", "5;", "9223372036854775808",
                             "100000000000000000000000"}) {
    EXPECT_EQ(FetchWith(std::string("Content-Length: ") + length + "\r\n").code, ErrorCode::ProtocolFailure)
        << length;
  }
  EXPECT_EQ(FetchWith("Content-Length: 0005\r\n").body, "bytes");
}

TEST_F(WholeAnswer, IsChunkedOrNotAndNothingElse) {
  const std::string chunks = "5\r\nbytes\r\n0\r\n\r\n";
  EXPECT_EQ(FetchWith("Transfer-Encoding: Chunked\r\n", chunks).body, "bytes");
  for (const char* coding : {"gzip", "gzip, chunked", "identity", "chunked, chunked", "chunked;q=1", ""}) {
    EXPECT_EQ(FetchWith(std::string("Transfer-Encoding: ") + coding + "\r\n", chunks).code,
              ErrorCode::ProtocolFailure)
        << coding;
  }
  EXPECT_EQ(FetchWith("Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n", chunks).code,
            ErrorCode::ProtocolFailure);
}

TEST_F(WholeAnswer, HasNoBlankInTheNameOfALineThatTellsItsEnd) {
  // One reader takes the line for what it looks like, another one for a line that it does not know.
  for (const char* lines : {"Content-Length : 3\r\n", "Content-Length\t: 5\r\n", "content-length \t:5\r\n",
                            "Transfer-Encoding : chunked\r\n"}) {
    const Fetched fetched = FetchWith(lines);
    EXPECT_EQ(fetched.code, ErrorCode::ProtocolFailure) << lines;
    EXPECT_EQ(fetched.begun, 0) << lines;
  }
  EXPECT_EQ(FetchWith("Content-Length: 5\r\nServer : old\r\n").body, "bytes");
}

TEST_F(WholeAnswer, HasNoContinuationOfALineThatTellsItsEnd) {
  for (const char* lines : {"Content-Length: 5\r\n 0\r\n", "Content-Length: 3\r\n\t0\r\n",
                            "Transfer-Encoding: chunked\r\n , gzip\r\n"}) {
    EXPECT_EQ(FetchWith(lines).code, ErrorCode::ProtocolFailure) << lines;
  }
  EXPECT_EQ(FetchWith("Content-Length: 5\r\nServer: very\r\n old\r\n").body, "bytes");
  EXPECT_EQ(FetchWith("Server: old\r\nContent-Length: 5\r\n").body, "bytes");
}

TEST_F(WholeAnswer, IsJudgedByItsOwnLinesAndNotByThoseOfAnInterimOne) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send("HTTP/1.1 103 Early Hints\r\nLink: </a>\r\nContent-Length: 9\r\n\r\n");
    peer.Answer(200, "bytes");
  });
  EXPECT_EQ(FetchFrom(server.Url()).body, "bytes");
}

class WholeAnswerOverTls : public WholeAnswer {
 protected:
  void SetUp() override {
    if (!vtdirect_test::HaveOpenSsl()) GTEST_SKIP() << "no openssl program";
    vtdirect_test::Trust(vtdirect_test::MakeCertificate(directory_.path(), "front", "IP:127.0.0.1"));
  }
  Fetched FetchThrough(const std::string& answer, bool cuts) const {
    ScriptedServer server([&answer](Peer& peer, WireRequest&) {
      peer.Send(answer);
      peer.Close();
    });
    vtdirect_test::TlsDemand demand;
    demand.cuts = cuts;
    const vtdirect_test::TlsFront front(directory_.path(), "front", server.port(), demand);
    return FetchFrom(front.Url());
  }
  vtdirect_test::TemporaryDirectory directory_;
};

TEST_F(WholeAnswerOverTls, WithoutALengthEndsWithTheCloseOfTls) {
  const std::string answer = "HTTP/1.1 200 OK\r\n\r\nbytes";
  EXPECT_EQ(FetchThrough(answer, false).body, "bytes");
  EXPECT_EQ(FetchThrough(answer, true).code, ErrorCode::ProtocolFailure);
}

TEST_F(WholeAnswerOverTls, WithALengthNeedsNoClose) {
  EXPECT_EQ(FetchThrough("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nbytes", true).body, "bytes");
  EXPECT_EQ(FetchThrough("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nbytes", true).code,
            ErrorCode::ProtocolFailure);
}

TEST_F(WholeAnswerOverTls, IsNotClosedByTheConnectionBefore) {
  // The kept connection is closed just as the request goes out over it, which is then repeated.
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    if (request.target == "/first") return peer.Answer(200, "first");
    if (request.connection > 1) peer.Send("HTTP/1.1 200 OK\r\n\r\nhal");
    peer.Close();
  });
  vtdirect_test::TlsDemand demand;
  demand.cuts = true;
  demand.uncut = 1;
  const vtdirect_test::TlsFront front(directory_.path(), "front", server.port(), demand);
  const auto connection = vtdirect_test::Connect(front.Url());
  Asking asking;
  asking.uri = "/first";
  EXPECT_EQ(Fetch(*connection, asking).body, "first");
  asking.uri = "/second";
  EXPECT_EQ(Fetch(*connection, asking).code, ErrorCode::ProtocolFailure);
  EXPECT_EQ(front.connections(), 2);
}

TEST_F(WholeAnswerOverTls, NeedsNoConnectionThatHasBeenClosed) {
  // The close of TLS waits on the kept connection. The one that is taken in its place is not kept.
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.Answer(200, request.target, request.connection == 2 ? "Connection: close\r\n" : "");
    if (request.connection < 3) peer.Close();
  });
  const vtdirect_test::TlsFront front(directory_.path(), "front", server.port());
  const auto connection = vtdirect_test::Connect(front.Url());
  Asking asking;
  for (int i = 1; i <= 2; ++i) {
    EXPECT_EQ(Fetch(*connection, asking).body, "/");
    EXPECT_TRUE(vtdirect_test::ComesTrue([&] { return front.ended() == i; }));
  }
  const std::string body = "create me";
  asking.method = du::http::Method::Post;
  asking.body = &body;
  EXPECT_EQ(Fetch(*connection, asking).body, "/");
  EXPECT_EQ(server.requests().size(), 3u);
  EXPECT_EQ(front.connections(), 3);
}

class PlainContent : public WholeAnswer {
 protected:
  static Fetched FetchCoded(int status, const std::string& coding, const std::string& headers = "") {
    ScriptedServer server([&](Peer& peer, WireRequest&) {
      peer.Answer(status, "packed", "Content-Encoding: " + coding + "\r\n");
    });
    Asking asking;
    asking.headers = headers;
    return FetchFrom(server.Url(), asking);
  }
};

TEST_F(PlainContent, IsAskedForAsItIs) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "bytes"); });
  FetchFrom(server.Url());
  EXPECT_EQ(server.requests().at(0).Header("Accept-Encoding"), "identity");
}

TEST_F(PlainContent, ThatComesCodedAllTheSameIsAFailure) {
  for (const char* coding :
       {"gzip", "GZip", "br", "identity, gzip", "gzip;level=9", "exi", "aes128gcm", "xz"}) {
    const Fetched fetched = FetchCoded(200, coding);
    EXPECT_EQ(fetched.code, ErrorCode::ProtocolFailure) << coding;
    EXPECT_EQ(fetched.begun, 0) << coding;
  }
  for (const char* none : {"identity", "utf-8", "binary"})
    EXPECT_EQ(FetchCoded(200, none).body, "packed") << none;
}

TEST_F(PlainContent, ThatIsRefusedKeepsItsStatus) {
  const Fetched fetched = FetchCoded(404, "gzip");
  EXPECT_EQ(fetched.code, ErrorCode::Done);
  EXPECT_EQ(fetched.status, 404);
}

TEST_F(PlainContent, IsLeftToACallerThatNamesItsCodings) {
  EXPECT_EQ(FetchCoded(200, "br", "Accept-Encoding: br").body, "packed");
}

TEST_F(WholeAnswerOverTls, IsNeverTheOneThatNobodyAskedFor) {
  const std::string evil = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nEVIL!";
  const std::string chunks = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nfirst\r\n0\r\n\r\n";
  for (const std::string& first : {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nfirst" + evil, chunks + evil,
                                   "HTTP/1.1 204 No Content\r\n\r\n" + evil}) {
    ScriptedServer server([&](Peer& peer, WireRequest& request) {
      if (request.target != "/first") return peer.Answer(200, "right");
      peer.Send(first);
      peer.Send(evil);
    });
    const vtdirect_test::TlsFront front(directory_.path(), "front", server.port());
    const auto connection = vtdirect_test::Connect(front.Url());
    Asking asking;
    asking.uri = "/first";
    EXPECT_EQ(Fetch(*connection, asking).code, ErrorCode::Done);
    // All of it is there, or the client has closed the connection already.
    EXPECT_TRUE(vtdirect_test::ComesTrue(
        [&] { return front.passed() == first.size() + evil.size() || front.ended() == 1; }));
    EXPECT_EQ(Fetch(*connection).body, "right");
  }
}

/// What a server sends without being asked.
class UnaskedAnswer : public WholeAnswer {
 protected:
  static constexpr const char* evil = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nEVIL!";

  /// What the request gets that comes on the same connection as one that was answered with `first` and more.
  static void Expect(const std::string& first, bool atOnce) {
    std::atomic<int> asked{0};
    std::atomic<bool> sent{false};
    ScriptedServer server([&](Peer& peer, WireRequest& request) {
      ++asked;
      if (request.target != "/first") return peer.Answer(200, "right");
      if (!atOnce) peer.Send(first);
      peer.Send((atOnce ? first : std::string()) + evil);
      peer.Send(evil);
      sent = true;
    });
    const auto connection = vtdirect_test::Connect(server.Url());
    Asking asking;
    asking.uri = "/first";
    EXPECT_EQ(Fetch(*connection, asking).code, ErrorCode::Done);
    EXPECT_TRUE(vtdirect_test::ComesTrue([&sent] { return sent.load(); }));
    EXPECT_EQ(Fetch(*connection).body, "right");
    EXPECT_EQ(asked, 2);
  }
};

TEST_F(UnaskedAnswer, IsNeverThatOfTheNextRequest) {
  for (const bool atOnce : {false, true}) {
    Expect("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nfirst", atOnce);
    Expect("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nfirst\r\n0\r\n\r\n", atOnce);
    Expect("HTTP/1.1 204 No Content\r\n\r\n", atOnce);
    Expect("HTTP/1.1 304 Not Modified\r\n\r\n", atOnce);
  }
}

// Whichever connection the second request takes, and whether that is kept, the first one is gone.
TEST_F(UnaskedAnswer, IsNotThatOfALaterRequestEither) {
  for (const char* second :
       {"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 5\r\n\r\nright",
        "HTTP/1.1 200 OK\r\n\r\nright", "HTTP/1.0 200 OK\r\nContent-Length: 5\r\n\r\nright"}) {
    std::atomic<bool> sent{false};
    ScriptedServer server([&](Peer& peer, WireRequest& request) {
      if (request.target == "/first") {
        peer.Answer(200, "first");
        peer.Send(evil);
        sent = true;
      } else if (request.target == "/second") {
        peer.Send(second);
        peer.Close();
      } else {
        peer.Answer(200, "third");
      }
    });
    const auto connection = vtdirect_test::Connect(server.Url());
    Asking asking;
    asking.uri = "/first";
    EXPECT_EQ(Fetch(*connection, asking).body, "first");
    EXPECT_TRUE(vtdirect_test::ComesTrue([&sent] { return sent.load(); }));
    asking.uri = "/second";
    EXPECT_EQ(Fetch(*connection, asking).body, "right");
    EXPECT_TRUE(vtdirect_test::ComesTrue([&server] { return server.openConnections() == 0; }));
    asking.uri = "/third";
    EXPECT_EQ(Fetch(*connection, asking).body, "third");
    EXPECT_EQ(server.connections(), 3);
  }
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/unused_port.h"

namespace {

using du::http::ErrorCode;
using du::http::Method;
using testing::IsEmpty;
using vtdirect_test::Asking;
using vtdirect_test::Connect;
using vtdirect_test::Fetch;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

/// Every test ends within seconds and leaves no temporary file.
class Failure : public testing::Test {
 protected:
  Failure() { vtdirect_test::UseShortLimits(); }
  void TearDown() override {
    EXPECT_THAT(directory_.Entries(), IsEmpty());
    EXPECT_LT(std::chrono::steady_clock::now() - begin_, std::chrono::seconds(10));
  }
  /// A download through the sink that holds a long body in a temporary file.
  static ErrorCode FetchToFailover(const std::string& url, int* status) {
    du::http::BufferFileSource headers(nullptr, 0);
    du::http::FailoverFileSink sink(16);
    const du::http::Request request{Method::Get, "/", &headers, nullptr, nullptr, &sink};
    return du::http::DoRequestWithCommonAuth(*Connect(url), {nullptr, {}}, request, status);
  }
  static ErrorCode Download(const std::string& url, du::http::FileSink& sink) {
    du::http::BufferFileSource headers(nullptr, 0);
    const du::http::Request request{Method::Get, "/", &headers, nullptr, nullptr, &sink};
    int status = -77;
    const ErrorCode code = du::http::DoRequestWithCommonAuth(*Connect(url), {nullptr, {}}, request, &status);
    EXPECT_EQ(status, -77);
    return code;
  }

  vtdirect_test::TemporaryDirectory directory_;

 private:
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

void ExpectFailure(const Fetched& fetched, ErrorCode code) {
  EXPECT_EQ(fetched.code, code);
  EXPECT_EQ(fetched.status, -77);
  EXPECT_EQ(fetched.finished, 0);
}

TEST_F(Failure, NoConnectionForAnUnusableUrl) {
  EXPECT_EQ(du::http::ConnectURI(nullptr, nullptr, nullptr), nullptr);
  for (const char* url :
       {"", "vantry.example", "ftp://host/", "file:///etc/passwd", "korvufenloom-vt://host/", "http://",
        "http:///path", "http://:80/", "http://user@/", "http://host:0/", "http://host:65536/",
        "http://host:http/", "http://host:-1/", "http://a host/", "http://ho\rst/", "http://[::1/",
        "http://[]/", "https://ho|st/"}) {
    EXPECT_EQ(du::http::ConnectURI(url, nullptr, nullptr), nullptr) << url;
  }
}

TEST_F(Failure, ConnectsToNobodyByItself) {
  for (const char* url : {"http://127.0.0.1", "HTTPS://Host.Example:8443/Vantry/", "http://[::1]:8080/?q",
                          "http://u:p@host:/"}) {
    EXPECT_NE(du::http::ConnectURI(url, nullptr, nullptr), nullptr) << url;
  }
}

TEST_F(Failure, RefusedPort) {
  ExpectFailure(FetchFrom("http://127.0.0.1:" + std::to_string(vtdirect_test::UnusedPort())),
                ErrorCode::NoConnection);
}

TEST_F(Failure, UnknownHost) {
  ExpectFailure(FetchFrom("http://no-such-host.invalid/"), ErrorCode::NoConnection);
}

TEST_F(Failure, ConnectionsOfAnotherKind) {
  class Foreign final : public du::http::Connection {
  } foreign;
  ExpectFailure(Fetch(foreign), ErrorCode::NoConnection);
}

TEST_F(Failure, ServerThatNeverAnswers) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.StaySilent(); });
  ExpectFailure(FetchFrom(server.Url()), ErrorCode::TimedOut);
}

TEST_F(Failure, ServerThatStallsInItsHeader) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send("HTTP/1.1 200 OK\r\nContent-Le");
    peer.StaySilent();
  });
  ExpectFailure(FetchFrom(server.Url()), ErrorCode::TimedOut);
}

TEST_F(Failure, ServerThatStallsInItsBody) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + std::string(500, 'x'));
    peer.StaySilent();
  });
  ExpectFailure(FetchFrom(server.Url()), ErrorCode::TimedOut);
  int status = -77;
  EXPECT_EQ(FetchToFailover(server.Url(), &status), ErrorCode::TimedOut);
}

TEST_F(Failure, ServerThatStopsReadingABody) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.ReadBytes(1000);
    while (!peer.closed()) std::this_thread::sleep_for(std::chrono::seconds(4)), peer.Close();
  });
  const std::string body(30'000'000, 'b');
  Asking asking;
  asking.method = Method::Post;
  asking.body = &body;
  ExpectFailure(FetchFrom(server.Url(), asking), ErrorCode::TimedOut);
}

TEST_F(Failure, ASlowAnswerIsNoStall) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\n");
    for (const char* byte : {"d", "r", "i", "p", "e", "d"}) {
      std::this_thread::sleep_for(std::chrono::milliseconds(400));
      peer.Send(byte);
    }
  });
  EXPECT_EQ(FetchFrom(server.Url()).body, "driped");
}

TEST_F(Failure, BodyCutShort) {
  for (const bool reset : {false, true}) {
    ScriptedServer server([reset](Peer& peer, WireRequest&) {
      peer.Send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + std::string(999, 'x'));
      reset ? peer.Reset() : peer.Close();
    });
    ExpectFailure(FetchFrom(server.Url()), ErrorCode::ProtocolFailure);
    int status = -77;
    EXPECT_EQ(FetchToFailover(server.Url(), &status), ErrorCode::ProtocolFailure);
    EXPECT_EQ(status, -77);
  }
}

TEST_F(Failure, ChunksThatBreakOff) {
  for (const char* chunks : {"", "5\r\nfiv", "5\r\nfive!\r\n", "5\r\nfive!\r\n0\r\n", "5\r\nfive!",
                             "zz\r\nwhat\r\n", "5\r\nfive!no line end\r\n0\r\n\r\n"}) {
    ScriptedServer server([chunks](Peer& peer, WireRequest&) {
      peer.Send(std::string("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n") + chunks);
      peer.Close();
    });
    ExpectFailure(FetchFrom(server.Url()), ErrorCode::ProtocolFailure);
  }
}

TEST_F(Failure, ServerThatClosesWithoutAWord) {
  for (const bool reset : {false, true}) {
    ScriptedServer server([reset](Peer& peer, WireRequest&) { reset ? peer.Reset() : peer.Close(); });
    ExpectFailure(FetchFrom(server.Url()), ErrorCode::ProtocolFailure);
  }
}

TEST_F(Failure, WhateverIsNotHttp) {
  for (const char* answer :
       {"SSH-2.0-Garbage\r\n\r\n", "just text", "<html>an old server's page</html>", "HTTP/1.1 abc\r\n\r\n",
        "HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\n",
        "HTTP/1.1 200 OK\r\nX-Half: ", "HTTP/1.1 100 Continue\r\n\r\n", "\0\0\0\0\0\0\0\0"}) {
    ScriptedServer server([answer](Peer& peer, WireRequest&) {
      peer.Send(answer);
      peer.Close();
    });
    const Fetched fetched = FetchFrom(server.Url());
    EXPECT_EQ(fetched.code, ErrorCode::ProtocolFailure) << answer;
    EXPECT_EQ(fetched.status, -77) << answer;
  }
}

// curl takes every line that begins as a status line does for one of an answer, and hands on what follows.
TEST_F(Failure, WhatFollowsAStatusLineWithoutAStatusReachesNobody) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send("HTTP/garbage\r\n\r\nbody");
    peer.Close();
  });
  const Fetched fetched = FetchFrom(server.Url());
  ExpectFailure(fetched, ErrorCode::ProtocolFailure);
  EXPECT_EQ(fetched.begun, 0);
}

// It continues nothing, and curl would join it to what it has kept of the answer before.
TEST_F(Failure, ContinuationLineRightBehindTheStatusLine) {
  // curl takes the third for a status line as well, and the last head comes after an interim one.
  for (const char* start :
       {"HTTP/1.1 200 OK\r\n X: y", "HTTP/1.1 200 OK\r\n\tX: y", "HtTP/1.1 200 OK\r\n X: y",
        "HTTP/1.1 103 Early Hints\r\n\r\nhttp/1.1 200 OK\r\n X: y"}) {
    ScriptedServer server([start](Peer& peer, WireRequest& request) {
      const std::string head = request.target == "/folded" ? start : "HTTP/1.1 200 OK\r\nX: y";
      peer.Send(head + "\r\nContent-Length: 0\r\n\r\n");
    });
    const auto connection = Connect(server.Url());
    EXPECT_EQ(Fetch(*connection).code, ErrorCode::Done);
    Asking folded;
    folded.uri = "/folded";
    ExpectFailure(Fetch(*connection, folded), ErrorCode::ProtocolFailure);
    EXPECT_EQ(Fetch(*connection).code, ErrorCode::Done);
  }
}

TEST_F(Failure, ContinuationLineOfAHeaderLineIsPartOfIt) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send("HTTP/1.1 200 OK\r\nX: y\r\n z\r\nContent-Length: 0\r\n\r\n");
  });
  const auto connection = Connect(server.Url());
  for (int exchange = 0; exchange < 2; ++exchange) EXPECT_EQ(Fetch(*connection).code, ErrorCode::Done);
}

TEST_F(Failure, HeaderWithoutEnd) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send("HTTP/1.1 200 OK\r\n");
    for (int i = 0; i < 20'000; ++i) peer.Send("X-More: of what never ends\r\n");
    peer.StaySilent();
  });
  ExpectFailure(FetchFrom(server.Url()), ErrorCode::ProtocolFailure);
}

TEST_F(Failure, InterimAnswersWithoutEnd) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    for (int i = 0; i < 20'000; ++i) peer.Send("HTTP/1.1 102 Processing\r\n\r\n");
    peer.StaySilent();
  });
  ExpectFailure(FetchFrom(server.Url()), ErrorCode::ProtocolFailure);
}

TEST_F(Failure, MethodThatNobodyKnows) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, ""); });
  Asking asking;
  asking.method = static_cast<Method>(3);
  ExpectFailure(FetchFrom(server.Url(), asking), ErrorCode::ProtocolFailure);
  EXPECT_EQ(server.connections(), 0);
}

TEST_F(Failure, FullDisk) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, std::string(100'000, 'x')); });
  du::http::DiskFileSink sink("/dev/full");
  EXPECT_EQ(Download(server.Url(), sink), ErrorCode::LocalFileFailure);
}

TEST_F(Failure, TargetThatCannotBeWritten) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "content"); });
  for (const std::string& target : {directory_.path(), directory_.File("missing/file"), std::string()}) {
    du::http::DiskFileSink sink(target.c_str());
    EXPECT_EQ(Download(server.Url(), sink), ErrorCode::LocalFileFailure) << target;
  }
}

TEST_F(Failure, TemporaryDirectoryThatIsMissing) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, std::string(100, 'x')); });
  setenv("TMPDIR", directory_.File("missing").c_str(), 1);
  int status = -77;
  EXPECT_EQ(FetchToFailover(server.Url(), &status), ErrorCode::LocalFileFailure);
}

TEST_F(Failure, AnswerThatNeverCameLeavesTheTargetAlone) {
  const std::string target = directory_.File("kept");
  vtdirect_test::WriteFile(target, "older content");
  du::http::DiskFileSink sink(target.c_str());
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Close(); });
  EXPECT_EQ(Download(server.Url(), sink), ErrorCode::ProtocolFailure);
  EXPECT_EQ(vtdirect_test::ReadFile(target), "older content");
  std::remove(target.c_str());
}

TEST_F(Failure, DownloadCancelledByItsProgress) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, std::string(3'000'000, 'x')); });
  std::vector<std::pair<std::size_t, std::size_t>> reports;
  du::http::ProgressSink sink(
      [&reports](std::size_t done, std::size_t total) {
        reports.emplace_back(done, total);
        return reports.size() < 3;
      },
      nullptr);
  EXPECT_EQ(Download(server.Url(), sink), ErrorCode::Cancelled);
  EXPECT_EQ(reports.size(), 3u);
  EXPECT_EQ(reports.back().second, 3'000'000u);
}

ErrorCode Upload(const std::string& url, du::http::FileSource& body) {
  du::http::BufferFileSource headers(nullptr, 0);
  const du::http::Request request{Method::Post, "/", &headers, &body, nullptr, nullptr};
  int status = -77;
  const ErrorCode code = du::http::DoRequestWithCommonAuth(*Connect(url), {nullptr, {}}, request, &status);
  EXPECT_EQ(status, -77);
  return code;
}

void AnswerBehindBody(Peer& peer, WireRequest& request) {
  peer.ReadBody(&request);
  peer.Answer(200, "");
}

TEST_F(Failure, UploadCancelledByItsProgress) {
  ScriptedServer server(AnswerBehindBody);
  const std::string content(3'000'000, 'u');
  du::http::BufferFileSource inner(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
  int reports = 0;
  du::http::ProgressSource body(inner, [&reports](std::size_t, std::size_t) { return ++reports < 3; });
  EXPECT_EQ(Upload(server.Url(), body), ErrorCode::Cancelled);
  EXPECT_EQ(reports, 3);
}

TEST_F(Failure, BodyThatCannotBeRead) {
  ScriptedServer server(AnswerBehindBody);
  for (const std::string& path : {directory_.File("missing"), directory_.path(), std::string()}) {
    du::http::DiskFileSource body(path.c_str());
    EXPECT_EQ(Upload(server.Url(), body), ErrorCode::LocalFileFailure) << path;
  }
}

TEST_F(Failure, BodyThatEndsBeforeItsLength) {
  class Liar final : public du::http::FileSource {
   public:
    std::optional<std::uint64_t> Size() override { return 10; }
    ErrorCode Read(std::uint8_t* buffer, std::size_t, std::size_t* count) override {
      *count = std::exchange(left_, 0);
      std::fill_n(buffer, *count, 'x');
      return ErrorCode::Done;
    }
    bool Rewind() override { return true; }

   private:
    std::size_t left_ = 4;
  } body;
  ScriptedServer server(AnswerBehindBody);
  EXPECT_EQ(Upload(server.Url(), body), ErrorCode::LocalFileFailure);
}

TEST_F(Failure, HeadersThatCannotBeRead) {
  ScriptedServer server(AnswerBehindBody);
  du::http::DiskFileSource headers(directory_.File("missing").c_str());
  const du::http::Request request{Method::Get, "/", &headers, nullptr, nullptr, nullptr};
  int status = -77;
  EXPECT_EQ(du::http::DoRequestWithCommonAuth(*Connect(server.Url()), {nullptr, {}}, request, &status),
            ErrorCode::LocalFileFailure);
  EXPECT_EQ(server.connections(), 0);
}

TEST_F(Failure, ExceptionOfAProgressFunctionReachesTheCaller) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "content"); });
  du::http::BufferFileSource headers(nullptr, 0);
  du::http::ProgressSink sink([](std::size_t, std::size_t) -> bool { throw std::runtime_error("host"); },
                              nullptr);
  const du::http::Request request{Method::Get, "/", &headers, nullptr, nullptr, &sink};
  const auto connection = Connect(server.Url());
  int status = -77;
  EXPECT_THROW(
      static_cast<void>(du::http::DoRequestWithCommonAuth(*connection, {nullptr, {}}, request, &status)),
      std::runtime_error);
  EXPECT_EQ(Fetch(*connection).body, "content");
}

TEST_F(Failure, ConnectionServesOnBehindAFailure) {
  std::atomic<int> asked{0};
  ScriptedServer server([&asked](Peer& peer, WireRequest&) {
    if (++asked == 1) return peer.Close();
    peer.Answer(200, "fine");
  });
  const auto connection = Connect(server.Url());
  EXPECT_EQ(Fetch(*connection).code, ErrorCode::ProtocolFailure);
  EXPECT_EQ(Fetch(*connection).body, "fine");
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/support/temporary_directory.h"

namespace {

using du::http::ErrorCode;
using vtdirect_test::Asking;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

/// A sink that notes what was announced and counts what came.
class Announcements final : public du::http::FileSink {
 public:
  ErrorCode Begin(int, std::optional<std::uint64_t> expectedLength) override {
    announced = expectedLength;
    return ErrorCode::Done;
  }
  ErrorCode Write(const std::uint8_t*, std::size_t count) override {
    bytes += count;
    return ErrorCode::Done;
  }
  ErrorCode Finish() override { return ErrorCode::Done; }
  std::optional<std::uint64_t> announced;
  std::size_t bytes = 0;
};

class Compression : public testing::Test {
 protected:
  Compression() { vtdirect_test::UseShortLimits(); }
  static Asking Accepting(const std::string& lines) {
    Asking asking;
    asking.headers = lines;
    return asking;
  }
  /// The text as the gzip program packs it.
  std::string Gzip(const std::string& text) const {
    vtdirect_test::WriteFile(directory_.File("text"), text);
    const std::string command =
        "gzip -9 -n -c '" + directory_.File("text") + "' > '" + directory_.File("packed") + "'";
    if (system(command.c_str()) != 0) throw std::runtime_error("gzip failed");
    return vtdirect_test::ReadFile(directory_.File("packed"));
  }
  static ErrorCode FetchInto(const std::string& url, du::http::FileSink& sink) {
    static const std::string lines = "Accept: application/json";
    du::http::BufferFileSource headers(reinterpret_cast<const std::uint8_t*>(lines.data()), lines.size());
    const du::http::Request request{du::http::Method::Get, "/", &headers, nullptr, nullptr, &sink};
    return du::http::DoRequestWithCommonAuth(*vtdirect_test::Connect(url), {nullptr, {}}, request, nullptr);
  }
  vtdirect_test::TemporaryDirectory directory_;
};

ScriptedServer::Script Sending(const std::string& body, const std::string& encoding) {
  return [body, encoding](Peer& peer, WireRequest&) {
    peer.Answer(200, body, encoding.empty() ? "" : "Content-Encoding: " + encoding + "\r\n");
  };
}

TEST_F(Compression, IsAskedForWhereJsonOrXmlIsAccepted) {
  ScriptedServer server(Sending("", ""));
  for (const char* lines : {"Accept: application/json", "ACCEPT: text/html, application/xml;q=0.9",
                            "X-Nonce: 1\r\nAccept: application/vnd.vault+JSON"}) {
    FetchFrom(server.Url(), Accepting(lines));
    EXPECT_EQ(server.requests().back().Header("Accept-Encoding"), "gzip, deflate") << lines;
  }
}

TEST_F(Compression, IsNotAskedForWhereAContentIsWanted) {
  ScriptedServer server(Sending("", ""));
  for (const char* lines :
       {"", "Accept: */*", "Accept: application/octet-stream", "Content-Type: application/json",
        "Accept: application/json\r\nAccept-Encoding: identity", "Accept: text/xml\r\nRange: bytes=0-9"}) {
    FetchFrom(server.Url(), Accepting(lines));
    EXPECT_THAT(server.requests().back().Header("Accept-Encoding"), testing::Not(testing::HasSubstr("gzip")))
        << lines;
  }
}

TEST_F(Compression, IsNotAskedForWhenItIsTurnedOff) {
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.compressedAnswers = false;
  du::http::SetTransportSettings(settings);
  ScriptedServer server(Sending("", ""));
  FetchFrom(server.Url(), Accepting("Accept: application/json"));
  EXPECT_EQ(server.requests().at(0).Header("Accept-Encoding"), "(none)");
}

TEST_F(Compression, IsNotAskedForByARequestAfterOneThatDid) {
  ScriptedServer server(Sending("", ""));
  FetchFrom(server.Url(), Accepting("Accept: application/json"));
  FetchFrom(server.Url());
  EXPECT_EQ(server.connections(), 1);
  EXPECT_EQ(server.requests().at(1).Header("Accept-Encoding"), "identity");
}

TEST_F(Compression, GivesTheDecodedText) {
  const std::string text(300'000, 't');
  // A zlib stream by hand: its two header bytes, one stored block of "abc", and the Adler-32 sum of it.
  const std::string zlib(
      "\x78\x01\x01\x03\x00\xFC\xFF"
      "abc"
      "\x02\x4D\x01\x27",
      14);
  ScriptedServer gzip(Sending(Gzip(text), "gzip"));
  ScriptedServer deflate(Sending(zlib, "deflate"));
  ScriptedServer bare(Sending(zlib.substr(2, 8), "deflate"));
  EXPECT_EQ(FetchFrom(bare.Url(), Accepting("Accept: application/json")).body, "abc");
  EXPECT_TRUE(FetchFrom(gzip.Url(), Accepting("Accept: application/json")).body == text);
  EXPECT_EQ(FetchFrom(deflate.Url(), Accepting("Accept: application/json")).body, "abc");
}

TEST_F(Compression, AnnouncesNoLengthForWhatIsPackedAndTheLengthOfWhatIsNot) {
  ScriptedServer packed(Sending(Gzip(std::string(5000, 't')), "gzip"));
  ScriptedServer plain(Sending("twelve bytes", ""));
  Announcements ofPacked;
  EXPECT_EQ(FetchInto(packed.Url(), ofPacked), ErrorCode::Done);
  EXPECT_EQ(ofPacked.announced, std::nullopt);
  EXPECT_EQ(ofPacked.bytes, 5000u);
  Announcements ofPlain;
  EXPECT_EQ(FetchInto(plain.Url(), ofPlain), ErrorCode::Done);
  EXPECT_EQ(ofPlain.announced, 12u);
}

TEST_F(Compression, MakesLimitsAndProgressCountWhatIsDecoded) {
  const std::string bomb = Gzip(std::string(50'000'000, '\0'));
  ASSERT_LT(bomb.size(), 100'000u);
  ScriptedServer server(Sending(bomb, "gzip"));
  std::string kept;
  du::http::StringFileSink limited(kept, 1000);
  EXPECT_EQ(FetchInto(server.Url(), limited), ErrorCode::Done);
  EXPECT_EQ(kept.size(), 1000u);

  std::size_t most = 0;
  du::http::ProgressSink progress(
      [&most](std::size_t done, std::size_t total) {
        EXPECT_EQ(total, 0u);
        most = done;
        return done < 1'000'000;
      },
      nullptr);
  EXPECT_EQ(FetchInto(server.Url(), progress), ErrorCode::Cancelled);
  EXPECT_GE(most, 1'000'000u);
  EXPECT_LT(most, 2'000'000u);
}

TEST_F(Compression, OfABrokenAnswerIsAFailure) {
  std::string packed = Gzip(std::string(100'000, 't') + "end");
  std::string bent = packed;
  bent[packed.size() / 2] = static_cast<char>(~bent[packed.size() / 2]);
  const std::string cut = packed.substr(0, packed.size() / 2);
  for (const std::string& body : {bent, cut, packed.substr(0, packed.size() - 1), packed.substr(0, 1),
                                  packed + "more", std::string("{\"no\": \"gzip\"}")}) {
    ScriptedServer server(Sending(body, "gzip"));
    const Fetched fetched = FetchFrom(server.Url(), Accepting("Accept: application/json"));
    EXPECT_EQ(fetched.code, ErrorCode::ProtocolFailure) << body.size();
    EXPECT_EQ(fetched.status, -77);
  }
}

TEST_F(Compression, OfAnAnswerMayComeInPiecesAndInSeveralParts) {
  const std::string packed = Gzip("one, ") + Gzip("two");
  ScriptedServer server([&packed](Peer& peer, WireRequest&) {
    peer.Send("HTTP/1.1 200 OK\r\nContent-Encoding: GZip\r\nTransfer-Encoding: chunked\r\n\r\n");
    for (const char byte : packed) peer.Send("1\r\n" + std::string(1, byte) + "\r\n");
    peer.Send("0\r\n\r\n");
  });
  EXPECT_EQ(FetchFrom(server.Url(), Accepting("Accept: application/json")).body, "one, two");
}

TEST_F(Compression, OfAnEmptyAnswerIsAnEmptyAnswer) {
  ScriptedServer server(Sending("", "gzip"));
  const Fetched fetched = FetchFrom(server.Url(), Accepting("Accept: application/json"));
  EXPECT_EQ(fetched.status, 200);
  EXPECT_EQ(fetched.body, "");
}

TEST_F(Compression, InAFormThatNobodyAskedForPassesAsItIs) {
  ScriptedServer server(Sending("strange bytes", "br"));
  EXPECT_EQ(FetchFrom(server.Url(), Accepting("Accept: application/json")).body, "strange bytes");
}

TEST_F(Compression, OfAContentIsAFailure) {
  ScriptedServer server(Sending(Gzip("a packed content"), "gzip"));
  EXPECT_EQ(FetchFrom(server.Url()).code, ErrorCode::ProtocolFailure);
}

TEST_F(Compression, OfARefusedAnswerIsDecodedTooWhenItIsHandedOnLater) {
  ScriptedServer server([packed = Gzip("who are you?")](Peer& peer, WireRequest&) {
    peer.Answer(401, packed, "Content-Encoding: gzip\r\n");
  });
  const Fetched fetched = FetchFrom(server.Url(), Accepting("Accept: application/json"));
  EXPECT_EQ(fetched.status, 401);
  EXPECT_EQ(fetched.body, "who are you?");
}

}  // namespace

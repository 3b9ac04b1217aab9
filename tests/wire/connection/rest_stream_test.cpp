#include "connection/rest_stream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using du::http::ErrorCode;
using du::http::Method;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vtdirect_test::Answer;
using vtdirect_test::TraceLine;
using Calls = std::vector<std::pair<std::size_t, std::size_t>>;

// A JSON array of one text, of exactly that many bytes.
std::string JsonOfSize(std::size_t size) {
  return "[\"" + std::string(size - 4, 'x') + "\"]";
}

class RestStreamTest : public testing::Test {
 protected:
  ~RestStreamTest() override {
    // Whatever happened, nothing is left behind.
    EXPECT_THAT(directory.Entries(), IsEmpty());
  }

  [[nodiscard]] std::unique_ptr<RestStream> Get(du::http::ProgressFunction progress = {}) {
    return std::make_unique<RestStream>(MakeGetRequest(connection, "servlet/x", nullptr),
                                        std::move(progress));
  }

  du::http::ProgressFunction Recording() {
    return [this](std::size_t done, std::size_t total) {
      calls.emplace_back(done, total);
      return true;
    };
  }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::TraceRecorder trace;
  vtdirect_test::ScriptedTransport transport;
  std::shared_ptr<HttpConnection> connection =
      std::make_shared<HttpConnection>("http://plm.example/vt", AuthFunction{});
  Calls calls;
};

static_assert(!std::is_copy_constructible_v<RestStream> && !std::is_move_constructible_v<RestStream>);
static_assert(!std::is_copy_assignable_v<RestStream> && !std::is_move_assignable_v<RestStream>);

TEST_F(RestStreamTest, HasTheLimitsThatBoundItsMemory) {
  EXPECT_EQ(RestStream::memoryLimit, 524288U);
  EXPECT_EQ(RestStream::errorLimit, 1024U);
}

TEST_F(RestStreamTest, AShortSuccessIsInMemory) {
  transport.Then(200, R"({"a":"b"})");
  const auto stream = Get();
  EXPECT_EQ(stream->status(), 200);
  EXPECT_EQ(stream->errorCode(), ErrorCode::Done);
  EXPECT_TRUE(stream->isBodyInMemory());
  EXPECT_FALSE(stream->isBodyOnDisk());
  EXPECT_EQ(stream->errorText(), "");
  EXPECT_THAT(directory.Entries(), IsEmpty());
  rapidjson::Document document;
  ASSERT_TRUE(ParseJsonResponse(*stream, document));
  EXPECT_STREQ(document["a"].GetString(), "b");
}

TEST_F(RestStreamTest, ABodyOfExactlyTheLimitIsInMemory) {
  transport.Then(200, JsonOfSize(524288));
  const auto stream = Get();
  EXPECT_TRUE(stream->isBodyInMemory());
  EXPECT_FALSE(stream->isBodyOnDisk());
  EXPECT_THAT(directory.Entries(), IsEmpty());
  rapidjson::Document document;
  ASSERT_TRUE(ParseJsonResponse(*stream, document));
  EXPECT_EQ(document[0].GetStringLength(), 524284U);
}

TEST_F(RestStreamTest, ABodyOfOneByteMoreIsOnTheDiskUntilTheStreamGoes) {
  transport.Then(200, JsonOfSize(524289));
  auto stream = Get();
  EXPECT_FALSE(stream->isBodyInMemory());
  EXPECT_TRUE(stream->isBodyOnDisk());
  ASSERT_THAT(directory.Entries(), SizeIs(1));
  EXPECT_EQ(std::filesystem::file_size(directory.File(directory.Entries().front())), 524289U);
  rapidjson::Document document;
  ASSERT_TRUE(ParseJsonResponse(*stream, document));
  EXPECT_EQ(document[0].GetStringLength(), 524285U);
  stream.reset();
  EXPECT_THAT(directory.Entries(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(RestStreamTest, ALongBodyThatIsNoJsonFailsToParseAndIsRemoved) {
  transport.Then(200, std::string(600000, '['));
  const auto stream = Get();
  rapidjson::Document document;
  EXPECT_FALSE(ParseJsonResponse(*stream, document));
  EXPECT_TRUE(document.IsNull());
}

TEST_F(RestStreamTest, A500HasNoStreamAndKeepsTheFirst1024BytesOfTheErrorPage) {
  std::string page;
  for (int line = 0; page.size() < 5000; ++line) page += "line " + std::to_string(line) + "\n";
  page.resize(5000);
  transport.Then(500, page);
  const auto stream = Get();
  EXPECT_EQ(stream->status(), 500);
  EXPECT_EQ(stream->errorCode(), ErrorCode::Done);
  EXPECT_FALSE(stream->isBodyInMemory());
  EXPECT_FALSE(stream->isBodyOnDisk());
  EXPECT_EQ(stream->errorText(), page.substr(0, 1024));
  rapidjson::Document document;
  EXPECT_FALSE(ParseJsonResponse(*stream, document));
}

TEST_F(RestStreamTest, AShortErrorPageIsKeptWhole) {
  transport.Then(404, "not here").Then(500, std::string(1024, 'e'));
  EXPECT_EQ(Get()->errorText(), "not here");
  EXPECT_EQ(Get()->errorText(), std::string(1024, 'e'));
}

TEST_F(RestStreamTest, ALongErrorPageMakesNoFile) {
  transport.Then(500, std::string(1 << 20, 'e'));
  const auto stream = Get();
  EXPECT_THAT(directory.Entries(), IsEmpty());
  EXPECT_EQ(stream->errorText().size(), 1024U);
}

TEST_F(RestStreamTest, OnlyTwoHundredTo299AreSuccess) {
  for (const int status : {199, 300, 302, 400, 401, 404, 503}) {
    transport.Then(status, "[]");
    const auto stream = Get();
    EXPECT_EQ(stream->status(), status);
    EXPECT_FALSE(stream->succeeded()) << status;
    EXPECT_FALSE(stream->isBodyInMemory()) << status;
    EXPECT_EQ(stream->errorText(), "[]") << status;
  }
  for (const int status : {200, 201, 299}) {
    transport.Then(status, "[]");
    const auto stream = Get();
    EXPECT_TRUE(stream->succeeded()) << status;
    EXPECT_TRUE(stream->isBodyInMemory()) << status;
  }
}

TEST_F(RestStreamTest, A204HasAnEmptyBodyThatDoesNotParse) {
  transport.Then(204);
  const auto stream = Get();
  EXPECT_EQ(stream->status(), 204);
  ASSERT_TRUE(stream->isBodyInMemory());
  EXPECT_EQ(stream->NextPiece(), "");
  rapidjson::Document document;
  EXPECT_FALSE(ParseJsonResponse(*stream, document));
}

TEST_F(RestStreamTest, AFailedExchangeHasStatusMinusOneAndItsCode) {
  for (const ErrorCode error : {ErrorCode::NoConnection, ErrorCode::TimedOut, ErrorCode::TlsFailure,
                                ErrorCode::TooLarge, ErrorCode::ProtocolFailure}) {
    transport.ThenFail(error);
    const auto stream = Get();
    EXPECT_EQ(stream->status(), -1);
    EXPECT_EQ(stream->errorCode(), error);
    EXPECT_FALSE(stream->isBodyInMemory());
    EXPECT_FALSE(stream->isBodyOnDisk());
  }
}

TEST_F(RestStreamTest, AFailedExchangeHasStatusMinusOneEvenWhenThePlatformTellsAnother) {
  for (const int told : {413, 200}) {
    transport.Then(Answer{told, {}, ErrorCode::TooLarge});
    const auto stream = Get();
    EXPECT_EQ(stream->status(), -1);
    EXPECT_EQ(static_cast<int>(stream->errorCode()), 5);
    EXPECT_FALSE(stream->isBodyInMemory());
  }
}

TEST_F(RestStreamTest, WithoutAConnectionTheStatusIsMinusOneAndTheCodeOne) {
  transport.RefuseConnections(1);
  connection = std::make_shared<HttpConnection>("http://plm.example/vt", AuthFunction{});
  transport.RefuseConnections(1);
  const auto stream = Get();
  EXPECT_EQ(stream->status(), -1);
  EXPECT_EQ(static_cast<int>(stream->errorCode()), 1);
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(RestStreamTest, AnExchangeThatFailsPartOfTheWayHasStatusMinusOneAndLeavesNoFile) {
  transport.Then(200, std::string(600000, 'x'));
  auto stream = Get([](std::size_t done, std::size_t) { return done <= 550000; });
  EXPECT_EQ(stream->status(), -1);
  EXPECT_EQ(stream->errorCode(), ErrorCode::Cancelled);
  EXPECT_FALSE(stream->isBodyOnDisk());
  EXPECT_FALSE(stream->isBodyInMemory());
  // The file is taken over although the request failed, and goes with the stream.
  EXPECT_THAT(directory.Entries(), SizeIs(1));
  stream.reset();
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST_F(RestStreamTest, AFileThatCannotBeOpenedGivesNoStreamAndFailsToParse) {
  Answer answer{200, JsonOfSize(600000)};
  answer.afterwards = [this] { std::filesystem::remove(directory.File(directory.Entries().front())); };
  transport.Then(answer);
  auto stream = Get();
  EXPECT_EQ(stream->status(), 200);
  EXPECT_FALSE(stream->isBodyOnDisk());
  EXPECT_FALSE(stream->isBodyInMemory());
  rapidjson::Document document;
  EXPECT_FALSE(ParseJsonResponse(*stream, document));
  EXPECT_THAT(trace.lines(), IsEmpty());
  stream.reset();
  // That the file is gone already is told to the trace and to no one else.
  ASSERT_THAT(trace.lines(), SizeIs(1));
  EXPECT_EQ(trace.lines().front().type, 3);
  EXPECT_EQ(trace.lines().front().name, "VtDirect");
  EXPECT_THAT(trace.lines().front().text, testing::MatchesRegex("Failed to unlink file " + directory.path() +
                                                                "/.*: No such file or directory"));
}

TEST_F(RestStreamTest, ALongBodyWithoutADirectoryForItIsALocalFailure) {
  std::filesystem::create_directory(directory.File("sub"));
  setenv("TMPDIR", directory.File("sub/missing").c_str(), 1);
  transport.Then(200, JsonOfSize(600000));
  const auto stream = Get();
  EXPECT_EQ(stream->status(), -1);
  EXPECT_EQ(stream->errorCode(), ErrorCode::LocalFileFailure);
  std::filesystem::remove(directory.File("sub"));
}

TEST_F(RestStreamTest, ProgressOfARequestWithoutABodyIsThatOfTheAnswer) {
  transport.Then(200, std::string(5000, ' '));
  (void)Get(Recording());
  EXPECT_THAT(calls, ElementsAre(std::pair(4099U, 5000U), std::pair(5000U, 5000U)));
}

TEST_F(RestStreamTest, ProgressOfARequestWithABodyIsThatOfTheBodyAlone) {
  const std::string file = directory.File("body");
  vtdirect_test::WriteFile(file, std::string(1000, 'b'));
  transport.Then(200, std::string(5000, ' '));
  const RestStream stream(
      MakeRestRequest(connection, Method::Post, "servlet/x", file.c_str(), nullptr, nullptr), Recording());
  EXPECT_THAT(calls, ElementsAre(std::pair(777U, 1000U), std::pair(1000U, 1000U)));
  EXPECT_EQ(transport.requests().front().body, std::string(1000, 'b'));
  std::filesystem::remove(file);
}

TEST_F(RestStreamTest, AnEmptyBodyFileNameIsNoBody) {
  transport.Then(200, "1234");
  const RestStream stream(MakeRestRequest(connection, Method::Post, "servlet/x", "", nullptr, nullptr),
                          Recording());
  EXPECT_EQ(transport.requests().front().body, std::nullopt);
  // And so progress is told about the answer.
  EXPECT_THAT(calls, ElementsAre(std::pair(4U, 4U)));
}

TEST_F(RestStreamTest, AnEmptyBodyFileIsABodyOfNoBytes) {
  const std::string file = directory.File("body");
  vtdirect_test::WriteFile(file, "");
  transport.Then(200);
  const RestStream stream(
      MakeRestRequest(connection, Method::Post, "servlet/x", file.c_str(), nullptr, nullptr), {});
  EXPECT_EQ(transport.requests().front().body, "");
  std::filesystem::remove(file);
}

// The number led the parser out of a table of its own, and the host with it.
TEST_F(RestStreamTest, ANumberWhoseExponentOverflowsIsZero) {
  const std::string number = R"({"n":1.11111111111111111111e-2147483639})";
  transport.Then(200, number).Then(200, number + std::string(600000, ' '));
  for (int answer = 0; answer < 2; ++answer) {
    rapidjson::Document document;
    ASSERT_TRUE(ParseJsonResponse(*Get(), document));
    EXPECT_EQ(document["n"].GetDouble(), 0);
  }
}

// Of a file it is read in pieces of 65536 bytes, wherever that cuts it.
TEST_F(RestStreamTest, ALongBodyIsReadWhateverItsPiecesCut) {
  constexpr std::size_t pieceSize = 65536;
  const std::string token = R"("a\u00e4\uD83D\uDE00\uDC00b",-1.5e-1,true,)";
  for (std::size_t shift = 0; shift < token.size(); ++shift) {
    std::string text = "[" + std::string(pieceSize - 1 - shift, ' ') + token;
    text.append(std::string(500000, ' ')).append("7]");
    transport.Then(200, text);
    const auto stream = Get();
    ASSERT_TRUE(stream->isBodyOnDisk());
    rapidjson::Document document;
    ASSERT_TRUE(ParseJsonResponse(*stream, document)) << shift;
    ASSERT_EQ(document.Size(), 4U) << shift;
    EXPECT_STREQ(document[0].GetString(),
                 "a\xC3\xA4\xF0\x9F\x98\x80\xED\xB0\x80"
                 "b")
        << shift;
    EXPECT_EQ(document[1].GetDouble(), -0.15) << shift;
    EXPECT_TRUE(document[2].GetBool()) << shift;
  }
}

TEST_F(RestStreamTest, AParseStartsWithAFreshDocument) {
  transport.Then(200, "{}").Then(200, "{");
  rapidjson::Document document;
  ASSERT_TRUE(ParseJsonResponse(*Get(), document));
  EXPECT_FALSE(ParseJsonResponse(*Get(), document));
  EXPECT_TRUE(document.IsNull());
}

TEST_F(RestStreamTest, ABodyComesInPiecesAndOnceMoreAfterRewinding) {
  const std::string text(600000, 'x');
  transport.Then(200, "1234").Then(200, text);
  const auto inMemory = Get();
  const auto onDisk = Get();
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(inMemory->NextPiece(), "1234");
    EXPECT_EQ(inMemory->NextPiece(), "");
    std::string pieces;
    for (auto piece = onDisk->NextPiece(); !piece.empty(); piece = onDisk->NextPiece()) {
      EXPECT_LE(piece.size(), 65536U);
      pieces += piece;
    }
    EXPECT_EQ(pieces, text);
    EXPECT_EQ(onDisk->NextPiece(), "");
    inMemory->Rewind();
    onDisk->Rewind();
  }
}

TEST_F(RestStreamTest, ABodyIsReadOnce) {
  transport.Then(200, "[1]");
  const auto stream = Get();
  rapidjson::Document document;
  EXPECT_TRUE(ParseJsonResponse(*stream, document));
  EXPECT_FALSE(ParseJsonResponse(*stream, document));
}

}  // namespace

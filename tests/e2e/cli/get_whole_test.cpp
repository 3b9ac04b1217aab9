#include <gmock/gmock.h>

#include <atomic>
#include <cstdio>
#include <functional>

#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/cli/vtdirect_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace vtdirect_test {

/// What a proxy or a dying server makes of a content.
struct Spoiling {
  const char* name;
  /// The answer, of the content.
  std::function<std::string(const std::string& content)> answer;
};

std::string Half(const std::string& content) {
  return content.substr(0, content.size() / 2);
}

std::string AnswerWith(const std::string& lines, const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n" + lines + "\r\n" + body;
}

std::string LengthLine(std::size_t length) {
  return "Content-Length: " + std::to_string(length) + "\r\n";
}

/// A download of a content that did not come as it is on the server.
class SpoiltDownload : public VtDirect, public testing::WithParamInterface<Spoiling> {};

INSTANTIATE_TEST_SUITE_P(
    Of, SpoiltDownload,
    testing::Values(
        Spoiling{"ABodyWithoutALengthThatIsCut",
                 [](const auto& content) { return AnswerWith("", Half(content)); }},
        Spoiling{"AProxyThatTakesTheEndOfADyingServerForTheEnd",
                 [](const auto& content) {
                   char size[20];
                   std::snprintf(size, sizeof size, "%zx", content.size() / 2);
                   return AnswerWith("Transfer-Encoding: chunked\r\n",
                                     std::string(size) + "\r\n" + Half(content) + "\r\n0\r\n\r\n");
                 }},
        Spoiling{
            "ALengthOfWhatIsLeft",
            [](const auto& content) { return AnswerWith(LengthLine(content.size() / 2), Half(content)); }},
        Spoiling{
            "AByteTooMany",
            [](const auto& content) { return AnswerWith(LengthLine(content.size() + 1), content + "x"); }},
        Spoiling{"AWholeLengthAndHalfTheBytes",
                 [](const auto& content) { return AnswerWith(LengthLine(content.size()), Half(content)); }},
        Spoiling{"TwoLengths",
                 [](const auto& content) {
                   return AnswerWith(LengthLine(content.size()) + LengthLine(content.size() / 2), content);
                 }},
        Spoiling{"AContentThatCameCoded",
                 [](const auto& content) {
                   return AnswerWith("Content-Encoding: gzip\r\n" + LengthLine(content.size()), content);
                 }},
        Spoiling{"NothingAtAll", [](const auto&) { return AnswerWith(LengthLine(0), ""); }}),
    [](const auto& row) { return row.param.name; });

TEST_P(SpoiltDownload, KeepsTheOldFileAndEndsWith7) {
  Serve();
  WriteFile(Here("copy"), "old");
  Meddler meddler([](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const std::string answer = forward();
    if (request.target.find("/streams/") == std::string::npos) return peer.Send(answer);
    peer.Send(GetParam().answer(answer.substr(answer.find("\r\n\r\n") + 4)));
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult result = Run({"get", "--force", server().Uid("D1001"), "-o", "copy"});
  EXPECT_EQ(result.status, 7) << result.err;
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr(server().Uid("D1001")));
  EXPECT_EQ(ReadFile(Here("copy")), "old");
  EXPECT_THAT(HereNames(), ElementsAre("copy"));
  const ProcessResult printed = Run({"get", server().Uid("D1001"), "-o", "-"});
  EXPECT_EQ(printed.status, 7);
  EXPECT_EQ(printed.out, "");
  environment_.erase("http_proxy");
}

/// What there is to say of a content that came in full, and is not as long as its record says.
TEST_F(VtDirect, SaysOfAContentThatWasCutWhatIsMissing) {
  Serve();
  Meddler meddler([](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const std::string answer = forward();
    if (request.target.find("/streams/") == std::string::npos) return peer.Send(answer);
    peer.Send(AnswerWith(LengthLine(3), "abc"));
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult result = Run({"get", server().Uid("D1001"), "-o", "copy"});
  environment_.erase("http_proxy");
  const std::string size = std::to_string(server().Get(forkContent).size());
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.err,
            "vtdirect: the content of " + server().Uid("D1001") +
                " was not taken: the server's record says " + size +
                " bytes, and its content has 3; try again; if it stays so, ask who runs the server\n");
}

TEST_F(VtDirect, FillsNoDiskWithAContentWithoutAnEnd) {
  Serve();
  constexpr std::size_t mostPieces = 256;
  std::atomic<std::size_t> pieces{0};
  Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const std::string answer = forward();
    if (request.target.find("/streams/") == std::string::npos) return peer.Send(answer);
    peer.Send(AnswerWith("", answer.substr(answer.find("\r\n\r\n") + 4)));
    const std::string mebibyte(1024 * 1024, 'x');
    for (; !peer.clientIsGone() && pieces < mostPieces; ++pieces) peer.Send(mebibyte);
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult result = Run({"get", server().Uid("D1001"), "-o", "copy"});
  environment_.erase("http_proxy");
  EXPECT_EQ(result.status, 7);
  EXPECT_THAT(result.err, HasSubstr(" bytes, and its content has more than "));
  EXPECT_LT(pieces, mostPieces);
  EXPECT_TRUE(HereNames().empty());
}

TEST_F(VtDirect, TakesAWholeContentWithoutALength) {
  Serve();
  Meddler meddler([](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const std::string answer = forward();
    if (request.target.find("/streams/") == std::string::npos) return peer.Send(answer);
    peer.Send(AnswerWith("", answer.substr(answer.find("\r\n\r\n") + 4)));
  });
  environment_["http_proxy"] = meddler.Url();
  EXPECT_EQ(Run({"get", server().Uid("D1001"), "-o", "copy"}).status, 0);
  environment_.erase("http_proxy");
  EXPECT_EQ(ReadFile(Here("copy")), server().Get(forkContent));
}

}  // namespace vtdirect_test

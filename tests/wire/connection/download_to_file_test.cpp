#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "connection/http_connection.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using du::http::ErrorCode;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::ReadFile;
using vtdirect_test::SentRequest;

class DownloadToFile : public testing::Test {
 protected:
  int Download(const char* path, const char* headers, du::http::ProgressFunction progress = {}) {
    HttpConnection connection(url, {});
    return connection.DownloadToFile(path, headers, target.c_str(), std::move(progress));
  }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::ScriptedTransport transport;
  std::string url = "http://plm.example/vt";
  std::string target = directory.File("target");
};

TEST_F(DownloadToFile, GetsThePathBehindTheBasePathWithTheCallersHeaders) {
  transport.Then(200, "content");
  EXPECT_EQ(Download("servlet/x?y=1", "A: 1\r\nB: 2"), 200);
  EXPECT_THAT(transport.requests(),
              ElementsAre(SentRequest{url, "GET /vt/servlet/x?y=1", "A: 1\r\nB: 2", std::nullopt}));
  EXPECT_EQ(ReadFile(target), "content");
}

TEST_F(DownloadToFile, SendsNoHeaderOfItsOwn) {
  transport.Then(200).Then(200);
  EXPECT_EQ(Download("x", ""), 200);
  EXPECT_EQ(Download("x", nullptr), 200);
  EXPECT_EQ(transport.requests()[0].headers, "");
  EXPECT_EQ(transport.requests()[1].headers, "");
  EXPECT_THAT(transport.clientMarks(), ElementsAre("X-Zvk-Connected: 1", "X-Zvk-Connected: 1"));
}

TEST_F(DownloadToFile, ReplacesWhatWasThere) {
  vtdirect_test::WriteFile(target, std::string(100, 'o'));
  transport.Then(200, "new");
  EXPECT_EQ(Download("x", ""), 200);
  EXPECT_EQ(ReadFile(target), "new");
}

TEST_F(DownloadToFile, TheBodyOfARefusalLandsInTheFileToo) {
  for (const int status : {404, 500, 401, 302}) {
    transport.Then(status, "refused " + std::to_string(status));
    EXPECT_EQ(Download("x", ""), status);
    EXPECT_EQ(ReadFile(target), "refused " + std::to_string(status));
  }
}

TEST_F(DownloadToFile, AFailedExchangeIs65535) {
  for (const ErrorCode error :
       {ErrorCode::NoConnection, ErrorCode::TimedOut, ErrorCode::Cancelled, ErrorCode::TlsFailure,
        ErrorCode::TooLarge, ErrorCode::LocalFileFailure, ErrorCode::ProtocolFailure}) {
    transport.ThenFail(error);
    EXPECT_EQ(Download("x", ""), 65535);
  }
}

TEST_F(DownloadToFile, AFailedExchangeIs65535EvenWhenThePlatformTellsAStatus) {
  transport.Then(vtdirect_test::Answer{413, {}, ErrorCode::TooLarge});
  EXPECT_EQ(Download("x", ""), 65535);
}

TEST_F(DownloadToFile, AConnectionThatCannotBeMadeIs65535) {
  transport.RefuseConnections(2);
  EXPECT_EQ(Download("x", ""), 65535);
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(DownloadToFile, ATargetThatCannotBeWrittenIs65535) {
  transport.Then(200, "content");
  target = directory.File("missing/target");
  EXPECT_EQ(Download("x", ""), 65535);
}

TEST_F(DownloadToFile, TellsProgressOfTheBodyReceived) {
  std::vector<std::pair<std::size_t, std::size_t>> calls;
  transport.Then(200, std::string(5000, 'a'));
  EXPECT_EQ(Download("x", "",
                     [&calls](std::size_t done, std::size_t total) {
                       calls.emplace_back(done, total);
                       return true;
                     }),
            200);
  EXPECT_THAT(calls, ElementsAre(std::pair(4099U, 5000U), std::pair(5000U, 5000U)));
}

TEST_F(DownloadToFile, ProgressThatGivesFalseIs65535) {
  transport.Then(200, std::string(5000, 'a'));
  EXPECT_EQ(Download("x", "", [](std::size_t, std::size_t) { return false; }), 65535);
}

TEST_F(DownloadToFile, AServerWithoutAPathGetsThePathAsItStands) {
  url = "http://plm.example";
  transport.Then(200);
  EXPECT_EQ(Download("servlet/OrvetGW", ""), 200);
  EXPECT_THAT(transport.lines(), ElementsAre("GET servlet/OrvetGW"));
}

TEST_F(DownloadToFile, CarriesAnEmptyBodyAndOneOfAMegabyte) {
  transport.Then(200, "").Then(200, std::string(1 << 20, 'x'));
  EXPECT_EQ(Download("x", ""), 200);
  EXPECT_EQ(ReadFile(target), "");
  EXPECT_EQ(Download("x", ""), 200);
  EXPECT_TRUE(ReadFile(target) == std::string(1 << 20, 'x'));
}

}  // namespace

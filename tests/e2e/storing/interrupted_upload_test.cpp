#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>

#include "documents/storing/content_upload.h"
#include "platform/http_settings.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/support/temporary_directory.h"

// Uploads that end while megabytes are on their way, with the library's own transport: the staging file,
// which exists as long as bytes of it are sent, is gone after each of them.
namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

/// More than the sockets' buffers hold, and by much: nobody is done before the server has read its part.
constexpr std::size_t fileSize = 40'000'000;
constexpr std::size_t mostOfIt = 30'000'000;
constexpr std::size_t sentBefore = 3'000'000;

class InterruptedUpload : public testing::Test {
 protected:
  InterruptedUpload() {
    du::http::TransportSettings settings;
    settings.stallTimeoutSeconds = 1;
    settings.firstByteTimeoutSeconds = 1;
    settings.firstByteAfterBodyTimeoutSeconds = 1;
    du::http::SetTransportSettings(settings);
    WriteFile(localFile_, std::string(fileSize, 'm'));
  }

  // `end` plays the server's part after the first megabytes of the body.
  Status Upload(const ScriptedServer::Script& end, du::http::ProgressFunction progress = {}) {
    const ScriptedServer server([&](Peer& peer, WireRequest& request) {
      if (request.target.ends_with("/security/csrf")) return peer.Answer(200, "{}");
      if (request.target == "/up") {
        peer.ReadBytes(sentBefore);
        during_ = temporary_.Entries();
        return end(peer, request);
      }
      peer.ReadBody(&request);
      peer.Answer(200, R"({"masterUrl":"m","uploadUrl":"http://)" + request.Header("Host") +
                           R"(/up","fileNames":["f1"],"streamIds":["901"]})");
    });
    ServerContext operation(
        std::make_shared<VtConnection>(server.Url().c_str(), [](const char*) { return false; }));
    return UploadContents(operation, {localFile_}, std::move(progress)).status;
  }
  void ExpectStagedOnlyWhileSent() const {
    EXPECT_THAT(during_, ElementsAre(EndsWith(".multipart")));
    EXPECT_THAT(temporary_.Entries(), IsEmpty());
  }

 private:
  TemporaryDirectory home_;
  TemporaryDirectory temporary_;  // the later one counts
  std::string localFile_ = home_.File("main.fnl");
  std::vector<std::string> during_;
};

TEST_F(InterruptedUpload, ThatTheServerRefusesAsTooLarge) {
  EXPECT_EQ(Upload([](Peer& peer, WireRequest&) {
              peer.Send("HTTP/1.1 413 Too Large\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
              peer.Close();
            }),
            TooLarge);
  ExpectStagedOnlyWhileSent();
}

TEST_F(InterruptedUpload, ThatTheServerRefuses) {
  EXPECT_EQ(Upload([](Peer& peer, WireRequest&) {
              peer.Send("HTTP/1.1 500 No\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
              peer.Close();
            }),
            Refused);
  ExpectStagedOnlyWhileSent();
}

TEST_F(InterruptedUpload, ByALostConnection) {
  EXPECT_EQ(Upload([](Peer& peer, WireRequest&) { peer.Reset(); }), Refused);
  ExpectStagedOnlyWhileSent();
}

TEST_F(InterruptedUpload, ByAServerThatReadsNoMore) {
  EXPECT_EQ(Upload([](Peer& peer, WireRequest&) {
              std::this_thread::sleep_for(std::chrono::seconds(3));
              peer.Reset();
            }),
            Refused);
  ExpectStagedOnlyWhileSent();
}

TEST_F(InterruptedUpload, ByTheHost) {
  std::size_t last = 0;
  EXPECT_EQ(Upload([](Peer& peer, WireRequest&) { peer.StaySilent(); },
                   [&](std::size_t done, std::size_t) {
                     last = done;
                     return done < mostOfIt;
                   }),
            Refused);
  EXPECT_GE(last, mostOfIt);
  EXPECT_LT(last, fileSize);
  ExpectStagedOnlyWhileSent();
}

// A host that goes on by an exception of its own leaves nothing either.
TEST_F(InterruptedUpload, ByAnExceptionOfTheHosts) {
  EXPECT_THROW((void)Upload([](Peer& peer, WireRequest&) { peer.StaySilent(); },
                            [](std::size_t done, std::size_t) -> bool {
                              if (done >= mostOfIt) throw std::runtime_error("the host's");
                              return true;
                            }),
               std::runtime_error);
  ExpectStagedOnlyWhileSent();
}

}  // namespace
}  // namespace vtdirect_test

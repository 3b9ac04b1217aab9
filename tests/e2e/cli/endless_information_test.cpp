#include <gmock/gmock.h>

#include <chrono>

#include "tests/e2e/cli/vtdirect_fixture.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/support/resident_memory.h"

using testing::IsEmpty;

namespace vtdirect_test {

/// What `check` asks first, which a server answers with a gigabyte.
class EndlessInformation : public VtDirect {
 protected:
  /// A server whose information is as long as this.
  static std::unique_ptr<ScriptedServer> ServerOf(std::size_t size) {
    return std::make_unique<ScriptedServer>([size](Peer& peer, WireRequest&) {
      const std::string line = "ServerMajorVersion:12\n";
      std::string piece;
      while (piece.size() < mebibyte) piece += line;
      peer.Send("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(size) +
                "\r\n\r\n");
      for (std::size_t sent = 0; sent < size && !peer.closed(); sent += piece.size())
        peer.Send(piece.substr(0, size - sent));
      peer.Close();
    });
  }
};

TEST_F(EndlessInformation, TakesNoMoreMemoryThanAShortOne) {
  const auto brief = ServerOf(1000);
  const auto endless = ServerOf(1024 * mebibyte);
  const ProcessResult usual = Run({"check", brief->Url()});
  const auto begin = std::chrono::steady_clock::now();
  const ProcessResult flooded = Run({"check", endless->Url()});
  const auto took = std::chrono::steady_clock::now() - begin;
  EXPECT_EQ(flooded.status, 3) << flooded.err;
  EXPECT_THAT(TemporaryNames(), IsEmpty());
  RecordProperty("mebibytes", static_cast<int>((flooded.peakKilobytes - usual.peakKilobytes) / 1024));
  RecordProperty("milliseconds",
                 static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(took).count()));
  if (memoryIsMeasured) {
    EXPECT_LT(flooded.peakKilobytes, usual.peakKilobytes + 8 * 1024);
  }
}

}  // namespace vtdirect_test

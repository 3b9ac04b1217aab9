#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <cerrno>

#include "tests/e2e/mount/mount_fixture.h"

namespace vtdirect_test {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;

class ServerAway : public MountTest {
 protected:
  [[nodiscard]] std::vector<std::string> AtItsPort() const {
    const std::string authority = server().authority();
    return {"--port", authority.substr(authority.rfind(':') + 1)};
  }
};

TEST_F(ServerAway, LeavesReadableWhatIsKeptAndComesBackByItself) {
  Serve();
  const auto port = AtItsPort();
  Serve(port);
  const std::string content = server().Get(forkContent);
  Mount({"--refresh", "1"});
  ASSERT_EQ(Text(Tree(forkAddress)), content);
  StopServer();
  SleepMilliseconds(1200);
  EXPECT_EQ(Text(Tree(forkAddress)), content);
  EXPECT_THAT(Names(Tree(frameFolder)), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
  // What was never asked for can't be told.
  EXPECT_EQ(ErrorOfReading(Tree("Libraries/Materials/Folders/Lacke/nachtblau.lxz")), EIO);
  Serve(port);
  EXPECT_TRUE(WaitUntil(
      [this] { return ErrorOfReading(Tree("Libraries/Materials/Folders/Lacke/nachtblau.lxz")) == 0; }));
}

TEST_F(ServerAway, IsNoReasonNotToMount) {
  Serve();
  const auto port = AtItsPort();
  Serve(port);
  const std::string url = server().url();
  StopServer();
  Mount({"--refresh", "1", "--server", "sim=" + url});
  EXPECT_EQ(ErrorOfReading(Tree(forkAddress)), EIO);
  Serve(port);
  EXPECT_TRUE(WaitUntil([this] { return ErrorOfReading(Tree(forkAddress)) == 0; }));
}

TEST_F(ServerAway, FailsWithinTheDeadlineWhenItIsSilent) {
  Serve({"--fault", "GET */content/*=stall"});
  Mount({"--stall-timeout", "1"});
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_THAT(ErrorOfReading(Tree(forkAddress)), AnyOf(ETIMEDOUT, EIO));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST_F(ServerAway, LeavesNoHalfContentWhenATransferBreaksOff) {
  Serve();
  auto port = AtItsPort();
  auto broken = port;
  broken.insert(broken.end(), {"--fault", "GET */content/*=cut:100"});
  Serve(broken);
  Mount();
  EXPECT_EQ(ErrorOfReading(Tree(forkAddress)), EIO);
  EXPECT_EQ(Shell("find ~/.cache/vtdirect/parts ~/.cache/vtdirect/contents -type f").out, "");
  Serve(port);
  EXPECT_EQ(Text(Tree(forkAddress)), server().Get(forkContent));
}

TEST_F(ServerAway, LetsASlowDocumentHoldUpNobodyElse) {
  Serve({"--fault", "GET *10010/*=stall:100"});
  Mount({"--stall-timeout", "20"});
  Process slow({"/bin/cat", Tree(forkAddress)}, ProcessOptions{});
  EXPECT_TRUE(WaitUntil([this] { return !Names(Cache() + "/parts").empty(); }));
  EXPECT_EQ(Text(Tree(std::string(frameFolder) + "frame.lxz")),
            server().Get("/servlet/rest/v1/content/streams/10020/frame.lxz"));
  EXPECT_TRUE(slow.Running());
  // An interrupted reader ends at once, long before the server's silence does.
  slow.Signal(SIGINT);
  EXPECT_TRUE(WaitUntil([&slow] { return !slow.Running(); }, 5'000));
}

TEST_F(ServerAway, LetsASlowRecordHoldUpNobodyInTheSameFolder) {
  const int admin = UnusedPort();
  Serve({"--fault", "GET *documents/D1001*=stall", "--admin-port", std::to_string(admin)});
  Mount({"--stall-timeout", "20"});
  Process slow({"/usr/bin/stat", Tree(forkAddress)}, ProcessOptions{});
  server().Control("GET", "/requests?path=*documents/D1001*&state=arrived&count=1&wait=10000");
  Process other({"/usr/bin/stat", Tree(std::string(frameFolder) + "frame.lxz")}, ProcessOptions{});
  EXPECT_TRUE(WaitUntil([&other] { return !other.Running(); }, 5'000));
  EXPECT_TRUE(slow.Running());
  slow.Signal(SIGINT);
  EXPECT_TRUE(WaitUntil([&slow] { return !slow.Running(); }, 5'000));
}

TEST_F(ServerAway, SaysInTheLogWhatWentWrong) {
  Serve({"--fault", "GET */content/*=503"});
  Mount({"--log", Home("log")});
  EXPECT_EQ(ErrorOfReading(Tree(forkAddress)), EIO);
  EXPECT_THAT(ReadFile(Home("log")), HasSubstr("cannot fetch " + server().Uid("D1001")));
  EXPECT_THAT(ReadFile(Home("log")), HasSubstr("HTTP 503"));
}

}  // namespace
}  // namespace vtdirect_test

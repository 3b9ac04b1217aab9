#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/mount/mount_fixture.h"

namespace vtdirect_test {
namespace {

/// A mount whose way to the server loses the second half of each content, and says that it was all.
class CutContent : public MountTest {
 protected:
  void SetUp() override {
    MountTest::SetUp();
    if (IsSkipped()) return;
    Serve();
    environment_["http_proxy"] = halver_.Url();
  }

 private:
  static void SendHalf(Peer& peer, const std::string& answer) {
    const std::string content = answer.substr(answer.find("\r\n\r\n") + 4);
    peer.Send("HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n\r\n" +
              content.substr(0, content.size() / 2));
  }

  Meddler halver_{[](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const std::string answer = forward();
    if (request.target.find("/streams/") == std::string::npos) return peer.Send(answer);
    SendHalf(peer, answer);
  }};
};

TEST_F(CutContent, IsAFailureToRead) {
  Mount();
  EXPECT_EQ(ErrorOfReading(Tree(forkAddress)), EIO);
  EXPECT_EQ(ErrorOfReading(Tree(forkAddress)), EIO) << "it was not kept";
}

TEST_F(CutContent, IsNotWrittenOn) {
  const std::string path = "//sim/" + std::string(forkAddress);
  const std::string content = server().Get(forkContent);
  ASSERT_EQ(Run({"checkout", "-q", path}).status, 0);
  Mount({"--write"});
  EXPECT_NE(Shell("printf more >>\"$TREE/" + std::string(forkAddress) + "\"").status, 0);
  ASSERT_EQ(Run({"unmount", Tree()}).status, 0);
  environment_.erase("http_proxy");
  ASSERT_EQ(Run({"get", "-q", path, "-o", "stored"}).status, 0);
  EXPECT_EQ(ReadFile(Here("stored")), content) << "the working copy is as it was";
}

/// A mount whose server tells of no content how long it is.
class UntoldSize : public MountTest {
 protected:
  void SetUp() override {
    MountTest::SetUp();
    if (IsSkipped()) return;
    Serve();
    content_ = server().Get(forkContent);
    ASSERT_EQ(Run({"checkout", "-q", path_}).status, 0);
    environment_["http_proxy"] = hider_.Url();
  }

  // Another name of the same length leaves the answer's own length as it is.
  static void HideSizes(Peer& peer, const WireRequest& /*request*/, const Meddler::Forward& forward) {
    std::string answer = forward();
    const std::string name = "\"fileSize\"";
    for (std::size_t at = answer.find(name); at != std::string::npos; at = answer.find(name, at)) {
      answer.replace(at, name.size(), "\"fileSeal\"");
    }
    peer.Send(answer);
  }

  std::string content_;
  const std::string path_ = "//sim/" + std::string(forkAddress);

 private:
  Meddler hider_{HideSizes};
};

TEST_F(UntoldSize, IsMeasured) {
  Mount();
  EXPECT_EQ(std::filesystem::file_size(Tree(forkAddress)), content_.size());
  EXPECT_EQ(Text(Tree(forkAddress)), content_);
}

TEST_F(UntoldSize, IsNotTakenForEmptyWhenTheDocumentIsWrittenOn) {
  Mount({"--write"});
  EXPECT_EQ(Shell("printf more >>\"$TREE/" + std::string(forkAddress) + "\"").err, "");
  ASSERT_EQ(Run({"unmount", Tree()}).status, 0);
  environment_.erase("http_proxy");
  ASSERT_EQ(Run({"get", "-q", path_, "-o", "stored"}).status, 0);
  EXPECT_EQ(ReadFile(Here("stored")), content_ + "more");
}

}  // namespace
}  // namespace vtdirect_test

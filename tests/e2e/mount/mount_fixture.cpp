#include "tests/e2e/mount/mount_fixture.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

namespace vtdirect_test {
namespace {

constexpr long fuseMagic = 0x65735546;

/// What keeps this machine from a mount; empty when nothing does. A container may have the device, and not the
/// right to mount by it. An ordinary user mounts by the help of a program, which is not tried here.
std::string WhatForbidsMounts(const std::string& directory) {
  const int device = open("/dev/fuse", O_RDWR | O_CLOEXEC);
  if (device < 0) return "there is no /dev/fuse that can be opened here";
  std::string fault;
  if (geteuid() == 0) {
    const std::string options = "fd=" + std::to_string(device) + ",rootmode=40000,user_id=0,group_id=0";
    if (mount("vtdirect-tests", directory.c_str(), "fuse", MS_NOSUID | MS_NODEV, options.c_str()) == 0) {
      umount2(directory.c_str(), MNT_DETACH);
    } else {
      fault = "this machine does not let root mount by /dev/fuse";
    }
  }
  close(device);
  return fault;
}

}  // namespace

void MountTest::SetUp() {
  std::filesystem::create_directory(Home("tree"));
  const std::string fault = WhatForbidsMounts(Home("tree"));
  if (!fault.empty()) GTEST_SKIP() << fault;
}

void MountTest::TearDown() {
  if (mount_ && mount_->Running()) {
    mount_->Signal(SIGTERM);
    EXPECT_EQ(mount_->Wait().status, 0);
  }
  EXPECT_FALSE(IsMounted());
  // Whatever went wrong, the directory of the test must be removable.
  if (IsMounted()) Shell("fusermount3 -uz \"$TREE\"");
  VtDirect::TearDown();
}

void MountTest::Mount(const std::vector<std::string>& options) {
  std::vector<std::string> words = {"mount", "--foreground", "--no-prompt"};
  words.insert(words.end(), options.begin(), options.end());
  words.insert(words.end(), {"//sim/", Home("tree")});
  mount_ = Start(words);
  // What a killed mount has left counts as mounted, and has to be cleared away first.
  ASSERT_TRUE(WaitUntil([this] { return AnswersAsMount() || !mount_->Running(); }));
  ASSERT_TRUE(AnswersAsMount()) << mount_->Wait().err;
}

ProcessResult MountTest::WaitForMount() {
  const ProcessResult result = mount_->Wait();
  mount_.reset();
  return result;
}

std::string MountTest::Tree(const std::string& name) const {
  return Home("tree") + (name.empty() ? "" : "/" + name);
}

bool MountTest::IsMounted() const {
  struct statfs status = {};
  return AnswersAsMount() || (statfs(Home("tree").c_str(), &status) != 0 && errno == ENOTCONN);
}

bool MountTest::AnswersAsMount() const {
  struct statfs status = {};
  return statfs(Home("tree").c_str(), &status) == 0 && static_cast<long>(status.f_type) == fuseMagic;
}

std::vector<std::string> MountTest::Names(const std::string& directory) {
  std::vector<std::string> names;
  std::error_code error;
  for (auto entry = std::filesystem::directory_iterator(directory, error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    names.push_back(entry->path().filename().string());
  }
  if (error) names.push_back("(" + error.message() + ")");
  std::sort(names.begin(), names.end());
  return names;
}

std::string MountTest::Text(const std::string& file) {
  return ReadFile(file);
}

int MountTest::ErrorOfReading(const std::string& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return errno;
  char byte = 0;
  const int error = read(descriptor, &byte, 1) < 0 ? errno : 0;
  close(descriptor);
  return error;
}

std::string MountTest::Attribute(const std::string& file, const std::string& name) {
  char text[4096];
  const ssize_t length = getxattr(file.c_str(), name.c_str(), text, sizeof text);
  if (length < 0) return "(errno " + std::to_string(errno) + ")";
  return {text, static_cast<std::size_t>(length)};
}

ProcessResult MountTest::Shell(const std::string& line) {
  auto environment = environment_;
  environment["TREE"] = Tree();
  environment["TMPDIR"] = Here("");
  environment["LC_ALL"] = "C.UTF-8";
  return Process({"/bin/bash", "-c", line}, ProcessOptions{environment, Here(""), "", 0}).Wait();
}

std::size_t MountTest::Asked(const std::string& text) const {
  const std::string log = server().Log();
  std::size_t count = 0;
  for (std::size_t place = log.find(text); place != std::string::npos; place = log.find(text, place + 1)) {
    ++count;
  }
  return count;
}

std::size_t MountTest::Requests() const {
  const std::string log = server().Log();
  return static_cast<std::size_t>(std::count(log.begin(), log.end(), '\n'));
}

}  // namespace vtdirect_test

#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/e2e/mount/mount_fixture.h"

namespace vtdirect_test {
namespace {

// Somebody who is not root mounts, writes and unmounts, by programs of this build.
class OrdinaryUser : public MountTest {
 protected:
  // Runs lines of the shell as root, who can be others by `as NUMBER COMMAND...`. In a view of the mounts of their
  // own, /dev/fuse can be opened by everybody there, as it is on a desktop.
  ProcessResult InOwnView(const std::string& lines) {
    WriteFile(Here("lines"),
              "set -e; as() { local user=$1; shift; setpriv --reuid $user --regid $user --clear-groups "
              "\"$@\"; }\n" +
                  lines);
    return Shell(
        "mkdir -p device && { [ -e device/fuse ] || mknod device/fuse c 10 229; } && chmod 666 device/fuse "
        "&& "
        "chmod 755 ~/.. && chown -R 65534:65534 ~ ../temporary . && "
        "unshare --mount --propagation private bash -c 'mount --bind device/fuse /dev/fuse && exec bash "
        "lines'");
  }
};

TEST_F(OrdinaryUser, MountsWritesAndUnmountsAndOthersSeeNothing) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can be somebody else; all other tests here run as this user";
  if (Shell("test -u /usr/bin/fusermount3").status != 0) GTEST_SKIP() << "users can't mount on this machine";
  Serve();
  if (InOwnView("as 65534 test -w /dev/fuse").status != 0) GTEST_SKIP() << "there is no /dev/fuse for users";
  // The build may be where nobody else can go.
  ASSERT_EQ(
      Shell("cp \"" VTDIRECT_PROGRAM "\" \"" VTDIRECT_PROGRAM "-mount\" . && chmod 755 vtdirect*").status, 0);
  WriteFile(Here("expected"), server().Get(forkContent));
  const std::string fork = "\"$TREE/" + std::string(forkAddress) + "\"";
  const std::string vtdirect = "as 65534 ./vtdirect --server sim=" + server().url() + " ";
  const auto result = InOwnView(
      vtdirect + "mount --no-prompt --write --auto-checkout //sim/ \"$TREE\"\n" +
      "grep -q \" $TREE fuse.vtdirect rw,nosuid,nodev.*user_id=65534,group_id=65534\" /proc/mounts\n" +
      "as 65534 cat " + fork + " | cmp - expected\n" + "for other in 0 65533; do\n" +
      "as $other stat \"$TREE\" 2>&1 | grep -o 'Permission denied'\n" + "as $other cat " + fork +
      " 2>&1 | grep -o 'Permission denied'\n" + "done\n" + "as 65534 sh -c 'printf \"FENLET edited\\\\n\" >" +
      fork + "'\n" + vtdirect + "get -q --force '//sim/" + forkAddress + "' -o stored\n" + "cat stored\n" +
      vtdirect + "refresh \"$TREE\"\n" + "as 65534 stat -c %u:%a " + fork + " \"$TREE\"\n" + vtdirect +
      "unmount \"$TREE\"\n" + "! grep -F \" $TREE \" /proc/mounts\n");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out,
            "Permission denied\nPermission denied\nPermission denied\nPermission denied\n"
            "FENLET edited\n65534:644\n65534:755\n");
}

}  // namespace
}  // namespace vtdirect_test

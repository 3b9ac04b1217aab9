#pragma once

#include <string>
#include <vector>

#include "tests/e2e/mount/mount_fixture.h"

namespace vtdirect_test {

/// A mount that can be written to, with the demo's fork for what is checked out.
class MountWriting : public MountTest {
 protected:
  static std::string Path() { return "//sim/" + std::string(forkAddress); }
  void CheckOut() { ASSERT_EQ(Run({"checkout", "-q", Path()}).status, 0); }
  void MountAndCheckOut() {
    Serve();
    CheckOut();
    Mount({"--write"});
  }
  /// What the server has of the working copy, or of any other document.
  [[nodiscard]] std::string OnServer(const std::string& address) {
    const auto result = Run({"get", "-q", "--force", address, "-o", Here("got")});
    return result.status == 0 ? ReadFile(Here("got")) : "(" + result.err + ")";
  }
  [[nodiscard]] std::string Fork() const { return Tree(forkAddress); }
  /// The directory of what could not be stored.
  [[nodiscard]] std::string Unstored() const { return Home(".local/state/vtdirect/unstored"); }
  /// Options by which the server starts again where it was.
  [[nodiscard]] std::vector<std::string> AtItsPort(const std::vector<std::string>& more = {}) const {
    const std::string authority = server().authority();
    std::vector<std::string> options = {"--port", authority.substr(authority.rfind(':') + 1)};
    options.insert(options.end(), more.begin(), more.end());
    return options;
  }
  /// The server's URL in the list of servers.
  [[nodiscard]] std::string ServerUrl() {
    const std::string url = Run({"servers"}).out;
    return url.substr(url.find('\t') + 1, url.find('\n') - url.find('\t') - 1);
  }
  /// Clears away the temporary directories that a killed mount could not.
  void ClearAwayTemporaryFiles() {
    EXPECT_EQ(Shell("rm -rf \"$(dirname ~)\"/temporary/vtdirect-*").status, 0);
  }

  std::vector<std::string> port_;  ///< what a test has got of AtItsPort before it ends the server
};

}  // namespace vtdirect_test

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/cli/checkout_fixture.h"
#include "tests/e2e/cli/server_document.h"

namespace vtdirect_test {

/// The demo's folder of three documents, and one above it.
inline constexpr const char* framePath = "//sim/Products/Trekking Bike/Folders/Frame/";
inline constexpr const char* bikePath = "//sim/Products/Trekking Bike/Folders/";

/// Works in work folders of the directory "here".
class WorkFolderTest : public CheckoutTest {
 protected:
  /// Runs the program in a directory below "here".
  ProcessResult RunIn(const std::string& directory, const std::vector<std::string>& words) {
    return StartIn(directory, words)->Wait();
  }
  [[nodiscard]] std::unique_ptr<Process> StartIn(const std::string& directory,
                                                 const std::vector<std::string>& words);

  /// Starts the server and makes the work folder "Frame".
  void Clone(const std::vector<std::string>& options = {});

  /// What `st` prints; fails the test unless it ends well.
  [[nodiscard]] std::string St(const std::string& directory);

  /// The file "fork.lxz" in "Frame".
  [[nodiscard]] std::string Fork() const { return Here("Frame/fork.lxz"); }
  /// Changes it so that neither its size nor its time tells, and gives its bytes.
  std::string ChangeUnseen();
  /// Stores other bytes as a new version of fork.lxz, as somebody else would.
  void StoreElsewhere(const std::string& bytes);
  /// The newest content of fork.lxz on the server, read by nothing of the work folder.
  [[nodiscard]] std::string ForkOnServer();
};

}  // namespace vtdirect_test

#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/cli/process.h"
#include "tests/e2e/cli/simulator.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/unused_port.h"

namespace vtdirect_test {

/// Where the content of the document D1001 is on the server, and its first lines.
inline constexpr const char* forkContent = "/servlet/rest/v1/content/streams/10010/fork.lxz";
inline constexpr const char* forkHead = "FENLET DRAWING\nname fork.lxz\nversion B.1\n";

/// Runs the program in an empty current directory, with a home of its own and a directory for temporary files
/// that has to be empty again at the end. What the program finds in a folder is under the test's control.
class VtDirect : public testing::Test {
 protected:
  VtDirect();
  void TearDown() override;

  /// Starts the simulator, in place of the one that runs and with its data; what `Run` runs then knows it as
  /// "sim".
  Simulator& Serve(const std::vector<std::string>& options = {});
  [[nodiscard]] const Simulator& server() const { return *simulator_; }
  /// Ends the simulator; Serve starts it again with all that it holds.
  void StopServer();
  /// Ends the simulator and throws away what it holds.
  void EndServer();

  [[nodiscard]] std::unique_ptr<Process> Start(const std::vector<std::string>& words);
  ProcessResult Run(const std::vector<std::string>& words) { return Start(words)->Wait(); }

  /// Writes a file below the home directory.
  void WriteHome(const std::string& name, const std::string& content, unsigned mode);
  [[nodiscard]] std::string Home(const std::string& name) const { return base_.File("home/" + name); }
  [[nodiscard]] std::string Here(const std::string& name) const { return base_.File("here/" + name); }
  /// Names in the current directory of the program.
  [[nodiscard]] std::vector<std::string> HereNames() const;
  [[nodiscard]] std::vector<std::string> TemporaryNames() const;

  std::map<std::string, std::string> environment_;
  std::string outFile_;
  unsigned long fileSizeLimit_ = 0;

 private:
  TemporaryDirectory base_;
  std::unique_ptr<Simulator> simulator_;
};

}  // namespace vtdirect_test

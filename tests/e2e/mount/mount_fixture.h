#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/cli/vtdirect_fixture.h"

namespace vtdirect_test {

/// Mounts the simulator and looks at the tree by what any program can do. Skipped, with a word, where there is
/// no /dev/fuse. The mount is gone at the end, and has to leave no temporary file behind.
class MountTest : public VtDirect {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// Mounts the server's root in the foreground of a process that the test can look after.
  /// @param options  words before the operands
  void Mount(const std::vector<std::string>& options = {});
  /// Sends a signal to that process.
  void SignalMount(int signal) { mount_->Signal(signal); }
  /// Waits until that process has ended, and gives what it said.
  ProcessResult WaitForMount();

  /// The directory of the mount, and a path below it.
  [[nodiscard]] std::string Tree(const std::string& name = "") const;
  /// Whether something is mounted there, alive or not.
  [[nodiscard]] bool IsMounted() const;
  /// Whether a living mount is there.
  [[nodiscard]] bool AnswersAsMount() const;
  [[nodiscard]] std::string Cache() const { return Home(".cache/vtdirect"); }

  /// The names in a directory, sorted.
  [[nodiscard]] static std::vector<std::string> Names(const std::string& directory);
  /// What a file holds; fails the test when it can't be read.
  [[nodiscard]] static std::string Text(const std::string& file);
  /// The error number of an attempt to read the first byte of a file; 0 when that succeeds.
  [[nodiscard]] static int ErrorOfReading(const std::string& file);
  /// An extended attribute; "(errno N)" when it can't be read.
  [[nodiscard]] static std::string Attribute(const std::string& file, const std::string& name);
  /// Runs a line of the shell in the directory "here", with TREE for the mount.
  ProcessResult Shell(const std::string& line);

  /// How often the server was asked for something with this text in its address.
  [[nodiscard]] std::size_t Asked(const std::string& text) const;
  /// How many requests the server has got.
  [[nodiscard]] std::size_t Requests() const;

 private:
  std::unique_ptr<Process> mount_;
};

/// The folder of the demo's drawings, below the tree, with its closing "/".
inline constexpr const char* frameFolder = "Products/Trekking Bike/Folders/Frame/";
inline constexpr const char* drivetrainFolder = "Products/Trekking Bike/Folders/Drivetrain/";
inline constexpr const char* forkAddress = "Products/Trekking Bike/Folders/Frame/fork.lxz";

}  // namespace vtdirect_test

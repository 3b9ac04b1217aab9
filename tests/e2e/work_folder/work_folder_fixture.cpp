#include "tests/e2e/work_folder/work_folder_fixture.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace vtdirect_test {

std::unique_ptr<Process> WorkFolderTest::StartIn(const std::string& directory,
                                                 const std::vector<std::string>& words) {
  std::vector<std::string> all = {VTDIRECT_PROGRAM, "--server", "sim=" + server().url()};
  all.insert(all.end(), words.begin(), words.end());
  return std::make_unique<Process>(all,
                                   ProcessOptions{environment_, Here(directory), outFile_, fileSizeLimit_});
}

void WorkFolderTest::Clone(const std::vector<std::string>& options) {
  Serve(options);
  const ProcessResult result = Run({"clone", framePath});
  ASSERT_EQ(result.status, 0) << result.err;
}

std::string WorkFolderTest::St(const std::string& directory) {
  const ProcessResult result = RunIn(directory, {"st"});
  EXPECT_EQ(result.status, 0) << result.err;
  return result.out;
}

std::string WorkFolderTest::ChangeUnseen() {
  struct stat facts = {};
  EXPECT_EQ(stat(Fork().c_str(), &facts), 0);
  std::string bytes = ReadFile(Fork());
  bytes[0] = '#';
  WriteFile(Fork(), bytes);
  const timespec times[] = {facts.st_mtim, facts.st_mtim};
  EXPECT_EQ(utimensat(AT_FDCWD, Fork().c_str(), times, 0), 0);
  return bytes;
}

void WorkFolderTest::StoreElsewhere(const std::string& bytes) {
  WriteFile(Home("elsewhere.lxz"), bytes);
  const ProcessResult result = RunElsewhere({"put", Home("elsewhere.lxz"), forkPath});
  ASSERT_EQ(result.status, 0) << result.err;
}

std::string WorkFolderTest::ForkOnServer() {
  // What others see, whatever was stored in a working copy.
  return RunElsewhere({"get", forkPath, "--base", "-o", "-"}).out;
}

}  // namespace vtdirect_test

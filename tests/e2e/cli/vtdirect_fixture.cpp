#include "tests/e2e/cli/vtdirect_fixture.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace vtdirect_test {
namespace {

std::vector<std::string> NamesIn(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

VtDirect::VtDirect() {
  for (const char* name : {"here", "home", "temporary", "server"}) {
    std::filesystem::create_directory(base_.File(name));
  }
  environment_ = {
      {"HOME", base_.File("home")}, {"TMPDIR", base_.File("temporary")}, {"PATH", "/usr/bin:/bin"}};
}

void VtDirect::TearDown() {
  EXPECT_THAT(TemporaryNames(), testing::IsEmpty());
}

Simulator& VtDirect::Serve(const std::vector<std::string>& options) {
  std::vector<std::string> all = {"--large", "1000000"};
  all.insert(all.end(), options.begin(), options.end());
  // Two can't share the data.
  simulator_.reset();
  simulator_ = std::make_unique<Simulator>(base_.File("server"), all);
  return *simulator_;
}

void VtDirect::StopServer() {
  simulator_.reset();
}

void VtDirect::EndServer() {
  simulator_.reset();
  std::filesystem::remove_all(base_.File("server"));
  std::filesystem::create_directory(base_.File("server"));
}

std::unique_ptr<Process> VtDirect::Start(const std::vector<std::string>& words) {
  std::vector<std::string> all = {VTDIRECT_PROGRAM};
  if (simulator_) all.insert(all.end(), {"--server", "sim=" + simulator_->url()});
  all.insert(all.end(), words.begin(), words.end());
  return std::make_unique<Process>(
      all, ProcessOptions{environment_, base_.File("here"), outFile_, fileSizeLimit_});
}

void VtDirect::WriteHome(const std::string& name, const std::string& content, unsigned mode) {
  const std::string path = Home(name);
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  WriteFile(path, content);
  ASSERT_EQ(chmod(path.c_str(), mode), 0);
}

std::vector<std::string> VtDirect::HereNames() const {
  return NamesIn(base_.File("here"));
}

std::vector<std::string> VtDirect::TemporaryNames() const {
  return NamesIn(base_.File("temporary"));
}

}  // namespace vtdirect_test

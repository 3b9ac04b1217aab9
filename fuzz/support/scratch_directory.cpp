#include "fuzz/support/scratch_directory.h"

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "fuzz/support/input.h"

namespace vtdirect_fuzz {
namespace {

std::string NewDirectory(const std::string& parent, const std::string& name) {
  const std::string path = parent + "/" + name;
  std::filesystem::create_directory(path);
  return path;
}

}  // namespace

ScratchDirectory::ScratchDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "vtdirect-fuzz-XXXXXX").string();
  Require(::mkdtemp(pattern.data()) != nullptr);
  path_ = pattern;
  own_ = NewDirectory(path_, "own");
  temporary_ = NewDirectory(path_, "temporary");
  Require(::setenv("TMPDIR", temporary_.c_str(), 1) == 0);
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void ScratchDirectory::RequireNothingLeft() const {
  bool left = false;
  for (const auto& entry : std::filesystem::directory_iterator(temporary_)) {
    std::fprintf(stderr, "left behind: %s\n", entry.path().c_str());
    left = true;
  }
  Require(!left);
}

const ScratchDirectory& Scratch() {
  static const ScratchDirectory directory;
  return directory;
}

void WriteScratchFile(const std::string& path, std::string_view content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  Require(file.flush().good());
}

}  // namespace vtdirect_fuzz

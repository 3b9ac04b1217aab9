#include "hosts/cli/many/matched_files.h"

#include <glob.h>
#include <sys/stat.h>

#include <algorithm>

#include "hosts/cli/texts/name_pattern.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

// "[" stands for itself, as in the patterns of addresses.
[[nodiscard]] std::string ForTheSystem(const std::string& pattern) {
  std::string out;
  for (const char c : pattern) out += c == '[' ? std::string("[[]") : std::string(1, c);
  return out;
}

[[nodiscard]] bool IsDirectory(const std::string& path) {
  struct stat facts = {};
  return stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

[[nodiscard]] std::vector<std::string> FilesFor(const std::string& pattern) {
  std::vector<std::string> files;
  glob_t found = {};
  if (glob(ForTheSystem(pattern).c_str(), GLOB_NOSORT | GLOB_NOESCAPE, nullptr, &found) == 0) {
    for (std::size_t number = 0; number < found.gl_pathc; ++number) {
      if (!IsDirectory(found.gl_pathv[number])) files.emplace_back(found.gl_pathv[number]);
    }
  }
  globfree(&found);
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

bool IsFilePattern(const std::string& operand) {
  struct stat facts = {};
  return HasWildcard(operand) && lstat(operand.c_str(), &facts) != 0;
}

MatchedFiles FindMatchedFiles(const std::vector<std::string>& operands) {
  MatchedFiles all;
  for (const std::string& operand : operands) {
    if (!IsFilePattern(operand)) {
      all.files.push_back(operand);
      continue;
    }
    const std::vector<std::string> files = FilesFor(operand);
    if (files.empty()) {
      all.failures.push_back({ExitCode::LocalFile, "no file matches " + Printable(operand)});
    }
    all.files.insert(all.files.end(), files.begin(), files.end());
  }
  return all;
}

}  // namespace vtdirect_cli

#pragma once

#include <string>
#include <vector>

#include "hosts/cli/failures/failure.h"

namespace vtdirect_cli {

/// The local files that some operands mean.
struct MatchedFiles {
  std::vector<std::string> files;
  std::vector<Failure> failures;  ///< of the patterns that match nothing
};

/// Whether an operand is a pattern: it has "*" or "?" in it, and no file is called so.
[[nodiscard]] bool IsFilePattern(const std::string& operand);

/// What the operands mean, in their order. One that is no pattern means itself, whether there is such a file or not.
/// In a pattern "*" stands for any characters but "/", and "?" for one; neither stands for a dot in front of a name.
/// What it finds comes by the bytes of its path, without directories. Makes no request.
[[nodiscard]] MatchedFiles FindMatchedFiles(const std::vector<std::string>& operands);

}  // namespace vtdirect_cli

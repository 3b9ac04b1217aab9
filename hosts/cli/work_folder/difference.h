#pragma once

#include <optional>
#include <string>

#include "hosts/cli/failures/failure.h"

namespace vtdirect_cli {

/// One side of a comparison.
struct ComparedFile {
  std::string path;
  std::string label;  ///< what a reader calls it
};

/// Shows how two files differ, by "diff -u" or the command of VTDIRECT_DIFF, on the program's own standard
/// output, and waits for its end. The tool gets signals as usual, the terminal too. Makes no request.
/// @return a failure when the tool could not be run; that the files differ is none
[[nodiscard]] std::optional<Failure> ShowDifference(const ComparedFile& before, const ComparedFile& after);

}  // namespace vtdirect_cli

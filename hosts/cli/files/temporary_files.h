#pragma once

#include <optional>
#include <string>

#include "hosts/cli/failures/failure.h"

namespace vtdirect_cli {

/// Where temporary files go: what TMPDIR names, else /tmp.
[[nodiscard]] std::string TemporaryDirectory();

/// Why no temporary file of some size can be kept in the directory of this run, which is there; nothing when
/// one can. Writes one to find out, and removes it.
[[nodiscard]] std::optional<Failure> TemporaryFilesFailure();

/// What there is to say when an answer about an object needs a temporary file, and that can't be kept.
[[nodiscard]] Failure AnswerNotKept(const std::string& address);

}  // namespace vtdirect_cli

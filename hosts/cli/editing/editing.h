#pragma once

#include <string>

#include "hosts/cli/editing/kept_edit.h"
#include "hosts/cli/failures/exit_code.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// What is to be edited.
struct EditRequest {
  std::string address;   ///< as it was given
  std::string document;  ///< UID that it leads to
  std::string metadata;  ///< local file that is stored as the document's metadata; empty for none
};

/// Edits a document, or goes on with an edit of it that is kept, from its checkout to the report of its end. Makes
/// requests.
[[nodiscard]] ExitCode EditKept(Host& host, const EditRequest& request, KeptEdit kept,
                                const std::string& editor);

}  // namespace vtdirect_cli

#pragma once

#include <string>

namespace vtdirect_cli {

/// The name that a file of a folder has as a document, as it is in a path: what `get` has escaped for the disk
/// becomes the document's own name again, and any other name stands for itself. Makes no request.
[[nodiscard]] std::string NameForServer(const std::string& fileName);

}  // namespace vtdirect_cli

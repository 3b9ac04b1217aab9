#pragma once

#include <string>

#include "browsing/file_server.h"

namespace lxservices::cms_interface::vantry {

/// Delivers one entry with name, id and kind, and nothing else.
///
/// A file's name is delivered escaped; a directory's passes unchanged, since the server takes it back as it
/// gave it.
void EmitDirEntry(const DirEntryCallback& callback, const std::string& name, const std::string& id,
                  bool isDirectory);

}  // namespace lxservices::cms_interface::vantry

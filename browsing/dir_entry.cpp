#include "browsing/dir_entry.h"

#include "base/file_name.h"

namespace lxservices::cms_interface::vantry {

void EmitDirEntry(const DirEntryCallback& callback, const std::string& name, const std::string& id,
                  EntryKind kind) {
  const bool isDirectory = kind == EntryKind::Directory;
  const bool escapes = !isDirectory && HoldsForbiddenCharacter(name);
  const std::string escaped = escapes ? EscapeFileName(name) : std::string();
  DirEntryInfoExt entry;
  entry.name = escapes ? escaped.c_str() : name.c_str();
  entry.id = id.c_str();
  entry.isDirectory = isDirectory;
  callback(entry);
}

}  // namespace lxservices::cms_interface::vantry

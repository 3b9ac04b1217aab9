#pragma once

#include <functional>
#include <string>

/// What a listing is asked for and what it delivers.
namespace lxservices::cms_interface {

/// Bits of what a listing is to deliver.
enum ReadDirFlags : unsigned { Files = 1, Directories = 2, Details = 4, Versions = 8 };

/// Number and name of a listed document; the third text is always null.
struct DirEntryDetails {
  const char* number = nullptr;
  const char* name = nullptr;
  const char* reserved = nullptr;
};

/// What a listing delivers. A view: every pointer is valid during the callback only.
struct DirEntryInfoExt {
  const char* name = nullptr;  ///< in path form
  const char* id = nullptr;    ///< empty or null where the listing has none
  bool isDirectory = false;
  const DirEntryDetails* details = nullptr;  ///< set for a document when details were asked for
  const char** versions = nullptr;           ///< null-terminated; set when versions were asked for
  const char** versionIds = nullptr;         ///< null-terminated, parallel to `versions`
};

using DirEntryCallback = std::function<void(const DirEntryInfoExt&)>;

/// Resolved once, read as often as wanted. Holds a share of the connection and not of the server object.
using DirLister = std::function<bool(DirEntryCallback, ReadDirFlags)>;

namespace vantry {

enum class EntryKind { File, Directory };

/// Delivers one entry with name, id and kind, and nothing else.
///
/// A file's name is delivered escaped; a directory's passes unchanged, since the server takes it back as it
/// gave it.
void EmitDirEntry(const DirEntryCallback& callback, const std::string& name, const std::string& id,
                  EntryKind kind);

}  // namespace vantry
}  // namespace lxservices::cms_interface

#pragma once

#include <string>
#include <string_view>

#include "browsing/context_kind.h"

/// The tree that a server is shown as: "root/context/section/folders.../leaf", whose upper levels are made up
/// here and named in the user's language. Nothing here makes a request.
namespace lxservices::cms_interface::vantry {

/// The names of the upper levels. The first four are the root directories of the context kinds of the same
/// number.
enum class VfsNameId : int {
  Products = 1,
  Libraries = 2,
  Projects = 3,
  Sites = 4,
  Folders = 5,     ///< section that holds a context's folders
  Workspaces = 6,  ///< section that holds a context's workspaces
};

/// The name in the user's language, looked up again for each use; the empty text for any other number.
[[nodiscard]] std::string LocalisedVfsName(VfsNameId id);

/// Whether a path component is exactly the name in the user's language.
[[nodiscard]] bool IsVfsName(std::string_view component, VfsNameId id);

/// The kind of a root directory's name; None for any other text.
[[nodiscard]] ContextKind KindOfRoot(std::string_view root);

/// The name of a kind's root directory; empty for a kind without one.
[[nodiscard]] std::string RootOfKind(ContextKind kind);

/// A path taken apart. A level counts only when a "/" closes it: "Products" has no root, "Products/" and
/// "Products/Ctx" have a root and no context, "Products/Ctx/" has a context and no section. The section alone
/// may end the path without a "/".
struct ParsedVfsPath {
  ContextKind kind = ContextKind::None;  ///< of `root`
  std::string root;
  std::string context;
  std::string section;
  std::string folderPath;  ///< of a directory path with whatever "/" closes it, of a file path without
  std::string leaf;        ///< of a file path, escaped as it is
  std::string version;     ///< of a file path, what comes after the leaf's last "|"
};

/// Takes a directory's path apart: all that comes after the section is the folder path.
[[nodiscard]] ParsedVfsPath SplitDirectoryPath(std::string_view path);

/// Takes a file's path apart: what comes after the section is folder path, leaf and version.
[[nodiscard]] ParsedVfsPath SplitFilePath(std::string_view path);

/// The name of the workspace that a directory path leads to: its folder path without one closing "/".
[[nodiscard]] std::string WorkspaceNameOf(const ParsedVfsPath& directory);

/// Whether the environment switch FENLOOM_DC_FORCE_LEGACY_FILEBROWSE is set, which keeps all browsing of
/// folders away from OData. Read once per process; any thread.
[[nodiscard]] bool ForceLegacyFileBrowse();

}  // namespace lxservices::cms_interface::vantry

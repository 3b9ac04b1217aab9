#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The grammar of VFS paths and UIDs. Pure functions of the text and the configured schemes.
namespace lxservices::cms_interface {

/// The two results of SplitUid: what comes before "?", with its "/", and the id.
struct UidParts {
  std::string base;
  std::string id;
};

/// The nickname of a VFS path, the bare form included; the empty text for anything else.
/// @param relativePath  written only when a nickname was found
[[nodiscard]] std::string SplitVfsPath(const char* text, std::string& relativePath);

/// Both parts are empty for a text that is no UID. A UID without a query is all base.
[[nodiscard]] UidParts SplitUid(const char* text);

/// The value of a parameter of the query, not decoded; the first of that name counts.
[[nodiscard]] std::optional<std::string> QueryParameter(const std::string& text, std::string_view name);

/// The file name in a UID, plain; nothing when there is none or it is empty.
[[nodiscard]] std::optional<std::string> PlainNameInUid(const std::string& uid);

/// Builds a UID.
/// @param plainName  file name, not escaped, which a zero byte ends; an empty one writes no file parameter
/// @param extra      further parameters, put in as they are; empty for none
[[nodiscard]] std::string MakeUid(const std::string& base, const std::string& id, std::string_view plainName,
                                  std::string_view extra = {});

}  // namespace lxservices::cms_interface

#pragma once

#include <string>

/// The process-wide settings behind SetAppConfig. Plain unsynchronised values: a host writes them while no
/// other thread is inside the library. Nothing here makes a request.
namespace lxservices::cms_interface {

/// Scheme of VFS paths. The pointer stays valid until the stem is next written.
[[nodiscard]] const char* VfsScheme();
/// Scheme of UIDs. The pointer stays valid until the stem is next written.
[[nodiscard]] const char* UidScheme();
/// Whether the legacy scheme "vndir" is honoured.
[[nodiscard]] bool LegacyVfsPaths();
/// As stored: the reader puts the default in the place of an empty text.
[[nodiscard]] std::string AuthoringApplication();
/// As stored: an empty text means no registration.
[[nodiscard]] std::string AuthAppVersionToRegister();
/// As stored: the reader puts the default in the place of an empty text.
[[nodiscard]] std::string AuthAppVersion();
/// Name prefix of temporary workspaces. The pointer stays valid until the setting is next written.
[[nodiscard]] const char* TemporaryWorkspacePrefix();
/// Description of temporary workspaces. The pointer stays valid until the setting is next written.
[[nodiscard]] const char* TemporaryWorkspaceDescription();
/// Whether listing and location look at dynamic documents.
[[nodiscard]] bool BrowseDynamicDocuments();
/// Whether listing and location look at CAD documents.
[[nodiscard]] bool BrowseCadDocuments();

/// Makes the two schemes of a stem; null or empty brings the defaults back.
void SetUriStem(const char* stem);
/// On for any value but null and the empty text: even "false" turns it on.
void SetLegacyVfsPaths(const char* value);
/// A text; null counts as empty, which brings back the default of whoever reads it.
void SetAuthoringApplication(const char* value);
/// A text; null counts as empty: no registration.
void SetAuthAppVersionToRegister(const char* value);
/// A text; null counts as empty, which brings back the default of whoever reads it.
void SetAuthAppVersion(const char* value);
/// A text; null counts as empty, which brings back the default.
void SetTemporaryWorkspacePrefix(const char* value);
/// A text; null counts as empty, which brings back the default.
void SetTemporaryWorkspaceDescription(const char* value);
/// Off for null, the empty text and exactly "false"; on for anything else, "False" included.
void SetBrowseDynamicDocuments(const char* value);
/// Read like SetBrowseDynamicDocuments.
void SetBrowseCadDocuments(const char* value);

}  // namespace lxservices::cms_interface

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

/// The process-wide settings behind SetAppConfig. Nothing here makes a request. Any thread may read and write
/// them at any time.
namespace lxservices::cms_interface {

/// All settings, as one record. The initial values are the defaults.
struct Settings {
  std::string vfsScheme = "korvufenloom-vfs";  ///< scheme of VFS paths
  std::string uidScheme = "korvufenloom-vt";   ///< scheme of UIDs
  bool legacyVfsPaths = false;                 ///< the legacy scheme "vndir" is honoured
  std::string authoringApplication;      ///< as stored: the reader puts the default in the place of "nothing"
  std::string authAppVersionToRegister;  ///< as stored: empty means no registration
  std::string authAppVersion;            ///< as stored, like authoringApplication
  std::string temporaryWorkspacePrefix = "FenloomTMP";
  std::string temporaryWorkspaceDescription = "ZVK Fenloom temporary workspace";
  bool browseDynamicDocuments = true;  ///< listing and location look at dynamic documents
  bool browseCadDocuments = false;     ///< listing and location look at CAD documents
  /// Longest JSON answer that is read into memory as a whole, which takes many times as much there; in bytes.
  std::uint64_t largestJson = std::uint64_t{64} << 20;
  /// Longest text within any JSON answer, in bytes.
  std::uint64_t longestJsonText = std::uint64_t{16} << 20;
};

/// The settings of now, as a whole that no later write changes. Whoever reads several that belong together
/// reads them from one such record.
[[nodiscard]] std::shared_ptr<const Settings> CurrentSettings();

/// Makes the two schemes of a stem; empty brings the defaults back.
void SetUriStem(std::string_view stem);
/// On for any value but the empty text: even "false" turns it on.
void SetLegacyVfsPaths(std::string_view value);
/// A text; empty brings back the default of whoever reads it.
void SetAuthoringApplication(std::string_view value);
/// A text; empty for no registration.
void SetAuthAppVersionToRegister(std::string_view value);
/// A text; empty brings back the default of whoever reads it.
void SetAuthAppVersion(std::string_view value);
/// A text; empty brings back the default.
void SetTemporaryWorkspacePrefix(std::string_view value);
/// A text; empty brings back the default.
void SetTemporaryWorkspaceDescription(std::string_view value);
/// Off for the empty text and exactly "false"; on for anything else, "False" included.
void SetBrowseDynamicDocuments(std::string_view value);
/// Read like SetBrowseDynamicDocuments.
void SetBrowseCadDocuments(std::string_view value);
/// A decimal number of bytes from 1 on; anything else brings back the default.
void SetLargestJson(std::string_view value);
/// Read like SetLargestJson.
void SetLongestJsonText(std::string_view value);

}  // namespace lxservices::cms_interface

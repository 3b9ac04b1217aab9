#include "base/settings.h"

#include <string_view>

#include "base/text.h"

namespace lxservices::cms_interface {
namespace {

constexpr const char* defaultVfsScheme = "korvufenloom-vfs";
constexpr const char* defaultUidScheme = "korvufenloom-vt";
constexpr const char* defaultWorkspacePrefix = "FenloomTMP";
constexpr const char* defaultWorkspaceDescription = "ZVK Fenloom temporary workspace";

struct Settings {
  std::string vfsScheme = defaultVfsScheme;
  std::string uidScheme = defaultUidScheme;
  bool legacyVfsPaths = false;
  std::string authoringApplication;
  std::string authAppVersionToRegister;
  std::string authAppVersion;
  std::string temporaryWorkspacePrefix;
  std::string temporaryWorkspaceDescription;
  bool browseDynamicDocuments = true;
  bool browseCadDocuments = false;
};

Settings& TheSettings() {
  static Settings settings;
  return settings;
}

// The two kinds of flag read their value differently, and stay so. "false" turns the browse flags off, and
// turns the legacy flag on like any other value.
bool AnyValueIsOn(const char* value) {
  return IsGiven(value);
}
bool AnyValueButFalseIsOn(const char* value) {
  return IsGiven(value) && std::string_view(value) != "false";
}

const char* TextOrDefault(const std::string& text, const char* standard) {
  return text.empty() ? standard : text.c_str();
}

}  // namespace

const char* VfsScheme() {
  return TheSettings().vfsScheme.c_str();
}
const char* UidScheme() {
  return TheSettings().uidScheme.c_str();
}
bool LegacyVfsPaths() {
  return TheSettings().legacyVfsPaths;
}
std::string AuthoringApplication() {
  return TheSettings().authoringApplication;
}
std::string AuthAppVersionToRegister() {
  return TheSettings().authAppVersionToRegister;
}
std::string AuthAppVersion() {
  return TheSettings().authAppVersion;
}

const char* TemporaryWorkspacePrefix() {
  return TextOrDefault(TheSettings().temporaryWorkspacePrefix, defaultWorkspacePrefix);
}

const char* TemporaryWorkspaceDescription() {
  return TextOrDefault(TheSettings().temporaryWorkspaceDescription, defaultWorkspaceDescription);
}

bool BrowseDynamicDocuments() {
  return TheSettings().browseDynamicDocuments;
}
bool BrowseCadDocuments() {
  return TheSettings().browseCadDocuments;
}

void SetUriStem(const char* stem) {
  // A copy first: a host may hand in the very text that is replaced here.
  const std::string given = TextOrEmpty(stem);
  Settings& settings = TheSettings();
  settings.vfsScheme = given.empty() ? defaultVfsScheme : given + "-vfs";
  settings.uidScheme = given.empty() ? defaultUidScheme : given + "-vt";
}

void SetLegacyVfsPaths(const char* value) {
  TheSettings().legacyVfsPaths = AnyValueIsOn(value);
}
void SetAuthoringApplication(const char* value) {
  TheSettings().authoringApplication = TextOrEmpty(value);
}

void SetAuthAppVersionToRegister(const char* value) {
  TheSettings().authAppVersionToRegister = TextOrEmpty(value);
}

void SetAuthAppVersion(const char* value) {
  TheSettings().authAppVersion = TextOrEmpty(value);
}

void SetTemporaryWorkspacePrefix(const char* value) {
  TheSettings().temporaryWorkspacePrefix = TextOrEmpty(value);
}

void SetTemporaryWorkspaceDescription(const char* value) {
  TheSettings().temporaryWorkspaceDescription = TextOrEmpty(value);
}

void SetBrowseDynamicDocuments(const char* value) {
  TheSettings().browseDynamicDocuments = AnyValueButFalseIsOn(value);
}

void SetBrowseCadDocuments(const char* value) {
  TheSettings().browseCadDocuments = AnyValueButFalseIsOn(value);
}

}  // namespace lxservices::cms_interface

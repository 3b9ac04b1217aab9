#include "base/settings.h"

#include <charconv>
#include <mutex>
#include <utility>

namespace lxservices::cms_interface {
namespace {

struct SettingsSlot {
  std::mutex mutex;
  std::shared_ptr<const Settings> settings = std::make_shared<const Settings>();
};

SettingsSlot& Slot() {
  static SettingsSlot slot;
  return slot;
}

// Replaces the record by a changed copy. Whoever holds the old one goes on reading it.
template <typename Change>
void ChangeSettings(Change change) {
  std::shared_ptr<const Settings> settings;  // released after the lock
  const std::lock_guard lock(Slot().mutex);
  auto changed = std::make_shared<Settings>(*Slot().settings);
  change(*changed);
  settings = std::exchange(Slot().settings, std::move(changed));
}

// Writes one text; an empty text counts as `standard`.
void SetText(std::string Settings::*text, std::string_view value, std::string_view standard = {}) {
  const std::string given(value.empty() ? standard : value);
  ChangeSettings([&](Settings& settings) { settings.*text = given; });
}

void SetFlag(bool Settings::*flag, bool value) {
  ChangeSettings([&](Settings& settings) { settings.*flag = value; });
}

// Writes a number of bytes; what is none, and zero, counts as the default.
void SetBytes(std::uint64_t Settings::*bytes, std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber = error == std::errc() && end == text.data() + text.size() && number > 0;
  const std::uint64_t given = isNumber ? number : Settings().*bytes;
  ChangeSettings([&](Settings& settings) { settings.*bytes = given; });
}

// The two kinds of flag read their value differently, and stay so. "false" turns the browse flags off, and
// turns the legacy flag on like any other value.
bool AnyValueIsOn(std::string_view value) {
  return !value.empty();
}
bool AnyValueButFalseIsOn(std::string_view value) {
  return !value.empty() && value != "false";
}

}  // namespace

std::shared_ptr<const Settings> CurrentSettings() {
  const std::lock_guard lock(Slot().mutex);
  return Slot().settings;
}

void SetUriStem(std::string_view stem) {
  const std::string given(stem);
  const Settings standard;
  ChangeSettings([&](Settings& settings) {
    settings.vfsScheme = given.empty() ? standard.vfsScheme : given + "-vfs";
    settings.uidScheme = given.empty() ? standard.uidScheme : given + "-vt";
  });
}

void SetLegacyVfsPaths(std::string_view value) {
  SetFlag(&Settings::legacyVfsPaths, AnyValueIsOn(value));
}

void SetAuthoringApplication(std::string_view value) {
  SetText(&Settings::authoringApplication, value);
}

void SetAuthAppVersionToRegister(std::string_view value) {
  SetText(&Settings::authAppVersionToRegister, value);
}

void SetAuthAppVersion(std::string_view value) {
  SetText(&Settings::authAppVersion, value);
}

void SetTemporaryWorkspacePrefix(std::string_view value) {
  SetText(&Settings::temporaryWorkspacePrefix, value, Settings().temporaryWorkspacePrefix);
}

void SetTemporaryWorkspaceDescription(std::string_view value) {
  SetText(&Settings::temporaryWorkspaceDescription, value, Settings().temporaryWorkspaceDescription);
}

void SetBrowseDynamicDocuments(std::string_view value) {
  SetFlag(&Settings::browseDynamicDocuments, AnyValueButFalseIsOn(value));
}

void SetBrowseCadDocuments(std::string_view value) {
  SetFlag(&Settings::browseCadDocuments, AnyValueButFalseIsOn(value));
}

void SetLargestJson(std::string_view value) {
  SetBytes(&Settings::largestJson, value);
}

void SetLongestJsonText(std::string_view value) {
  SetBytes(&Settings::longestJsonText, value);
}

}  // namespace lxservices::cms_interface

#pragma once

#include <string>

#include "export.h"

namespace du {

/// Looks texts up in a catalogue. Lives for a single look-up.
///
/// The default platform's catalogue is a JSON object of key to text, "<group>/<name>.<language>.json" below
/// the catalogue directory for a catalogue named "<group>:<name>". The language comes from FENLOOM_LANGUAGE,
/// else from LC_ALL, LC_MESSAGES, LANG. The English texts of "cmsinterface:cmsinterfaceStrings" are compiled
/// in and stand in for every text that no file gives. Nothing is cached: a catalogue may change under a
/// running host.
class VTDIRECT_API Localizer {
 public:
  /// What to give for a key without a text.
  enum class ActionOnFailure : int { GiveKey = 0 };

  /// @param catalogue  "group:name"; one that cannot be read leaves the compiled-in texts
  explicit Localizer(const char* catalogue);

  /// The text of a key; a key without a text gives the key.
  [[nodiscard]] std::string LocalizeMessage(const char* key, ActionOnFailure action);

 private:
  std::string catalogue_;
};

/// Sets the directory that holds the default platform's catalogues; an empty text restores the one that
/// FENLOOM_CATALOGUES names, else the installed one. May be called from any thread.
VTDIRECT_API void SetCatalogueDirectory(const std::string& directory);

}  // namespace du

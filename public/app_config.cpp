#include <string_view>

#include "base/lasting_text.h"
#include "base/settings.h"
#include "base/text.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

void SetAppConfig(ConfigItem item, const char* text) {
  const std::string_view value = TextOrEmpty(text);
  switch (item) {
    case ConfigUriStem:
      return SetUriStem(value);
    case ConfigLegacyVfsPaths:
      return SetLegacyVfsPaths(value);
    case ConfigAuthoringApplication:
      return SetAuthoringApplication(value);
    case ConfigRegisterAuthAppVersion:
      return SetAuthAppVersionToRegister(value);
    case ConfigAuthAppVersion:
      return SetAuthAppVersion(value);
    case ConfigTempWorkspacePrefix:
      return SetTemporaryWorkspacePrefix(value);
    case ConfigTempWorkspaceDescription:
      return SetTemporaryWorkspaceDescription(value);
    case ConfigBrowseDynamicDocuments:
      return SetBrowseDynamicDocuments(value);
    case ConfigBrowseCadDocuments:
      return SetBrowseCadDocuments(value);
    case ConfigLargestJson:
      return SetLargestJson(value);
    case ConfigLongestJsonText:
      return SetLongestJsonText(value);
  }
}

const char* GetVFSLocationPrefix() {
  return LastingText(CurrentSettings()->vfsScheme);
}

}  // namespace VtDirectManager

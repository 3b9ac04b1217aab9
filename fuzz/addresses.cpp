#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/checkout_id.h"
#include "base/file_name.h"
#include "base/server_key.h"
#include "platform/uri.h"
#include "public/address_text.h"
#include "public/vt_direct_manager.h"

using namespace lxservices::cms_interface;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const char* text = bytes.c_str();
  Require(UnescapeFileName(EscapeFileName(bytes)) == bytes);
  std::string escaped;
  std::string unescaped;
  du::URI_Escape(&escaped, bytes, 0, static_cast<std::size_t>(-1));
  du::URI_Unescape(&unescaped, 0, escaped);
  Require(unescaped == bytes);
  const std::string key = NormalizeServerUri(text);
  Require(NormalizeServerUri(key.c_str()) == key || key.find('@') != std::string::npos);
  std::string relativePath;
  Require(SplitVfsPath(text, relativePath).find('/') == std::string::npos);
  const UidParts uid = SplitUid(text);
  Require(uid.base.size() + uid.id.size() <= bytes.size());
  (void)QueryParameter(bytes, "id");
  (void)vantry::WorkingDocumentId(vantry::ParseCheckoutId(text));
  (void)VtDirectManager::IsVFSPath(text);
  (void)VtDirectManager::IsUID(text);
  Require(VtDirectManager::CompareUIDsEqual(text, text));
  return 0;
}

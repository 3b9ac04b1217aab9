#include "base/checkout_id.h"
#include "public/address_text.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

std::optional<ParsedUID> ParseUID(const char* text) {
  if (!IsUID(text)) return std::nullopt;
  const UidParts uid = SplitUid(text);
  if (uid.base.empty() || uid.id.empty()) return std::nullopt;
  const vantry::CheckoutId id = vantry::ParseCheckoutId(uid.id);
  ParsedUID parsed;
  parsed.server = uid.base;
  parsed.document = id.document;
  parsed.workspace = id.workspace;
  if (!id.workspace.empty()) parsed.workingCopy = vantry::WorkingDocumentId(id);
  parsed.fileName = PlainNameInUid(text).value_or("");
  parsed.isTemporaryCheckout = id.temporary;
  return parsed;
}

std::string WorkingCopyUID(const char* text) {
  const auto uid = ParseUID(text);
  if (!uid || uid->workingCopy.empty()) return {};
  return MakeUid(uid->server, vantry::FormatWorkspaceId(uid->workspace, uid->workingCopy), uid->fileName);
}

}  // namespace VtDirectManager

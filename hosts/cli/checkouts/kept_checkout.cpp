#include "hosts/cli/checkouts/kept_checkout.h"

#include <vtdirect/platform/uri.h>
#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/texts/tabbed_line.h"

namespace vtdirect_cli {

std::string LineOfCheckout(const KeptCheckout& checkout) {
  return LineOfFields({checkout.document, checkout.uid, checkout.name, checkout.user, checkout.since});
}

std::optional<KeptCheckout> CheckoutOfLine(std::string_view line) {
  const auto fields = FieldsOfLine(line);
  if (!fields || fields->size() != 5) return std::nullopt;
  KeptCheckout checkout{(*fields)[0], (*fields)[1], (*fields)[2], (*fields)[3], (*fields)[4]};
  if (!HasObjectId(checkout.uid)) return std::nullopt;
  return checkout;
}

bool LeadsTo(const KeptCheckout& checkout, const std::string& uid) {
  if (AreSameUid(checkout.uid, uid) || AreSameUid(checkout.document, uid)) return true;
  const auto given = VtDirectManager::ParseUID(uid.c_str());
  const auto working = VtDirectManager::ParseUID(checkout.uid.c_str());
  if (!given || !working || given->isTemporaryCheckout || given->server != working->server) return false;
  const std::string& id = given->document;
  if (id.empty()) return false;
  return id == working->document || id == working->workingCopy || id == DocumentIdOf(checkout.document);
}

bool IsTemporaryCopy(const std::string& uid) {
  const auto parsed = VtDirectManager::ParseUID(uid.c_str());
  return parsed && parsed->isTemporaryCheckout;
}

std::string ByOwnId(const std::string& uid) {
  return IsTemporaryCopy(uid) ? VtDirectManager::WorkingCopyUID(uid.c_str()) : uid;
}

std::string ByDocumentId(const std::string& uid) {
  const auto parsed = VtDirectManager::ParseUID(uid.c_str());
  if (!parsed || !parsed->isTemporaryCheckout) return uid;
  std::string document = parsed->server + "?id=" + parsed->document;
  if (parsed->fileName.empty()) return document;
  std::string name;
  du::URI_Escape(&name, parsed->fileName, 0, std::string::npos);
  return document + "&file=/" + name;
}

bool HasWorkspace(const std::string& uid) {
  const auto parsed = VtDirectManager::ParseUID(uid.c_str());
  return parsed && !parsed->workspace.empty();
}

std::string DocumentIdOf(const std::string& uid) {
  const auto parsed = VtDirectManager::ParseUID(uid.c_str());
  return parsed ? parsed->document : "";
}

bool HasObjectId(const std::string& uid) {
  return VtDirectManager::IsUID(uid.c_str()) && !DocumentIdOf(uid).empty();
}

bool AreSameUid(const std::string& one, const std::string& other) {
  // Two texts that are no UIDs would compare equal.
  return VtDirectManager::IsUID(one.c_str()) && VtDirectManager::IsUID(other.c_str()) &&
         VtDirectManager::CompareUIDsEqual(one.c_str(), other.c_str());
}

}  // namespace vtdirect_cli

#include "hosts/cli/checkouts/kept_checkout.h"

#include <vtdirect/vt_direct_manager.h>

#include <array>
#include <vector>

#include "hosts/cli/texts/tabbed_line.h"

namespace vtdirect_cli {
namespace {

// The fields of an id: of a working copy in a temporary workspace they are document, workspace, working copy
// and a mark; in a workspace of the user's own, working copy and workspace.
struct IdFields {
  std::string server;
  std::array<std::string, 4> field;
  std::size_t start = 0;  // where the id stands in the UID
  std::size_t length = 0;
};

[[nodiscard]] std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

[[nodiscard]] IdFields FieldsOf(std::string_view uid) {
  IdFields out;
  std::size_t start = uid.find("?id=");
  if (start == std::string_view::npos) start = uid.find("&id=");
  if (start == std::string_view::npos) return out;
  out.server = uid.substr(0, uid.find('?'));
  out.start = start + 4;
  const std::string_view id = uid.substr(out.start, uid.find('&', out.start) - out.start);
  out.length = id.size();
  const auto fields = Split(id, '|');
  for (std::size_t i = 0; i < out.field.size() && i < fields.size(); ++i) out.field[i] = fields[i];
  return out;
}

}  // namespace

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
  const IdFields given = FieldsOf(uid);
  const IdFields working = FieldsOf(checkout.uid);
  const IdFields document = FieldsOf(checkout.document);
  const std::string& id = given.field[0];
  if (id.empty() || !given.field[2].empty() || given.server != working.server) return false;
  return id == working.field[0] || id == working.field[2] || id == document.field[0];
}

bool IsTemporaryCopy(const std::string& uid) {
  return !FieldsOf(uid).field[2].empty();
}

std::string ByOwnId(const std::string& uid) {
  if (!IsTemporaryCopy(uid)) return uid;
  const IdFields id = FieldsOf(uid);
  return std::string(uid).replace(id.start, id.length, id.field[2] + "|" + id.field[1]);
}

std::string ByDocumentId(const std::string& uid) {
  if (!IsTemporaryCopy(uid)) return uid;
  const IdFields id = FieldsOf(uid);
  return std::string(uid).replace(id.start, id.length, id.field[0]);
}

bool HasWorkspace(const std::string& uid) {
  return !FieldsOf(uid).field[1].empty();
}

std::string DocumentIdOf(const std::string& uid) {
  return FieldsOf(uid).field[0];
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

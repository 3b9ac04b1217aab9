#include "base/checkout_id.h"

#include "base/failure_trace.h"
#include "base/text.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Takes the text up to the next separator off the front.
std::string_view TakeField(std::string_view& rest) {
  const auto separator = rest.find('|');
  const std::string_view field = rest.substr(0, separator);
  rest.remove_prefix(separator == std::string_view::npos ? rest.size() : separator + 1);
  return field;
}

}  // namespace

CheckoutId ParseCheckoutId(std::string_view text) {
  text = text.substr(0, text.find('\0'));
  CheckoutId id;
  id.text = text;
  id.document = TakeField(text);
  id.workspace = TakeField(text);
  id.workingCopy = TakeField(text);
  id.temporary = TakeField(text).find('T') != std::string_view::npos;
  return id;
}

CheckoutId ParseCheckoutId(const char* text) {
  return ParseCheckoutId(std::string_view(TextOrEmpty(text)));
}

bool IsValidForCheckout(const CheckoutId& id) {
  return !id.document.empty() && !id.workspace.empty() && (!id.temporary || !id.workingCopy.empty());
}

bool IsValidTraced(const CheckoutId& id) {
  if (IsValidForCheckout(id)) return true;
  TracerFor({FailureKind::NotFound})(dp::TraceType::Error, "Bad id data for checkout %s\n", id.text.c_str());
  return false;
}

const std::string& WorkingDocumentId(const CheckoutId& id) {
  return id.temporary ? id.workingCopy : id.document;
}

std::string WorkspaceOf(const CheckoutId& id) {
  return id.temporary ? std::string() : id.workspace;
}

std::string FormatTemporaryCheckoutId(std::string_view workspace, std::string_view base,
                                      std::string_view working) {
  if (workspace.empty() || base.empty() || working.empty()) return {};
  std::string text(base);
  text.append("|").append(workspace).append("|").append(working).append("|T");
  return text;
}

std::string FormatWorkspaceId(std::string_view workspace, std::string_view working) {
  std::string text(working);
  if (!workspace.empty()) text.append("|").append(workspace);
  return text;
}

}  // namespace lxservices::cms_interface::vantry

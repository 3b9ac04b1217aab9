#include "base/checkout_id.h"

#include "base/failure_trace.h"

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

CheckoutId ParseCheckoutId(const char* text) {
  CheckoutId id;
  std::string_view rest = text != nullptr ? text : "";
  id.field0 = TakeField(rest);
  id.field1 = TakeField(rest);
  id.field2 = TakeField(rest);
  id.temporary = TakeField(rest).find('T') != std::string_view::npos;
  return id;
}

bool IsValidForCheckout(const CheckoutId& id) {
  return !id.field0.empty() && !id.field1.empty() && (!id.temporary || !id.field2.empty());
}

bool ParseValidCheckoutId(const char* text, CheckoutId& id) {
  id = ParseCheckoutId(text);
  if (IsValidForCheckout(id)) return true;
  TracerFor({FailureKind::NotFound})(dp::TraceType::Error, "Bad id data for checkout %s\n",
                                     text != nullptr ? text : "");
  return false;
}

const std::string& WorkingDocumentId(const CheckoutId& id) {
  return id.temporary ? id.field2 : id.field0;
}

std::string WorkspaceOf(const CheckoutId& id) {
  return id.temporary ? std::string() : id.field1;
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

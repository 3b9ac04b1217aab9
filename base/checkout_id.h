#pragma once

#include <string>
#include <string_view>

/// The text form of a document id with its workspace, and a host's only memory of a checkout. Pure functions.
///
/// "D1" is a document in no workspace; "D1|W2" the document D1 in the workspace W2; "D1|W2|D3|T" the document
/// D1 checked out as D3 through the temporary workspace W2.
namespace lxservices::cms_interface::vantry {

/// An id, taken apart once and carried with its text from there on.
struct CheckoutId {
  std::string text;         ///< as it was given
  std::string document;     ///< the document; in a workspace of the user's the working copy itself
  std::string workspace;    ///< empty for none
  std::string workingCopy;  ///< the copy of a temporary checkout
  bool temporary = false;   ///< checked out through a workspace that was made for this checkout
};

/// Cuts a text at each "|". Any "T" in the fourth field counts; further fields are ignored.
/// A zero byte ends the text, as it does where a host hands one in.
[[nodiscard]] CheckoutId ParseCheckoutId(std::string_view text);

/// The same for a text of a host's. Null gives all empty.
[[nodiscard]] CheckoutId ParseCheckoutId(const char* text);

/// Whether an id has all that a checkout operation needs.
[[nodiscard]] bool IsValidForCheckout(const CheckoutId& id);

/// IsValidForCheckout for a checkout operation: an id that is not valid for one is traced.
[[nodiscard]] bool IsValidTraced(const CheckoutId& id);

/// The document that is worked on: the working copy of a temporary checkout, else the document itself.
[[nodiscard]] const std::string& WorkingDocumentId(const CheckoutId& id);

/// The workspace of an id; empty for a temporary checkout, whose workspace is no place of the user's.
[[nodiscard]] std::string WorkspaceOf(const CheckoutId& id);

/// The temporary form, or the empty text unless all three are given.
[[nodiscard]] std::string FormatTemporaryCheckoutId(std::string_view workspace, std::string_view base,
                                                    std::string_view working);

/// The workspace form, or `working` alone for an empty workspace. An empty `working` in a workspace gives
/// "|" and the workspace, unlike the temporary form, which gives nothing then; the two stay different.
[[nodiscard]] std::string FormatWorkspaceId(std::string_view workspace, std::string_view working);

}  // namespace lxservices::cms_interface::vantry
